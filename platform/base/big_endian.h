/// Big-endian fields in bytes. Readers and writers check no bounds: callers know that the bytes are
/// there, by SliceOf.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "base_types.h"

namespace quillmere {

/// The `length` bytes from `offset` on; false if there are not that many.
inline bool SliceOf(std::span<const UInt8> bytes, UInt64 offset, UInt64 length,
                    std::span<const UInt8>* slice) {
  if (offset > bytes.size() || length > bytes.size() - offset) return false;
  *slice = bytes.subspan(offset, length);
  return true;
}

inline UInt16 ReadU16(const UInt8* bytes) {
  return static_cast<UInt16>((bytes[0] << 8) | bytes[1]);
}
inline UInt32 ReadU32(const UInt8* bytes) {
  return (UInt32{bytes[0]} << 24) | (UInt32{bytes[1]} << 16) | (UInt32{bytes[2]} << 8) | bytes[3];
}
inline UInt64 ReadU64(const UInt8* bytes) {
  return (UInt64{ReadU32(bytes)} << 32) | ReadU32(bytes + 4);
}
inline SInt16 ReadS16(const UInt8* bytes) {
  return static_cast<SInt16>(ReadU16(bytes));
}
inline SInt32 ReadS32(const UInt8* bytes) {
  return static_cast<SInt32>(ReadU32(bytes));
}
inline SInt64 ReadS64(const UInt8* bytes) {
  return static_cast<SInt64>(ReadU64(bytes));
}

inline void WriteU16(UInt8* bytes, UInt16 value) {
  bytes[0] = static_cast<UInt8>(value >> 8);
  bytes[1] = static_cast<UInt8>(value);
}
inline void WriteU32(UInt8* bytes, UInt32 value) {
  WriteU16(bytes, static_cast<UInt16>(value >> 16));
  WriteU16(bytes + 2, static_cast<UInt16>(value));
}
inline void WriteU64(UInt8* bytes, UInt64 value) {
  WriteU32(bytes, static_cast<UInt32>(value >> 32));
  WriteU32(bytes + 4, static_cast<UInt32>(value));
}

/// Appends a field to bytes.
inline void AppendU32(std::vector<UInt8>* out, UInt32 value) {
  out->resize(out->size() + 4);
  WriteU32(out->data() + out->size() - 4, value);
}
inline void AppendU64(std::vector<UInt8>* out, UInt64 value) {
  out->resize(out->size() + 8);
  WriteU64(out->data() + out->size() - 8, value);
}

/// Sums and products that say when they do not fit; `*result` is undefined then.
inline bool AddFits(UInt64 a, UInt64 b, UInt64* result) {
  return !__builtin_add_overflow(a, b, result);
}
inline bool MultiplyFits(UInt64 a, UInt64 b, UInt64* result) {
  return !__builtin_mul_overflow(a, b, result);
}

}  // namespace quillmere
