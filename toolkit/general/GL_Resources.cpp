#include "GL_Resources.h"

#include <cstring>

#include "GL_Memory.h"
#include "aliases.h"

namespace {

constexpr ResType kAliasType = "alis"_4cc;
constexpr ResType kVersionType = "vers"_4cc;

/// Puts back the current resource file at the end of its scope.
class CurrentResFileKeeper {
 public:
  CurrentResFileKeeper() : file_(CurResFile()) {}
  CurrentResFileKeeper(const CurrentResFileKeeper&) = delete;
  CurrentResFileKeeper& operator=(const CurrentResFileKeeper&) = delete;
  ~CurrentResFileKeeper() { UseResFile(file_); }

  /// Makes another file the current one.
  SInt32 Use(ResFileRefNum file) const {
    if (file == file_) return noErr;
    UseResFile(file);
    return ResError();
  }

 private:
  ResFileRefNum file_;
};

/// A resource file that an operation was given, or opened itself and closes.
class UsedResFile {
 public:
  UsedResFile(ResFileRefNum file, const FSRef* reference, SInt8 permission) : number_(file) {
    if (file != 0) return;
    if (reference == nullptr) {
      status_ = paramErr;
      return;
    }
    number_ = FSOpenResFile(reference, permission);
    status_ = number_ < 0 ? SInt32{ResError()} : SInt32{noErr};
    is_own_ = status_ == noErr;
  }
  UsedResFile(const UsedResFile&) = delete;
  UsedResFile& operator=(const UsedResFile&) = delete;
  ~UsedResFile() { Close(); }

  SInt32 status() const { return status_; }
  ResFileRefNum number() const { return number_; }
  /// Closes a file that was opened here; what could not be written is told now.
  SInt32 Close() {
    if (!is_own_) return noErr;
    is_own_ = false;
    CloseResFile(number_);
    return ResError();
  }

 private:
  CurrentResFileKeeper keeper_;  // ends behind the closing
  ResFileRefNum number_;
  SInt32 status_ = noErr;
  bool is_own_ = false;
};

/// Works on a file by `work`, which gets its number, and closes it if it was opened for this.
template <class Work>
SInt32 WithFile(ResFileRefNum file, const FSRef* reference, SInt8 permission, Work work) {
  UsedResFile used(file, reference, permission);
  if (used.status() != noErr) return used.status();
  const SInt32 status = work(used.number());
  const SInt32 closed = used.Close();
  return status != noErr ? status : closed;
}

/// The number that a resource is to have, which nothing has any more; `*id` takes it.
SInt32 MakeRoom(ResType type, SInt16* id) {
  if (*id >= 0) {
    SetResLoad(0);
    Handle old = Get1Resource(type, *id);
    SetResLoad(1);
    if (old != nullptr) {
      RemoveResource(old);
      const SInt32 status = ResError();
      if (status != noErr) return status;
      DisposeHandle(old);
    }
  }
  if (*id <= 0) *id = UniqueID(type);
  return noErr;
}

/// Copies the Pascal string that starts at `*at` of a block, behind which `*at` then is.
SInt32 CopyString(Handle handle, Size* at, UInt8* string) {
  const Size size = GetHandleSize(handle);
  if (*at >= size) return resNotFound;
  const Size length = Size{static_cast<UInt8>((*handle)[*at])} + 1;
  if (length > size - *at) return resNotFound;
  if (string != nullptr) std::memcpy(string, *handle + *at, static_cast<std::size_t>(length));
  *at += length;
  return noErr;
}

UInt32 NumberAt(Handle handle, Size at, Size bytes) {
  UInt32 value = 0;
  for (Size i = at; i < at + bytes; ++i)
    value = (value << 8) | static_cast<UInt8>((*handle)[i]);
  return value;
}

SInt32 ReadVersion(Handle handle, UInt32* version, SInt16* country, UInt8* short_string,
                   UInt8* long_string) {
  Size at = 6;
  if (GetHandleSize(handle) < at) return resNotFound;
  if (version != nullptr) *version = NumberAt(handle, 0, 4);
  if (country != nullptr) *country = static_cast<SInt16>(NumberAt(handle, 4, 2));
  if (short_string == nullptr && long_string == nullptr) return noErr;
  const SInt32 status = CopyString(handle, &at, short_string);
  if (status != noErr || long_string == nullptr) return status;
  return CopyString(handle, &at, long_string);
}

}  // namespace

SInt32 GL_ResError(const void* value) {
  const SInt32 status = ResError();
  return status == noErr && value == nullptr ? SInt32{resNotFound} : status;
}

