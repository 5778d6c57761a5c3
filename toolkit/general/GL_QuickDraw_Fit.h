/// Fitting rectangles into each other, scaling and splitting them. Pure functions.
///
/// Fitted rectangles are centred by insets of the box that are cut toward zero, so that an odd
/// remainder makes the result one unit larger than the computed size. Of the outputs `out`, `scale`
/// and `ratio` each may be null. The scale is the ratio as a float. A source without area gives the
/// box, a scale of 0 and the ratio 0.
#pragma once

#include "GL_Math_Ratios.h"
#include "base_types.h"

/// The whole source inside the box, its proportions kept: the side that fills takes the box's size,
/// the other is rounded half up.
void GL_FitRectInBox(const Rect* source, const Rect* box, Rect* out, float* scale,
                     LongRatio* ratio);
/// The box wholly covered by the source: it overhangs the box evenly.
void GL_CoverBoxWithRect(const Rect* source, const Rect* box, Rect* out, float* scale,
                         LongRatio* ratio);
/// The same two in 16.16, the other side being rounded to the nearest.
void GL_FitFixedRectInBox(const FixedRect* source, const FixedRect* box, FixedRect* out,
                          float* scale, LongRatio* ratio);
void GL_CoverBoxWithFixedRect(const FixedRect* source, const FixedRect* box, FixedRect* out,
                              float* scale, LongRatio* ratio);

/// Scales a rectangle by 16.16 factors; its top left stays.
void GL_ScaleRect(Rect* rect, Fixed scaleH, Fixed scaleV);
/// The centred part of the box that has the proportions of a picture of that size in pixels; empty
/// if the picture or the box has no area.
void GL_GetScaledPictureLetterbox(SInt32 pictureWidth, SInt32 pictureHeight, const Rect* box,
                                  Rect* out);
/// The quarters of a rectangle: top left, top right, bottom left and bottom right, of which each
/// may be null, though not all of the first three, or nothing is written. The left and the upper
/// ones take an odd pixel.
void GL_SplitRect(const Rect* rect, Rect* q1, Rect* q2, Rect* q3, Rect* q4);
