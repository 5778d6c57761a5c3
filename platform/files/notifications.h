/// Telling file managers and other observers that a folder has changed.
#pragma once

#include "base_types.h"
#include "file_references.h"

using FNMessage = UInt32;
/// The content of a folder, or what its window shows of it, has changed.
inline constexpr FNMessage kFNDirectoryModifiedMessage = 1;

/// Sends observers of a folder (inotify(7)) an event, without a change of the folder's dates of
/// content and access. `flags` is 0. paramErr for another message, dirNFErr for no folder, permErr
/// or afpAccessDenied for one that the user may not touch.
OSStatus FNNotify(const FSRef* folder, FNMessage message, UInt32 flags);
