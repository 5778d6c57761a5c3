#include "aliases.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// The fixed part of a version 2 record, by the offsets of its fields (all big-endian).
constexpr std::size_t kSizeAt = 4;
constexpr std::size_t kVersionAt = 6;
constexpr std::size_t kKindAt = 8;
constexpr std::size_t kVolumeNameAt = 10;  // a Pascal string in 28 bytes
constexpr std::size_t kVolumeSignatureAt = 42;
constexpr std::size_t kParentNumberAt = 46;
constexpr std::size_t kFileNameAt = 50;  // a Pascal string in 64 bytes
constexpr std::size_t kFileNumberAt = 114;
constexpr std::size_t kLevelsFromAt = 130;
constexpr std::size_t kLevelsToAt = 132;
constexpr std::size_t kFixedSize = 150;
constexpr std::size_t kVolumeNameRoom = 28;
constexpr std::size_t kFileNameRoom = 64;
constexpr UInt16 kNoLevels = 0xFFFF;

/// Tags of the items behind the fixed part.
enum : UInt16 {
  kTagParentName = 0,
  kTagClassicPath = 2,
  kTagUnicodeName = 14,
  kTagUnicodeVolume = 15,
  kTagPosixPath = 18,
  kTagMountPoint = 19,
  kTagEnd = 0xFFFF
};

UInt16 Read16(std::span<const UInt8> bytes, std::size_t at) {
  return static_cast<UInt16>((bytes[at] << 8) | bytes[at + 1]);
}

void Write16(UInt64 value, std::span<UInt8> bytes, std::size_t at) {
  bytes[at] = static_cast<UInt8>(value >> 8);
  bytes[at + 1] = static_cast<UInt8>(value);
}

void Write32(UInt64 value, std::span<UInt8> bytes, std::size_t at) {
  Write16(value >> 16, bytes, at);
  Write16(value, bytes, at + 2);
}

/// MacRoman bytes of UTF-8 text, "?" where there are none, cut to `room`.
std::string ToMacRoman(const std::string& utf8, std::size_t room) {
  const quillmere::Owned<CFStringRef> string(quillmere::CreateFromUtf8(utf8));
  std::vector<UInt8> bytes(room);
  CFIndex used = 0;
  CFStringGetBytes(string.get(), {0, CFStringGetLength(string.get())}, kCFStringEncodingMacRoman,
                   '?', 0, bytes.data(), static_cast<CFIndex>(room), &used);
  return {reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(used)};
}

std::string FromMacRoman(std::span<const UInt8> bytes) {
  const quillmere::Owned<CFStringRef> string(
      CFStringCreateWithBytes(kCFAllocatorDefault, bytes.data(), static_cast<CFIndex>(bytes.size()),
                              kCFStringEncodingMacRoman, 0));
  return quillmere::ToUtf8(string.get());
}

void WritePascal(const std::string& utf8, std::size_t room, std::span<UInt8> bytes,
                 std::size_t at) {
  const std::string text = ToMacRoman(utf8, room - 1);
  bytes[at] = static_cast<UInt8>(text.size());
  std::memcpy(bytes.data() + at + 1, text.data(), text.size());
}

void AppendItem(UInt16 tag, std::span<const UInt8> data, std::vector<UInt8>* record) {
  const std::size_t at = record->size();
  record->resize(at + 4 + data.size() + data.size() % 2);
  Write16(tag, *record, at);
  Write16(data.size(), *record, at + 2);
  std::copy(data.begin(), data.end(), record->begin() + static_cast<std::ptrdiff_t>(at) + 4);
}

void AppendText(UInt16 tag, const std::string& text, std::vector<UInt8>* record) {
  AppendItem(tag, {reinterpret_cast<const UInt8*>(text.data()), text.size()}, record);
}

/// A count of UTF-16 units and the units, big-endian.
void AppendUnicode(UInt16 tag, const std::string& utf8, std::vector<UInt8>* record) {
  const quillmere::Owned<CFStringRef> string(quillmere::CreateFromUtf8(utf8));
  const std::u16string_view units = quillmere::UnitsOf(string.get());
  std::vector<UInt8> data(2 + 2 * units.size());
  Write16(units.size(), data, 0);
  for (std::size_t i = 0; i < units.size(); ++i)
    Write16(units[i], data, 2 + 2 * i);
  AppendItem(tag, data, record);
}

