#include "CO_Y420_Frames.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "CO_filter.h"
#include "vector_clones.h"
#include "y420_private.h"

namespace {

using quillmere::color::SplitAvx2;
using quillmere::color::SplitAvx512;
using quillmere::color::SplitPath;
using quillmere::color::SplitPlain;

constexpr SInt32 kLumaPadding = 32;
constexpr SInt32 kChromaPadding = 16;

constexpr SInt32 RoundedUp(SInt32 value, SInt32 multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

/// A plane of a frame: rows of bytes.
template <class Byte>
struct Plane {
  Byte* base;
  std::ptrdiff_t stride;

  Byte* Row(SInt32 row) const { return base + row * stride; }
  /// Every second row, from the first or the second on.
  Plane Field(bool is_bottom) const { return {base + (is_bottom ? stride : 0), 2 * stride}; }
};
template <class Byte>
struct Planes {
  Plane<Byte> y;
  Plane<Byte> cb;
  Plane<Byte> cr;

  Planes Field(bool is_bottom) const {
    return {y.Field(is_bottom), cb.Field(is_bottom), cr.Field(is_bottom)};
  }
};

/// The planes of a frame behind its header.
template <class Byte, class Header>
Planes<Byte> PlanesOf(Header* frame) {
  PlanarPixmapInfoYUV420 header = *frame;
  QT_FlipPlanarPixmapInfoYUV420_BtoN(&header);
  auto* const start = reinterpret_cast<Byte*>(frame);
  return {{start + header.offsetY, static_cast<std::ptrdiff_t>(header.rowBytesY)},
          {start + header.offsetCb, static_cast<std::ptrdiff_t>(header.rowBytesCb)},
          {start + header.offsetCr, static_cast<std::ptrdiff_t>(header.rowBytesCr)}};
}

/// Pairs of one pass, whose means stay in the nearest cache.
constexpr std::ptrdiff_t kPass = 256;

/// The means of both components by turns, then each apart: steps of two bytes are what the compiler
/// has quick code for.
QUILLMERE_VECTOR_CLONES void MakePairs(std::ptrdiff_t pairs, const UInt8* a, const UInt8* b,
                                       UInt8* cb, UInt8* cr) {
  UInt8 means[2 * kPass];
  for (std::ptrdiff_t first = 0; first < pairs; first += kPass) {
    const std::ptrdiff_t count = std::min(kPass, pairs - first);
    for (std::ptrdiff_t i = 0; i < 2 * count; ++i)
      means[i] = static_cast<UInt8>((a[4 * first + 2 * i] + b[4 * first + 2 * i]) >> 1);
    for (std::ptrdiff_t k = 0; k < count; ++k) {
      cb[first + k] = means[2 * k];
      cr[first + k] = means[2 * k + 1];
    }
  }
}

QUILLMERE_VECTOR_CLONES void CopyLuma(std::ptrdiff_t width, const UInt8* line, UInt8* row) {
  for (std::ptrdiff_t i = 0; i < width; ++i)
    row[i] = line[2 * i + 1];
}

UInt8 Between(UInt8 near, UInt8 far) {
  return static_cast<UInt8>((3 * near + far) >> 2);
}

/// One line, three quarters of whose chroma come from the near row.
QUILLMERE_VECTOR_CLONES void MakeLine(SInt32 pairs, const UInt8* y, const UInt8* cb_near,
                                      const UInt8* cr_near, const UInt8* cb_far,
                                      const UInt8* cr_far, UInt8* line) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k) {
    line[4 * k] = static_cast<UInt8>((3 * cb_near[k] + cb_far[k]) >> 2);
    line[4 * k + 1] = y[2 * k];
    line[4 * k + 2] = static_cast<UInt8>((3 * cr_near[k] + cr_far[k]) >> 2);
    line[4 * k + 3] = y[2 * k + 1];
  }
}

/// Two chroma rows, one for each component.
struct ChromaRows {
  const UInt8* cb;
  const UInt8* cr;
};

