/// Test patterns drawn into frames: rectangles, ramps, circles of hues, bars.
///
/// Frames are of 2vuy, with a width in pixels and rows of width times 2 bytes, or of ARGB with four
/// bytes a pixel; a stride is told in bytes. Rectangles (top, left, bottom, right) lie within the
/// frame; one without pixels draws nothing. Codes of colours are those of CO_Basic_Colors.h; one
/// that there is not draws nothing. Cb stands at even pixels of the frame, Cr at odd ones.
///
/// What converts colours takes the space to convert to: a colour parameter record and three curves
/// for one whose transfer function is not standard. It gives the statuses of
/// CO_ConvertNormRGB_F32_indexed; the frame keeps what was drawn until then.
#pragma once

#include "CO_Basic.h"
#include "CO_Gamma.h"
#include "QT_Nclc.h"
#include "base_types.h"

// Rectangles.

void CO_DrawRectangleColor(SInt32 stride, UInt8* frame, const Rect* rect, const CO_YCbCrU8* color);
void CO_DrawRectangleBasicColor(SInt32 width, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                SInt32 code);
void CO_DrawRectangleColorARGB(SInt32 stride, UInt8* frame, const Rect* rect,
                               const CO_ARGB8* color);
void CO_DrawRectangleBasicColorARGB(SInt32 stride, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                    SInt32 code);
/// The colour's luma, 0 to 255, into a plane of floats of `width` to a row.
void CO_DrawPlanarYF_Rectangle(SInt32 width, float* plane, const Rect* rect, SInt32 rangeType,
                               SInt32 code);

// Ramps.

/// From video black at the left to the colour.
void CO_DrawHorizRampBasicColor(SInt32 width, UInt8* frame, const Rect* rect, SInt32 rangeType,
                                SInt32 code);
/// Through red, yellow, green, cyan, blue and magenta back to red, each a sixth of the width, which
/// is a multiple of 6 (paramErr if not, or above a height of 1), with the chroma scaled, fading to
/// grey downward.
SInt32 CO_MakeColorRamp(SInt32 width, UInt8* frame, const Rect* rect, float chromaScale);
/// `count` values of rising brightness, from gamma 2.2 to the space: 0 to 255 for range type 2,
/// else 16 to 235. paramErr for fewer than 2.
SInt32 CO_CreateBrightnessRamp(SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                               SInt32 count, float* values);
/// One of these values, of a ramp of at least 2.
SInt32 CO_BrightnessOfStep(SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                           SInt32 count, SInt32 step, float* value);
/// Draws these values into rectangles below each other, as far as the frame's height goes; the
/// rectangle moves along.
SInt32 CO_DrawVertGreyScaleRamp(SInt32 width, SInt32 height, UInt8* frame, Rect* rect,
                                SInt32 rangeType, const GammaData* gamma, const QT_Nclc* nclc,
                                SInt32 count);
/// All of them into a frame of ARGB, alpha 255.
SInt32 CO_DrawVertGreyScaleRampARGB(SInt32 stride, UInt8* frame, Rect* rect, SInt32 rangeType,
                                    const GammaData* gamma, const QT_Nclc* nclc, SInt32 count);

// Circles: hue by the angle, chroma rising to `chromaRadius` (0 to 0.5) and luma from `innerLuma`
// to `outerLuma` (0 to 1) at the edge. Primaries are nine chromaticities
// (CO_IndexToPrimariesXYZ_D).

/// The colour of a place, counted from the centre; luma and offset chroma of 0 to 255. paramErr
/// also for a radius below 1, a gamma outside 1 to 3 and a range type outside 1 to 3.
SInt32 CO_CirclePosToColor(const float* primaries, const GammaData* gamma, const QT_Nclc* nclc,
                           SInt32 rangeType, float x, float y, float radius, float innerLuma,
                           float outerLuma, float chromaRadius, CO_YCbCrF32* color);
/// A circle of the rectangle's height at its top left, blended at its edge.
SInt32 CO_DrawColorCircle(SInt32 width, UInt8* frame, const Rect* rect, float innerLuma,
                          float outerLuma, float chromaRadius, const float* primaries,
                          const GammaData* gamma, const QT_Nclc* nclc, SInt32 rangeType);
SInt32 CO_DrawColorCircleARGB(SInt32 stride, UInt8* frame, const Rect* rect, float innerLuma,
                              float outerLuma, float chromaRadius, const float* primaries,
                              const GammaData* gamma, const QT_Nclc* nclc, SInt32 rangeType);

// Edges and bars.

/// Softens the edge between two pictures at the column of two points, from the top point's row to
/// in front of the bottom one's, as far as `halfWidth` pixels to both sides or to what is no edge
/// there (a step above `threshold`). paramErr for a threshold below 1, a half width below 2, a
/// width below 8, columns that differ or lie too near to the sides, and rows that don't rise; 14019
/// where details leave no room, with nothing changed.
SInt32 CO_BlurVerticalEdge(UInt8* frame, SInt32 width, Point top, Point bottom, SInt32 threshold,
                           SInt32 halfWidth);
/// Nine bars: black, red, green, blue, grey, cyan, magenta, yellow, white, all but the first and
/// last at half brightness, of custom primaries and white (x, y, z).
SInt32 DBG_DrawSMPTE_BarsYUV(SInt32 width, UInt8* frame, const Rect* rect, const float* primaries,
                             const float* white, const GammaData* gamma, const QT_Nclc* nclc,
                             SInt32 rangeType);
SInt32 DBG_DrawSMPTE_BarsARGB(SInt32 stride, UInt8* frame, const Rect* rect, const float* primaries,
                              const float* white, const GammaData* gamma, const QT_Nclc* nclc,
                              SInt32 rangeType);
/// Prints on standard output what a ramp of `count` values and such bars should read as in a
/// display of three curves; with `as1961` set by way of BT.709 taken as the power 1.961.
SInt32 DBG_PrintColorBars(const GammaData* gamma, SInt32 count, Boolean as1961);

// Text, and an image of all kinds.

/// Writes text in black over a rectangle: a font's name, its size in pixels, and the point at which
/// the text's base line begins, from the rectangle's bottom left up. Where text covers a pixel in
/// part, its colour goes as far toward black. memFullErr also for a rectangle without pixels.
SInt32 CO_DrawTextIn2vuyBox(UInt8* frame, SInt32 width, const Rect* rect, const char* fontName,
                            float fontSize, const char* text, Point point);
/// Fills a frame of 720 by 576 pixels in video range, from the top: ramps of seven colours,
/// numbered boxes, the colours in 18 steps, the boxes again, two ramps of hues with a softened edge
/// between them, and bars of the colours at three quarters.
SInt32 DBG_CreateTestImage720x576_2vuy(UInt8* frame);