SInt32 GL_Get1Resource(ResFileRefNum file, ResType type, SInt16 index, SInt16* id, Handle* handle) {
  if (handle == nullptr) return paramErr;
  *handle = nullptr;
  const CurrentResFileKeeper keeper;
  SInt32 status = keeper.Use(file);
  if (status != noErr) return status;
  const bool is_by_id = index == 0 && id != nullptr && *id != 0;
  Handle found =
      is_by_id ? Get1Resource(type, *id) : Get1IndResource(type, index == 0 ? SInt16{1} : index);
  status = GL_ResError(found);
  if (status == noErr && !is_by_id && id != nullptr) {
    GetResInfo(found, id, nullptr, nullptr);
    status = ResError();
  }
  if (status == noErr) *handle = found;
  return status;
}

Boolean GL_ResourceExists(ResFileRefNum file, ResType type, SInt16 index, SInt16* id,
                          Handle* handle) {
  if (handle != nullptr) return GL_Get1Resource(file, type, index, id, handle) == noErr;
  Handle found = nullptr;
  SetResLoad(0);
  const SInt32 status = GL_Get1Resource(file, type, index, id, &found);
  SetResLoad(1);
  // A handle that was loaded before, and given out, stays.
  if (found != nullptr && !quillmere::files::IsResourceLoaded(found)) ReleaseResource(found);
  return status == noErr;
}

SInt32 GL_Get1ResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                               SInt16 index, SInt16* id, Handle* handle) {
  if (handle == nullptr) return paramErr;
  *handle = nullptr;
  return WithFile(file, reference, fsRdPerm, [&](ResFileRefNum number) {
    const SInt32 status = GL_Get1Resource(number, type, index, id, handle);
    if (status == noErr) DetachResource(*handle);
    return status;
  });
}

SInt32 GL_Get1PtrResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                                  SInt16 index, SInt16* id, void** pointer, Size* size) {
  if (pointer == nullptr || size == nullptr) return paramErr;
  *pointer = nullptr;
  *size = 0;
  Handle handle = nullptr;
  const SInt32 status = GL_Get1ResourceFromFile(file, reference, type, index, id, &handle);
  if (status != noErr) return status;
  *size = GetHandleSize(handle);
  return GL_HdlToPtr(&handle, pointer, 1);
}

SInt32 GL_AddResource(ResFileRefNum file, Handle handle, ResType type, SInt16* id) {
  if (handle == nullptr || GetHandleSize(handle) == 0) return nilHandleErr;
  const SInt8 state = HGetState(handle);
  if ((state & kHandleResourceMask) != 0) return noErr;
  const CurrentResFileKeeper keeper;
  SInt32 status = keeper.Use(file);
  SInt16 number = id != nullptr ? *id : SInt16{-1};
  if (status == noErr) status = MakeRoom(type, &number);
  if (status != noErr) return status;
  AddResource(handle, type, number, nullptr);
  status = ResError();
  if (status != noErr) return status;
  UpdateResFile(file);
  status = ResError();
  DetachResource(handle);
  HSetState(handle, state);
  if (id != nullptr) *id = number;
  return status;
}

SInt32 GL_AddResourceToFile(ResFileRefNum file, const FSRef* reference, Handle handle, ResType type,
                            SInt16* id) {
  return WithFile(file, reference, fsRdWrPerm,
                  [&](ResFileRefNum number) { return GL_AddResource(number, handle, type, id); });
}

SInt32 GL_AddPtrResourceToFile(ResFileRefNum file, const FSRef* reference, const void* pointer,
                               Size size, ResType type, SInt16* id) {
  Handle handle = nullptr;
  SInt32 status = PtrToHand(pointer, &handle, size);
  if (status == noErr) status = GL_AddResourceToFile(file, reference, handle, type, id);
  GL_DisposeHandle(&handle);
  return status;
}

SInt32 GL_AddAliasResource(ResFileRefNum file, const FSRef* reference, const FSRef* target,
                           SInt16* id) {
  AliasHandle alias = nullptr;
  SInt32 status = FSNewAlias(nullptr, target, &alias);
  if (status == noErr) status = GL_AddResourceToFile(file, reference, alias, kAliasType, id);
  GL_DisposeHandle(&alias);
  return status;
}