std::string ReadUnicode(std::span<const UInt8> data) {
  if (data.size() < 2) return {};
  const std::size_t count = std::min<std::size_t>(Read16(data, 0), (data.size() - 2) / 2);
  std::u16string units(count, u'\0');
  for (std::size_t i = 0; i < count; ++i)
    units[i] = Read16(data, 2 + 2 * i);
  const quillmere::Owned<CFStringRef> string(CFStringCreateWithCharacters(
      kCFAllocatorDefault, units.data(), static_cast<CFIndex>(units.size())));
  return quillmere::ToUtf8(string.get());
}

/// Text up to a zero byte, if there is one.
std::string ReadText(std::span<const UInt8> data) {
  const auto end = std::find(data.begin(), data.end(), UInt8{0});
  return {data.begin(), end};
}

/// The mount point that a path lies under: the highest folder on the same device.
fs::path MountPointOf(const fs::path& path) {
  struct stat here;
  if (stat(path.c_str(), &here) != 0) return "/";
  fs::path top = path;
  while (top != top.root_path()) {
    struct stat above;
    const fs::path parent = top.parent_path();
    if (stat(parent.c_str(), &above) != 0 || above.st_dev != here.st_dev) break;
    top = parent;
  }
  return top;
}

UInt64 InodeOf(const fs::path& path) {
  struct stat found;
  return lstat(path.c_str(), &found) == 0 ? found.st_ino : 0;
}

/// The relative path of classic records: a colon-separated path, of which the last `levels_to`
/// names lead down to the target from a folder `levels_from` steps above the alias's own file.
fs::path RelativeFromClassicPath(const std::string& classic, UInt16 levels_from, UInt16 levels_to) {
  if (levels_from == kNoLevels || levels_to == kNoLevels || levels_from == 0 || levels_to == 0)
    return {};
  std::vector<std::string> names;
  std::size_t at = 0;
  while (at <= classic.size()) {
    const std::size_t colon = std::min(classic.find(':', at), classic.size());
    names.push_back(classic.substr(at, colon - at));
    at = colon + 1;
  }
  // Names of this kind use ':' between folders and may hold '/', which stands for ':' here.
  for (std::string& name : names)
    std::replace(name.begin(), name.end(), '/', ':');
  if (names.size() < levels_to || levels_from > 256) return {};
  fs::path relative;
  for (UInt16 level = 1; level < levels_from; ++level)
    relative /= "..";
  for (std::size_t i = names.size() - levels_to; i < names.size(); ++i) {
    if (names[i].empty() || names[i] == ".." || names[i] == ".") return {};
    relative /= names[i];
  }
  return relative;
}

std::vector<UInt8> MakeRecord(const fs::path& path) {
  const fs::path mount = MountPointOf(path.parent_path());
  const std::string volume = mount == mount.root_path() ? "/" : mount.filename().native();
  const std::string name = path.filename().native();
  std::vector<UInt8> record(kFixedSize);
  Write16(2, record, kVersionAt);
  std::error_code ignored;  // what can't be looked at counts as a file
  Write16(fs::is_directory(path, ignored) ? 1 : 0, record, kKindAt);
  WritePascal(volume, kVolumeNameRoom, record, kVolumeNameAt);
  Write16(0x482B, record, kVolumeSignatureAt);  // "H+"
  Write32(InodeOf(path.parent_path()), record, kParentNumberAt);
  WritePascal(name, kFileNameRoom, record, kFileNameAt);
  Write32(InodeOf(path), record, kFileNumberAt);
  Write16(kNoLevels, record, kLevelsFromAt);
  Write16(kNoLevels, record, kLevelsToAt);

  AppendText(kTagParentName, ToMacRoman(path.parent_path().filename().native(), 255), &record);
  AppendUnicode(kTagUnicodeName, name, &record);
  AppendUnicode(kTagUnicodeVolume, volume, &record);
  AppendText(kTagPosixPath, "/" + path.lexically_relative(mount).native(), &record);
  AppendText(kTagMountPoint, mount.native(), &record);
  AppendItem(kTagEnd, {}, &record);
  return record;
}

