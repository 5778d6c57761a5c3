/// Writing into movie files that are there already: media data behind what they hold, and a new
/// movie in the place of the old one.
///
/// At every moment the file is one that opens: data lies in an atom that reaches to the file's end
/// until it is closed, and the old movie stays valid until the new one is on the disk.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

#include "base_types.h"
#include "descriptor.h"

namespace quillmere::movies {

/// Appends media data to a file. All who write to one file at the same time share the writer; a
/// writer's calls may come from any thread.
class MediaDataWriter {
 public:
  /// Opens the file at a path, which has to be there. badPublicMovieAtom for one that doesn't end
  /// with an atom.
  static OSStatus Open(const std::filesystem::path& path, std::shared_ptr<MediaDataWriter>* writer);
  /// Appends bytes, which may stay in memory until Flush; `offset` takes where they will lie.
  OSStatus Append(std::span<const UInt8> bytes, UInt64* offset);
  OSStatus Flush();
  /// Gives up one's share. What the last one writes ends the data's atom.
  static OSStatus Release(std::shared_ptr<MediaDataWriter>* writer);

  /// Ends the atom of whoever writes to a file; what is written later begins another one.
  static OSStatus CloseDataOf(UInt64 device, UInt64 inode);

  MediaDataWriter(const MediaDataWriter&) = delete;
  MediaDataWriter& operator=(const MediaDataWriter&) = delete;
  ~MediaDataWriter();

 private:
  MediaDataWriter() = default;
  static std::shared_ptr<MediaDataWriter> FindLocked(UInt64 device, UInt64 inode);
  OSStatus FlushLocked();
  OSStatus Finish();

  std::mutex mutex_;
  files::Descriptor file_;
  UInt64 device_ = 0;
  UInt64 inode_ = 0;
  UInt64 header_ = 0;  ///< where the data's atom begins
  UInt64 end_ = 0;     ///< behind the bytes in the file
  bool has_header_ = false;
  std::vector<UInt8> buffer_;
};

/// Puts a movie, whole with its header, into a file instead of the one it has. All others that it
/// has become free room. An error leaves the old movie.
OSStatus StoreMovieAtom(const std::filesystem::path& path, std::span<const UInt8> movie);

/// The atom that a QuickTime file starts with.
void AppendFileType(std::vector<UInt8>* out);

}  // namespace quillmere::movies
