/// Decoded pictures of samples that come back: a mask is decoded once for all the stills of a job.
#pragma once

#include <memory>

#include "base_types.h"
#include "data_source.h"
#include "image_decoder.h"

namespace quillmere::movies {

/// Reads a sample's bytes into memory from the frame pool. A stretch that reaches past the file's
/// end gives eofErr before anything is allocated.
OSStatus ReadSample(const DataSource& source, UInt64 offset, UInt64 size,
                    imaging::FrameMemory* memory);

/// The picture of a sample that is likely to be shown again. It is looked up by the file's identity
/// (device, inode, size, time of change) and the sample's place, so that a file that changed is
/// decoded anew. What is kept is bounded to 64 MiB of pixels, or one picture if that is larger; the
/// least recently used goes first. Any thread may call it. Statuses of reading and of DecodeImage.
OSStatus DecodedImageOf(const DataSource& source, UInt64 offset, UInt64 size,
                        std::shared_ptr<const imaging::DecodedImage>* image);

/// Forgets all pictures that are kept.
void ForgetDecodedImages();

}  // namespace quillmere::movies
