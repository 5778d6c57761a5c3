#include "forks.h"

#include <sys/statvfs.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <memory>
#include <mutex>
#include <utility>

#include "catalogue_changes.h"
#include "extra_forks.h"
#include "file_names.h"
#include "fork_streams.h"

namespace {

using quillmere::files::ForkStream;
using quillmere::files::StatusOfErrno;

struct OpenFork {
  std::mutex mutex;
  std::unique_ptr<ForkStream> stream;
  bool writable = false;
  SInt64 mark = 0;
  FSRef reference{};
  quillmere::files::ObjectIdentity file{};
  std::string name;
};

constexpr std::size_t kMostForks = 4096;

/// The open forks; a fork's number is its place plus 1.
struct ForkTable {
  std::mutex mutex;
  std::array<std::shared_ptr<OpenFork>, kMostForks> forks;
  std::size_t used = 0;  ///< places from here on are free
};

ForkTable& Forks() {
  // Never destroyed: a log may be written until the process ends.
  static auto* table = std::make_unique<ForkTable>().release();
  return *table;
}

std::shared_ptr<OpenFork> Find(FSIORefNum fork) {
  if (fork < 1 || static_cast<std::size_t>(fork) > kMostForks) return nullptr;
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  return table.forks[static_cast<std::size_t>(fork - 1)];
}

OSErr AddFork(std::shared_ptr<OpenFork> open, FSIORefNum* fork) {
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  for (std::size_t i = 0; i < kMostForks; ++i) {
    if (table.forks[i]) continue;
    table.forks[i] = std::move(open);
    table.used = std::max(table.used, i + 1);
    *fork = static_cast<FSIORefNum>(i + 1);
    return noErr;
  }
  return tmfoErr;
}

/// The fork of a number, for one call at a time.
class LockedFork {
 public:
  explicit LockedFork(FSIORefNum number) : fork_(Find(number)) {
    if (fork_) lock_ = std::unique_lock(fork_->mutex);
  }
  explicit operator bool() const { return fork_ != nullptr; }
  OpenFork& operator*() const { return *fork_; }
  OpenFork* operator->() const { return fork_.get(); }

 private:
  std::shared_ptr<OpenFork> fork_;
  std::unique_lock<std::mutex> lock_;
};

/// The position that a mode and an offset stand for.
OSErr Position(const OpenFork& fork, UInt16 mode, SInt64 offset, SInt64* position) {
  SInt64 base = 0;
  mode = static_cast<UInt16>(mode & ~(noCacheMask | forceReadMask));
  if (mode == fsAtMark) offset = 0;
  if (mode == fsAtMark || mode == fsFromMark) base = fork.mark;
  if (mode == fsFromLEOF) {
    const OSErr status = fork.stream->Size(&base);
    if (status) return status;
  } else if (mode > fsFromMark) {
    return static_cast<OSErr>(paramErr);
  }
  if (__builtin_add_overflow(base, offset, position) || *position < 0) return posErr;
  return noErr;
}

/// Transfers bytes by `step(done, place)`, which does what the system's pread and pwrite do for
/// what is left, until all are done. The mark stands behind them then. `end_status` stands for a
/// place that no file can have, and for a step that does nothing.
template <class Step>
OSErr Transfer(OpenFork* fork, UInt16 mode, SInt64 offset, ByteCount count, const void* buffer,
               ByteCount* actual, OSErr end_status, Step step) {
  if (!buffer && count > 0) return static_cast<OSErr>(paramErr);
  SInt64 position = 0;
  OSErr status = Position(*fork, mode, offset, &position);
  if (status) return status;
  if (count > static_cast<ByteCount>(std::numeric_limits<SInt64>::max() - position)) {
    return end_status;
  }
  ByteCount done = 0;
  while (done < count && !status) {
    const ssize_t moved = step(done, position + static_cast<SInt64>(done));
    if (moved > 0) {
      done += static_cast<ByteCount>(moved);
    } else if (moved == 0) {
      status = end_status;
    } else if (errno != EINTR) {
      status = StatusOfErrno(errno);
    }
  }
  fork->mark = position + static_cast<SInt64>(done);
  if (actual) *actual = done;
  return status;
}

/// The name of a fork in UTF-8; empty for the data fork.
OSErr NameOfFork(UInt32 length, const UniChar* units, std::string* name) {
  name->clear();
  if (length == 0) return noErr;
  if (!units) return static_cast<OSErr>(paramErr);
  const OSErr status = quillmere::files::BytesOfName(length, units, name);
  const bool is_good = !status && name->size() <= quillmere::files::kMostForkNameBytes;
  return is_good ? OSErr{noErr} : errFSBadForkName;
}

void GiveName(std::string_view name, HFSUniStr255* units) {
  if (units) quillmere::files::UnitsOfName(name, units);
}

/// Finds a file, and the fork that a name of units means.
OSErr FindFork(const FSRef* reference, UInt32 name_length, const UniChar* units,
               quillmere::files::ObjectPlace* file, std::string* name) {
  if (!reference) return static_cast<OSErr>(paramErr);
  const OSErr status = NameOfFork(name_length, units, name);
  if (status) return status;
  const OSStatus found = quillmere::files::FindObject(*reference, file);
  if (found) return static_cast<OSErr>(found);
  return S_ISREG(file->info.stx_mode) ? OSErr{noErr} : permErr;
}

/// A fork that is open to be written for the length of one operation.
class WriterOfFork {
 public:
  WriterOfFork(const FSRef* reference, UInt32 name_length, const UniChar* name) {
    status_ = FSOpenFork(reference, name_length, name, fsRdWrPerm, &number_);
  }
  WriterOfFork(const WriterOfFork&) = delete;
  WriterOfFork& operator=(const WriterOfFork&) = delete;
  ~WriterOfFork() {
    if (!status_) FSCloseFork(number_);
  }
  OSErr status() const { return status_; }
  FSIORefNum number() const { return number_; }

