#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <algorithm>
#include <cmath>

#include "cf_strings.h"
#include "fonts_private.h"
#include "gui_application.h"
#include "text_masks_private.h"
#include "text_style.h"

namespace quillmere::drawing {

QFont FontOf(const TextStyle& style) {
  constexpr int kStandardSize = 12;
  QFont font = FontOfNumber(style.font);
  font.setPixelSize(style.size > 0 ? style.size : kStandardSize);
  font.setBold((style.face & kStyleBold) != 0);
  font.setItalic((style.face & kStyleItalic) != 0);
  font.setUnderline((style.face & kStyleUnderline) != 0);
  const int spacing =
      ((style.face & kStyleExtend) != 0 ? 1 : 0) - ((style.face & kStyleCondense) != 0 ? 1 : 0);
  if (spacing != 0) font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
  return font;
}

QFont FontOf(const QString& family, double size) {
  constexpr double kMost = 4096;
  QFont font = FontOfFamily(family);
  font.setPixelSize(static_cast<int>(std::lround(std::clamp(size, 1.0, kMost))));
  return font;
}

QString DecodedText(const UInt8* bytes, SInt32 count) {
  Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, bytes, count, kCFStringEncodingUTF8, 0));
  if (!string) {
    string.reset(
        CFStringCreateWithBytes(kCFAllocatorDefault, bytes, count, kCFStringEncodingMacRoman, 0));
  }
  const std::u16string_view units = UnitsOf(string.get());
  return QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
}

TextMask MaskOf(const QString& text, const QFont& font, double scale_h, double scale_v,
                const QRect& seen) {
  constexpr qint64 kMostPixels = 16 << 20;
  NeedGuiApplication();
  const QFontMetricsF metrics(font);
  TextMask mask;
  mask.advance = metrics.horizontalAdvance(text) * scale_h;
  if (seen.isEmpty()) return mask;
  // Outlines, not glyphs of the font's own: those of some fonts can't be had at every stretch.
  QPainterPath outlines;
  outlines.setFillRule(Qt::WindingFill);
  QFont plain = font;
  plain.setUnderline(false);
  outlines.addText(0, 0, plain, text);
  if (font.underline())
    outlines.addRect(0, metrics.underlinePos(), metrics.horizontalAdvance(text),
                     metrics.lineWidth());
  outlines = QTransform::fromScale(scale_h, scale_v).map(outlines);
  const QRectF ink = outlines.boundingRect().adjusted(-1, -1, 1, 1);
  constexpr double kFarthest = 1e6;
  if (!(QRectF(-kFarthest, -kFarthest, 2 * kFarthest, 2 * kFarthest).contains(ink))) return mask;
  const QRect area = ink.toAlignedRect() & seen;
  if (area.isEmpty() || qint64{area.width()} * area.height() > kMostPixels) return mask;
  QImage image(area.size(), QImage::Format_Grayscale8);
  if (image.isNull()) return mask;
  image.fill(0);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(-area.left(), -area.top());
  painter.fillPath(outlines, Qt::white);
  painter.end();
  mask.left = area.left();
  mask.top = area.top();
  mask.width = area.width();
  mask.height = area.height();
  mask.coverage.reserve(static_cast<std::size_t>(area.width()) *
                        static_cast<std::size_t>(area.height()));
  for (int y = 0; y < area.height(); ++y)
    mask.coverage.insert(mask.coverage.end(), image.constScanLine(y),
                         image.constScanLine(y) + area.width());
  return mask;
}

}  // namespace quillmere::drawing
