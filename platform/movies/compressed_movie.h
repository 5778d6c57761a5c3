/// Movies whose `moov` holds its content deflated (`cmov`).
#pragma once

#include <memory>
#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// The largest movie atom that is inflated, and the highest ratio that deflate can reach; a size
/// that claims more is not believed.
inline constexpr UInt64 kLargestInflatedMovie = UInt64{256} << 20;
inline constexpr UInt64 kHighestInflateRatio = 1100;

/// True when a `moov` holds a compressed movie.
bool IsCompressedMovie(const Atom& movie);

/// Replaces a compressed `moov` by the one that it holds. badPublicMovieAtom when the stream is
/// damaged, claims too much or does not hold a plain movie; `*movie` stays as it was then.
OSStatus InflateMovie(std::unique_ptr<Atom>* movie);

}  // namespace quillmere::movies
