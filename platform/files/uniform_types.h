/// Uniform types of files: dotted names such as "public.jpeg", by extension or by file type.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// The classes of tags: an extension without the full stop, and a file type as
/// UTCreateStringForOSType writes it.
extern const CFStringRef kUTTagClassFilenameExtension;
extern const CFStringRef kUTTagClassOSType;
/// The type that all types of files conform to.
extern const CFStringRef kUTTypeData;

/// The type that a tag stands for among those known here, which are the usual ones of media,
/// pictures, sound and text; null for others. Extensions match in upper and lower case alike.
/// `conforming_to` is null or kUTTypeData. The caller releases the result.
CFStringRef UTTypeCreatePreferredIdentifierForTag(CFStringRef tag_class, CFStringRef tag,
                                                  CFStringRef conforming_to);
/// The four characters of a file type, read in MacRoman. The caller releases the string.
CFStringRef UTCreateStringForOSType(OSType type);
