/// Names and paths of file objects, and the references that they lead to.
///
/// Paths are POSIX paths in UTF-8 as C strings. A C string that an operation gives out is the
/// caller's, to be given back with free; a CFString is released. What is given out is null on a
/// failure. GL_NoURLErr, GL_NoPathErr and GL_NoFSRefErr say that no URL, path or reference could be
/// made; other statuses are those of the failed call. paramErr for a null argument.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

/// Status for a name or path that can't be converted, or does not fit.
inline constexpr SInt32 kGL_ConversionErr = -4960;
/// Bytes of a buffer for a name in UTF-8.
inline constexpr Size kGL_NameBufferSize = 256;

/// The name of the folder that holds the object.
SInt32 GL_GetParentFolderName(const FSRef* reference, HFSUniStr255* name);
/// The object's name in UTF-8, and the one that it is shown under. kGL_ConversionErr if it does not
/// convert.
SInt32 GL_CopyFileDirNameAsCString(const FSRef* reference, char** name);
SInt32 GL_CopyFileDirDisplayNameAsCString(const FSRef* reference, char** name);

/// The POSIX path of a classic path ("Disk:Folder:File") in MacRoman, whether there is something or
/// not; null for a volume that is not there. The caller frees it.
char* GL_HFS_StrToPosixStr(const char* hfs_path);
/// The object's path, as a new string and as a C string.
SInt32 GL_FSRefToPosixStr(const FSRef* reference, CFStringRef* path);
SInt32 GL_FSRefToPosixPath(const FSRef* reference, char** path);
/// The object at a path, and at that of a file in a folder (with or without a slash between).
SInt32 GL_FilePathToFSRef(const char* path, FSRef* reference);
SInt32 GL_FolderPathFileNameToFSRef(const char* folder_path, const char* name, FSRef* reference);
/// The last component of a path, which need not be there, and its folder, which must. For a path
/// without one ("/") GL_NoFileNameInPathErr.
SInt32 GL_FullPathToFileNameAndParentRef(const char* path, HFSUniStr255* name, FSRef* parent);

/// The last component of a path without its extension, as a new string. kGL_ConversionErr if there
/// is none or it is not UTF-8.
SInt32 GL_PosixPathToFileNameCFStrNoExt(const char* path, CFStringRef* name);
/// The same in UTF-8 into a buffer of kGL_NameBufferSize bytes, which is empty on a failure;
/// kGL_ConversionErr also if it does not fit.
SInt32 GL_PosixPathToFileNameNoExt(const char* path, char* name);
/// The same, shortened in its middle to `max_length` UTF-16 units.
SInt32 GL_PosixPathToFileNameCFMutStrNoExtMaxLen(const char* path, SInt32 max_length,
                                                 CFMutableStringRef* name);

/// The program of this process: by its process, and by its bundle (kGL_AppNotFoundErr on any
/// failure). Its folder is given by GL_GetAppParentDirectory.
SInt32 GL_CurrentProcessRef(FSRef* reference);
SInt32 GL_GetAppRef(FSRef* reference);
inline constexpr SInt32 kGL_AppNotFoundErr = -10814;
