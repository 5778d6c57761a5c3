/// Conversion between 2vuy frames and planar frames of 4:2:0 (QT_Planar_Pixmaps.h).
///
/// Widths and heights are in pixels, strides in bytes. A chroma row of 4:2:0 lies half way between
/// two lines, in an interlaced frame of two lines of the same field; fields keep their chroma rows
/// in turns. In an odd width the last pixel has luma and one chroma byte. Sizes below 1 do nothing;
/// nothing fails or allocates, and nothing beyond the lines and rows told is touched.
#pragma once

#include "QT_Planar_Pixmaps.h"
#include "base_types.h"

// Single lines.

/// Copies the luma of two lines into rows, and the means of their chroma, cut, into rows of (width
/// + 1) / 2 samples. In an odd width the last chroma sample repeats the one before it; in a width
/// of 1 it is the line's own Cb, and 128 for Cr.
void CO_2vuyLinePairToY420(SInt32 width, const UInt8* lineA, const UInt8* lineB, UInt8* yA,
                           UInt8* yB, UInt8* cb, UInt8* cr);
/// Makes two lines that lie between two rows of chroma: of line A a quarter of the way from row 1
/// to row 2, of line B three quarters, cut. In an odd width the last chroma byte repeats that of
/// two pixels before, if there is one.
void CO_Y420_LinePairTo2vuyNew(SInt32 width, const UInt8* yA, const UInt8* yB, const UInt8* cb1,
                               const UInt8* cr1, const UInt8* cb2, const UInt8* cr2, UInt8* lineA,
                               UInt8* lineB);
/// Copies a line's luma and repeats its last sample up to the padded width.
void CO_2vuyCopyLineYToY420(SInt32 width, SInt32 paddedWidth, const UInt8* line, UInt8* row);
/// Repeats the sample in front of `start` up to `end`; nothing for a start below 1.
void CO_PadChromaLine(UInt8* row, SInt32 end, SInt32 start);

// Frames to 2vuy.

/// Lines of one pass, each pair between two chroma rows; the first line, and with an even count the
/// last, has one row on both sides.
void CO_Y420_FrameTo2vuyProgr(SInt32 lineCount, SInt32 width, const UInt8* y, SInt32 yStride,
                              const UInt8* cb, SInt32 cbStride, const UInt8* cr, SInt32 crStride,
                              UInt8* destination, SInt32 destinationStride);
/// A frame by its header, into lines of width times 2 bytes.
void CO_Y420_FrameTo2vuy(SInt32 height, SInt32 width, const PlanarPixmapInfoYUV420* frame,
                         UInt8* destination, Boolean interlaced);

// 2vuy to frames.

/// Lines of one pass in pairs, an odd last one with itself.
void CO_2vuyFrameToY420_Progr(SInt32 lineCount, SInt32 width, const UInt8* source,
                              SInt32 sourceStride, UInt8* y, SInt32 yStride, UInt8* cb,
                              SInt32 cbStride, UInt8* cr, SInt32 crStride);
/// A frame by its header, which is set. Each field of an interlaced one takes height / 2 lines: the
/// last line of an odd height is left out.
void CO_2vuyFrameToY420(SInt32 height, SInt32 width, SInt32 sourceStride, const UInt8* source,
                        PlanarPixmapInfoYUV420* frame, Boolean interlaced);
/// The same with chroma from four lines (CO_SubsampleVertLineTent), all lines of any height, and
/// rows and lines padded as the header has room for.
void CO_2vuyFrameToY420_Tent(SInt32 height, SInt32 width, SInt32 sourceStride, const UInt8* source,
                             PlanarPixmapInfoYUV420* frame, Boolean interlaced);

// The steps of the last.

/// Halves one pair of chroma columns: `source` is the Cb byte of the first line. An odd count gets
/// one more row that repeats the last, and a single line its own chroma.
void CO_2vuyVertLineChromaToY420(SInt32 lineCount, const UInt8* source, SInt32 sourceStride,
                                 UInt8* cb, SInt32 cbStride, UInt8* cr, SInt32 crStride);
/// Halves all pairs of a frame.
void CO_2vuyFrameVertChromaToY420(SInt32 height, SInt32 width, SInt32 sourceStride,
                                  const UInt8* source, UInt8* cb, SInt32 cbStride, UInt8* cr,
                                  SInt32 crStride, Boolean interlaced);
/// Widens chroma rows from width / 2 to that rounded up to a multiple of 16, in half as many rows
/// as the height rounded up to a multiple of 2, or 4 if interlaced.
void CO_PadY420_FrameCbCr(SInt32 height, SInt32 width, Boolean interlaced, UInt8* cb,
                          SInt32 cbStride, UInt8* cr, SInt32 crStride);
/// Copies luma, rows widened to a multiple of 32; then one more line for an odd height, or lines up
/// to a multiple of 4 that continue each field.
void CO_2vuyFrameY_ToY420(SInt32 height, SInt32 width, Boolean interlaced, SInt32 sourceStride,
                          const UInt8* source, UInt8* y, SInt32 yStride);
