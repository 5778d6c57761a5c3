/// printf formats for strings of UTF-16.
#pragma once

#include <cstdarg>
#include <string>
#include <string_view>

namespace quillmere {

/// The text of a printf format. "%@" takes a CFObject: a string, a number in decimal, anything else
/// and null as
/// "(null)". "%s" takes UTF-8. "%C" takes one UTF-16 unit as an int.
std::u16string FormatUnits(std::u16string_view format, std::va_list arguments);

/// The number at the text's start behind blanks, a full stop as its decimal point whatever the
/// locale; 0 for none.
double ParseLeadingDouble(std::string_view text);

}  // namespace quillmere
