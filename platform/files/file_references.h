/// File references: 80 opaque bytes that name one existing file or folder.
///
/// Device, inode and birth time decide which object is meant; a process-wide table remembers where
/// it was last seen. A reference follows renames and moves made through this layer, stops being
/// valid when its object has gone, and never means another object that took its name. All zero
/// means none. References may be copied freely. All calls may be made from any thread.
#pragma once

#include <filesystem>

#include "base_types.h"
#include "cf_strings.h"
#include "cf_urls.h"

struct FSRef {
  UInt8 hidden[80];
};
static_assert(sizeof(FSRef) == 80);

/// A file name: a count and up to 255 UTF-16 units in native byte order.
struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
};
static_assert(sizeof(HFSUniStr255) == 512);

/// Statuses of the files family.
inline constexpr OSErr dirFulErr = -33;
inline constexpr OSErr dskFulErr = -34;
inline constexpr OSErr nsvErr = -35;
inline constexpr OSErr ioErr = -36;
inline constexpr OSErr bdNamErr = -37;
inline constexpr OSErr eofErr = -39;
inline constexpr OSErr posErr = -40;
inline constexpr OSErr tmfoErr = -42;
inline constexpr OSErr fnfErr = -43;
inline constexpr OSErr wPrErr = -44;
inline constexpr OSErr fLckdErr = -45;
inline constexpr OSErr vLckdErr = -46;
inline constexpr OSErr fBsyErr = -47;
inline constexpr OSErr dupFNErr = -48;
inline constexpr OSErr opWrErr = -49;
inline constexpr OSErr permErr = -54;
inline constexpr OSErr dirNFErr = -120;
inline constexpr OSErr badMovErr = -122;
inline constexpr OSErr fidNotFound = -1300;
inline constexpr OSErr notAFileErr = -1302;
inline constexpr OSErr diffVolErr = -1303;
inline constexpr OSErr afpAccessDenied = -5000;
inline constexpr OSErr errFSMissingName = -1411;
inline constexpr OSErr errFSNameTooLong = -1410;
inline constexpr OSErr errFSBadFSRef = -1401;
inline constexpr OSErr errFSNoMoreItems = -1417;

/// Compares what two references name: 0 for the same object, -1 for different ones, else a status.
OSErr FSCompareFSRefs(const FSRef* a, const FSRef* b);
/// The reference of the object called `name` (`length` UTF-16 units) in the folder `parent`;
/// fnfErr if there is none. `encoding` is a hint and not used.
OSErr FSMakeFSRefUnicode(const FSRef* parent, UInt32 length, const UniChar* name, UInt32 encoding,
                         FSRef* reference);
/// The reference of a POSIX path in UTF-8; `is_directory` may be null.
OSStatus FSPathMakeRef(const UInt8* path, FSRef* reference, Boolean* is_directory);
/// The object's path in UTF-8 with a zero byte, in a buffer of `capacity` bytes; errFSNameTooLong
/// if it does not fit.
OSStatus FSRefMakePath(const FSRef* reference, UInt8* path, UInt32 capacity);

/// A name record of a string; errFSNameTooLong above 255 units.
OSStatus FSGetHFSUniStrFromString(CFStringRef string, HFSUniStr255* name);
/// A new string of a name record; the caller owns it.
CFStringRef FSCreateStringFromHFSUniStr(CFAllocatorRef allocator, const HFSUniStr255* name);

/// A file URL of the object; null if the reference is not valid.
CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference);
/// The reference of the object that a file URL names; false if there is none.
Boolean CFURLGetFSRef(CFURLRef url, FSRef* reference);

namespace quillmere::files {

/// Where the object is now; fnfErr when it has gone or another object has taken its place.
OSStatus PathOf(const FSRef& reference, std::filesystem::path* path);
/// The reference of an existing object.
OSStatus ReferenceOf(const std::filesystem::path& path, FSRef* reference);
/// The status of the files family for an errno value.
OSErr StatusOfErrno(int error_number);
/// Tells the table that an object was renamed or moved by this layer.
void NoteMoved(const FSRef& reference, const std::filesystem::path& new_path);

}  // namespace quillmere::files
