#include "movie_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "big_endian.h"
#include "compressed_movie.h"
#include "data_source.h"
#include "file_references.h"
#include "fragments.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

/// Top-level atoms that are not kept: the movie, the media, room, and what is about fragments.
constexpr OSType kNotKept[] = {"ftyp"_4cc, "moov"_4cc, "mdat"_4cc, "wide"_4cc, "free"_4cc,
                               "skip"_4cc, "styp"_4cc, "sidx"_4cc, "ssix"_4cc, "moof"_4cc,
                               "mfra"_4cc, "prft"_4cc, "emsg"_4cc};
/// A file starts with one of these when it is a movie; `free`, `skip` and `wide` may stand before
/// them.
constexpr OSType kMovieStarts[] = {"ftyp"_4cc, "moov"_4cc, "mdat"_4cc, "pnot"_4cc, "styp"_4cc};
constexpr OSType kRoom[] = {"free"_4cc, "skip"_4cc, "wide"_4cc};

bool Contains(std::span<const OSType> types, OSType type) {
  return std::find(types.begin(), types.end(), type) != types.end();
}

/// Steps over the atoms of a file by their headers.
class TopLevelWalk {
 public:
  TopLevelWalk(int descriptor, UInt64 file_size) : descriptor_(descriptor), file_size_(file_size) {}

  /// The next atom. False at the end, at bytes that are no atom, and on a read error (see
  /// status()).
  bool Next(TopLevelAtom* atom) {
    std::array<UInt8, 16> header = {};
    const UInt64 left = file_size_ - offset_;
    if (left < 8) return false;
    const std::size_t count = static_cast<std::size_t>(std::min<UInt64>(left, header.size()));
    status_ = ReadFully(descriptor_, offset_, std::span(header).first(count));
    if (status_ != noErr) return false;
    const UInt32 size = ReadU32(header.data());
    *atom = {ReadU32(header.data() + 4), offset_, size, 8, false, size == 0};
    if (size == 0) {
      if (atom->type == 0) return false;  // padding
      atom->size = left;
    } else if (size == 1) {
      if (count < 16) return false;
      atom->header_size = 16;
      atom->size = ReadU64(header.data() + 8);
    }
    if (atom->size < atom->header_size) return false;
    atom->truncated = atom->size > left;
    if (atom->truncated) atom->size = left;
    offset_ += atom->size;
    return true;
  }
  OSStatus status() const { return status_; }

 private:
  int descriptor_;
  UInt64 file_size_;
  UInt64 offset_ = 0;
  OSStatus status_ = noErr;
};

/// Reads a whole atom that is no larger than `limit`.
OSStatus ReadAtom(int descriptor, UInt64 offset, UInt64 size, UInt64 limit,
                  std::unique_ptr<Atom>* atom) {
  if (size > limit) return memFullErr;
  auto block = std::make_shared<std::vector<UInt8>>(size);
  const OSStatus status = ReadFully(descriptor, offset, *block);
  if (status != noErr) return status;
  const OSStatus parsed = ParseAtom(std::move(block), atom);
  // The tree is written at places where "to the end of the file" may not be true.
  if (parsed == noErr && (*atom)->size_form() == SizeForm::kToEnd) {
    (*atom)->set_size_form(SizeForm::k32);
  }
  return parsed;
}

/// A container that has content has to have been understood.
bool IsParsed(const Atom* atom) {
  return atom == nullptr || !atom->children().empty() || atom->payload().empty();
}

/// Checks that the parts that the media depends on parsed.
OSStatus CheckStructure(const Atom& movie) {
  if (movie.children().empty() || movie.Find("mvhd"_4cc) == nullptr) return badPublicMovieAtom;
  for (const Atom& track : movie.children()) {
    if (track.type() != "trak"_4cc) continue;
    if (!IsParsed(&track) || track.Find("tkhd"_4cc) == nullptr) return invalidTrack;
    if (!IsParsed(track.Find("edts"_4cc))) return badEditList;
    const Atom* media = track.Find("mdia"_4cc);
    if (media == nullptr) continue;
    if (!IsParsed(media) || media->Find("mdhd"_4cc) == nullptr) return invalidMedia;
    const Atom* information = media->Find("minf"_4cc);
    if (information == nullptr) continue;
    if (!IsParsed(information)) return invalidMedia;
    if (!IsParsed(information->FindPath({"dinf"_4cc}))) return invalidDataRef;
    if (!IsParsed(information->FindPath({"stbl"_4cc}))) return invalidSampleTable;
  }
  return noErr;
}

OSStatus ReadMovieAtom(int descriptor, MovieFile* file) {
  const auto place = std::find_if(file->top_level.begin(), file->top_level.end(),
                                  [](const TopLevelAtom& atom) { return atom.type == "moov"_4cc; });
  if (place == file->top_level.end()) return noMovieFound;
  if (place->truncated) return badPublicMovieAtom;
  OSStatus status =
      ReadAtom(descriptor, place->offset, place->size, kLargestMovieAtom, &file->movie);
  if (status == noErr && IsCompressedMovie(*file->movie)) status = InflateMovie(&file->movie);
  return status == noErr ? CheckStructure(*file->movie) : status;
}

