/// Filters along one vertical column of 8-bit samples of a frame, luma or chroma: they remove lines
/// that stick out, twitter between lines and doubled lines, soften, and halve the lines.
///
/// A column is a line count, the sample of line 0, and a stride in bytes; for one field of a frame
/// it is that of every second line. Filters change it in place, keep no state and allocate nothing;
/// each pass sees the column as it stood when the pass began. A sample is what the formula gives
/// plus 0.49, cut. Filters of five and more lines leave a column of fewer than 5 lines as it is.
#pragma once

#include "base_types.h"

// Low-pass filters.

/// Outliers, then twitter, then doubled lines, one pass each; both ends are smoothed.
void CO_LowPassFilterVertLineNew(SInt32 lineCount, UInt8* column, SInt32 stride);
/// Outliers and craters, then twitter and doubled lines, each repeated until a pass makes no
/// correction above 5, at most 200 passes in all.
void CO_LowPassFilterVertLine(SInt32 lineCount, UInt8* column, SInt32 stride);
/// Seven symmetric taps whose result stays within the three lines around it, so that edges don't
/// overshoot; shorter ones near the ends. See NR_MakeLowPassFilter7_d.
void CO_LowPassFilterVertLine7(SInt32 lineCount, const double* taps, UInt8* column, SInt32 stride);
/// Nine taps, limited to 0 to 255. See NR_MakeLowPassFilter9_d.
void CO_LowPassFilterVertLine9(SInt32 lineCount, const double* taps, UInt8* column, SInt32 stride);

// Two lines to one: lineCount / 2 rows, or in the tent with an odd count those that have all their
// lines. Nothing is written for fewer than two lines.

/// The taps 1, 3, 3, 1 eighths; the mean of two lines at the ends.
void CO_SubsampleVertLineTent(SInt32 lineCount, const UInt8* source, SInt32 sourceStride,
                              UInt8* destination, SInt32 destinationStride);
/// Eight taps, limited to 0 to 255; means of two lines at the ends. See
/// NR_MakeSubsamplingFilter8_d.
void CO_SubsampleVertLine8(SInt32 lineCount, const double* taps, const UInt8* source,
                           SInt32 sourceStride, UInt8* destination, SInt32 destinationStride);

// Columns of a 2vuy frame of `width` pixels and no padding: `pixelColumn` counts bytes in pairs
// from 0, chroma being the first of a pair and luma the second. `scratch` has room for lineCount
// + 4.

/// Smooths chroma by the taps 1, 2, 2, 2, 1 eighths.
void CO_FilterVertChromaLine(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                             UInt8* scratch);
/// Brings zigzags of chroma a quarter of the way together, then removes single peaks and dips.
void CO_FilterVertChromaLine2(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                              UInt8* scratch);
/// Moves luma that stands out from the lines beside it toward those of its own field, by at most a
/// quarter of how much it stands out.
void CO_FilterVertBrLine(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                         UInt8* scratch);

// What the low-pass filters look for, in consecutive samples.

/// The correction of c that leaves it at most 20 beyond what the lines of both sides lead to; 0 for
/// none.
SInt32 CO_RemoveOutlier(SInt32 a, SInt32 b, SInt32 c, SInt32 d, SInt32 e);
/// The corrections of b, c and d for a c that stands out while b and d stand out the other way. The
/// shape isn't tested: it is read as a peak if b is not above a, else as a dip.
void CO_RemoveCrater(SInt32 a, SInt32 b, SInt32 c, SInt32 d, SInt32 e, SInt32* correctionB,
                     SInt32* correctionC, SInt32* correctionD);
/// How far b and c, which zigzag against a and d, are to move together: at most half their step.
/// 0 for no zigzag.
SInt32 CO_ReduceTwitter(SInt32 a, SInt32 b, SInt32 c, SInt32 d);
/// How far b and c are to move together if the step between them is more than three times those
/// beside it. 0 for none; negative, and to be ignored, where the outer lines lead across.
SInt32 CO_ReduceLineDoubling(SInt32 a, SInt32 b, SInt32 c, SInt32 d);
/// Merges corrections of b, c and d, at the lines i - 3, i - 2 and i - 1, into what is proposed for
/// these lines: weighted means, a correction's weight being the magnitude of that of c. Values and
/// weights are rings of 5 by line number; a correction of c of 0 changes nothing, one of 0 of b or
/// d not that line. `largest` (may be null) is raised to the magnitude.
void CO_UpdateNewValues(SInt32 i, SInt32 b, SInt32 c, SInt32 d, SInt32 correctionB,
                        SInt32 correctionC, SInt32 correctionD, double* values, double* weights,
                        SInt32* largest);
