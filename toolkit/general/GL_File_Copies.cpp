#include "GL_File_Data.h"

#include <algorithm>
#include <limits>

#include "GL_Errors.h"
#include "MF_FileObjects.h"
#include "NS_Navigation.h"
#include "catalogue.h"
#include "file_data_private.h"

namespace {

using quillmere::Block;
using quillmere::ReadAt;
using quillmere::UsedFork;
using quillmere::WriteAt;

/// The Finder flag of a file whose bundle bit has been looked at.
constexpr UInt16 kInitedFlag = 0x0100;
/// Where the Finder flags start in Finder information, big-endian.
constexpr std::size_t kFinderFlagsOffset = 8;

/// Opens the same fork of two files.
SInt32 OpenBoth(SInt32 (UsedFork::*open)(const FSRef*, SInt8), const FSRef* source,
                const FSRef* destination, UsedFork* from, UsedFork* to) {
  const SInt32 status = (from->*open)(source, fsRdPerm);
  return status != noErr ? status : (to->*open)(destination, fsRdWrPerm);
}

/// Copies a fork of `size` bytes through a buffer with room for it.
SInt32 CopyFork(FSIORefNum from, FSIORefNum to, UInt64 size, void* buffer) {
  const auto count = static_cast<SInt64>(size);
  SInt32 status = ReadAt(from, 0, count, buffer);
  if (status == noErr) status = WriteAt(to, 0, count, buffer);
  if (status == noErr) status = FSSetForkSize(to, fsFromStart, count);
  return status;
}

/// Gives a file the settable information of another, as one that the Finder has not seen.
SInt32 CopyInformation(const FSRef* source, const FSRef* destination) {
  FSCatalogInfo info{};
  const SInt32 status =
      FSGetCatalogInfo(source, kFSCatInfoSettableInfo, &info, nullptr, nullptr, nullptr);
  if (status != noErr) return status;
  info.finderInfo[kFinderFlagsOffset] &= static_cast<UInt8>(~(kInitedFlag >> 8));
  return FSSetCatalogInfo(destination, kFSCatInfoSettableInfo, &info);
}

/// Whether a fork could not be opened because it is open for writing; any other failure is given
/// back.
SInt32 TestOpen(SInt32 (UsedFork::*open)(const FSRef*, SInt8), const FSRef* file,
                Boolean* is_open) {
  UsedFork fork;
  const SInt32 status = (fork.*open)(file, fsRdWrPerm);
  *is_open = status == opWrErr;
  return status == opWrErr ? SInt32{noErr} : status;
}

/// Lets the user choose a file whose data fork becomes a fork of `movie`.
SInt32 AskForFile(CFStringRef message, FSRef* file) {
  return NS_GetSingleFileFromUser(NS_EventProcPrototype, nullptr, nullptr, CFSTR("kVC_AppName"),
                                  message, file);
}

SInt32 CopyDataForkInto(const FSRef* source, const FSRef* movie, const HFSUniStr255& fork_name) {
  Block data;
  UInt32 size = 0;
  const SInt32 status = GL_ReadAllDataFromDataFork(0, source, data.out(), &size);
  if (status != noErr) return status;
  return GL_WriteDataToFork(0, movie, fork_name.length, fork_name.unicode, data.get(), 0,
                            fsFromStart, 0, &size);
}

/// Makes the movie file beside a file.
SInt32 CreateMovieBeside(const FSRef* file, FSRef* movie) {
  FSRef folder{};
  HFSUniStr255 name{};
  SInt32 status = MF_FSGetParentRef(file, &folder);
  if (status == noErr) status = FSGetHFSUniStrFromString(CFSTR("MyTestMovie"), &name);
  if (status != noErr) return status;
  return GL_CreateFile(&folder, &name, "TVOD"_4cc, "MooV"_4cc, 0, movie);
}

}  // namespace

SInt32 GL_IsFileOpenForWriting(const FSRef* file, Boolean* resource_fork_open,
                               Boolean* data_fork_open) {
  SInt32 status = noErr;
  if (data_fork_open != nullptr) status = TestOpen(&UsedFork::OpenDataFork, file, data_fork_open);
  if (status == noErr && resource_fork_open != nullptr) {
    status = TestOpen(&UsedFork::OpenResourceFork, file, resource_fork_open);
  }
  return status;
}

SInt32 GL_CopySmallFile(const FSRef* source, const FSRef* destination) {
  UInt64 data_size = 0;
  UInt64 resource_size = 0;
  SInt32 status = MF_FSGetForkSizes(source, &data_size, &resource_size);
  if (status != noErr) return status;
  const UInt64 larger = std::max(data_size, resource_size);
  if (larger > std::numeric_limits<UInt32>::max()) return GL_NotSmallFileErr;
  Block buffer;
  status = buffer.Allocate(static_cast<Size>(larger));
  if (status == noErr) {
    UsedFork from;
    UsedFork to;
    status = OpenBoth(&UsedFork::OpenDataFork, source, destination, &from, &to);
    if (status == noErr) status = CopyFork(from.number(), to.number(), data_size, buffer.get());
  }
  if (status == noErr) {
    UsedFork from;
    UsedFork to;
    status = OpenBoth(&UsedFork::OpenResourceFork, source, destination, &from, &to);
    if (status == noErr) status = CopyFork(from.number(), to.number(), resource_size, buffer.get());
  }
  return status == noErr ? CopyInformation(source, destination) : status;
}

SInt32 GL_RezWack() {
  HFSUniStr255 resource_fork{};
  HFSUniStr255 data_fork{};
  SInt32 status = FSGetResourceForkName(&resource_fork);
  if (status == noErr) status = FSGetDataForkName(&data_fork);
  FSRef chosen{};
  FSRef movie{};
  if (status == noErr) status = AskForFile(CFSTR("Select resource file"), &chosen);
  if (status == noErr) status = CreateMovieBeside(&chosen, &movie);
  if (status == noErr) status = CopyDataForkInto(&chosen, &movie, resource_fork);
  if (status == noErr) status = AskForFile(CFSTR("Select data file"), &chosen);
  if (status == noErr) status = CopyDataForkInto(&chosen, &movie, data_fork);
  return status;
}
