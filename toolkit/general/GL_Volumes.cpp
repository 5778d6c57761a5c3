#include "GL_Volumes.h"

#include <cstring>

#include "GL_Dates.h"
#include "GL_Errors.h"
#include "GL_Memory.h"
#include "GL_Strings.h"
#include "GL_Strings_Unicode.h"
#include "MF_FileObjects.h"
#include "MF_Volumes.h"
#include "aliases.h"
#include "folders.h"
#include "volume_mounting.h"

namespace {

constexpr UInt64 kRootNodeID = 2;
constexpr UInt16 kFinderFlagAlias = 0x8000;
constexpr UInt16 kFinderFlagCustomIcon = 0x0400;
/// Versions of a volume's parameters: above the first they hold extended attributes, from the
/// second on the device.
constexpr SInt16 kNoExtendedAttributes = 2;
constexpr SInt16 kFirstWithDevice = 4;

/// Walks the volumes by index until `fits(info, name)` says yes or the walk ends. `*volume` takes
/// the number, 0 at the end. Gives what ended the walk, 0 if it was a volume that fits.
template <class Fits>
SInt32 WalkVolumes(FSVolumeInfoBitmap mask, Fits fits, FSVolumeRefNum* volume) {
  for (ItemCount index = 1;; ++index) {
    FSVolumeInfo info{};
    HFSUniStr255 name{};
    const SInt32 status = FSGetVolumeInfo(0, index, volume, mask, &info, &name, nullptr);
    if (status != noErr) {
      *volume = 0;
      return status;
    }
    if (fits(info, name)) return noErr;
  }
}

/// The volume of a name; here nsvErr stands for none in every case.
SInt32 RequireVolumeByName(const HFSUniStr255* name, FSVolumeRefNum* volume) {
  const SInt32 status = GL_GetVolumeByName(name, volume);
  if (status != noErr) return status;
  return *volume == 0 ? SInt32{nsvErr} : SInt32{noErr};
}

SInt32 ReadParameters(FSVolumeRefNum volume, GetVolParmsInfoBuffer* parameters) {
  *parameters = {};
  return MF_FSGetVolParms(volume, sizeof(*parameters), parameters, nullptr);
}

/// The signature at the head of a volume's mount information; 0 if it can't be read.
OSType MountSignature(FSVolumeRefNum volume, UInt16 size) {
  void* record = nullptr;
  if (size < sizeof(VolumeMountInfoHeader) || GL_NewPtrClear(size, &record) != noErr) return 0;
  VolumeMountInfoHeader header{};
  if (MF_FSGetVolMountInfo(volume, record, size) == noErr) {
    std::memcpy(&header, record, sizeof(header));
  }
  GL_DisposePtr(&record);
  return header.media;
}

/// What tells whether two objects lie in the same file system of a server.
struct SystemPlace {
  Boolean is_network;
  UInt16 filesystem_id;  ///< the one that an alias of the object holds
};

SInt32 FindSystem(const FSRef* reference, SystemPlace* place) {
  FSVolumeRefNum volume = 0;
  SInt32 status = MF_FSGetVRefNum(reference, &volume);
  if (status == noErr) status = GL_IsNetworkVolume(nullptr, volume, &place->is_network);
  if (status != noErr || !place->is_network) return status;
  AliasHandle alias = nullptr;
  status = FSNewAlias(nullptr, reference, &alias);
  if (status != noErr) return status;
  FSAliasInfo info{};
  status = FSCopyAliasInfo(alias, nullptr, nullptr, nullptr, nullptr, &info);
  DisposeHandle(alias);
  place->filesystem_id = info.filesystemID;
  return status;
}

}  // namespace

SInt32 GL_IsVolume(const FSRef* reference, Boolean* is_volume) {
  if (is_volume == nullptr) return paramErr;
  UInt64 node_id = 0;
  const SInt32 status = MF_FSGetNodeID(reference, &node_id, nullptr);
  if (status == noErr) *is_volume = node_id == kRootNodeID;
  return status;
}

