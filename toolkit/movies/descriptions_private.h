/// Fields of sample descriptions, native, that the sources of the movie library read.
#pragma once

#include <cstring>

#include "GL_Memory.h"
#include "image_descriptions.h"
#include "memory_handles.h"
#include "movie_toolbox.h"

namespace quillmere {

/// A number in a description's record; 0 where it is too short.
template <class T>
T FieldOf(Handle description, std::size_t offset) {
  T value{};
  if (description != nullptr &&
      GetHandleSize(description) >= static_cast<Size>(offset + sizeof value))
    std::memcpy(&value, *description + offset, sizeof value);
  return value;
}

inline OSType FormatOf(Handle description) {
  return FieldOf<OSType>(description, 4);
}
inline UInt16 DataReferenceOf(Handle description) {
  return FieldOf<UInt16>(description, 14);
}

/// A description of a media, from 1, disposed of at the end; null if there is none.
class MediaDescription {
 public:
  MediaDescription(Media media, SInt32 index) : handle_(NewHandle(4)) {
    GetMediaSampleDescription(media, index, handle_);
    status_ = GetMoviesError();
    if (status_ != noErr) GL_DisposeHandle(&handle_);
  }
  ~MediaDescription() { GL_DisposeHandle(&handle_); }
  MediaDescription(const MediaDescription&) = delete;
  MediaDescription& operator=(const MediaDescription&) = delete;

  Handle get() const { return handle_; }
  SInt32 status() const { return status_; }

 private:
  Handle handle_;
  SInt32 status_ = noErr;
};

/// The format of a media's description; 0 if there is none.
inline OSType FormatOf(Media media, SInt32 index) {
  return FormatOf(MediaDescription(media, index).get());
}

/// Calls `visit(description)` for the descriptions of a media until it gives false.
template <class Visit>
void WalkDescriptions(Media media, Visit visit) {
  const SInt32 count = GetMediaSampleDescriptionCount(media);
  for (SInt32 index = 1; index <= count; ++index) {
    const MediaDescription description(media, index);
    if (!visit(description.get())) return;
  }
}

}  // namespace quillmere
