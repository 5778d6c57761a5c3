/// Measuring 2vuy frames: averages, histograms and their matching, banding, and numbers on standard
/// output.
///
/// A frame is its first byte and a width in pixels, with rows of width times 2 bytes. Rectangles
/// are measuring ones unless told otherwise: the fields of a Rect in their order are top, left,
/// width and height; they lie within the frame, and without pixels measure nothing. Cb stands at
/// even pixels of the frame, Cr at odd ones.
#pragma once

#include "base_types.h"

// Averages and histograms.

/// (sum + pixels / 2 - 1) / pixels of the luma; 0 without pixels.
SInt32 DBG_CalcAverageY(SInt32 width, const UInt8* frame, const Rect* rect);
/// The same of each chroma, with half of the pixels as their number.
void DBG_CalcAverageC(SInt32 width, const UInt8* frame, const Rect* rect, SInt32* cb, SInt32* cr);
/// Counts levels into three histograms of 256, which stop at 65535.
void CO_MakeYCbCr_Histogram(const UInt8* frame, SInt32 width, const Rect* rect, UInt16* y,
                            UInt16* cb, UInt16* cr);
/// Makes a table that maps the levels of one histogram of 256 onto those of another, so that as
/// many samples lie below; levels that the first doesn't have follow from those beside them. An
/// empty histogram gives the identity.
void CO_MatchHistograms(const UInt32* first, const UInt32* second, UInt8* table);
/// Prints the levels `from` to `to` of a luma histogram, and the averages of a rectangle.
void CO_MakeY_HistogramPrintRange(const char* label, const UInt8* frame, SInt32 width,
                                  const Rect* rect, SInt32 from, SInt32 to);
void CO_CalcAvYCbCrPrint(const char* label, const UInt8* frame, SInt32 width, const Rect* rect);

// Single colours.

/// The luma that gives a colour the linear luminance `target` with its chroma unchanged, to 0.001
/// below it: from 0 to `limit`, by the luma coefficients and the curve as CO_ConvertRGBtoLinear
/// takes them.
void CO_EqualizeLinearY(double limit, double target, double r, double g, double b, double kr,
                        double kg, double kb, double gamma, SInt32 rangeType, SInt32 gammaIndex,
                        double* luma);
/// The place of the colour in a table that is nearest to a pixel by CO_ColorDiff, the first of
/// equal ones; -1 in an empty table. The table falls by value, its topmost bytes being the same;
/// the search begins behind `start`.
SInt32 CO_FindMatchForPixel(UInt32 pixel, const UInt32* table, SInt32 count, SInt32 start);

// Banding.

/// The luma at a place in pixels, between pixels by bilinear interpolation.
double DBG_PointYValue(SInt32 width, const UInt8* frame, double x, double y);
/// How much the steps along a line stand out, at most 100: at each of its places 16 samples, a step
/// apart, are added by fours, and the change over their middle is divided by that beside it. About
/// 2 on a smooth ramp; 0 for less than 16 samples.
double DBG_CalcMaxBandingOnLine(SInt32 width, const UInt8* frame, SInt32 sampleCount, double x,
                                double y, double stepX, double stepY);
/// The mean of that over the lines of a rectangle (top, left, bottom, right) along its gradient, in
/// luma per pixel, which is measured with `measure` and else taken as 0. 0 without a gradient.
double DBG_DetectBanding2vuyY(SInt32 width, const UInt8* frame, const Rect* rect, double* gradientX,
                              double* gradientY, Boolean measure);

// Numbers of a frame, a row to a line, behind a head with `name` and `frameNumber`.

void DBG_PrintRectY(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect);
/// The rows of the top field from the first frame if `topFieldFrom1` is set, else from the second,
/// and those of the bottom field from the other.
void DBG_PrintRectY_sf(const char* name, SInt32 frameNumber, Boolean topFieldFirst,
                       Boolean topFieldFrom1, SInt32 width, const UInt8* frame1,
                       const UInt8* frame2, const Rect* rect);
void DBG_PrintRectC(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect);
/// Frames of 4 bytes a pixel: all of them, and the red ones.
void DBG_PrintRectARGB(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                       const Rect* rect);
void DBG_PrintRectR(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect);

/// Arrays and matrices, an array on one line.
void DGB_PrintArrayS32(const char* name, SInt32 count, const SInt32* values);
void DGB_PrintArrayS32_WithIndex(const char* name, SInt32 count, const SInt32* values);
void DGB_PrintArrayF64(const char* name, SInt32 count, const double* values);
void DGB_PrintMatrixS32(const char* name, SInt32 rows, SInt32 columns, const SInt32* values);
