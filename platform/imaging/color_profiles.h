/// ICC profiles, opened from files, bytes or displays, and their elements; on lcms2.
///
/// A profile is named by a reference, which CMCloseProfile ends. Elements are handed out as they
/// stand in the profile (ICC.1:2010, 10), type signature and all, big-endian. A profile may be used
/// by one thread at a time.
#pragma once

#include "base_types.h"

struct ColorProfile;
using CMProfileRef = ColorProfile*;

/// The main display. What it shows is not asked of the window system: its profile is that of a
/// display with the primaries and white of sRGB (IEC 61966-2-1) and the gamma 2.2.
UInt32 CGMainDisplayID();

/// Statuses: no such profile or one that is damaged, and no such element.
inline constexpr OSStatus cmProfileError = -170;
inline constexpr OSStatus cmElementTagNotFound = -4200;

/// Where a profile is.
inline constexpr SInt16 cmBufferBasedProfile = 6;
inline constexpr SInt16 cmPathBasedProfile = 5;
struct CMProfileLocation {
  SInt16 locType;
  const char* path;    ///< cmPathBasedProfile: a POSIX path in UTF-8
  const void* buffer;  ///< cmBufferBasedProfile: copied
  UInt32 size;         ///< bytes of `buffer`
};

/// Opens a profile; `*profile` is null on a failure. paramErr for another location, cmProfileError
/// for bytes that are no profile, and for a file what reading it gives (at most 64 MiB).
OSStatus CMOpenProfile(CMProfileRef* profile, const CMProfileLocation* location);
/// The profile of a display; cmProfileError for one that there is not.
OSStatus CMGetProfileByAVID(UInt32 display, CMProfileRef* profile);
/// Gives up a profile; null is allowed.
OSStatus CMCloseProfile(CMProfileRef profile);
/// An element's size in bytes, to `*size`; then its bytes, at most `*size` of them, to `data`,
/// which may be null to ask for the size alone. cmElementTagNotFound if the profile has none such.
OSStatus CMGetProfileElement(CMProfileRef profile, OSType tag, UInt32* size, void* data);
