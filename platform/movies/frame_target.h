/// Pixels that a movie's frames are drawn into where it has no visual context.
#pragma once

#include "image_decoder.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// Pixels of the program's and where in the movie they lie. What is drawn
/// is sRGB, whose gamma goes to `gamma_level` (may be null), 16.16.
struct FrameTarget {
  imaging::PixelBlock pixels;  ///< ARGB, or `2vuy`
  bool is_2vuy = false;
  Rect bounds = {};
  Fixed* gamma_level = nullptr;
};

/// Draws the frame of a time into the part of a target that the movie's box covers. Statuses are
/// those of ComposeSamples.
OSStatus DrawFrame(Movie movie, TimeValue time, const FrameTarget& target);

}  // namespace quillmere::movies
