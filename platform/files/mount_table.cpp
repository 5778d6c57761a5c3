#include "mount_table.h"

#include <fcntl.h>
#include <libmount/libmount.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <string_view>

namespace quillmere::files {
namespace {

constexpr char kSystemTable[] = "/proc/self/mountinfo";
constexpr FSVolumeRefNum kFirstVolume = -100;
/// Numbers below are domains.
constexpr FSVolumeRefNum kLastVolume = -32000;

struct TableCloser {
  void operator()(libmnt_table* table) const { mnt_unref_table(table); }
};
struct IteratorCloser {
  void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

/// The process's knowledge of mounts.
struct State {
  std::mutex mutex;
  std::filesystem::path path = kSystemTable;
  int watched = -1;  ///< the open system table, which tells by poll when it has changed
  std::shared_ptr<const MountTable> table;
  std::map<std::string, FSVolumeRefNum, std::less<>> numbers;
};

State& TheState() {
  // Never destroyed: files are closed until the process ends.
  static auto* state = std::make_unique<State>().release();
  return *state;
}

std::string TextOf(const char* text) {
  return text ? text : std::string();
}

bool IsBeneath(std::string_view path, std::string_view folder) {
  return path == folder ||
         (path.starts_with(folder) && path.size() > folder.size() && path[folder.size()] == '/');
}

/// File systems without a disk that hold files of users all the same.
bool HoldsFiles(std::string_view type) {
  static constexpr std::array<std::string_view, 5> kTypes = {"tmpfs", "ramfs", "overlay",
                                                             "virtiofs", "vboxsf"};
  return type.starts_with("fuse.") || std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

/// Whether a walk over the volumes shows the mount.
bool IsListed(libmnt_fs* entry, const Mount& mount) {
  if (mount.mount_point == "/") return true;
  for (const std::string_view folder : {"/proc", "/sys", "/dev"}) {
    if (IsBeneath(mount.mount_point, folder)) return false;
  }
  if (IsBeneath(mount.mount_point, "/run") && !IsBeneath(mount.mount_point, "/run/media")) {
    return false;
  }
  return mount.is_network || HoldsFiles(mount.type) || !mnt_fs_is_pseudofs(entry);
}

/// Network file systems that libmount does not count as such.
bool IsNetworkType(std::string_view type) {
  static constexpr std::array<std::string_view, 5> kTypes = {"afpfs", "fuse.afpfs", "ceph", "davfs",
                                                             "smb2"};
  return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

/// The number of a mount, the same for as long as the process lives; 0 when all are used up.
FSVolumeRefNum NumberOf(const Mount& mount, State* state) {
  std::string key = mount.mount_point;
  for (const std::string_view part :
       {std::string_view(mount.root), std::string_view(mount.source), std::string_view(mount.type)})
    key.append(1, '\0').append(part);
  const auto found = state->numbers.find(key);
  if (found != state->numbers.end()) return found->second;
  const auto used = static_cast<SInt32>(state->numbers.size());
  if (kFirstVolume - used < kLastVolume) return 0;
  const auto number = static_cast<FSVolumeRefNum>(kFirstVolume - used);
  state->numbers.emplace(std::move(key), number);
  return number;
}

Mount MountOf(libmnt_fs* entry) {
  Mount mount{};
  mount.id = mnt_fs_get_id(entry);
  mount.device = mnt_fs_get_devno(entry);
  mount.source = TextOf(mnt_fs_get_source(entry));
  mount.mount_point = TextOf(mnt_fs_get_target(entry));
  mount.root = TextOf(mnt_fs_get_root(entry));
  mount.type = TextOf(mnt_fs_get_fstype(entry));
  mount.options = TextOf(mnt_fs_get_options(entry));
  char* value = nullptr;
  std::size_t length = 0;
  mount.is_read_only = mnt_optstr_get_option(mount.options.c_str(), "ro", &value, &length) == 0;
  mount.is_network = mnt_fs_is_netfs(entry) == 1 || IsNetworkType(mount.type);
  mount.is_listed = IsListed(entry, mount);
  return mount;
}

std::shared_ptr<const MountTable> ReadTable(State* state) {
  const std::unique_ptr<libmnt_table, TableCloser> read(mnt_new_table());
  const std::unique_ptr<libmnt_iter, IteratorCloser> iterator(mnt_new_iter(MNT_ITER_FORWARD));
  if (!read || !iterator || mnt_table_parse_file(read.get(), state->path.c_str()) != 0) {
    return nullptr;
  }
  auto table = std::make_shared<MountTable>();
  libmnt_fs* entry = nullptr;
  while (mnt_table_next_fs(read.get(), iterator.get(), &entry) == 0) {
    Mount mount = MountOf(entry);
    if (mount.mount_point.empty() || mount.mount_point[0] != '/') continue;
    // What was mounted there before is out of sight.
    std::erase_if(*table,
                  [&](const Mount& other) { return other.mount_point == mount.mount_point; });
    mount.number = NumberOf(mount, state);
    if (mount.number != 0) table->push_back(std::move(mount));
  }
  std::stable_partition(table->begin(), table->end(),
                        [](const Mount& mount) { return mount.mount_point == "/"; });
  return table;
}

/// Whether the table has changed since it was read.
bool HasChanged(State* state) {
  if (!state->table || state->path != kSystemTable) return true;
  pollfd watch{state->watched, POLLPRI, 0};
  return state->watched < 0 || poll(&watch, 1, 0) != 0;
}

}  // namespace

std::shared_ptr<const MountTable> Mounts() {
  State& state = TheState();
  const std::lock_guard lock(state.mutex);
  if (state.watched < 0) state.watched = open(kSystemTable, O_RDONLY | O_CLOEXEC);
  if (HasChanged(&state)) state.table = ReadTable(&state);
  return state.table;
}

const Mount* FindMount(const MountTable& table, FSVolumeRefNum number) {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const Mount& mount) { return mount.number == number; });
  return found == table.end() ? nullptr : &*found;
}

bool IsSystemMountTable() {
  State& state = TheState();
  const std::lock_guard lock(state.mutex);
  return state.path == kSystemTable;
}

void UseMountTable(const std::filesystem::path& table) {
  State& state = TheState();
  const std::lock_guard lock(state.mutex);
  state.path = table.empty() ? std::filesystem::path(kSystemTable) : table;
  state.table = nullptr;
}

UInt32 NumberOfText(std::string_view text) {
  UInt32 number = 2166136261U;
  for (const char c : text)
    number = (number ^ static_cast<UInt8>(c)) * 16777619U;
  return number == 0 ? 1 : number;
}

}  // namespace quillmere::files
