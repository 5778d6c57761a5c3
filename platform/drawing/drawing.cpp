#include "drawing.h"

#include <QFont>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>
#include <vector>

#include "gui_application.h"
#include "picture_recorder_private.h"
#include "ports_private.h"
#include "raster_private.h"
#include "rectangles.h"

namespace {

using namespace quillmere::drawing;

RGBColor ColorOfCode(SInt32 code) {
  constexpr UInt16 kFull = 65535;
  struct ClassicColor {
    SInt32 code;
    RGBColor color;
  };
  constexpr ClassicColor kColors[] = {{30, {kFull, kFull, kFull}}, {205, {kFull, 0, 0}},
                                      {341, {0, kFull, 0}},        {409, {0, 0, kFull}},
                                      {273, {0, kFull, kFull}},    {137, {kFull, 0, kFull}},
                                      {69, {kFull, kFull, 0}}};
  const auto* found = std::ranges::find(kColors, code, &ClassicColor::code);
  return found != std::end(kColors) ? found->color : RGBColor{0, 0, 0};
}

/// Whether pixels are of those that are drawn, and not a movie's frame.
bool CanBeDrawn(const PixMap& map) {
  return map.pixelSize != 16;
}

/// What of a region can be seen in a map through a clip, null for none.
OwnedRegion Visible(const PixMap& map, RgnHandle clip, RgnHandle region) {
  OwnedRegion seen = RegionOf(CanBeDrawn(map) ? map.bounds : Rect{});
  SectRgn(seen.get(), region, seen.get());
  if (clip != nullptr) SectRgn(seen.get(), clip, seen.get());
  return seen;
}

void Fill(RgnHandle region, const RGBColor& color) {
  const GraphicsPort& port = CurrentPort();
  const OwnedRegion seen = Visible(port.pixels, port.clip.get(), region);
  FillRegion(port.pixels, seen.get(), color);
}

/// The part of `bytes` that fits into one piece of text of a picture, characters being whole.
SInt32 PieceOf(const UInt8* bytes, SInt32 count) {
  constexpr SInt32 kMost = 255;
  if (count <= kMost) return count;
  SInt32 piece = kMost;
  while (piece > kMost - 3 && (bytes[piece] & 0xC0) == 0x80)
    --piece;
  return piece;
}

void DrawPiece(GraphicsPort* port, const UInt8* bytes, SInt32 count) {
  const DrawingState& state = port->state;
  const Rect& bounds = port->pixels.bounds;
  QRect window;
  if (!port->recorder)
    window.setCoords(bounds.left - state.pen.h, bounds.top - state.pen.v,
                     bounds.right - state.pen.h - 1, bounds.bottom - state.pen.v - 1);
  const TextMask mask =
      MaskOf(DecodedText(bytes, count), FontOf(state.style), state.text_h, state.text_v, window);
  if (port->recorder) {
    port->recorder->Text(*port, {bytes, static_cast<std::size_t>(count)});
  } else {
    const SInt32 h = state.pen.h + mask.left;
    const SInt32 v = state.pen.v + mask.top;
    const OwnedRegion area(NewRgn());
    if (mask.width > 0)
      quillmere::SetBands(area.get(), {{v, v + mask.height, {h, h + mask.width}}});
    const OwnedRegion seen = Visible(port->pixels, port->clip.get(), area.get());
    FillMask(port->pixels, seen.get(), mask, h, v, state.fore);
  }
  port->state.pen.h =
      static_cast<SInt16>(std::clamp<long>(state.pen.h + std::lround(mask.advance), -32768, 32767));
}

}  // namespace

void ForeColor(SInt32 code) {
  CurrentPort().state.fore = ColorOfCode(code);
}

void BackColor(SInt32 code) {
  CurrentPort().state.back = ColorOfCode(code);
}

void RGBForeColor(const RGBColor* color) {
  if (color != nullptr) CurrentPort().state.fore = *color;
}

void RGBBackColor(const RGBColor* color) {
  if (color != nullptr) CurrentPort().state.back = *color;
}

void GetForeColor(RGBColor* color) {
  if (color != nullptr) *color = CurrentPort().state.fore;
}

void PenNormal() {
  PenSize(1, 1);
}

void PenSize(SInt16 width, SInt16 height) {
  CurrentPort().state.pen_size = {height, width};
}

void MoveTo(SInt16 h, SInt16 v) {
  CurrentPort().state.pen = {v, h};
}

