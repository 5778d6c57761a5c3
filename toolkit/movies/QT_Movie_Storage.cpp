#include "QT_Movie_Storage.h"

#include "GL_Errors.h"
#include "GL_File.h"
#include "GL_File_Creation.h"
#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "QT_Data_References.h"
#include "QT_Error_Keys.h"
#include "QT_Movie_Atoms.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "aliases.h"
#include "folders.h"
#include "media_editing.h"
#include "memory_handles.h"
#include "movie_storage.h"
#include "reference_counted.h"
#include "up_time.h"

using quillmere::Owned;

namespace {

constexpr UInt32 kBusyWaitTicks = 10;
constexpr SInt32 kMostCreations = 11;
constexpr SInt32 kReadWriteStorage = kDataHCanRead | kDataHCanWrite;
constexpr ScriptCode kSystemScript = -1;

/// A data reference and its type, disposed of at the end.
struct DataReference {
  Handle handle = nullptr;
  OSType type = 0;
  DataReference() = default;
  DataReference(const DataReference&) = delete;
  DataReference& operator=(const DataReference&) = delete;
  ~DataReference() { GL_DisposeHandle(&handle); }
};

SInt32 MakeReference(const FSRef* file, DataReference* reference) {
  return QTNewDataReferenceFromFSRef(file, 0, &reference->handle, &reference->type);
}

SInt32 CreateStorage(const DataReference& reference, OSType creator, UInt32 flags, Movie* movie) {
  return CreateMovieStorage(reference.handle, reference.type, creator, kSystemScript, flags,
                            nullptr, movie);
}

SInt32 Resolve(const DataReference& reference, FSRef* file) {
  Boolean changed = 0;
  return FSResolveAlias(nullptr, reference.handle, file, &changed);
}

/// Removes what stands in the place of a new file.
void RemoveExisting(const DataReference& reference) {
  FSRef existing{};
  if (Resolve(reference, &existing) == noErr) GL_UnlinkObject(&existing);
}

/// Whether a folder has an object of a name: 0, -43 if it has none, or another status.
SInt32 LookUp(const FSRef* folder, CFStringRef name) {
  HFSUniStr255 record{};
  const SInt32 status = FSGetHFSUniStrFromString(name, &record);
  if (status) return status;
  FSRef found{};
  return FSMakeFSRefUnicode(folder, record.length, record.unicode, 0, &found);
}

/// An open data fork, closed at the end if it was opened here.
class DataFork {
 public:
  explicit DataFork(FSIORefNum given) : fork_(given) {}
  ~DataFork() {
    if (isOwn_) FSCloseFork(fork_);
  }
  DataFork(const DataFork&) = delete;
  DataFork& operator=(const DataFork&) = delete;
  SInt32 Open(const FSRef* file) {
    if (fork_ != 0) return noErr;
    const SInt32 status = GL_OpenDataFork(file, fsRdWrPerm, &fork_);
    isOwn_ = status == noErr;
    return status;
  }
  FSIORefNum get() const { return fork_; }

 private:
  FSIORefNum fork_;
  bool isOwn_ = false;
};

}  // namespace

SInt32 QT_CreateMovieFile(const FSRef* folder, CFStringRef name, OSType creator, UInt32 flags,
                          FSRef* file, Movie* movie) {
  *movie = nullptr;
  DataReference reference;
  SInt32 status =
      QTNewDataReferenceFromFSRefCFString(folder, name, 0, &reference.handle, &reference.type);
  if (!status) status = CreateStorage(reference, creator, flags, movie);
  return status ? status : Resolve(reference, file);
}

SInt32 QT_CreateMovieFileNew(const FSRef* folder, CFStringRef name, OSType creator, UInt32 flags,
                             FSRef* file, Movie* movie) {
  *movie = nullptr;
  DataReference reference;
  SInt32 status =
      QTNewDataReferenceFromFSRefCFString(folder, name, 0, &reference.handle, &reference.type);
  if (status) return status;
  for (SInt32 tries = 1;; ++tries) {
    status = CreateStorage(reference, creator, flags, movie);
    const bool goesOn = (flags & QT_CreateDeletesExisting) != 0 && status == fBsyErr;
    if (!goesOn || tries == kMostCreations) break;
    if (tries == 1) RemoveExisting(reference);
    Delay(kBusyWaitTicks, nullptr);
  }
  return status ? status : Resolve(reference, file);
}

SInt32 QT_CreateMovieFileWithIndex(const FSRef* folder, CFStringRef name, OSType creator,
                                   UInt32 flags, FSRef* file, Movie* movie) {
  *movie = nullptr;
  for (long index = 1;; ++index) {
    const Owned<CFStringRef> candidate(
        index == 1
            ? static_cast<CFStringRef>(CFRetain(name))
            : CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("%@ %ld"), name, index));
    const SInt32 status = LookUp(folder, candidate.get());
    const bool replaces = status == noErr && (flags & QT_CreateDeletesExisting) != 0;
    if (status == fnfErr || replaces)
      return QT_CreateMovieFile(folder, candidate.get(), creator, flags, file, movie);
    if (status != noErr && status != dupFNErr) return status;
  }
}

