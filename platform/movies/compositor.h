/// Composing the samples that a movie shows at one time into a frame.
///
/// The frame starts as opaque black. Samples are drawn from back to front. A sample in an opaque
/// graphics mode (copy, dither copy, blend, transparent) fills its track's box: it is scaled to the
/// track's width and height, as pictures whose pixels are not square need. A sample in one of the
/// alpha modes brings its own outline and is laid at its own size at the top left of the box and
/// cut to it, so that a mask is never resampled, however wide the movie. Then the track's matrix
/// places it; its perspective part is not used. Where the matrix neither turns nor mirrors, a
/// JPEG's own orientation tag stands it upright.
///
/// PNG and JPEG samples are drawn, and, where FFmpeg's libraries are installed, those of many other
/// formats (codecs::DecodableTypes); noCodecErr for the rest.
#pragma once

#include <string>
#include <vector>

#include "base_types.h"
#include "image_decoder.h"
#include "visible_samples.h"

namespace quillmere::movies {

/// No decoder for a sample's format.
inline constexpr OSStatus noCodecErr = -8961;

/// Draws the samples, the back one first, into `frame`: ARGB pixels that come out opaque. The
/// movie's point
/// (`left`, `top`) stands at the frame's top left corner. `warning` (may be null) tells what was
/// wrong with a cut or damaged picture that was drawn all the same; empty for nothing. Statuses:
/// noCodecErr, those of reading and of decoding; the frame's content is undefined then.
OSStatus ComposeSamples(const std::vector<VisibleSample>& samples, SInt32 left, SInt32 top,
                        const imaging::PixelBlock& frame, std::string* warning);

}  // namespace quillmere::movies
