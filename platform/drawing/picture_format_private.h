/// Codes of the picture format that are written and read here.
#pragma once

#include "base_types.h"

namespace quillmere::drawing {

inline constexpr UInt16 kPictureClip = 0x0001;
inline constexpr UInt16 kPictureTextFont = 0x0003;
inline constexpr UInt16 kPictureTextFace = 0x0004;
inline constexpr UInt16 kPicturePenSize = 0x0007;
inline constexpr UInt16 kPictureTextSize = 0x000D;
inline constexpr UInt16 kPictureTextRatio = 0x0010;
inline constexpr UInt16 kPictureVersion = 0x0011;
inline constexpr UInt16 kPictureForeColor = 0x001A;
inline constexpr UInt16 kPictureBackColor = 0x001B;
inline constexpr UInt16 kPictureLongText = 0x0028;
inline constexpr UInt16 kPictureFontName = 0x002C;
inline constexpr UInt16 kPictureFrameRect = 0x0030;
inline constexpr UInt16 kPicturePaintRect = 0x0031;
inline constexpr UInt16 kPictureEraseRect = 0x0032;
inline constexpr UInt16 kPicturePaintRegion = 0x0081;
inline constexpr UInt16 kPicturePixels = 0x009A;
inline constexpr UInt16 kPicturePixelsInRegion = 0x009B;
inline constexpr UInt16 kPictureShortComment = 0x00A0;
inline constexpr UInt16 kPictureLongComment = 0x00A1;
inline constexpr UInt16 kPictureEnd = 0x00FF;
inline constexpr UInt16 kPictureHeader = 0x0C00;

inline constexpr UInt16 kPictureVersion2 = 0x02FF;
/// Lines of pixels of at most this many bytes; longer ones need two bytes for their length.
inline constexpr SInt32 kShortLine = 250;
inline constexpr UInt16 kRowBytesMask = 0x3FFF;
inline constexpr UInt16 kIsPixMap = 0x8000;
inline constexpr SInt16 kUnpacked = 1;
inline constexpr SInt16 kPackedByComponent = 4;
inline constexpr SInt16 kDirectPixels = 16;

}  // namespace quillmere::drawing
