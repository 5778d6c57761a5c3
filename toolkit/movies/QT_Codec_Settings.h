/// The settings of codecs: given to compressors and to the options of compression sessions, asked
/// of the user, and what they make a compressor enforce on pictures.
///
/// Settings are a compressor's own bytes, null or empty for none. Statuses are those of the
/// compressors (image_compression.h): where there is none of a type they say so.
#pragma once

#include "QT_Ide.h"
#include "base_types.h"
#include "compression_options.h"
#include "file_references.h"
#include "image_compression.h"

/// How DV is exported.
struct QT_DV_Settings {
  OSType dvType;  ///< `dv  `, `dvp ` or `dvp5`
  Boolean isPAL;
  Boolean is16x9;
  OSType scalingMode;
  Boolean isProgressive;
  Boolean isAudioLocked;
};
/// Gives a compressor the 16:9 and progressive settings, or reads them. -2195 for a compressor that
/// hasn't got them.
SInt32 QT_SetDV_SettingsAsProps(CompressorComponent compressor, const QT_DV_Settings* settings);
SInt32 QT_GetDV_SettingsAsProps(CompressorComponent compressor, QT_DV_Settings* settings);

/// What a compressor enforces; cleared where it doesn't.
struct QT_EnforcedProperties {
  SInt32 width;  ///< pixels
  SInt32 height;
  QT_Pasp pasp;
  QT_Clap clap;
  QT_Fiel fiel;
};
/// Asks the compressor of a codec type, which gets the DV settings, if it is one of the DV family,
/// and then `settings`; answers that are known to be wrong are put right. Of compressors that tell
/// their absence by -2200 that is the result, all properties read.
SInt32 QT_GetCompressorEnforcedProperties(OSType codecType, Handle settings,
                                          const QT_DV_Settings* dvSettings,
                                          QT_EnforcedProperties* properties);

/// Gives the options of a compression session a compressor's settings, the compressor, or the
/// quality.
SInt32 QT_ICMCompressionSessionOptionsSetCodecSett(ICMCompressionSessionOptionsRef options,
                                                   Handle settings);
SInt32 QT_ICMCompressionSessionOptionsSetComprComp(ICMCompressionSessionOptionsRef options,
                                                   CompressorComponent compressor);
SInt32 QT_ICMCompressionSessionOptionsSetComprQuality(ICMCompressionSessionOptionsRef options,
                                                      CodecQ quality);

/// Lets the user set a codec's compressor in a dialog, which begins with the settings of
/// `*settings` unless that is null. They are replaced by what was chosen, in a new handle of the
/// caller's. -128 if the user cancels, -8962 for a codec without settings; they stay then.
SInt32 QT_GetImageCodecUserSett(OSType codecType, Handle* settings);
/// The same, from the compressor's own settings on; what was chosen is written as data of a
/// property list into the file "NAME settings.xml" of a folder, NAME being the codec's
/// (QT_GetComprFormatName). A file of that name is replaced.
SInt32 QT_WriteCodecUserSettToFile(OSType codecType, const FSRef* folder);