std::span<const UInt8> BytesOf(AliasHandle alias) {
  return {reinterpret_cast<const UInt8*>(*alias), static_cast<std::size_t>(GetHandleSize(alias))};
}

}  // namespace

OSErr FSNewAlias(const FSRef*, const FSRef* target, AliasHandle* alias) {
  if (!target || !alias) return static_cast<OSErr>(paramErr);
  *alias = nullptr;
  fs::path path;
  const OSStatus status = quillmere::files::PathOf(*target, &path);
  if (status) return static_cast<OSErr>(status);
  return quillmere::files::MakeAliasOfPath(path, alias);
}

OSErr FSResolveAlias(const FSRef*, AliasHandle alias, FSRef* target, Boolean* was_changed) {
  if (!alias || !target) return static_cast<OSErr>(paramErr);
  *target = {};
  if (was_changed) *was_changed = 0;
  fs::path path;
  const OSErr status = quillmere::files::PathOfAlias(alias, &path);
  if (status) return status;
  return static_cast<OSErr>(quillmere::files::ReferenceOf(path, target));
}

namespace quillmere::files {

bool ReadAlias(std::span<const UInt8> record, AliasContent* content) {
  *content = {};
  if (record.size() < kFixedSize || Read16(record, kVersionAt) != 2) return false;
  const std::size_t written_size = Read16(record, kSizeAt);
  if (written_size >= kFixedSize && written_size <= record.size())
    record = record.first(written_size);
  const std::size_t name_length = record[kFileNameAt];
  if (name_length >= kFileNameRoom) return false;
  content->file_name = FromMacRoman(record.subspan(kFileNameAt + 1, name_length));

  std::string classic_path;
  std::string posix_path;
  std::string mount_point;
  std::size_t at = kFixedSize;
  while (record.size() - at >= 4) {
    const UInt16 tag = Read16(record, at);
    const std::size_t length = Read16(record, at + 2);
    at += 4;
    if (tag == kTagEnd) break;
    if (length > record.size() - at) return false;
    const std::span<const UInt8> data = record.subspan(at, length);
    if (tag == kTagClassicPath) classic_path = FromMacRoman(data);
    if (tag == kTagUnicodeName) content->file_name = ReadUnicode(data);
    if (tag == kTagPosixPath) posix_path = ReadText(data);
    if (tag == kTagMountPoint) mount_point = ReadText(data);
    at = std::min(at + length + length % 2, record.size());
  }
  if (!posix_path.empty()) {
    const fs::path mount = mount_point.empty() ? fs::path("/") : fs::path(mount_point);
    content->absolute_path = (mount / fs::path(posix_path).relative_path()).lexically_normal();
  }
  content->relative_path = RelativeFromClassicPath(classic_path, Read16(record, kLevelsFromAt),
                                                   Read16(record, kLevelsToAt));
  return true;
}

OSErr MakeAliasOfPath(const fs::path& path, AliasHandle* alias) {
  if (!alias) return static_cast<OSErr>(paramErr);
  *alias = nullptr;
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error).lexically_normal();
  if (error || !fs::is_directory(absolute.parent_path(), error)) return fnfErr;
  std::vector<UInt8> record = MakeRecord(absolute);
  if (record.size() > std::numeric_limits<UInt16>::max()) return errFSNameTooLong;
  Write16(record.size(), record, kSizeAt);
  return PtrToHand(record.data(), alias, static_cast<Size>(record.size()));
}

OSErr PathOfAlias(AliasHandle alias, fs::path* path) {
  AliasContent content;
  if (!alias || !ReadAlias(BytesOf(alias), &content)) return static_cast<OSErr>(paramErr);
  if (content.absolute_path.empty()) return fnfErr;
  *path = content.absolute_path;
  return noErr;
}

}  // namespace quillmere::files
