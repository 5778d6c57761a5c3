/// The toolkit's status numbers, and the way from a status to a text for the user.
///
/// A status is a signed 32-bit number, 0 for success. Negative numbers (and a few large ones) are
/// the platform's and pass through unchanged. Positive ones are the toolkit's own: a block of
/// numbers for each library, named in the library's own header, a few framework codes, and the
/// numbers of Unix from 35001 on.
///
/// A key is a short constant English string such as "GL FileNotFoundErr". It names the text of a
/// status in a string table of the main bundle, and stands for the text where the table has none.
/// Keys are compared without regard to case.
///
/// The text functions: `outKey` takes the key, which is a constant and not released; `outText`
/// takes the text, which the caller owns. Both may be null. With the keys "GL NoErr" and "GL
/// UnknownErr" `outText` stays as it was.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// Framework codes.
inline constexpr SInt32 GL_BadSystemErr = 4001;  ///< the system is too old for the operation
/// A missing object: a failed creation or a null argument.
inline constexpr SInt32 GL_NilPointerErr = 4008;
/// What is added to a number of Unix, 1 to 103.
inline constexpr SInt32 GL_UnixErrBase = 35000;

/// The general library's codes.
inline constexpr SInt32 GL_WordNotInStringErr = 10001;  ///< to insert behind: GL_InsertWordBehind
inline constexpr SInt32 GL_StringLimitErr = 10003;      ///< a length limit: GL_FindWord, and lines
inline constexpr SInt32 GL_WordWiderThanLineErr = 10004;
inline constexpr SInt32 GL_StringWouldGrowTooLongErr =
    10005;                                                   ///< past 255 characters, names past 63
inline constexpr SInt32 GL_WordLongerThanStringErr = 10006;  ///< GL_FindWord
inline constexpr SInt32 GL_NoNameEndErr = 10008;  ///< GL_GetNameEndIndex: no space before an index
inline constexpr SInt32 GL_NoNameIndexErr =
    10009;  ///< GL_GetNameEndIndex: no digit behind the space
/// A path has no last component: GL_FullPathToFileNameAndParentRef.
inline constexpr SInt32 GL_NoFileNameInPathErr = 10014;
inline constexpr SInt32 GL_PrefsFileNotFoundErr = 10015;  ///< GL_FindPrefsFile
/// A file is too large to be copied through one block of memory.
inline constexpr SInt32 GL_NotSmallFileErr = 10019;
inline constexpr SInt32 GL_NoNodeNameErr = 10020;  ///< of a volume: GL_VolumeToBSDNodeName
/// No URL could be made of a file reference or a path: GL_FSRefToPosixStr, GL_FilePathToFSRef,
/// GL_FolderPathFileNameToFSRef.
inline constexpr SInt32 GL_NoURLErr = 10023;
/// A URL has no file system path: GL_FSRefToPosixStr, AE_CreateObjSpecifierFromCFURLRef.
inline constexpr SInt32 GL_NoPathErr = 10024;
/// A URL has no file reference: GL_FilePathToFSRef, AE_BuildRevealStartupDiskAE.
inline constexpr SInt32 GL_NoFSRefErr = 10025;
inline constexpr SInt32 GL_NoKeyboardLayoutErr = 10027;  ///< GL_MakeKeyCodeList
/// The bundle or a resource in it was not found.
inline constexpr SInt32 GL_BundleResourceErr = 10028;
/// There is no main bundle, or no bundle at a place: CF_LoadSystemFrameworkByName.
inline constexpr SInt32 GL_NoBundleErr = 10029;
inline constexpr SInt32 GL_NoPropertyListErr = 10032;  ///< a file's data is no property list
/// The results -1 to -4 of message ports: CF_MapMessagePortErr.
inline constexpr SInt32 GL_PortSendTimeoutErr = 10035;
inline constexpr SInt32 GL_PortReceiveTimeoutErr = 10036;
inline constexpr SInt32 GL_PortInvalidErr = 10037;
inline constexpr SInt32 GL_PortTransportErr = 10038;
/// No bitmap context could be made.
inline constexpr SInt32 GL_BitmapContextErr = 10039;
/// No image could be made.
inline constexpr SInt32 GL_ImageErr = 10041;
/// GL_CGImageCreateFromURL: the file is no image source, ends early, holds bad data, or is of an
/// unknown type.
inline constexpr SInt32 GL_NoImageSourceErr = 10043;
inline constexpr SInt32 GL_ImageEndErr = 10044;
inline constexpr SInt32 GL_ImageDataErr = 10045;
inline constexpr SInt32 GL_ImageTypeErr = 10046;

/// The text of a platform status, table "GL System Errors". A status without a key of its own has
/// the key of its family (GL_GetOtherSystemErrorKey). 0 and -128, the user's cancel, are "GL
/// NoErr".
void GL_GetSysErrorStringRef(SInt32 status, CFStringRef* outKey, CFStringRef* outText);
/// The text of a status of the movie toolbox, table "QT System Errors".
void GL_GetQT_ErrorStringRef(SInt32 status, CFStringRef* outKey, CFStringRef* outText);
/// The text of a framework code, table "GL Framework Errors"; with any other code both outputs stay
/// as they were.
void GL_GetFrameWorkErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText);
/// The text of a code of any library, from the default string table; with a code in no library's
/// block both outputs stay as they were.
void GL_GetLibraryErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText);
/// One key and text for each library, such as "GL QT_Err"; table "GL Lumped Library Errors".
void GL_GetLibraryLumpedErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText);
/// "Unix error: " and the C library's text for the codes 35001 to 35103; the key is "Unix error
/// key", for any other code "GL UnknownErr".
void GL_GetUnixErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText);

/// The constant key of the first family that holds `status`; "GL UnknownErr" if none does.
CFStringRef GL_GetOtherSystemErrorKey(SInt32 status);
/// Sets the constant key of a code of the general library; "GL UnknownErr" if it has none.
void GL_GetLibErrorKey(SInt32 code, CFStringRef* outKey);

/// Prints status, name and comment on standard output: "error = -43, standard name = fnfErr,
/// standard comment = file not found".
void GL_PrintErrorWithSystemComment(SInt32 status);

/// The families of platform statuses: 1 if the status belongs to the family, else 0. A status may
/// belong to several.
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
