/// String tables: texts under keys, in files that translators edit.
///
///     /* What the user sees when a disk is full. */
///     "GL DiskFullErr" = "The disk is full.";   // one entry
///
/// A file is UTF-8, or UTF-16 of either byte order with its byte order mark. Entries are separated
/// by blanks and comments. A key or text stands in quotes, double or single; a word of letters,
/// digits and _ $ . / : - needs none. Inside quotes \n, \r, \t, \uXXXX and \UXXXX (one UTF-16 unit
/// in four hexadecimal digits) stand for what they say, a backslash before any other character for
/// that character. `key;` without a text gives the key as its text. The last of several entries of
/// one key counts.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>

#include "base_types.h"

namespace quillmere {

/// Texts by key, both in UTF-16.
using StringsTable = std::map<std::u16string, std::u16string, std::less<>>;

/// The table that a file's bytes hold. A file that breaks the rules anywhere, or holds bytes that
/// are not valid in its encoding, gives an empty table.
StringsTable ParseStringsTable(std::span<const UInt8> bytes);

}  // namespace quillmere
