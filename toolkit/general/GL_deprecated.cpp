#include "GL_deprecated.h"

#include "fonts.h"
#include "text_encodings.h"
#include "text_style.h"

Boolean GLD_FillParseTable(UInt8* table, ScriptCode script) {
  return FillParseTable(table, script);
}

void GLD_TextFont(SInt16 font) {
  TextFont(font);
}

void GLD_TextFace(UInt8 face) {
  TextFace(face);
}

void GLD_TextSize(SInt16 size) {
  TextSize(size);
}

SInt16 GLD_StringWidth(const UInt8* pascal_string) {
  return StringWidth(pascal_string);
}

void GLD_GetFontInfo(FontInfo* info) {
  GetFontInfo(info);
}

void GLD_DrawString(const UInt8* pascal_string) {
  DrawString(pascal_string);
}

void GLD_GetFNum(const UInt8* name, SInt16* number) {
  GetFNum(name, number);
}

void GLD_GetFontName(SInt16 number, UInt8* name) {
  GetFontName(number, name);
}
