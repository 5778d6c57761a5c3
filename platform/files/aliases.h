/// Aliases: handles that remember a file or folder and find it again (their records:
/// alias_record.h).
///
/// A target is found where it was; else, if its record fits the same object elsewhere, where this
/// process saw it go, by the way from the file that holds the alias, in its old folder under
/// another name, or, asked with kARMSearch, anywhere on its volume. What has the target's old place
/// counts as the target, as a new version of a file does. The search of a volume goes outwards from
/// the old folder and ends after five seconds; a volume that is not mounted here is not searched.
#pragma once

#include <filesystem>

#include "alias_record.h"
#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"
#include "memory_handles.h"

/// A handle whose block is an alias record.
using AliasHandle = Handle;

/// How FSMatchAliasBulk looks: mount volumes (none is), ask nobody, on several volumes (all are
/// there already), through the whole volume, by the relative path first.
inline constexpr UInt32 kARMMountVol = 0x0001;
inline constexpr UInt32 kARMNoUI = 0x0002;
inline constexpr UInt32 kARMMultVols = 0x0008;
inline constexpr UInt32 kARMSearch = 0x0100;
inline constexpr UInt32 kARMSearchRelFirst = 0x0400;

/// Makes an alias of `target`, with the way to it from the file `from` when that is not null. The
/// caller owns the handle and gives it back with DisposeHandle. fnfErr when the target is not
/// valid.
OSErr FSNewAlias(const FSRef* from, const FSRef* target, AliasHandle* alias);
/// Finds the alias's target, by all ways; fnfErr if it is gone, paramErr for a damaged record.
/// `was_changed` (may be null) becomes 1 when the record was brought up to date.
OSErr FSResolveAlias(const FSRef* from, AliasHandle alias, FSRef* target, Boolean* was_changed);
/// Makes the record one of `target`; `was_changed` (may be null) tells whether it is another then.
OSErr FSUpdateAlias(const FSRef* from, const FSRef* target, AliasHandle alias,
                    Boolean* was_changed);

/// Called for a target found: 1 if it is wanted. `quit` may be set to end the search.
using FSAliasFilterProcPtr = Boolean (*)(const FSRef* target, Boolean* quit, void* data);
/// Finds what fits an alias, `*count` objects at most; there is one at most. `*needs_update` tells
/// that the record is out of date; it is not changed. `filter` (may be null) tells by 1 that what
/// was found is wanted. fnfErr if there is nothing, with a count of 0.
OSErr FSMatchAliasBulk(const FSRef* from, UInt32 rules, AliasHandle alias, SInt16* count,
                       FSRef* targets, Boolean* needs_update, FSAliasFilterProcPtr filter,
                       void* data);
/// Size of an alias's record in bytes.
Size GetAliasSize(AliasHandle alias);

/// Which fields of FSAliasInfo a record tells.
using FSAliasInfoBitmap = UInt32;
inline constexpr FSAliasInfoBitmap kFSAliasInfoVolumeCreateDate = 0x0001;
inline constexpr FSAliasInfoBitmap kFSAliasInfoTargetCreateDate = 0x0002;
inline constexpr FSAliasInfoBitmap kFSAliasInfoFinderInfo = 0x0004;
inline constexpr FSAliasInfoBitmap kFSAliasInfoIsDirectory = 0x0008;
inline constexpr FSAliasInfoBitmap kFSAliasInfoIDs = 0x0010;
inline constexpr FSAliasInfoBitmap kFSAliasInfoFSInfo = 0x0020;
/// What an alias's record says of its target.
struct FSAliasInfo {
  UTCDateTime volumeCreateDate;
  UTCDateTime targetCreateDate;
  OSType fileType;
  OSType fileCreator;
  UInt32 parentDirID;  ///< low 32 bits of the catalogue's number
  UInt32 nodeID;
  UInt16 filesystemID;
  UInt16 signature;
  Boolean isDirectory;
};
/// Tells what an alias's record says, without a look at the disk; each output may be null. The
/// caller owns `*path`, the target's POSIX path, which is null if the record has none. paramErr for
/// a damaged record.
OSErr FSCopyAliasInfo(AliasHandle alias, HFSUniStr255* target_name, HFSUniStr255* volume_name,
                      CFStringRef* path, FSAliasInfoBitmap* which, FSAliasInfo* info);

/// If `*reference` is an alias file (a link, or a file with Finder flag 0x8000 and an alias as its
/// resource `alis`), makes it what that leads to, with `chains` to the end of up to 32 aliases.
/// `is_folder` and `was_alias` may be null.
OSErr FSResolveAliasFile(FSRef* reference, Boolean chains, Boolean* is_folder, Boolean* was_alias);

namespace quillmere::files {

/// Makes an alias of a file that need not exist; its folder has to. The caller owns the handle.
OSErr MakeAliasOfPath(const std::filesystem::path& path, AliasHandle* alias);
/// The path that an alias leads to, whether there is something or not; fnfErr if the record tells
/// none.
OSErr PathOfAlias(AliasHandle alias, std::filesystem::path* path);

}  // namespace quillmere::files