SInt32 GL_GetFileObjectType(const FSRef* reference, UInt16* kind) {
  if (kind == nullptr) return paramErr;
  *kind = kGL_UnknownObject;
  Boolean is_volume = 0;
  SInt32 status = GL_IsVolume(reference, &is_volume);
  if (status != noErr) return status;
  if (is_volume) {
    *kind = kGL_VolumeObject;
    return noErr;
  }
  MF_FinderInfo info{};
  Boolean is_folder = 0;
  status = MF_FSGetFinderInfo(reference, &info, nullptr, &is_folder);
  if (status != noErr) return status;
  if (is_folder) {
    *kind = kGL_FolderObject;
  } else {
    *kind = info.finderFlags & kFinderFlagAlias ? kGL_AliasObject : kGL_FileObject;
  }
  return noErr;
}

SInt32 GL_GetVolumeRef(FSVolumeRefNum volume, FSRef* root) {
  if (root == nullptr) return paramErr;
  return FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoNone, nullptr, nullptr, root);
}

SInt32 GL_GetVolumeByName(const HFSUniStr255* name, FSVolumeRefNum* volume) {
  if (name == nullptr || volume == nullptr) return paramErr;
  const SInt32 status = WalkVolumes(
      kFSVolInfoNone,
      [name](const FSVolumeInfo&, const HFSUniStr255& found) {
        return GL_EqualHFSUniStr255(&found, name);
      },
      volume);
  return status == errFSNoMoreItems ? SInt32{noErr} : status;
}

SInt32 GL_GetVolumeByCreateDate(const UTCDateTime* date, FSVolumeRefNum* volume) {
  if (date == nullptr || volume == nullptr) return paramErr;
  *volume = 0;
  const SInt32 status = WalkVolumes(
      kFSVolInfoCreateDate,
      [date](const FSVolumeInfo& info, const HFSUniStr255&) {
        return GL_EqualUTCDateTime(&info.createDate, date);
      },
      volume);
  return status == errFSNoMoreItems || status == nsvErr ? SInt32{noErr} : status;
}

SInt32 GL_GetVolumeRefByNameAsCFString(CFStringRef name, FSRef* root) {
  HFSUniStr255 record{};
  SInt32 status = FSGetHFSUniStrFromString(name, &record);
  FSVolumeRefNum volume = 0;
  if (status == noErr) status = RequireVolumeByName(&record, &volume);
  return status != noErr ? status : GL_GetVolumeRef(volume, root);
}

SInt32 GL_GetVolumeName(FSVolumeRefNum volume, HFSUniStr255* name) {
  if (name == nullptr) return paramErr;
  return MF_FSGetVInfo(volume, name, nullptr, nullptr);
}

SInt32 GL_GetVolumeNameFromFSRef(const FSRef* reference, HFSUniStr255* name) {
  FSVolumeRefNum volume = 0;
  const SInt32 status = MF_FSGetVRefNum(reference, &volume);
  return status != noErr ? status : GL_GetVolumeName(volume, name);
}

SInt32 GL_GetVolumeNameFromFSRefAsCFStr(const FSRef* reference, CFStringRef* name) {
  if (name == nullptr) return paramErr;
  *name = nullptr;
  HFSUniStr255 record{};
  const SInt32 status = GL_GetVolumeNameFromFSRef(reference, &record);
  if (status == noErr) *name = FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &record);
  return status;
}

SInt32 GL_GetStartupVolume(FSRef* root, HFSUniStr255* name) {
  FSVolumeRefNum volume = 0;
  const SInt32 status = GL_GetStartupVolumeRefNum(&volume);
  if (status != noErr) return status;
  return FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoNone, nullptr, name, root);
}

SInt32 GL_GetStartupVolumeRefNum(FSVolumeRefNum* volume) {
  if (volume == nullptr) return paramErr;
  FSRef folder{};
  const SInt32 status = FSFindFolder(kOnSystemDisk, kSystemFolderType, 0, &folder);
  return status != noErr ? status : MF_FSGetVRefNum(&folder, volume);
}