void MakeLineOfAnyWidth(SInt32 width, const UInt8* y, ChromaRows near, ChromaRows far,
                        UInt8* line) {
  const SInt32 pairs = width / 2;
  MakeLine(pairs, y, near.cb, near.cr, far.cb, far.cr, line);
  if (width < 1 || width % 2 == 0) return;
  const std::ptrdiff_t last = width - 1;
  line[2 * last] = last >= 2 ? line[2 * (last - 2)] : Between(near.cb[0], far.cb[0]);
  line[2 * last + 1] = y[last];
}

void To2vuy(SInt32 line_count, SInt32 width, const Planes<const UInt8>& from,
            Plane<UInt8> destination) {
  const SInt32 rows = (line_count + 1) / 2;
  const auto chroma = [&](SInt32 row) {
    row = std::clamp(row, 0, rows - 1);
    return ChromaRows{from.cb.Row(row), from.cr.Row(row)};
  };
  for (SInt32 line = 0; line < line_count; ++line) {
    // Lines 2j + 1 and 2j + 2 lie between the rows j and j + 1.
    const SInt32 near = line / 2;
    const SInt32 far = line % 2 == 1 ? near + 1 : near - 1;
    MakeLineOfAnyWidth(width, from.y.Row(line), chroma(near), chroma(far), destination.Row(line));
  }
}

void ToY420(SInt32 line_count, SInt32 width, Plane<const UInt8> source, const Planes<UInt8>& to) {
  for (SInt32 line = 0; line < line_count; line += 2) {
    const SInt32 other = std::min(line + 1, line_count - 1);
    CO_2vuyLinePairToY420(width, source.Row(line), source.Row(other), to.y.Row(line),
                          to.y.Row(other), to.cb.Row(line / 2), to.cr.Row(line / 2));
  }
}

/// The chroma row of four lines' bytes at every `step`-th place, as the tent's taps give it.
QUILLMERE_VECTOR_CLONES void MakeTentRow(SInt32 pairs, const UInt8* a, const UInt8* b,
                                         const UInt8* c, const UInt8* d, UInt8* row) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k) {
    const int sum = a[4 * k] + 3 * (b[4 * k] + c[4 * k]) + d[4 * k];
    row[k] = static_cast<UInt8>((sum + 3) >> 3);
  }
}

QUILLMERE_VECTOR_CLONES void MakeMeanRow(SInt32 pairs, const UInt8* a, const UInt8* b, UInt8* row) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k)
    row[k] = static_cast<UInt8>((a[4 * k] + b[4 * k]) >> 1);
}

/// One component of all pairs, row by row; the same bytes as column by column.
void HalveChroma(SInt32 line_count, SInt32 pairs, Plane<const UInt8> source, Plane<UInt8> to) {
  const SInt32 rows = line_count / 2;
  for (SInt32 row = 0; row < rows; ++row) {
    const SInt32 line = 2 * row;
    const bool is_end = row == 0 || line + 2 >= line_count;
    if (is_end) {
      MakeMeanRow(pairs, source.Row(line), source.Row(line + 1), to.Row(row));
    } else {
      MakeTentRow(pairs, source.Row(line - 1), source.Row(line), source.Row(line + 1),
                  source.Row(line + 2), to.Row(row));
    }
  }
  if (line_count % 2 == 0) return;
  if (rows > 0)
    std::memcpy(to.Row(rows), to.Row(rows - 1), static_cast<std::size_t>(pairs));
  else
    MakeMeanRow(pairs, source.Row(0), source.Row(0), to.Row(0));
}

/// The fastest path that the processor has.
const SplitPath& BestPath() {
  static const SplitPath best = SplitAvx512().is_available ? SplitAvx512()
                                : SplitAvx2().is_available ? SplitAvx2()
                                                           : SplitPlain();
  return best;
}

void SplitPairs(std::ptrdiff_t pairs, const UInt8* lineA, const UInt8* lineB, UInt8* yA, UInt8* yB,
                UInt8* cb, UInt8* cr) {
  CopyLuma(2 * pairs, lineA, yA);
  if (yB != yA) CopyLuma(2 * pairs, lineB, yB);
  MakePairs(pairs, lineA, lineB, cb, cr);
}

}  // namespace

