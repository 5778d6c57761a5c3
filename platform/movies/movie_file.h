/// Reading movie files: the walk over the top-level atoms and the movie model that comes of it.
#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// A stretch of a file.
struct FileSpan {
  UInt64 offset;
  UInt64 size;
};

/// A top-level atom of a movie file.
struct TopLevelAtom {
  OSType type;
  UInt64 offset;       ///< of the header, bytes from the file's start
  UInt64 size;         ///< header included; cut to the file's end if it says more
  UInt32 header_size;  ///< 8 or 16
  bool truncated;      ///< the size written reaches past the end of the file
  bool to_end;         ///< the size written is 0: it reaches to the end of the file
};

/// A kept atom that stays in its file.
struct LargeKeptAtom {
  OSType type;
  /// As it is written again: that of the file, unless its size holds only there (past or to the
  /// end of the file).
  std::vector<UInt8> header;
  FileSpan content;
};

/// A kept atom above this is not read into memory.
inline constexpr UInt64 kLargestKeptAtom = UInt64{1} << 20;
/// The largest movie atom that is read, and the number of top-level atoms that a file may have.
inline constexpr UInt64 kLargestMovieAtom = UInt64{1} << 30;
inline constexpr std::size_t kMaximumTopLevelAtoms = std::size_t{1} << 20;

/// The model of one movie file.
struct MovieFile {
  std::vector<TopLevelAtom> top_level;
  /// The `moov` atom: decompressed when the file has it compressed, and with the samples of all
  /// fragments (`moof`) turned into ordinary sample tables; `mvex` is gone then.
  std::unique_ptr<Atom> movie;
  /// Other top-level atoms that are kept and written again, whole, each with a size of its own:
  /// `meta`, `uuid`, `udta`, `PICT` and all that is not understood. Not among them: `ftyp`, `moov`,
  /// `mdat`, `wide`, `free`, `skip`, and what indexes fragments (`styp`, `sidx`, `ssix`, `moof`,
  /// `mfra`, `prft`, `emsg`).
  std::vector<Atom> kept;
  /// Those of them that are larger than `kLargestKeptAtom`.
  std::vector<LargeKeptAtom> kept_in_file;
  UInt64 file_size = 0;
  bool was_fragmented = false;
};

/// Lists the top-level atoms of an open file of `file_size` bytes, up to the first bytes that are
/// none; invalidMovie for more than kMaximumTopLevelAtoms.
OSStatus ReadTopLevelAtoms(int file_descriptor, UInt64 file_size, std::vector<TopLevelAtom>* atoms);
/// True when the file's first atoms look like a QuickTime or ISO movie: cheap, reads only headers.
bool LooksLikeMovie(const std::filesystem::path& path);
/// Reads everything but the media data. Memory is proportional to the movie atom. A file without
/// `moov` gives noMovieFound, one whose movie does not hold together another status of the movies
/// family.
OSStatus ReadMovieFile(const std::filesystem::path& path, MovieFile* file);
/// The same from an open file descriptor, which stays the caller's.
OSStatus ReadMovieFile(int file_descriptor, MovieFile* file);

/// The same for a movie that is one `moov` atom in memory.
OSStatus ReadMovieBytes(std::shared_ptr<const std::vector<UInt8>> block, MovieFile* file);

/// A stretch of the file that is named by an absolute offset somewhere else than in a chunk table.
struct ForeignOffset {
  OSType atom;    ///< the atom that names it: `iloc` or `saio`
  UInt64 offset;  ///< in the file, bytes
  UInt64 size;    ///< in bytes; 0 when the atom does not say
};
/// Appends all such stretches that a tree names: items of `iloc` with construction method 0 and
/// tables of `saio`. A movie that has some can't be moved without them. invalidMovie when such an
/// atom does not parse.
OSStatus FindForeignOffsets(const Atom& tree, std::vector<ForeignOffset>* found);
/// The same for a kept atom that stays in its file; only what can name offsets is read.
OSStatus FindForeignOffsets(int file_descriptor, const LargeKeptAtom& kept,
                            std::vector<ForeignOffset>* found);

}  // namespace quillmere::movies
