/// Stills as movies.
#pragma once

#include <memory>

#include "atom.h"
#include "image_file_info.h"

namespace quillmere::movies {

/// A still lasts one second, at this many units a second.
inline constexpr UInt32 kStillTimeScale = 600;
inline constexpr UInt32 kStillDuration = 600;

/// The `moov` of a one-frame movie whose one sample is the compressed image in the image's own
/// file. The track's matrix turns the picture upright and puts it at the movie's top left.
OSStatus MakeStillMovie(const imaging::ImageFileInfo& info, std::unique_ptr<Atom>* movie);
/// The matrix that turns a picture of `width` by `height` pixels upright, by its orientation tag.
MatrixRecord UprightMatrix(UInt8 orientation, UInt32 width, UInt32 height);

}  // namespace quillmere::movies