 private:
  FSIORefNum number_ = 0;
  OSErr status_ = noErr;
};

UInt64 RoundedToBlocks(const quillmere::files::ObjectPlace& file, UInt64 size) {
  struct statvfs volume;
  const bool is_known = fstatvfs(file.folder.get(), &volume) == 0 && volume.f_frsize > 0;
  const UInt64 block = is_known ? volume.f_frsize : 4096;
  return (size + block - 1) / block * block;
}

}  // namespace

OSErr FSOpenFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name,
                 SInt8 permission, FSIORefNum* fork) {
  if (fork) *fork = 0;
  if (!reference || !fork || permission < fsCurPerm || permission > fsRdWrPerm) {
    return static_cast<OSErr>(paramErr);
  }
  auto open = std::make_shared<OpenFork>();
  OSErr status = NameOfFork(fork_name_length, fork_name, &open->name);
  if (status) return status;
  quillmere::files::StreamOpening opening;
  status = quillmere::files::OpenStream(*reference, open->name, permission, &opening);
  if (status) return status;
  open->stream = std::move(opening.stream);
  open->writable = opening.is_writable;
  open->reference = *reference;
  open->file = opening.file;
  return AddFork(std::move(open), fork);
}

OSErr FSWriteFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                  const void* buffer, ByteCount* actual) {
  if (actual) *actual = 0;
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  if (!open->writable) return wrPermErr;
  const auto* bytes = static_cast<const UInt8*>(buffer);
  const OSErr status = Transfer(&*open, position_mode, offset, count, buffer, actual, dskFulErr,
                                [&](ByteCount done, SInt64 place) {
                                  return open->stream->Write(bytes + done, count - done, place);
                                });
  const OSErr kept = open->stream->Settle();
  return status ? status : kept;
}

OSErr FSReadFork(FSIORefNum fork, UInt16 position_mode, SInt64 offset, ByteCount count,
                 void* buffer, ByteCount* actual) {
  if (actual) *actual = 0;
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  auto* bytes = static_cast<UInt8*>(buffer);
  return Transfer(&*open, position_mode, offset, count, buffer, actual, eofErr,
                  [&](ByteCount done, SInt64 place) {
                    return open->stream->Read(bytes + done, count - done, place);
                  });
}

OSErr PBReadForkSync(FSForkIOParam* transfer) {
  if (!transfer) return static_cast<OSErr>(paramErr);
  return FSReadFork(transfer->forkRefNum, transfer->positionMode, transfer->positionOffset,
                    transfer->requestCount, transfer->buffer, &transfer->actualCount);
}

