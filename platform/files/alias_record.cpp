#include "alias_record.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "big_endian.h"
#include "catalogue.h"
#include "cf_strings.h"
#include "file_references.h"

namespace quillmere::files {
namespace {

namespace fs = std::filesystem;

/// The fixed part of a version 2 record, by the offsets of its fields (all big-endian).
constexpr std::size_t kSizeAt = 4;
constexpr std::size_t kVersionAt = 6;
constexpr std::size_t kKindAt = 8;
constexpr std::size_t kVolumeNameAt = 10;  // a Pascal string in 28 bytes
constexpr std::size_t kVolumeCreatedAt = 38;
constexpr std::size_t kVolumeSignatureAt = 42;
constexpr std::size_t kParentNumberAt = 46;
constexpr std::size_t kFileNameAt = 50;  // a Pascal string in 64 bytes
constexpr std::size_t kFileNumberAt = 114;
constexpr std::size_t kFileCreatedAt = 118;
constexpr std::size_t kTypeAt = 122;
constexpr std::size_t kCreatorAt = 126;
constexpr std::size_t kLevelsFromAt = 130;
constexpr std::size_t kLevelsToAt = 132;
constexpr std::size_t kFilesystemAt = 138;
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
  kTagVolumeCreated = 16,
  kTagFileCreated = 17,
  kTagPosixPath = 18,
  kTagMountPoint = 19,
  kTagEnd = 0xFFFF
};

using Bytes = std::span<const UInt8>;

UTCDateTime ReadDate(const UInt8* bytes) {
  return {ReadU16(bytes), ReadU32(bytes + 2), ReadU16(bytes + 6)};
}

/// MacRoman bytes of UTF-8 text, "?" where there are none, cut to `room`.
std::string ToMacRoman(const std::string& utf8, std::size_t room) {
  const Owned<CFStringRef> string(CreateFromUtf8(utf8));
  std::vector<UInt8> bytes(room);
  CFIndex used = 0;
  CFStringGetBytes(string.get(), {0, CFStringGetLength(string.get())}, kCFStringEncodingMacRoman,
                   '?', 0, bytes.data(), static_cast<CFIndex>(room), &used);
  return {reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(used)};
}

std::string FromMacRoman(std::span<const UInt8> bytes) {
  const Owned<CFStringRef> string(CFStringCreateWithBytes(kCFAllocatorDefault, bytes.data(),
                                                          static_cast<CFIndex>(bytes.size()),
                                                          kCFStringEncodingMacRoman, 0));
  return ToUtf8(string.get());
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
  WriteU16(record->data() + at, tag);
  WriteU16(record->data() + at + 2, static_cast<UInt16>(data.size()));
  std::copy(data.begin(), data.end(), record->begin() + static_cast<std::ptrdiff_t>(at) + 4);
}

void AppendText(UInt16 tag, const std::string& text, std::vector<UInt8>* record) {
  AppendItem(tag, {reinterpret_cast<const UInt8*>(text.data()), text.size()}, record);
}

/// A count of UTF-16 units and the units, big-endian.
void AppendUnicode(UInt16 tag, const std::string& utf8, std::vector<UInt8>* record) {
  const Owned<CFStringRef> string(CreateFromUtf8(utf8));
  const std::u16string_view units = UnitsOf(string.get());
  std::vector<UInt8> data(2 + 2 * units.size());
  WriteU16(data.data(), static_cast<UInt16>(units.size()));
  for (std::size_t i = 0; i < units.size(); ++i)
    WriteU16(data.data() + 2 + 2 * i, units[i]);
  AppendItem(tag, data, record);
}

std::string ReadUnicode(std::span<const UInt8> data) {
  if (data.size() < 2) return {};
  const std::size_t count = std::min<std::size_t>(ReadU16(data.data()), (data.size() - 2) / 2);
  std::u16string units(count, u'\0');
  for (std::size_t i = 0; i < count; ++i)
    units[i] = ReadU16(data.data() + 2 + 2 * i);
  const Owned<CFStringRef> string(CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(),
                                                               static_cast<CFIndex>(units.size())));
  return ToUtf8(string.get());
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

/// The names below the volume's root, as classic paths have them: colons between, and '/' for ':'.
std::string ClassicPath(const std::string& volume, const fs::path& mount, const fs::path& path) {
  std::string classic = volume;
  for (const fs::path& part : path.lexically_relative(mount)) {
    std::string name = part.native();
    std::replace(name.begin(), name.end(), ':', '/');
    classic += ':' + name;
  }
  return classic;
}

/// How many steps lead up from the alias's own file to the folder that holds both, and how many
/// names down from there to the target.
void WriteLevels(const fs::path& target, const fs::path& from, UInt8* record) {
  WriteU16(record + kLevelsFromAt, kNoLevels);
  WriteU16(record + kLevelsToAt, kNoLevels);
  if (from.empty()) return;
  const auto [rest, own] = std::mismatch(target.begin(), target.end(), from.begin(), from.end());
  const auto up = std::distance(own, from.end());
  const auto down = std::distance(rest, target.end());
  if (up == 0 || down == 0 || up > 256 || down > 256) return;
  WriteU16(record + kLevelsFromAt, static_cast<UInt16>(up));
  WriteU16(record + kLevelsToAt, static_cast<UInt16>(down));
}

/// What the catalogue knows of a path; all zero if there is nothing.
FSCatalogInfo CatalogueOf(const fs::path& path) {
  FSCatalogInfo info{};
  FSRef reference;
  constexpr FSCatalogInfoBitmap kWanted = kFSCatInfoNodeFlags | kFSCatInfoNodeID |
                                          kFSCatInfoVolume | kFSCatInfoCreateDate |
                                          kFSCatInfoFinderInfo;
  const bool is_there =
      ReferenceOf(path, &reference) == noErr &&
      FSGetCatalogInfo(&reference, kWanted, &info, nullptr, nullptr, nullptr) == noErr;
  return is_there ? info : FSCatalogInfo{};
}

void AppendDate(UInt16 tag, const UTCDateTime& date, std::vector<UInt8>* record) {
  UInt8 bytes[8];
  WriteU16(bytes, date.highSeconds);
  WriteU32(bytes + 2, date.lowSeconds);
  WriteU16(bytes + 6, date.fraction);
  AppendItem(tag, bytes, record);
}

void ReadFixedPart(Bytes record, AliasContent* content) {
  content->is_folder = ReadU16(record.data() + kKindAt) != 0;
  const std::size_t volume_length =
      std::min<std::size_t>(record[kVolumeNameAt], kVolumeNameRoom - 1);
  content->volume_name = FromMacRoman(record.subspan(kVolumeNameAt + 1, volume_length));
  content->volume_created.lowSeconds = ReadU32(record.data() + kVolumeCreatedAt);
  content->file_created.lowSeconds = ReadU32(record.data() + kFileCreatedAt);
  content->parent_number = ReadU32(record.data() + kParentNumberAt);
  content->file_number = ReadU32(record.data() + kFileNumberAt);
  content->type = ReadU32(record.data() + kTypeAt);
  content->creator = ReadU32(record.data() + kCreatorAt);
  content->signature = ReadU16(record.data() + kVolumeSignatureAt);
  content->filesystem_id = ReadU16(record.data() + kFilesystemAt);
}

}  // namespace

