#include "volumes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

#include "mount_table.h"
#include "moves.h"

namespace fs = std::filesystem;

namespace quillmere::files {
namespace {

constexpr FSVolumeInfoBitmap kKnownInfo = kFSVolInfoCreateDate | kFSVolInfoSizes | kFSVolInfoFlags |
                                          kFSVolInfoFSInfo | kFSVolInfoDriveInfo;
/// The name of the root's volume when it has no label.
constexpr char kRootName[] = "File System";

/// Major and minor number, as folders of /sys are called.
std::string DeviceNumbers(dev_t device) {
  return std::to_string(major(device)) + ":" + std::to_string(minor(device));
}

/// The device that a mount lies on; some file systems have a number of their own instead of it.
dev_t BlockDevice(const Mount& mount) {
  struct stat node;
  if (mount.source.starts_with('/') && stat(mount.source.c_str(), &node) == 0 &&
      S_ISBLK(node.st_mode)) {
    return node.st_rdev;
  }
  return mount.device;
}

/// A label as links in /dev/disk/by-label have it: "\x20" stands for a byte.
std::string DecodedLabel(std::string_view text) {
  std::string label;
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned value = 0;
    if (i + 3 < text.size() && text[i] == '\\' && text[i + 1] == 'x' &&
        std::sscanf(std::string(text.substr(i + 2, 2)).c_str(), "%2x", &value) == 1) {
      label += static_cast<char>(value);
      i += 3;
    } else {
      label += text[i];
    }
  }
  return label;
}

/// The label of the file system on a block device; empty if it has none.
std::string LabelOf(dev_t device) {
  std::error_code error;
  for (const fs::directory_entry& link : fs::directory_iterator("/dev/disk/by-label", error)) {
    struct stat node;
    if (stat(link.path().c_str(), &node) == 0 && S_ISBLK(node.st_mode) && node.st_rdev == device) {
      return DecodedLabel(link.path().filename().native());
    }
  }
  return {};
}

std::string NameOf(const Mount& mount) {
  std::string label = mount.is_network ? std::string() : LabelOf(BlockDevice(mount));
  if (!label.empty()) return label;
  if (mount.mount_point == "/") return kRootName;
  return fs::path(mount.mount_point).filename().native();
}

void StoreName(const std::string& text, HFSUniStr255* name) {
  const Owned<CFStringRef> string(CreateFromUtf8(text));
  const std::u16string_view units = UnitsOf(string.get()).substr(0, 255);
  name->length = static_cast<UInt16>(units.size());
  units.copy(name->unicode, units.size());
}

/// Whether the medium itself can't be written.
bool IsHardwareLocked(const Mount& mount) {
  static constexpr std::array<std::string_view, 4> kReadOnlyTypes = {"iso9660", "squashfs", "erofs",
                                                                     "cramfs"};
  if (std::find(kReadOnlyTypes.begin(), kReadOnlyTypes.end(), mount.type) != kReadOnlyTypes.end()) {
    return true;
  }
  std::ifstream file("/sys/dev/block/" + DeviceNumbers(BlockDevice(mount)) + "/ro");
  char state = '0';
  return file.get(state) && state == '1';
}

UInt16 FlagsOf(const Mount& mount) {
  return static_cast<UInt16>((IsHardwareLocked(mount) ? kFSVolFlagHardwareLockedMask : 0) |
                             (mount.is_read_only ? kFSVolFlagSoftwareLockedMask : 0));
}

/// 0 for the formats that keep all that files here have; others by their names.
UInt16 FilesystemID(const std::string& type) {
  static constexpr std::array<std::string_view, 13> kOwnFormats = {
      "ext2", "ext3",     "ext4",  "xfs",   "btrfs",   "zfs",     "f2fs",
      "jfs",  "reiserfs", "tmpfs", "ramfs", "overlay", "bcachefs"};
  if (std::find(kOwnFormats.begin(), kOwnFormats.end(), type) != kOwnFormats.end()) return 0;
  const UInt32 number = NumberOfText(type);
  const auto folded = static_cast<UInt16>(number ^ (number >> 16));
  return folded == 0 ? 1 : folded;
}

/// Numbers for drives, from 1 in the order in which they are asked for.
SInt16 DriveNumber(const Mount& mount) {
  static std::mutex mutex;
  static std::map<std::string, SInt16> numbers;
  const std::lock_guard lock(mutex);
  const std::string drive =
      mount.source.starts_with('/') ? mount.source : DeviceNumbers(mount.device);
  if (numbers.size() >= std::numeric_limits<SInt16>::max()) return 0;
  return numbers.emplace(drive, static_cast<SInt16>(numbers.size() + 1)).first->second;
}

UInt64 Product(UInt64 count, UInt64 size) {
  UInt64 product = 0;
  return __builtin_mul_overflow(count, size, &product) ? std::numeric_limits<UInt64>::max()
                                                       : product;
}

OSErr ReadSizes(const Mount& mount, FSVolumeInfo* info) {
  struct statvfs sizes;
  if (statvfs(mount.mount_point.c_str(), &sizes) != 0) return StatusOfErrno(errno);
  info->totalBytes = Product(sizes.f_blocks, sizes.f_frsize);
  info->freeBytes = Product(sizes.f_bavail, sizes.f_frsize);
  return noErr;
}

UTCDateTime CreateDate(const Mount& mount) {
  struct statx root;
  if (statx(AT_FDCWD, mount.mount_point.c_str(), 0, STATX_BTIME, &root) != 0 ||
      !(root.stx_mask & STATX_BTIME) || root.stx_btime.tv_sec == 0) {
    return {};
  }
  return DateOfUnixTime(root.stx_btime.tv_sec, root.stx_btime.tv_nsec);
}

OSErr ReadInfo(const Mount& mount, FSVolumeInfoBitmap mask, FSVolumeInfo* info) {
  if (mask & kFSVolInfoSizes) {
    const OSErr status = ReadSizes(mount, info);
    if (status) return status;
  }
  if (mask & kFSVolInfoCreateDate) info->createDate = CreateDate(mount);
  if (mask & kFSVolInfoFlags) info->flags = FlagsOf(mount);
  if (mask & kFSVolInfoFSInfo) {
    info->filesystemID = FilesystemID(mount.type);
    info->signature = kVolumeSignature;
  }
  if (mask & kFSVolInfoDriveInfo) info->driveNumber = DriveNumber(mount);
  return noErr;
}

/// The mount `index` of the walk, from 1.
const Mount* ListedMount(const MountTable& table, ItemCount index) {
  for (const Mount& mount : table) {
    if (mount.is_listed && --index == 0) return &mount;
  }
  return nullptr;
}

/// The part of a source that names the server: "//server/share", "server:/path".
std::string_view ServerOf(std::string_view source) {
  if (source.starts_with("//")) source = source.substr(2);
  return source.substr(0, source.find_first_of(":/"));
}

/// The name of a mount's node in /dev, kept for as long as the process lives; null if it has none.
const char* DeviceNode(const Mount& mount) {
  static std::mutex mutex;
  static std::set<std::string> names;
  std::error_code error;
  std::string name = fs::read_symlink("/sys/dev/block/" + DeviceNumbers(BlockDevice(mount)), error)
                         .filename()
                         .native();
  if (name.empty() && mount.source.starts_with("/dev/")) name = mount.source.substr(5);
  if (name.empty()) return nullptr;
  const std::lock_guard lock(mutex);
  return names.insert(name).first->c_str();
}

/// The kernel's number of the mount that holds an object; -1 if it does not tell.
int MountIdAt(const struct statx& found) {
#ifdef STATX_MNT_ID
  if (found.stx_mask & STATX_MNT_ID) return static_cast<int>(found.stx_mnt_id);
#endif
  static_cast<void>(found);
  return -1;
}

/// The mount whose mount point is the longest beginning of a path.
const Mount* MountAbove(const MountTable& table, const fs::path& path) {
  std::error_code error;
  fs::path place = fs::weakly_canonical(path.parent_path(), error) / path.filename();
  if (error) place = path;
  const Mount* best = nullptr;
  for (const Mount& mount : table) {
    const std::string& point = mount.mount_point;
    const std::string& text = place.native();
    const bool above =
        point == "/" || text == point || (text.starts_with(point) && text[point.size()] == '/');
    if (above && (!best || point.size() > best->mount_point.size())) best = &mount;
  }
  return best;
}

}  // namespace

