/// The bytes of a sidecar in AppleDouble form (RFC 1740, version 2).
///
/// A file of entries: number, offset and length of each stand in a table at the front. Entry 9
/// holds 32 bytes of Finder information and, where there are any, named attributes in a block
/// "ATTR" behind them; entry 2 the resource fork. All numbers are big-endian; offsets count from
/// the start of the file.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "base_types.h"
#include "object_place.h"

namespace quillmere::files {

/// The entry of a sidecar that holds the Finder information.
inline constexpr UInt32 kFinderInformationEntry = 9;

using ForkBytes = std::vector<UInt8>;

struct AppleDouble {
  struct Attribute {
    std::string name;  ///< UTF-8, 127 bytes at most
    UInt16 flags = 0;
    ForkBytes value;
  };
  struct Entry {
    UInt32 number;
    ForkBytes bytes;
  };
  ForkBytes finder_information;  ///< empty or 32 bytes
  std::vector<Attribute> attributes;
  ForkBytes resource_fork;
  std::vector<Entry> others;  ///< entries that are kept as they are

  bool HoldsNothing() const;
  /// The attribute of a name; null if there is none.
  Attribute* Find(std::string_view name);
  /// Sets an attribute, or takes it away for null.
  void Set(std::string_view name, const ForkBytes* value);
};

/// A row of a sidecar's table.
struct AppleDoubleRow {
  UInt32 number;
  UInt32 offset;
  UInt32 length;
};
/// Reads the table at the front of a sidecar; where its entries lie is not looked at. False if the
/// bytes are no sidecar or do not hold the whole table.
bool ReadAppleDoubleTable(std::span<const UInt8> bytes, std::vector<AppleDoubleRow>* rows);
/// Reads a sidecar from bytes that nobody vouches for; false if it is damaged.
bool ParseAppleDouble(std::span<const UInt8> bytes, AppleDouble* sidecar);
/// Writes one; false if it does not fit into 32 bits or a name is too long.
bool BuildAppleDouble(const AppleDouble& sidecar, ForkBytes* bytes);

/// Reads the sidecar of an object; empty if there is none. ioErr for a damaged one, memFullErr for
/// one too large to hold, and what reading gives.
OSStatus ReadSidecar(const ObjectPlace& object, AppleDouble* sidecar);
/// Replaces the sidecar of an object in one step, or removes it if it holds nothing. On a failure
/// the old one stays. dupFNErr if a file of the user's has the name.
OSStatus WriteSidecar(const ObjectPlace& object, const AppleDouble& sidecar);

}  // namespace quillmere::files
