/// Tables from codes to error keys, and the one look-up that all of them share.
#pragma once

#include <cstddef>

#include "base_types.h"
#include "cf_strings.h"

namespace quillmere::errors {

/// The key of a status that counts as no error, and that of a code without a key of its own.
inline constexpr const char* kNoErrorKey = "GL NoErr";
inline constexpr const char* kUnknownErrorKey = "GL UnknownErr";

/// A row of a table: the codes from `first` to `last`, both included, have the key.
struct KeyRange {
  SInt32 first;
  SInt32 last;
  const char* key;
};

/// The first row that holds `code`, compared as whole 32-bit numbers; null behind the last. A row
/// is a KeyRange or another record with `first` and `last`.
template <class Row, std::size_t count>
constexpr const Row* FindRow(const Row (&rows)[count], SInt32 code) {
  for (const Row& row : rows) {
    if (row.first <= code && code <= row.last) return &row;
  }
  return nullptr;
}

/// The key of `code` in a table; "GL UnknownErr" if it has none.
template <std::size_t count>
constexpr const char* FindKey(const KeyRange (&rows)[count], SInt32 code) {
  const KeyRange* row = FindRow(rows, code);
  return row ? row->key : kUnknownErrorKey;
}

/// What the key function of a library does: sets the constant key of `code`, "GL UnknownErr" if the
/// library's table has none. A null `outKey` takes nothing.
template <std::size_t count>
void SetKey(const KeyRange (&rows)[count], SInt32 code, CFStringRef* outKey) {
  if (outKey) *outKey = CFSTR(FindKey(rows, code));
}

}  // namespace quillmere::errors