SInt32 GL_UpdateAliasResource(ResFileRefNum file, const FSRef* reference, SInt16 id,
                              FSRef* target) {
  return WithFile(file, reference, fsRdWrPerm, [&](ResFileRefNum number) {
    const CurrentResFileKeeper keeper;
    SInt32 status = keeper.Use(number);
    if (status != noErr) return status;
    Handle alias = Get1Resource(kAliasType, id);
    status = GL_ResError(alias);
    if (status != noErr) return status;
    DetachResource(alias);
    Boolean changed = 0;
    status = FSResolveAlias(nullptr, alias, target, &changed);
    SInt16 same_id = id;
    if (status == noErr && changed) status = GL_AddResource(number, alias, kAliasType, &same_id);
    GL_DisposeHandle(&alias);
    return status;
  });
}

SInt32 GL_RemoveResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                                 SInt16 index, SInt16* id) {
  return WithFile(file, reference, fsRdWrPerm, [&](ResFileRefNum number) {
    Handle handle = nullptr;
    SInt32 status = GL_Get1Resource(number, type, index, id, &handle);
    if (status != noErr) return status;
    const CurrentResFileKeeper keeper;
    status = keeper.Use(number);
    if (status != noErr) return status;
    RemoveResource(handle);
    status = ResError();
    if (status != noErr) return status;
    GL_DisposeHandle(&handle);
    UpdateResFile(number);
    return SInt32{ResError()};
  });
}

SInt32 GL_RemoveResourcesOfType(ResType type, ResFileRefNum file, Boolean update) {
  const CurrentResFileKeeper keeper;
  SInt32 status = file != 0 ? keeper.Use(file) : SInt32{noErr};
  if (status != noErr) return status;
  const SInt16 count = Count1Resources(type);
  status = ResError();
  for (SInt16 i = 0; i < count && status == noErr; ++i) {
    Handle handle = Get1IndResource(type, 1);
    status = GL_ResError(handle);
    if (status != noErr) break;
    RemoveResource(handle);
    status = ResError();
    if (status == noErr) GL_DisposeHandle(&handle);
  }
  if (status != noErr || file == 0 || !update) return status;
  UpdateResFile(file);
  return ResError();
}

SInt32 GL_CountResourcesInFile(ResFileRefNum file, const FSRef* reference, ResType type,
                               SInt16* count) {
  if (count == nullptr) return paramErr;
  *count = 0;
  return WithFile(file, reference, fsRdPerm, [&](ResFileRefNum number) {
    const CurrentResFileKeeper keeper;
    const SInt32 status = keeper.Use(number);
    if (status != noErr) return status;
    *count = type != 0 ? Count1Resources(type) : Count1Types();
    return SInt32{ResError()};
  });
}

SInt32 GL_ShiftResourcesInFile(ResFileRefNum file, const FSRef* reference, const void* pointer,
                               Size size, ResType type, SInt16 first_id, SInt16 max_count) {
  SInt16 count = 0;
  SInt32 status = GL_CountResourcesInFile(file, reference, type, &count);
  if (status != noErr) return status;
  const int moved = count < max_count ? count : max_count - 1;
  for (int k = moved - 1; k >= 0; --k) {
    void* entry = nullptr;
    Size entry_size = 0;
    auto id = static_cast<SInt16>(first_id + k);
    status = GL_Get1PtrResourceFromFile(file, reference, type, 0, &id, &entry, &entry_size);
    if (status != noErr) return status;
    ++id;
    status = GL_AddPtrResourceToFile(file, reference, entry, entry_size, type, &id);
    GL_DisposePtr(&entry);
    if (status != noErr) return status;
  }
  SInt16 id = first_id;
  return GL_AddPtrResourceToFile(file, reference, pointer, size, type, &id);
}

SInt32 GL_GetResFileVersion(ResFileRefNum file, SInt16 id, UInt32* version, SInt16* country,
                            UInt8* short_string, UInt8* long_string) {
  if (id != 1 && id != 2) return paramErr;
  const bool is_wanted =
      version != nullptr || country != nullptr || short_string != nullptr || long_string != nullptr;
  if (!is_wanted) return noErr;
  Handle handle = nullptr;
  SInt32 status = GL_Get1Resource(file, kVersionType, 0, &id, &handle);
  if (status == noErr) status = ReadVersion(handle, version, country, short_string, long_string);
  GL_DisposeHandle(&handle);
  return status;
}

SInt32 GL_GetFileVersion(const FSRef* reference, SInt16 id, UInt32* version, SInt16* country,
                         UInt8* short_string, UInt8* long_string) {
  return WithFile(0, reference, fsRdPerm, [&](ResFileRefNum number) {
    return GL_GetResFileVersion(number, id, version, country, short_string, long_string);
  });
}
