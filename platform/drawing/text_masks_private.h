/// Text as a mask of coverage, for whatever draws it.
#pragma once

#include <QRect>
#include <QString>
#include <vector>

#include "base_types.h"

class QFont;

namespace quillmere::drawing {

struct TextStyle {
  SInt16 font = 0;
  SInt16 size = 0;  ///< 0 for the standard size
  UInt8 face = 0;
};

/// How much of each pixel text covers, 0 to 255. `left` and `top` are where the mask lies from the
/// pen's place, which is on the base line.
struct TextMask {
  SInt32 left = 0;
  SInt32 top = 0;
  SInt32 width = 0;
  SInt32 height = 0;
  double advance = 0;  ///< of the pen, in pixels
  std::vector<UInt8> coverage;
};

/// The font of a style; one of a family's name and a size in pixels.
QFont FontOf(const TextStyle& style);
QFont FontOf(const QString& family, double size);
/// Classic text: UTF-8 where it is valid in that, else MacRoman.
QString DecodedText(const UInt8* bytes, SInt32 count);
/// Draws the part of text in a font, stretched, that lies within `seen`, which counts from the
/// pen's place like the mask. Text of more than 16 Mi pixels there, or a million pixels away,
/// is empty.
TextMask MaskOf(const QString& text, const QFont& font, double scale_h, double scale_v,
                const QRect& seen);

}  // namespace quillmere::drawing
