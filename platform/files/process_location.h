/// Where the program of a process lies.
#pragma once

#include "base_types.h"
#include "file_references.h"

/// A process by its serial number.
struct ProcessSerialNumber {
  UInt32 highLongOfPSN;
  UInt32 lowLongOfPSN;
};
/// The low part, with 0 as the high one, that means the calling process.
inline constexpr UInt32 kCurrentProcess = 2;

/// There is no such process, or none that can be told of.
inline constexpr OSErr procNotFound = -600;

/// The program of a process, its executable file; procNotFound for another one than the calling.
OSStatus GetProcessBundleLocation(const ProcessSerialNumber* process, FSRef* location);
