/// Bringing files and folders into being, finding free names, and getting rid of objects that are
/// in the way or busy.
///
/// Statuses of the files layer come back as they are. Where a file is replaced and making or
/// renaming the new one fails, the old one is gone. Nothing guards a name that was found free until
/// it is used. `window` and its static text are those of GL_Controls.h.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"
#include "file_references.h"
#include "folders.h"
#include "forks.h"

/// Makes an empty file. One that exists gives dupFNErr, with its reference in `*file`, unless
/// `replace_existing` is set: then it is deleted. The folder's date is bumped.
SInt32 GL_CreateFile(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                     Boolean replace_existing, FSRef* file);
/// The same for a name whose object may still be in use: that is unlinked, and a busy answer is
/// tried again, up to 11 times in all with 10 ticks between.
SInt32 GL_CreateFileNew(const FSRef* folder, const HFSUniStr255* name, OSType creator, OSType type,
                        Boolean replace_existing, FSRef* file);
/// Makes a folder. What already has the name counts as success, whatever it is, and `folder` (may
/// be null) takes it.
SInt32 GL_CreateFolder(const FSRef* parent, const HFSUniStr255* name, FSRef* folder);
SInt32 GL_CreateFileInRootDirOfVolume(FSVolumeRefNum volume, const HFSUniStr255* name, FSRef* file);
/// Makes a file of a name of its own in the folder for temporary files.
SInt32 GL_CreateTempFileRef(FSRef* file);

/// The first free name of "Name", "Name 2", "Name 3" ..., with `extension` (its full stop included)
/// behind it. The caller owns `*out_name`, which is null on a failure.
SInt32 GL_CreateIndexedNameWithExtInFolder(const FSRef* folder, CFStringRef base_name,
                                           CFStringRef extension, CFStringRef* out_name);
SInt32 GL_CreateIndexedNameInFolder(const FSRef* folder, CFStringRef base_name,
                                    CFStringRef* out_name);
/// Gives an object the first such name that is free in its folder; its reference goes on naming it.
SInt32 GL_RenameIndexed(FSRef* object, CFStringRef base_name, CFStringRef extension);
/// Renames an object; what has the name is deleted.
SInt32 GL_RenameDelete(FSRef* object, const HFSUniStr255* new_name);

/// Tries to delete an object until it is not busy, `max_tries` times, each after 10 ticks.
SInt32 GL_DeletePotentiallyBusyFileObject(const FSRef* object, SInt32 max_tries);
SInt32 GL_UnlinkObject(const FSRef* object);

/// Makes a file's resource fork; one that is there counts as success.
SInt32 GL_CreateResourceFork(const FSRef* file);
/// Opens it; the caller closes it with FSCloseFork.
SInt32 GL_OpenResourceFork(const FSRef* file, SInt8 permission, FSIORefNum* fork);
/// Takes its bytes away.
SInt32 GL_DeleteResourceFork(const FSRef* file);

/// The toolkit's folder "ORW" in a domain's folder for application support.
SInt32 GL_FindCreateOrwSupportFolder(FSVolumeRefNum domain, FSRef* folder, Boolean create);
/// A file in the user's folder for preferences; GL_PrefsFileNotFoundErr if there is none.
SInt32 GL_FindPrefsFile(const HFSUniStr255* name, FSRef* file);
/// A sub-folder of the application's resources; fnfErr if there is none.
SInt32 GL_FindNamedResourceFolderInAppBundle(CFStringRef name, FSRef* folder);
/// The folder that holds the application.
SInt32 GL_GetAppParentDirectory(FSRef* folder);

/// Says in a static text where a file is or will be: "name" in folder "..." on volume "...", behind
/// `prefix` (may be null). No folder or an empty name shows `none_text`, or nothing if that is
/// null.
SInt32 GL_SetNonExistingFileInSTI(const FSRef* folder, const HFSUniStr255* name, WindowRef window,
                                  OSType signature, SInt32 number, CFStringRef none_text,
                                  CFStringRef prefix);
SInt32 GL_SetFileInSTI(const FSRef* file, WindowRef window, OSType signature, SInt32 number,
                       CFStringRef none_text, CFStringRef prefix);
