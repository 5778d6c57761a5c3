/// The style in which text is drawn and measured: font number, face and size.
///
/// The current style is that of the current port (graphics_ports.h). Widths are in whole pixels at
/// 72 pixels an inch, rounded up from the font's own advances. Classic strings are read in UTF-8
/// where they are valid in it, else in MacRoman.
#pragma once

#include "base_types.h"

/// Face bits.
using Style = UInt8;
inline constexpr Style kStyleNormal = 0;
inline constexpr Style kStyleBold = 1;
inline constexpr Style kStyleItalic = 2;
inline constexpr Style kStyleUnderline = 4;
inline constexpr Style kStyleOutline = 8;
inline constexpr Style kStyleShadow = 0x10;
inline constexpr Style kStyleCondense = 0x20;  ///< letters one pixel closer
inline constexpr Style kStyleExtend = 0x40;    ///< letters one pixel wider apart

/// Font numbers: the system's font, the application's font, and classic families by their kind.
inline constexpr SInt16 kFontIDSystem = 0;
inline constexpr SInt16 kFontIDApplication = 1;
inline constexpr SInt16 kFontIDGeneva = 3;
inline constexpr SInt16 kFontIDMonaco = 4;
inline constexpr SInt16 kFontIDTimes = 20;
inline constexpr SInt16 kFontIDHelvetica = 21;
inline constexpr SInt16 kFontIDCourier = 22;

/// Set one part of the current style. A number without a font is the application's font; size 0 is
/// the standard size, 12; a negative size is taken as 0.
void TextFont(SInt16 font);
void TextFace(Style face);
void TextSize(SInt16 size);
/// The parts of the current style as they were set.
SInt16 GetPortTextFont();
Style GetPortTextFace();
SInt16 GetPortTextSize();

/// The width in pixels, in the current style, of a Pascal string (a length byte, then that many
/// characters); of `count` bytes of `text` from `first` on; at most 32767.
SInt16 StringWidth(const UInt8* pascal_string);
SInt16 TextWidth(const void* text, SInt16 first, SInt16 count);

struct SavedDrawingState;
/// A drawing state that was taken.
using ThemeDrawingState = SavedDrawingState*;
/// Takes the current port's colours, pen and text style, which the caller gives back with
/// SetThemeDrawingState or gives up with DisposeThemeDrawingState.
OSStatus GetThemeDrawingState(ThemeDrawingState* state);
/// Makes a state current; with `dispose_now` it is given up as well. paramErr for null.
OSStatus SetThemeDrawingState(ThemeDrawingState state, Boolean dispose_now);
OSStatus DisposeThemeDrawingState(ThemeDrawingState state);
