#include "GL_File.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "GL_File_Creation.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "catalogue.h"
#include "creation.h"
#include "forks.h"

namespace {

constexpr ItemCount kBatch = 10;

/// What a walk asks the catalogue for.
enum Wanted : unsigned { kReferences = 1, kNames = 2, kBoth = 3 };

/// Calls `visit(const FSRef&, const HFSUniStr255&)` for every object of a folder, in batches, until
/// it returns a status other than 0 or sets `*done`. What is not wanted is undefined.
template <class Visit>
SInt32 WalkFolder(const FSRef* folder, Wanted wanted, const bool* done, Visit visit) {
  FSIterator iterator = nullptr;
  SInt32 status = FSOpenIterator(folder, 0, &iterator);
  if (status) return status;
  bool last = false;
  while (!status && !last && !*done) {
    FSRef references[kBatch];
    HFSUniStr255 names[kBatch];
    ItemCount actual = 0;
    status = FSGetCatalogInfoBulk(iterator, kBatch, &actual, nullptr, kFSCatInfoNone, nullptr,
                                  wanted & kReferences ? references : nullptr, nullptr,
                                  wanted & kNames ? names : nullptr);
    if (status == errFSNoMoreItems) {
      last = true;
      status = noErr;
    }
    for (ItemCount i = 0; i < actual && !status && !*done; ++i) {
      status = visit(references[i], names[i]);
    }
  }
  const SInt32 close_status = FSCloseIterator(iterator);
  return status ? status : close_status;
}

/// The test of CFStringHasSuffix on a name.
class Suffix {
 public:
  explicit Suffix(CFStringRef suffix)
      : units_(static_cast<std::size_t>(CFStringGetLength(suffix)), 0) {
    CFStringGetCharacters(suffix, {0, CFStringGetLength(suffix)}, units_.data());
  }
  bool Ends(const HFSUniStr255& name) const {
    return std::u16string_view(name.unicode, name.length).ends_with(units_);
  }

 private:
  std::u16string units_;
};

}  // namespace

SInt32 GL_MakeFolderFileObjList(const FSRef* folder, GL_FileObjectElement** list) {
  if (!folder || !list) return paramErr;
  void* tail = LL_GetLastPtr(*list);
  const bool never = false;
  return WalkFolder(folder, kReferences, &never, [&](const FSRef& file, const HFSUniStr255&) {
    // Adding behind the tail's own one-element list keeps a long folder from being walked again
    // each time.
    void* head = tail;
    void* added = nullptr;
    const SInt32 status = LL_AddNewPtr(sizeof(GL_FileObjectElement), nullptr, &head, &added);
    if (status) return status;
    static_cast<GL_FileObjectElement*>(added)->fileRef = file;
    if (!*list) *list = static_cast<GL_FileObjectElement*>(added);
    tail = added;
    return status;
  });
}

SInt32 GL_ListFilesWithExtension(const FSRef* folder, CFStringRef suffix, FSRef* array,
                                 SInt32 capacity) {
  if (!folder || !suffix || (!array && capacity > 0)) return paramErr;
  SInt32 count = 0;
  bool full = capacity <= 0;
  const Suffix ending(suffix);
  return WalkFolder(folder, kBoth, &full, [&](const FSRef& file, const HFSUniStr255& name) {
    if (ending.Ends(name)) {
      array[count++] = file;
      full = count >= capacity;
    }
    return SInt32{noErr};
  });
}

SInt32 GL_CountFilesWithExtension(const FSRef* folder, CFStringRef suffix, SInt32* count) {
  if (!count) return paramErr;
  *count = 0;
  if (!folder || !suffix) return paramErr;
  const bool never = false;
  const Suffix ending(suffix);
  return WalkFolder(folder, kNames, &never, [&](const FSRef&, const HFSUniStr255& name) {
    *count += ending.Ends(name) ? 1 : 0;
    return SInt32{noErr};
  });
}

SInt32 GL_CopyFileDirNameAsCFString(const FSRef* file, CFStringRef* name) {
  if (!name) return paramErr;
  *name = nullptr;
  HFSUniStr255 record;
  const SInt32 status = MF_FSGetFileDirName(file, &record);
  if (!status) *name = FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &record);
  return status;
}

SInt32 GL_CopyFileDirNameAsCFMutStr(const FSRef* file, CFMutableStringRef* name) {
  if (!name) return paramErr;
  *name = nullptr;
  quillmere::Owned<CFStringRef> fixed;
  const SInt32 status = GL_CopyFileDirNameAsCFString(file, fixed.out());
  if (!status) *name = CFStringCreateMutableCopy(kCFAllocatorDefault, 256, fixed.get());
  return status;
}

Boolean GL_EqualFileObjects(const FSRef* a, const FSRef* b) {
  return FSCompareFSRefs(a, b) == 0;
}