OSErr PBWriteForkSync(FSForkIOParam* transfer) {
  if (!transfer) return static_cast<OSErr>(paramErr);
  return FSWriteFork(transfer->forkRefNum, transfer->positionMode, transfer->positionOffset,
                     transfer->requestCount, transfer->buffer, &transfer->actualCount);
}

OSErr FSGetForkSize(FSIORefNum fork, SInt64* size) {
  if (!size) return static_cast<OSErr>(paramErr);
  const LockedFork open(fork);
  return open ? open->stream->Size(size) : rfNumErr;
}

OSErr FSSetForkSize(FSIORefNum fork, UInt16 position_mode, SInt64 offset) {
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  if (!open->writable) return wrPermErr;
  SInt64 size = 0;
  OSErr status = Position(*open, position_mode, offset, &size);
  if (!status) status = open->stream->SetSize(size);
  if (status) return status;
  open->mark = std::min(open->mark, size);
  return open->stream->Settle();
}

OSErr FSGetForkPosition(FSIORefNum fork, SInt64* position) {
  if (!position) return static_cast<OSErr>(paramErr);
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  *position = open->mark;
  return noErr;
}

OSErr FSSetForkPosition(FSIORefNum fork, UInt16 position_mode, SInt64 offset) {
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  SInt64 size = 0;
  SInt64 position = 0;
  OSErr status = Position(*open, position_mode, offset, &position);
  if (!status) status = open->stream->Size(&size);
  if (status) return status;
  open->mark = std::min(position, size);
  return position > size ? eofErr : OSErr{noErr};
}

OSErr FSFlushFork(FSIORefNum fork) {
  const LockedFork open(fork);
  return open ? open->stream->Flush() : rfNumErr;
}

OSErr FSCloseFork(FSIORefNum fork) {
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  const OSErr status = open->stream->Close();
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  table.forks[static_cast<std::size_t>(fork - 1)].reset();
  while (table.used > 0 && !table.forks[table.used - 1])
    --table.used;
  return status;
}

OSErr FSGetDataForkName(HFSUniStr255* name) {
  if (!name) return static_cast<OSErr>(paramErr);
  name->length = 0;
  return noErr;
}

OSErr FSGetResourceForkName(HFSUniStr255* name) {
  if (!name) return static_cast<OSErr>(paramErr);
  GiveName(quillmere::files::kResourceForkName, name);
  return noErr;
}

OSErr FSCreateFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name) {
  quillmere::files::ObjectPlace file;
  std::string name;
  const OSErr status = FindFork(reference, fork_name_length, fork_name, &file, &name);
  if (status) return status;
  if (name.empty() || name == quillmere::files::kResourceForkName) return errFSForkExists;
  if (quillmere::files::IsLocked(file.info)) return fLckdErr;
  quillmere::files::ForkBytes present;
  const OSStatus read = quillmere::files::ReadExtraFork(file, name, &present);
  if (!read) return errFSForkExists;
  if (read != errFSForkNotFound) return static_cast<OSErr>(read);
  return static_cast<OSErr>(quillmere::files::WriteExtraFork(file, name, {}));
}

OSErr FSDeleteFork(const FSRef* reference, UInt32 fork_name_length, const UniChar* fork_name) {
  quillmere::files::ObjectPlace file;
  std::string name;
  OSErr status = FindFork(reference, fork_name_length, fork_name, &file, &name);
  if (status) return status;
  const WriterOfFork writer(reference, fork_name_length, fork_name);
  if (writer.status()) return writer.status();
  status = FSSetForkSize(writer.number(), fsFromStart, 0);
  if (status || name.empty()) return status;
  return static_cast<OSErr>(quillmere::files::RemoveExtraFork(file, name));
}

