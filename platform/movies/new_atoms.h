/// Atoms of new tracks and movies.
#pragma once

#include <string_view>
#include <vector>

#include "atom.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// Creation and modification times, seconds since 1904, and if headers take 64-bit times.
struct HeaderTimes {
  UInt64 creation = 0;
  UInt64 modification = 0;
  bool is_wide = false;
};
/// The times of a movie header. New tracks take them over, so that the same movie gives the same
/// bytes at any time.
HeaderTimes TimesOf(const Atom& mvhd);

extern const MatrixRecord kIdentityMatrix;

struct NewTrackFields {
  UInt32 id;
  Fixed width;
  Fixed height;
  SInt16 volume;  ///< 0 to 256
};
/// `trak` with a header and an empty edit list: enabled, in movie, preview and poster.
Atom MakeTrackAtom(const HeaderTimes& times, const NewTrackFields& fields);
/// `mdia` with empty sample tables. `reference` is the content of its `alis` entry behind version
/// and flags; empty means the movie's own file.
Atom MakeMediaAtom(const HeaderTimes& times, OSType media_type, UInt32 time_scale,
                   const std::vector<UInt8>& reference);
/// `stbl` whose tables have no entries.
Atom MakeEmptySampleTable();
/// `moov` with a header and no track.
Atom MakeMovieAtom(UInt32 time_scale, UInt32 duration);

}  // namespace quillmere::movies
