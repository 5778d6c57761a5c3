#include "extra_forks.h"

#include <sys/xattr.h>

#include <algorithm>
#include <cerrno>

#include "catalogue_changes.h"
#include "file_calls.h"
#include "finder_information.h"
#include "forks.h"

namespace quillmere::files {
namespace {

constexpr std::string_view kAttributeNamespace = "user.";
constexpr std::string_view kResourceAttribute = "user.com.apple.ResourceFork";
constexpr std::string_view kNamedForkPrefix = "quillmere.fork.";
constexpr std::size_t kMostAttributeBytes = 3800;
constexpr UInt8 kMark = 1;

bool IsResourceFork(std::string_view name) {
  return name == kResourceForkName;
}

std::string NameInSidecar(std::string_view fork) {
  return std::string(kNamedForkPrefix) + std::string(fork);
}

std::string AttributeOf(std::string_view fork) {
  if (IsResourceFork(fork)) return std::string(kResourceAttribute);
  return std::string(kAttributeNamespace) + NameInSidecar(fork);
}

std::string PathOfAttributes(const ObjectPlace& file) {
  return AttributePath(file.folder.get(), file.name);
}

/// Reads an attribute; false if the file has none such.
bool ReadAttribute(const ObjectPlace& file, const std::string& attribute, ForkBytes* bytes) {
  const std::string path = PathOfAttributes(file);
  bytes->resize(kMostAttributeBytes + 1);
  ssize_t size = lgetxattr(path.c_str(), attribute.c_str(), bytes->data(), bytes->size());
  if (size < 0 && errno == ERANGE) {
    // Somebody else's, on a volume that takes larger ones.
    size = lgetxattr(path.c_str(), attribute.c_str(), nullptr, 0);
    if (size < 0) return false;
    bytes->resize(static_cast<std::size_t>(size));
    size = lgetxattr(path.c_str(), attribute.c_str(), bytes->data(), bytes->size());
  }
  if (size < 0) return false;
  bytes->resize(static_cast<std::size_t>(size));
  return true;
}

bool ReadForkAttribute(const ObjectPlace& file, const std::string& name, ForkBytes* bytes) {
  if (!ReadAttribute(file, AttributeOf(name), bytes)) return false;
  if (IsResourceFork(name)) return true;
  if (bytes->empty() || bytes->front() != kMark) return false;
  bytes->erase(bytes->begin());
  return true;
}

/// Puts a fork into its attribute: 0, or the system's error.
int WriteForkAttribute(const ObjectPlace& file, const std::string& name, const ForkBytes& bytes) {
  ForkBytes value;
  if (!IsResourceFork(name)) value.push_back(kMark);
  value.insert(value.end(), bytes.begin(), bytes.end());
  const std::string path = PathOfAttributes(file);
  return SetAttribute(path, AttributeOf(name).c_str(), value) == 0 ? 0 : errno;
}

OSStatus RemoveForkAttribute(const ObjectPlace& file, const std::string& name) {
  const int result = SetAttribute(PathOfAttributes(file), AttributeOf(name).c_str(), {});
  return result == 0 || errno == EOPNOTSUPP ? OSStatus{noErr} : StatusOfErrno(errno);
}

/// Whether a sidecar has a fork; `name` is not the resource fork's for an empty one.
bool HasFork(AppleDouble* sidecar, std::string_view name) {
  if (IsResourceFork(name)) return !sidecar->resource_fork.empty();
  return sidecar->Find(NameInSidecar(name)) != nullptr;
}

/// Sets or, for null, takes away a fork in a sidecar.
void SetFork(const std::string& name, const ForkBytes* bytes, AppleDouble* sidecar) {
  if (!IsResourceFork(name)) {
    sidecar->Set(NameInSidecar(name), bytes);
  } else if (bytes) {
    sidecar->resource_fork = *bytes;
  } else {
    sidecar->resource_fork.clear();
  }
}

FinderInformation FinderOf(const ObjectPlace& file) {
  FinderInformation finder;
  ReadFinderInformation(PathOfAttributes(file), &finder);
  return finder;
}

/// Gives a sidecar that is written the Finder information of the file, for other systems.
void ShareFinderInformation(const ObjectPlace& file, AppleDouble* sidecar) {
  const FinderInformation finder = FinderOf(file);
  sidecar->finder_information.assign(std::begin(finder.bytes), std::end(finder.bytes));
}

/// Drops the Finder information of a sidecar that has no more use: the file has the same itself.
void DropSharedFinderInformation(const ObjectPlace& file, AppleDouble* sidecar) {
  const bool is_alone = sidecar->attributes.empty() && sidecar->resource_fork.empty() &&
                        sidecar->others.empty() && !sidecar->finder_information.empty();
  if (!is_alone) return;
  FinderInformation shared;
  std::copy(sidecar->finder_information.begin(), sidecar->finder_information.end(), shared.bytes);
  const FinderInformation none;
  const bool says_nothing = std::equal(std::begin(none.bytes), std::end(none.bytes), shared.bytes);
  const OSStatus status =
      says_nothing ? OSStatus{noErr} : WriteFinderInformation(PathOfAttributes(file), shared);
  if (!status) sidecar->finder_information.clear();
}

/// Takes a fork out of the sidecar, if it is there.
OSStatus RemoveFromSidecar(const ObjectPlace& file, const std::string& name, bool* was_there) {
  AppleDouble sidecar;
  const OSStatus status = ReadSidecar(file, &sidecar);
  if (status) return status;
  *was_there = HasFork(&sidecar, name);
  if (!*was_there) return noErr;
  SetFork(name, nullptr, &sidecar);
  if (!sidecar.finder_information.empty()) ShareFinderInformation(file, &sidecar);
  DropSharedFinderInformation(file, &sidecar);
  return WriteSidecar(file, sidecar);
}

bool FitsNoAttribute(int error) {
  return error == ENOSPC || error == E2BIG || error == ERANGE || error == EOPNOTSUPP ||
         error == EDQUOT;
}

}  // namespace

OSStatus ReadExtraFork(const ObjectPlace& file, const std::string& name, ForkBytes* bytes) {
  if (ReadForkAttribute(file, name, bytes)) return noErr;
  bytes->clear();
  AppleDouble sidecar;
  const OSStatus status = ReadSidecar(file, &sidecar);
  if (status) return status;
  if (IsResourceFork(name)) {
    *bytes = std::move(sidecar.resource_fork);
    return noErr;
  }
  AppleDouble::Attribute* attribute = sidecar.Find(NameInSidecar(name));
  if (!attribute) return errFSForkNotFound;
  *bytes = std::move(attribute->value);
  return noErr;
}

OSStatus WriteExtraFork(const ObjectPlace& file, const std::string& name, const ForkBytes& bytes) {
  bool was_there = false;
  if (IsResourceFork(name) && bytes.empty()) {
    const OSStatus status = RemoveFromSidecar(file, name, &was_there);
    return status ? status : RemoveForkAttribute(file, name);
  }
  if (bytes.size() <= kMostAttributeBytes) {
    const int error = WriteForkAttribute(file, name, bytes);
    // What is in the attribute counts; a copy left in the sidecar is passed over.
    if (error == 0) return RemoveFromSidecar(file, name, &was_there);
    if (!FitsNoAttribute(error)) return StatusOfErrno(error);
  }
  AppleDouble sidecar;
  OSStatus status = ReadSidecar(file, &sidecar);
  if (status) return status;
  SetFork(name, &bytes, &sidecar);
  ShareFinderInformation(file, &sidecar);
  status = WriteSidecar(file, sidecar);
  return status ? status : RemoveForkAttribute(file, name);
}

OSStatus RemoveExtraFork(const ObjectPlace& file, const std::string& name) {
  ForkBytes ignored;
  const bool has_attribute = ReadForkAttribute(file, name, &ignored);
  bool was_in_sidecar = false;
  const OSStatus status = RemoveFromSidecar(file, name, &was_in_sidecar);
  if (status) return status;
  if (has_attribute) return RemoveForkAttribute(file, name);
  return was_in_sidecar || IsResourceFork(name) ? OSStatus{noErr} : OSStatus{errFSForkNotFound};
}

OSStatus ListExtraForks(const ObjectPlace& file, std::vector<ExtraFork>* forks) {
  forks->clear();
  AppleDouble sidecar;
  const OSStatus status = ReadSidecar(file, &sidecar);
  if (status) return status;
  const auto add = [forks](std::string_view name, UInt64 size) {
    const bool is_known = std::any_of(forks->begin(), forks->end(),
                                      [name](const ExtraFork& fork) { return fork.name == name; });
    if (!is_known && (size > 0 || !IsResourceFork(name))) {
      forks->push_back({std::string(name), size});
    }
  };
  const auto add_attribute = [&](std::string_view name) {
    ForkBytes bytes;
    if (ReadForkAttribute(file, std::string(name), &bytes)) add(name, bytes.size());
  };
  add_attribute(kResourceForkName);
  add(kResourceForkName, sidecar.resource_fork.size());
  const std::size_t named = forks->size();

  const std::string path = PathOfAttributes(file);
  const ssize_t room = llistxattr(path.c_str(), nullptr, 0);
  std::string list(room > 0 ? static_cast<std::size_t>(room) : 0, '\0');
  const ssize_t size = room > 0 ? llistxattr(path.c_str(), list.data(), list.size()) : 0;
  const std::string prefix = AttributeOf("");
  for (std::size_t at = 0; size > 0 && at < static_cast<std::size_t>(size);) {
    const std::string_view name(list.c_str() + at);
    if (name.starts_with(prefix)) add_attribute(name.substr(prefix.size()));
    at += name.size() + 1;
  }
  for (const AppleDouble::Attribute& attribute : sidecar.attributes) {
    const std::string_view name = attribute.name;
    if (name.starts_with(kNamedForkPrefix)) {
      add(name.substr(kNamedForkPrefix.size()), attribute.value.size());
    }
  }
  std::sort(forks->begin() + static_cast<std::ptrdiff_t>(named), forks->end(),
            [](const ExtraFork& a, const ExtraFork& b) { return a.name < b.name; });
  return noErr;
}

}  // namespace quillmere::files
