#include "QT_Data_References.h"

#include <cstdlib>
#include <vector>

#include "GL_Aliases.h"
#include "GL_Errors.h"
#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "QT_Error_Keys.h"
#include "descriptions_private.h"
#include "media_editing.h"
#include "memory_handles.h"
#include "reference_counted.h"
#include "track_walks_private.h"

using quillmere::AtExit;
using quillmere::Owned;

namespace {

constexpr OSType kAlias = "alis"_4cc;

/// A data reference of a media, disposed of at the end.
class MediaReference {
 public:
  MediaReference() = default;
  ~MediaReference() { GL_DisposeHandle(&handle_); }
  MediaReference(const MediaReference&) = delete;
  MediaReference& operator=(const MediaReference&) = delete;

  SInt32 Fetch(Media media, SInt32 index) {
    return GetMediaDataRef(media, static_cast<SInt16>(index), &handle_, &type_, &attributes_);
  }
  bool IsAlias() const { return type_ == kAlias; }
  bool IsOwnFile() const { return (attributes_ & dataRefSelfReference) != 0; }
  bool IsResolved() const { return (attributes_ & dataRefWasNotResolved) == 0; }
  Handle handle() const { return handle_; }
  Handle Release() { return std::exchange(handle_, nullptr); }

 private:
  Handle handle_ = nullptr;
  OSType type_ = 0;
  SInt32 attributes_ = 0;
};

SInt32 Count(Media media, SInt16* count) {
  *count = 0;
  return GetMediaDataRefCount(media, count);
}

bool HasName(AliasHandle alias, CFStringRef name) {
  CFStringRef target = nullptr;
  if (GL_GetAliasNameAsCFStr(alias, &target) != noErr || target == nullptr) return false;
  const Owned<CFStringRef> owned(target);
  return GL_EqualCFStr(target, name) != 0;
}

/// Adds the files of a media's aliases to a list; false if one can't be found.
bool ListFiles(Media media, GL_FileObjectElement** list) {
  SInt16 count = 0;
  bool all = Count(media, &count) == noErr;
  for (SInt32 index = 1; index <= count; ++index) {
    MediaReference reference;
    if (reference.Fetch(media, index) != noErr) {
      all = false;
      continue;
    }
    if (!reference.IsAlias() || reference.IsOwnFile()) continue;
    FSRef file{};
    void* added = nullptr;
    if (GL_ResolveAliasSilently(reference.handle(), &file) != noErr ||
        LL_AddNewPtr(sizeof(GL_FileObjectElement), nullptr, quillmere::ListHead(list), &added) !=
            noErr) {
      all = false;
      continue;
    }
    static_cast<GL_FileObjectElement*>(added)->fileRef = file;
  }
  return all;
}

}  // namespace

SInt32 QT_ResolveMediaDataRef(Media media, SInt16 index, FSRef* file) {
  if (file == nullptr) return noErr;
  *file = {};
  MediaReference reference;
  const SInt32 status = reference.Fetch(media, index);
  if (status) return status;
  if (!reference.IsAlias()) return QT_DataRefNotFileErr;
  if (!reference.IsResolved()) return fnfErr;
  Boolean changed = 0;
  const SInt32 resolved = FSResolveAlias(nullptr, reference.handle(), file, &changed);
  if (resolved) *file = {};
  return resolved;
}

SInt32 QT_GetHighestDataRef(Media media, FSRef* file) {
  SInt16 count = 0;
  const SInt32 status = Count(media, &count);
  if (status && file != nullptr) *file = {};
  return status ? status : QT_ResolveMediaDataRef(media, count, file);
}

SInt32 QT_CheckForAliasDataRef(Media media, AliasHandle alias, Boolean add, SInt16* index) {
  SInt16 count = 0;
  SInt32 status = Count(media, &count);
  if (status) return status;
  SInt16 found = 0;
  for (SInt32 i = 1; i <= count && found == 0; ++i) {
    MediaReference reference;
    status = reference.Fetch(media, i);
    if (status) return status;
    SInt32 compared = noErr;
    if (reference.IsAlias() && GL_EqualAlias(alias, reference.handle(), &compared))
      found = static_cast<SInt16>(i);
  }
  if (found == 0 && add) status = AddMediaDataRef(media, &found, alias, kAlias);
  if (!status && index != nullptr) *index = found;
  return status;
}

