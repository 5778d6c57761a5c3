/// Metadata items in the three ways in which movie files keep them.
#pragma once

#include <memory>
#include <vector>

#include "atom.h"

namespace quillmere::movies {

/// One item, apart from the file.
struct MetadataItem {
  std::vector<UInt8> key;
  std::vector<UInt8> value;
  UInt32 data_type = 0;
  UInt32 locale = 0;  ///< as the format has it; 0 for none
};

/// More items of one format are neither read nor written.
inline constexpr std::size_t kMostMetadataItems = 4096;

/// Reads and writes the items of an owner, a `moov`, `trak` or `mdia`.
class MetadataFormat {
 public:
  virtual ~MetadataFormat() = default;
  virtual OSType storage_format() const = 0;
  virtual OSType key_format() const = 0;
  /// All items, up to one more than kMostMetadataItems.
  virtual std::vector<MetadataItem> Read(const Atom& owner) const = 0;
  /// Replaces all items; paramErr where a key doesn't fit the format.
  virtual OSStatus Write(Atom* owner, const std::vector<MetadataItem>& items) const = 0;
};

/// All formats, in the order in which items are numbered.
const std::vector<std::unique_ptr<MetadataFormat>>& MetadataFormats();

}  // namespace quillmere::movies
