/// How long the matching of a Lua pattern may take.
#pragma once

#include <cstddef>
#include <string_view>

namespace quillmere::scripts {

/// An upper bound of the steps (of up to 32 characters each) that the matcher takes for `pattern`,
/// at all places of a text of `length` bytes: every repetition, back reference and %b can try each
/// length at each place, every "?" two. `can_anchor`: a "^" in front limits it to the text's start.
double PatternCost(std::string_view pattern, std::size_t length, bool can_anchor);
/// The same for a search of a plain text.
double SearchCost(std::string_view searched, std::size_t length);

/// The largest cost that a script's call may have: about a second.
inline constexpr double kLargestPatternCost = 1.5e8;

}  // namespace quillmere::scripts