OSErr FSIterateForks(const FSRef* reference, CatPositionRec* position, HFSUniStr255* name,
                     SInt64* size, UInt64* physical_size) {
  if (!position) return static_cast<OSErr>(paramErr);
  quillmere::files::ObjectPlace file;
  std::string data_fork;
  const OSErr status = FindFork(reference, 0, nullptr, &file, &data_fork);
  if (status) return status;
  if (position->initialize == 0) {
    GiveName(data_fork, name);
    if (size) *size = static_cast<SInt64>(file.info.stx_size);
    if (physical_size) *physical_size = file.info.stx_blocks * 512;
    position->initialize = 1;
    return noErr;
  }
  std::vector<quillmere::files::ExtraFork> forks;
  const OSStatus listed = quillmere::files::ListExtraForks(file, &forks);
  if (listed) return static_cast<OSErr>(listed);
  const auto index = static_cast<UInt64>(position->initialize - 1);
  if (position->initialize < 0 || index >= forks.size()) return errFSNoMoreItems;
  ++position->initialize;
  GiveName(forks[index].name, name);
  if (size) *size = static_cast<SInt64>(forks[index].size);
  if (physical_size) *physical_size = RoundedToBlocks(file, forks[index].size);
  return noErr;
}

OSErr FSGetForkCBInfo(FSIORefNum fork, FSVolumeRefNum, SInt16* iterator, SInt16* actual_fork,
                      FSForkCBInfo* info, FSRef* reference, HFSUniStr255* name) {
  if (fork == 0 || iterator) return static_cast<OSErr>(paramErr);
  const LockedFork open(fork);
  if (!open) return rfNumErr;
  if (actual_fork) *actual_fork = fork;
  if (reference) *reference = open->reference;
  GiveName(open->name, name);
  FSCatalogInfo catalogue{};
  const OSErr status = FSGetCatalogInfo(&open->reference, kFSCatInfoVolume | kFSCatInfoNodeID,
                                        &catalogue, nullptr, nullptr, nullptr);
  if (status || !info) return status;
  SInt64 size = 0;
  const OSErr sized = open->stream->Size(&size);
  *info = {catalogue.volume, catalogue.nodeID, static_cast<UInt64>(open->mark),
           static_cast<UInt64>(size), open->writable};
  return sized;
}

namespace quillmere::files {

UInt16 OpenForksOf(const ObjectIdentity& file) {
  ForkTable& table = Forks();
  const std::lock_guard lock(table.mutex);
  UInt16 flags = 0;
  for (std::size_t i = 0; i < table.used; ++i) {
    const OpenFork* open = table.forks[i].get();
    if (!open || open->file != file) continue;
    flags |= kFSNodeForkOpenMask;
    if (open->name.empty()) flags |= kFSNodeDataOpenMask;
    if (open->name == kResourceForkName) flags |= kFSNodeResOpenMask;
  }
  return flags;
}

OSErr ReplaceForkContent(FSIORefNum fork, std::span<const UInt8> bytes) {
  ForkBytes old;
  OSErr status = ReadForkContent(fork, &old);
  const LockedFork open(fork);
  if (status || !open) return status ? status : rfNumErr;
  if (!open->writable) return wrPermErr;
  const auto put = [&open](std::span<const UInt8> content) {
    OSErr failure = open->stream->SetSize(static_cast<SInt64>(content.size()));
    if (!failure && !content.empty() &&
        open->stream->Write(content.data(), content.size(), 0) < 0) {
      failure = StatusOfErrno(errno);
    }
    return failure;
  };
  status = put(bytes);
  if (!status) status = open->stream->Flush();
  if (status) put(old);
  return status;
}

OSErr ReadForkContent(FSIORefNum fork, std::vector<UInt8>* bytes) {
  bytes->clear();
  SInt64 size = 0;
  const OSErr status = FSGetForkSize(fork, &size);
  if (status) return status;
  if (static_cast<UInt64>(size) > kMostExtraForkBytes) return static_cast<OSErr>(memFullErr);
  bytes->resize(static_cast<std::size_t>(size));
  return FSReadFork(fork, fsFromStart, 0, bytes->size(), bytes->data(), nullptr);
}

OSStatus SizesOfResourceFork(const FSRef& reference, UInt64* logical, UInt64* physical) {
  ObjectPlace file;
  OSStatus status = FindObject(reference, &file);
  std::vector<ExtraFork> forks;
  if (!status) status = ListExtraForks(file, &forks);
  if (status) return status;
  const bool has_any = !forks.empty() && forks.front().name == kResourceForkName;
  *logical = has_any ? forks.front().size : 0;
  *physical = RoundedToBlocks(file, *logical);
  return noErr;
}

}  // namespace quillmere::files
