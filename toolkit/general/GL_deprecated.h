/// Older calls of the platform under one name each: they forward their arguments unchanged, so that
/// what still uses such a call is found by this prefix.
#pragma once

#include "base_types.h"
#include "drawing.h"

/// Which bytes begin a two-byte character of a script; `table` has 256 bytes. See FillParseTable.
Boolean GLD_FillParseTable(UInt8* table, ScriptCode script);
/// The port's text style, and the width in pixels of a Pascal string in it.
void GLD_TextFont(SInt16 font);
void GLD_TextFace(UInt8 face);
void GLD_TextSize(SInt16 size);
SInt16 GLD_StringWidth(const UInt8* pascal_string);
void GLD_GetFontInfo(FontInfo* info);
/// Draws a Pascal string at the pen.
void GLD_DrawString(const UInt8* pascal_string);
/// Fonts by name, a Pascal string, and by number.
void GLD_GetFNum(const UInt8* name, SInt16* number);
void GLD_GetFontName(SInt16 number, UInt8* name);
