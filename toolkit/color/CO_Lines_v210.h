/// Lines of v210 video: blocks of six pixels in 16 bytes, rows of whole 128 bytes.
///
/// The other side is two words of 16 bits a pixel in the working form of CO_Packed_Formats.h, in
/// the order of a v216 group: Cb, Y0, Cr, Y1 for two pixels. The last pixel of an odd width has Cb
/// and Y. Same bytes as CO_Unpack_v210 and CO_Pack_v210 block by block. Widths below 1 do nothing.
#pragma once

#include "base_types.h"

/// The bytes of a row: 128 for each 48 pixels begun.
SInt64 CO_GetRowBytes_v210(SInt32 width);
/// Reads a line into width times 2 words. Of the line no more is read than its blocks.
void CO_UnpackLine_v210(SInt32 width, const UInt8* line, UInt16* words);
/// Writes a whole row from width times 2 words; what it has beyond the last sample is 0.
void CO_PackLine_v210(SInt32 width, const UInt16* words, UInt8* line);
