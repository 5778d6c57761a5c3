/// Pictures as pixels of video.
#pragma once

#include "image_decoder.h"

namespace quillmere::imaging {

/// Pixels of `2vuy` in the video range (ITU-R BT.601, 8 bits: black 16, white 235) from ARGB, whose
/// alpha is left out, laid into `video` from pixel `left` of line `top` on, as far as that reaches.
/// Each pair has the chroma of its two pixels' mean, or of the only one that is there.
void ArgbTo2vuy(const PixelBlock& picture, UInt32 left, UInt32 top, const PixelBlock& video);
/// Opaque ARGB from `2vuy`; both pixels of a pair have its chroma. The blocks are of one size.
void ArgbFrom2vuy(const PixelBlock& video, const PixelBlock& picture);

}  // namespace quillmere::imaging
