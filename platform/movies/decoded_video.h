/// Pictures of video samples, decoded with the samples before that they need.
#pragma once

#include "image_decoder.h"
#include "visible_samples.h"

namespace quillmere::movies {

/// Decodes a sample's picture into new memory. Statuses: noCodecErr for a format without a decoder,
/// invalidSampleTable, those of reading and of codecs::DecodePicture.
OSStatus DecodeVideo(const VisibleSample& sample, imaging::DecodedImage* image);

}  // namespace quillmere::movies