SInt32 GL_GetDriveNumber(FSVolumeRefNum volume, SInt16* drive) {
  if (drive == nullptr) return paramErr;
  FSVolumeInfo info{};
  const SInt32 status =
      FSGetVolumeInfo(volume, 0, nullptr, kFSVolInfoDriveInfo, &info, nullptr, nullptr);
  if (status == noErr) *drive = info.driveNumber;
  return status;
}

SInt32 GL_GetDriveVolume(SInt16 drive, FSVolumeRefNum* volume) {
  if (volume == nullptr) return paramErr;
  *volume = 0;
  Handle roots = nullptr;
  ItemCount count = 0;
  SInt32 status = MF_FSGetMountedVolumes(&roots, &count);
  for (ItemCount i = 0; i < count && status == noErr && *volume == 0; ++i) {
    FSRef root{};
    std::memcpy(&root, *roots + i * sizeof(root), sizeof(root));
    FSVolumeRefNum candidate = 0;
    SInt16 its_drive = 0;
    status = MF_FSGetVRefNum(&root, &candidate);
    if (status == noErr) status = GL_GetDriveNumber(candidate, &its_drive);
    if (status == noErr && its_drive == drive) *volume = candidate;
  }
  GL_DisposeHandle(&roots);
  return status == noErr && *volume == 0 ? SInt32{nsvErr} : status;
}

SInt32 GL_VolumeToBSDNodeName(FSVolumeRefNum volume, char* node_name) {
  if (node_name == nullptr) return paramErr;
  FSVolumeRefNum actual = 0;
  FSVolumeInfo info{};
  SInt32 status = FSGetVolumeInfo(volume, 0, &actual, kFSVolInfoFSInfo, &info, nullptr, nullptr);
  if (status != noErr) return status;
  GetVolParmsInfoBuffer parameters{};
  status = FSGetVolumeParms(actual, &parameters, sizeof(parameters));
  if (status != noErr) return status;
  if (parameters.vMVersion < kFirstWithDevice) return GL_BadSystemErr;
  const char* const device = parameters.vMDeviceID;
  const auto* const end =
      device ? static_cast<const char*>(std::memchr(device, 0, kGL_NodeNameSize)) : nullptr;
  if (end == nullptr) {
    node_name[0] = 0;
    return GL_NoNodeNameErr;
  }
  std::memcpy(node_name, device, static_cast<std::size_t>(end - device) + 1);
  return noErr;
}

SInt32 GL_GetDiskName(FSVolumeRefNum volume, char* node_name) {
  return GL_VolumeToBSDNodeName(volume, node_name);
}

SInt32 GL_FlushVol(const FSRef* reference) {
  FSVolumeRefNum volume = 0;
  const SInt32 status = MF_FSGetVRefNum(reference, &volume);
  return status != noErr ? status : FSFlushVolume(volume);
}

SInt32 GL_GetFreeSpace(FSVolumeRefNum volume, UInt64* free_bytes) {
  if (free_bytes == nullptr) return paramErr;
  return MF_FSGetVInfo(volume, nullptr, free_bytes, nullptr);
}

SInt32 GL_XGetVInfoByName(const HFSUniStr255* name, FSVolumeRefNum* volume, UInt64* free_bytes,
                          UInt64* total_bytes) {
  if (volume == nullptr) return paramErr;
  const SInt32 status = RequireVolumeByName(name, volume);
  return status != noErr ? status : MF_FSGetVInfo(*volume, nullptr, free_bytes, total_bytes);
}

SInt32 GL_IsHFSPlusVolume(FSVolumeRefNum volume, Boolean* is_plus, SInt32* extended_attributes) {
  if (is_plus == nullptr) return paramErr;
  GetVolParmsInfoBuffer parameters{};
  const SInt32 status = ReadParameters(volume, &parameters);
  if (status != noErr) return status;
  const SInt32 attributes =
      parameters.vMVersion > kNoExtendedAttributes ? parameters.vMExtendedAttributes : 0;
  *is_plus = (attributes & kSupportsHFSPlusAPIs) != 0;
  if (extended_attributes != nullptr) *extended_attributes = attributes;
  return noErr;
}