SInt32 QT_CreateReferenceMovie(Movie movie, Handle dataReference, OSType type, UInt32 flags,
                               OSType creator) {
  DataHandler handler = nullptr;
  SInt32 status = CreateMovieStorage(dataReference, type, creator, kSystemScript,
                                     flags | createMovieFileDontCreateMovie, &handler, nullptr);
  if (status) return status;
  status = AddMovieToStorage(movie, handler);
  const SInt32 closed = CloseMovieStorage(handler);
  return status ? status : closed;
}

SInt32 QT_OpenMovieFile(const FSRef* file, SInt16 flags, Movie* movie) {
  *movie = nullptr;
  DataReference reference;
  reference.type = "alis"_4cc;
  const SInt32 status = FSNewAlias(nullptr, file, &reference.handle);
  if (status) return status;
  SInt16 id = 0;
  return NewMovieFromDataRef(movie, flags, &id, reference.handle, reference.type);
}

SInt32 QT_SaveMovie(Movie movie, const FSRef* file, Boolean* isInFile) {
  DataReference reference;
  SInt32 status = MakeReference(file, &reference);
  DataHandler handler = nullptr;
  if (!status)
    status = OpenMovieStorage(reference.handle, reference.type, kReadWriteStorage, &handler);
  if (status) return status;
  if (*isInFile) {
    status = UpdateMovieInStorage(movie, handler);
  } else {
    status = AddMovieToStorage(movie, handler);
    if (!status) *isInFile = 1;
  }
  const SInt32 closed = CloseMovieStorage(handler);
  return status ? status : closed;
}

SInt32 QT_PutMovieForFileIntoHandle(Movie movie, const FSRef* file, Handle* handle) {
  *handle = NewHandle(0);
  if (*handle == nullptr) return MemError();
  DataReference reference;
  SInt32 status = MakeReference(file, &reference);
  if (!status)
    status = PutMovieForDataRefIntoHandle(movie, reference.handle, reference.type, *handle);
  if (status) GL_DisposeHandle(handle);
  return status;
}

SInt32 QT_SaveMovieOverNetwork(Movie movie, FSIORefNum fork, const FSRef* file) {
  DataFork open(fork);
  SInt32 status = open.Open(file);
  if (!status) status = QT_SetFileSizeInMdatHeader(open.get());
  Handle bytes = nullptr;
  if (!status) status = QT_PutMovieForFileIntoHandle(movie, file, &bytes);
  if (status) return status;
  status = FSWriteFork(open.get(), fsFromLEOF, 0, static_cast<ByteCount>(GetHandleSize(bytes)),
                       *bytes, nullptr);
  GL_DisposeHandle(&bytes);
  return status;
}

SInt32 QT_CloseMovieFile(SInt16* resourceFile) {
  const SInt32 status = CloseMovieFile(*resourceFile);
  *resourceFile = 0;
  return status;
}

SInt32 QT_GetMoviesFolder(Boolean create, FSRef* folder) {
  return FSFindFolder(kUserDomain, "mdoc"_4cc, create, folder);
}

SInt32 QT_Is_mov_File(const FSRef* file, Boolean* isMov) {
  constexpr SInt32 kLongestEnding = 5;
  *isMov = 0;
  CFStringRef name = nullptr;
  const SInt32 status = GL_CopyFileDirNameAsCFString(file, &name);
  if (status) return status;
  const Owned<CFStringRef> owned(name);
  const Owned<CFStringRef> ending(
      GL_CopyCFNameEndString(name, nullptr, kLongestEnding, kNameEndAtFullStop));
  *isMov = GL_EqualCFStr(ending.get(), CFSTR(".mov"));
  return noErr;
}

SInt32 QT_DeleteMovieFile(FSRef* file) {
  DataReference reference;
  SInt32 status = MakeReference(file, &reference);
  if (!status) status = DeleteMovieStorage(reference.handle, reference.type);
  *file = {};
  return status;
}

SInt32 QT_DeletePotentiallyBusyMovieFile(FSRef* file, SInt32 tries) {
  SInt32 status = noErr;
  SInt32 made = 0;
  do {
    Delay(kBusyWaitTicks, nullptr);
    FSRef target = *file;
    status = QT_DeleteMovieFile(&target);
  } while (++made < tries && status == fBsyErr);
  *file = {};
  return status;
}

SInt32 QT_TotallyDeleteMovieFile(const FSRef* file, Movie movie, SInt16 resourceFile) {
  if (file == nullptr) return noErr;
  GL_FileObjectElement* list = nullptr;
  SInt32 status = QT_GetMovieReferencedFiles(movie, &list);
  LL_DisposeLinkedList(quillmere::ListHead(&list));
  if (status) return QT_MovieFileReferencesUnknownErr;
  SInt16 open = resourceFile;
  if (open != 0) QT_CloseMovieFile(&open);
  if (resourceFile == 0) QT_DisposeMovie(&movie);
  FSRef target = *file;
  return QT_DeleteMovieFile(&target) == noErr ? SInt32{noErr}
                                              : SInt32{QT_CouldNotDeleteMovieFileErr};
}
