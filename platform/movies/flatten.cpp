#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "big_endian.h"
#include "data_references.h"
#include "file_references.h"
#include "finder_information.h"
#include "flatten_plan.h"
#include "movie_file_writer.h"
#include "output_file.h"
#include "replacement_guard.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// The bytes between the last kept atom and the media data: an empty `wide` and the header of
/// `mdat`, or one header with a 64-bit size.
constexpr UInt64 kMediaHeaderSize = 16;
constexpr UInt64 kMaximum32 = std::numeric_limits<UInt32>::max();

/// What stands in the output before its media data: file type, movie, kept atoms.
struct OutputHead {
  Atom movie{"moov"_4cc};
  UInt64 size = 0;  ///< in bytes, the header of the media data included
};

std::vector<UInt8> MakeMediaHeader(UInt64 media_size) {
  std::vector<UInt8> bytes;
  if (media_size + 8 <= kMaximum32) {
    AppendU32(&bytes, 8);
    AppendU32(&bytes, "wide"_4cc);
    AppendU32(&bytes, static_cast<UInt32>(media_size + 8));
    AppendU32(&bytes, "mdat"_4cc);
  } else {
    AppendU32(&bytes, 1);
    AppendU32(&bytes, "mdat"_4cc);
    AppendU64(&bytes, media_size + kMediaHeaderSize);
  }
  return bytes;
}

Atom* SampleTableIn(Atom* trak) {
  return trak->FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc});
}

/// Makes the data references whose data is copied refer to the output itself.
void MakeSelfContained(Atom* trak, const std::vector<UInt16>& used) {
  Atom* dref = trak->FindPath({"mdia"_4cc, "minf"_4cc, "dinf"_4cc, "dref"_4cc});
  if (dref == nullptr) return;
  for (const UInt16 index : used) {
    Atom& entry = dref->children()[index - 1U];
    DataReferenceEntry reference;
    if (ReadDataReferenceEntry(entry, &reference) && reference.is_self) continue;
    SetSelfReference(&entry);
  }
}

class HeadBuilder {
 public:
  /// Takes the chunk offsets out of the plan.
  HeadBuilder(const MovieRecord& movie, FlattenPlan* plan) : movie_(movie), plan_(*plan) {}

  OSStatus Build(OutputHead* head) {
    head->movie = *movie_.file.movie;
    Atom& moov = head->movie;
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i)
      MakeSelfContained(&TrackIn(&moov, i), plan_.used_references[i]);
    // The offsets' width decides the movie's size and so the offsets: they are set as for media
    // data that starts at 0, as wide as they can have to be, and moved when the size is known.
    OSStatus status = SetChunkOffsets(&moov, moov.Size() + ChunkTablesAsWide() + SizeOfTheRest());
    head->size = moov.Size() + SizeOfTheRest();
    for (std::size_t i = 0; i < movie_.tracks.size() && status == noErr; ++i) {
      Atom* stbl = TableToSet(&moov, i);
      if (stbl != nullptr) status = ShiftChunkOffsets(stbl, head->size);
    }
    return status;
  }

 private:
  Atom& TrackIn(Atom* moov, std::size_t index) const {
    return moov->children()[movie_.tracks[index]->child];
  }
  /// The sample table of a track that has media; else null.
  Atom* TableToSet(Atom* moov, std::size_t index) const {
    return movie_.tracks[index]->media ? SampleTableIn(&TrackIn(moov, index)) : nullptr;
  }

  /// Bytes that the chunk tables can grow by.
  UInt64 ChunkTablesAsWide() const {
    UInt64 bytes = 0;
    for (const ChunkOffsets& offsets : plan_.chunk_offsets)
      bytes += offsets.size() * 8;
    return bytes;
  }

  /// Bytes before the media data other than the movie.
  UInt64 SizeOfTheRest() const {
    UInt64 bytes = 20 + kMediaHeaderSize;
    for (const Atom& kept : movie_.file.kept)
      bytes += kept.Size();
    for (const LargeKeptAtom& kept : movie_.file.kept_in_file)
      bytes += kept.header.size() + kept.content.size;
    return bytes;
  }

  /// Sets the chunk tables for media data that starts at 0. A table is wide if it was, or if an
  /// offset could need it were the start as late as `largest_start`.
  OSStatus SetChunkOffsets(Atom* moov, UInt64 largest_start) const {
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i) {
      Atom* stbl = TableToSet(moov, i);
      if (stbl == nullptr) continue;
      const ChunkOffsets offsets = std::move(plan_.chunk_offsets[i]);
      const bool is_wide = stbl->Find("co64"_4cc) != nullptr ||
                           (offsets.size() > 0 && offsets.largest() + largest_start > kMaximum32);
      const auto offset_of = [&offsets](UInt64 chunk) { return offsets[chunk]; };
      const OSStatus status = ReplaceChunkOffsets(stbl, offsets.size(), offset_of, is_wide);
      if (status != noErr) return status;
    }
    return noErr;
  }

  const MovieRecord& movie_;
  FlattenPlan& plan_;
};

