#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "big_endian.h"
#include "data_references.h"
#include "file_references.h"
#include "finder_information.h"
#include "flatten_plan.h"
#include "output_file.h"
#include "replacement_guard.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// The bytes between the last kept atom and the media data: an empty `wide` and the header of
/// `mdat`, or one header with a 64-bit size.
constexpr UInt64 kMediaHeaderSize = 16;
constexpr UInt32 kQuickTimeVersion = 0x20050300;
constexpr UInt64 kMaximum32 = std::numeric_limits<UInt32>::max();

/// What stands in the output before its media data.
struct OutputHead {
  std::vector<UInt8> bytes;         ///< file type, movie, kept atoms
  std::vector<CopyRun> kept_runs;   ///< kept atoms too large to hold in memory, behind them
  std::vector<UInt8> media_header;  ///< behind those
};

void AppendFileType(std::vector<UInt8>* out) {
  for (const UInt32 field : {UInt32{20}, "ftyp"_4cc, "qt  "_4cc, kQuickTimeVersion, "qt  "_4cc})
    AppendU32(out, field);
}

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
  HeadBuilder(const MovieRecord& movie, const FlattenPlan& plan) : movie_(movie), plan_(plan) {}

  OSStatus Build(OutputHead* head) {
    Atom moov = *movie_.file.movie;
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i)
      MakeSelfContained(&TrackIn(&moov, i), plan_.used_references[i]);
    // The offsets' width decides the movie's size and so the offsets: they are set twice, at first
    // as large as they can get.
    const UInt64 largest_start = moov.Size() + ChunkTablesAsWide() + SizeOfTheRest();
    OSStatus status = SetChunkOffsets(&moov, 0, largest_start);
    if (status != noErr) return status;
    status = SetChunkOffsets(&moov, moov.Size() + SizeOfTheRest(), largest_start);
    if (status != noErr) return status;

    AppendFileType(&head->bytes);
    head->bytes.reserve(static_cast<std::size_t>(moov.Size() + SizeOfTheRest()));
    moov.Write(&head->bytes);
    for (const Atom& kept : movie_.file.kept)
      kept.Write(&head->bytes);
    for (const FileSpan& span : movie_.file.kept_in_file)
      head->kept_runs.push_back({movie_.source.get(), span.offset, span.size});
    head->media_header = MakeMediaHeader(plan_.media_size);
    return noErr;
  }

 private:
  Atom& TrackIn(Atom* moov, std::size_t index) const {
    return moov->children()[movie_.tracks[index]->child];
  }

  /// Bytes that the chunk tables can grow by.
  UInt64 ChunkTablesAsWide() const {
    UInt64 bytes = 0;
    for (const auto& offsets : plan_.chunk_offsets)
      bytes += offsets.size() * 8;
    return bytes;
  }

  /// Bytes before the media data other than the movie.
  UInt64 SizeOfTheRest() const {
    UInt64 bytes = 20 + kMediaHeaderSize;
    for (const Atom& kept : movie_.file.kept)
      bytes += kept.Size();
    for (const FileSpan& span : movie_.file.kept_in_file)
      bytes += span.size;
    return bytes;
  }

  /// Writes the chunk tables for media data that starts at `start`. A table is wide if it was, or
  /// if an offset could need it were the start as late as `largest_start`.
  OSStatus SetChunkOffsets(Atom* moov, UInt64 start, UInt64 largest_start) const {
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i) {
      Atom* stbl = SampleTableIn(&TrackIn(moov, i));
      if (stbl == nullptr || !movie_.tracks[i]->media) continue;
      std::vector<UInt64> offsets = plan_.chunk_offsets[i];
      const bool is_wide = stbl->Find("co64"_4cc) != nullptr ||
                           std::any_of(offsets.begin(), offsets.end(), [&](UInt64 offset) {
                             return offset + largest_start > kMaximum32;
                           });
      for (UInt64& offset : offsets)
        offset += start;
      const OSStatus status = ReplaceChunkOffsets(stbl, offsets, is_wide);
      if (status != noErr) return status;
    }
    return noErr;
  }

  const MovieRecord& movie_;
  const FlattenPlan& plan_;
};

/// Data that something else than a chunk table names by its place in the file can't be moved.
OSStatus CheckForeignOffsets(const MovieRecord& movie) {
  std::vector<ForeignOffset> found;
  OSStatus status = FindForeignOffsets(*movie.file.movie, &found);
  for (const Atom& kept : movie.file.kept) {
    if (status == noErr) status = FindForeignOffsets(kept, &found);
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
    if (is_same(movie.source) || std::any_of(plan.sources.begin(), plan.sources.end(), is_same) ||
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
    if (status == noErr) status = HeadBuilder(movie_, plan).Build(&head);
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
    UInt64 kept_size = 0;
    for (const CopyRun& run : head.kept_runs)
      kept_size += run.size;
    const UInt64 total = std::max<UInt64>(kept_size + plan.media_size, 1);
    constexpr UInt64 kSmallestPiece = UInt64{8} << 20;
    constexpr UInt64 kLargestPiece = UInt64{64} << 20;
    const UInt64 piece = std::clamp(total / 100, kSmallestPiece, kLargestPiece);
    const auto report_from = [&](UInt64 before) {
      return [this, before, total](UInt64 bytes) {
        const double fraction = static_cast<double>(before + bytes) / static_cast<double>(total);
        return Report(movieProgressUpdatePercent, static_cast<Fixed>(fraction * 65536.0));
      };
    };
    OSStatus status = output->Write(head.bytes);
    if (status == noErr) status = output->Copy(head.kept_runs, piece, report_from(0));
    if (status == noErr) status = output->Write(head.media_header);
    if (status == noErr) status = output->Copy(plan.runs, piece, report_from(kept_size));
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
