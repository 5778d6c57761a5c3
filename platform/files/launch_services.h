/// What the desktop knows of a file by its name: extensions.
///
/// An extension is what stands behind the last full stop of a name. A name that has no full stop,
/// begins with its only one or ends with it has no extension.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "file_references.h"

using UniCharCount = UInt64;

/// Status of LSCopyItemAttribute for an object that does not have the attribute.
inline constexpr OSStatus kLSAttributeNotFoundErr = -10662;
/// The attribute "extension of the item".
extern const CFStringRef kLSItemExtension;
/// What LSGetExtensionInfo reports for a name without an extension.
inline constexpr UniCharCount kLSInvalidExtensionIndex = ~UniCharCount{0};

/// The object's attribute `name`: kLSItemExtension gives its extension without the full stop. The
/// caller owns `*value`, which is null unless the status is 0. `roles` is -1. paramErr for a null
/// argument, kLSAttributeNotFoundErr for any other attribute and for an object without an
/// extension, the files' statuses for a reference that names nothing.
OSStatus LSCopyItemAttribute(const FSRef* reference, SInt32 roles, CFStringRef name,
                             CFTypeRef* value);

/// Finds the extension in a name of `length` UTF-16 units: `*start` is the index of its first
/// character, behind the full stop, or kLSInvalidExtensionIndex. paramErr for a null argument.
OSStatus LSGetExtensionInfo(UniCharCount length, const UniChar* name, UniCharCount* start);
