#include "text_style.h"

#include <QFont>
#include <QFontMetricsF>
#include <QString>
#include <algorithm>
#include <cmath>
#include <memory>

#include "ports_private.h"

/// What SetThemeDrawingState gives back.
struct SavedDrawingState {
  quillmere::drawing::DrawingState state;
};

namespace {

using quillmere::drawing::CurrentPort;

quillmere::drawing::TextStyle& CurrentStyle() {
  return CurrentPort().state.style;
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
  const QFontMetricsF metrics(quillmere::drawing::FontOf(CurrentStyle()));
  const double width = metrics.horizontalAdvance(
      quillmere::drawing::DecodedText(static_cast<const UInt8*>(text) + first, count));
  return static_cast<SInt16>(std::clamp(std::ceil(width), 0.0, 32767.0));
}

OSStatus GetThemeDrawingState(ThemeDrawingState* state) {
  if (state == nullptr) return paramErr;
  *state = std::make_unique<SavedDrawingState>(SavedDrawingState{CurrentPort().state}).release();
  return noErr;
}

OSStatus SetThemeDrawingState(ThemeDrawingState state, Boolean dispose_now) {
  if (state == nullptr) return paramErr;
  CurrentPort().state = state->state;
  return dispose_now ? DisposeThemeDrawingState(state) : OSStatus{noErr};
}

OSStatus DisposeThemeDrawingState(ThemeDrawingState state) {
  const std::unique_ptr<SavedDrawingState> last(state);
  return state == nullptr ? paramErr : noErr;
}
