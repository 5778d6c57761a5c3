#include "MF_Volumes.h"

#include "MF_trace_private.h"
#include "volume_access.h"
#include "volume_mounting.h"

namespace {

using quillmere::file_objects::Checked;
using quillmere::file_objects::kCatalogFailed;
using quillmere::file_objects::Trace;

constexpr const char kVolumeInfoFailed[] = "FSGetVolumeInfo failed";

}  // namespace

SInt32 MF_FSGetVInfo(FSVolumeRefNum volume, HFSUniStr255* name, UInt64* free_bytes,
                     UInt64* total_bytes) {
  const Trace trace("MF_FSGetVInfo");
  const bool wants_sizes = free_bytes || total_bytes;
  FSVolumeInfo info{};
  const SInt32 status =
      Checked(FSGetVolumeInfo(volume, 0, nullptr, wants_sizes ? kFSVolInfoSizes : kFSVolInfoNone,
                              &info, name, nullptr),
              kVolumeInfoFailed);
  if (status) return status;
  if (free_bytes) *free_bytes = info.freeBytes;
  if (total_bytes) *total_bytes = info.totalBytes;
  return noErr;
}

SInt32 MF_FSGetVolFileSystemID(FSVolumeRefNum volume, UInt16* id, UInt16* signature) {
  const Trace trace("MF_FSGetVolFileSystemID");
  FSVolumeInfo info{};
  const SInt32 status =
      Checked(FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoFSInfo, &info, nullptr, nullptr),
              kVolumeInfoFailed);
  if (status) return status;
  if (id) *id = info.filesystemID;
  if (signature) *signature = info.signature;
  return noErr;
}

SInt32 MF_FSGetVolParms(FSVolumeRefNum volume, ByteCount buffer_size, GetVolParmsInfoBuffer* buffer,
                        ByteCount* actual_size) {
  const Trace trace("MF_FSGetVolParms");
  return Checked(PBHGetVolParmsSync(volume, buffer_size, buffer, actual_size),
                 "PBHGetVolParmsSync failed");
}

SInt32 MF_FSGetMountedVolumes(Handle* roots, ItemCount* count) {
  const Trace trace("MF_FSGetMountedVolumes");
  if (!roots || !count) return paramErr;
  *count = 0;
  *roots = NewHandle(0);
  SInt32 status = *roots ? SInt32{noErr} : SInt32{MemError()};
  ItemCount index = 0;
  while (!status) {
    FSRef root{};
    status = FSGetVolumeInfo(0, ++index, nullptr, kFSVolInfoNone, nullptr, nullptr, &root);
    if (!status) status = PtrAndHand(&root, *roots, sizeof(root));
  }
  if (status == nsvErr) {
    *count = index - 1;
    return noErr;
  }
  DisposeHandle(*roots);
  *roots = nullptr;
  return Checked(status, kVolumeInfoFailed);
}

SInt32 MF_FSLockOfVolume(FSVolumeRefNum volume) {
  const Trace trace("MF_FSLockOfVolume");
  FSVolumeInfo info{};
  const SInt32 status =
      Checked(FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoFlags, &info, nullptr, nullptr),
              kVolumeInfoFailed);
  if (status) return status;
  if (info.flags & kFSVolFlagHardwareLockedMask) return wPrErr;
  return info.flags & kFSVolFlagSoftwareLockedMask ? SInt32{vLckdErr} : SInt32{noErr};
}

SInt32 MF_FSCheckLock(const FSRef* reference) {
  const Trace trace("MF_FSCheckLock");
  FSCatalogInfo info{};
  const SInt32 status = Checked(FSGetCatalogInfo(reference, kFSCatInfoNodeFlags | kFSCatInfoVolume,
                                                 &info, nullptr, nullptr, nullptr),
                                kCatalogFailed);
  if (status) return status;
  if (info.nodeFlags & kFSNodeLockedMask) return fLckdErr;
  return MF_FSLockOfVolume(info.volume);
}

SInt32 MF_FSGetUserPrivilegesPermissions(const FSRef* reference, UInt8* privileges,
                                         FSPermissionInfo* permissions) {
  const Trace trace("MF_FSGetUserPrivilegesPermissions");
  FSCatalogInfo info{};
  const FSCatalogInfoBitmap mask = (privileges ? kFSCatInfoUserPrivs : kFSCatInfoNone) |
                                   (permissions ? kFSCatInfoPermissions : kFSCatInfoNone);
  const SInt32 status =
      Checked(FSGetCatalogInfo(reference, mask, &info, nullptr, nullptr, nullptr), kCatalogFailed);
  if (status) return status;
  if (privileges) *privileges = info.userPrivileges;
  if (permissions) *permissions = info.permissions;
  return noErr;
}

SInt32 MF_FSGetDirAccess(const FSRef* folder, UInt32* owner, UInt32* group, UInt32* rights) {
  const Trace trace("MF_FSGetDirAccess");
  return Checked(PBHGetDirAccessSync(folder, owner, group, rights), "PBHGetDirAccessSync failed");
}

SInt32 MF_FSSetDirAccess(const FSRef* folder, UInt32 owner, UInt32 group, UInt32 rights) {
  const Trace trace("MF_FSSetDirAccess");
  return Checked(PBHSetDirAccessSync(folder, owner, group, rights), "PBHSetDirAccessSync failed");
}

SInt32 MF_FSMapID(FSVolumeRefNum volume, Boolean is_group, UInt32 id, HFSUniStr255* name) {
  const Trace trace("MF_FSMapID");
  return Checked(PBHMapIDSync(volume, is_group, id, name), "PBHMapIDSync failed");
}

SInt32 MF_FSMapName(FSVolumeRefNum volume, Boolean is_group, const HFSUniStr255* name, UInt32* id) {
  const Trace trace("MF_FSMapName");
  return Checked(PBHMapNameSync(volume, is_group, name, id), "PBHMapNameSync failed");
}

SInt32 MF_FSGetVolMountInfoSize(FSVolumeRefNum volume, UInt16* size) {
  const Trace trace("MF_FSGetVolMountInfoSize");
  return Checked(PBGetVolMountInfoSize(volume, size), "PBGetVolMountInfoSize failed");
}

SInt32 MF_FSGetVolMountInfo(FSVolumeRefNum volume, void* buffer, ByteCount buffer_size) {
  const Trace trace("MF_FSGetVolMountInfo");
  return Checked(PBGetVolMountInfo(volume, buffer, buffer_size), "PBGetVolMountInfo failed");
}

SInt32 MF_FSVolumeMount(const void* record, ByteCount size, FSVolumeRefNum* volume) {
  const Trace trace("MF_FSVolumeMount");
  return Checked(PBVolumeMount(record, size, volume), "PBVolumeMount failed");
}
