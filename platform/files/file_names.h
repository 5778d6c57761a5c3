/// Names of objects, between the bytes that the file system keeps and UTF-16 units.
///
/// Names are UTF-8. A byte that is not part of valid UTF-8 becomes the lone surrogate 0xDC00 plus
/// its value (0xDC80 to 0xDCFF), and back, so that every name there is can be said in units and
/// comes back byte for byte. Converted on to a string of text such a unit is U+FFFD.
#pragma once

#include <string>
#include <string_view>

#include "base_types.h"
#include "file_references.h"

namespace quillmere::files {

/// The units of a name; what does not fit into 255 units is cut off.
void UnitsOfName(std::string_view bytes, HFSUniStr255* name);
/// The bytes of a name that one object in a folder can have. errFSMissingName for an empty one,
/// errFSNameTooLong for more than 255 units, bdNamErr for "." and "..", for one with a slash or a
/// zero, and for other lone surrogates. paramErr for a null pointer.
OSErr BytesOfName(UInt32 length, const UniChar* name, std::string* bytes);

}  // namespace quillmere::files