void FrameRect(const Rect* rect) {
  GraphicsPort& port = CurrentPort();
  const Point pen = port.state.pen_size;
  if (rect == nullptr || EmptyRect(rect) || pen.h < 1 || pen.v < 1) return;
  if (port.recorder) return port.recorder->Shape(kPictureFrameRect, port, *rect);
  const OwnedRegion edge = RegionOf(*rect);
  if (2 * pen.v < rect->bottom - rect->top && 2 * pen.h < rect->right - rect->left) {
    const OwnedRegion inside = RegionOf(
        {static_cast<SInt16>(rect->top + pen.v), static_cast<SInt16>(rect->left + pen.h),
         static_cast<SInt16>(rect->bottom - pen.v), static_cast<SInt16>(rect->right - pen.h)});
    DiffRgn(edge.get(), inside.get(), edge.get());
  }
  Fill(edge.get(), port.state.fore);
}

void PaintRect(const Rect* rect) {
  GraphicsPort& port = CurrentPort();
  if (rect == nullptr || EmptyRect(rect)) return;
  if (port.recorder) return port.recorder->Shape(kPicturePaintRect, port, *rect);
  Fill(RegionOf(*rect).get(), port.state.fore);
}

void EraseRect(const Rect* rect) {
  GraphicsPort& port = CurrentPort();
  if (rect == nullptr || EmptyRect(rect)) return;
  if (port.recorder) return port.recorder->Shape(kPictureEraseRect, port, *rect);
  Fill(RegionOf(*rect).get(), port.state.back);
}

void PaintRgn(RgnHandle region) {
  GraphicsPort& port = CurrentPort();
  if (EmptyRgn(region)) return;
  if (port.recorder) return port.recorder->PaintRegion(port, region);
  Fill(region, port.state.fore);
}

void CopyBits(const BitMap* from, const BitMap* to, const Rect* source, const Rect* destination,
              SInt16 mode, RgnHandle mask) {
  if (from == nullptr || to == nullptr || source == nullptr || destination == nullptr) return;
  if (mode != srcCopy || EmptyRect(source) || EmptyRect(destination) || !CanBeDrawn(*from)) return;
  GraphicsPort& port = CurrentPort();
  const bool is_port = to == &port.pixels;
  if (is_port && port.recorder)
    return port.recorder->Pixels(port, *from, *source, *destination, mask);
  const OwnedRegion seen =
      Visible(*to, is_port ? port.clip.get() : nullptr, RegionOf(*destination).get());
  if (mask != nullptr) SectRgn(seen.get(), mask, seen.get());
  CopyPixels(*from, *to, *source, *destination, seen.get());
}

OSErr BitMapToRegion(RgnHandle region, const BitMap* bits) {
  if (region == nullptr || bits == nullptr) return paramErr;
  if (bits->pixelSize != 1) return pixmapTooDeepErr;
  std::vector<quillmere::RegionBand> bands;
  const Rect& bounds = bits->bounds;
  for (SInt32 v = bounds.top; v < bounds.bottom; ++v) {
    const UInt8* const line = bits->baseAddr + std::ptrdiff_t{v - bounds.top} * bits->rowBytes;
    quillmere::RegionBand band = {v, v + 1, {}};
    for (SInt32 h = bounds.left; h < bounds.right; ++h) {
      const bool is_inside = band.edges.size() % 2 != 0;
      if (IsBlack(line, h - bounds.left) != is_inside) band.edges.push_back(h);
    }
    if (band.edges.size() % 2 != 0) band.edges.push_back(bounds.right);
    if (!band.edges.empty()) bands.push_back(std::move(band));
  }
  quillmere::SetBands(region, bands);
  return noErr;
}

void DrawString(const UInt8* pascal_string) {
  if (pascal_string != nullptr) DrawText(pascal_string, 1, pascal_string[0]);
}

void DrawText(const void* text, SInt16 first, SInt16 count) {
  if (text == nullptr || first < 0) return;
  const UInt8* bytes = static_cast<const UInt8*>(text) + first;
  for (SInt32 left = count; left > 0;) {
    const SInt32 piece = PieceOf(bytes, left);
    DrawPiece(&CurrentPort(), bytes, piece);
    bytes += piece;
    left -= piece;
  }
}

void GetFontInfo(FontInfo* info) {
  if (info == nullptr) return;
  NeedGuiApplication();
  const QFontMetricsF metrics(FontOf(CurrentPort().state.style));
  const auto rounded = [](double value) {
    return static_cast<SInt16>(std::clamp(std::ceil(value), 0.0, 32767.0));
  };
  *info = {rounded(metrics.ascent()), rounded(metrics.descent()), rounded(metrics.maxWidth()),
           rounded(metrics.leading())};
}
