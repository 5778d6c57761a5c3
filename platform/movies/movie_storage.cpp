#include "movie_storage.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "big_endian.h"
#include "data_references.h"
#include "descriptor.h"
#include "file_calls.h"
#include "file_references.h"
#include "finder_information.h"
#include "new_atoms.h"
#include "replacement_guard.h"
#include "resources.h"
#include "toolbox_records.h"

struct DataHandlerRecord {
  std::filesystem::path path;
  SInt32 flags;
};

using namespace quillmere::movies;

namespace {

namespace fs = std::filesystem;
namespace files = quillmere::files;

constexpr UInt32 kNewMovieScale = 600;

/// Makes an entry name a file, or its own if that is `own`; one that doesn't resolve stays where it
/// is kept in a file, and names nothing elsewhere.
void PointEntry(const MediaRecord& media, UInt16 index, const fs::path& own, Atom* entry) {
  fs::path path;
  const bool resolves = PathOfReference(media, index, &path) == noErr;
  DataReferenceEntry reference;
  const bool is_self = ReadDataReferenceEntry(*entry, &reference) && reference.is_self;
  if (!resolves) {
    if (own.empty()) entry->set_payload({0, 0, 0, 0});
    return;
  }
  if (!own.empty() && IsSameFile(path, own)) {
    if (is_self) return;
    entry->set_type("alis"_4cc);
    SetSelfReference(entry);
    return;
  }
  if (!is_self && !own.empty() && IsSameFile(media.track->movie->path, own)) return;
  std::vector<UInt8> bytes(4);
  const std::vector<UInt8> alias = AliasRecordOf(path);
  bytes.insert(bytes.end(), alias.begin(), alias.end());
  entry->set_type("alis"_4cc);
  entry->set_payload(std::move(bytes));
}

/// A media without samples may have no descriptions either; other programs refuse a table of them
/// that is empty, but not one that is missing.
void DropEmptyDescriptions(Atom* trak) {
  Atom* stbl = trak->FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc});
  const Atom* stsd = stbl != nullptr ? stbl->Find("stsd"_4cc) : nullptr;
  if (stsd != nullptr && stsd->children().empty() && stsd->payload().size() <= 8)
    stbl->Remove("stsd"_4cc);
}

/// The bytes of a movie for a file, or for a handle where the path is empty.
OSStatus MovieBytes(Movie movie, const fs::path& own, std::vector<UInt8>* bytes) {
  for (const auto& track : movie->tracks) {
    const SampleTable* table = nullptr;
    const OSStatus status =
        track->media && SampleTableAtom(*track) ? SampleTableOf(track->media.get(), &table) : noErr;
    if (status != noErr) return status;
  }
  Atom moov = *movie->file.movie;
  for (const auto& track : movie->tracks) {
    Atom& trak = moov.children()[track->child];
    DropEmptyDescriptions(&trak);
    Atom* dref = trak.FindPath({"mdia"_4cc, "minf"_4cc, "dinf"_4cc, "dref"_4cc});
    if (dref == nullptr || !track->media) continue;
    for (std::size_t i = 0; i < dref->children().size(); ++i)
      PointEntry(*track->media, static_cast<UInt16>(i + 1), own, &dref->children()[i]);
  }
  moov.Write(bytes);
  return noErr;
}

OSStatus PutIntoHandle(const std::vector<UInt8>& bytes, Handle handle) {
  SetHandleSize(handle, static_cast<Size>(bytes.size()));
  if (MemError() != noErr) return MemError();
  std::memcpy(*handle, bytes.data(), bytes.size());
  return noErr;
}

std::unique_ptr<MovieRecord> EmptyMovie() {
  auto movie = std::make_unique<MovieRecord>();
  movie->file.movie = std::make_unique<Atom>(MakeMovieAtom(kNewMovieScale, 0));
  return movie;
}

