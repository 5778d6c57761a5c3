/// Resources: numbered blocks of bytes of a type, kept in the resource fork of a file.
///
/// An open resource file is named by the number of its fork. Each thread has a current resource
/// file, its own setting whether resources are loaded, and the status of its last call (ResError).
/// One thread at a time works on a file.
///
/// A resource's handle belongs to its file until it is detached; it has kHandleResourceMask set. A
/// file that is closed takes its handles with it. What was added or removed is on the disk after
/// UpdateResFile or CloseResFile, in one step that leaves the old resources on a failure.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "creation.h"
#include "forks.h"
#include "memory_handles.h"

using ResFileRefNum = FSIORefNum;
using ResType = OSType;

/// Statuses of resources.
inline constexpr OSErr resNotFound = -192;
inline constexpr OSErr resFNotFound = -193;
inline constexpr OSErr addResFailed = -194;
inline constexpr OSErr rmvResFailed = -196;
inline constexpr OSErr mapReadErr = -199;

/// The status of the thread's last call on resources.
OSErr ResError();
/// Whether resources that are asked for are loaded; else their handles are empty until they are.
void SetResLoad(Boolean load);

/// Makes a file in the way of FSCreateFileUnicode, with a resource fork that holds no resources.
void FSCreateResFile(const FSRef* parent, UInt32 length, const UniChar* name,
                     FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                     FSSpec* spec);
/// Opens a file's resources and makes them the current ones. -1 on a failure: eofErr for a file
/// with an empty resource fork, mapReadErr for a damaged one, else what opening the fork gives.
ResFileRefNum FSOpenResFile(const FSRef* reference, SInt8 permission);
/// Updates and closes a file; the current file is none if it was this one.
void CloseResFile(ResFileRefNum file);
/// Writes what was changed. addResFailed if it is more than a resource fork can hold.
void UpdateResFile(ResFileRefNum file);
/// The current resource file, 0 for none; resFNotFound for a number that is not open.
ResFileRefNum CurResFile();
void UseResFile(ResFileRefNum file);

/// All further calls work on the current file. A resource that is not there gives null and
/// resNotFound; an index, from 1, counts through a type.
Handle Get1Resource(ResType type, SInt16 id);
Handle Get1IndResource(ResType type, SInt16 index);
SInt16 Count1Resources(ResType type);
SInt16 Count1Types();
/// A number from 128 on that no resource of the type has.
SInt16 UniqueID(ResType type);

/// The ID, type and name (a Pascal string in 256 bytes) of a resource; each may be null.
void GetResInfo(Handle resource, SInt16* id, ResType* type, UInt8* name);
/// Makes a handle a resource of the current file; its bytes are taken when the file is updated.
/// `name` is a Pascal string, null or empty for none. addResFailed for a handle that is a resource
/// already, for null, and for a file that is open for reading.
void AddResource(Handle handle, ResType type, SInt16 id, const UInt8* name);
/// Takes a resource out of its file; the handle becomes the caller's. rmvResFailed if it is not one
/// of the current file or that is open for reading.
void RemoveResource(Handle resource);
/// Makes a resource's handle the caller's; the resource stays in its file.
void DetachResource(Handle resource);
/// Frees the handle of a resource that stays in its file; null is allowed, and no other handle is
/// touched: resNotFound.
void ReleaseResource(Handle resource);

namespace quillmere::files {

/// Whether the handle of a resource has been given out with its bytes, which may be none, or came
/// from its adder.
bool IsResourceLoaded(Handle resource);

}  // namespace quillmere::files
