/// Reading many small stretches that lie one behind the other in a few places of a few files.
#pragma once

#include <array>
#include <memory>
#include <span>

#include "data_source.h"

namespace quillmere::movies {

/// Reads as DataSource::Read does. Where a stretch lies a little behind an earlier one, a larger
/// block is read from there, so that those to come are at hand. Sources have to stay open between
/// the reads.
class ReadAhead {
 public:
  OSStatus Read(const DataSource& source, UInt64 offset, std::span<UInt8> bytes);

 private:
  /// A place where reading goes on, with the block that was last read there.
  struct Place {
    const DataSource* source = nullptr;
    UInt64 next = 0;   ///< offset behind the last stretch
    UInt64 begin = 0;  ///< of the block
    UInt64 size = 0;   ///< of the block; 0 for none
    UInt64 last_use = 0;
    std::unique_ptr<UInt8[]> block;
  };

  Place* FindPlace(const DataSource& source, UInt64 offset, UInt64 size);
  static OSStatus Fill(Place* place, UInt64 offset, UInt64 at_least);

  static constexpr std::size_t kPlaces = 8;
  std::array<Place, kPlaces> places_;
  UInt64 uses_ = 0;
};

}  // namespace quillmere::movies
