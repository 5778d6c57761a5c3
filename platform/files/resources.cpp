#include "resources.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "resource_map.h"

namespace {

using quillmere::files::Resource;
using quillmere::files::ResourceMap;

struct ResourceFile {
  ResourceMap map;
  bool is_writable = false;
  bool is_changed = false;
};

struct ResourceFiles {
  std::mutex mutex;
  std::map<ResFileRefNum, ResourceFile> open;
};

ResourceFiles& Files() {
  static auto* files = std::make_unique<ResourceFiles>().release();
  return *files;
}

thread_local OSErr last_status = noErr;
thread_local bool loads_resources = true;
thread_local ResFileRefNum current_file = 0;

void SetStatus(OSStatus status) {
  last_status = static_cast<OSErr>(status);
}

/// An open file; null if there is none of that number.
ResourceFile* FileOf(ResFileRefNum number) {
  ResourceFiles& files = Files();
  const std::lock_guard lock(files.mutex);
  const auto found = files.open.find(number);
  return found == files.open.end() ? nullptr : &found->second;
}

/// A resource by its handle, in a file; null if it has none such.
Resource* FindHandle(ResourceFile* file, Handle handle) {
  if (!file || !handle) return nullptr;
  const auto found =
      std::find_if(file->map.resources.begin(), file->map.resources.end(),
                   [handle](const Resource& resource) { return resource.handle == handle; });
  return found == file->map.resources.end() ? nullptr : &*found;
}

/// A resource by its handle, in any open file.
Resource* FindHandle(Handle handle) {
  ResourceFiles& files = Files();
  const std::lock_guard lock(files.mutex);
  for (auto& [number, file] : files.open) {
    if (Resource* resource = FindHandle(&file, handle)) return resource;
  }
  return nullptr;
}

/// The current file; null, with the status set, if there is none.
ResourceFile* CurrentFile() {
  ResourceFile* file = FileOf(current_file);
  SetStatus(file ? OSErr{noErr} : resFNotFound);
  return file;
}

/// Gives a resource to the caller, loaded if the thread wants that.
Handle Give(Resource* resource) {
  if (!resource->handle) {
    resource->handle = NewHandle(0);
    if (!resource->handle) {
      SetStatus(memFullErr);
      return nullptr;
    }
    HSetState(resource->handle, kHandleResourceMask);
  }
  const auto size = static_cast<Size>(resource->bytes.size());
  if (!loads_resources) return resource->handle;
  resource->is_loaded = true;
  if (GetHandleSize(resource->handle) == 0 && size > 0) {
    SetHandleSize(resource->handle, size);
    if (MemError()) {
      SetStatus(memFullErr);
      return nullptr;
    }
    std::memcpy(*resource->handle, resource->bytes.data(), resource->bytes.size());
  }
  return resource->handle;
}

template <class Test>
Handle GiveFirst(Test test) {
  ResourceFile* file = CurrentFile();
  if (!file) return nullptr;
  const auto found =
      std::find_if(file->map.resources.begin(), file->map.resources.end(), std::move(test));
  if (found != file->map.resources.end()) return Give(&*found);
  SetStatus(resNotFound);
  return nullptr;
}

/// Takes the bytes of a resource that was added.
void TakeBytes(Resource* resource) {
  if (!resource->is_in_handle) return;
  const auto* start = reinterpret_cast<const UInt8*>(*resource->handle);
  resource->bytes.assign(start, start + GetHandleSize(resource->handle));
}

/// Ends a resource's hold of its handle, which is a plain one then.
Handle TakeHandle(Resource* resource) {
  TakeBytes(resource);
  resource->is_in_handle = false;
  resource->is_loaded = false;
  Handle handle = std::exchange(resource->handle, nullptr);
  HSetState(handle, static_cast<SInt8>(HGetState(handle) & ~kHandleResourceMask));
  return handle;
}

OSErr Update(ResFileRefNum number, ResourceFile* file) {
  if (!file->is_changed) return noErr;
  for (Resource& resource : file->map.resources)
    TakeBytes(&resource);
  std::vector<UInt8> fork;
  if (!BuildResourceMap(file->map, &fork)) return addResFailed;
  const OSErr status = quillmere::files::ReplaceForkContent(number, fork);
  file->is_changed = status != noErr;
  return status;
}

/// Opens the resource fork of a file.
OSErr OpenResourceFork(const FSRef* reference, SInt8 permission, FSIORefNum* fork) {
  HFSUniStr255 name;
  const OSErr status = FSGetResourceForkName(&name);
  return status ? status : FSOpenFork(reference, name.length, name.unicode, permission, fork);
}

OSErr Read(FSIORefNum fork, ResourceFile* file) {
  std::vector<UInt8> bytes;
  OSErr status = quillmere::files::ReadForkContent(fork, &bytes);
  if (status) return status;
  if (bytes.empty()) return eofErr;
  if (!ParseResourceMap(bytes, &file->map)) return mapReadErr;
  FSForkCBInfo info{};
  status = FSGetForkCBInfo(fork, 0, nullptr, nullptr, &info, nullptr, nullptr);
  file->is_writable = info.isWritable;
  return status;
}

}  // namespace

OSErr ResError() {
  return last_status;
}

void SetResLoad(Boolean load) {
  loads_resources = load != 0;
  SetStatus(noErr);
}

void FSCreateResFile(const FSRef* parent, UInt32 length, const UniChar* name,
                     FSCatalogInfoBitmap mask, const FSCatalogInfo* info, FSRef* reference,
                     FSSpec* spec) {
  FSRef made{};
  OSErr status = FSCreateFileUnicode(parent, length, name, mask, info, &made, spec);
  if (!status) {
    FSIORefNum fork = 0;
    std::vector<UInt8> empty;
    quillmere::files::BuildResourceMap({}, &empty);
    status = OpenResourceFork(&made, fsRdWrPerm, &fork);
    if (!status) {
      status = quillmere::files::ReplaceForkContent(fork, empty);
      FSCloseFork(fork);
    }
    if (status) FSDeleteObject(&made);
  }
  if (!status && reference) *reference = made;
  SetStatus(status);
}

