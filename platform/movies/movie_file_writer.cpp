#include "movie_file_writer.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "big_endian.h"
#include "data_source.h"
#include "file_calls.h"
#include "file_references.h"
#include "movie_file.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

constexpr UInt64 kMaximum32 = std::numeric_limits<UInt32>::max();
constexpr std::size_t kHeaderSize = 8;
/// An empty `wide` atom, whose room a 64-bit size can take, and the header of the data.
constexpr std::size_t kDataHeaderSize = 16;
constexpr std::size_t kBufferSize = std::size_t{1} << 20;

OSStatus WriteAt(int file, UInt64 offset, std::span<const UInt8> bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        files::WriteBytesAt(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return files::StatusOfErrno(errno);
    offset += static_cast<UInt64>(written);
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return noErr;
}

OSStatus StatusOf(int result) {
  return result == 0 ? OSStatus{noErr} : OSStatus{files::StatusOfErrno(errno)};
}

std::vector<UInt8> AtomHeader(OSType type, UInt64 size) {
  std::vector<UInt8> bytes;
  AppendU32(&bytes, static_cast<UInt32>(size));
  AppendU32(&bytes, type);
  return bytes;
}

/// Gives an atom a size that reaches to `end`; in 64 bits only where an empty `wide` atom before it
/// leaves room.
OSStatus CloseAtom(int file, const TopLevelAtom& atom, bool has_room, UInt64 end) {
  const UInt64 size = end - atom.offset;
  std::vector<UInt8> header;
  if (atom.header_size == kHeaderSize && size <= kMaximum32)
    return WriteAt(file, atom.offset, AtomHeader(atom.type, size));
  if (atom.header_size == 2 * kHeaderSize) {
    header = AtomHeader(atom.type, 1);
    AppendU64(&header, size);
    return WriteAt(file, atom.offset, header);
  }
  if (!has_room) return badPublicMovieAtom;
  header = AtomHeader(atom.type, 1);
  AppendU64(&header, size + kHeaderSize);
  return WriteAt(file, atom.offset - kHeaderSize, header);
}

/// What an open file holds, from its start to its end; badPublicMovieAtom where that is not atoms
/// all through.
OSStatus ListAtoms(int file, std::vector<TopLevelAtom>* atoms, UInt64* end) {
  struct stat info = {};
  if (fstat(file, &info) != 0) return files::StatusOfErrno(errno);
  *end = static_cast<UInt64>(info.st_size);
  const OSStatus status = ReadTopLevelAtoms(file, *end, atoms);
  if (status != noErr) return status;
  const UInt64 told = atoms->empty() ? 0 : atoms->back().offset + atoms->back().size;
  return told == *end ? OSStatus{noErr} : OSStatus{badPublicMovieAtom};
}

/// Readies a file for atoms behind those it has: the last one may have reached to the file's end,
/// or been cut off there.
OSStatus ListAndCloseAtoms(int file, std::vector<TopLevelAtom>* atoms, UInt64* end) {
  const OSStatus status = ListAtoms(file, atoms, end);
  if (status != noErr || atoms->empty()) return status;
  const TopLevelAtom& last = atoms->back();
  if (!last.to_end && !last.truncated) return noErr;
  const bool has_room = atoms->size() > 1 && (*atoms)[atoms->size() - 2].type == "wide"_4cc &&
                        (*atoms)[atoms->size() - 2].size == kHeaderSize;
  return CloseAtom(file, last, has_room, *end);
}

OSStatus OpenForWriting(const std::filesystem::path& path, files::Descriptor* file,
                        struct stat* info) {
  *file = files::Descriptor(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file->IsOpen() || fstat(file->get(), info) != 0) return files::StatusOfErrno(errno);
  return S_ISREG(info->st_mode) ? OSStatus{noErr} : OSStatus{paramErr};
}

/// The writers that are open now.
struct OpenWriters {
  std::mutex mutex;
  std::vector<std::weak_ptr<MediaDataWriter>> writers;
};

OpenWriters& Writers() {
  static OpenWriters writers;
  return writers;
}

/// Room for a new movie: a free atom that it fills or leaves a header's room in, or the file's end.
struct Room {
  UInt64 offset;
  UInt64 size;  ///< of the free atom; 0 at the end of the file
};

Room FindRoom(const std::vector<TopLevelAtom>& atoms, UInt64 wanted, UInt64 end) {
  const auto fits = [wanted](const TopLevelAtom& atom) {
    return (atom.type == "free"_4cc || atom.type == "skip"_4cc) &&
           (atom.size == wanted || atom.size >= wanted + kHeaderSize);
  };
  const auto found = std::ranges::find_if(atoms, fits);
  return found != atoms.end() ? Room{found->offset, found->size} : Room{end, 0};
}

/// Writes a movie into its room as what is still free, so that only a header's change makes it the
/// movie.
OSStatus WriteHidden(int file, const Room& room, std::span<const UInt8> movie) {
  OSStatus status = noErr;
  if (room.size > movie.size())
    status =
        WriteAt(file, room.offset + movie.size(), AtomHeader("free"_4cc, room.size - movie.size()));
  if (status == noErr && room.size == 0)
    status = WriteAt(file, room.offset, AtomHeader("free"_4cc, movie.size()));
  if (status == noErr)
    status = WriteAt(file, room.offset + kHeaderSize, movie.subspan(kHeaderSize));
  if (status == noErr) status = StatusOf(files::FlushContent(file));
  return status;
}

OSStatus StoreInOpenFile(int file, std::span<const UInt8> movie) {
  std::vector<TopLevelAtom> atoms;
  UInt64 end = 0;
  OSStatus status = ListAndCloseAtoms(file, &atoms, &end);
  if (status != noErr) return status;
  const Room room = FindRoom(atoms, movie.size(), end);
  status = WriteHidden(file, room, movie);
  if (status == noErr) status = WriteAt(file, room.offset, movie.first(kHeaderSize));
  if (status != noErr) {
    if (room.size == 0) files::SetSize(file, static_cast<off_t>(end));
    return status;
  }
  constexpr UInt8 kFree[] = {'f', 'r', 'e', 'e'};
  status = StatusOf(files::FlushContent(file));
  for (const TopLevelAtom& atom : atoms) {
    if (atom.type != "moov"_4cc || status != noErr) continue;
    status = WriteAt(file, atom.offset + 4, kFree);
  }
  return status == noErr ? StatusOf(files::FlushContent(file)) : status;
}

}  // namespace

