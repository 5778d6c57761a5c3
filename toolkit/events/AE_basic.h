/// Making descriptors.
///
/// All but AE_BuildErrorToAEDesc give a status: paramErr for a null pointer. A descriptor that
/// comes out is the caller's.
#pragma once

#include "cf_strings.h"
#include "descriptors.h"
#include "event_builder.h"

/// Makes it a null descriptor without looking at what it was.
SInt32 AE_NullDesc(AEDesc* descriptor);
/// Frees the data and makes it a null descriptor.
SInt32 AE_DisposeDesc(AEDesc* descriptor);
/// `utf8`: the bytes of a C string in UTF-8 without the zero byte.
SInt32 AE_CStringToDescAsUTF8(const char* string, AEDesc* descriptor);
/// `ut16`: the string's characters in big-endian order.
SInt32 AE_CFStringToDescAsUTF16(CFStringRef string, AEDesc* descriptor);
/// The text "Error %d (%@) found at position %d." of what AEBuildAppleEvent or AEBuildDesc found
/// wrong, as `ut16`; a null descriptor if it cannot be made.
void AE_BuildErrorToAEDesc(const AEBuildError* error, AEDesc* descriptor);
