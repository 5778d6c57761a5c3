#include "CO_Float_Lines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>

#include "CO_Ranges.h"
#include "float_lines_private.h"
#include "vector_clones.h"

namespace {

using quillmere::color::FloatLines;
using quillmere::color::kChromaOffset;
using quillmere::color::Reading;
using quillmere::color::Writing;

constexpr UInt8 kChromaSign = 0x80;

constexpr Reading kFullReading = {0.003921569F, 0, 0.003921569F, -0.5019608F};
constexpr Reading kVideoReading = {0.00456621F, -0.07305936F, 0.004464286F, -0.5714286F};

const Reading& ReadingOf(SInt32 range) {
  return range == kCO_FullRange ? kFullReading : kVideoReading;
}

Writing WritingOf(SInt32 range) {
  return range == kCO_VideoRange ? Writing{219, 16, 224} : Writing{255, 0, 255};
}

/// Limited to the codes; not a number is 0.
inline float Limited(float code) {
  const float positive = code > 0 ? code : 0;
  return positive < 255 ? positive : 255;
}

inline UInt8 Rounded(float value, float scale, float offset) {
  return static_cast<UInt8>(static_cast<SInt32>(Limited(scale * value + offset + 0.5F)));
}

/// Samples at every `step`-th byte as floats.
template <int step>
inline void ReadSamples(SInt32 count, const UInt8* from, float scale, float offset, float* to) {
  for (std::ptrdiff_t i = 0; i < count; ++i)
    to[i] = static_cast<float>(from[i * step]) * scale + offset;
}

QUILLMERE_VECTOR_CLONES void ReadLuma(SInt32 count, const UInt8* from, float scale, float offset,
                                      float* to) {
  ReadSamples<2>(count, from, scale, offset, to);
}

QUILLMERE_VECTOR_CLONES void ReadChroma(SInt32 count, const UInt8* from, float scale, float offset,
                                        float* to) {
  ReadSamples<4>(count, from, scale, offset, to);
}

/// The chroma of whole pairs from one sample more, at every fourth byte.
QUILLMERE_VECTOR_CLONES void ReadPairs(SInt32 pairs, const UInt8* from, float scale, float offset,
                                       bool interpolate, float* to) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k) {
    const float even = static_cast<float>(from[4 * k]) * scale + offset;
    const float next = static_cast<float>(from[4 * k + 4]) * scale + offset;
    to[2 * k] = even;
    to[2 * k + 1] = interpolate ? (even + next) * 0.5F : next;
  }
}

/// One chroma component of a line in 4:4:4, whose `samples` are at every fourth byte; behind the
/// last of them its value stays.
void ReadWideChroma(SInt32 width, SInt32 samples, const UInt8* from, const Reading& reading,
                    bool interpolate, float* to) {
  const SInt32 pairs = std::max(samples - 1, 0);
  ReadPairs(pairs, from, reading.chroma_scale, reading.chroma_offset, interpolate, to);
  if (samples < 1) return;
  const float last = static_cast<float>(from[std::ptrdiff_t{pairs} * 4]) * reading.chroma_scale +
                     reading.chroma_offset;
  std::fill(to + std::ptrdiff_t{pairs} * 2, to + width, last);
}

/// The line of at least one pixel; a last odd one has the Cr of the one before it.
void ReadPlain(SInt32 width, const UInt8* line, const Reading& reading, bool interpolate,
               const FloatLines& to) {
  ReadLuma(width, line + 1, reading.luma_scale, reading.luma_offset, to.y);
  ReadWideChroma(width, (width + 1) / 2, line, reading, interpolate, to.cb);
  const SInt32 pairs = width / 2;
  ReadWideChroma(pairs * 2, pairs, line + 2, reading, interpolate, to.cr);
  if (width % 2 == 1) to.cr[width - 1] = pairs > 0 ? to.cr[width - 2] : 0;
}

QUILLMERE_VECTOR_CLONES void SwapPairs(SInt32 pairs, const UInt8* source, UInt8* destination,
                                       UInt8 first, UInt8 second) {
  for (std::ptrdiff_t i = 0; i < pairs; ++i) {
    const UInt8 byte = source[2 * i];
    destination[2 * i] = source[2 * i + 1] ^ first;
    destination[2 * i + 1] = byte ^ second;
  }
}

