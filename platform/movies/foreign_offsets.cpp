/// Absolute file offsets that stand in atoms other than the chunk tables.

#include <algorithm>
#include <array>

#include "big_endian.h"
#include "data_source.h"
#include "movie_file.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

/// Reads fields of 0, 2, 4 or 8 bytes one after the other; fails for good at the end of the bytes.
class Fields {
 public:
  explicit Fields(std::span<const UInt8> bytes) : bytes_(bytes) {}
  UInt64 Next(std::size_t width) {
    if (!ok_ || bytes_.size() < width) {
      ok_ = false;
      return 0;
    }
    UInt64 value = 0;
    for (const UInt8 byte : bytes_.first(width))
      value = (value << 8) | byte;
    bytes_ = bytes_.subspan(width);
    return value;
  }
  bool ok() const { return ok_; }

 private:
  std::span<const UInt8> bytes_;
  bool ok_ = true;
};

bool ReadItemLocations(std::span<const UInt8> payload, std::vector<ForeignOffset>* found) {
  Fields fields(payload);
  const UInt64 version = fields.Next(1);
  fields.Next(3);
  const UInt64 widths = fields.Next(2);
  const std::size_t offset_width = (widths >> 12) & 15;
  const std::size_t length_width = (widths >> 8) & 15;
  const std::size_t base_width = (widths >> 4) & 15;
  const std::size_t index_width = version == 0 ? 0 : widths & 15;
  if (version > 2 || offset_width > 8 || length_width > 8 || base_width > 8 || index_width > 8) {
    return false;
  }
  const UInt64 items = fields.Next(version < 2 ? 2 : 4);
  for (UInt64 item = 0; item < items && fields.ok(); ++item) {
    fields.Next(version < 2 ? 2 : 4);
    const UInt64 method = version == 0 ? 0 : fields.Next(2) & 15;
    fields.Next(2);
    const UInt64 base = fields.Next(base_width);
    const UInt64 extents = fields.Next(2);
    // Extents without any fields say nothing that needs a loop.
    for (UInt64 extent = 0; extent < extents && fields.ok(); ++extent) {
      fields.Next(index_width);
      const UInt64 offset = fields.Next(offset_width);
      const UInt64 length = fields.Next(length_width);
      UInt64 start = 0;
      if (!AddFits(base, offset, &start)) return false;
      if (method == 0 && fields.ok()) found->push_back({"iloc"_4cc, start, length});
      if (index_width + offset_width + length_width == 0) break;
    }
  }
  return fields.ok();
}

bool ReadAuxiliaryOffsets(std::span<const UInt8> payload, std::vector<ForeignOffset>* found) {
  Fields fields(payload);
  const UInt64 version_and_flags = fields.Next(4);
  if ((version_and_flags & 1) != 0) fields.Next(8);
  const std::size_t width = (version_and_flags >> 24) == 0 ? 4 : 8;
  const UInt64 count = fields.Next(4);
  for (UInt64 i = 0; i < count && fields.ok(); ++i) {
    const UInt64 offset = fields.Next(width);
    if (fields.ok()) found->push_back({"saio"_4cc, offset, 0});
  }
  return fields.ok();
}

/// The largest table of item locations that is read, and the number of atoms that are looked at.
constexpr UInt64 kLargestTable = UInt64{16} << 20;
constexpr std::size_t kMaximumLookedAt = std::size_t{1} << 16;

/// Looks for `iloc` in a `meta`, or in a `meta` in a `udta`, and reads nothing else of them.
class LargeAtomSearch {
 public:
  LargeAtomSearch(int descriptor, std::vector<ForeignOffset>* found)
      : descriptor_(descriptor), found_(*found) {}

  OSStatus Search(OSType type, FileSpan content) {
    if (type == "udta"_4cc) return SearchChildren(content, "meta"_4cc);
    return type == "meta"_4cc ? SearchMeta(content) : OSStatus{noErr};
  }

 private:
  /// In ISO files version and flags, all zero, stand before the children.
  OSStatus SearchMeta(FileSpan content) {
    std::array<UInt8, 4> start = {};
    if (content.size < start.size()) return noErr;
    const OSStatus status = ReadFully(descriptor_, content.offset, start);
    if (status != noErr) return status;
    if (ReadU32(start.data()) == 0) content = {content.offset + 4, content.size - 4};
    return SearchChildren(content, "iloc"_4cc);
  }

  OSStatus SearchChildren(FileSpan content, OSType wanted) {
    while (content.size >= 8) {
      if (++looked_at_ > kMaximumLookedAt) return invalidMovie;
      std::array<UInt8, 16> header = {};
      const auto count = static_cast<std::size_t>(std::min<UInt64>(content.size, header.size()));
      OSStatus status = ReadFully(descriptor_, content.offset, std::span(header).first(count));
      if (status != noErr) return status;
      UInt64 size = ReadU32(header.data());
      const UInt64 header_size = size == 1 ? 16 : 8;
      if (size == 1) size = ReadU64(header.data() + 8);
      if (size == 0) size = content.size;
      if (size < header_size || size > content.size) return noErr;  // no atoms from here on
      const FileSpan inside = {content.offset + header_size, size - header_size};
      if (ReadU32(header.data() + 4) == wanted) {
        status = wanted == "iloc"_4cc ? ReadTable(inside) : SearchMeta(inside);
        if (status != noErr) return status;
      }
      content = {content.offset + size, content.size - size};
    }
    return noErr;
  }

  OSStatus ReadTable(FileSpan content) {
    if (content.size > kLargestTable) return invalidMovie;
    std::vector<UInt8> bytes(static_cast<std::size_t>(content.size));
    const OSStatus status = ReadFully(descriptor_, content.offset, bytes);
    if (status != noErr) return status;
    return ReadItemLocations(bytes, &found_) ? noErr : OSStatus{invalidMovie};
  }

  int descriptor_;
  std::vector<ForeignOffset>& found_;
  std::size_t looked_at_ = 0;
};

}  // namespace

OSStatus FindForeignOffsets(int file_descriptor, const LargeKeptAtom& kept,
                            std::vector<ForeignOffset>* found) {
  return LargeAtomSearch(file_descriptor, found).Search(kept.type, kept.content);
}

OSStatus FindForeignOffsets(const Atom& tree, std::vector<ForeignOffset>* found) {
  bool parsed = true;
  if (tree.type() == "iloc"_4cc) parsed = ReadItemLocations(tree.payload(), found);
  if (tree.type() == "saio"_4cc) parsed = ReadAuxiliaryOffsets(tree.payload(), found);
  if (!parsed) return invalidMovie;
  for (const Atom& child : tree.children()) {
    const OSStatus status = FindForeignOffsets(child, found);
    if (status != noErr) return status;
  }
  return noErr;
}

}  // namespace quillmere::movies