bool ReadAlias(std::span<const UInt8> record, AliasContent* content) {
  *content = {};
  if (record.size() < kFixedSize || ReadU16(record.data() + kVersionAt) != 2) return false;
  const std::size_t written_size = ReadU16(record.data() + kSizeAt);
  if (written_size >= kFixedSize && written_size <= record.size())
    record = record.first(written_size);
  const std::size_t name_length = record[kFileNameAt];
  if (name_length >= kFileNameRoom) return false;
  content->file_name = FromMacRoman(record.subspan(kFileNameAt + 1, name_length));

  ReadFixedPart(record, content);

  std::string classic_path;
  std::string posix_path;
  std::size_t at = kFixedSize;
  while (record.size() - at >= 4) {
    const UInt16 tag = ReadU16(record.data() + at);
    const std::size_t length = ReadU16(record.data() + at + 2);
    at += 4;
    if (tag == kTagEnd) break;
    if (length > record.size() - at) return false;
    const std::span<const UInt8> data = record.subspan(at, length);
    if (tag == kTagClassicPath) classic_path = FromMacRoman(data);
    if (tag == kTagUnicodeName) content->file_name = ReadUnicode(data);
    if (tag == kTagUnicodeVolume) content->volume_name = ReadUnicode(data);
    if (tag == kTagVolumeCreated && length >= 8) content->volume_created = ReadDate(data.data());
    if (tag == kTagFileCreated && length >= 8) content->file_created = ReadDate(data.data());
    if (tag == kTagPosixPath) posix_path = ReadText(data);
    if (tag == kTagMountPoint) content->mount_point = ReadText(data);
    at = std::min(at + length + length % 2, record.size());
  }
  if (!posix_path.empty()) {
    const fs::path mount = content->mount_point.empty() ? fs::path("/") : content->mount_point;
    content->absolute_path = (mount / fs::path(posix_path).relative_path()).lexically_normal();
  }
  content->relative_path = RelativeFromClassicPath(
      classic_path, ReadU16(record.data() + kLevelsFromAt), ReadU16(record.data() + kLevelsToAt));
  return true;
}

