/// Names and comments of the platform's status numbers, for logs and for those who read them.
#pragma once

#include "base_types.h"

/// The name of a status as it stands in code, such as "fnfErr" of -43; empty if it has none here. A
/// constant C string.
const char* GetMacOSStatusErrorString(OSStatus status);
/// What the status says, such as "file not found"; empty if nothing is known. A constant C string.
const char* GetMacOSStatusCommentString(OSStatus status);
