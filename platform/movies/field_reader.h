/// Reading the fields of an atom from first to last.
#pragma once

#include <span>

#include "base_types.h"
#include "big_endian.h"

namespace quillmere::movies {

/// Reads big-endian fields one after the other; a field that is not there makes it fail for good.
class FieldReader {
 public:
  explicit FieldReader(std::span<const UInt8> bytes) : bytes_(bytes) {}
  UInt32 U32() { return Take(4) ? ReadU32(taken_) : 0; }
  UInt64 U64() { return Take(8) ? ReadU64(taken_) : 0; }
  UInt32 U32If(bool present, UInt32 otherwise) { return present ? U32() : otherwise; }
  bool ok() const { return ok_; }
  std::size_t left() const { return bytes_.size(); }
  /// The next bytes; none where there are fewer.
  std::span<const UInt8> Bytes(std::size_t count) {
    return Take(count) ? std::span(taken_, count) : std::span<const UInt8>();
  }

 private:
  bool Take(std::size_t count) {
    ok_ = ok_ && bytes_.size() >= count;
    if (!ok_) return false;
    taken_ = bytes_.data();
    bytes_ = bytes_.subspan(count);
    return true;
  }
  std::span<const UInt8> bytes_;
  const UInt8* taken_ = nullptr;
  bool ok_ = true;
};

}  // namespace quillmere::movies
