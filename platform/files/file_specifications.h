/// Classic specifications of files: a volume, a folder's number on it, and a name of up to 63
/// MacRoman characters.
///
/// A name that is longer or has other characters is cut and gets "#" with the object's number in
/// hexadecimal in front of its extension, so that it goes on naming one object.
#pragma once

#include "base_types.h"
#include "catalogue.h"
#include "file_references.h"

/// `name` is a Pascal string.
struct FSSpec {
  FSVolumeRefNum vRefNum;
  UInt64 parID;  ///< number of the folder; 1 for the root of a volume
  UInt8 name[64];
};

/// The reference of what is called `name` (a Pascal string) in the folder of number `directory` of
/// a volume; a null or empty name, or `directory` 1, means the folder itself or the volume's root.
/// Folders are found that this process has seen or that lie on the way; fnfErr for others and if
/// there is no such object, nsvErr for no volume.
OSErr PBMakeFSRefSync(FSVolumeRefNum volume, UInt64 directory, const UInt8* name, FSRef* reference);
OSErr FSpMakeFSRef(const FSSpec* spec, FSRef* reference);

namespace quillmere::files {

struct ObjectView;
OSStatus MakeSpecification(const ObjectView& object, FSSpec* spec);
/// The object of a number on a volume, if this process has seen it; fidNotFound otherwise.
OSStatus ObjectOfNumber(FSVolumeRefNum volume, UInt64 number, FSRef* reference);

}  // namespace quillmere::files