SInt32 QT_GetMovieDataRefCount(Movie movie, OSType trackType, SInt32 flags, Boolean enabledOnly,
                               SInt32* count) {
  *count = 0;
  SInt32 status = movie != nullptr ? noErr : SInt32{invalidMovie};
  const auto add = [&](Track track) {
    SInt16 ofTrack = 0;
    status = Count(GetTrackMedia(track), &ofTrack);
    *count += ofTrack;
    return status == noErr;
  };
  if (trackType != 0) {
    const SInt32 selection = flags | (enabledOnly ? movieTrackEnabledOnly : 0);
    quillmere::WalkTracks(movie, {trackType, selection}, add);
  } else {
    quillmere::WalkTracks(movie, add);
  }
  return status;
}

SInt32 QT_FindDataRefByName(Movie movie, CFStringRef name, Track* track, SInt16* index,
                            Handle* dataReference) {
  if (dataReference == nullptr && (track == nullptr || index == nullptr)) return paramErr;
  if (track != nullptr) *track = nullptr;
  if (index != nullptr) *index = 0;
  if (dataReference != nullptr) *dataReference = nullptr;
  for (SInt32 number = 1;; ++number) {
    Track present = GetMovieIndTrack(movie, number);
    Media media = GetTrackMedia(present);
    SInt16 count = 0;
    const SInt32 status = Count(media, &count);
    if (status) return status;
    for (SInt32 i = 1; i <= count; ++i) {
      MediaReference reference;
      if (reference.Fetch(media, i) != noErr || !reference.IsAlias()) continue;
      if (!HasName(reference.handle(), name)) continue;
      if (track != nullptr) *track = present;
      if (index != nullptr) *index = static_cast<SInt16>(i);
      if (dataReference != nullptr) *dataReference = reference.Release();
      return noErr;
    }
  }
}

SInt32 QT_CopyDataReferences(Media source, Media destination) {
  SInt16 count = 0;
  SInt32 status = Count(source, &count);
  for (SInt32 index = 1; index <= count && !status; ++index) {
    MediaReference reference;
    status = reference.Fetch(source, index);
    if (!status) status = AddMediaDataRef(destination, nullptr, reference.handle(), kAlias);
  }
  return status;
}

SInt32 QT_CopyDataReferencesIfNeeded(Media source, Media destination, UInt16** map) {
  *map = nullptr;
  SInt16 count = 0;
  SInt32 status = Count(source, &count);
  if (status) return status;
  *map = static_cast<UInt16*>(std::malloc((static_cast<std::size_t>(count) + 1) * sizeof(UInt16)));
  if (*map == nullptr) return memFullErr;
  for (SInt32 index = 1; index <= count && !status; ++index) {
    MediaReference reference;
    SInt16 mapped = 0;
    status = reference.Fetch(source, index);
    if (!status) status = QT_CheckForAliasDataRef(destination, reference.handle(), 1, &mapped);
    if (!status) (*map)[index] = static_cast<UInt16>(mapped);
  }
  return status;
}

SInt32 QT_GetMovieReferencedFiles(Movie movie, GL_FileObjectElement** list) {
  if (list == nullptr) return noErr;
  *list = nullptr;
  bool all = movie != nullptr;
  const SInt32 count = GetMovieTrackCount(movie);
  for (SInt32 index = 1; index <= count; ++index) {
    const bool found = ListFiles(GetTrackMedia(GetMovieIndTrack(movie, index)), list);
    all = all && found;
  }
  LL_RemoveIdenticalElements(*list, GL_EqualFileRefLEPtrs, 1);
  return all ? SInt32{noErr} : SInt32{QT_CouldNotGetAllMovieFileReferencesErr};
}

SInt32 QT_DataRefIndexToStartTime(SInt16 index, Media media, SInt32* mediaTime) {
  constexpr SInt32 kBatch = 100;
  *mediaTime = -1;
  std::vector<SampleReference64Record> references(kBatch);
  Handle description = NewHandle(4);
  if (description == nullptr) return MemError();
  const AtExit dispose([&] { GL_DisposeHandle(&description); });
  const SInt32 end = GetMediaDuration(media);
  for (SInt64 time = 0; time < end;) {
    SInt32 count = 0;
    const SInt32 status =
        GetMediaSampleReferences64(media, static_cast<SInt32>(time), nullptr, description, nullptr,
                                   kBatch, &count, references.data());
    if (status) return status;
    if (count > 0 && quillmere::DataReferenceOf(description) == index) {
      *mediaTime = static_cast<SInt32>(time);
      return noErr;
    }
    const SInt64 before = time;
    for (SInt32 i = 0; i < count; ++i) {
      const SampleReference64Record& run = references[static_cast<std::size_t>(i)];
      time += SInt64{run.durationPerSample} * run.numberOfSamples;
    }
    if (time == before) return invalidSampleTable;
  }
  return media != nullptr ? noErr : SInt32{invalidMedia};
}