/// Data that something else than a chunk table names by its place in the file can't be moved.
OSStatus CheckForeignOffsets(const MovieRecord& movie) {
  std::vector<ForeignOffset> found;
  OSStatus status = FindForeignOffsets(*movie.file.movie, &found);
  for (const Atom& kept : movie.file.kept) {
    if (status == noErr) status = FindForeignOffsets(kept, &found);
  }
  for (const LargeKeptAtom& kept : movie.file.kept_in_file) {
    if (status == noErr) status = FindForeignOffsets(movie.source->descriptor(), kept, &found);
  }
  if (status == noErr && !found.empty()) status = invalidMovie;
  return status;
}

/// Removes what has the output's name, unless that is a source of this movie or protected.
OSStatus RemoveOlderOutput(const MovieRecord& movie, const FlattenPlan& plan,
                           const std::filesystem::path& path, bool may_delete) {
  struct stat name_information = {};
  if (lstat(path.c_str(), &name_information) != 0) {
    return errno == ENOENT ? noErr : OSStatus{files::StatusOfErrno(errno)};
  }
  if (!may_delete) return dupFNErr;
  struct stat information = {};
  if (stat(path.c_str(), &information) == 0) {
    const auto is_same = [&](const std::shared_ptr<DataSource>& source) {
      return source->identity().device == information.st_dev &&
             source->identity().inode == information.st_ino;
    };
    const std::vector<std::shared_ptr<DataSource>> referenced = ReferencedSources(movie);
    if ((movie.source && is_same(movie.source)) ||
        std::any_of(plan.sources.begin(), plan.sources.end(), is_same) ||
        std::any_of(referenced.begin(), referenced.end(), is_same)) {
      return dupFNErr;
    }
    if (IsProtectedFromReplacement(path)) return fBsyErr;
  }
  return unlink(path.c_str()) == 0 ? noErr : OSStatus{files::StatusOfErrno(errno)};
}

/// One run of the flatten, with its calls of the movie's progress procedure.
class Flattener {
 public:
  explicit Flattener(MovieRecord* movie) : movie_(*movie) {}

  OSStatus Run(const std::filesystem::path& path, OSType creator, UInt32 creation_flags) {
    OSStatus status = Report(movieProgressOpen, 0);
    if (status == noErr) status = WriteMovie(path, creator, creation_flags);
    const OSStatus closed = Report(movieProgressClose, 0x10000);
    return status != noErr ? status : closed;
  }

 private:
  OSStatus Report(SInt16 message, Fixed percent) {
    if (movie_.progress == nullptr) return noErr;
    return movie_.progress(&movie_, message, progressOpFlatten, percent, movie_.progress_constant);
  }

