#include <memory>

#include "GL_Memory.h"
#include "MF_FileObjects.h"
#include "MF_trace_private.h"

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::Trace;

namespace {

/// Transfers are a multiple of this many bytes.
constexpr ByteCount kBlock = 4096;

}  // namespace

SInt32 MF_FSGetForkSizes(const FSRef* reference, UInt64* data_size, UInt64* resource_size) {
  const Trace trace("MF_FSGetForkSizes");
  const FSCatalogInfoBitmap mask = kFSCatInfoNodeFlags |
                                   (data_size ? kFSCatInfoDataSizes : kFSCatInfoNone) |
                                   (resource_size ? kFSCatInfoRsrcSizes : kFSCatInfoNone);
  FSCatalogInfo info{};
  const SInt32 status =
      Checked(FSGetCatalogInfo(reference, mask, &info, nullptr, nullptr, nullptr), kCatalogFailed);
  if (status) return status;
  if (info.nodeFlags & kFSNodeIsDirectoryMask) return notAFileErr;
  if (data_size) *data_size = info.dataLogicalSize;
  if (resource_size) *resource_size = info.rsrcLogicalSize;
  return noErr;
}

SInt32 MF_FSGetTotalForkSizes(const FSRef* reference, UInt64* logical, UInt64* physical,
                              ItemCount* fork_count) {
  const Trace trace("MF_FSGetTotalForkSizes");
  if (logical) *logical = 0;
  if (physical) *physical = 0;
  if (fork_count) *fork_count = 0;
  CatPositionRec position{};
  for (;;) {
    SInt64 fork_size = 0;
    UInt64 fork_physical = 0;
    const SInt32 status = FSIterateForks(reference, &position, nullptr, &fork_size, &fork_physical);
    if (status == errFSNoMoreItems) return noErr;
    if (status) return Checked(status, "FSIterateForks failed");
    if (logical) *logical += static_cast<UInt64>(fork_size);
    if (physical) *physical += fork_physical;
    if (fork_count) ++*fork_count;
  }
}

SInt32 MF_FileRefNumGetFSRef(FSIORefNum fork, FSRef* reference) {
  const Trace trace("MF_FileRefNumGetFSRef");
  if (!reference) return paramErr;
  return Checked(FSGetForkCBInfo(fork, 0, nullptr, nullptr, nullptr, reference, nullptr),
                 "FSGetForkCBInfo failed");
}

SInt32 MF_FSCopyFork(FSIORefNum source, FSIORefNum destination, void* buffer,
                     ByteCount buffer_size) {
  const Trace trace("MF_FSCopyFork");
  if (!buffer || buffer_size == 0) return paramErr;
  SInt64 size = 0;
  SInt32 status = Checked(FSGetForkSize(source, &size), "FSGetForkSize failed");
  if (!status)
    status = Checked(FSSetForkSize(destination, fsFromStart, size), "FSSetForkSize failed");
  for (const FSIORefNum fork : {source, destination}) {
    if (!status)
      status = Checked(FSSetForkPosition(fork, fsFromStart, 0), "FSSetForkPosition failed");
  }
  if (status) return status;
  if (buffer_size >= kBlock) buffer_size -= buffer_size % kBlock;
  SInt32 write_status = noErr;
  while (!status && !write_status) {
    ByteCount count = 0;
    status = FSReadFork(source, fsAtMark | noCacheMask, 0, buffer_size, buffer, &count);
    if (count > 0) {
      write_status = FSWriteFork(destination, fsAtMark | noCacheMask, 0, count, buffer, nullptr);
    }
  }
  if (write_status) return Checked(write_status, "FSWriteFork failed");
  return status == eofErr ? SInt32{noErr} : Checked(status, "FSReadFork failed");
}

Ptr MF_FSGetTempBuffer(ByteCount wanted, ByteCount* actual) {
  const Trace trace("MF_FSGetTempBuffer");
  if (!actual) return nullptr;
  const ByteCount size = wanted < kBlock ? kBlock : wanted - wanted % kBlock;
  void* buffer = nullptr;
  *actual = GL_NewPtr(static_cast<Size>(size), &buffer) == noErr ? size : 0;
  return static_cast<Ptr>(buffer);
}