template <class Swap>
void SwapFrame(SInt32 width, SInt32 height, const UInt8* source, UInt8* destination,
               SInt32 source_stride, SInt32 destination_stride, Swap swap) {
  for (SInt32 row = 0; row < height; ++row)
    swap(width, source + std::ptrdiff_t{row} * source_stride,
         destination + std::ptrdiff_t{row} * destination_stride);
}

QUILLMERE_VECTOR_CLONES void WriteLuma(SInt32 width, const float* luma, float scale, float offset,
                                       UInt8* line) {
  for (std::ptrdiff_t i = 0; i < width; ++i)
    line[2 * i + 1] = Rounded(luma[i], scale, offset);
}

QUILLMERE_VECTOR_CLONES void WriteChroma(SInt32 pairs, const float* cb, const float* cr,
                                         float scale, UInt8* line) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k) {
    line[4 * k] = Rounded(cb[2 * k], scale, kChromaOffset);
    line[4 * k + 2] = Rounded(cr[2 * k], scale, kChromaOffset);
  }
}

QUILLMERE_VECTOR_CLONES void WriteMeanChroma(SInt32 pairs, const float* chroma, float scale,
                                             UInt8* line) {
  for (std::ptrdiff_t k = 0; k < pairs; ++k) {
    const int sum = Rounded(chroma[2 * k], scale, kChromaOffset) +
                    Rounded(chroma[2 * k + 1], scale, kChromaOffset);
    line[4 * k] = static_cast<UInt8>(sum >> 1);
  }
}

/// A code and its fraction in 65536ths, rounded up: above a threshold of `state` in 65536ths the
/// code is the next one exactly when code * 65536 + fraction + 65535 - state reaches it.
QUILLMERE_VECTOR_CLONES void MakeKeys(SInt32 count, const float* values, float scale, float offset,
                                      SInt32* keys) {
  for (std::ptrdiff_t i = 0; i < count; ++i)
    keys[i] = static_cast<SInt32>(std::ceil(Limited(scale * values[i] + offset) * 65536));
}

/// A linear congruential generator that keeps the upper half of its 32 bits.
template <UInt32 multiplier, UInt32 increment>
class Generator {
 public:
  explicit Generator(UInt32 state) : state_(state) {}
  UInt8 Dither(SInt32 key) {
    const auto code = static_cast<UInt8>((key + 65535 - static_cast<SInt32>(state_)) >> 16);
    state_ = (state_ * multiplier + increment) >> 16;
    return code;
  }
  UInt32 state() const { return state_; }

 private:
  UInt32 state_;
};
using LumaGenerator = Generator<1103515245, 12345>;
using ChromaGenerator = Generator<1664525, 1013904223>;

inline UInt8 Cut(float code) {
  constexpr float kMargin = 1.0F / 64;
  return static_cast<UInt8>(static_cast<SInt32>(Limited(code + kMargin)));
}

void Widen(SInt32 width, const float* half, float* wide) {
  if (width < 1) return;
  const std::ptrdiff_t samples = (std::ptrdiff_t{width} + 1) / 2;
  for (std::ptrdiff_t k = 0; k + 1 < samples; ++k) {
    wide[2 * k] = half[k];
    wide[2 * k + 1] = (half[k] + half[k + 1]) * 0.5F;
  }
  wide[2 * (samples - 1)] = half[samples - 1];
  if (width % 2 == 0) wide[width - 1] = half[samples - 1];
}

UInt8 LimitedByte(SInt32 value) {
  return static_cast<UInt8>(std::clamp(value, 0, 255));
}

}  // namespace

void CO_ByteSwap2vuyLine(SInt32 width, const UInt8* source, UInt8* destination) {
  SwapPairs(width, source, destination, 0, kChromaSign);
}

void CO_ByteSwapYuv2Line(SInt32 width, const UInt8* source, UInt8* destination) {
  SwapPairs(width, source, destination, kChromaSign, 0);
}

