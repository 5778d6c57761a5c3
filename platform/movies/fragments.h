/// Fragmented movies: samples described by `moof` atoms behind the movie atom.
#pragma once

#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// Where a fragment stands.
struct FragmentPlace {
  UInt64 offset;  ///< of the `moof` in the file, bytes
  UInt64 size;    ///< header included
};

/// Gives the fragment's atom, or a status when it can't be read.
using FragmentReader = std::function<OSStatus(const FragmentPlace&, std::unique_ptr<Atom>*)>;

/// Turns the samples of all fragments into ordinary tables of `movie`, behind the samples that it
/// has, and takes `mvex` out. Durations of media, tracks, movie and of edits that reach to the end
/// of the media grow with them. One fragment is in memory at a time. invalidSampleTable when the
/// fragments claim what `file_size` bytes can't hold or are damaged; badPublicMovieAtom when they
/// have what ordinary tables can't take over (encrypted samples, auxiliary information). `movie` is
/// undefined on failure.
OSStatus MergeFragments(std::span<const FragmentPlace> fragments, const FragmentReader& read,
                        UInt64 file_size, Atom* movie);

}  // namespace quillmere::movies
