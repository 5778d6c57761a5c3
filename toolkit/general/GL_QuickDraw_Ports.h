/// Shims over ports (graphics_ports.h): coordinates of windows and of the screen, frames, fonts and
/// drawn lines of text.
///
/// Colours are the classic codes of ForeColor (drawing.h): 30, 33, 69, 137, 205, 273, 341 or 409.
#pragma once

#include "GL_Strings_Words.h"
#include "base_types.h"
#include "drawing.h"
#include "graphics_ports.h"
#include "regions.h"
#include "window_ports.h"

/// A point of a window's content on the screen, and back. The current port stays.
void GL_LocalToGlobal(WindowRef window, Point point, Point* out);
void GL_GlobalToLocal(WindowRef window, Point point, Point* out);
/// The same for a rectangle or a region in place, by a port, null for the current one.
void GL_LocalRectToGlobal(Rect* rect, CGrafPtr port);
void GL_GlobalRectToLocal(Rect* rect, CGrafPtr port);
void GL_LocalRegionToGlobal(RgnHandle region, CGrafPtr port);
void GL_GlobalRegionToLocal(RgnHandle region, CGrafPtr port);

/// Draws the edge of a rectangle with a pen of `penSize` pixels on both axes, or all of it.
void GL_FrameRect(const Rect* rect, SInt32 color, SInt16 penSize);
void GL_PaintRect(const Rect* rect, SInt32 color);

/// The system's or the application's font in its standard size and plain face.
void GL_SetSystemFont();
void GL_SetAppFont();
/// The number of a font family of that name, of up to 255 bytes, 0 if there is none; and the name,
/// for which there is room of 256 bytes, of a number's, empty if there is none.
void GL_FontNameToFontID(const char* name, SInt16* font);
void GL_FontIDToFontName(SInt16 font, char* name);

/// Draws the first 255 characters of a string at the pen.
void GL_DrawCString(const char* string);
/// Draws a line of text in the middle of a rectangle: from 8/10 of its height the size shrinks to
/// where ascent and descent take no more than that and the text no more than 8/10 of the width. The
/// base line lies at half the height.
void GL_DrawTextLineScaled(const char* text, const Rect* rect, SInt32 color, SInt16 font);
/// Draws up to three lines, each in a basic colour at random, on black, in the current font; the
/// size shrinks from a sixth of the height, and 1, until the widest fits. Base lines lie at 1/4,
/// 11/20 and 17/20 of the height.
void GL_DrawThreeLineImage(Rect rect, const GL_StringElement* lines);