SInt32 GL_IsNetworkVolume(const HFSUniStr255* name, FSVolumeRefNum volume, Boolean* is_network) {
  if (is_network == nullptr) return paramErr;
  SInt32 status = noErr;
  if (volume == 0) status = RequireVolumeByName(name, &volume);
  if (status != noErr) return status;
  GetVolParmsInfoBuffer parameters{};
  status = ReadParameters(volume, &parameters);
  *is_network = status == noErr && parameters.vMServerAdr != 0;
  return status;
}

SInt32 GL_IsVolumeLocked(FSVolumeRefNum volume) {
  return MF_FSLockOfVolume(volume);
}

GL_VolumeKind GL_GetVolumeKind(const FSRef* reference) {
  FSVolumeRefNum volume = 0;
  if (MF_FSGetVRefNum(reference, &volume) != noErr) return kGL_NoVolume;
  UInt16 size = 0;
  if (MF_FSGetVolMountInfoSize(volume, &size) != noErr) {
    UInt16 id = 0;
    if (MF_FSGetVolFileSystemID(volume, &id, nullptr) != noErr) return kGL_NoVolume;
    return id == 0 ? kGL_LocalVolume : kGL_OtherVolume;
  }
  switch (MountSignature(volume, size)) {
    case kMountAFP:
      return kGL_AFPVolume;
    case kMountSMB:
      return kGL_SMBVolume;
    case kMountOther:
      return kGL_OtherVolume;
    default:
      return kGL_NoVolume;
  }
}

SInt32 GL_GetDirAccess(const FSRef* reference, UInt8* rights) {
  if (rights == nullptr) return paramErr;
  return MF_FSGetUserPrivilegesPermissions(reference, rights, nullptr);
}

SInt32 GL_FileHasCustomIcon(const FSRef* reference, Boolean* has) {
  if (has == nullptr) return paramErr;
  MF_FinderInfo info{};
  const SInt32 status = MF_FSGetFinderInfo(reference, &info, nullptr, nullptr);
  if (status == noErr) *has = (info.finderFlags & kFinderFlagCustomIcon) != 0;
  return status;
}

SInt32 GL_FileObjectsOnSameVolume(const FSRef* a, const FSRef* b, Boolean* same) {
  if (same == nullptr) return paramErr;
  FSVolumeRefNum volume_a = 0;
  FSVolumeRefNum volume_b = 0;
  SInt32 status = MF_FSGetVRefNum(a, &volume_a);
  if (status == noErr) status = MF_FSGetVRefNum(b, &volume_b);
  if (status == noErr) *same = volume_a == volume_b;
  return status;
}

SInt32 GL_VolumesOnSameDisk(FSVolumeRefNum a, FSVolumeRefNum b, Boolean* same) {
  if (same == nullptr) return paramErr;
  char node_a[kGL_NodeNameSize] = {};
  char node_b[kGL_NodeNameSize] = {};
  SInt32 status = GL_VolumeToBSDNodeName(a, node_a);
  if (status == noErr) status = GL_VolumeToBSDNodeName(b, node_b);
  if (status == noErr) *same = GL_EqualCStringMP(node_a, node_b, kGL_NodeNameSize - 1);
  return status;
}

SInt32 GL_FileObjectsOnSameSystem(const FSRef* a, const FSRef* b, Boolean* same) {
  if (same == nullptr) return paramErr;
  SystemPlace place_a{};
  SystemPlace place_b{};
  SInt32 status = FindSystem(a, &place_a);
  if (status == noErr) status = FindSystem(b, &place_b);
  if (status == noErr) {
    *same =
        place_a.is_network == place_b.is_network && place_a.filesystem_id == place_b.filesystem_id;
  }
  return status;
}
