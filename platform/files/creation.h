/// Making and deleting files and folders.
///
/// Names are UTF-16 units. bdNamErr for a name that no object can have: with a slash or a zero, "."
/// or ".."; errFSMissingName for an empty one, errFSNameTooLong for more than 255 units or more
/// bytes than the volume takes.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "file_references.h"

/// Makes an empty file called `name` (`length` UTF-16 units) in the folder `parent`. `mask` names
/// what of `info` the file gets, as for FSSetCatalogInfo; `reference` (may be null) takes the new
/// file, `spec` (may be null) its specification. dupFNErr if the name is taken. A file whose
/// information could not be stored is removed again; on a volume that keeps no Finder information
/// it is made without.
OSErr FSCreateFileUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                          FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                          FSSpec* spec);
/// Makes a folder in the same way; `directory_id` (may be null) takes the low 32 bits of its number
/// on the volume.
OSErr FSCreateDirectoryUnicode(const FSRef* parent, UInt32 length, const UniChar* name,
                               FSCatalogInfoBitmap mask, const FSCatalogInfo* info,
                               FSRef* reference, FSSpec* spec, UInt32* directory_id);

/// Deletes a file with its sidecar, a link itself, or an empty folder. fBsyErr for a folder that
/// holds something, for the root of a volume, and for a busy file: one on whose bytes somebody
/// holds a lock, as whoever has a fork of it open for writing; fLckdErr for a locked object.
OSErr FSDeleteObject(const FSRef* reference);
/// The same, also for a busy file: its bytes stay until it is closed.
OSErr FSUnlinkObject(const FSRef* reference);