std::vector<UInt8> MakeAliasRecord(const fs::path& path, const fs::path& from) {
  const fs::path folder = path.parent_path();
  const fs::path mount = MountPointOf(folder);
  const std::string volume = mount == mount.root_path() ? "/" : mount.filename().native();
  const std::string name = path.filename().native();
  const FSCatalogInfo parent = CatalogueOf(folder);
  const FSCatalogInfo target = CatalogueOf(path);
  FSVolumeInfo on{};
  // The folder that holds the root of a volume lies on another one.
  FSGetVolumeInfo(target.volume != 0 ? target.volume : parent.volume, 0, nullptr,
                  kFSVolInfoCreateDate | kFSVolInfoFSInfo, &on, nullptr, nullptr);
  const bool is_folder = (target.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  std::vector<UInt8> record(kFixedSize);
  UInt8* fixed = record.data();
  WriteU16(fixed + kVersionAt, 2);
  WriteU16(fixed + kKindAt, is_folder ? 1 : 0);
  WritePascal(volume, kVolumeNameRoom, record, kVolumeNameAt);
  WriteU32(fixed + kVolumeCreatedAt, on.createDate.lowSeconds);
  WriteU16(fixed + kVolumeSignatureAt, kVolumeSignature);
  WriteU32(fixed + kParentNumberAt, static_cast<UInt32>(parent.nodeID));
  WritePascal(name, kFileNameRoom, record, kFileNameAt);
  WriteU32(fixed + kFileNumberAt, static_cast<UInt32>(target.nodeID));
  WriteU32(fixed + kFileCreatedAt, target.createDate.lowSeconds);
  if (!is_folder) std::copy_n(target.finderInfo, 8, fixed + kTypeAt);
  WriteLevels(path, from, fixed);
  WriteU16(fixed + kFilesystemAt, on.filesystemID);

  AppendText(kTagParentName, ToMacRoman(folder.filename().native(), 255), &record);
  AppendText(kTagClassicPath, ToMacRoman(ClassicPath(volume, mount, path), 0x4000), &record);
  AppendUnicode(kTagUnicodeName, name, &record);
  AppendUnicode(kTagUnicodeVolume, volume, &record);
  AppendDate(kTagVolumeCreated, on.createDate, &record);
  AppendDate(kTagFileCreated, target.createDate, &record);
  AppendText(kTagPosixPath, "/" + path.lexically_relative(mount).native(), &record);
  AppendText(kTagMountPoint, mount.native(), &record);
  AppendItem(kTagEnd, {}, &record);
  if (record.size() > std::numeric_limits<UInt16>::max()) return {};
  WriteU16(record.data() + kSizeAt, static_cast<UInt16>(record.size()));
  return record;
}

}  // namespace quillmere::files