SplitPath quillmere::color::SplitPlain() {
  return {2, true, SplitPairs};
}

void CO_2vuyLinePairToY420(SInt32 width, const UInt8* lineA, const UInt8* lineB, UInt8* yA,
                           UInt8* yB, UInt8* cb, UInt8* cr) {
  const SplitPath& path = BestPath();
  const std::ptrdiff_t count = std::max(width, 0) / path.pixels_at_once;
  path.split(count, lineA, lineB, yA, yB, cb, cr);
  const std::ptrdiff_t done = count * path.pixels_at_once;
  const SInt32 pairs = std::max(width, 0) / 2;
  SplitPairs(pairs - done / 2, lineA + 2 * done, lineB + 2 * done, yA + done, yB + done,
             cb + done / 2, cr + done / 2);
  if (width < 1 || width % 2 == 0) return;
  const std::ptrdiff_t last = width - 1;
  yA[last] = lineA[2 * last + 1];
  yB[last] = lineB[2 * last + 1];
  cb[pairs] = pairs > 0 ? cb[pairs - 1] : static_cast<UInt8>((lineA[0] + lineB[0]) >> 1);
  cr[pairs] = pairs > 0 ? cr[pairs - 1] : 128;
}

void CO_Y420_LinePairTo2vuyNew(SInt32 width, const UInt8* yA, const UInt8* yB, const UInt8* cb1,
                               const UInt8* cr1, const UInt8* cb2, const UInt8* cr2, UInt8* lineA,
                               UInt8* lineB) {
  const ChromaRows first = {cb1, cr1};
  const ChromaRows second = {cb2, cr2};
  MakeLineOfAnyWidth(width, yA, first, second, lineA);
  MakeLineOfAnyWidth(width, yB, second, first, lineB);
}

void CO_2vuyCopyLineYToY420(SInt32 width, SInt32 paddedWidth, const UInt8* line, UInt8* row) {
  CopyLuma(width, line, row);
  CO_PadChromaLine(row, paddedWidth, width);
}

void CO_PadChromaLine(UInt8* row, SInt32 end, SInt32 start) {
  if (start < 1 || end <= start) return;
  std::memset(row + start, row[start - 1], static_cast<std::size_t>(end - start));
}

void CO_Y420_FrameTo2vuyProgr(SInt32 lineCount, SInt32 width, const UInt8* y, SInt32 yStride,
                              const UInt8* cb, SInt32 cbStride, const UInt8* cr, SInt32 crStride,
                              UInt8* destination, SInt32 destinationStride) {
  To2vuy(lineCount, width, {{y, yStride}, {cb, cbStride}, {cr, crStride}},
         {destination, destinationStride});
}

void CO_Y420_FrameTo2vuy(SInt32 height, SInt32 width, const PlanarPixmapInfoYUV420* frame,
                         UInt8* destination, Boolean interlaced) {
  const Planes<const UInt8> planes = PlanesOf<const UInt8>(frame);
  const Plane<UInt8> to = {destination, std::ptrdiff_t{width} * 2};
  if (!interlaced) return To2vuy(height, width, planes, to);
  To2vuy((height + 1) / 2, width, planes.Field(false), to.Field(false));
  To2vuy(height / 2, width, planes.Field(true), to.Field(true));
}

void CO_2vuyFrameToY420_Progr(SInt32 lineCount, SInt32 width, const UInt8* source,
                              SInt32 sourceStride, UInt8* y, SInt32 yStride, UInt8* cb,
                              SInt32 cbStride, UInt8* cr, SInt32 crStride) {
  ToY420(lineCount, width, {source, sourceStride}, {{y, yStride}, {cb, cbStride}, {cr, crStride}});
}

void CO_2vuyFrameToY420(SInt32 height, SInt32 width, SInt32 sourceStride, const UInt8* source,
                        PlanarPixmapInfoYUV420* frame, Boolean interlaced) {
  const Planes<UInt8> planes = PlanesOf<UInt8>(frame);
  const Plane<const UInt8> from = {source, sourceStride};
  if (!interlaced) return ToY420(height, width, from, planes);
  for (const bool is_bottom : {false, true})
    ToY420(height / 2, width, from.Field(is_bottom), planes.Field(is_bottom));
}

