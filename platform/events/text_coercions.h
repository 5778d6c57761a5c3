/// Text between the forms in which descriptors hold it.
#pragma once

#include <span>
#include <vector>

#include "base_types.h"

inline constexpr OSType typeText = "TEXT"_4cc;         ///< bytes
inline constexpr OSType typeIntlText = "itxt"_4cc;     ///< script, language (16 bits each), bytes
inline constexpr OSType typeUnicodeText = "utxt"_4cc;  ///< UTF-16 in native order
/// UTF-16 in big-endian order, or as a byte-order mark at its start says.
inline constexpr OSType typeUTF16Text = "ut16"_4cc;
inline constexpr OSType typeUTF8Text = "utf8"_4cc;

namespace quillmere::events {

/// Whether it is one of the types above.
bool IsText(OSType type);
/// Converts text of the form `from` to the form `to`; false if one of them is not text or the bytes
/// do not convert. `TEXT` becomes `itxt` and back with its bytes as they are, marked with the
/// system's script and language. As Unicode, `TEXT` is read in UTF-8 if it is valid there, else in
/// the encoding of the system's script; `itxt` in that of its own codes. From Unicode, `TEXT` and
/// `itxt` become the system script's bytes, with "?" for what these do not have; `ut16` gets no
/// mark.
bool CoerceText(OSType from, std::span<const UInt8> bytes, OSType to, std::vector<UInt8>* result);

}  // namespace quillmere::events
