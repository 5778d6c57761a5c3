#include "aliases.h"

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <system_error>
#include <vector>

#include "catalogue.h"
#include "deadline.h"
#include "file_names.h"
#include "mount_table.h"
#include "object_place.h"
#include "place_table.h"
#include "resources.h"
#include "subtree_walk.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

constexpr SInt32 kMostLinks = 32;
constexpr SInt32 kSearchTime = 5000;  // milliseconds
constexpr OSType kAliasType = "alis"_4cc;
/// The Finder flag of an alias file, in the upper byte of the flags.
constexpr std::size_t kFlagsByte = 8;
constexpr UInt8 kAliasFlag = 0x80;

std::span<const UInt8> BytesOf(AliasHandle alias) {
  if (!alias) return {};
  return {reinterpret_cast<const UInt8*>(*alias), static_cast<std::size_t>(GetHandleSize(alias))};
}

/// Where a file is that an alias is told to be relative to; empty for none.
fs::path PathFrom(const FSRef* from) {
  fs::path path;
  return from && PathOf(*from, &path) == noErr ? path : fs::path();
}

/// Whether an object is the very one that a record was made of.
bool IsTarget(const FSRef& reference, const AliasContent& content) {
  FSCatalogInfo info;
  const OSErr status = FSGetCatalogInfo(&reference, kFSCatInfoNodeID | kFSCatInfoCreateDate, &info,
                                        nullptr, nullptr, nullptr);
  return !status && static_cast<UInt32>(info.nodeID) == content.file_number &&
         info.createDate == content.file_created;
}

/// Gives the object at a path if it is the target.
bool TargetAt(const fs::path& path, const AliasContent& content, FSRef* target) {
  return ReferenceOf(path, target) == noErr && IsTarget(*target, content);
}

/// Looks where this process saw the target go.
bool FindMoved(const AliasContent& content, FSRef* target) {
  ObjectIdentity probe{};
  struct statx info;
  const fs::path folder = content.mount_point.empty() ? fs::path("/") : content.mount_point;
  if (ReadObject(AT_FDCWD, folder.c_str(), &info) != noErr) return false;
  probe = IdentityOf(info);
  // A record has the low half of an inode's number.
  for (const ObjectIdentity& object : Places().Numbered(probe.device, content.file_number)) {
    if (ReferenceOfObject(object, target) == noErr && IsTarget(*target, content)) return true;
  }
  return false;
}

/// Looks for the target in a folder.
bool FindIn(const fs::path& folder, const AliasContent& content, FSRef* target) {
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    struct statx info;
    const bool may_be = ReadObject(AT_FDCWD, at->path().c_str(), &info) == noErr &&
                        static_cast<UInt32>(info.stx_ino) == content.file_number;
    if (may_be && TargetAt(at->path(), content, target)) return true;
  }
  return false;
}

/// Looks for the target in all that a folder holds but `known`, a folder in it that was searched.
bool FindBeneath(const fs::path& folder, const fs::path& known, const AliasContent& content,
                 Deadline* deadline, FSRef* target) {
  SubtreeWalk walk;
  if (walk.Open(folder) != noErr) return false;
  while (const SubtreeWalk::Entry* entry = walk.Next()) {
    if (deadline->IsOver()) return false;
    if (entry->is_folder && walk.Path() == known) walk.SkipFolder();
    const bool may_be = static_cast<UInt32>(entry->inode) == content.file_number;
    if (may_be && TargetAt(walk.Path(), content, target)) return true;
  }
  return false;
}

/// Looks for the target on its volume, in wider and wider surroundings of where it was. A record of
/// somebody else's may name any folder as its volume; only what is mounted here is walked.
bool FindOnVolume(const AliasContent& content, FSRef* target) {
  const std::shared_ptr<const MountTable> mounts = Mounts();
  const fs::path top = content.mount_point.empty() ? fs::path("/") : content.mount_point;
  const bool is_mounted =
      mounts && std::any_of(mounts->begin(), mounts->end(),
                            [&top](const Mount& mount) { return mount.mount_point == top; });
  const fs::path& last_seen = content.absolute_path;
  const bool is_beneath =
      std::mismatch(top.begin(), top.end(), last_seen.begin(), last_seen.end()).first == top.end();
  if (!is_mounted || !is_beneath) return false;
  Deadline deadline(kSearchTime);
  fs::path known;
  for (fs::path folder = last_seen.parent_path();; folder = folder.parent_path()) {
    if (FindBeneath(folder, known, content, &deadline, target)) return true;
    if (deadline.IsOver() || folder == top || folder == folder.parent_path()) return false;
    known = folder;
  }
}

