#include "context_text.h"

#include <QFont>
#include <algorithm>
#include <cmath>

#include "images_private.h"
#include "text_masks_private.h"

void CGContextSelectFont(CGContextRef context, const char* name, CGFloat size,
                         UInt32 /*encoding*/) {
  if (context == nullptr || name == nullptr) return;
  context->font_name = name;
  context->font_size = static_cast<double>(size);
}

void CGContextShowTextAtPoint(CGContextRef context, CGFloat x, CGFloat y, const char* text,
                              std::size_t length) {
  using namespace quillmere::drawing;
  constexpr std::size_t kMostBytes = 32767;
  if (context == nullptr || text == nullptr || !(context->font_size > 0)) return;
  const quillmere::imaging::DevicePlace place = quillmere::imaging::DevicePlaceOf(context, x, y);
  const QString shown = DecodedText(reinterpret_cast<const UInt8*>(text),
                                    static_cast<SInt32>(std::min(length, kMostBytes)));
  const QFont font = FontOf(QString::fromUtf8(context->font_name.c_str()), context->font_size);
  const auto pixel = [](double from) {
    return static_cast<SInt32>(std::lround(std::clamp(from, -1e6, 1e6)));
  };
  const SInt32 pen_x = pixel(place.x);
  const SInt32 pen_y = pixel(place.y);
  const QRect seen(-pen_x, -pen_y, static_cast<int>(context->block.width),
                   static_cast<int>(context->block.height));
  const TextMask mask = MaskOf(shown, font, place.scale_x, place.scale_y, seen);
  quillmere::imaging::FillThroughMask(context, pen_x + mask.left, pen_y + mask.top, mask.width,
                                      mask.height, mask.coverage.data());
}
