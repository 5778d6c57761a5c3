/// Lines of 2vuy read as floats and written by AVX2, for CO_Float_Lines.h.
#pragma once

#include "base_types.h"

namespace quillmere::color {

/// value = code * scale + offset.
struct Reading {
  float luma_scale, luma_offset, chroma_scale, chroma_offset;
};

/// code = value * scale + offset, rounded.
struct Writing {
  float luma_scale, luma_offset, chroma_scale;
};
inline constexpr float kChromaOffset = 128;

/// The values of all pixels.
struct FloatLines {
  float* y;
  float* cb;
  float* cr;
};

/// Reads the first pixels of a line, an even number that leaves at least two, and tells how many; 0
/// on a processor without AVX2. Odd pixels get the mean of the chroma on both sides, or without
/// `interpolate` that behind them.
SInt32 ReadWide(SInt32 width, const UInt8* line, const Reading& reading, bool interpolate,
                const FloatLines& to);

/// Writes the first pixels of a line, an even number, with the chroma of even pixels, and tells how
/// many; 0 on a processor without AVX2.
SInt32 WriteWide(SInt32 width, const FloatLines& from, const Writing& writing, UInt8* line);

}  // namespace quillmere::color
