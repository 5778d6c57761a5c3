/// Resources of files: reading, adding, replacing and counting them.
///
/// Every operation puts back the current resource file, and closes a file that it opened itself.
/// `file` is an open resource file; where an operation also takes `reference`, a `file` of 0 means
/// that it opens the resources of `reference`. Resources have no names here. Statuses are those of
/// the resource calls (resources.h). Handles that are given out are the caller's, who disposes of
/// them with GL_DisposeHandle.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "memory_handles.h"
#include "resources.h"

/// The resource `index`, from 1, of a type. `index` 0 takes that of `*id`, or the first if `id` is
/// null or points to 0. With an index `*id` (may be null) takes the number. resNotFound if there is
/// none. The handle belongs to the file.
SInt32 GL_Get1Resource(ResFileRefNum file, ResType type, SInt16 index, SInt16* id, Handle* handle);
/// 1 if there is that resource. With `handle` (may be null) it is loaded and given out; it belongs
/// to the file then.
Boolean GL_ResourceExists(ResFileRefNum file, ResType type, SInt16 index, SInt16* id,
                          Handle* handle);
/// The same as GL_Get1Resource, the handle being the caller's.
SInt32 GL_Get1ResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                               SInt16 index, SInt16* id, Handle* handle);
/// The same as a block, which the caller disposes of with GL_DisposePtr.
SInt32 GL_Get1PtrResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                                  SInt16 index, SInt16* id, void** pointer, Size* size);

/// Puts a copy of a handle's bytes into the file, which is updated. With `id` null the resource
/// gets a free number; one below 0 or 0 takes a free number to `*id`; one from 0 on replaces what
/// has that number. nilHandleErr for a handle that is null or empty; one that is a resource already
/// stays as it is, with 0.
SInt32 GL_AddResource(ResFileRefNum file, Handle handle, ResType type, SInt16* id);
SInt32 GL_AddResourceToFile(ResFileRefNum file, const FSRef* reference, Handle handle, ResType type,
                            SInt16* id);
SInt32 GL_AddPtrResourceToFile(ResFileRefNum file, const FSRef* reference, const void* pointer,
                               Size size, ResType type, SInt16* id);
/// Adds an alias of `target` with the type `alis`.
SInt32 GL_AddAliasResource(ResFileRefNum file, const FSRef* reference, const FSRef* target,
                           SInt16* id);
/// Finds the target of an alias in a file, and writes the alias back if it changed by that.
SInt32 GL_UpdateAliasResource(ResFileRefNum file, const FSRef* reference, SInt16 id, FSRef* target);

SInt32 GL_RemoveResourceFromFile(ResFileRefNum file, const FSRef* reference, ResType type,
                                 SInt16 index, SInt16* id);
/// Takes all resources of a type away. `file` 0 is the current file, which is not updated; another
/// is, if `update` is set.
SInt32 GL_RemoveResourcesOfType(ResType type, ResFileRefNum file, Boolean update);
/// The number of resources of a type, or of types for `type` 0.
SInt32 GL_CountResourcesInFile(ResFileRefNum file, const FSRef* reference, ResType type,
                               SInt16* count);
/// Adds a block as number `first_id` in front of those that have the numbers from there on: these
/// go up by one, and with `max_count` of them the last goes.
SInt32 GL_ShiftResourcesInFile(ResFileRefNum file, const FSRef* reference, const void* pointer,
                               Size size, ResType type, SInt16 first_id, SInt16 max_count);

/// ResError, or resNotFound where that is 0 and `value` null.
SInt32 GL_ResError(const void* value);

/// Fields of a file's version resource `id`, 1 or 2: the version word, the country, and the texts,
/// each a Pascal string in 256 bytes. Each output may be null; with none nothing is read. -50 for
/// another number. A resource that ends too early gives resNotFound.
SInt32 GL_GetResFileVersion(ResFileRefNum file, SInt16 id, UInt32* version, SInt16* country,
                            UInt8* short_string, UInt8* long_string);
SInt32 GL_GetFileVersion(const FSRef* reference, SInt16 id, UInt32* version, SInt16* country,
                         UInt8* short_string, UInt8* long_string);
