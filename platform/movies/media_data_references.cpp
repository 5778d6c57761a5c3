// The data references of media, of media_editing.h.

#include <cstring>
#include <utility>

#include "data_references.h"
#include "media_editing.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

Atom* ReferencesOf(Media media) {
  return TrackAtom(*media->track).FindPath({"mdia"_4cc, "minf"_4cc, "dinf"_4cc, "dref"_4cc});
}

}  // namespace

namespace quillmere::movies {

OSStatus AddReference(MediaRecord* media, Atom entry, const std::filesystem::path& path,
                      UInt16* index) {
  Atom* dref = ReferencesOf(media);
  constexpr std::size_t kMost = 0x7FFF;
  if (dref == nullptr || dref->payload().size() < 8) return invalidMedia;
  if (dref->children().size() >= kMost) return invalidDataRef;
  dref->Add(std::move(entry));
  const std::size_t count = dref->children().size();
  UInt8* const fields = dref->mutable_payload().data();
  fields[6] = static_cast<UInt8>(count >> 8);
  fields[7] = static_cast<UInt8>(count);
  media->given.resize(count);
  media->given.back().path = path;
  *index = static_cast<UInt16>(count);
  return noErr;
}

OSStatus FindOrAddReference(const MediaRecord& source, UInt16 source_index, MediaRecord* media,
                            UInt16* index) {
  std::filesystem::path wanted;
  OSStatus status = PathOfReference(source, source_index, &wanted);
  if (status != noErr) return status;
  const auto count = static_cast<UInt16>(CountReferences(*media));
  for (*index = 1; *index <= count; ++*index) {
    std::filesystem::path path;
    if (PathOfReference(*media, *index, &path) == noErr && IsSameFile(path, wanted)) return noErr;
  }
  Atom entry("alis"_4cc);
  std::vector<UInt8> bytes(4);
  const std::vector<UInt8> alias = AliasRecordOf(wanted);
  bytes.insert(bytes.end(), alias.begin(), alias.end());
  entry.set_payload(std::move(bytes));
  return AddReference(media, std::move(entry), wanted, index);
}

}  // namespace quillmere::movies

OSErr GetMediaDataRefCount(Media media, SInt16* count) {
  if (media == nullptr || count == nullptr)
    return Note(media == nullptr ? OSStatus{invalidMedia} : paramErr);
  *count = static_cast<SInt16>(CountReferences(*media));
  return Note(noErr);
}

OSErr GetMediaDataRef(Media media, SInt16 index, Handle* data_reference, OSType* type,
                      SInt32* attributes) {
  if (data_reference != nullptr) *data_reference = nullptr;
  if (media == nullptr) return Note(invalidMedia);
  const Atom* dref = ReferencesOf(media);
  if (dref == nullptr || index < 1 || static_cast<std::size_t>(index) > dref->children().size())
    return Note(invalidDataRef);
  DataReferenceEntry reference;
  const Atom& entry = dref->children()[static_cast<std::size_t>(index) - 1];
  if (!ReadDataReferenceEntry(entry, &reference)) return Note(invalidDataRef);
  std::filesystem::path path;
  const bool is_found = PathOfReference(*media, static_cast<UInt16>(index), &path) == noErr;
  const std::filesystem::path& own = media->track->movie->path;
  const bool is_self = reference.is_self || IsSameFile(path, own);
  if (type != nullptr) *type = reference.is_self ? "alis"_4cc : reference.type;
  if (attributes != nullptr)
    *attributes = (is_self ? dataRefSelfReference : 0) | (is_found ? 0 : dataRefWasNotResolved);
  if (data_reference == nullptr) return Note(noErr);
  const std::vector<UInt8> bytes =
      reference.is_self ? AliasRecordOf(own)
                        : std::vector<UInt8>(reference.data.begin(), reference.data.end());
  return Note(PtrToHand(bytes.data(), data_reference, static_cast<Size>(bytes.size())));
}

OSErr AddMediaDataRef(Media media, SInt16* index, Handle data_reference, OSType type) {
  if (media == nullptr) return Note(invalidMedia);
  if (data_reference == nullptr || *data_reference == nullptr) return Note(nilHandleErr);
  std::filesystem::path path;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status != noErr && type != "url "_4cc) return Note(status);
  Atom entry(type);
  std::vector<UInt8> bytes(4);
  const auto* data = reinterpret_cast<const UInt8*>(*data_reference);
  bytes.insert(bytes.end(), data, data + GetHandleSize(data_reference));
  entry.set_payload(std::move(bytes));
  UInt16 added = 0;
  status = AddReference(media, std::move(entry), path, &added);
  if (status == noErr && index != nullptr) *index = static_cast<SInt16>(added);
  return Note(status);
}
