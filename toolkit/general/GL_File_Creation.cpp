#include "GL_File_Creation.h"

#include <algorithm>
#include <limits>

#include "GL_File.h"
#include "MF_FileObjects.h"
#include "absolute_time.h"
#include "creation.h"
#include "file_creation_private.h"
#include "moves.h"
#include "up_time.h"

using quillmere::Owned;

namespace {

constexpr UInt32 kTicksBetweenTries = 10;
constexpr SInt32 kCreationTries = 11;

SInt32 LookUp(const FSRef* folder, const HFSUniStr255* name, FSRef* object,
              TextEncoding encoding = 0) {
  return FSMakeFSRefUnicode(folder, name->length, name->unicode, encoding, object);
}

SInt32 CreateWith(const FSRef* folder, const HFSUniStr255* name, const FSCatalogInfo& info,
                  FSRef* file) {
  return FSCreateFileUnicode(folder, name->length, name->unicode, kFSCatInfoFinderInfo, &info, file,
                             nullptr);
}

bool AreGiven(const FSRef* folder, const HFSUniStr255* name, const FSRef* file) {
  return folder && name && file;
}

/// The first free name of those that `make(index)` gives; index 1 is the name without a number.
template <class Make>
SInt32 FirstFreeName(const FSRef* folder, Make make, CFStringRef* out_name) {
  *out_name = nullptr;
  for (SInt64 index = 1;; ++index) {
    Owned<CFStringRef> name(make(index));
    HFSUniStr255 record;
    FSRef ignored;
    SInt32 status = FSGetHFSUniStrFromString(name.get(), &record);
    if (!status) status = LookUp(folder, &record, &ignored);
    if (status == fnfErr) {
      *out_name = name.release();
      return noErr;
    }
    if (status) return status;
  }
}

}  // namespace

SInt32 GL_CreateFile(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                     Boolean replace_existing, FSRef* file) {
  if (!AreGiven(folder, name, file)) return paramErr;
  if (LookUp(folder, name, file) == noErr && !replace_existing) return dupFNErr;
  const FSCatalogInfo info = quillmere::general::InfoOfNewFile(creator, type);
  SInt32 status = CreateWith(folder, name, info, file);
  // Without leave to replace it, what somebody else made in between stays.
  if (status == dupFNErr && replace_existing) {
    status = LookUp(folder, name, file);
    if (!status) status = FSDeleteObject(file);
    if (status) return status;
    status = CreateWith(folder, name, info, file);
  }
  MF_FSBumpDate(folder);
  return status;
}

SInt32 GL_CreateFileNew(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                        Boolean replace_existing, FSRef* file) {
  if (!AreGiven(folder, name, file)) return paramErr;
  if (LookUp(folder, name, file) == noErr) {
    if (!replace_existing) return dupFNErr;
    FSUnlinkObject(file);
  }
  const FSCatalogInfo info = quillmere::general::InfoOfNewFile(creator, type);
  SInt32 status = CreateWith(folder, name, info, file);
  for (SInt32 i = 1; i < kCreationTries && status == fBsyErr; ++i) {
    Delay(kTicksBetweenTries, nullptr);
    status = CreateWith(folder, name, info, file);
  }
  MF_FSBumpDate(folder);
  return status;
}

SInt32 GL_CreateFolder(const FSRef* parent, const HFSUniStr255* name, FSRef* folder) {
  if (!parent || !name) return paramErr;
  FSRef present;
  SInt32 status = LookUp(parent, name, &present);
  if (status == fnfErr) {
    status = FSCreateDirectoryUnicode(parent, name->length, name->unicode, kFSCatInfoNone, nullptr,
                                      &present, nullptr, nullptr);
    // Somebody else made it in between.
    if (status == dupFNErr) status = LookUp(parent, name, &present);
  }
  if (!status && folder) *folder = present;
  return status;
}

SInt32 GL_CreateFileInRootDirOfVolume(FSVolumeRefNum volume, const HFSUniStr255* name,
                                      FSRef* file) {
  if (!name || !file) return paramErr;
  FSRef root;
  const SInt32 status =
      FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, &root);
  return status ? status
                : FSCreateFileUnicode(&root, name->length, name->unicode, kFSCatInfoNone, nullptr,
                                      file, nullptr);
}

