/// What a folder holds: as a linked list, as an array, or as a count; and names of file objects.
///
/// All walks are of one level, in the order of the names by code points. A walk's failure ends the
/// function with its status.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

/// A list element of a file object; lists belong to the caller, who disposes of them with
/// LL_DisposeLinkedList.
struct GL_FileObjectElement {
  GL_FileObjectElement* next;
  FSRef fileRef;
};

/// Appends one element for every object of the folder, files and sub-folders alike, to `*list`.
SInt32 GL_MakeFolderFileObjList(const FSRef* folder, GL_FileObjectElement** list);

/// Copies the references of objects whose name ends in `suffix` to `array`, at most `capacity` of
/// them. The test is case-sensitive and on the name's last characters only, without regard to a
/// full stop.
SInt32 GL_ListFilesWithExtension(const FSRef* folder, CFStringRef suffix, FSRef* array,
                                 SInt32 capacity);
/// Counts by the same test; `*count` is first set to 0.
SInt32 GL_CountFilesWithExtension(const FSRef* folder, CFStringRef suffix, SInt32* count);

/// The object's name, as a new string that the caller owns.
SInt32 GL_CopyFileDirNameAsCFString(const FSRef* file, CFStringRef* name);
SInt32 GL_CopyFileDirNameAsCFMutStr(const FSRef* file, CFMutableStringRef* name);

/// 1 if both name the same object.
Boolean GL_EqualFileObjects(const FSRef* a, const FSRef* b);
/// 1 if both elements hold valid references that compare equal; a test for the list operations.
Boolean GL_EqualFileRefLEPtrs(const void* a, const void* b);
/// The first element whose reference compares equal, or null.
GL_FileObjectElement* GL_FindFileInList(const FSRef* file, GL_FileObjectElement* list);

/// Looks for a name, without regard to case, in a folder: `*found` tells, `reference` (may be null)
/// takes the object.
SInt32 GL_IsFileInFolder(const FSRef* folder, const HFSUniStr255* name, FSRef* reference,
                         Boolean* found);
/// 1 if the folder holds an object of exactly that name.
Boolean GL_IsFileNameInFolder(const FSRef* folder, const HFSUniStr255* name);

/// Finds a sub-folder and gives it in `*folder`; with `create` set one that is missing is made, and
/// `*created` tells so. fnfErr if there is none, also where the name is that of a file; then no
/// folder is made. `created` may be null.
SInt32 GL_FindFolderInFolderUni(const FSRef* parent, const HFSUniStr255* name, FSRef* folder,
                                Boolean create, Boolean* created);
SInt32 GL_FindFolderInFolder(const FSRef* parent, CFStringRef name, FSRef* folder, Boolean create,
                             Boolean* created);
/// Finds an object by its name, without regard to case, or makes a file of that creator and type if
/// `create` is set; `*created` (may be null) tells so. fnfErr if there is none.
SInt32 GL_FindCreateFileInFolder(const FSRef* folder, CFStringRef name, FSRef* file, OSType creator,
                                 OSType type, Boolean create, Boolean* created);
/// Copies references of the other objects in the file's folder whose name, without an extension of
/// up to 8 characters and without regard to case, is the file's, to `array`, at most `capacity`;
/// the rest of it is cleared. `*count` tells how many.
SInt32 GL_FindFilesWithSameNameInSameFolder(const FSRef* file, FSRef* array, SInt32 capacity,
                                            SInt32* count);

/// Opens a file's data fork; `permission` is one of forks.h. The caller closes it.
SInt32 GL_OpenDataFork(const FSRef* file, SInt8 permission, SInt16* fork);
