/// Drawing in the current port: rectangles, regions, copied pixels and text, in its colours and
/// with its pen.
///
/// Drawing is held to the port's clip and bounds. While a picture is open in the port (pictures.h),
/// it goes into that and nowhere else. Nothing here fails; what can't be drawn is left out.
#pragma once

#include "base_types.h"
#include "graphics_ports.h"

/// One of the eight classic colours by its code: 33 black, 30 white, 205 red, 341 green, 409 blue,
/// 273 cyan, 137 magenta, 69 yellow; any other is black.
void ForeColor(SInt32 code);
void BackColor(SInt32 code);
void RGBForeColor(const RGBColor* color);
void RGBBackColor(const RGBColor* color);
void GetForeColor(RGBColor* color);

/// A pen of 1 by 1 pixel, or of a size; below 1 it draws nothing.
void PenNormal();
void PenSize(SInt16 width, SInt16 height);
void MoveTo(SInt16 h, SInt16 v);

/// The edge of a rectangle, inside it and as wide as the pen; all of it; all of it in the
/// background's colour.
void FrameRect(const Rect* rect);
void PaintRect(const Rect* rect);
void EraseRect(const Rect* rect);
void PaintRgn(RgnHandle region);

/// Modes of transfer; there is but the plain copy.
inline constexpr SInt16 srcCopy = 0;
/// Copies pixels into a rectangle of another size, each from the pixel that lies under its centre.
/// Clip, mask (null for none) and, if `to` is the current port's, its picture hold as for drawing.
/// Depths are converted: a bit is black or white, a colour is black if its luma is below a half.
/// Pixels outside the source's bounds are left out. `from` and `to` may be the same.
void CopyBits(const BitMap* from, const BitMap* to, const Rect* source, const Rect* destination,
              SInt16 mode, RgnHandle mask);
/// The region of a one-bit map's black pixels. paramErr for null, pixmapTooDeepErr for 32 bits.
inline constexpr OSErr pixmapTooDeepErr = -148;
OSErr BitMapToRegion(RgnHandle region, const BitMap* bits);

/// Draws text in the port's style from the pen's place on the base line, and moves the pen behind
/// it. `pascal_string` has its length first; `text` is drawn from byte `first` on.
void DrawString(const UInt8* pascal_string);
void DrawText(const void* text, SInt16 first, SInt16 count);
/// Lines of text in the port's style, in pixels, rounded up.
struct FontInfo {
  SInt16 ascent;
  SInt16 descent;
  SInt16 widMax;  ///< of the widest character
  SInt16 leading;
};
void GetFontInfo(FontInfo* info);
