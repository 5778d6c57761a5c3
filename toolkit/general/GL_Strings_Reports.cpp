#include "GL_Strings_Reports.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "GL_Strings.h"
#include "GL_Strings_Numbers.h"
#include "GL_Strings_Unicode.h"

namespace {

/// A platform string in the system encoding; empty if it does not fit a classic string.
std::string Converted(CFStringRef string) {
  char text[kLongestCString + 1];
  GL_CFStrToCStr(string, text, sizeof text);
  return text;
}

void AddField(char* buffer, SInt32* offset, const char* label, const std::string& value) {
  const std::string field = std::string(label ? label : "") + ": " + value + "\n";
  GL_AddCStringToTextPtr(buffer, offset, field.c_str());
}

}  // namespace

void GL_AddCStringToTextPtr(char* buffer, SInt32* offset, const char* string) {
  if (buffer == nullptr || offset == nullptr || string == nullptr) return;
  const std::string_view text = string;
  std::copy(text.begin(), text.end(), buffer + *offset);
  *offset += static_cast<SInt32>(text.size());
}

void GL_AddCFStringToTextPtr(char* buffer, SInt32* offset, CFStringRef string) {
  GL_AddCStringToTextPtr(buffer, offset, Converted(string).c_str());
}

void GL_AddCFStringFieldToTextPtr(char* buffer, SInt32* offset, const char* label,
                                  CFStringRef value) {
  AddField(buffer, offset, label, Converted(value));
}

void GL_AddVersionsFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                       SInt32 major, SInt32 minor, SInt32 patch) {
  char text[64];
  GL_NumToVersion2(major, minor, patch, text);
  AddField(buffer, offset, label, text);
}

void GL_AddVersionFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                      UInt32 version) {
  char text[16];
  GL_NumToVersion(version, text);
  AddField(buffer, offset, label, text);
}

void GL_AddHexFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, UInt32 value) {
  char text[16];
  GL_NumToHex(value, text);
  AddField(buffer, offset, label, text);
}

void GL_AddPointFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, Point value) {
  AddField(buffer, offset, label,
           "vert " + std::to_string(value.v) + ", horiz " + std::to_string(value.h));
}

void GL_AddRectFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                   const Rect* value) {
  if (value == nullptr) return;
  AddField(buffer, offset, label,
           "top " + std::to_string(value->top) + ", left " + std::to_string(value->left) +
               ", bottom " + std::to_string(value->bottom) + ", right " +
               std::to_string(value->right));
}

void GL_AddFloatFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, double value,
                                    SInt16 decimals) {
  char text[kLongestCString + 1];
  GL_FloatRoundToStr(value, text, decimals);
  AddField(buffer, offset, label, text);
}

void GL_AddLongFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, SInt32 value) {
  AddField(buffer, offset, label, std::to_string(value));
}

void GL_AddLongFieldDescrToTextPtr2(char* buffer, SInt32* offset, const char* label, SInt32 value,
                                    CFStringRef unit) {
  AddField(buffer, offset, label, std::to_string(value) + Converted(unit));
}

void GL_AddByteFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, SInt64 count) {
  char text[kLongestCString + 1];
  if (count <= 0x3FF) {
    return AddField(buffer, offset, label, std::to_string(count) + " bytes");
  }
  const auto bytes = static_cast<double>(count);
  const bool is_kilo = count <= 0xFFFFF;
  const bool is_mega = !is_kilo && count <= 0x3FFFFFFF;
  GL_FloatToStr(bytes / (is_kilo ? 1e3 : is_mega ? 1e6 : 1e9), text);
  AddField(buffer, offset, label, std::string(text) + (is_kilo ? " kB" : is_mega ? " MB" : " GB"));
}

void GL_AddBooleanFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label,
                                      Boolean value) {
  AddField(buffer, offset, label, value ? "yes" : "no");
}

void GL_AddOSTypeFieldDescrToTextPtr(char* buffer, SInt32* offset, const char* label, OSType code) {
  char text[5];
  GL_OSTypeToCString(code, text);
  AddField(buffer, offset, label, std::string("'") + text + "'");
}
