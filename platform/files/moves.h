/// Renaming, moving and exchanging files and folders, each with its sidecar.
///
/// References to the objects, and to what lies in a folder, stay valid. A call that fails leaves
/// everything as it was. Nothing is replaced: dupFNErr if a name is taken; fLckdErr for a locked
/// object; diffVolErr when two volumes are concerned; dirNFErr if the destination is not a folder.
#pragma once

#include <string_view>

#include "base_types.h"
#include "file_references.h"

/// Gives an object a new name in its folder. `encoding` is kept as the hint of the name's encoding
/// unless it is 65535 (unknown). `new_reference` (may be null, may be `reference`) takes the
/// object.
OSErr FSRenameUnicode(const FSRef* reference, UInt32 length, const UniChar* name, UInt32 encoding,
                      FSRef* new_reference);
/// Moves an object into another folder. badMovErr for a folder that would come to lie in itself.
OSErr FSMoveObject(const FSRef* reference, const FSRef* destination, FSRef* new_reference);
/// Exchanges the content of two files, both forks with the dates of the content, in one step that
/// no other process sees halfway. Names, folders and all other information stay, and each
/// reference goes on meaning the file of its name. notAFileErr for a folder. A volume that can do
/// this says so by kSupportsExchangeFiles (volumes.h), others give paramErr.
OSErr FSExchangeObjects(const FSRef* source, const FSRef* destination);

/// Moves and renames in one step; the name may be of length 0 to stay.
OSErr PBHMoveRenameSync(const FSRef* reference, const FSRef* destination, UInt32 length,
                        const UniChar* name, UInt32 encoding, FSRef* new_reference);

namespace quillmere::files {

/// Whether volumes of a format exchange files by themselves.
bool FormatExchangesFiles(std::string_view format);
/// Keeps the hint of a name's encoding unless it is 65535 (unknown). It is a hint: an object that
/// can't keep it goes without.
void KeepEncoding(const FSRef& reference, UInt32 encoding);

}  // namespace quillmere::files
