/// Numbers of files on their volume, and the default folder of the process.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "volumes.h"

/// The file has a number already; the two calls of older and newer servers say so differently.
inline constexpr OSErr fidExists = -1301;
inline constexpr OSErr afpIDExists = -5035;

/// The number of a file, the same as `nodeID` of its catalogue information. notAFileErr for a
/// folder.
OSErr PBCreateFileIDRefSync(const FSRef* file, UInt64* file_id);
/// The file of a number, if this process has seen it; fidNotFound otherwise, notAFileErr for a
/// folder's number, nsvErr for no volume.
OSErr PBResolveFileIDRefSync(FSVolumeRefNum volume, UInt64 file_id, FSRef* file);

/// The default folder: at first the working directory of the process. Any thread may call.
OSErr HGetVol(FSRef* folder);
/// Makes a folder the default one; dirNFErr if it is none.
OSErr HSetVol(const FSRef* folder);
