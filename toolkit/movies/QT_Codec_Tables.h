/// What a codec type is called and what it implies: video system, size, rate, order of fields.
#pragma once

#include "QT_Codec_Families.h"
#include "base_types.h"

/// A short name for display; empty for a type that isn't known.
const char* QT_GetComprFormatName(OSType codecType);

/// The DV type of a codec and whether it is PAL's; 0 and 255 for one that is none.
void QT_GetDV_Type(OSType codecType, OSType* dvType, UInt8* pal);
/// The codec of a DV type, `dv  `, `dvp ` (whose NTSC form is that of `dv  `) or `dvp5`; else 0.
OSType QT_GetDV_CodecType(OSType dvType, Boolean pal);

/// Height in pixels and frames a second of broadcast codecs, 0 for what a codec leaves open.
/// Whether pictures are progressive, and if the top field is first: 1, 0, or 2 for neither. The
/// subtype counts for `icod`: 720p, 108i or 108p.
void QT_GetHardcodedCodecProperties(OSType codecType, OSType aicSubtype, SInt32* height,
                                    float* frameRate, UInt8* progressive, UInt8* topFirst);
/// The codec of the family of DVCPRO HD, HDV or XDCAM that `familyMember` is of, for pictures of
/// that height, to a tenth of a frame a second; 0 for none.
OSType QT_FindHardCodedCompressor(OSType familyMember, SInt32 height, float frameRate,
                                  Boolean progressive, Boolean interlaced);
