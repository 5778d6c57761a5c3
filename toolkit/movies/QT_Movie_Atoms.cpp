#include "QT_Movie_Atoms.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "GL_File.h"
#include "GL_File_Data.h"
#include "QT_Error_Keys.h"
#include "QT_Media_Intervals.h"
#include "big_endian.h"
#include "media_times.h"
#include "up_time.h"

namespace {

using namespace quillmere;

constexpr UInt32 kMdat = "mdat"_4cc;
constexpr UInt32 kWide = "wide"_4cc;
constexpr UInt32 kEmptyAtomSize = 8;
constexpr UInt32 kSizeIsLong = 1;
constexpr SInt64 kMostShortFork = 0x7FFFFFFE;
constexpr SInt64 kHeaderSize = 16;

SInt32 WriteWord(FSIORefNum fork, UInt16 position_mode, SInt64 position, UInt32 word) {
  UInt8 bytes[4];
  WriteU32(bytes, word);
  return FSWriteFork(fork, position_mode, position, sizeof(bytes), bytes, nullptr);
}

/// Reads as much of `bytes` as the fork holds from there on.
SInt32 ReadBytes(FSIORefNum fork, SInt64 position, std::size_t size, UInt8* bytes) {
  return FSReadFork(fork, fsFromStart, position, size, bytes, nullptr);
}

SInt32 CloseHeader(FSIORefNum fork, SInt64 position, SInt64 size) {
  if (size <= kMostShortFork)
    return WriteWord(fork, fsFromStart, position + 8, static_cast<UInt32>(size - kEmptyAtomSize));
  const UInt32 words[] = {kSizeIsLong, kMdat, static_cast<UInt32>(size >> 32),
                          static_cast<UInt32>(size)};
  for (const UInt32& word : words) {
    const SInt32 status = WriteWord(fork, fsFromStart, position + (&word - words) * 4, word);
    if (status != noErr) return status;
  }
  return noErr;
}

/// A data fork that is open for reading and writing.
class OpenFile {
 public:
  explicit OpenFile(const FSRef* file) {
    constexpr int kTries = 11;
    constexpr UInt32 kTicksBetween = 10;
    for (int i = 0; i < kTries; ++i) {
      if (i > 0) Delay(kTicksBetween, nullptr);
      status_ = GL_OpenDataFork(file, fsRdWrPerm, &fork_);
      if (status_ != fBsyErr && status_ != opWrErr && status_ != wrPermErr) break;
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (is_open()) FSCloseFork(fork_);
  }
  bool is_open() const { return status_ == noErr; }
  FSIORefNum fork() const { return fork_; }

 private:
  FSIORefNum fork_ = 0;
  SInt32 status_ = noErr;
};

/// The place of the size in front of the first `mdat` that stands behind the fork's start; 0 if
/// there is none or the fork can't be read. Only the first `mdat` of each block counts; blocks
/// overlap by what one could straddle.
SInt64 FindMdat(FSIORefNum fork, SInt64 size) {
  constexpr SInt64 kBlockSize = 1 << 20;
  constexpr SInt64 kOverlap = 3;
  const std::unique_ptr<UInt8[]> block(new (std::nothrow) UInt8[kBlockSize + kOverlap]);
  if (block == nullptr) return 0;
  for (SInt64 start = 0; start < size; start += kBlockSize) {
    const auto length = static_cast<std::size_t>(std::min(kBlockSize + kOverlap, size - start));
    if (ReadBytes(fork, start, length, block.get()) != noErr) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(block.get()), length);
    const std::size_t hit = bytes.find("mdat");
    const SInt64 place = start + static_cast<SInt64>(hit) - 4;
    if (hit != std::string_view::npos && place > 0) return place;
  }
  return 0;
}

/// Lets the `mdat` at `place` reach the fork's end, `remaining` bytes on.
void CorrectMdat(FSIORefNum fork, SInt64 place, SInt64 remaining, UInt32 old_size,
                 UInt64 old_long_size) {
  if (remaining <= kMostShortFork) {
    if (WriteWord(fork, fsFromStart, place, static_cast<UInt32>(remaining)) == noErr)
      std::printf("Torvelle: correcting mpg4 file: changed size in first mdat from %" PRIu32
                  " to %" PRId64,
                  old_size, remaining);
    return;
  }
  if (WriteWord(fork, fsFromStart, place, kEmptyAtomSize) == noErr &&
      QT_SetFileSizeInMdatHeaderAtMark(fork, place + kEmptyAtomSize) == noErr)
    std::printf("Torvelle: correcting mpg4 file: changed size in second mdat from %" PRIu64
                " to %" PRId64,
                old_long_size, remaining);
}

struct MainAtom {
  SInt64 size;
  OSType type;
};

/// The atoms of a fork; the status of the last read.
SInt32 ReadMainAtoms(FSIORefNum fork, SInt64 fork_size, std::vector<MainAtom>* atoms) {
  SInt32 status = noErr;
  for (SInt64 place = 0; place < fork_size;) {
    UInt8 header[kHeaderSize] = {};
    status = ReadBytes(fork, place, sizeof(header), header);
    // An atom may be shorter than what is read of it.
    if (status != noErr && status != eofErr) return status;
    const UInt32 short_size = ReadU32(header);
    const bool is_long = short_size == kSizeIsLong;
    const SInt64 size = is_long ? ReadS64(header + 8) : SInt64{short_size};
    atoms->push_back({size, ReadU32(header + 4)});
    if (size < (is_long ? kHeaderSize : SInt64{kEmptyAtomSize}) || size >= fork_size - place) break;
    place += size;
  }
  return status;
}

template <class T>
T* NewArray(std::size_t count) {
  return static_cast<T*>(std::malloc(count * sizeof(T)));
}

}  // namespace