  OSStatus WriteMovie(const std::filesystem::path& path, OSType creator, UInt32 creation_flags) {
    FlattenPlan plan;
    OutputHead head;
    OutputFile output;
    OSStatus status = PlanFlatten(movie_, &plan);
    if (status == noErr) status = CheckForeignOffsets(movie_);
    if (status == noErr) status = HeadBuilder(movie_, &plan).Build(&head);
    if (status == noErr) status = output.Create(path);
    if (status == noErr) {
      status = RemoveOlderOutput(movie_, plan, path,
                                 (creation_flags & createMovieFileDeleteCurFile) != 0);
    }
    if (status == noErr) status = WriteAll(head, plan, &output);
    if (status == noErr) status = output.Publish();
    if (status == noErr) NoteCreator(path, creator);
    return status;
  }

  OSStatus WriteAll(const OutputHead& head, const FlattenPlan& plan, OutputFile* output) {
    const MovieFile& file = movie_.file;
    total_ = std::accumulate(file.kept_in_file.begin(), file.kept_in_file.end(), plan.media_size,
                             [](UInt64 sum, const auto& kept) { return sum + kept.content.size; });
    std::vector<UInt8> file_type;
    AppendFileType(&file_type);
    OSStatus status = output->Write(file_type);
    const auto write = [&](std::span<const UInt8> bytes) {
      if (status == noErr) status = output->Write(bytes);
    };
    head.movie.Write(write);
    for (const Atom& kept : file.kept)
      kept.Write(write);
    for (const LargeKeptAtom& kept : file.kept_in_file) {
      const auto runs = [&kept](const RunVisitor& visit) {
        return visit({kept.content.offset, kept.content.size, 0});
      };
      write(kept.header);
      if (status == noErr) status = Copy({&movie_.source, 1}, runs, kept.content.size, output);
    }
    write(MakeMediaHeader(plan.media_size));
    return status == noErr ? Copy(plan.sources, plan.runs, plan.media_size, output) : status;
  }

  /// Copies runs of `size` bytes together, and reports.
  OSStatus Copy(std::span<const std::shared_ptr<DataSource>> sources, const RunWalk& runs,
                UInt64 size, OutputFile* output) {
    constexpr UInt64 kSmallestPiece = UInt64{8} << 20;
    constexpr UInt64 kLargestPiece = UInt64{64} << 20;
    const UInt64 piece = std::clamp(total_ / 100, kSmallestPiece, kLargestPiece);
    const auto report = [&](UInt64 bytes) {
      const double fraction = static_cast<double>(copied_ + bytes) / static_cast<double>(total_);
      return Report(movieProgressUpdatePercent, static_cast<Fixed>(fraction * 65536.0));
    };
    const OSStatus status = output->Copy(sources, runs, piece, report);
    copied_ += size;
    return status;
  }

  /// The output is a movie of that creator. Where the file system can't keep this, nothing is lost.
  static void NoteCreator(const std::filesystem::path& path, OSType creator) {
    files::FinderInformation information;
    WriteU32(information.bytes, "MooV"_4cc);
    WriteU32(information.bytes + 4, creator);
    files::WriteFinderInformation(path, information);
  }

  MovieRecord& movie_;
  UInt64 total_ = 0;   ///< bytes to be copied from other files
  UInt64 copied_ = 0;  ///< of them
};

}  // namespace

}  // namespace quillmere::movies

using namespace quillmere::movies;

void SetMovieProgressProc(Movie movie, MovieProgressProcPtr procedure, SInt64 reference_constant) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  if (movie == nullptr) return;
  movie->progress = procedure;
  movie->progress_constant = reference_constant;
}

Movie FlattenMovieDataToDataRef(Movie movie, SInt32 flatten_flags, Handle data_reference,
                                OSType type, OSType creator, [[maybe_unused]] ScriptCode script,
                                UInt32 creation_flags) {
  if (movie == nullptr || (flatten_flags & ~flattenAddMovieToDataFork) != 0) {
    NoteStatus(movie == nullptr ? OSStatus{invalidMovie} : paramErr);
    return nullptr;
  }
  std::filesystem::path path;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status == noErr) status = Flattener(movie).Run(path, creator, creation_flags);
  std::unique_ptr<MovieRecord> made;
  if (status == noErr && (creation_flags & createMovieFileDontCreateMovie) == 0) {
    status = OpenMovieAt(path, &made);
  }
  NoteStatus(status);
  return made.release();
}
