/// Sample descriptions between handles (native byte order) and `stsd` entries (big-endian).
#pragma once

#include <span>
#include <vector>

#include "atom.h"
#include "image_file_info.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

inline constexpr std::size_t kImageDescriptionSize = 86;

/// The image description of an image file, native byte order. badImageDescription when the picture
/// is larger than the record can say (65,535 pixels a side, 4 GiB).
OSStatus MakeImageDescription(const imaging::ImageFileInfo& info, std::vector<UInt8>* record);
/// The `stsd` entry of a description for media of a type. Byte order is known for `vide` and
/// `soun`; of other types the first 16 bytes change, the rest stays. badImageDescription when the
/// handle is shorter than its fields or its size field is not its size.
OSStatus MakeDescriptionAtom(std::span<const UInt8> record, OSType media_type, Atom* entry);

/// The other way: the native record of an `stsd` entry. badImageDescription when it is shorter than
/// its fields.
OSStatus MakeDescriptionRecord(const Atom& entry, OSType media_type, std::vector<UInt8>* record);

/// Width and height in pixels of an `stsd` entry of video; false if it is too short.
bool EncodedSizeOf(const Atom& entry, UInt32* width, UInt32* height);
/// The content of an extension atom of a video `stsd` entry; empty if it is not there.
std::span<const UInt8> FindExtension(const Atom& entry, OSType type);

}  // namespace quillmere::movies
