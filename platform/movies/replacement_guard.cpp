#include "replacement_guard.h"

#include <sys/stat.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "data_references.h"
#include "movie_file.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// Device and inode.
using FileIdentity = std::pair<UInt64, UInt64>;

bool IdentityOf(const std::filesystem::path& path, FileIdentity* identity) {
  struct stat information = {};
  if (stat(path.c_str(), &information) != 0) return false;
  *identity = {information.st_dev, information.st_ino};
  return true;
}

class Guard {
 public:
  void Protect(const FileIdentity& identity, const std::filesystem::path& path) {
    const std::scoped_lock lock(mutex_);
    Entry& entry = files_[identity];
    ++entry.count;
    entry.path = path;
    media_is_known_ = false;
  }

  void Release(const FileIdentity& identity) {
    const std::scoped_lock lock(mutex_);
    const auto place = files_.find(identity);
    if (place == files_.end() || --place->second.count > 0) return;
    files_.erase(place);
    media_is_known_ = false;
  }

  bool Holds(const FileIdentity& identity) {
    const std::scoped_lock lock(mutex_);
    if (files_.empty()) return false;
    if (files_.contains(identity)) return true;
    if (!std::exchange(media_is_known_, true)) CollectMedia();
    return media_.contains(identity);
  }

 private:
  struct Entry {
    int count = 0;
    std::filesystem::path path;
  };

  /// The files that the protected movies' media lies in.
  void CollectMedia() {
    media_.clear();
    for (const auto& [identity, entry] : files_) {
      std::unique_ptr<MovieRecord> movie;
      if (!LooksLikeMovie(entry.path) || OpenMovieAt(entry.path, &movie) != noErr) continue;
      for (const auto& source : ReferencedSources(*movie)) {
        media_.insert({source->identity().device, source->identity().inode});
      }
    }
  }

  std::mutex mutex_;
  std::map<FileIdentity, Entry> files_;
  std::set<FileIdentity> media_;
  bool media_is_known_ = false;
};

Guard& TheGuard() {
  static Guard guard;
  return guard;
}

}  // namespace

OSStatus ProtectFromReplacement(const FSRef& file, bool protect) {
  std::filesystem::path path;
  const OSStatus status = files::PathOf(file, &path);
  if (status != noErr) return status;
  FileIdentity identity;
  if (!IdentityOf(path, &identity)) return fnfErr;
  if (protect) {
    TheGuard().Protect(identity, path);
  } else {
    TheGuard().Release(identity);
  }
  return noErr;
}

bool IsProtectedFromReplacement(const std::filesystem::path& path) {
  FileIdentity identity;
  return IdentityOf(path, &identity) && TheGuard().Holds(identity);
}

}  // namespace quillmere::movies
