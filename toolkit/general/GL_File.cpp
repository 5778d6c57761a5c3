#include "GL_File.h"

#include <string>

#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "catalogue.h"
#include "creation.h"
#include "forks.h"
#include "launch_services.h"

namespace {

constexpr ItemCount kBatch = 10;
/// What a path or a name that can't be turned into a string gives.
constexpr SInt32 kPathErr = -4960;

/// Calls `visit(const FSRef&, const HFSUniStr255&)` for every object of a folder, in batches, until
/// it returns a status other than 0 or sets `*done`. Names are only read when `with_names` is set.
template <class Visit>
SInt32 WalkFolder(const FSRef* folder, bool with_names, const bool* done, Visit visit) {
  FSIterator iterator = nullptr;
  SInt32 status = FSOpenIterator(folder, 0, &iterator);
  if (status) return status;
  bool last = false;
  while (!status && !last && !*done) {
    FSRef references[kBatch];
    HFSUniStr255 names[kBatch];
    ItemCount actual = 0;
    status = FSGetCatalogInfoBulk(iterator, kBatch, &actual, nullptr, kFSCatInfoNone, nullptr,
                                  references, nullptr, with_names ? names : nullptr);
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

/// Calls `visit(const FSRef&)` for every object whose name ends in the suffix.
template <class Visit>
SInt32 ForEachWithSuffix(const FSRef* folder, CFStringRef suffix, const bool* done, Visit visit) {
  return WalkFolder(folder, true, done, [&](const FSRef& file, const HFSUniStr255& name) {
    const quillmere::Owned<CFStringRef> string(
        FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &name));
    if (CFStringHasSuffix(string.get(), suffix)) visit(file);
    return SInt32{noErr};
  });
}

}  // namespace

SInt32 GL_MakeFolderFileObjList(const FSRef* folder, GL_FileObjectElement** list) {
  if (!folder || !list) return paramErr;
  void* tail = LL_GetLastPtr(*list);
  const bool never = false;
  return WalkFolder(folder, false, &never, [&](const FSRef& file, const HFSUniStr255&) {
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
  return ForEachWithSuffix(folder, suffix, &full, [&](const FSRef& file) {
    array[count++] = file;
    full = count >= capacity;
  });
}

SInt32 GL_CountFilesWithExtension(const FSRef* folder, CFStringRef suffix, SInt32* count) {
  if (!count) return paramErr;
  *count = 0;
  if (!folder || !suffix) return paramErr;
  const bool never = false;
  return ForEachWithSuffix(folder, suffix, &never, [&](const FSRef&) { ++*count; });
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
      WalkFolder(folder, true, &done, [&](const FSRef& file, const HFSUniStr255& candidate) {
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

SInt32 GL_CreateFolder(const FSRef* parent, const HFSUniStr255* name, FSRef* folder) {
  if (!parent || !name) return paramErr;
  FSRef present;
  const SInt32 status = FSMakeFSRefUnicode(parent, name->length, name->unicode, 0, &present);
  if (!status && folder) *folder = present;
  if (status != fnfErr) return status;
  const SInt32 made = FSCreateDirectoryUnicode(parent, name->length, name->unicode, kFSCatInfoNone,
                                               nullptr, folder, nullptr, nullptr);
  if (made != dupFNErr) return made;
  // Somebody else made it in between.
  const SInt32 found = FSMakeFSRefUnicode(parent, name->length, name->unicode, 0, &present);
  if (!found && folder) *folder = present;
  return found;
}

SInt32 GL_OpenDataFork(const FSRef* file, SInt8 permission, SInt16* fork) {
  return FSOpenFork(file, 0, nullptr, permission, fork);
}

SInt32 GL_PosixPathToFileNameCFStrNoExt(const char* path, CFStringRef* name) {
  if (name) *name = nullptr;
  if (!path || !name) return paramErr;
  std::string_view last(path);
  while (last.size() > 1 && last.back() == '/')
    last.remove_suffix(1);
  last.remove_prefix(last.rfind('/') + 1);  // no slash: npos + 1 is 0
  const quillmere::Owned<CFStringRef> component(CFStringCreateWithCString(
      kCFAllocatorDefault, std::string(last).c_str(), kCFStringEncodingUTF8));
  const std::u16string_view units = quillmere::UnitsOf(component.get());
  if (units.empty()) return kPathErr;
  const auto* characters = reinterpret_cast<const UniChar*>(units.data());
  UniCharCount start = kLSInvalidExtensionIndex;
  LSGetExtensionInfo(units.size(), characters, &start);
  const UniCharCount length = start == kLSInvalidExtensionIndex ? units.size() : start - 1;
  *name =
      CFStringCreateWithCharacters(kCFAllocatorDefault, characters, static_cast<CFIndex>(length));
  return noErr;
}

SInt32 GL_PosixPathToFileNameCFMutStrNoExtMaxLen(const char* path, SInt32 max_length,
                                                 CFMutableStringRef* name) {
  if (name) *name = nullptr;
  if (!path || !name) return paramErr;
  quillmere::Owned<CFStringRef> whole;
  const SInt32 status = GL_PosixPathToFileNameCFStrNoExt(path, whole.out());
  if (status) return status;
  *name = CFStringCreateMutableCopy(kCFAllocatorDefault, 0, whole.get());
  GL_CFStrTruncMiddle(*name, max_length);
  return noErr;
}
