/// What is known of a file or folder: sizes, forks, dates, where it lies and what may be done.
///
/// Outputs called optional may be null. paramErr for another null pointer; other statuses are those
/// of the failed call.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_dates.h"
#include "file_references.h"
#include "volumes.h"

/// Name, volume (optional) and folder of an object.
SInt32 GL_GetObjectDefaultCatInfo(const FSRef* reference, HFSUniStr255* name,
                                  FSVolumeRefNum* volume, FSRef* parent);
/// A file's creator and type, both optional; notAFileErr for a folder.
SInt32 GL_GetCreatorAndFileType(const FSRef* reference, OSType* creator, OSType* type);

/// Sizes of the data fork and the resource fork, their bytes and what they take on the disk; each
/// optional.
SInt32 GL_GetEOF(const FSRef* reference, UInt64* data_logical, UInt64* data_physical,
                 UInt64* resource_logical, UInt64* resource_physical);
/// The bytes of all forks of a file.
SInt32 GL_GetLargeFileSize(const FSRef* reference, UInt64* size);
/// The number of a file's forks: its data fork, its resource fork if that has bytes, and all
/// others.
SInt32 GL_CountForks(const FSRef* reference, UInt32* count);
/// Whether a file has forks beside the data and the resource fork.
SInt32 GL_FileHasNamedForks(const FSRef* reference, Boolean* has);

/// The dates of an object, each optional; setting changes those that are given.
SInt32 GL_GetFileObjectTimes(const FSRef* reference, UTCDateTime* create,
                             UTCDateTime* content_modification, UTCDateTime* attribute_modification,
                             UTCDateTime* access, UTCDateTime* backup);
SInt32 GL_SetFileObjectTimes(const FSRef* reference, const UTCDateTime* create,
                             const UTCDateTime* content_modification,
                             const UTCDateTime* attribute_modification, const UTCDateTime* access,
                             const UTCDateTime* backup);

/// The number of objects in a folder; kGL_NotAFolderErr for what is none.
SInt32 GL_GetFolderValence(const FSRef* reference, UInt32* count);
inline constexpr SInt32 kGL_NotAFolderErr = -1407;

/// Whether a file may be written to, found out by opening it. One that somebody else is writing is;
/// a failure that says nothing of it is the result, with `*writable` true.
SInt32 GL_IsFileWritable(const FSRef* reference, Boolean* writable);
/// Whether this process has a fork of the file open.
SInt32 GL_IsFileOpen(const FSRef* reference, Boolean* open);
/// Whether the object lies, at any depth, in the trash of its volume, or in that of the classic
/// system, which here has none.
SInt32 GL_FileInTrash(const FSRef* reference, Boolean* in_trash);
SInt32 GL_FileInClassicTrash(const FSRef* reference, Boolean* in_trash);
/// 1 if the reference names an object that is not known to be in the trash.
Boolean GL_FSRefValid(const FSRef* reference);

/// The innermost package that the object lies in; an all-zero reference if there is none.
SInt32 GL_GetEnvelopingPackage(const FSRef* reference, FSRef* package);
/// Whether the object is shown without its extension: the Finder's flag 0x10.
SInt32 GL_GetExtensionHiddenForRef(const FSRef* reference, Boolean* hidden);
/// 1 for a name that ends in ".htm" or ".html", in upper or lower case.
Boolean GL_IsHTML_File(CFStringRef name);
