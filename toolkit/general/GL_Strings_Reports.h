/// Text reports: labelled fields written one behind the other into a plain character buffer.
///
/// `offset` is where the next byte goes; every operation moves it forward by what it wrote. No zero
/// byte is written. The buffer is the caller's, who sees to its room: a field takes its label, at
/// most 280 bytes of value, and 4 bytes. A null label or string counts as empty.
///
/// A field is the label, ": ", the value and a newline.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// Adds a string's bytes; and those of a platform string in the system encoding, nothing if it
/// takes more than 255.
void GL_AddCStringToTextPtr(char* buffer, SInt32* offset, const char* string);
void GL_AddCFStringToTextPtr(char* buffer, SInt32* offset, CFStringRef string);

/// A platform string.
void GL_AddCFStringFieldToTextPtr(char* buffer, SInt32* offset, const char* label,
                                  CFStringRef value);
/// A version of three numbers; and a packed one (GL_NumToVersion).
void GL_AddVersionsFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                       SInt32 major, SInt32 minor, SInt32 patch);
void GL_AddVersionFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                      UInt32 version);
/// "0x" and eight hexadecimal digits.
void GL_AddHexFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, UInt32 value);
/// "vert 1, horiz 2"; "top 1, left 2, bottom 3, right 4".
void GL_AddPointFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, Point value);
void GL_AddRectFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                   const Rect* value);
/// A number with `decimals`, 0 to 9; a whole number; one with a unit behind it.
void GL_AddFloatFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, double value,
                                    SInt16 decimals);
void GL_AddLongFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, SInt32 value);
void GL_AddLongFieldDescrToTextPtr2(char* buffer, SInt32* offset, const char* label, SInt32 value,
                                    CFStringRef unit);
/// A count of bytes: " bytes" up to 1023; then with two decimals in thousands (" kB") up to
/// 0xFFFFF, in millions (" MB") up to 0x3FFFFFFF, in thousand millions (" GB"). The units are
/// powers of ten, unlike those of GL_NumBytesToStr.
void GL_AddByteFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, SInt64 count);
/// "yes" or "no".
void GL_AddBooleanFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                      Boolean value);
/// The code's four characters, up to a zero byte, in single quotes.
void GL_AddOSTypeFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, OSType code);
