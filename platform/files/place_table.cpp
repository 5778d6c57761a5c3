#include "place_table.h"

namespace quillmere::files {
namespace {

std::string Join(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!name.empty() && !path.ends_with('/')) path += '/';
  path += name;
  return path;
}

struct FolderAndName {
  std::string_view folder;
  std::string_view name;
};

FolderAndName Split(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {"/", path};
  return {slash == 0 ? std::string_view("/") : path.substr(0, slash), path.substr(slash + 1)};
}

}  // namespace

std::size_t PlaceTable::PlaceHash::operator()(const PlaceKey& key) const {
  return std::hash<std::string_view>()(key.name) ^ (key.folder * 0x9E3779B97F4A7C15U);
}

std::size_t PlaceTable::PlaceHash::operator()(UInt32 place) const {
  return (*this)(PlaceKey{(*places)[place].folder, (*places)[place].name});
}

std::size_t PlaceTable::IdentityHash::operator()(const ObjectIdentity& identity) const {
  UInt64 hash = identity.inode * 0x9E3779B97F4A7C15U;
  hash ^= identity.device + (hash >> 29);
  hash ^= identity.birth_nanoseconds * 0xBF58476D1CE4E5B9U;
  return hash ^ (hash >> 32);
}

UInt32 PlaceTable::NumberOfFolder(std::string_view path) {
  const std::lock_guard lock(mutex_);
  return FolderNumber(path);
}

Sighting PlaceTable::See(const ObjectIdentity& identity, UInt32 folder, std::string_view name) {
  const std::lock_guard lock(mutex_);
  return SeeLocked(identity, folder, name);
}

void PlaceTable::Move(const ObjectIdentity& identity, std::string_view new_path, bool is_folder) {
  const std::lock_guard lock(mutex_);
  const auto seen = last_seen_.find(identity);
  if (is_folder && seen != last_seen_.end()) {
    std::string from = AfterMoves(PathOfPlace(seen->second.place), seen->second.moves);
    moves_.push_back({std::move(from), std::string(new_path)});
  }
  const FolderAndName place = Split(new_path);
  SeeLocked(identity, FolderNumber(place.folder), place.name);
}

std::vector<std::string> PlaceTable::Candidates(const ObjectIdentity& identity,
                                                Sighting own) const {
  const std::lock_guard lock(mutex_);
  const auto seen = last_seen_.find(identity);
  // Bytes that are no reference of this process lead nowhere.
  if (seen == last_seen_.end() || own.place >= places_.size()) return {};
  const Sighting last = seen->second;
  std::vector<std::string> paths = {PathOfPlace(own.place)};
  if (last.place != own.place) paths.push_back(PathOfPlace(last.place));
  for (const Sighting& sighting : {own, last}) {
    if (sighting.moves < moves_.size()) {
      paths.push_back(AfterMoves(PathOfPlace(sighting.place), sighting.moves));
    }
  }
  return paths;
}

void PlaceTable::Exchange(const ObjectIdentity& a, const ObjectIdentity& b) {
  const std::lock_guard lock(mutex_);
  std::swap(exchanged_.try_emplace(a, a).first->second, exchanged_.try_emplace(b, b).first->second);
  has_exchanges_ = true;
}

ObjectIdentity PlaceTable::ObjectOf(const ObjectIdentity& inode) const {
  if (!has_exchanges_) return inode;
  const std::lock_guard lock(mutex_);
  const auto found = exchanged_.find(inode);
  return found == exchanged_.end() ? inode : found->second;
}

std::vector<ObjectIdentity> PlaceTable::Numbered(UInt64 device, UInt64 inode) const {
  const std::lock_guard lock(mutex_);
  std::vector<ObjectIdentity> found;
  for (const auto& [identity, sighting] : last_seen_) {
    if (identity.device == device && identity.inode == inode) found.push_back(identity);
  }
  return found;
}

UInt32 PlaceTable::FolderNumber(std::string_view path) {
  const auto [entry, is_new] =
      folder_numbers_.try_emplace(std::string(path), static_cast<UInt32>(folders_.size()));
  if (is_new) folders_.emplace_back(path);
  return entry->second;
}

Sighting PlaceTable::SeeLocked(const ObjectIdentity& identity, UInt32 folder,
                               std::string_view name) {
  const auto found = place_numbers_.find(PlaceKey{folder, name});
  UInt32 place = 0;
  if (found != place_numbers_.end()) {
    place = *found;
  } else {
    place = static_cast<UInt32>(places_.size());
    places_.push_back({folder, std::string(name)});
    place_numbers_.insert(place);
  }
  const Sighting sighting = {place, static_cast<UInt32>(moves_.size())};
  last_seen_.insert_or_assign(identity, sighting);
  return sighting;
}

std::string PlaceTable::PathOfPlace(UInt32 place) const {
  return Join(folders_[places_[place].folder], places_[place].name);
}

std::string PlaceTable::AfterMoves(std::string path, UInt32 first_move) const {
  for (std::size_t i = first_move; i < moves_.size(); ++i) {
    const FolderMove& move = moves_[i];
    const bool is_beneath = path.starts_with(move.from) &&
                            (path.size() == move.from.size() || path[move.from.size()] == '/');
    if (is_beneath) path.replace(0, move.from.size(), move.to);
  }
  return path;
}

PlaceTable& Places() {
  static auto* table = new PlaceTable;
  return *table;
}

}  // namespace quillmere::files
