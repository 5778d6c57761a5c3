/// What the desktop knows of a file: its extension, type and creator, whether it is a package, and
/// the name that it is shown under.
///
/// An extension is what stands behind the last full stop of a name. A name that has no full stop,
/// begins with its only one or ends with it has no extension.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "cf_urls.h"
#include "file_references.h"
#include "unicode_collation.h"

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

/// What is asked of an item, any of them together; the basic flags are the first four below.
inline constexpr UInt32 kLSRequestExtension = 0x01;
inline constexpr UInt32 kLSRequestTypeCreator = 0x02;
inline constexpr UInt32 kLSRequestBasicFlagsOnly = 0x04;
inline constexpr UInt32 kLSRequestAllFlags = 0x10;

inline constexpr UInt32 kLSItemInfoIsPlainFile = 0x01;
/// A folder that is shown as one thing: one with the Finder's bundle flag 0x2000, or with the
/// extension of an application, bundle, plug-in or document that is a folder.
inline constexpr UInt32 kLSItemInfoIsPackage = 0x02;
inline constexpr UInt32 kLSItemInfoIsApplication = 0x04;  ///< a package "app", or a program
inline constexpr UInt32 kLSItemInfoIsContainer = 0x08;    ///< a folder
inline constexpr UInt32 kLSItemInfoIsAliasFile = 0x10;
inline constexpr UInt32 kLSItemInfoIsSymlink = 0x20;
inline constexpr UInt32 kLSItemInfoIsInvisible =
    0x40;  ///< by its flag, or a name with a full stop first
inline constexpr UInt32 kLSItemInfoExtensionIsHidden = 0x100000;  ///< Finder flag 0x10

struct LSItemInfoRecord {
  UInt32 flags;
  OSType filetype;  ///< 0 for none, and for folders
  OSType creator;
  CFStringRef extension;  ///< without its full stop, the caller's to release; null for none
};
/// Tells what `request` names of an object; the rest is 0. A link is not followed. paramErr for a
/// null argument, the files' statuses for what is not there.
OSStatus LSCopyItemInfoForRef(const FSRef* reference, UInt32 request, LSItemInfoRecord* info);
OSStatus LSCopyItemInfoForURL(CFURLRef url, UInt32 request, LSItemInfoRecord* info);
/// The name that the object is shown under: its own, without the extension where that is hidden.
/// The caller owns it.
OSStatus LSCopyDisplayNameForRef(const FSRef* reference, CFStringRef* name);

/// Finds the extension in a name of `length` UTF-16 units: `*start` is the index of its first
/// character, behind the full stop, or kLSInvalidExtensionIndex. paramErr for a null argument.
OSStatus LSGetExtensionInfo(UniCharCount length, const UniChar* name, UniCharCount* start);
