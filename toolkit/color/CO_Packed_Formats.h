/// Packed pixel formats of uncompressed video, a group of pixels at a time.
///
/// The working form of v216, v210 and v410 is words of 16 bits in video range: black 4096, white
/// 60160, no chroma 32768, limited to 256 to 65279. Codes are limited to black and white, and to
/// the span of chroma, on both ways, as CO_Ranges.h tells. The bytes of a format are little-endian.
/// Groups are read and written whole; loops over a line are the caller's.
///
/// | format | pixels | bytes | samples |
/// |---|---|---|---|
/// | 2vuy | 2 | 4 | Cb Y0 Cr Y1, 8 bits, chroma offset by 128 |
/// | yuv2 | 2 | 4 | Y0 Cb Y1 Cr, 8 bits, chroma two's complement |
/// | v216 | 2 | 8 | Cb Y0 Cr Y1, a depth of 10, 12, 14 or 16 bits at the top of each word |
/// | v210 | 6 | 16 | four words of 32 bits with three of 10 from bit 0 on (below) |
/// | v410 | 1 | 4 | Cb, Y, Cr, 10 bits each from bit 2 on |
/// | RGB16 | 1 | 2 | alpha, then 5 bits each of red, green, blue, from the top of a native word |
///
/// The words of v210 hold Cb0 Y0 Cr0, Y1 Cb1 Y2, Cr1 Y3 Cb2, Y4 Cr2 Y5; its lines are whole 128
/// bytes.
#pragma once

#include "base_types.h"

/// Cb, Y0, Cr, Y1 in the working form.
struct CO_Group_v216 {
  UInt16 words[4];
};
/// Reads or writes a group of v216. A depth of 16 stores the words as they are; one that the format
/// doesn't have gets no shift.
void CO_Unpack_v216(const UInt8* source, UInt16* destination, SInt32 depth);
void CO_Pack_v216(CO_Group_v216 group, UInt8* destination, SInt32 depth);

/// Reads or writes a block of v210, in the order of its samples in the working form. What stands
/// above the topmost field of a word counts as part of it.
void CO_Unpack_v210(const UInt8* source, UInt16* destination);
void CO_Pack_v210(UInt8* destination, const UInt16* source);

/// Y, Cb, Cr in the working form.
struct CO_Pixel_v410 {
  UInt16 y;
  UInt16 cb;
  UInt16 cr;
};
void CO_Unpack_v410(const UInt8* source, UInt16* destination);
void CO_Pack_v410(CO_Pixel_v410 pixel, UInt8* destination);

/// Splits a pixel into red, green and blue of 8 bits, the ends a quarter of a step inside (2 and
/// 253), and its alpha flag, 32768 or 0; and joins them.
void CO_UnpackRGB16(UInt16 word, UInt8* rgb, UInt16* alpha);
void CO_PackRGB16(const UInt8* rgb, UInt16 alpha, UInt16* word);

/// A group of yuv2 from Y0, Cb, Cr, Y1 with signed chroma, one of 2vuy from the same with offset
/// chroma. The destination may not be the source.
void CO_PackYCbCr8To422(const UInt8* source, UInt8* destination);
void CO_PackYCbCrU8To422(const UInt8* source, UInt8* destination);
/// A grey value whose black is 255, turned round.
UInt8 CO_UnpackGrey(UInt8 value);
