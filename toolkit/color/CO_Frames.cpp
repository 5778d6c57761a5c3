#include "CO_Frames.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <utility>

namespace {

/// Bytes of a number of pixels.
std::ptrdiff_t BytesOf(SInt32 pixels) {
  return std::ptrdiff_t{pixels} * 2;
}

/// Adds a pixel behind the last of an odd width.
void AddPixel(SInt32 width, UInt8* line) {
  UInt8* const added = line + BytesOf(width);
  added[0] = width > 1 ? added[-4] : added[-2];
  added[1] = added[-1];
}

void ExchangeRows(SInt32 height, UInt8* frame, UInt8* temporary, std::ptrdiff_t stride) {
  const auto size = static_cast<std::size_t>(stride);
  const SInt32 last = height / 2 * 2 - 1;
  for (SInt32 row = 0; row < height / 2; ++row) {
    UInt8* const a = frame + row * stride;
    UInt8* const b = frame + (last - row) * stride;
    std::memcpy(temporary, a, size);
    std::memcpy(a, b, size);
    std::memcpy(b, temporary, size);
  }
}

/// The fill colour of pixel `i` of a line that moves by `shift`.
void PaintFree(UInt8* line, std::ptrdiff_t i, SInt32 shift, const CO_YCbCrU8& fill) {
  line[2 * i] = (i + shift) % 2 != 0 ? fill.cr : fill.cb;
  line[2 * i + 1] = fill.y;
}

SInt32 SamplesOf(SInt32 width, SInt32 step) {
  return step == 4 ? width / 2 : width;
}

}  // namespace

void CO_2vuyFrameMakeLinesEvenWidth(SInt32 width, SInt32 height, const UInt8* source,
                                    UInt8* destination) {
  if (width < 1 || width % 2 == 0) return;
  for (SInt32 row = height - 1; row >= 0; --row) {
    UInt8* const line = destination + row * (BytesOf(width) + 2);
    std::memmove(line, source + row * BytesOf(width), static_cast<std::size_t>(BytesOf(width)));
    AddPixel(width, line);
  }
}

void CO_2vuyFrameCopyLastPixelOnOddWidthLines(SInt32 width, SInt32 height, UInt8* frame) {
  if (width < 1 || width % 2 == 0) return;
  for (SInt32 row = 0; row < height; ++row)
    AddPixel(width, frame + row * (BytesOf(width) + 2));
}

void CO_2vuyFrameCopyLastInterlacedLine(SInt32 width, SInt32 height, UInt8* frame) {
  if (width < 1 || height < 3 || height % 2 == 0) return;
  std::memcpy(frame + height * BytesOf(width), frame + (height - 2) * BytesOf(width),
              static_cast<std::size_t>(BytesOf(width)));
}

void CO_ShiftChromaLine(SInt32 width, UInt8* line) {
  if (width < 3) return;
  for (std::ptrdiff_t i = width - 1; i > 0; --i)
    line[2 * i] = line[2 * (i - 1)];
  line[0] = line[4];
}

void CO_ShiftFrameChroma(SInt32 height, SInt32 width, UInt8* frame) {
  if (width < 1 || height < 1) return;
  CO_ShiftChromaLine(height * width, frame);
}

void CO_SwapInterlacedChromaLines(SInt32 width, SInt32 height, UInt8* frame) {
  for (SInt32 row = 0; row < height - 2; row += 4) {
    UInt8* const a = frame + (row + 1) * BytesOf(width);
    UInt8* const b = frame + (row + 2) * BytesOf(width);
    for (std::ptrdiff_t i = 0; i < width; ++i)
      std::swap(a[2 * i], b[2 * i]);
  }
}

void CO_ShiftLineHorizontal(UInt8* line, SInt32 width, SInt32 shift, const CO_YCbCrU8* fill) {
  if (width < 1 || shift == 0) return;
  const SInt32 distance =
      shift > 0 ? std::min(shift, width) : std::min(-std::max(shift, -width), width);
  const auto moved = static_cast<std::size_t>(BytesOf(width - distance));
  const SInt32 first = shift > 0 ? 0 : width - distance;
  if (shift > 0)
    std::memmove(line + BytesOf(distance), line, moved);
  else
    std::memmove(line, line + BytesOf(distance), moved);
  for (SInt32 i = first; i < first + distance; ++i)
    PaintFree(line, i, shift, *fill);
  if (shift % 2 != 0) CO_ShiftChromaLine(width, line);
}

void CO_ShiftFrameHorizontal(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride, SInt32 shift,
                             const CO_YCbCrU8* fill) {
  for (SInt32 row = 0; row < height; ++row)
    CO_ShiftLineHorizontal(frame + std::ptrdiff_t{row} * stride, width, shift, fill);
}

