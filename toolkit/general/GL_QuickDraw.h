/// Plane geometry on whole pixels. Width is right minus left, height bottom minus top; right and
/// bottom lie outside. Pure functions: no failure, no shared state.
#pragma once

#include "base_types.h"

/// A size word: width in the high 16 bits, height in the low 16 bits.
using GL_SizeWord = UInt32;

GL_SizeWord GL_GetRectSize(const Rect* rect);
/// Width and height of a size word, in pixels.
inline SInt16 GL_WidthOfSize(GL_SizeWord size) {
  return static_cast<SInt16>(size >> 16);
}
inline SInt16 GL_HeightOfSize(GL_SizeWord size) {
  return static_cast<SInt16>(size & 0xFFFF);
}

/// A fraction: numerator and denominator as they stand, not reduced.
struct GL_FitRatio {
  SInt32 numerator;
  SInt32 denominator;
};

/// Fits the whole source into the box, centred, its proportions kept: the side that fills takes the
/// box's size, the other is rounded half up. An odd remainder makes the result one pixel larger
/// than the computed size. `fitted`, `scale` (the size ratio as a float) and `ratio` may each be
/// null. A source without area gives the box and a scale of 0.
void GL_FitRectInBox(const Rect* source, const Rect* box, Rect* fitted, float* scale,
                     GL_FitRatio* ratio);
