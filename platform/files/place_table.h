/// Where the objects that references were made of have been seen.
///
/// A place is a folder's path and a name in it, stored once however often it is seen. Names are
/// bytes: they need not be valid UTF-8. Moves of folders are logged, so that what was seen beneath
/// them is found again. All members may be called from any thread.
#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base_types.h"
#include "file_references.h"

namespace quillmere::files {

/// What identifies an object for as long as it exists. An inode's number is used again after a
/// deletion; its number together with its birth time is not.
struct ObjectIdentity {
  UInt64 device;
  UInt64 inode;
  SInt64 birth_seconds;
  UInt64 birth_nanoseconds;
  friend bool operator==(const ObjectIdentity&, const ObjectIdentity&) = default;
};

/// A place, and how many moves of folders had been logged when an object was seen there.
struct Sighting {
  UInt32 place;
  UInt32 moves;
};

class PlaceTable {
 public:
  PlaceTable() = default;
  PlaceTable(const PlaceTable&) = delete;
  PlaceTable& operator=(const PlaceTable&) = delete;

  /// The number of a folder by its absolute path without a slash at the end ("/" apart).
  UInt32 NumberOfFolder(std::string_view path);
  /// Notes that an object was seen as `name` in a folder; the root is the empty name in "/".
  Sighting See(const ObjectIdentity& identity, UInt32 folder, std::string_view name);
  /// Notes that an object was moved to a path; for a folder, with all that is in it.
  void Move(const ObjectIdentity& identity, std::string_view new_path, bool is_folder);
  /// Notes that two files of these identities have exchanged their content: each is from now on
  /// found where the other's inode is.
  void Exchange(const ObjectIdentity& a, const ObjectIdentity& b);
  /// The object that an inode stands for: itself unless it was exchanged.
  ObjectIdentity ObjectOf(const ObjectIdentity& inode) const;
  /// The objects that have been seen with this number on a device.
  std::vector<ObjectIdentity> Numbered(UInt64 device, UInt64 inode) const;
  /// The paths at which an object may be, the likeliest first: where its reference saw it, where it
  /// was seen last, and both again after the moves of folders since then.
  std::vector<std::string> Candidates(const ObjectIdentity& identity, Sighting own) const;

 private:
  struct Place {
    UInt32 folder;
    std::string name;
  };
  struct PlaceKey {
    UInt32 folder;
    std::string_view name;
  };
  struct FolderMove {
    std::string from;
    std::string to;
  };
  /// Compare numbers of places by what they stand for.
  struct PlaceHash {
    using is_transparent = void;
    const std::vector<Place>* places;
    std::size_t operator()(const PlaceKey& key) const;
    std::size_t operator()(UInt32 place) const;
  };
  struct PlaceEqual {
    using is_transparent = void;
    const std::vector<Place>* places;
    PlaceKey KeyOf(UInt32 place) const { return {(*places)[place].folder, (*places)[place].name}; }
    PlaceKey KeyOf(const PlaceKey& key) const { return key; }
    template <class A, class B>
    bool operator()(const A& a, const B& b) const {
      const PlaceKey left = KeyOf(a);
      const PlaceKey right = KeyOf(b);
      return left.folder == right.folder && left.name == right.name;
    }
  };
  struct IdentityHash {
    std::size_t operator()(const ObjectIdentity& identity) const;
  };

  UInt32 FolderNumber(std::string_view path);
  Sighting SeeLocked(const ObjectIdentity& identity, UInt32 folder, std::string_view name);
  std::string PathOfPlace(UInt32 place) const;
  std::string AfterMoves(std::string path, UInt32 first_move) const;

  mutable std::mutex mutex_;
  std::vector<std::string> folders_;
  std::unordered_map<std::string, UInt32> folder_numbers_;
  std::vector<Place> places_;
  std::unordered_set<UInt32, PlaceHash, PlaceEqual> place_numbers_{0, PlaceHash{&places_},
                                                                   PlaceEqual{&places_}};
  std::unordered_map<ObjectIdentity, Sighting, IdentityHash> last_seen_;
  std::vector<FolderMove> moves_;
  /// Which object an inode stands for, where it is not its own; `has_exchanges_` spares the look.
  std::unordered_map<ObjectIdentity, ObjectIdentity, IdentityHash> exchanged_;
  std::atomic<bool> has_exchanges_{false};
};

/// The process's table.
PlaceTable& Places();

/// The identity that a reference holds.
ObjectIdentity IdentityIn(const FSRef& reference);
/// The reference of an object that was seen before; fnfErr if it is there no more.
OSStatus ReferenceOfObject(const ObjectIdentity& object, FSRef* reference);
/// The reference of an object that was just seen as `name` in a folder that has a number in the
/// table; `inode` is what the system says of it.
FSRef ReferenceOfSeen(const ObjectIdentity& inode, UInt32 folder_number, std::string_view name);

}  // namespace quillmere::files
