/// The toolkit's error codes, their keys, and the families of the platform's statuses.
///
/// All statuses share one number space: 0 is success, the platform's are negative (a few are
/// large), the toolkit's libraries have a block of positive numbers each. A key is a short constant
/// text that names an error; it looks up a localised text.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// A missing object: a failed creation or a null argument.
inline constexpr SInt32 GL_NilPointerErr = 4008;
inline constexpr SInt32 GL_PathWithoutNameErr = 10014;
inline constexpr SInt32 GL_NoURLErr = 10023;
inline constexpr SInt32 GL_NoPathErr = 10024;
inline constexpr SInt32 GL_NoFSRefOfURLErr = 10025;
inline constexpr SInt32 GL_BundleResourceErr = 10028;
inline constexpr SInt32 GL_NoBundleErr = 10029;
inline constexpr SInt32 GL_NoPropertyListErr = 10032;
inline constexpr SInt32 GL_NoBitmapContextErr = 10039;
inline constexpr SInt32 GL_NoImageErr = 10041;
inline constexpr SInt32 GL_NoImageSourceErr = 10043;
inline constexpr SInt32 GL_ImageEndErr = 10044;
inline constexpr SInt32 GL_ImageDataErr = 10045;
inline constexpr SInt32 GL_ImageTypeErr = 10046;
inline constexpr SInt32 QT_NoVideoTrackErr = 11011;
inline constexpr SInt32 NS_NoNavServicesErr = 25001;
inline constexpr SInt32 NS_NoEventProcErr = 25002;

/// The key of a code, a constant string that is not released. Codes without a key, and those of
/// other blocks, give "GL UnknownErr".
void GL_GetLibErrorKey(SInt32 code, CFStringRef* key);
void QT_GetLibErrorKey(SInt32 code, CFStringRef* key);
void CO_GetLibErrorKey(SInt32 code, CFStringRef* key);
void IA_GetLibErrorKey(SInt32 code, CFStringRef* key);
void LOG_GetLibErrorKey(SInt32 code, CFStringRef* key);
void NS_GetLibErrorKey(SInt32 code, CFStringRef* key);
void NR_GetLibErrorKey(SInt32 code, CFStringRef* key);
/// The key of a platform status: its own, or "GL UnknownErr".
void GL_GetSysErrorKey(SInt32 status, CFStringRef* key);
/// The key of a movie toolbox status.
void GL_GetQT_ErrorKey(SInt32 status, CFStringRef* key);
/// The key of the block that the library code belongs to.
void GL_GetLibraryLumpedErrorKey(SInt32 code, CFStringRef* key);
/// The key of the first family that the platform status belongs to, or "GL UnknownErr".
CFStringRef GL_GetOtherSystemErrorKey(SInt32 status);

/// 1 if the status belongs to the family.
Boolean GL_IsFileError(SInt32 status);
Boolean GL_IsNetworkError(SInt32 status);
Boolean GL_IsMemoryError(SInt32 status);
Boolean GL_IsColorSyncError(SInt32 status);
Boolean GL_IsSpeechError(SInt32 status);
Boolean GL_IsProcessError(SInt32 status);
Boolean GL_IsHelpError(SInt32 status);
Boolean GL_IsAEventError(SInt32 status);
Boolean GL_IsDragError(SInt32 status);
Boolean GL_IsIconError(SInt32 status);
Boolean GL_IsComponentError(SInt32 status);
Boolean GL_IsColorPickerError(SInt32 status);
Boolean GL_IsAFP_Error(SInt32 status);
Boolean GL_IsMenuError(SInt32 status);
Boolean GL_IsWindowError(SInt32 status);
Boolean GL_IsDisplayError(SInt32 status);
Boolean GL_IsATSUI_Error(SInt32 status);
Boolean GL_IsMLTE_Error(SInt32 status);
Boolean GL_IsPOSIX_Error(SInt32 status);
Boolean GL_IsControlError(SInt32 status);
Boolean GL_IsMP_Error(SInt32 status);
Boolean GL_Is_vImageError(SInt32 status);
