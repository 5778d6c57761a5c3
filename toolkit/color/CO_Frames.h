/// Whole 2vuy frames in place: painting, moving, flipping, and what odd widths and heights need.
///
/// A frame is its first byte, a height and a width in pixels; where no stride in bytes is told it
/// is width times 2. A colour is Y, Cb, Cr. Pixels with an even index have the Cb of their pair,
/// odd ones the Cr. Places beyond a line are cut off, and sizes below 1 do nothing; nothing fails
/// or allocates, and nothing outside the frame is touched.
#pragma once

#include "CO_Basic.h"
#include "base_types.h"

// Odd widths and heights. Frames of an odd width that are to hold whole pairs have one pixel more
// in each line, a stride of width times 2 + 2.

/// Moves the lines of an odd width to that stride, from the last to the first, so that both may be
/// the same, and adds the pixel: the luma of the last one, the chroma byte of the one before it
/// (its own in a width of 1). Nothing for an even width.
void CO_2vuyFrameMakeLinesEvenWidth(SInt32 width, SInt32 height, const UInt8* source,
                                    UInt8* destination);
/// Sets that pixel in a frame that has the stride.
void CO_2vuyFrameCopyLastPixelOnOddWidthLines(SInt32 width, SInt32 height, UInt8* frame);
/// For an odd height of 3 or more: copies line height - 2 behind the frame, which has room for one
/// more line.
void CO_2vuyFrameCopyLastInterlacedLine(SInt32 width, SInt32 height, UInt8* frame);

// Moving chroma.

/// Moves chroma one pixel to the right, which makes Cb of Cr; the first pixel takes that of the
/// third. Nothing for less than 3 pixels.
void CO_ShiftChromaLine(SInt32 width, UInt8* line);
/// The same over a frame as one long line.
void CO_ShiftFrameChroma(SInt32 height, SInt32 width, UInt8* frame);
/// Exchanges the chroma of lines 1 and 2 of each four lines.
void CO_SwapInterlacedChromaLines(SInt32 width, SInt32 height, UInt8* frame);

// Shifting: to the right and down for a positive shift. What becomes free is painted.

/// An odd shift ends as CO_ShiftChromaLine does, which brings Cb and Cr back to their places.
void CO_ShiftLineHorizontal(UInt8* line, SInt32 width, SInt32 shift, const CO_YCbCrU8* fill);
void CO_ShiftFrameHorizontal(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride, SInt32 shift,
                             const CO_YCbCrU8* fill);
void CO_ShiftFrameVertical(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride, SInt32 shift,
                           const CO_YCbCrU8* fill);
/// Each field of height / 2 lines by itself.
void CO_ShiftFrameVerticalInterlaced(UInt8* frame, SInt32 height, SInt32 width, SInt32 stride,
                                     SInt32 shift, const CO_YCbCrU8* fill);

// Painting.

void CO_PaintHorizLine(const CO_YCbCrU8* color, SInt32 width, UInt8* line);
/// Fills rows from the top.
void CO_PaintHorizBar(SInt32 width, UInt8* frame, SInt32 rows, const CO_YCbCrU8* color);
/// Fills the pixels `from` to `to` - 1. A pair that is painted in part has the mean of both chroma
/// values in common with its neighbour.
void CO_PaintHorizLinePiece(const CO_YCbCrU8* color, SInt32 width, SInt32 from, SInt32 to,
                            UInt8* line);
void CO_PaintVertBar(const CO_YCbCrU8* color, SInt32 width, SInt32 height, SInt32 from, SInt32 to,
                     UInt8* frame);
/// Fills what lies outside of a rectangle.
void CO_PaintEdge(UInt8* frame, SInt32 width, SInt32 height, const Rect* rect,
                  const CO_YCbCrU8* color);
/// Luma 0 and chroma 128.
void CO_PaintLineBlack(SInt32 width, UInt8* line);
void CO_PaintVerticalBarBlack(SInt32 height, SInt32 width, UInt8* frame, SInt32 from, SInt32 to);
/// Whole rows, `from` to `to` - 1, which the frame is to have.
void CO_PaintHorizBarBlack(SInt32 width, UInt8* frame, SInt32 from, SInt32 to);
void CO_PaintFrameBlack(SInt32 height, SInt32 width, UInt8* frame);

/// Copies `barWidth` columns of one frame to another of the same size. Where the columns differ in
/// parity the chroma comes from the next pixel, and at the end of the line from the one before.
void CO_CopyVertBar(SInt32 height, SInt32 width, const UInt8* source, UInt8* destination,
                    SInt32 sourceColumn, SInt32 destinationColumn, SInt32 barWidth);

// Flips and halves.

/// Mirrors a line: its luma, and its chroma by pairs, in an odd width by pixels.
void CO_Flip2vuyLineHorizontal(SInt32 width, UInt8* line);
/// Exchanges rows from both ends; `temporary` has room for one. The last row of an odd height stays
/// where it is.
void CO_FlipFrameVertical(SInt32 height, UInt8* frame, UInt8* temporary, SInt32 stride);
/// The same for a frame of 4 bytes a pixel.
void CO_FlipARGB_FrameVertical(SInt32 height, SInt32 width, UInt8* frame, UInt8* temporary);
/// Every other row and every other pair, without a filter: height / 4 times 2 rows of width / 4
/// pairs.
void CO_Scale2vuyFrameToHalfSizeSimple(SInt32 height, SInt32 width, const UInt8* source,
                                       SInt32 sourceStride, UInt8* destination,
                                       SInt32 destinationStride);

// Components as floats. A component is every `step`-th byte from `offset` on; a step of 4 means
// chroma, of width / 2 samples a row. Strides in bytes.

void CO_CopyYUV422_FrameCompToFloat(const UInt8* source, SInt32 sourceStride, SInt32 height,
                                    SInt32 width, SInt32 offset, SInt32 step, float* destination,
                                    SInt32 destinationStride);
/// Limited to 0 to 255, plus 0.49, cut.
void CO_CopyYUV422_FrameFloatToComp(const float* source, SInt32 sourceStride, SInt32 height,
                                    SInt32 width, SInt32 offset, SInt32 step, UInt8* destination,
                                    SInt32 destinationStride);

// Luma gamma: (Y / 235)^exponent times 235 + 0.49, cut to its lowest 8 bits, so that codes above
// 235 may wrap with an exponent above 1.

void CO_Change2vuyLineYGamma(UInt8* line, SInt32 width, float exponent);
void CO_Change2vuyFrameYGamma(UInt8* frame, SInt32 height, SInt32 width, float exponent);

// The vertical filters of CO_filter.h on all columns of a frame, luma and chroma.

void CO_VertLowPassFilterFrame(SInt32 width, SInt32 height, UInt8* frame);
void CO_VertLowPassFilterFrame7(SInt32 width, SInt32 height, UInt8* frame);
void CO_VertLowPassFilterFrame9(SInt32 width, SInt32 height, UInt8* frame);
/// `scratch` has room for height + 4 samples.
void CO_FilterFrameVertBr(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch);
void CO_FilterFrameVertChroma(SInt32 width, SInt32 height, UInt8* frame, UInt8* scratch);
