#include <algorithm>
#include <cstddef>

#include "CO_Frames.h"

namespace {

constexpr CO_YCbCrU8 kBlack = {0, 128, 128};

UInt8* RowOf(UInt8* frame, SInt32 width, SInt32 row) {
  return frame + std::ptrdiff_t{row} * width * 2;
}

UInt8 ChromaOf(const CO_YCbCrU8& color, std::ptrdiff_t pixel) {
  return pixel % 2 == 0 ? color.cb : color.cr;
}

/// Fills pixels without regard to pairs.
void Fill(const CO_YCbCrU8& color, SInt32 from, SInt32 to, UInt8* line) {
  for (std::ptrdiff_t i = from; i < to; ++i) {
    line[2 * i] = ChromaOf(color, i);
    line[2 * i + 1] = color.y;
  }
}

UInt8 MeanOf(UInt8 a, UInt8 b) {
  return static_cast<UInt8>((a + b) >> 1);
}

}  // namespace

void CO_PaintHorizLine(const CO_YCbCrU8* color, SInt32 width, UInt8* line) {
  Fill(*color, 0, width, line);
}

void CO_PaintHorizBar(SInt32 width, UInt8* frame, SInt32 rows, const CO_YCbCrU8* color) {
  for (SInt32 row = 0; row < rows; ++row)
    CO_PaintHorizLine(color, width, RowOf(frame, width, row));
}

void CO_PaintHorizLinePiece(const CO_YCbCrU8* color, SInt32 width, SInt32 from, SInt32 to,
                            UInt8* line) {
  from = std::max(from, 0);
  to = std::min(to, width);
  if (from >= to) return;
  const auto chroma = [line](std::ptrdiff_t pixel) -> UInt8& { return line[2 * pixel]; };
  // The neighbours' chroma as it was, before pixels of a common pair are painted.
  const UInt8 before = chroma(std::max(from - 1, 0));
  const UInt8 behind = to < width ? chroma(to) : UInt8{0};
  Fill(*color, from, to, line);
  if (from % 2 == 1) {
    if (from > 2) chroma(from) = MeanOf(chroma(from - 2), color->cr);
    chroma(from - 1) = MeanOf(before, color->cb);
  }
  if (to % 2 == 1) {
    if (to < width - 1) chroma(to - 1) = MeanOf(chroma(to + 1), color->cb);
    if (to < width) chroma(to) = MeanOf(behind, color->cr);
  }
}

void CO_PaintVertBar(const CO_YCbCrU8* color, SInt32 width, SInt32 height, SInt32 from, SInt32 to,
                     UInt8* frame) {
  for (SInt32 row = 0; row < height; ++row)
    CO_PaintHorizLinePiece(color, width, from, to, RowOf(frame, width, row));
}

void CO_PaintEdge(UInt8* frame, SInt32 width, SInt32 height, const Rect* rect,
                  const CO_YCbCrU8* color) {
  const SInt32 top = std::clamp<SInt32>(rect->top, 0, std::max(height, 0));
  const SInt32 bottom = std::clamp<SInt32>(rect->bottom, 0, std::max(height, 0));
  for (SInt32 row = 0; row < height; ++row) {
    UInt8* const line = RowOf(frame, width, row);
    if (row < top || row >= bottom) {
      CO_PaintHorizLine(color, width, line);
      continue;
    }
    CO_PaintHorizLinePiece(color, width, 0, rect->left, line);
    CO_PaintHorizLinePiece(color, width, rect->right, width, line);
  }
}

void CO_PaintLineBlack(SInt32 width, UInt8* line) {
  Fill(kBlack, 0, width, line);
}

void CO_PaintVerticalBarBlack(SInt32 height, SInt32 width, UInt8* frame, SInt32 from, SInt32 to) {
  for (SInt32 row = 0; row < height; ++row)
    Fill(kBlack, std::max(from, 0), std::min(to, width), RowOf(frame, width, row));
}

void CO_PaintHorizBarBlack(SInt32 width, UInt8* frame, SInt32 from, SInt32 to) {
  for (SInt32 row = std::max(from, 0); row < to; ++row)
    CO_PaintLineBlack(width, RowOf(frame, width, row));
}

void CO_PaintFrameBlack(SInt32 height, SInt32 width, UInt8* frame) {
  CO_PaintHorizBarBlack(width, frame, 0, height);
}

void CO_CopyVertBar(SInt32 height, SInt32 width, const UInt8* source, UInt8* destination,
                    SInt32 sourceColumn, SInt32 destinationColumn, SInt32 barWidth) {
  const SInt32 first = std::max({0, -sourceColumn, -destinationColumn});
  const SInt32 end = std::min({barWidth, width - sourceColumn, width - destinationColumn});
  const bool is_turned = (sourceColumn - destinationColumn) % 2 != 0;
  for (SInt32 row = 0; row < height; ++row) {
    const UInt8* const from = source + std::ptrdiff_t{row} * width * 2;
    UInt8* const to = RowOf(destination, width, row);
    for (std::ptrdiff_t i = first; i < end; ++i) {
      const std::ptrdiff_t pixel = sourceColumn + i;
      std::ptrdiff_t chroma = pixel;
      if (is_turned)
        chroma = pixel + 1 < width ? pixel + 1 : std::max<std::ptrdiff_t>(pixel - 1, 0);
      to[2 * (destinationColumn + i)] = from[2 * chroma];
      to[2 * (destinationColumn + i) + 1] = from[2 * pixel + 1];
    }
  }
}
