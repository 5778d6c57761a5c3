#include "volume_mounting.h"

#include <libmount/libmount.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "mount_table.h"

namespace quillmere::files {
namespace {

struct ContextCloser {
  void operator()(libmnt_context* context) const { mnt_free_context(context); }
};

OSType SignatureOf(std::string_view type) {
  if (type == "cifs" || type == "smb2" || type == "smb3" || type == "smbfs") return kMountSMB;
  if (type == "afpfs" || type == "fuse.afpfs") return kMountAFP;
  return kMountOther;
}

/// The record of a mount; empty for a local one, or if it would be too long.
std::vector<UInt8> RecordOf(const Mount& mount) {
  std::vector<UInt8> record(sizeof(VolumeMountInfoHeader));
  if (!mount.is_network) return {};
  for (const std::string* text : {&mount.source, &mount.mount_point, &mount.type, &mount.options}) {
    record.insert(record.end(), text->begin(), text->end());
    record.push_back(0);
  }
  if (record.size() > std::numeric_limits<UInt16>::max()) return {};
  const VolumeMountInfoHeader header{static_cast<UInt16>(record.size()), SignatureOf(mount.type)};
  std::memcpy(record.data(), &header, sizeof(header));
  return record;
}

OSErr RecordOfVolume(FSVolumeRefNum volume, std::vector<UInt8>* record) {
  const auto table = Mounts();
  const Mount* mount = table ? FindMount(*table, volume) : nullptr;
  if (!mount) return nsvErr;
  *record = RecordOf(*mount);
  return record->empty() ? static_cast<OSErr>(paramErr) : OSErr{noErr};
}

/// The number of the volume that is mounted from a source at a place; 0 if there is none.
FSVolumeRefNum MountedVolume(const MountInfo& info) {
  const auto table = Mounts();
  if (!table) return 0;
  const auto found = std::find_if(table->begin(), table->end(), [&info](const Mount& mount) {
    return mount.source == info.source && mount.mount_point == info.mount_point;
  });
  return found == table->end() ? FSVolumeRefNum{0} : found->number;
}

OSErr MountNow(const MountInfo& info) {
  const std::unique_ptr<libmnt_context, ContextCloser> context(mnt_new_context());
  if (!context || mnt_context_set_source(context.get(), info.source.c_str()) != 0 ||
      mnt_context_set_target(context.get(), info.mount_point.c_str()) != 0 ||
      mnt_context_set_fstype(context.get(), info.type.c_str()) != 0 ||
      mnt_context_set_options(context.get(), info.options.c_str()) != 0) {
    return static_cast<OSErr>(memFullErr);
  }
  const int result = mnt_context_mount(context.get());
  if (result == 0) {
    // A helper program may have done it, and failed.
    return mnt_context_get_status(context.get()) == 1 ? OSErr{noErr} : ioErr;
  }
  return result < 0 ? StatusOfErrno(-result) : StatusOfErrno(errno);
}

}  // namespace

bool ReadMountInfo(std::span<const UInt8> record, MountInfo* info) {
  VolumeMountInfoHeader header;
  if (record.size() < sizeof(header)) return false;
  std::memcpy(&header, record.data(), sizeof(header));
  if (header.length < sizeof(header) || header.length > record.size()) return false;
  std::string_view text(reinterpret_cast<const char*>(record.data()) + sizeof(header),
                        header.length - sizeof(header));
  info->media = header.media;
  for (std::string* part : {&info->source, &info->mount_point, &info->type, &info->options}) {
    const std::size_t end = text.find('\0');
    if (end == std::string_view::npos) return false;
    *part = text.substr(0, end);
    text.remove_prefix(end + 1);
  }
  return text.empty() && !info->source.empty() && info->mount_point.starts_with('/') &&
         !info->type.empty();
}

}  // namespace quillmere::files

OSErr PBGetVolMountInfoSize(FSVolumeRefNum volume, UInt16* size) {
  if (!size) return static_cast<OSErr>(paramErr);
  *size = 0;
  std::vector<UInt8> record;
  const OSErr status = quillmere::files::RecordOfVolume(volume, &record);
  if (!status) *size = static_cast<UInt16>(record.size());
  return status;
}

OSErr PBGetVolMountInfo(FSVolumeRefNum volume, void* buffer, ByteCount buffer_size) {
  std::vector<UInt8> record;
  const OSErr status = quillmere::files::RecordOfVolume(volume, &record);
  if (status) return status;
  if (!buffer || buffer_size < record.size()) return static_cast<OSErr>(paramErr);
  std::memcpy(buffer, record.data(), record.size());
  return noErr;
}

OSErr PBVolumeMount(const void* record, ByteCount size, FSVolumeRefNum* volume) {
  if (!record || !volume) return static_cast<OSErr>(paramErr);
  *volume = 0;
  quillmere::files::MountInfo info;
  if (!quillmere::files::ReadMountInfo({static_cast<const UInt8*>(record), size}, &info)) {
    return static_cast<OSErr>(paramErr);
  }
  *volume = quillmere::files::MountedVolume(info);
  if (*volume != 0) return volOnLinErr;
  const OSErr status = quillmere::files::MountNow(info);
  if (!status) *volume = quillmere::files::MountedVolume(info);
  return status;
}