/// Notes a kept atom that stays in its file.
OSStatus NoteLargeAtom(int descriptor, const TopLevelAtom& place, MovieFile* file) {
  LargeKeptAtom kept = {place.type, {}, {}};
  kept.content = {place.offset + place.header_size, place.size - place.header_size};
  if (place.truncated || place.to_end) {
    kept.header = MakeAtomHeader(place.type, kept.content.size);
  } else {
    kept.header.resize(place.header_size);
    const OSStatus status = ReadFully(descriptor, place.offset, kept.header);
    if (status != noErr) return status;
  }
  file->kept_in_file.push_back(std::move(kept));
  return noErr;
}

OSStatus ReadKeptAtoms(int descriptor, MovieFile* file) {
  for (const TopLevelAtom& place : file->top_level) {
    if (Contains(kNotKept, place.type)) continue;
    std::unique_ptr<Atom> atom;
    OSStatus status = noErr;
    if (place.size > kLargestKeptAtom) {
      status = NoteLargeAtom(descriptor, place, file);
    } else if (place.truncated) {  // what there is of it is kept, under a size that is true
      std::vector<UInt8> content(place.size - std::min<UInt64>(place.size, place.header_size));
      status = ReadFully(descriptor, place.offset + place.header_size, content);
      atom = std::make_unique<Atom>(place.type);
      atom->set_payload(std::move(content));
    } else {
      status = ReadAtom(descriptor, place.offset, place.size, kLargestKeptAtom, &atom);
    }
    if (status != noErr) return status;
    if (atom) file->kept.push_back(std::move(*atom));
  }
  return noErr;
}

OSStatus ReadFragments(int descriptor, MovieFile* file) {
  std::vector<FragmentPlace> fragments;
  for (const TopLevelAtom& atom : file->top_level) {
    if (atom.type != "moof"_4cc) continue;
    if (atom.truncated) return invalidMovie;
    fragments.push_back({atom.offset, atom.size});
  }
  file->was_fragmented = !fragments.empty() || file->movie->Find("mvex"_4cc) != nullptr;
  if (!file->was_fragmented) return noErr;
  const auto read = [descriptor](const FragmentPlace& place, std::unique_ptr<Atom>* atom) {
    return ReadAtom(descriptor, place.offset, place.size, kLargestMovieAtom, atom);
  };
  return MergeFragments(fragments, read, file->file_size, file->movie.get());
}

/// A descriptor that is closed at the end of its block.
class OpenedFile {
 public:
  explicit OpenedFile(const std::filesystem::path& path)
      : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)),
        error_(descriptor_ < 0 ? errno : 0) {}
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  ~OpenedFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  int descriptor() const { return descriptor_; }
  int error() const { return error_; }

 private:
  int descriptor_;
  int error_;
};

/// The size of a regular file.
OSStatus SizeOfFile(int descriptor, UInt64* size) {
  struct stat info = {};
  if (fstat(descriptor, &info) != 0) return files::StatusOfErrno(errno);
  if (!S_ISREG(info.st_mode) || info.st_size < 0) return noMovieFound;
  *size = static_cast<UInt64>(info.st_size);
  return noErr;
}

}  // namespace

OSStatus ReadTopLevelAtoms(int file_descriptor, UInt64 file_size,
                           std::vector<TopLevelAtom>* atoms) {
  TopLevelWalk walk(file_descriptor, file_size);
  TopLevelAtom atom = {};
  while (walk.Next(&atom)) {
    if (atoms->size() == kMaximumTopLevelAtoms) return invalidMovie;
    atoms->push_back(atom);
  }
  return walk.status();
}

bool LooksLikeMovie(const std::filesystem::path& path) {
  const OpenedFile file(path);
  UInt64 size = 0;
  if (file.descriptor() < 0 || SizeOfFile(file.descriptor(), &size) != noErr) return false;
  TopLevelWalk walk(file.descriptor(), size);
  TopLevelAtom atom = {};
  constexpr int kRoomAtoms = 16;
  for (int i = 0; i < kRoomAtoms && walk.Next(&atom); ++i) {
    if (Contains(kMovieStarts, atom.type)) return true;
    if (!Contains(kRoom, atom.type)) return false;
  }
  return false;
}

OSStatus ReadMovieFile(const std::filesystem::path& path, MovieFile* file) {
  const OpenedFile opened(path);
  if (opened.descriptor() < 0) return files::StatusOfErrno(opened.error());
  return ReadMovieFile(opened.descriptor(), file);
}

OSStatus ReadMovieBytes(std::shared_ptr<const std::vector<UInt8>> block, MovieFile* file) {
  *file = MovieFile();
  OSStatus status = ParseAtom(std::move(block), &file->movie);
  if (status != noErr) return status;
  if (file->movie->type() != "moov"_4cc) return noMovieFound;
  file->movie->set_size_form(SizeForm::k32);
  if (IsCompressedMovie(*file->movie)) status = InflateMovie(&file->movie);
  return status == noErr ? CheckStructure(*file->movie) : status;
}

OSStatus ReadMovieFile(int file_descriptor, MovieFile* file) {
  *file = MovieFile();
  OSStatus status = SizeOfFile(file_descriptor, &file->file_size);
  if (status == noErr)
    status = ReadTopLevelAtoms(file_descriptor, file->file_size, &file->top_level);
  if (status == noErr) status = ReadMovieAtom(file_descriptor, file);
  if (status == noErr) status = ReadKeptAtoms(file_descriptor, file);
  if (status == noErr) status = ReadFragments(file_descriptor, file);
  if (status != noErr) file->movie.reset();
  return status;
}

}  // namespace quillmere::movies