SInt32 GL_CreateTempFileRef(FSRef* file) {
  if (!file) return paramErr;
  FSRef folder;
  SInt32 status = FSFindFolder(kUserDomain, kTemporaryFolderType, 1, &folder);
  if (status) return status;
  auto seed = static_cast<UInt32>(std::clamp<CFAbsoluteTime>(CFAbsoluteTimeGetCurrent(), 0.0,
                                                             std::numeric_limits<UInt32>::max()));
  HFSUniStr255 name;
  do {
    status = MF_GenerateUniqueHFSUniStr(&seed, &folder, &folder, &name);
    if (!status) {
      status = FSCreateFileUnicode(&folder, name.length, name.unicode, kFSCatInfoNone, nullptr,
                                   file, nullptr);
    }
    // Another process has taken the name in between.
  } while (status == dupFNErr);
  return status;
}

SInt32 GL_CreateIndexedNameWithExtInFolder(const FSRef* folder, CFStringRef base_name,
                                           CFStringRef extension, CFStringRef* out_name) {
  if (!folder || !base_name || !extension || !out_name) return paramErr;
  return FirstFreeName(
      folder,
      [&](SInt64 index) {
        return index == 1
                   ? CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@%@"), base_name, extension)
                   : CFStringCreateWithFormat(nullptr, nullptr, CFSTR("%@ %ld%@"), base_name, index,
                                              extension);
      },
      out_name);
}

SInt32 GL_CreateIndexedNameInFolder(const FSRef* folder, CFStringRef base_name,
                                    CFStringRef* out_name) {
  return GL_CreateIndexedNameWithExtInFolder(folder, base_name, CFSTR(""), out_name);
}

SInt32 GL_RenameIndexed(FSRef* object, CFStringRef base_name, CFStringRef extension) {
  if (!object) return paramErr;
  FSRef parent;
  Owned<CFStringRef> name;
  HFSUniStr255 record;
  SInt32 status = MF_FSGetParentRef(object, &parent);
  if (!status) {
    status = GL_CreateIndexedNameWithExtInFolder(&parent, base_name, extension, name.out());
  }
  if (!status) status = FSGetHFSUniStrFromString(name.get(), &record);
  return status
             ? status
             : FSRenameUnicode(object, record.length, record.unicode, kTextEncodingUnknown, object);
}

SInt32 GL_RenameDelete(FSRef* object, const HFSUniStr255* new_name) {
  if (!object || !new_name) return paramErr;
  const auto rename = [&] {
    return FSRenameUnicode(object, new_name->length, new_name->unicode, kTextEncodingUnknown,
                           object);
  };
  SInt32 status = rename();
  if (status != dupFNErr) return status;
  FSRef parent;
  FSRef in_the_way;
  status = MF_FSGetParentRef(object, &parent);
  if (!status) status = LookUp(&parent, new_name, &in_the_way, kTextEncodingUnknown);
  if (!status) status = FSDeleteObject(&in_the_way);
  return status ? status : rename();
}

SInt32 GL_DeletePotentiallyBusyFileObject(const FSRef* object, SInt32 max_tries) {
  if (!object) return paramErr;
  SInt32 status = fBsyErr;
  for (SInt32 i = 0; i < max_tries && status == fBsyErr; ++i) {
    Delay(kTicksBetweenTries, nullptr);
    status = FSDeleteObject(object);
  }
  return status;
}

SInt32 GL_UnlinkObject(const FSRef* object) {
  return FSUnlinkObject(object);
}

SInt32 GL_CreateResourceFork(const FSRef* file) {
  HFSUniStr255 name;
  SInt32 status = FSGetResourceForkName(&name);
  if (!status) status = FSCreateFork(file, name.length, name.unicode);
  return status == errFSForkExists ? SInt32{noErr} : status;
}

SInt32 GL_OpenResourceFork(const FSRef* file, SInt8 permission, FSIORefNum* fork) {
  HFSUniStr255 name;
  const SInt32 status = FSGetResourceForkName(&name);
  return status ? status : FSOpenFork(file, name.length, name.unicode, permission, fork);
}

SInt32 GL_DeleteResourceFork(const FSRef* file) {
  FSIORefNum fork = 0;
  const SInt32 status = GL_OpenResourceFork(file, fsRdWrPerm, &fork);
  if (status) return status;
  const SInt32 cut_status = FSSetForkSize(fork, fsFromStart, 0);
  const SInt32 close_status = FSCloseFork(fork);
  return cut_status ? cut_status : close_status;
}
