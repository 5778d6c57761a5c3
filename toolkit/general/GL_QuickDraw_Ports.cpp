#include "GL_QuickDraw_Ports.h"

#include <algorithm>
#include <string_view>

#include "GL_QuickDraw_Regions.h"
#include "GL_QuickDraw_deprecated.h"
#include "GL_deprecated.h"
#include "fonts.h"
#include "text_style.h"

namespace {

constexpr SInt32 kBlack = 33;
constexpr std::size_t kLongestName = 255;

/// Makes a port current, null for the one that is, and the old one afterwards.
class PortKeeper {
 public:
  explicit PortKeeper(CGrafPtr port) {
    GetPort(&saved_);
    if (port != nullptr) SetPort(port);
  }
  PortKeeper(const PortKeeper&) = delete;
  PortKeeper& operator=(const PortKeeper&) = delete;
  ~PortKeeper() { SetPort(saved_); }

 private:
  GrafPtr saved_ = nullptr;
};

/// Both corners of a rectangle through a port.
void MoveCorners(Rect* rect, CGrafPtr port, void (*move)(Point*)) {
  const PortKeeper keeper(port);
  Point first = {rect->top, rect->left};
  Point last = {rect->bottom, rect->right};
  move(&first);
  move(&last);
  *rect = {first.v, first.h, last.v, last.h};
}

void MoveRegion(RgnHandle region, CGrafPtr port, void (*move)(Point*)) {
  const PortKeeper keeper(port);
  Point origin = {};
  move(&origin);
  OffsetRgn(region, origin.h, origin.v);
}

void ToPascal(const char* string, UInt8* out) {
  const std::string_view text = std::string_view(string).substr(0, kLongestName);
  out[0] = static_cast<UInt8>(text.size());
  std::copy(text.begin(), text.end(), out + 1);
}

void SetStandardFont(SInt16 font) {
  GLD_TextFont(font);
  GLD_TextSize(0);
  GLD_TextFace(kStyleNormal);
}

/// Draws a string with its middle at the middle of a rectangle.
void DrawCentred(const char* text, const Rect& rect, SInt32 baseline) {
  const SInt32 left = rect.left + (rect.right - rect.left - GL_CStringWidth(text)) / 2;
  QDD_MoveTo(static_cast<SInt16>(left), static_cast<SInt16>(baseline));
  GL_DrawCString(text);
}

}  // namespace

void GL_LocalToGlobal(WindowRef window, Point point, Point* out) {
  const PortKeeper keeper(GetWindowPort(window));
  LocalToGlobal(&point);
  *out = point;
}

void GL_GlobalToLocal(WindowRef window, Point point, Point* out) {
  const PortKeeper keeper(GetWindowPort(window));
  GlobalToLocal(&point);
  *out = point;
}

void GL_LocalRectToGlobal(Rect* rect, CGrafPtr port) {
  MoveCorners(rect, port, LocalToGlobal);
}

void GL_GlobalRectToLocal(Rect* rect, CGrafPtr port) {
  MoveCorners(rect, port, GlobalToLocal);
}

void GL_LocalRegionToGlobal(RgnHandle region, CGrafPtr port) {
  MoveRegion(region, port, LocalToGlobal);
}

void GL_GlobalRegionToLocal(RgnHandle region, CGrafPtr port) {
  MoveRegion(region, port, GlobalToLocal);
}

void GL_FrameRect(const Rect* rect, SInt32 color, SInt16 penSize) {
  QDD_PenNormal();
  QDD_ForeColor(color);
  QDD_PenSize(penSize, penSize);
  QDD_FrameRect(rect);
}

void GL_PaintRect(const Rect* rect, SInt32 color) {
  QDD_ForeColor(color);
  QDD_PaintRect(rect);
}

void GL_SetSystemFont() {
  SetStandardFont(kFontIDSystem);
}

void GL_SetAppFont() {
  SetStandardFont(kFontIDApplication);
}

void GL_FontNameToFontID(const char* name, SInt16* font) {
  UInt8 pascal[kLongestName + 1];
  ToPascal(name, pascal);
  GLD_GetFNum(pascal, font);
}

void GL_FontIDToFontName(SInt16 font, char* name) {
  UInt8 pascal[kLongestName + 1];
  GLD_GetFontName(font, pascal);
  std::copy_n(pascal + 1, pascal[0], name);
  name[pascal[0]] = 0;
}

void GL_DrawCString(const char* string) {
  UInt8 pascal[kLongestName + 1];
  ToPascal(string, pascal);
  GLD_DrawString(pascal);
}

void GL_DrawTextLineScaled(const char* text, const Rect* rect, SInt32 color, SInt16 font) {
  const SInt32 height = rect->bottom - rect->top;
  const SInt32 room = (rect->right - rect->left) * 8 / 10;
  const SInt32 first = height * 8 / 10;
  if (first < 1) return;
  auto size = static_cast<SInt16>(first);
  GLD_TextFont(font);
  GLD_TextSize(size);
  FontInfo info = {};
  const auto lines = [&info] {
    GLD_GetFontInfo(&info);
    return info.ascent + info.descent;
  };
  while (size > 1 && lines() > first)
    GLD_TextSize(--size);
  while (size > 1 && GL_CStringWidth(text) > room)
    GLD_TextSize(--size);
  QDD_ForeColor(color);
  DrawCentred(text, *rect, rect->top + height / 2);
}

void GL_DrawThreeLineImage(Rect rect, const GL_StringElement* lines) {
  constexpr int kMostLines = 3;
  constexpr SInt32 kTwentieths[kMostLines] = {5, 11, 17};
  const SInt32 height = rect.bottom - rect.top;
  GL_PaintRect(&rect, kBlack);
  auto size = static_cast<SInt16>(height / 6 + 1);
  GLD_TextSize(size);
  const auto widest = [lines] {
    SInt16 width = 0;
    int count = 0;
    for (const auto* line = lines; line != nullptr && count < kMostLines;
         line = line->next, ++count)
      width = std::max(width, GL_CStringWidth(line->text));
    return width;
  };
  while (size > 1 && widest() > rect.right - rect.left)
    GLD_TextSize(--size);
  int index = 0;
  for (const auto* line = lines; line != nullptr && index < kMostLines;
       line = line->next, ++index) {
    SInt32 color = 0;
    GL_GetRandomBasicColor(&color);
    QDD_ForeColor(color);
    DrawCentred(line->text, rect, rect.top + height * kTwentieths[index] / 20);
  }
}