Boolean GL_EqualFileRefLEPtrs(const void* a, const void* b) {
  const FSRef* left = &static_cast<const GL_FileObjectElement*>(a)->fileRef;
  const FSRef* right = &static_cast<const GL_FileObjectElement*>(b)->fileRef;
  return MF_FSRefValid(left) && MF_FSRefValid(right) && GL_EqualFileObjects(left, right);
}

GL_FileObjectElement* GL_FindFileInList(const FSRef* file, GL_FileObjectElement* list) {
  GL_FileObjectElement* element = list;
  while (element && !GL_EqualFileObjects(file, &element->fileRef))
    element = element->next;
  return element;
}

SInt32 GL_IsFileInFolder(const FSRef* folder, const HFSUniStr255* name, FSRef* reference,
                         Boolean* found) {
  if (!folder || !name || !found) return paramErr;
  *found = 0;
  bool done = false;
  const SInt32 status =
      WalkFolder(folder, kBoth, &done, [&](const FSRef& file, const HFSUniStr255& candidate) {
        if (GL_EqualHFSUniStr255(&candidate, name)) {
          done = true;
          if (reference) *reference = file;
        }
        return SInt32{noErr};
      });
  *found = !status && done;
  return status;
}

Boolean GL_IsFileNameInFolder(const FSRef* folder, const HFSUniStr255* name) {
  FSRef ignored;
  return name && FSMakeFSRefUnicode(folder, name->length, name->unicode, 0, &ignored) == noErr;
}

SInt32 GL_FindFolderInFolderUni(const FSRef* parent, const HFSUniStr255* name, FSRef* folder,
                                Boolean create, Boolean* created) {
  if (created) *created = 0;
  if (!parent || !name || !folder) return paramErr;
  const SInt32 status = FSMakeFSRefUnicode(parent, name->length, name->unicode, 0, folder);
  if (status == fnfErr && create) {
    const SInt32 made = FSCreateDirectoryUnicode(parent, name->length, name->unicode,
                                                 kFSCatInfoNone, nullptr, folder, nullptr, nullptr);
    if (created) *created = made == noErr;
    return made;
  }
  if (status) return status;
  FSCatalogInfo info{};
  const SInt32 read =
      FSGetCatalogInfo(folder, kFSCatInfoNodeFlags, &info, nullptr, nullptr, nullptr);
  if (read) return read;
  return info.nodeFlags & kFSNodeIsDirectoryMask ? SInt32{noErr} : SInt32{fnfErr};
}

SInt32 GL_FindFolderInFolder(const FSRef* parent, CFStringRef name, FSRef* folder, Boolean create,
                             Boolean* created) {
  if (created) *created = 0;
  HFSUniStr255 record;
  const SInt32 status = FSGetHFSUniStrFromString(name, &record);
  return status ? status : GL_FindFolderInFolderUni(parent, &record, folder, create, created);
}

SInt32 GL_FindCreateFileInFolder(const FSRef* folder, CFStringRef name, FSRef* file, OSType creator,
                                 OSType type, Boolean create, Boolean* created) {
  if (created) *created = 0;
  HFSUniStr255 record;
  Boolean found = 0;
  SInt32 status = FSGetHFSUniStrFromString(name, &record);
  if (!status) status = GL_IsFileInFolder(folder, &record, file, &found);
  if (found || (status && status != fnfErr)) return status;
  if (!create) return fnfErr;
  status = GL_CreateFile(folder, &record, creator, type, 0, file);
  if (created) *created = status == noErr;
  return status;
}

SInt32 GL_FindFilesWithSameNameInSameFolder(const FSRef* file, FSRef* array, SInt32 capacity,
                                            SInt32* count) {
  if (!file || !count || capacity < 0 || (!array && capacity > 0)) return paramErr;
  *count = 0;
  std::fill_n(array, capacity, FSRef{});
  constexpr SInt32 kLongestExtension = 8;
  constexpr UInt32 kFromFullStop = 1;
  HFSUniStr255 own_name;
  FSRef parent;
  SInt32 status = MF_FSGetFileDirName(file, &own_name);
  if (!status) status = MF_FSGetParentRef(file, &parent);
  if (status) return status;
  GL_RemoveHFSUniStr255EndString(&own_name, kLongestExtension, kFromFullStop);
  bool full = capacity == 0;
  return WalkFolder(&parent, kBoth, &full, [&](const FSRef& other, const HFSUniStr255& name) {
    HFSUniStr255 stem = name;
    GL_RemoveHFSUniStr255EndString(&stem, kLongestExtension, kFromFullStop);
    if (GL_EqualHFSUniStr255(&stem, &own_name) && !GL_EqualFileObjects(&other, file)) {
      array[(*count)++] = other;
      full = *count >= capacity;
    }
    return SInt32{noErr};
  });
}

SInt32 GL_OpenDataFork(const FSRef* file, SInt8 permission, SInt16* fork) {
  return FSOpenFork(file, 0, nullptr, permission, fork);
}
