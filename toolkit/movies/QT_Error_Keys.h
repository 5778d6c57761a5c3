/// The movie library's status numbers, 11001 to 11029, and their error keys.
#pragma once

#include "base_types.h"
#include "cf_strings.h"

/// There is no component of the kind that is asked for.
inline constexpr SInt32 QT_NoComponentFoundErr = 11004;
/// Not all files that a movie refers to could be listed.
inline constexpr SInt32 QT_CouldNotGetAllMovieFileReferencesErr = 11007;
/// A movie file could not be deleted.
inline constexpr SInt32 QT_CouldNotDeleteMovieFileErr = 11008;
/// A movie file was not deleted, since the files that it refers to could not be listed.
inline constexpr SInt32 QT_MovieFileReferencesUnknownErr = 11009;
/// A data reference is not an alias of a file.
inline constexpr SInt32 QT_DataRefNotFileErr = 11010;
/// A movie has no video track.
inline constexpr SInt32 QT_NoVideoTrackErr = 11011;
/// QT_DecompressImageToBuffer has no buffer of that pixel format.
inline constexpr SInt32 QT_PixelFormatErr = 11014;
/// The header of a file's movie data was found wrong.
inline constexpr SInt32 QT_MdatHeaderErr = 11015;
/// QT_SetInterlaceInQTMovieExportSettContainer: the codec's settings hold no interlace
/// information.
inline constexpr SInt32 QT_NoInterlaceSettingErr = 11022;
/// QT_SetInterlaceInQTMovieExportSettContainer: the export settings hold no codec settings.
inline constexpr SInt32 QT_NoCodecSettingsErr = 11023;
/// QT_ChangeDualMonoToStereo: the movie's sound is not two single channels.
inline constexpr SInt32 QT_NotDualMonoErr = 11026;

/// Sets the constant key of a code of this library; "GL UnknownErr" if it has none. A null
/// `outKey` takes nothing.
void QT_GetLibErrorKey(SInt32 code, CFStringRef* outKey);
