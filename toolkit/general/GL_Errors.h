/// The toolkit's own status numbers. Negative numbers are the platform's and pass through
/// unchanged.
#pragma once

#include "base_types.h"

/// A missing object: a failed creation or a null argument.
inline constexpr SInt32 GL_NilPointerErr = 4008;

/// No URL could be made of a file reference or a path.
inline constexpr SInt32 GL_NoURLErr = 10023;
/// The bundle or a resource in it was not found.
inline constexpr SInt32 GL_BundleResourceErr = 10028;
/// No bitmap context could be made.
inline constexpr SInt32 GL_BitmapContextErr = 10039;
/// No image could be made.
inline constexpr SInt32 GL_ImageErr = 10041;

/// Not all files that a movie refers to could be listed.
inline constexpr SInt32 QT_CouldNotGetAllMovieFileReferencesErr = 11007;
/// A data reference is not an alias of a file.
inline constexpr SInt32 QT_DataRefNotFileErr = 11010;

/// A navigation dialog without an event procedure.
inline constexpr SInt32 NS_NoEventProcErr = 25002;
