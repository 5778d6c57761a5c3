/// Questions about a file that go by its name.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

/// The object has no such attribute.
inline constexpr OSStatus kLSAttributeNotFoundErr = -10662;
inline constexpr UInt32 kLSRolesAll = 0xFFFFFFFF;
/// The attribute of a name's extension, without its period.
CFStringRef LSItemExtensionKey();

/// The extension of a name: its start is the unit behind the last period, or -1 if there is none. A
/// period at the name's start or end begins no extension, nor one before an extension with blanks.
CFIndex LSGetExtensionStart(CFStringRef name);
/// The attribute of the object as a new string; kLSAttributeNotFoundErr (and null) if it has none.
OSStatus LSCopyItemAttribute(const FSRef* reference, UInt32 roles, CFStringRef attribute,
                             CFTypeRef* value);
