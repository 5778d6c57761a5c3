// The sample descriptions of a media (image_descriptions.h).

#include <cstring>
#include <vector>

#include "image_descriptions.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

/// The media's `stsd`, null if it has none.
Atom* DescriptionsOf(Media media) {
  if (media == nullptr) return nullptr;
  Atom* const stbl = SampleTableAtom(*media->track);
  return stbl != nullptr ? stbl->Find("stsd"_4cc) : nullptr;
}

/// The entry at an index, from 1; null outside.
Atom* EntryAt(Atom* stsd, SInt32 index) {
  if (index < 1 || static_cast<std::size_t>(index) > stsd->children().size()) return nullptr;
  return &stsd->children()[static_cast<std::size_t>(index) - 1];
}

OSStatus CopyDescription(Media media, SInt32 index, SampleDescriptionHandle description) {
  Atom* const stsd = DescriptionsOf(media);
  if (stsd == nullptr) return invalidMedia;
  if (description == nullptr) return paramErr;
  const Atom* const entry = EntryAt(stsd, index);
  if (entry == nullptr) return paramErr;
  std::vector<UInt8> record;
  const OSStatus status = MakeDescriptionRecord(*entry, MediaTypeOf(*media->track), &record);
  if (status) return status;
  const auto size = static_cast<Size>(record.size());
  SetHandleSize(description, size);
  if (GetHandleSize(description) != size) return memFullErr;
  std::memcpy(*description, record.data(), record.size());
  return noErr;
}

}  // namespace

void GetMediaSampleDescription(Media media, SInt32 index, SampleDescriptionHandle description) {
  NoteStatus(CopyDescription(media, index, description));
}

SInt32 GetMediaSampleDescriptionCount(Media media) {
  const Atom* const stsd = DescriptionsOf(media);
  NoteStatus(stsd != nullptr ? OSStatus{noErr} : OSStatus{invalidMedia});
  return stsd != nullptr ? static_cast<SInt32>(stsd->children().size()) : 0;
}

OSErr SetMediaSampleDescription(Media media, SInt32 index, SampleDescriptionHandle description) {
  Atom* const stsd = DescriptionsOf(media);
  if (stsd == nullptr) return Note(invalidMedia);
  Atom* const entry = EntryAt(stsd, index);
  if (entry == nullptr || description == nullptr || *description == nullptr) return Note(paramErr);
  Atom made(0);
  const auto* bytes = reinterpret_cast<const UInt8*>(*description);
  const OSStatus status =
      MakeDescriptionAtom({bytes, static_cast<std::size_t>(GetHandleSize(description))},
                          MediaTypeOf(*media->track), &made);
  if (!status) *entry = std::move(made);
  return Note(status);
}
