/// Strings whose stretches carry attributes: dictionaries of a font, a colour and the like.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "cf_values.h"

struct CFAttributedString;
using CFAttributedStringRef = const CFAttributedString*;
/// A string made by CFAttributedStringCreateMutable, which alone may be changed.
using CFMutableAttributedStringRef = CFAttributedString*;

/// A copy of the string with the same attributes (null: none) all over; null for a null string. The
/// caller owns it.
CFAttributedStringRef CFAttributedStringCreate(CFAllocatorRef allocator, CFStringRef string,
                                               CFDictionaryRef attributes);
/// A new empty string that can be changed. `capacity` is a hint and no limit.
CFMutableAttributedStringRef CFAttributedStringCreateMutable(CFAllocatorRef allocator,
                                                             CFIndex capacity);
/// The text, lent until the string is changed; null for null.
CFStringRef CFAttributedStringGetString(CFAttributedStringRef string);
CFIndex CFAttributedStringGetLength(CFAttributedStringRef string);
/// The attributes of the unit at `index`, lent, never null inside the string; `stretch` (may be
/// null) takes the largest range around it with the same attributes. Null outside the string.
CFDictionaryRef CFAttributedStringGetAttributes(CFAttributedStringRef string, CFIndex index,
                                                CFRange* stretch);
/// Replaces the units of `range`, cut to the string. The new ones take the attributes of the first
/// unit that they replace; if they replace none, those of the unit before, else of the one behind.
void CFAttributedStringReplaceString(CFMutableAttributedStringRef string, CFRange range,
                                     CFStringRef replacement);
/// Gives the units of `range`, cut to the string, a copy of these attributes, besides those that
/// they have or, with `clear_others`, instead of them.
void CFAttributedStringSetAttributes(CFMutableAttributedStringRef string, CFRange range,
                                     CFDictionaryRef attributes, Boolean clear_others);