/// Finds an alias's target. `is_current` tells whether the record still says all of it.
OSErr Find(const AliasContent& content, const fs::path& from, UInt32 rules, FSRef* target,
           bool* is_current) {
  const auto relative = [&] {
    if (from.empty() || content.relative_path.empty()) return false;
    const fs::path path = (from.parent_path() / content.relative_path).lexically_normal();
    return ReferenceOf(path, target) == noErr;
  };
  *is_current = false;
  if ((rules & kARMSearchRelFirst) && relative()) return noErr;
  const fs::path& path = content.absolute_path;
  if (!path.empty() && ReferenceOf(path, target) == noErr) {
    *is_current = IsTarget(*target, content);
    return noErr;
  }
  if (content.file_number != 0 && FindMoved(content, target)) return noErr;
  if (relative()) return noErr;
  const bool can_search = content.file_number != 0 && !path.empty();
  if (can_search && FindIn(path.parent_path(), content, target)) return noErr;
  if (can_search && (rules & kARMSearch) && FindOnVolume(content, target)) return noErr;
  *target = {};
  return fnfErr;
}

OSErr MakeHandle(const fs::path& path, const fs::path& from, AliasHandle* alias) {
  const std::vector<UInt8> record = MakeAliasRecord(path, from);
  if (record.empty()) return errFSNameTooLong;
  return PtrToHand(record.data(), alias, static_cast<Size>(record.size()));
}

/// One step from an alias file or a link; `*was_alias` is false for anything else.
OSErr Follow(FSRef* reference, bool* was_alias) {
  *was_alias = false;
  ObjectPlace place;
  OSStatus status = FindObject(*reference, &place);
  if (status) return static_cast<OSErr>(status);
  if (place.IsLink()) {
    *was_alias = true;
    std::error_code error;
    const fs::path next = fs::read_symlink(place.path, error);
    if (error) return StatusOfErrno(error.value());
    const fs::path path = next.is_absolute() ? next : place.path.parent_path() / next;
    return static_cast<OSErr>(ReferenceOf(path, reference));
  }
  FSCatalogInfo info;
  status = FSGetCatalogInfo(reference, kFSCatInfoFinderInfo, &info, nullptr, nullptr, nullptr);
  const bool is_marked = !place.IsFolder() && (info.finderInfo[kFlagsByte] & kAliasFlag) != 0;
  if (status || !is_marked) return static_cast<OSErr>(status);
  const ResFileRefNum old = CurResFile();
  const ResFileRefNum file = FSOpenResFile(reference, fsRdPerm);
  if (file < 0) return ResError();
  Handle alias = Get1IndResource(kAliasType, 1);
  OSErr result = ResError();
  FSRef target;
  if (alias) {
    *was_alias = true;
    result = FSResolveAlias(reference, alias, &target, nullptr);
    if (!result) *reference = target;
  }
  CloseResFile(file);
  UseResFile(old);
  return result;
}

}  // namespace

OSErr MakeAliasOfPath(const fs::path& path, AliasHandle* alias) {
  if (!alias) return static_cast<OSErr>(paramErr);
  *alias = nullptr;
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error).lexically_normal();
  if (error || !fs::is_directory(absolute.parent_path(), error)) return fnfErr;
  return MakeHandle(absolute, {}, alias);
}

OSErr PathOfAlias(AliasHandle alias, fs::path* path) {
  AliasContent content;
  if (!ReadAlias(BytesOf(alias), &content)) return static_cast<OSErr>(paramErr);
  if (content.absolute_path.empty()) return fnfErr;
  *path = content.absolute_path;
  return noErr;
}

}  // namespace quillmere::files

using quillmere::files::AliasContent;

OSErr FSNewAlias(const FSRef* from, const FSRef* target, AliasHandle* alias) {
  if (!target || !alias) return static_cast<OSErr>(paramErr);
  *alias = nullptr;
  fs::path path;
  const OSStatus status = quillmere::files::PathOf(*target, &path);
  if (status) return static_cast<OSErr>(status);
  return quillmere::files::MakeHandle(path, quillmere::files::PathFrom(from), alias);
}

