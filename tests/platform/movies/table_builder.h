/// Atoms of a sample table, built for tests independently of the code that reads them.
#pragma once

#include <initializer_list>
#include <string_view>

#include "atom_builder.h"

namespace quillmere::test {

/// A table of 32-bit numbers, `per_entry` of them to an entry: `stts`, `stsc`, `stco` ...
inline Bytes Table(std::string_view type, std::initializer_list<UInt32> numbers,
                   std::size_t per_entry) {
  ByteWriter content;
  content.U32(numbers.size() / per_entry);
  for (const UInt32 number : numbers)
    content.U32(number);
  return MakeFullAtom(type, 0, 0, content.bytes);
}

/// A `stsz` whose samples all have one size.
inline Bytes ConstantSizes(UInt32 size, UInt32 count) {
  return MakeFullAtom("stsz", 0, 0, ByteWriter().U32(size).U32(count).bytes);
}

/// A `stsd` of these entries.
inline Bytes Descriptions(std::initializer_list<Bytes> entries) {
  return MakeFullAtom("stsd", 0, 0,
                      Concatenate({ByteWriter().U32(entries.size()).bytes, Concatenate(entries)}));
}

/// The four fields that version 1 adds to a sound description, as far as they matter.
struct SoundVersion1 {
  UInt32 frames_per_packet;
  UInt32 bytes_per_frame;
  int compression;
};

/// A sound description at 44,100 Hz.
inline Bytes Sound(std::string_view format, UInt16 channels, UInt16 bits,
                   const SoundVersion1* version1 = nullptr, UInt16 data_reference = 1) {
  ByteWriter content;
  content.Zeros(6).U16(data_reference).U16(version1 != nullptr ? 1 : 0).Zeros(6);
  content.U16(channels).U16(bits);
  content.U16(static_cast<UInt16>(version1 != nullptr ? version1->compression : 0)).U16(0);
  content.U32(44100U << 16);
  if (version1 != nullptr) {
    content.U32(version1->frames_per_packet).U32(1).U32(version1->bytes_per_frame).U32(2);
  }
  return MakeAtom(format, content.bytes);
}

}  // namespace quillmere::test
