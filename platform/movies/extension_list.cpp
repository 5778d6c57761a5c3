#include "extension_list.h"

#include <cstring>

#include "big_endian.h"
#include "image_descriptions.h"

namespace quillmere::movies {
namespace {

constexpr std::size_t kRecordSize = sizeof(ImageDescription);
constexpr std::size_t kHeaderSize = 8;

}  // namespace

OSErr CheckDescription(ImageDescriptionHandle description) {
  if (description == nullptr || *description == nullptr) return paramErr;
  const bool is_whole = static_cast<std::size_t>(GetHandleSize(description)) >= kRecordSize;
  return is_whole ? OSErr{noErr} : badImageDescription;
}

OSErr ExtensionList::Read(ImageDescriptionHandle description) {
  const OSErr status = CheckDescription(description);
  if (status) return status;
  const auto* start = reinterpret_cast<const UInt8*>(*description);
  bytes_.assign(start, start + GetHandleSize(description));
  FindAll();
  return noErr;
}

void ExtensionList::FindAll() {
  all_.clear();
  std::size_t at = kRecordSize;
  while (bytes_.size() - at >= kHeaderSize) {
    const std::size_t size = ReadU32(bytes_.data() + at);
    if (size < kHeaderSize || size > bytes_.size() - at) return;
    all_.push_back({ReadU32(bytes_.data() + at + 4), at, size});
    at += size;
  }
}

const ExtensionAt* ExtensionList::Find(OSType type, SInt32 index) const {
  for (const ExtensionAt& extension : all_)
    if (extension.type == type && --index == 0) return &extension;
  return nullptr;
}

std::span<const UInt8> ExtensionList::ContentOf(const ExtensionAt& extension) const {
  return std::span(bytes_).subspan(extension.offset + kHeaderSize, extension.size - kHeaderSize);
}

void ExtensionList::Add(OSType type, std::span<const UInt8> content) {
  std::vector<UInt8> atom;
  AppendU32(&atom, static_cast<UInt32>(kHeaderSize + content.size()));
  AppendU32(&atom, type);
  atom.insert(atom.end(), content.begin(), content.end());
  const std::size_t end = all_.empty() ? kRecordSize : all_.back().offset + all_.back().size;
  bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(end), atom.begin(), atom.end());
  FindAll();
}

void ExtensionList::Remove(const ExtensionAt& extension) {
  const auto start = bytes_.begin() + static_cast<std::ptrdiff_t>(extension.offset);
  bytes_.erase(start, start + static_cast<std::ptrdiff_t>(extension.size));
  FindAll();
}

OSErr ExtensionList::WriteTo(ImageDescriptionHandle description) {
  const auto size = static_cast<SInt32>(bytes_.size());
  std::memcpy(bytes_.data(), &size, sizeof size);
  SetHandleSize(description, size);
  if (GetHandleSize(description) != size) return memFullErr;
  std::memcpy(*description, bytes_.data(), bytes_.size());
  return noErr;
}

}  // namespace quillmere::movies
