/// The contents of one folder as lists, arrays and counts, and finding files in it.
///
/// Walks go one level deep, by name in Unicode code point order. Folders can change during a walk;
/// an object that goes away meanwhile is left out. Statuses are those of the files family.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

/// An element of a list of files and folders.
struct GL_FileObjLE {
  GL_FileObjLE* next;
  FSRef fileRef;
};

/// Appends one element for every object of the folder, files and folders alike, to `*list`. The
/// caller frees the list with LL_DisposeLinkedList. On a failure the list keeps what it has.
SInt32 GL_MakeFolderFileObjList(const FSRef* folder, GL_FileObjLE** list);
/// Copies the references of the objects whose names end in `suffix` to `array`, which has room for
/// `capacity` of them; further ones are left out. The test is case-sensitive and on the name's last
/// characters alone: "jpg" takes "x.jpg" and "xjpg", and folders too.
SInt32 GL_ListFilesWithExtension(const FSRef* folder, CFStringRef suffix, FSRef* array,
                                 SInt32 capacity);
/// Counts the objects that GL_ListFilesWithExtension takes.
SInt32 GL_CountFilesWithExtension(const FSRef* folder, CFStringRef suffix, SInt32* count);
/// The object's name; the caller owns the string. Null on failure.
SInt32 GL_CopyFileDirNameAsCFString(const FSRef* file, CFStringRef* string);
SInt32 GL_CopyFileDirNameAsCFMutStr(const FSRef* file, CFMutableStringRef* string);

/// The first element that names the same object; null if none does.
GL_FileObjLE* GL_FindFileInList(const FSRef* file, GL_FileObjLE* list);
/// 1 if two GL_FileObjLE are valid and name the same object; an equality test for lists.
Boolean GL_EqualFileRefLEPtrs(const void* a, const void* b);
/// 1 if both references name the same object.
Boolean GL_EqualFileObjects(const FSRef* a, const FSRef* b);

/// Looks for a name in the folder, ignoring case. `reference` may be null.
SInt32 GL_IsFileInFolder(const FSRef* folder, const HFSUniStr255* name, FSRef* reference,
                         Boolean* found);
/// 1 if the folder has an object of exactly that name.
Boolean GL_IsFileNameInFolder(const FSRef* folder, const HFSUniStr255* name);
/// Finds a folder in `folder`, making it if `create` is set and nothing has that name; `created`
/// tells (may be null). fnfErr when it is not there or the name is a file's.
SInt32 GL_FindFolderInFolderUni(const FSRef* folder, const HFSUniStr255* name, FSRef* reference,
                                Boolean create, Boolean* created);
SInt32 GL_FindFolderInFolder(const FSRef* folder, CFStringRef name, FSRef* reference,
                             Boolean create, Boolean* created);
/// Copies to `array`, up to `capacity`, the other objects of the file's folder whose names equal
/// its name, ignoring case and extensions of up to 8 characters.
SInt32 GL_FindFilesWithSameNameInSameFolder(const FSRef* file, FSRef* array, SInt32 capacity,
                                            SInt32* count);
