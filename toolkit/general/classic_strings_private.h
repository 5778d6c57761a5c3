/// What the operations on classic strings share.
#pragma once

#include <cstring>
#include <string_view>

namespace quillmere {

/// The bytes of a C string; none for null.
inline std::string_view ViewOf(const char* string) {
  return string ? std::string_view(string) : std::string_view();
}

/// Stores a text, which the caller has found to fit and which may lie in `out` itself, with its
/// zero.
inline void StoreText(std::string_view text, char* out) {
  if (!text.empty()) std::memmove(out, text.data(), text.size());
  out[text.size()] = 0;
}

}  // namespace quillmere
