#include "launch_services.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "catalogue_changes.h"
#include "finder_information.h"
#include "object_place.h"

namespace {

/// Position behind the full stop that begins the extension; npos for none.
template <class Char>
std::size_t ExtensionStart(std::basic_string_view<Char> name) {
  const std::size_t stop = name.rfind(Char{'.'});
  const bool none = stop == name.npos || stop == 0 || stop + 1 == name.size();
  return none ? name.npos : stop + 1;
}

/// Where type, creator and flags stand in the Finder information, and flags of it.
constexpr std::size_t kCreatorAt = 4;
constexpr std::size_t kFlagsAt = 8;
constexpr UInt16 kHasBundle = 0x2000;
constexpr UInt16 kInvisible = 0x4000;
constexpr UInt16 kHidesExtension = 0x0010;
constexpr UInt16 kAlias = 0x8000;

constexpr std::string_view kApplication = "app";
constexpr std::string_view kPackages[] = {kApplication,  "bundle", "component", "kext",
                                          "mpkg",        "pkg",    "plugin",    "prefPane",
                                          "qlgenerator", "rtfd",   "service",   "wdgt"};

UInt32 BigEndian(const UInt8* bytes, std::size_t count) {
  UInt32 value = 0;
  for (std::size_t i = 0; i < count; ++i)
    value = (value << 8) | bytes[i];
  return value;
}

std::string ExtensionOf(const std::string& name) {
  const std::size_t start = ExtensionStart(std::string_view(name));
  return start == std::string::npos ? std::string() : name.substr(start);
}

bool IsPackage(UInt16 finder_flags, std::string_view extension) {
  return (finder_flags & kHasBundle) ||
         std::find(std::begin(kPackages), std::end(kPackages), extension) != std::end(kPackages);
}

/// The flags of an object; `finder` are its Finder information's.
UInt32 FlagsOf(const quillmere::files::ObjectPlace& place, UInt16 finder,
               std::string_view extension) {
  if (place.IsLink()) return kLSItemInfoIsSymlink | kLSItemInfoIsAliasFile;
  UInt32 flags = 0;
  if (place.IsFolder()) {
    flags = kLSItemInfoIsContainer;
    if (IsPackage(finder, extension)) flags |= kLSItemInfoIsPackage;
    if (extension == kApplication) flags |= kLSItemInfoIsApplication;
  } else if (S_ISREG(place.info.stx_mode)) {
    flags = kLSItemInfoIsPlainFile;
    if (place.info.stx_mode & S_IXUSR) flags |= kLSItemInfoIsApplication;
    if (finder & kAlias) flags |= kLSItemInfoIsAliasFile;
  }
  const bool has_hidden_name = place.name.size() > 1 && place.name.front() == '.';
  if ((finder & kInvisible) || has_hidden_name) flags |= kLSItemInfoIsInvisible;
  if (finder & kHidesExtension) flags |= kLSItemInfoExtensionIsHidden;
  return flags;
}

constexpr UInt32 kBasicFlags = kLSItemInfoIsPlainFile | kLSItemInfoIsPackage |
                               kLSItemInfoIsApplication | kLSItemInfoIsContainer;

OSStatus CopyItemInfo(const FSRef& reference, UInt32 request, LSItemInfoRecord* info) {
  quillmere::files::ObjectPlace place;
  const OSStatus status = quillmere::files::FindObject(reference, &place);
  if (status) return status;
  quillmere::files::FinderInformation finder;
  quillmere::files::ReadFinderInformation(
      quillmere::files::AttributePath(place.folder.get(), place.name), &finder);
  const std::string extension = ExtensionOf(place.name);
  if (request & (kLSRequestBasicFlagsOnly | kLSRequestAllFlags)) {
    const auto finder_flags = static_cast<UInt16>(BigEndian(finder.bytes + kFlagsAt, 2));
    info->flags = FlagsOf(place, finder_flags, extension);
    if (!(request & kLSRequestAllFlags)) info->flags &= kBasicFlags;
  }
  if ((request & kLSRequestTypeCreator) && !place.IsFolder()) {
    info->filetype = BigEndian(finder.bytes, sizeof(OSType));
    info->creator = BigEndian(finder.bytes + kCreatorAt, sizeof(OSType));
  }
  if ((request & kLSRequestExtension) && !extension.empty()) {
    info->extension = quillmere::CreateFromUtf8(extension);
  }
  return noErr;
}

}  // namespace

const CFStringRef kLSItemExtension = CFSTR("LSItemExtension");

OSStatus LSCopyItemAttribute(const FSRef* reference, SInt32, CFStringRef name, CFTypeRef* value) {
  if (reference == nullptr || name == nullptr || value == nullptr) return paramErr;
  *value = nullptr;
  if (CFStringCompare(name, kLSItemExtension, 0) != kCFCompareEqualTo) {
    return kLSAttributeNotFoundErr;
  }
  std::filesystem::path path;
  const OSStatus status = quillmere::files::PathOf(*reference, &path);
  if (status) return status;
  const std::string extension = ExtensionOf(path.filename().native());
  if (extension.empty()) return kLSAttributeNotFoundErr;
  *value = quillmere::CreateFromUtf8(extension);
  return noErr;
}

OSStatus LSCopyItemInfoForRef(const FSRef* reference, UInt32 request, LSItemInfoRecord* info) {
  if (reference == nullptr || info == nullptr) return paramErr;
  *info = {};
  return CopyItemInfo(*reference, request, info);
}

OSStatus LSCopyItemInfoForURL(CFURLRef url, UInt32 request, LSItemInfoRecord* info) {
  if (url == nullptr || info == nullptr) return paramErr;
  *info = {};
  FSRef reference{};
  return CFURLGetFSRef(url, &reference) ? CopyItemInfo(reference, request, info) : OSStatus{fnfErr};
}

OSStatus LSCopyDisplayNameForRef(const FSRef* reference, CFStringRef* name) {
  if (reference == nullptr || name == nullptr) return paramErr;
  *name = nullptr;
  LSItemInfoRecord info;
  std::filesystem::path path;
  OSStatus status = LSCopyItemInfoForRef(reference, kLSRequestAllFlags, &info);
  if (!status) status = quillmere::files::PathOf(*reference, &path);
  if (status) return status;
  std::string shown = path.filename().native();
  const std::size_t start = ExtensionStart(std::string_view(shown));
  if ((info.flags & kLSItemInfoExtensionIsHidden) && start != std::string::npos) {
    shown.resize(start - 1);
  }
  *name = quillmere::CreateFromUtf8(shown);
  return noErr;
}

OSStatus LSGetExtensionInfo(UniCharCount length, const UniChar* name, UniCharCount* start) {
  if (start == nullptr) return paramErr;
  *start = kLSInvalidExtensionIndex;
  if (name == nullptr && length > 0) return paramErr;
  if (length == 0) return noErr;
  const std::size_t found =
      ExtensionStart(std::u16string_view(name, static_cast<std::size_t>(length)));
  if (found != std::u16string_view::npos) *start = found;
  return noErr;
}