ResFileRefNum FSOpenResFile(const FSRef* reference, SInt8 permission) {
  FSIORefNum fork = 0;
  ResourceFile file;
  OSErr status = OpenResourceFork(reference, permission, &fork);
  if (!status) {
    status = Read(fork, &file);
    if (status) FSCloseFork(fork);
  }
  SetStatus(status);
  if (status) return -1;
  ResourceFiles& files = Files();
  const std::lock_guard lock(files.mutex);
  files.open[fork] = std::move(file);
  current_file = fork;
  return fork;
}

void CloseResFile(ResFileRefNum number) {
  ResourceFile* file = FileOf(number);
  if (!file) {
    SetStatus(resFNotFound);
    return;
  }
  const OSErr status = Update(number, file);
  for (Resource& resource : file->map.resources) {
    if (resource.handle) DisposeHandle(TakeHandle(&resource));
  }
  {
    ResourceFiles& files = Files();
    const std::lock_guard lock(files.mutex);
    files.open.erase(number);
  }
  if (current_file == number) current_file = 0;
  const OSErr closed = FSCloseFork(number);
  SetStatus(status ? status : closed);
}

void UpdateResFile(ResFileRefNum number) {
  ResourceFile* file = FileOf(number);
  SetStatus(file ? Update(number, file) : resFNotFound);
}

ResFileRefNum CurResFile() {
  SetStatus(noErr);
  return current_file;
}

void UseResFile(ResFileRefNum number) {
  // 0 is no file, which was current before the first was opened.
  const bool is_known = number == 0 || FileOf(number);
  if (is_known) current_file = number;
  SetStatus(is_known ? OSErr{noErr} : resFNotFound);
}

Handle Get1Resource(ResType type, SInt16 id) {
  return GiveFirst(
      [=](const Resource& resource) { return resource.type == type && resource.id == id; });
}

Handle Get1IndResource(ResType type, SInt16 index) {
  int left = index;
  return GiveFirst(
      [type, &left](const Resource& resource) { return resource.type == type && --left == 0; });
}

SInt16 Count1Resources(ResType type) {
  const ResourceFile* file = CurrentFile();
  if (!file) return 0;
  return static_cast<SInt16>(
      std::count_if(file->map.resources.begin(), file->map.resources.end(),
                    [type](const Resource& resource) { return resource.type == type; }));
}

SInt16 Count1Types() {
  const ResourceFile* file = CurrentFile();
  if (!file) return 0;
  std::set<ResType> types;
  for (const Resource& resource : file->map.resources)
    types.insert(resource.type);
  return static_cast<SInt16>(types.size());
}

SInt16 UniqueID(ResType type) {
  const ResourceFile* file = CurrentFile();
  if (!file) return 0;
  std::set<SInt16> taken;
  for (const Resource& resource : file->map.resources) {
    if (resource.type == type) taken.insert(resource.id);
  }
  SInt16 id = 128;
  while (taken.contains(id) && id < std::numeric_limits<SInt16>::max())
    ++id;
  return id;
}

void GetResInfo(Handle handle, SInt16* id, ResType* type, UInt8* name) {
  const Resource* resource = FindHandle(handle);
  SetStatus(resource ? noErr : resNotFound);
  if (!resource) return;
  if (id) *id = resource->id;
  if (type) *type = resource->type;
  if (!name) return;
  name[0] = static_cast<UInt8>(resource->name.size());
  std::copy(resource->name.begin(), resource->name.end(), name + 1);
}

bool quillmere::files::IsResourceLoaded(Handle handle) {
  const Resource* resource = FindHandle(handle);
  return resource && (resource->is_loaded || resource->is_in_handle);
}

void AddResource(Handle handle, ResType type, SInt16 id, const UInt8* name) {
  ResourceFile* file = CurrentFile();
  if (!file) return;
  if (!handle || !file->is_writable || (HGetState(handle) & kHandleResourceMask)) {
    SetStatus(addResFailed);
    return;
  }
  Resource resource;
  resource.type = type;
  resource.id = id;
  resource.handle = handle;
  resource.is_in_handle = true;
  if (name && name[0] > 0) {
    resource.has_name = true;
    resource.name.assign(name + 1, name + 1 + name[0]);
  }
  HSetState(handle, static_cast<SInt8>(HGetState(handle) | kHandleResourceMask));
  file->map.resources.push_back(std::move(resource));
  file->is_changed = true;
}

void RemoveResource(Handle handle) {
  ResourceFile* file = CurrentFile();
  if (!file) return;
  Resource* resource = FindHandle(file, handle);
  if (!resource || !file->is_writable) {
    SetStatus(rmvResFailed);
    return;
  }
  TakeHandle(resource);
  file->map.resources.erase(file->map.resources.begin() + (resource - file->map.resources.data()));
  file->is_changed = true;
}

void DetachResource(Handle handle) {
  Resource* resource = FindHandle(handle);
  SetStatus(resource ? noErr : resNotFound);
  if (resource) TakeHandle(resource);
}

void ReleaseResource(Handle handle) {
  Resource* resource = FindHandle(handle);
  const bool is_resource = resource || (HGetState(handle) & kHandleResourceMask);
  SetStatus(is_resource || !handle ? noErr : resNotFound);
  if (resource) TakeHandle(resource);
  if (is_resource) DisposeHandle(handle);
}
