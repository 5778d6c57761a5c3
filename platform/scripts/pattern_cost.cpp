#include "pattern_cost.h"

namespace quillmere::scripts {
namespace {

/// The index behind the set that starts at `at`, or the pattern's end if it has none.
std::size_t BehindSet(std::string_view pattern, std::size_t at) {
  ++at;
  if (at < pattern.size() && pattern[at] == '^') ++at;
  bool first = true;  // a bracket in the first place stands for itself
  for (; at < pattern.size(); ++at, first = false) {
    if (pattern[at] == ']' && !first) return at + 1;
    if (pattern[at] == '%') ++at;
  }
  return pattern.size();
}

}  // namespace

double SearchCost(std::string_view searched, std::size_t length) {
  const std::size_t blocks = 1 + searched.size() / 32;
  return (static_cast<double>(length) + 1) * static_cast<double>(blocks);
}

double PatternCost(std::string_view pattern, std::size_t length, bool can_anchor) {
  const double places = static_cast<double>(length) + 1;
  double cost = SearchCost(pattern, length);
  std::size_t at = 0;
  if (can_anchor && pattern.starts_with('^')) {
    cost /= places;
    at = 1;
  }
  while (at < pattern.size()) {
    const char sign = pattern[at];
    const char next = at + 1 < pattern.size() ? pattern[at + 1] : '\0';
    if (sign == '%' && (next == 'b' || (next >= '0' && next <= '9'))) cost *= places;
    if (sign == '[') {
      at = BehindSet(pattern, at);
    } else {
      at += sign != '%' ? 1 : next == 'b' ? 4 : 2;
    }
    if (at < pattern.size() && (pattern[at] == '*' || pattern[at] == '+' || pattern[at] == '-')) {
      cost *= places;
      ++at;
    } else if (at < pattern.size() && pattern[at] == '?') {
      cost *= 2;
      ++at;
    }
  }
  return cost;
}

}  // namespace quillmere::scripts
