/// Lines of 2vuy video and lines of floats.
///
/// A 2vuy line has the bytes Cb, Y0, Cr, Y1 for two pixels; float lines are 4:4:4 with luma 0.0 to
/// 1.0 and chroma -0.5 to +0.5 (CO_Edit_Data.h). Widths are in pixels; a width below 1 does
/// nothing. The last pixel of an odd width has luma and Cb alone: as floats it takes the Cr of the
/// pixel before it, 0.0 where there is none. No more than width times 2 bytes of a line are
/// touched. Nothing fails or allocates; not a number becomes code 0.
///
/// The readers' and writers' constants agree: each code that is read comes back. In full range
/// (range type 2) luma is code / 255 and chroma (code - 128) / 255; else luma is (code - 16) / 219
/// and chroma (code - 128) / 224.
#pragma once

#include "CO_Edit_Data.h"
#include "base_types.h"

// Byte order. Source and destination may be the same.

/// 2vuy to yuv2 (Y0, Cb, Y1, Cr with signed chroma) and back.
void CO_ByteSwap2vuyLine(SInt32 width, const UInt8* source, UInt8* destination);
void CO_ByteSwapYuv2Line(SInt32 width, const UInt8* source, UInt8* destination);
/// The same for frames; strides in bytes.
void CO_ByteSwap2vuyFrame(SInt32 width, SInt32 height, const UInt8* source, UInt8* destination,
                          SInt32 sourceStride, SInt32 destinationStride);
void CO_ByteSwapYuv2Frame(SInt32 width, SInt32 height, const UInt8* source, UInt8* destination,
                          SInt32 sourceStride, SInt32 destinationStride);

// Between 2vuy and the edit's lines.

/// Reads by the source's range. The chroma of odd pixels is the mean of those beside it with
/// `interpolate`, else a copy of the one behind; the last odd pixel's a copy of the one before.
void CO_2vuyLineToYUV(SInt32 width, const UInt8* line, EditData* edit, Boolean interpolate);
/// Writes by the destination's range: full range unless it is video range (1). Codes are rounded
/// and limited to 0 to 255. Chroma comes from the even pixels, with `average` from the mean of both
/// codes, cut.
void CO_YUVF_LinesTo2vuy(SInt32 width, const EditData* edit, UInt8* line, Boolean average);
/// The same without average, and with a random threshold in the place of rounding: two linear
/// congruential generators, one for luma and one for chroma, whose states of 16 bits run on in the
/// seeds.
void CO_YUVF_LinesToUInt8withDitherLCG(SInt32 width, const EditData* edit, UInt32* lumaSeed,
                                       UInt32* chromaSeed, UInt8* line);

// Between 2vuy and planar floats of 4:2:2: a row of luma and two rows of (width + 1) / 2 samples.

void CO_2vuyLineToPlanarYCbCr422F(SInt32 width, const UInt8* line, const EditData* edit,
                                  float* luma, float* cb, float* cr);
/// Codes are cut, a sixty-fourth of a code added first for the sake of the floats' rounding; full
/// range if the destination's range is 2.
void CO_PlanarYCbCr422F_LineTo2vuy(SInt32 width, const EditData* edit, const float* luma,
                                   const float* cb, const float* cr, UInt8* line);
/// Copies luma and widens chroma to 4:4:4: odd pixels take the mean of the samples beside them.
void CO_PlanarYCbCr422F_LinesToYUVF(SInt32 width, const float* luma, const float* cb,
                                    const float* cr, float* const lines[3]);

// Limits.

/// On even pixels: a luma below 0.00001 makes all three 0; one above 0.9999 becomes that, with the
/// chroma scaled by the smaller of 1 and 1 / luma.
void CO_YUVF_LinesSanityCheck(SInt32 width, float* const lines[3]);
/// Keeps luma plus the amplitude of the composite subcarrier, with chroma on a scale of 255 like
/// luma, below `limit` times 255 by scaling chroma. The factors of Cb and Cr are those of U and V
/// (ITU-R BT.470).
void CO_YUVF_LinesLimitIRE(SInt32 width, float* const lines[3], float limit);
/// Scales chroma by how far two lines of luma, 0 to 255, lie from 128 on either side: by 128 / a
/// or a / 128 of the one, and the reverse of the other; limited to 0 to 2.
void CO_ScaleLineCwithY(SInt32 width, const float* lumaA, const float* lumaB, float* chroma);

// Self test.

/// Doubles the chroma of a frame around 128 and adds 40 to its luma, both limited.
void CO_WriteSanityCheckTestPattern(SInt32 width, SInt32 height, UInt8* frame);
/// Sends each line of a frame through CO_2vuyLineToYUV and CO_YUVF_LinesTo2vuy and prints
/// "CO_FrameSanityCheck_Test: numCorrected = 0" on standard output.
void CO_FrameSanityCheck_Test(SInt32 height, SInt32 width, UInt8* frame, EditData* edit);
