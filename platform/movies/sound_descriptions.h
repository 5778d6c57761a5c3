/// Sound descriptions: the record of a sound sample description and its properties.
///
/// A description is a handle in native byte order (SampleDescriptionHandle): the record of version
/// 0, what versions 1 and 2 add, then extension atoms as in the file.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

#pragma pack(push, 2)
/// The record that all versions begin with.
struct SoundDescription {
  SInt32 descSize;  ///< of all, extensions included
  OSType dataFormat;
  SInt32 resvd1;
  SInt16 resvd2;
  SInt16 dataRefIndex;
  SInt16 version;
  SInt16 revlevel;
  OSType vendor;
  SInt16 numChannels;
  SInt16 sampleSize;  ///< bits
  SInt16 compressionID;
  SInt16 packetSize;
  UInt32 sampleRate;  ///< 16.16 hertz
};
#pragma pack(pop)
static_assert(sizeof(SoundDescription) == 36);
using SoundDescriptionHandle = Handle;

/// A channel and where it is heard.
struct AudioChannelDescription {
  UInt32 mChannelLabel;
  UInt32 mChannelFlags;
  Float32 mCoordinates[3];
};
/// Which channels sound has: by a tag, by a bitmap, or by descriptions, of which there is room for
/// as many as `mNumberChannelDescriptions` says.
struct AudioChannelLayout {
  UInt32 mChannelLayoutTag;
  UInt32 mChannelBitmap;
  UInt32 mNumberChannelDescriptions;
  AudioChannelDescription mChannelDescriptions[1];
};
static_assert(sizeof(AudioChannelLayout) == 32);
inline constexpr std::size_t kAudioChannelLayoutHeaderSize = 12;

/// Reads or writes a property of class `audi`: `clay`, the channel layout in native byte order, 12
/// bytes and 20 for each description. `size_used` and `size` may be null.
/// kQTPropertyNotSupportedErr for others and for a description without a layout, paramErr for a
/// size that is too small or, when it is set, isn't the layout's, badImageDescription for a handle
/// shorter than its record.
OSStatus QTSoundDescriptionGetPropertyInfo(SoundDescriptionHandle description,
                                           OSType property_class, OSType property_id, OSType* type,
                                           ByteCount* size, UInt32* flags);
OSStatus QTSoundDescriptionGetProperty(SoundDescriptionHandle description, OSType property_class,
                                       OSType property_id, ByteCount size, void* value,
                                       ByteCount* size_used);
OSStatus QTSoundDescriptionSetProperty(SoundDescriptionHandle description, OSType property_class,
                                       OSType property_id, ByteCount size, const void* value);
