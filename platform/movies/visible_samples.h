/// What a movie shows at a time: the samples of its enabled visual tracks, back to front.
#pragma once

#include <memory>
#include <vector>

#include "base_types.h"
#include "data_source.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// Codecs that show frames out of decode order delay them by at most this many.
inline constexpr UInt64 kReorderSpan = 32;

/// One sample that is visible, with what the compositor needs to place it.
struct VisibleSample {
  OSType format;                       ///< codec type of its description
  MediaRecord* media;                  ///< whose sample it is, null for one that has none
  UInt64 number;                       ///< among those of the media, from 0
  std::shared_ptr<DataSource> source;  ///< the open file that holds it
  UInt64 offset;                       ///< in bytes
  UInt64 size;                         ///< in bytes
  UInt32 encoded_width;                ///< in pixels, by the description
  UInt32 encoded_height;
  Fixed track_width;  ///< the track's box before its matrix, 16.16 pixels
  Fixed track_height;
  MatrixRecord matrix;   ///< track matrix times movie matrix
  SInt32 graphics_mode;  ///< 0 copy, 0x40 dither copy, 0x20 blend, 0x24 transparent, 0x100 straight
                         ///< alpha, 0x101 premultiplied white, 0x102 premultiplied black
  RGBColor op_color;
};

/// The visible samples at a movie time, the back layer first; tracks of one layer in the order of
/// their index, the later one behind.
OSStatus VisibleSamplesAt(Movie movie, TimeValue time, std::vector<VisibleSample>* samples);

/// Pixel density of the still that the movie was opened from, in dots per inch; 0, 0 when it is
/// none or does not say.
void StillDensityOf(Movie movie, double* x, double* y);

}  // namespace quillmere::movies
