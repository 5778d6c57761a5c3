#include "file_specifications.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include "catalogue_changes.h"
#include "file_names.h"
#include "folder_names.h"
#include "mount_table.h"

namespace quillmere::files {
namespace {

constexpr std::size_t kLongestName = 63;
constexpr std::size_t kLongestExtension = 8;

/// A name in MacRoman; false if it has other characters.
bool ToMacRoman(std::string_view name, std::string* text, UInt8 loss_byte) {
  HFSUniStr255 units;
  UnitsOfName(name, &units);
  const Owned<CFStringRef> string(FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &units));
  UInt8 bytes[2 * 255];
  CFIndex used = 0;
  const CFIndex converted =
      CFStringGetBytes(string.get(), {0, units.length}, kCFStringEncodingMacRoman, loss_byte, 0,
                       bytes, sizeof(bytes), &used);
  text->assign(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(used));
  return converted == units.length;
}

std::string InHexadecimal(UInt64 number) {
  char text[17];
  std::snprintf(text, sizeof(text), "%llX", static_cast<unsigned long long>(number));
  return text;
}

/// The name of a specification, in MacRoman.
std::string ClassicName(std::string_view name, UInt64 inode) {
  std::string text;
  if (ToMacRoman(name, &text, 0) && text.size() <= kLongestName) return text;
  ToMacRoman(name, &text, '?');
  const std::size_t stop = text.rfind('.');
  const bool has_extension =
      stop != std::string::npos && stop > 0 && text.size() - stop <= kLongestExtension;
  const std::string extension = has_extension ? text.substr(stop) : std::string();
  const std::string number = "#" + InHexadecimal(inode);
  text.resize(
      std::min(text.size() - extension.size(), kLongestName - number.size() - extension.size()));
  return text + number + extension;
}

/// The object of a folder whose specification has this name.
OSStatus FindClassicName(const std::filesystem::path& folder_path, const std::string& name,
                         FSRef* reference) {
  FSRef folder_reference;
  Descriptor folder;
  std::filesystem::path path;
  OSStatus status = ReferenceOf(folder_path, &folder_reference);
  if (!status) status = OpenFolder(folder_reference, &folder, &path);
  FolderNames names;
  if (!status) status = names.Read(folder.get());
  if (status) return status;
  for (std::size_t i = 0; i < names.size(); ++i) {
    struct statx info;
    if (ReadObject(folder.get(), names[i].data(), &info) != noErr) continue;
    if (ClassicName(names[i], info.stx_ino) == name) {
      return ReferenceOf(path / names[i], reference);
    }
  }
  return fnfErr;
}

}  // namespace

OSStatus MakeSpecification(const ObjectView& object, FSSpec* spec) {
  FSCatalogInfo info{};
  const OSStatus status = ReadCatalogue(object, kFSCatInfoVolume | kFSCatInfoParentDirID, &info);
  if (status) return status;
  HFSUniStr255 volume_name;
  std::string name;
  if (object.IsRoot()) {
    const OSErr volume_status =
        FSGetVolumeInfo(info.volume, 0, nullptr, kFSVolInfoNone, nullptr, &volume_name, nullptr);
    if (volume_status) return volume_status;
    const Owned<CFStringRef> string(FSCreateStringFromHFSUniStr(nullptr, &volume_name));
    name = ClassicName(ToUtf8(string.get()), object.info.stx_ino);
  } else {
    name = ClassicName(object.name, object.info.stx_ino);
  }
  // So that the folder is found again by its number.
  FSRef folder;
  const OSStatus seen = ReferenceOf(object.folder_path, &folder);
  if (seen) return seen;
  *spec = {info.volume, info.parentDirID, {}};
  spec->name[0] = static_cast<UInt8>(name.size());
  std::memcpy(spec->name + 1, name.data(), name.size());
  return noErr;
}

OSStatus ObjectOfNumber(FSVolumeRefNum volume, UInt64 number, FSRef* reference) {
  std::filesystem::path root;
  OSStatus status = MountPointOfVolume(volume, &root);
  if (status) return status;
  if (number == NodeIdOf(number, true)) return ReferenceOf(root, reference);
  struct statx info;
  status = ReadObject(AT_FDCWD, root.c_str(), &info);
  if (status) return status;
  const UInt64 device = makedev(info.stx_dev_major, info.stx_dev_minor);
  constexpr UInt64 kMark = UInt64{1} << 63;
  const UInt64 inode = number == NodeIdOf(number & ~kMark, false) ? number & ~kMark : number;
  for (const ObjectIdentity& identity : Places().Numbered(device, inode)) {
    if (ReferenceOfObject(identity, reference) == noErr) return noErr;
  }
  return fidNotFound;
}

}  // namespace quillmere::files

OSErr PBMakeFSRefSync(FSVolumeRefNum volume, UInt64 directory, const UInt8* name,
                      FSRef* reference) {
  namespace files = quillmere::files;
  if (!reference || (name && name[0] > files::kLongestName)) return static_cast<OSErr>(paramErr);
  *reference = {};
  constexpr UInt64 kAboveRoot = 1;
  constexpr UInt64 kRoot = 2;
  const bool is_root = directory == kAboveRoot;
  FSRef folder;
  OSStatus status = files::ObjectOfNumber(volume, is_root ? kRoot : directory, &folder);
  if (status == fidNotFound) status = fnfErr;
  if (status) return static_cast<OSErr>(status);
  if (is_root || !name || name[0] == 0) {
    *reference = folder;
    return noErr;
  }
  std::filesystem::path path;
  status = files::PathOf(folder, &path);
  if (status) return static_cast<OSErr>(status);
  const std::string text(reinterpret_cast<const char*>(name + 1), name[0]);
  const quillmere::Owned<CFStringRef> string(CFStringCreateWithBytes(
      kCFAllocatorDefault, name + 1, name[0], kCFStringEncodingMacRoman, 0));
  const std::u16string_view units = quillmere::UnitsOf(string.get());
  status =
      FSMakeFSRefUnicode(&folder, static_cast<UInt32>(units.size()), units.data(), 0, reference);
  if (status == fnfErr) status = files::FindClassicName(path, text, reference);
  return static_cast<OSErr>(status);
}

OSErr FSpMakeFSRef(const FSSpec* spec, FSRef* reference) {
  if (!spec) return static_cast<OSErr>(paramErr);
  return PBMakeFSRefSync(spec->vRefNum, spec->parID, spec->name, reference);
}