SInt32 QT_WriteInitialMdatHeader(FSIORefNum fork) {
  for (const UInt32 word : {kEmptyAtomSize, kWide, kEmptyAtomSize, kMdat}) {
    const SInt32 status = WriteWord(fork, fsAtMark, 0, word);
    if (status != noErr) return status;
  }
  return noErr;
}

SInt32 QT_SetFileSizeInMdatHeader(FSIORefNum fork) {
  return QT_SetFileSizeInMdatHeaderAtMark(fork, 0);
}

SInt32 QT_SetFileSizeInMdatHeaderAtMark(FSIORefNum fork, SInt64 position) {
  SInt32 status = FSSetForkPosition(fork, fsFromStart, position);
  if (status != noErr) return status;
  SInt64 size = 0;
  status = FSGetForkSize(fork, &size);
  if (status != noErr) return status;
  size -= position;
  return size < kEmptyAtomSize ? paramErr : CloseHeader(fork, position, size);
}

SInt32 QT_FixMpg4Mdat(const FSRef* file) {
  const OpenFile open(file);
  SInt64 fork_size = 0;
  if (!open.is_open() || FSGetForkSize(open.fork(), &fork_size) != noErr) return noErr;
  const SInt64 place = FindMdat(open.fork(), fork_size);
  if (place <= 0) return noErr;
  const SInt64 remaining = fork_size - place;
  UInt8 size_bytes[4];
  UInt8 long_size_bytes[8];
  if (ReadBytes(open.fork(), place, sizeof(size_bytes), size_bytes) != noErr ||
      ReadBytes(open.fork(), place + 16, sizeof(long_size_bytes), long_size_bytes) != noErr)
    return noErr;
  const UInt32 size = ReadU32(size_bytes);
  const UInt64 long_size = ReadU64(long_size_bytes);
  const auto wanted = static_cast<UInt64>(remaining);
  if (size == wanted) return noErr;
  if (size == kEmptyAtomSize && (long_size == wanted || long_size == wanted - kEmptyAtomSize))
    return noErr;
  CorrectMdat(open.fork(), place, remaining, size, long_size);
  return QT_MdatHeaderErr;
}

SInt32 QT_MoveBackMovieEOF(FSIORefNum fork, const FSRef* file, Track track, TimeValue track_time) {
  const TimeValue time = TrackTimeToMediaTime(track_time, track);
  if (time < 0) return invalidTime;
  SInt64 offset = 0;
  SInt32 begin = 0;
  SInt32 duration = 0;
  const auto find = [&](SInt32 at) {
    return QT_GetMediaSampleReference64(GetTrackMedia(track), &offset, nullptr, at, &begin,
                                        &duration, nullptr, nullptr, 1, nullptr, nullptr);
  };
  SInt32 status = find(time);
  if (status == noErr && time > begin) status = find(begin + duration);
  if (status != noErr) return status;
  return offset <= std::numeric_limits<UInt32>::max() ? GL_SetEOF(fork, file, offset)
                                                      : SInt32{paramErr};
}

SInt32 QT_GetMainAtoms(FSIORefNum fork, UInt32* count, SInt64** sizes, OSType** types) {
  *count = 0;
  *sizes = nullptr;
  *types = nullptr;
  SInt64 fork_size = 0;
  SInt32 status = FSGetForkSize(fork, &fork_size);
  if (status != noErr) return status;
  std::vector<MainAtom> atoms;
  status = ReadMainAtoms(fork, fork_size, &atoms);
  if (atoms.empty() || (status != noErr && status != eofErr)) return status;
  SInt64* all_sizes = NewArray<SInt64>(atoms.size());
  OSType* all_types = NewArray<OSType>(atoms.size());
  if (all_sizes == nullptr || all_types == nullptr) {
    std::free(all_sizes);
    std::free(all_types);
    return memFullErr;
  }
  for (std::size_t i = 0; i < atoms.size(); ++i) {
    all_sizes[i] = atoms[i].size;
    all_types[i] = atoms[i].type;
  }
  *count = static_cast<UInt32>(atoms.size());
  *sizes = all_sizes;
  *types = all_types;
  return status;
}