void CO_2vuyFrameToY420_Tent(SInt32 height, SInt32 width, SInt32 sourceStride, const UInt8* source,
                             PlanarPixmapInfoYUV420* frame, Boolean interlaced) {
  const Planes<UInt8> planes = PlanesOf<UInt8>(frame);
  const auto stride = [](const Plane<UInt8>& plane) { return static_cast<SInt32>(plane.stride); };
  CO_2vuyFrameVertChromaToY420(height, width, sourceStride, source, planes.cb.base,
                               stride(planes.cb), planes.cr.base, stride(planes.cr), interlaced);
  CO_PadY420_FrameCbCr(height, width, interlaced, planes.cb.base, stride(planes.cb), planes.cr.base,
                       stride(planes.cr));
  CO_2vuyFrameY_ToY420(height, width, interlaced, sourceStride, source, planes.y.base,
                       stride(planes.y));
}

void CO_2vuyVertLineChromaToY420(SInt32 lineCount, const UInt8* source, SInt32 sourceStride,
                                 UInt8* cb, SInt32 cbStride, UInt8* cr, SInt32 crStride) {
  HalveChroma(lineCount, 1, {source, sourceStride}, {cb, cbStride});
  HalveChroma(lineCount, 1, {source + 2, sourceStride}, {cr, crStride});
}

void CO_2vuyFrameVertChromaToY420(SInt32 height, SInt32 width, SInt32 sourceStride,
                                  const UInt8* source, UInt8* cb, SInt32 cbStride, UInt8* cr,
                                  SInt32 crStride, Boolean interlaced) {
  const auto halve = [&](SInt32 lines, Plane<const UInt8> from, Plane<UInt8> to) {
    if (!interlaced) return HalveChroma(lines, width / 2, from, to);
    HalveChroma((lines + 1) / 2, width / 2, from.Field(false), to.Field(false));
    if (lines > 1) HalveChroma(lines / 2, width / 2, from.Field(true), to.Field(true));
  };
  if (height < 1) return;
  halve(height, {source, sourceStride}, {cb, cbStride});
  halve(height, {source + 2, sourceStride}, {cr, crStride});
}

void CO_PadY420_FrameCbCr(SInt32 height, SInt32 width, Boolean interlaced, UInt8* cb,
                          SInt32 cbStride, UInt8* cr, SInt32 crStride) {
  const SInt32 samples = width / 2;
  const SInt32 rows = RoundedUp(height, interlaced ? 4 : 2) / 2;
  for (SInt32 row = 0; row < rows; ++row) {
    CO_PadChromaLine(cb + std::ptrdiff_t{row} * cbStride, RoundedUp(samples, kChromaPadding),
                     samples);
    CO_PadChromaLine(cr + std::ptrdiff_t{row} * crStride, RoundedUp(samples, kChromaPadding),
                     samples);
  }
}

void CO_2vuyFrameY_ToY420(SInt32 height, SInt32 width, Boolean interlaced, SInt32 sourceStride,
                          const UInt8* source, UInt8* y, SInt32 yStride) {
  const SInt32 padded_width = RoundedUp(width, kLumaPadding);
  const auto copy = [&](SInt32 from, SInt32 to) {
    CO_2vuyCopyLineYToY420(width, padded_width, source + std::ptrdiff_t{from} * sourceStride,
                           y + std::ptrdiff_t{to} * yStride);
  };
  for (SInt32 line = 0; line < height; ++line)
    copy(line, line);
  if (height < 1) return;
  const SInt32 padded_height = RoundedUp(height, interlaced ? 4 : 2);
  for (SInt32 line = height; line < padded_height; ++line) {
    const SInt32 behind = (line - height) % 2 == 0 && interlaced ? 2 : 1;
    copy(std::max(height - behind, 0), line);
  }
}