OSStatus VolumeOfPath(const fs::path& path, FSVolumeRefNum* volume) {
  *volume = 0;
  unsigned mask = STATX_TYPE;
#ifdef STATX_MNT_ID
  mask |= STATX_MNT_ID;
#endif
  struct statx found;
  if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, mask, &found) != 0) {
    return StatusOfErrno(errno);
  }
  const auto table = Mounts();
  if (!table) return nsvErr;
  const int id = IsSystemMountTable() ? MountIdAt(found) : -1;
  const auto by_id = std::find_if(table->begin(), table->end(),
                                  [id](const Mount& mount) { return id >= 0 && mount.id == id; });
  const Mount* mount = by_id != table->end() ? &*by_id : MountAbove(*table, path);
  if (!mount) return nsvErr;
  *volume = mount->number;
  return noErr;
}

OSStatus MountPointOfVolume(FSVolumeRefNum volume, fs::path* mount_point) {
  const auto table = Mounts();
  const Mount* mount = table ? FindMount(*table, volume) : nullptr;
  if (!mount) return nsvErr;
  *mount_point = mount->mount_point;
  return noErr;
}

bool IsMountPoint(const fs::path& path) {
  const auto table = Mounts();
  return table && std::any_of(table->begin(), table->end(), [&](const Mount& mount) {
           return mount.mount_point == path.native();
         });
}

}  // namespace quillmere::files

