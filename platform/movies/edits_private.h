/// Edit lists taken apart and put together, for the sources that edit tracks.
#pragma once

#include <vector>

#include "toolbox_records.h"

namespace quillmere::movies {

/// Units a second of a track and of its media.
struct Scales {
  UInt32 movie;
  UInt32 media;
};

/// round(value multiplier / divisor), cut to 63 bits.
UInt64 Rescale(UInt64 value, UInt64 multiplier, UInt64 divisor);
/// The duration of all edits, movie time units.
UInt64 LengthOf(const std::vector<EditRecord>& edits);
/// Position in `edits` where an edit that starts at `start` goes: an edit that spans the time is
/// split there, and an empty edit fills up a track that ends before.
std::size_t OpenAt(UInt64 start, const Scales& scales, std::vector<EditRecord>* edits);
/// Gives a track its edits and their duration, and the movie that duration when it is longer.
OSStatus StoreEdits(const TrackRecord& track, const std::vector<EditRecord>& edits);

}  // namespace quillmere::movies
