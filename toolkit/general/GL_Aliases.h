/// Questions to aliases. Statuses are those of the alias calls (aliases.h).
#pragma once

#include "aliases.h"
#include "base_types.h"
#include "file_references.h"

/// A list element of an alias, which it owns.
struct GL_AliasElement {
  GL_AliasElement* next;
  AliasHandle alias;
};
/// The names of an alias's volume, of its target and of the folder that holds that.
struct GL_AliasNames {
  HFSUniStr255 volumeName;
  HFSUniStr255 targetName;
  HFSUniStr255 parentName;
};

/// 1 if names of target and volume, without regard to case, and numbers of target, folder and file
/// system are the same. `*status` takes the status of the last look at an alias; a failure gives 0.
Boolean GL_EqualAlias(AliasHandle a, AliasHandle b, SInt32* status);
/// The same for two list elements, as a test for the list operations.
Boolean GL_EqualAliasProc(const void* element_a, const void* element_b);
/// Disposes of the alias, then of the element, which was allocated with GL_NewPtr.
void GL_DisposeAliasLE(GL_AliasElement* element);

/// Fills the names; the folder's stays as it is where the alias has no path or that no such name.
SInt32 GL_GetAliasNames(AliasHandle alias, GL_AliasNames* names);
/// The target's name as a new string that the caller owns; null if the alias has none.
SInt32 GL_GetAliasNameAsCFStr(AliasHandle alias, CFStringRef* name);
/// Finds the target, on its whole volume if need be, without asking anybody, and brings the alias
/// up to date.
SInt32 GL_ResolveAliasSilently(AliasHandle alias, FSRef* target);
/// Whether the volumes of two aliases have the same name, without regard to case, and are of the
/// same file system.
SInt32 GL_AliasesOnSameSystem(AliasHandle a, AliasHandle b, Boolean* same);