void CO_ShiftFrameVertical(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride, SInt32 shift,
                           const CO_YCbCrU8* fill) {
  if (width < 1 || height < 1) return;
  const auto row = [&](SInt32 index) { return frame + std::ptrdiff_t{index} * stride; };
  const auto size = static_cast<std::size_t>(BytesOf(width));
  const SInt32 by = std::clamp(shift, -height, height);
  for (SInt32 i = height - 1; by > 0 && i >= by; --i)
    std::memcpy(row(i), row(i - by), size);
  for (SInt32 i = 0; by < 0 && i < height + by; ++i)
    std::memcpy(row(i), row(i - by), size);
  const SInt32 first = by > 0 ? 0 : height + by;
  for (SInt32 i = first; i < first + std::abs(by); ++i)
    CO_PaintHorizLine(fill, width, row(i));
}

void CO_ShiftFrameVerticalInterlaced(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride,
                                     SInt32 shift, const CO_YCbCrU8* fill) {
  CO_ShiftFrameVertical(frame, height / 2, width, stride * 2, shift, fill);
  CO_ShiftFrameVertical(frame + stride, height / 2, width, stride * 2, shift, fill);
}

void CO_Flip2vuyLineHorizontal(SInt32 width, UInt8* line) {
  for (std::ptrdiff_t i = 0, k = width - 1; i < k; ++i, --k)
    std::swap(line[2 * i + 1], line[2 * k + 1]);
  const bool is_odd = width % 2 != 0;
  if (is_odd) {
    for (std::ptrdiff_t i = 0, k = width - 1; i < k; ++i, --k)
      std::swap(line[2 * i], line[2 * k]);
    return;
  }
  for (std::ptrdiff_t i = 0, k = width - 2; i < k; i += 2, k -= 2) {
    std::swap(line[2 * i], line[2 * k]);
    std::swap(line[2 * i + 2], line[2 * k + 2]);
  }
}

void CO_FlipFrameVertical(SInt32 height, UInt8* frame, UInt8* temporary, SInt32 stride) {
  ExchangeRows(height, frame, temporary, stride);
}

void CO_FlipARGB_FrameVertical(SInt32 height, SInt32 width, UInt8* frame, UInt8* temporary) {
  if (width > 0) ExchangeRows(height, frame, temporary, std::ptrdiff_t{width} * 4);
}

void CO_Scale2vuyFrameToHalfSizeSimple(SInt32 height, SInt32 width, const UInt8* source,
                                       SInt32 sourceStride, UInt8* destination,
                                       SInt32 destinationStride) {
  for (SInt32 row = 0; row < height / 4 * 2; ++row) {
    const UInt8* from = source + std::ptrdiff_t{row} * 2 * sourceStride;
    UInt8* to = destination + std::ptrdiff_t{row} * destinationStride;
    for (SInt32 k = 0; k < width / 4; ++k, from += 8, to += 4) {
      std::copy_n(from, 3, to);
      to[3] = from[5];
    }
  }
}

void CO_CopyYUV422_FrameCompToFloat(const UInt8* source, SInt32 sourceStride, SInt32 height,
                                    SInt32 width, SInt32 offset, SInt32 step, float* destination,
                                    SInt32 destinationStride) {
  auto* bytes = reinterpret_cast<UInt8*>(destination);
  for (SInt32 row = 0; row < height; ++row, source += sourceStride, bytes += destinationStride) {
    auto* const to = reinterpret_cast<float*>(bytes);
    for (std::ptrdiff_t i = 0; i < SamplesOf(width, step); ++i)
      to[i] = static_cast<float>(source[offset + i * step]);
  }
}

void CO_CopyYUV422_FrameFloatToComp(const float* source, SInt32 sourceStride, SInt32 height,
                                    SInt32 width, SInt32 offset, SInt32 step, UInt8* destination,
                                    SInt32 destinationStride) {
  const auto* bytes = reinterpret_cast<const UInt8*>(source);
  for (SInt32 row = 0; row < height;
       ++row, bytes += sourceStride, destination += destinationStride) {
    const auto* const from = reinterpret_cast<const float*>(bytes);
    for (std::ptrdiff_t i = 0; i < SamplesOf(width, step); ++i) {
      const float value = from[i] > 0 ? std::min(from[i], 255.0F) : 0;  // not a number is 0
      destination[offset + i * step] = static_cast<UInt8>(value + 0.49F);
    }
  }
}

void CO_Change2vuyLineYGamma(UInt8* line, SInt32 width, float exponent) {
  for (std::ptrdiff_t i = 0; i < width; ++i) {
    const double code = std::pow(line[2 * i + 1] / 235.0, static_cast<double>(exponent)) * 235;
    // A power below 0 of black has no end; the codes wrap.
    const bool is_finite = code < 1e9;
    line[2 * i + 1] = is_finite ? static_cast<UInt8>(static_cast<SInt64>(code + 0.49)) : UInt8{255};
  }
}

void CO_Change2vuyFrameYGamma(UInt8* frame, SInt32 height, SInt32 width, float exponent) {
  for (SInt32 row = 0; row < height; ++row)
    CO_Change2vuyLineYGamma(frame + row * BytesOf(width), width, exponent);
}