OSErr FSResolveAlias(const FSRef* from, AliasHandle alias, FSRef* target, Boolean* was_changed) {
  if (!alias || !target) return static_cast<OSErr>(paramErr);
  if (was_changed) *was_changed = 0;
  SInt16 count = 1;
  Boolean needs_update = 0;
  const OSErr status = FSMatchAliasBulk(from, kARMSearch | kARMNoUI, alias, &count, target,
                                        &needs_update, nullptr, nullptr);
  if (status) *target = {};
  if (status || !needs_update) return status;
  // The target was found, whether the record can be renewed or not.
  FSUpdateAlias(from, target, alias, was_changed);
  return noErr;
}

OSErr FSUpdateAlias(const FSRef* from, const FSRef* target, AliasHandle alias,
                    Boolean* was_changed) {
  if (was_changed) *was_changed = 0;
  if (!alias) return static_cast<OSErr>(paramErr);
  AliasHandle fresh = nullptr;
  OSErr status = FSNewAlias(from, target, &fresh);
  if (status) return status;
  const std::span<const UInt8> old = quillmere::files::BytesOf(alias);
  const std::span<const UInt8> bytes = quillmere::files::BytesOf(fresh);
  if (!std::equal(old.begin(), old.end(), bytes.begin(), bytes.end())) {
    SetHandleSize(alias, static_cast<Size>(bytes.size()));
    status = MemError();
    if (!status) std::memcpy(*alias, bytes.data(), bytes.size());
    if (!status && was_changed) *was_changed = 1;
  }
  DisposeHandle(fresh);
  return status;
}

OSErr FSMatchAliasBulk(const FSRef* from, UInt32 rules, AliasHandle alias, SInt16* count,
                       FSRef* targets, Boolean* needs_update, FSAliasFilterProcPtr filter,
                       void* data) {
  if (!count || !targets || *count < 1) return static_cast<OSErr>(paramErr);
  *count = 0;
  if (needs_update) *needs_update = 0;
  AliasContent content;
  if (!ReadAlias(quillmere::files::BytesOf(alias), &content)) return static_cast<OSErr>(paramErr);
  bool is_current = false;
  const OSErr status = quillmere::files::Find(content, quillmere::files::PathFrom(from), rules,
                                              targets, &is_current);
  if (status) return status;
  Boolean quit = 0;
  if (filter && !filter(targets, &quit, data)) return fnfErr;
  *count = 1;
  if (needs_update) *needs_update = is_current ? 0 : 1;
  return noErr;
}

Size GetAliasSize(AliasHandle alias) {
  return GetHandleSize(alias);
}

OSErr FSCopyAliasInfo(AliasHandle alias, HFSUniStr255* target_name, HFSUniStr255* volume_name,
                      CFStringRef* path, FSAliasInfoBitmap* which, FSAliasInfo* info) {
  if (path) *path = nullptr;
  AliasContent content;
  if (!ReadAlias(quillmere::files::BytesOf(alias), &content)) return static_cast<OSErr>(paramErr);
  if (target_name) quillmere::files::UnitsOfName(content.file_name, target_name);
  if (volume_name) quillmere::files::UnitsOfName(content.volume_name, volume_name);
  if (path && !content.absolute_path.empty()) {
    *path = quillmere::CreateFromUtf8(content.absolute_path.native());
  }
  if (which) {
    *which = kFSAliasInfoVolumeCreateDate | kFSAliasInfoTargetCreateDate | kFSAliasInfoFinderInfo |
             kFSAliasInfoIsDirectory | kFSAliasInfoIDs | kFSAliasInfoFSInfo;
  }
  if (info) {
    *info = {
        content.volume_created, content.file_created,  content.type,
        content.creator,        content.parent_number, content.file_number,
        content.filesystem_id,  content.signature,     static_cast<Boolean>(content.is_folder)};
  }
  return noErr;
}

OSErr FSResolveAliasFile(FSRef* reference, Boolean chains, Boolean* is_folder, Boolean* was_alias) {
  if (!reference) return static_cast<OSErr>(paramErr);
  if (is_folder) *is_folder = 0;
  if (was_alias) *was_alias = 0;
  bool follows = true;
  FSRef found = *reference;
  for (SInt32 step = 0; follows; ++step) {
    if (step > quillmere::files::kMostLinks) return fnfErr;
    const OSErr status = quillmere::files::Follow(&found, &follows);
    if (status) return status;
    if (follows && was_alias) *was_alias = 1;
    if (!chains) break;
  }
  FSCatalogInfo info{};
  const OSErr status =
      FSGetCatalogInfo(&found, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr);
  if (status) return status;
  *reference = found;
  if (is_folder) *is_folder = (info.nodeFlags & kFSNodeIsDirectoryMask) != 0;
  return noErr;
}