/// Takes away what has a new file's name.
OSStatus RemoveOlder(const fs::path& path, UInt32 flags) {
  struct stat info = {};
  if (lstat(path.c_str(), &info) != 0)
    return errno == ENOENT ? noErr : OSStatus{files::StatusOfErrno(errno)};
  if ((flags & createMovieFileDeleteCurFile) == 0) return dupFNErr;
  if (IsProtectedFromReplacement(path)) return fBsyErr;
  return files::UnlinkAt(AT_FDCWD, path.string(), 0) == 0 ? noErr
                                                          : OSStatus{files::StatusOfErrno(errno)};
}

OSStatus MakeMovieFile(const fs::path& path, OSType creator) {
  constexpr mode_t kMode = 0666;
  const files::Descriptor file(files::MakeFileAt(AT_FDCWD, path.string(), kMode));
  if (!file.IsOpen()) return errno == EEXIST ? OSStatus{dupFNErr} : files::StatusOfErrno(errno);
  std::vector<UInt8> bytes;
  AppendFileType(&bytes);
  if (files::WriteAll(file.get(), bytes) != 0) {
    const OSStatus status = files::StatusOfErrno(errno);
    files::UnlinkAt(AT_FDCWD, path.string(), 0);
    return status;
  }
  files::FinderInformation information;
  quillmere::WriteU32(information.bytes, "MooV"_4cc);
  quillmere::WriteU32(information.bytes + 4, creator);
  files::WriteFinderInformation(path, information);  // where the file system can't, nothing is lost
  return noErr;
}

/// The movie of the file is in fragments, which a new one would stand beside.
bool HasFragments(const fs::path& path) {
  const files::Descriptor descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat info = {};
  std::vector<TopLevelAtom> atoms;
  if (!descriptor.IsOpen() || fstat(descriptor.get(), &info) != 0 ||
      ReadTopLevelAtoms(descriptor.get(), static_cast<UInt64>(info.st_size), &atoms) != noErr)
    return false;
  return std::ranges::find(atoms, "moof"_4cc, &TopLevelAtom::type) != atoms.end();
}

OSStatus StoreMovie(Movie movie, DataHandler handler) {
  if (movie == nullptr || handler == nullptr)
    return movie == nullptr ? OSStatus{invalidMovie} : paramErr;
  if ((handler->flags & kDataHCanWrite) == 0) return permErr;
  if (HasFragments(handler->path)) return invalidMovie;
  std::vector<UInt8> bytes;
  OSStatus status = MovieBytes(movie, handler->path, &bytes);
  if (status == noErr) status = StoreMovieAtom(handler->path, bytes);
  if (status == noErr) ReopenSources(movie);
  return status;
}

}  // namespace

Movie NewMovie(SInt32 flags) {
  std::unique_ptr<MovieRecord> movie = EmptyMovie();
  movie->active = (flags & newMovieActive) != 0;
  movie->trusts_references = true;  // the program gives them
  NoteStatus(noErr);
  return movie.release();
}

OSErr NewMovieFromDataRef(Movie* movie, SInt16 flags, SInt16* id, Handle data_reference,
                          OSType type) {
  if (movie == nullptr) return Note(paramErr);
  *movie = nullptr;
  fs::path path;
  std::unique_ptr<MovieRecord> opened;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status == noErr) status = OpenMovieAt(path, &opened);
  if (status != noErr) return Note(status);
  opened->active = (flags & newMovieActive) != 0;
  if (id != nullptr) *id = 0;
  *movie = opened.release();
  return Note(noErr);
}

OSErr PutMovieIntoHandle(Movie movie, Handle handle) {
  if (movie == nullptr) return Note(invalidMovie);
  if (handle == nullptr) return Note(nilHandleErr);
  std::vector<UInt8> bytes;
  OSStatus status = MovieBytes(movie, {}, &bytes);
  if (status == noErr) status = PutIntoHandle(bytes, handle);
  return Note(status);
}