OSStatus MediaDataWriter::Open(const std::filesystem::path& path,
                               std::shared_ptr<MediaDataWriter>* writer) {
  files::Descriptor file;
  struct stat info = {};
  OSStatus status = OpenForWriting(path, &file, &info);
  if (status != noErr) return status;
  OpenWriters& open = Writers();
  const std::scoped_lock lock(open.mutex);
  std::erase_if(open.writers, [](const auto& each) { return each.expired(); });
  *writer = FindLocked(info.st_dev, info.st_ino);
  if (*writer) return noErr;
  std::vector<TopLevelAtom> atoms;
  UInt64 end = 0;
  status = ListAndCloseAtoms(file.get(), &atoms, &end);
  if (status != noErr) return status;
  std::shared_ptr<MediaDataWriter> made(new MediaDataWriter);
  made->file_ = std::move(file);
  made->device_ = info.st_dev;
  made->inode_ = info.st_ino;
  open.writers.push_back(made);
  *writer = std::move(made);
  return noErr;
}

std::shared_ptr<MediaDataWriter> MediaDataWriter::FindLocked(UInt64 device, UInt64 inode) {
  for (const auto& each : Writers().writers) {
    std::shared_ptr<MediaDataWriter> writer = each.lock();
    if (writer && writer->device_ == device && writer->inode_ == inode) return writer;
  }
  return nullptr;
}

OSStatus MediaDataWriter::CloseDataOf(UInt64 device, UInt64 inode) {
  const std::scoped_lock lock(Writers().mutex);
  const std::shared_ptr<MediaDataWriter> writer = FindLocked(device, inode);
  return writer ? writer->Finish() : OSStatus{noErr};
}

OSStatus MediaDataWriter::Append(std::span<const UInt8> bytes, UInt64* offset) {
  const std::scoped_lock lock(mutex_);
  if (!has_header_) {
    struct stat info = {};
    if (fstat(file_.get(), &info) != 0) return files::StatusOfErrno(errno);
    header_ = end_ = static_cast<UInt64>(info.st_size);
    std::vector<UInt8> header = AtomHeader("wide"_4cc, kHeaderSize);
    const std::vector<UInt8> data = AtomHeader("mdat"_4cc, 0);  // to the end of the file
    header.insert(header.end(), data.begin(), data.end());
    const OSStatus status = WriteAt(file_.get(), end_, header);
    if (status != noErr) return status;
    end_ += kDataHeaderSize;
    has_header_ = true;
  }
  OSStatus status = buffer_.size() + bytes.size() > kBufferSize ? FlushLocked() : noErr;
  if (status != noErr) return status;
  *offset = end_ + buffer_.size();
  if (bytes.size() < kBufferSize) {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    return noErr;
  }
  status = WriteAt(file_.get(), end_, bytes);
  if (status == noErr) end_ += bytes.size();
  return status;
}

OSStatus MediaDataWriter::Flush() {
  const std::scoped_lock lock(mutex_);
  return FlushLocked();
}

OSStatus MediaDataWriter::FlushLocked() {
  const OSStatus status = WriteAt(file_.get(), end_, buffer_);
  if (status == noErr) {
    end_ += buffer_.size();
    buffer_.clear();
  }
  return status;
}

OSStatus MediaDataWriter::Finish() {
  const std::scoped_lock lock(mutex_);
  const OSStatus status = FlushLocked();
  if (!std::exchange(has_header_, false)) return status;
  const TopLevelAtom data = {"mdat"_4cc, header_ + kHeaderSize, 0, kHeaderSize, false, true};
  const OSStatus closed = CloseAtom(file_.get(), data, true, end_);
  return status != noErr ? status : closed;
}

OSStatus MediaDataWriter::Release(std::shared_ptr<MediaDataWriter>* writer) {
  const std::scoped_lock lock(Writers().mutex);
  std::shared_ptr<MediaDataWriter> released = std::move(*writer);
  writer->reset();
  if (!released) return noErr;
  return released.use_count() == 1 ? released->Finish() : released->Flush();
}

MediaDataWriter::~MediaDataWriter() {
  if (file_.IsOpen()) Finish();
}

OSStatus StoreMovieAtom(const std::filesystem::path& path, std::span<const UInt8> movie) {
  if (movie.size() < kHeaderSize || movie.size() > kMaximum32) return paramErr;
  files::Descriptor file;
  struct stat info = {};
  OSStatus status = OpenForWriting(path, &file, &info);
  if (status == noErr) status = MediaDataWriter::CloseDataOf(info.st_dev, info.st_ino);
  return status == noErr ? StoreInOpenFile(file.get(), movie) : status;
}

void AppendFileType(std::vector<UInt8>* out) {
  constexpr UInt32 kQuickTimeVersion = 0x20050300;
  for (const UInt32 field : {UInt32{20}, "ftyp"_4cc, "qt  "_4cc, kQuickTimeVersion, "qt  "_4cc})
    AppendU32(out, field);
}

}  // namespace quillmere::movies
