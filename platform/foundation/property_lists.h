/// Property lists: trees of dictionaries with string keys, arrays, strings, numbers, Booleans, data
/// and dates, and their XML form.
///
/// XML cannot carry every UTF-16 unit of a string. One that it cannot (control characters,
/// unpaired surrogates, U+FFFE and U+FFFF) is written as the processing instruction <?utf16 NNNN?>
/// with the unit in hexadecimal, which other readers pass over. Dates are kept to the whole second,
/// in the years 1 to 9999.
///
/// Reading trusts nothing: document types are read over, entities of their own are refused, and
/// size, depth and the number of values have limits, the same for reading and writing.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "cf_values.h"
#include "reference_counted.h"

/// Any object of the kinds that a property list holds.
using CFPropertyListRef = CFTypeRef;

/// How much of a list that is read may be changed; containers always may.
inline constexpr CFOptionFlags kCFPropertyListImmutable = 0;

/// The list as XML in UTF-8; the caller owns it. Null if it holds an object of another kind, a
/// null, a date that has no form, or passes a limit.
CFDataRef CFPropertyListCreateXMLData(CFAllocatorRef allocator, CFPropertyListRef list);
/// The list that XML data holds; the caller owns it. Null if the data is damaged or no property
/// list; then `error`, which may be null, takes a text that the caller owns, in English.
CFPropertyListRef CFPropertyListCreateFromXMLData(CFAllocatorRef allocator, CFDataRef data,
                                                  CFOptionFlags options, CFStringRef* error);
/// A copy of the list that shares no container and no changeable string with it; the caller owns
/// it. Null if it holds an object of another kind or passes a limit.
CFPropertyListRef CFPropertyListCreateDeepCopy(CFAllocatorRef allocator, CFPropertyListRef list,
                                               CFOptionFlags options);

namespace quillmere {

/// Limits of property lists.
inline constexpr CFIndex kLargestPropertyList = CFIndex{32} << 20;  ///< bytes of XML
inline constexpr int kDeepestPropertyList = 512;                    ///< containers in each other
inline constexpr int kMostPropertyListValues = 1 << 18;             ///< values, keys not counted

}  // namespace quillmere
