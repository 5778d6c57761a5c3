/// Pictures of video samples, decoded with the samples before that they need.
#pragma once

#include "image_decoder.h"
#include "visible_samples.h"

namespace quillmere::movies {

/// A decoder that may go on where it stands, of a media whose tables have not changed since.
struct VideoDecoding;

/// Decodes a sample's picture into new memory. The media keeps the decoder, so that pictures that
/// follow each other are decoded once. Statuses: noCodecErr for a format without a decoder,
/// invalidSampleTable, those of reading and of codecs::VideoDecoder.
OSStatus DecodeVideo(const VisibleSample& sample, imaging::DecodedImage* image);

}  // namespace quillmere::movies
