#include "GL_Aliases.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "cf_strings.h"

namespace {

using quillmere::Owned;

/// What an alias tells of its target.
struct Told {
  HFSUniStr255 target_name{};
  HFSUniStr255 volume_name{};
  FSAliasInfo info{};
  SInt32 Read(AliasHandle alias) {
    return FSCopyAliasInfo(alias, &target_name, &volume_name, nullptr, nullptr, &info);
  }
};

SInt32 ReadBoth(AliasHandle a, AliasHandle b, Told* told_a, Told* told_b) {
  const SInt32 status = told_a->Read(a);
  return status != noErr ? status : told_b->Read(b);
}

Boolean AcceptTarget(const FSRef*, Boolean*, void*) {
  return 1;
}

}  // namespace

Boolean GL_EqualAlias(AliasHandle a, AliasHandle b, SInt32* status) {
  Told left;
  Told right;
  const SInt32 read = ReadBoth(a, b, &left, &right);
  if (status != nullptr) *status = read;
  return read == noErr && GL_EqualHFSUniStr255(&left.target_name, &right.target_name) &&
         GL_EqualHFSUniStr255(&left.volume_name, &right.volume_name) &&
         left.info.parentDirID == right.info.parentDirID && left.info.nodeID == right.info.nodeID &&
         left.info.filesystemID == right.info.filesystemID;
}

Boolean GL_EqualAliasProc(const void* element_a, const void* element_b) {
  if (element_a == nullptr || element_b == nullptr) return 0;
  return GL_EqualAlias(static_cast<const GL_AliasElement*>(element_a)->alias,
                       static_cast<const GL_AliasElement*>(element_b)->alias, nullptr);
}

void GL_DisposeAliasLE(GL_AliasElement* element) {
  if (element == nullptr) return;
  GL_DisposeHandle(&element->alias);
  void* block = element;
  GL_DisposePtr(&block);
}

SInt32 GL_GetAliasNames(AliasHandle alias, GL_AliasNames* names) {
  if (names == nullptr) return paramErr;
  Owned<CFStringRef> path;
  const SInt32 status =
      FSCopyAliasInfo(alias, &names->targetName, &names->volumeName, path.out(), nullptr, nullptr);
  if (status != noErr || !path) return status;
  std::string folder = quillmere::ToUtf8(path.get());
  folder.resize(std::min(folder.rfind('/'), folder.size()));
  const Owned<CFStringRef> name(
      quillmere::CreateFromUtf8(std::string_view(folder).substr(folder.rfind('/') + 1)));
  if (name && CFStringGetLength(name.get()) > 0) {
    FSGetHFSUniStrFromString(name.get(), &names->parentName);
  }
  return noErr;
}

SInt32 GL_GetAliasNameAsCFStr(AliasHandle alias, CFStringRef* name) {
  if (name == nullptr) return paramErr;
  *name = nullptr;
  HFSUniStr255 target{};
  const SInt32 status = FSCopyAliasInfo(alias, &target, nullptr, nullptr, nullptr, nullptr);
  if (status == noErr && target.length > 0) {
    *name = FSCreateStringFromHFSUniStr(kCFAllocatorDefault, &target);
  }
  return status;
}

SInt32 GL_ResolveAliasSilently(AliasHandle alias, FSRef* target) {
  constexpr UInt32 kRules = kARMMountVol | kARMNoUI | kARMMultVols | kARMSearch;
  SInt16 count = 1;
  Boolean needs_update = 0;
  const SInt32 status = FSMatchAliasBulk(nullptr, kRules, alias, &count, target, &needs_update,
                                         AcceptTarget, nullptr);
  if (status != noErr || count < 1 || !needs_update) return status;
  Boolean changed = 0;
  return FSUpdateAlias(nullptr, target, alias, &changed);
}

SInt32 GL_AliasesOnSameSystem(AliasHandle a, AliasHandle b, Boolean* same) {
  if (same == nullptr) return paramErr;
  Told left;
  Told right;
  const SInt32 status = ReadBoth(a, b, &left, &right);
  *same = status == noErr && GL_EqualHFSUniStr255(&left.volume_name, &right.volume_name) &&
          left.info.filesystemID == right.info.filesystemID;
  return status;
}
