#include "user_data.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

/// The atom that has the user data's `udta` as a child.
Atom* OwnerOf(const UserDataRecord& record) {
  if (record.media != nullptr) return TrackAtom(*record.media->track).Find("mdia"_4cc);
  return record.track != nullptr ? &TrackAtom(*record.track) : record.movie->file.movie.get();
}

Atom* ItemsOf(UserData user_data) {
  Atom* owner = user_data != nullptr ? OwnerOf(*user_data) : nullptr;
  return owner != nullptr ? owner->Find("udta"_4cc) : nullptr;
}

/// Position of an item among the children of `udta`; their number if there is none.
std::size_t FindItem(const Atom& udta, OSType type, SInt32 index) {
  const std::vector<Atom>& items = udta.children();
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (items[i].type() == type && --index == 0) return i;
  }
  return items.size();
}

UserData Find(std::unique_ptr<UserDataRecord>* kept, const UserDataRecord& record) {
  if (!*kept) *kept = std::make_unique<UserDataRecord>(record);
  NoteStatus(noErr);
  return kept->get();
}

}  // namespace

UserData GetMovieUserData(Movie movie) {
  if (movie != nullptr) return Find(&movie->user_data, {movie, nullptr, nullptr});
  NoteStatus(invalidMovie);
  return nullptr;
}

UserData GetTrackUserData(Track track) {
  if (track != nullptr) return Find(&track->user_data, {track->movie, track, nullptr});
  NoteStatus(invalidTrack);
  return nullptr;
}

UserData GetMediaUserData(Media media) {
  if (media != nullptr) return Find(&media->user_data, {media->track->movie, media->track, media});
  NoteStatus(invalidMedia);
  return nullptr;
}

OSErr GetUserData(UserData user_data, Handle data, OSType type, SInt32 index) {
  const Atom* udta = ItemsOf(user_data);
  if (user_data == nullptr || data == nullptr) return static_cast<OSErr>(paramErr);
  const std::size_t place = udta != nullptr ? FindItem(*udta, type, index) : 0;
  if (udta == nullptr || place == udta->children().size()) return userDataItemNotFound;
  std::vector<UInt8> bytes;
  const Atom& item = udta->children()[place];
  item.Write(&bytes);
  const std::size_t header = item.size_form() == SizeForm::k64 ? 16 : 8;
  SetHandleSize(data, static_cast<Size>(bytes.size() - header));
  if (MemError() != noErr) return MemError();
  std::memcpy(*data, bytes.data() + header, bytes.size() - header);
  return noErr;
}

OSErr AddUserData(UserData user_data, Handle data, OSType type) {
  if (user_data == nullptr || data == nullptr) return static_cast<OSErr>(paramErr);
  Atom* owner = OwnerOf(*user_data);
  if (owner == nullptr) return invalidMedia;
  Atom* udta = owner->Find("udta"_4cc);
  if (udta == nullptr) udta = &owner->Add(Atom("udta"_4cc));
  if (!udta->payload().empty()) return invalidMovie;  // it does not hold together
  Atom item(type);
  const auto* bytes = reinterpret_cast<const UInt8*>(*data);
  item.set_payload({bytes, bytes + GetHandleSize(data)});
  udta->Add(std::move(item));
  ++user_data->movie->metadata_changes;
  return noErr;
}

OSErr RemoveUserData(UserData user_data, OSType type, SInt32 index) {
  if (user_data == nullptr) return static_cast<OSErr>(paramErr);
  Atom* udta = ItemsOf(user_data);
  const std::size_t place = udta != nullptr ? FindItem(*udta, type, index) : 0;
  if (udta == nullptr || place == udta->children().size()) return userDataItemNotFound;
  udta->children().erase(udta->children().begin() + static_cast<std::ptrdiff_t>(place));
  ++user_data->movie->metadata_changes;
  return noErr;
}

SInt32 CountUserDataType(UserData user_data, OSType type) {
  const Atom* udta = ItemsOf(user_data);
  if (udta == nullptr) return 0;
  return static_cast<SInt32>(std::ranges::count(udta->children(), type, &Atom::type));
}

OSType GetNextUserDataType(UserData user_data, OSType type) {
  const Atom* udta = ItemsOf(user_data);
  if (udta == nullptr) return 0;
  const std::vector<Atom>& items = udta->children();
  const auto is_first = [&](std::size_t i) { return FindItem(*udta, items[i].type(), 1) == i; };
  bool is_behind = type == 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!is_first(i)) continue;
    if (is_behind) return items[i].type();
    is_behind = items[i].type() == type;
  }
  return 0;
}
