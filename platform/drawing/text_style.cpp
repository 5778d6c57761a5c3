#include "text_style.h"

#include <QFont>
#include <QFontMetricsF>
#include <QString>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "cf_strings.h"
#include "gui_application.h"

struct SavedDrawingState {
  SInt16 font = kFontIDSystem;
  SInt16 size = 0;
  Style face = kStyleNormal;
};

namespace {

using TextStyle = SavedDrawingState;

TextStyle& CurrentStyle() {
  static thread_local TextStyle style;
  return style;
}

struct FontFamily {
  const char* name;
  QFont::StyleHint hint;
  SInt16 number;
};
constexpr FontFamily kFamilies[] = {{"Geneva", QFont::SansSerif, kFontIDGeneva},
                                    {"Monaco", QFont::Monospace, kFontIDMonaco},
                                    {"Times", QFont::Serif, kFontIDTimes},
                                    {"Helvetica", QFont::SansSerif, kFontIDHelvetica},
                                    {"Courier", QFont::Monospace, kFontIDCourier}};

QFont FontOf(const TextStyle& style) {
  constexpr int kStandardSize = 12;
  QFont font;
  const auto* const family = std::ranges::find(kFamilies, style.font, &FontFamily::number);
  if (family != std::end(kFamilies)) {
    font.setFamily(QString::fromLatin1(family->name));
    font.setStyleHint(family->hint);
  }
  font.setPixelSize(style.size > 0 ? style.size : kStandardSize);
  font.setBold((style.face & kStyleBold) != 0);
  font.setItalic((style.face & kStyleItalic) != 0);
  font.setUnderline((style.face & kStyleUnderline) != 0);
  const int spacing =
      ((style.face & kStyleExtend) != 0 ? 1 : 0) - ((style.face & kStyleCondense) != 0 ? 1 : 0);
  if (spacing != 0) font.setLetterSpacing(QFont::AbsoluteSpacing, spacing);
  return font;
}

QString Decoded(const UInt8* bytes, SInt16 count) {
  quillmere::Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, bytes, count, kCFStringEncodingUTF8, 0));
  if (!string) {
    string.reset(
        CFStringCreateWithBytes(kCFAllocatorDefault, bytes, count, kCFStringEncodingMacRoman, 0));
  }
  const std::u16string_view units = quillmere::UnitsOf(string.get());
  return QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
}

}  // namespace

void TextFont(SInt16 font) {
  CurrentStyle().font = font;
}

void TextFace(Style face) {
  CurrentStyle().face = face;
}

void TextSize(SInt16 size) {
  CurrentStyle().size = std::max<SInt16>(size, 0);
}

SInt16 GetPortTextFont() {
  return CurrentStyle().font;
}

Style GetPortTextFace() {
  return CurrentStyle().face;
}

SInt16 GetPortTextSize() {
  return CurrentStyle().size;
}

SInt16 StringWidth(const UInt8* pascal_string) {
  return pascal_string ? TextWidth(pascal_string, 1, pascal_string[0]) : SInt16{0};
}

SInt16 TextWidth(const void* text, SInt16 first, SInt16 count) {
  if (text == nullptr || first < 0 || count <= 0) return 0;
  quillmere::drawing::NeedGuiApplication();
  const QFontMetricsF metrics(FontOf(CurrentStyle()));
  const double width =
      metrics.horizontalAdvance(Decoded(static_cast<const UInt8*>(text) + first, count));
  return static_cast<SInt16>(std::clamp(std::ceil(width), 0.0, 32767.0));
}

OSStatus GetThemeDrawingState(ThemeDrawingState* state) {
  if (state == nullptr) return paramErr;
  *state = std::make_unique<SavedDrawingState>(CurrentStyle()).release();
  return noErr;
}

OSStatus SetThemeDrawingState(ThemeDrawingState state, Boolean dispose_now) {
  if (state == nullptr) return paramErr;
  CurrentStyle() = *state;
  return dispose_now ? DisposeThemeDrawingState(state) : OSStatus{noErr};
}

OSStatus DisposeThemeDrawingState(ThemeDrawingState state) {
  const std::unique_ptr<SavedDrawingState> last(state);
  return state == nullptr ? paramErr : noErr;
}