void CO_ByteSwap2vuyFrame(SInt32 width, SInt32 height, const UInt8* source, UInt8* destination,
                          SInt32 sourceStride, SInt32 destinationStride) {
  SwapFrame(width, height, source, destination, sourceStride, destinationStride,
            CO_ByteSwap2vuyLine);
}

void CO_ByteSwapYuv2Frame(SInt32 width, SInt32 height, const UInt8* source, UInt8* destination,
                          SInt32 sourceStride, SInt32 destinationStride) {
  SwapFrame(width, height, source, destination, sourceStride, destinationStride,
            CO_ByteSwapYuv2Line);
}

void CO_2vuyLineToYUV(SInt32 width, const UInt8* line, EditData* edit, Boolean interpolate) {
  if (width < 1) return;
  const Reading& reading = ReadingOf(edit->sourceRange);
  const FloatLines lines = {edit->lineY, edit->lineCb, edit->lineCr};
  const SInt32 done = quillmere::color::ReadWide(width, line, reading, interpolate != 0, lines);
  ReadPlain(width - done, line + std::ptrdiff_t{done} * 2, reading, interpolate != 0,
            {lines.y + done, lines.cb + done, lines.cr + done});
}

void CO_YUVF_LinesTo2vuy(SInt32 width, const EditData* edit, UInt8* line, Boolean average) {
  const Writing writing = WritingOf(edit->destRange);
  const SInt32 pairs = width / 2;
  const FloatLines lines = {edit->lineY, edit->lineCb, edit->lineCr};
  const SInt32 done = average ? 0 : quillmere::color::WriteWide(width, lines, writing, line);
  UInt8* const rest = line + std::ptrdiff_t{done} * 2;
  WriteLuma(width - done, lines.y + done, writing.luma_scale, writing.luma_offset, rest);
  if (average) {
    WriteMeanChroma(pairs, lines.cb, writing.chroma_scale, line);
    WriteMeanChroma(pairs, lines.cr, writing.chroma_scale, line + 2);
  } else {
    WriteChroma(pairs - done / 2, lines.cb + done, lines.cr + done, writing.chroma_scale, rest);
  }
  if (width > 0 && width % 2 == 1) {
    line[2 * std::ptrdiff_t{width - 1}] =
        Rounded(edit->lineCb[width - 1], writing.chroma_scale, kChromaOffset);
  }
}

void CO_YUVF_LinesToUInt8withDitherLCG(SInt32 width, const EditData* edit, UInt32* lumaSeed,
                                       UInt32* chromaSeed, UInt8* line) {
  const Writing writing = WritingOf(edit->destRange);
  LumaGenerator luma(*lumaSeed & 0xFFFF);
  ChromaGenerator chroma(*chromaSeed & 0xFFFF);
  // So few pixels that the processor makes the next ones' keys while the generators, each of whose
  // steps waits for the one before, are at work on these.
  constexpr SInt32 kStep = 32;
  SInt32 y[kStep];
  SInt32 cb[kStep];
  SInt32 cr[kStep];
  for (SInt32 first = 0; first < width; first += kStep) {
    const SInt32 count = std::min(kStep, width - first);
    MakeKeys(count, edit->lineY + first, writing.luma_scale, writing.luma_offset, y);
    MakeKeys(count, edit->lineCb + first, writing.chroma_scale, kChromaOffset, cb);
    MakeKeys(count, edit->lineCr + first, writing.chroma_scale, kChromaOffset, cr);
    UInt8* out = line + std::ptrdiff_t{first} * 2;
    for (std::ptrdiff_t i = 0; i < count; i += 2, out += 4) {
      out[1] = luma.Dither(y[i]);
      out[0] = chroma.Dither(cb[i]);
      if (i + 1 == count) break;
      out[3] = luma.Dither(y[i + 1]);
      out[2] = chroma.Dither(cr[i]);
    }
  }
  *lumaSeed = luma.state();
  *chromaSeed = chroma.state();
}

