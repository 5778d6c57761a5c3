#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>
#include <memory>
#include <optional>

#include "catalogue.h"
#include "catalogue_changes.h"
#include "file_names.h"
#include "file_specifications.h"
#include "folder_names.h"
#include "subtree_walk.h"

namespace files = quillmere::files;

struct FolderIterator {
  std::filesystem::path path;
  files::Descriptor folder;
  UInt32 folder_number = 0;
  files::FolderNames names;
  std::size_t next = 0;
  timespec changed{};                         ///< the folder's date of content when it was read
  bool has_changed = false;                   ///< since then
  timespec checked{};                         ///< when that was last looked at
  std::optional<files::SubtreeWalk> subtree;  ///< for all levels, in place of the names
};

namespace {

/// What a batch asks for of each object.
struct Batch {
  FSCatalogInfoBitmap mask;
  FSCatalogInfo* infos;
  FSRef* references;
  FSSpec* specs;
  HFSUniStr255* names;
  bool NeedsObjects() const { return mask != kFSCatInfoNone || references || specs; }
};

OSStatus Take(const FolderIterator& walk, std::string_view name, const Batch& batch,
              ItemCount index) {
  if (batch.NeedsObjects()) {
    struct statx info;
    OSStatus status = files::ReadObject(walk.folder.get(), name.data(), &info);
    if (status) return status;
    const files::ObjectView view = {walk.folder.get(), name, walk.path, info};
    if (batch.mask) status = files::ReadCatalogue(view, batch.mask, &batch.infos[index]);
    if (!status && batch.specs) status = files::MakeSpecification(view, &batch.specs[index]);
    if (status) return status;
    if (batch.references) {
      batch.references[index] =
          files::ReferenceOfSeen(files::IdentityOf(info), walk.folder_number, name);
    }
  }
  if (batch.names) files::UnitsOfName(name, &batch.names[index]);
  return noErr;
}

/// Whether the folder has changed, looked at once in a tick of the system's clock (some
/// milliseconds): a walk asks for each object.
bool HasChanged(FolderIterator* walk) {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  const bool is_fresh = now.tv_sec == walk->checked.tv_sec && now.tv_nsec == walk->checked.tv_nsec;
  if (walk->has_changed || is_fresh) return walk->has_changed;
  walk->checked = now;
  struct stat folder;
  walk->has_changed = fstat(walk->folder.get(), &folder) != 0 ||
                      folder.st_mtim.tv_sec != walk->changed.tv_sec ||
                      folder.st_mtim.tv_nsec != walk->changed.tv_nsec;
  return walk->has_changed;
}

OSStatus OpenLevel(const FSRef& container, FolderIterator* walk) {
  OSStatus status = files::OpenFolder(container, &walk->folder, &walk->path);
  if (status) return status;
  struct stat now;
  if (fstat(walk->folder.get(), &now) != 0) return files::StatusOfErrno(errno);
  walk->changed = now.st_mtim;
  walk->folder_number = files::Places().NumberOfFolder(walk->path.native());
  return walk->names.Read(walk->folder.get());
}

}  // namespace

namespace quillmere::files {

SubtreeWalk* SubtreeOf(FolderIterator* iterator) {
  return iterator->subtree ? &*iterator->subtree : nullptr;
}

}  // namespace quillmere::files

OSErr FSOpenIterator(const FSRef* container, UInt32 flags, FSIterator* iterator) {
  if (iterator) *iterator = nullptr;
  if (!container || !iterator || flags > kFSIterateDelete) return static_cast<OSErr>(paramErr);
  auto walk = std::make_unique<FolderIterator>();
  OSStatus status = noErr;
  if (flags == kFSIterateSubtree) {
    status = files::OpenFolder(*container, &walk->folder, &walk->path);
    if (!status) status = walk->subtree.emplace().Open(walk->path);
  } else {
    status = OpenLevel(*container, walk.get());
  }
  if (!status) *iterator = walk.release();
  return static_cast<OSErr>(status);
}

OSErr FSGetCatalogInfoBulk(FSIterator iterator, ItemCount maximum, ItemCount* actual,
                           Boolean* container_changed, FSCatalogInfoBitmap mask,
                           FSCatalogInfo* infos, FSRef* references, FSSpec* specs,
                           HFSUniStr255* names) {
  if (actual) *actual = 0;
  if (!iterator || !actual || (mask != kFSCatInfoNone && !infos) ||
      (mask & ~kFSCatInfoGettableInfo) || iterator->subtree) {
    return static_cast<OSErr>(paramErr);
  }
  if (container_changed) *container_changed = HasChanged(iterator);
  const Batch batch = {mask, infos, references, specs, names};
  const files::FolderNames& all = iterator->names;
  for (; *actual < maximum && iterator->next < all.size(); ++iterator->next) {
    const OSStatus status = Take(*iterator, all[iterator->next], batch, *actual);
    if (status == fnfErr) continue;
    if (status) return static_cast<OSErr>(status);
    ++*actual;
  }
  return iterator->next == all.size() ? errFSNoMoreItems : OSErr{noErr};
}

OSErr FSCloseIterator(FSIterator iterator) {
  if (!iterator) return static_cast<OSErr>(paramErr);
  delete iterator;
  return noErr;
}
