/// Descriptors: typed bytes, and lists of them. A descriptor owns its data; dispose of each one
/// that a call has filled.
#pragma once

#include "base_types.h"

struct DescriptorData;

struct AEDesc {
  OSType descriptorType;
  DescriptorData* dataHandle;
};
using AEDescList = AEDesc;

inline constexpr OSType typeNull = "null"_4cc;
inline constexpr OSType typeAEList = "list"_4cc;
inline constexpr OSType typeFSRef = "fsrf"_4cc;
inline constexpr OSType typeFileURL = "furl"_4cc;

inline constexpr OSErr errAECoercionFail = -1700;
inline constexpr OSErr errAEDescNotFound = -1701;
inline constexpr OSErr errAEWrongDataType = -1703;

/// Makes a descriptor of `size` bytes at `data`.
OSErr AECreateDesc(OSType type, const void* data, Size size, AEDesc* descriptor);
/// Frees the data and makes it a null descriptor; a null pointer is allowed.
OSErr AEDisposeDesc(AEDesc* descriptor);
/// A deep copy.
OSErr AEDuplicateDesc(const AEDesc* from, AEDesc* to);
/// A new descriptor of another type: each type to itself, and `furl` (a path in UTF-8, or a file:
/// URL) and `fsrf` into each other, the forms of text (text_coercions.h) into each other.
/// errAECoercionFail otherwise.
OSErr AECoerceDesc(const AEDesc* from, OSType type, AEDesc* to);
/// Copies at most `capacity` bytes of the data. errAEWrongDataType for a list.
OSErr AEGetDescData(const AEDesc* descriptor, void* data, Size capacity);
Size AEGetDescDataSize(const AEDesc* descriptor);

/// Makes an empty list.
OSErr AECreateList(AEDescList* list);
/// Sets item `index` from 1, or appends for 0 or one past the end.
OSErr AEPutPtr(AEDescList* list, SInt32 index, OSType type, const void* data, Size size);
OSErr AECountItems(const AEDescList* list, SInt32* count);
/// Copies item `index` from 1, coerced to `type`, to `data`. `keyword` (set to 0, as lists have
/// none), `actual_type` and `actual_size` may be null. errAEDescNotFound outside the list.
OSErr AEGetNthPtr(const AEDescList* list, SInt32 index, OSType type, OSType* keyword,
                  OSType* actual_type, void* data, Size capacity, Size* actual_size);
