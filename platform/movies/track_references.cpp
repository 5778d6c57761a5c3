#include "track_references.h"

#include "big_endian.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

constexpr std::size_t kIdSize = 4;

/// The atom of a type's references; null if there is none.
Atom* ReferencesOf(Track track, OSType type) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  return track != nullptr ? TrackAtom(*track).FindPath({"tref"_4cc, type}) : nullptr;
}

SInt32 CountOf(const Atom* references) {
  return references != nullptr ? static_cast<SInt32>(references->payload().size() / kIdSize) : 0;
}

}  // namespace

OSErr AddTrackReference(Track track, Track referenced, OSType type, SInt32* index) {
  if (track == nullptr || referenced == nullptr || track->movie != referenced->movie)
    return Note(invalidTrack);
  Atom* references = ReferencesOf(track, type);
  if (references == nullptr) {
    Atom& trak = TrackAtom(*track);
    Atom* tref = trak.Find("tref"_4cc);
    if (tref == nullptr) tref = &trak.Insert(trak.children().empty() ? 0 : 1, Atom("tref"_4cc));
    references = &tref->Add(Atom(type));
  }
  std::vector<UInt8> ids(references->payload().begin(), references->payload().end());
  ids.resize(ids.size() / kIdSize * kIdSize);
  quillmere::AppendU32(&ids, TrackHeaderOf(*referenced).id);
  references->set_payload(std::move(ids));
  if (index != nullptr) *index = CountOf(references);
  return Note(noErr);
}

Track GetTrackReference(Track track, OSType type, SInt32 index) {
  const Atom* references = ReferencesOf(track, type);
  if (index < 1 || index > CountOf(references)) return nullptr;
  const UInt8* ids = references->payload().data();
  const UInt32 id = quillmere::ReadU32(ids + (static_cast<std::size_t>(index) - 1) * kIdSize);
  for (const auto& other : track->movie->tracks) {
    if (TrackHeaderOf(*other).id == id) return other.get();
  }
  return nullptr;
}

SInt32 GetTrackReferenceCount(Track track, OSType type) {
  return CountOf(ReferencesOf(track, type));
}

OSType GetNextTrackReferenceType(Track track, OSType type) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  const Atom* tref = track != nullptr ? TrackAtom(*track).Find("tref"_4cc) : nullptr;
  if (tref == nullptr) return 0;
  bool is_behind = type == 0;
  for (const Atom& references : tref->children()) {
    if (is_behind) return references.type();
    is_behind = references.type() == type;
  }
  return 0;
}
