/// What the catalogue keeps of an object and the file system has no place for.
///
/// It is the extended attribute "user.quillmere.catalogue", 44 bytes, big-endian:
///
/// | byte | content                                                              |
/// |------|----------------------------------------------------------------------|
/// | 0    | 1, the form's version (16 bits)                                      |
/// | 2    | write permissions that a lock took away, as of chmod (16 bits)       |
/// | 4    | hint of the name's text encoding (32 bits)                           |
/// | 8    | creation date, zero for the file system's own (each date: 64 bits)   |
/// | 16   | attribute date that was set                                          |
/// | 24   | when that was set                                                    |
/// | 32   | backup date, zero for never                                          |
/// | 40   | zero (32 bits)                                                       |
#pragma once

#include <array>
#include <string>

#include "base_types.h"
#include "file_dates.h"

namespace quillmere::files {

/// "user.quillmere.catalogue".
extern const char kCatalogueAttribute[];
inline constexpr UInt32 kUnknownTextEncoding = 0xFFFF;

struct CatalogueRecord {
  UInt16 write_permissions = 0;
  UInt32 text_encoding = kUnknownTextEncoding;
  UTCDateTime create_date{};
  UTCDateTime attribute_date{};
  UTCDateTime attribute_date_set{};
  UTCDateTime backup_date{};
  friend bool operator==(const CatalogueRecord&, const CatalogueRecord&) = default;
};

/// Reads an object's record; the default one if it has none, or none of this form.
CatalogueRecord ReadCatalogueRecord(const std::string& attribute_path);
/// Stores it; the default record removes the attribute. A volume that keeps no attributes goes
/// without: success.
OSStatus WriteCatalogueRecord(const std::string& attribute_path, const CatalogueRecord& record);

}  // namespace quillmere::files