OSErr PutMovieForDataRefIntoHandle(Movie movie, Handle data_reference, OSType type, Handle handle) {
  if (movie == nullptr) return Note(invalidMovie);
  if (handle == nullptr) return Note(nilHandleErr);
  fs::path path;
  std::vector<UInt8> bytes;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status == noErr) status = MovieBytes(movie, path, &bytes);
  if (status == noErr) status = PutIntoHandle(bytes, handle);
  return Note(status);
}

OSErr NewMovieFromHandle(Movie* movie, Handle handle, SInt16 flags, Boolean* data_ref_changed) {
  if (movie == nullptr) return Note(paramErr);
  *movie = nullptr;
  if (data_ref_changed != nullptr) *data_ref_changed = 0;
  if (handle == nullptr || *handle == nullptr) return Note(nilHandleErr);
  const auto* bytes = reinterpret_cast<const UInt8*>(*handle);
  auto block = std::make_shared<const std::vector<UInt8>>(bytes, bytes + GetHandleSize(handle));
  auto made = std::make_unique<MovieRecord>();
  OSStatus status = ReadMovieBytes(std::move(block), &made->file);
  if (status == noErr) status = CheckMovie(*made);
  if (status != noErr) return Note(status);
  made->trusts_references = true;
  made->active = (flags & newMovieActive) != 0;
  MakeTrackRecords(made.get());
  *movie = made.release();
  return Note(noErr);
}

OSErr CreateMovieStorage(Handle data_reference, OSType type, OSType creator,
                         [[maybe_unused]] ScriptCode script, UInt32 flags, DataHandler* handler,
                         Movie* movie) {
  if (handler != nullptr) *handler = nullptr;
  if (movie != nullptr) *movie = nullptr;
  fs::path path;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status == noErr) status = RemoveOlder(path, flags);
  if (status == noErr) status = MakeMovieFile(path, creator);
  if (status != noErr) return Note(status);
  if (handler != nullptr) *handler = new DataHandlerRecord{path, kDataHCanRead | kDataHCanWrite};
  if (movie != nullptr && (flags & createMovieFileDontCreateMovie) == 0) {
    std::unique_ptr<MovieRecord> made = EmptyMovie();
    made->path = path;
    status = OpenDataSource(path, &made->source);
    if (status == noErr) *movie = made.release();
  }
  return Note(status);
}

OSErr OpenMovieStorage(Handle data_reference, OSType type, SInt32 flags, DataHandler* handler) {
  if (handler == nullptr) return Note(paramErr);
  *handler = nullptr;
  fs::path path;
  const OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status != noErr) return Note(status);
  const int mode = (flags & kDataHCanWrite) != 0 ? O_RDWR : O_RDONLY;
  const files::Descriptor file(open(path.c_str(), mode | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file.IsOpen()) return Note(files::StatusOfErrno(errno));
  *handler = new DataHandlerRecord{path, flags};
  return Note(noErr);
}

OSErr CloseMovieStorage(DataHandler handler) {
  delete handler;
  return Note(noErr);
}

OSErr AddMovieToStorage(Movie movie, DataHandler handler) {
  return Note(StoreMovie(movie, handler));
}

OSErr UpdateMovieInStorage(Movie movie, DataHandler handler) {
  return Note(StoreMovie(movie, handler));
}

OSErr CloseMovieFile(SInt16 resource_file) {
  CloseResFile(resource_file);
  return Note(ResError());
}

OSErr DeleteMovieStorage(Handle data_reference, OSType type) {
  fs::path path;
  const OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status != noErr) return Note(status);
  if (IsProtectedFromReplacement(path)) return Note(fBsyErr);
  const int result = files::UnlinkAt(AT_FDCWD, path.string(), 0);
  return Note(result == 0 ? OSStatus{noErr} : OSStatus{files::StatusOfErrno(errno)});
}