void CO_2vuyLineToPlanarYCbCr422F(SInt32 width, const UInt8* line, const EditData* edit,
                                  float* luma, float* cb, float* cr) {
  if (width < 1) return;
  const Reading& reading = ReadingOf(edit->sourceRange);
  const SInt32 pairs = width / 2;
  ReadLuma(width, line + 1, reading.luma_scale, reading.luma_offset, luma);
  ReadChroma((width + 1) / 2, line, reading.chroma_scale, reading.chroma_offset, cb);
  ReadChroma(pairs, line + 2, reading.chroma_scale, reading.chroma_offset, cr);
  if (width % 2 == 1) cr[pairs] = pairs > 0 ? cr[pairs - 1] : 0;
}

void CO_PlanarYCbCr422F_LineTo2vuy(SInt32 width, const EditData* edit, const float* luma,
                                   const float* cb, const float* cr, UInt8* line) {
  const bool is_full = edit->destRange == kCO_FullRange;
  const Reading& reading = is_full ? kFullReading : kVideoReading;
  const float luma_scale = is_full ? 255 : 219;
  const float chroma_scale = is_full ? 255 : 224;
  for (std::ptrdiff_t i = 0; i < width; ++i) {
    const float chroma = i % 2 == 0 ? cb[i / 2] : cr[i / 2];
    line[2 * i] = Cut((chroma - reading.chroma_offset) * chroma_scale);
    line[2 * i + 1] = Cut((luma[i] - reading.luma_offset) * luma_scale);
  }
}

void CO_PlanarYCbCr422F_LinesToYUVF(SInt32 width, const float* luma, const float* cb,
                                    const float* cr, float* const lines[3]) {
  std::copy_n(luma, std::max(width, 0), lines[0]);
  Widen(width, cb, lines[1]);
  Widen(width, cr, lines[2]);
}

void CO_YUVF_LinesSanityCheck(SInt32 width, float* const lines[3]) {
  constexpr float kLeast = 0.00001F;
  constexpr float kMost = 0.9999F;
  for (std::ptrdiff_t i = 0; i < width; i += 2) {
    const float luma = lines[0][i];
    float factor = 1;
    if (luma < kLeast) {
      lines[0][i] = 0;
      factor = 0;
    } else if (luma > kMost) {
      lines[0][i] = kMost;
      factor = std::min(1.0F, 1 / luma);
    }
    lines[1][i] *= factor;
    lines[2][i] *= factor;
  }
}

void CO_YUVF_LinesLimitIRE(SInt32 width, float* const lines[3], float limit) {
  for (std::ptrdiff_t i = 0; i < width; ++i) {
    const float room = limit * 255 - lines[0][i];
    const float u = lines[1][i] * 0.87202066F;
    const float v = lines[2][i] * 1.2299507F;
    const float amplitude = u * u + v * v;
    if (!(amplitude > room * room)) continue;
    const float factor = std::sqrt(room * room / amplitude);
    lines[1][i] *= factor;
    lines[2][i] *= factor;
  }
}

void CO_ScaleLineCwithY(SInt32 width, const float* lumaA, const float* lumaB, float* chroma) {
  for (std::ptrdiff_t i = 0; i < width; ++i) {
    const float a = lumaA[i];
    const float b = lumaB[i];
    const float up = a < 1 ? 128 : a < 128 ? 128 / a : a / 128;
    const float down = b < 1 ? 1.0F / 128 : b < 128 ? b / 128 : 128 / b;
    chroma[i] *= std::clamp(up * down, 0.0F, 2.0F);
  }
}

void CO_WriteSanityCheckTestPattern(SInt32 width, SInt32 height, UInt8* frame) {
  const std::ptrdiff_t count = std::ptrdiff_t{std::max(width, 0)} * std::max(height, 0);
  for (std::ptrdiff_t i = 0; i < count; ++i, frame += 2) {
    frame[0] = LimitedByte(2 * (frame[0] - 128) + 128);
    frame[1] = LimitedByte(frame[1] + 40);
  }
}

void CO_FrameSanityCheck_Test(SInt32 height, SInt32 width, UInt8* frame, EditData* edit) {
  for (SInt32 row = 0; row < height; ++row, frame += std::ptrdiff_t{width} * 2) {
    CO_2vuyLineToYUV(width, frame, edit, 1);
    CO_YUVF_LinesTo2vuy(width, edit, frame, 0);
  }
  std::printf("CO_FrameSanityCheck_Test: numCorrected = %ld\n", 0L);
}