using quillmere::files::DeviceNode;
using quillmere::files::FindMount;
using quillmere::files::ListedMount;
using quillmere::files::Mount;
using quillmere::files::Mounts;
using quillmere::files::StatusOfErrno;

OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount index, FSVolumeRefNum* actual_volume,
                      FSVolumeInfoBitmap mask, FSVolumeInfo* info, HFSUniStr255* name,
                      FSRef* root) {
  if ((mask & ~quillmere::files::kKnownInfo) || (mask && !info)) {
    return static_cast<OSErr>(paramErr);
  }
  const auto table = Mounts();
  if (!table) return nsvErr;
  const Mount* mount = index > 0 ? ListedMount(*table, index) : FindMount(*table, volume);
  if (!mount) return nsvErr;
  OSStatus status = quillmere::files::ReadInfo(*mount, mask, info);
  if (!status && root) status = quillmere::files::ReferenceOf(mount->mount_point, root);
  if (status) return static_cast<OSErr>(status);
  if (name) quillmere::files::StoreName(quillmere::files::NameOf(*mount), name);
  if (actual_volume) *actual_volume = mount->number;
  return noErr;
}

OSErr FSFlushVolume(FSVolumeRefNum volume) {
  fs::path mount_point;
  const OSStatus status = quillmere::files::MountPointOfVolume(volume, &mount_point);
  if (status) return static_cast<OSErr>(status);
  const int folder = open(mount_point.c_str(), O_RDONLY | O_CLOEXEC);
  if (folder < 0) return StatusOfErrno(errno);
  const OSErr result = syncfs(folder) == 0 ? OSErr{noErr} : StatusOfErrno(errno);
  close(folder);
  return result;
}

OSErr PBHGetVolParmsSync(FSVolumeRefNum volume, ByteCount buffer_size,
                         GetVolParmsInfoBuffer* buffer, ByteCount* actual_size) {
  if (actual_size) *actual_size = 0;
  if (!buffer) return static_cast<OSErr>(paramErr);
  const auto table = Mounts();
  const Mount* mount = table ? FindMount(*table, volume) : nullptr;
  if (!mount) return nsvErr;
  GetVolParmsInfoBuffer all{};
  all.vMVersion = 5;
  all.vMAttrib = kHasFileIDs | kHasCatSearch | kHasMoveRename | kHasCopyFile;
  if (mount->is_network) {
    all.vMServerAdr = static_cast<SInt32>(
        quillmere::files::NumberOfText(quillmere::files::ServerOf(mount->source)));
  }
  all.vMExtendedAttributes =
      kSupportsHFSPlusAPIs |
      (quillmere::files::FormatExchangesFiles(mount->type) ? kSupportsExchangeFiles : 0);
  all.vMDeviceID = mount->is_network ? nullptr : DeviceNode(*mount);
  all.vMMaxNameLength = 255;
  const ByteCount size = std::min<ByteCount>(buffer_size, sizeof(all));
  std::memcpy(buffer, &all, size);
  if (actual_size) *actual_size = size;
  return noErr;
}

OSStatus FSGetVolumeParms(FSVolumeRefNum volume, GetVolParmsInfoBuffer* buffer,
                          ByteCount buffer_size) {
  return PBHGetVolParmsSync(volume, buffer_size, buffer, nullptr);
}
