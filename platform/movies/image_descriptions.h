/// Image descriptions: the record of a video sample description, its extensions and its properties.
///
/// A description is a handle (see ImageDescriptionHandle in movie_toolbox.h). Extensions are atoms
/// behind the record; the operations give and take their content without the atom's header, as it
/// stands in the file. Extensions of one type count from 1. Bytes behind the last whole extension
/// stay where they are, behind what is added. paramErr for a null argument, badImageDescription for
/// a handle that is shorter than the record.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

/// The record itself, in native byte order.
#pragma pack(push, 2)
struct ImageDescription {
  SInt32 idSize;  ///< of all, extensions included
  OSType cType;
  SInt32 resvd1;
  SInt16 resvd2;
  SInt16 dataRefIndex;
  SInt16 version;
  SInt16 revisionLevel;
  OSType vendor;
  UInt32 temporalQuality;
  UInt32 spatialQuality;
  SInt16 width;
  SInt16 height;
  Fixed hRes;  ///< pixels per inch
  Fixed vRes;
  SInt32 dataSize;
  SInt16 frameCount;
  UInt8 name[32];  ///< Pascal string
  SInt16 depth;
  SInt16 clutID;
};
#pragma pack(pop)
static_assert(sizeof(ImageDescription) == 86);

inline constexpr OSErr codecExtensionNotFoundErr = -8971;

/// A copy of extension `index` of a type, as a new handle that the caller owns; it stays as it was
/// after a failure. codecExtensionNotFoundErr if there is none.
OSErr GetImageDescriptionExtension(ImageDescriptionHandle description, Handle* extension,
                                   OSType type, SInt32 index);
/// Adds a copy of the handle's bytes behind the other extensions.
OSErr AddImageDescriptionExtension(ImageDescriptionHandle description, Handle extension,
                                   OSType type);
OSErr RemoveImageDescriptionExtension(ImageDescriptionHandle description, OSType type,
                                      SInt32 index);
OSErr CountImageDescriptionExtensionType(ImageDescriptionHandle description, OSType type,
                                         SInt32* count);
/// Goes through the types that there are, each once, in the order of their first extensions: takes
/// the last one, 0 for the first, and gives the next one, 0 at the end.
OSErr GetNextImageDescriptionExtensionType(ImageDescriptionHandle description, OSType* type);

/// Reads or writes a property of class `idsc`; values are in native byte order:
///
/// | id | bytes | what |
/// |---|---|---|
/// | fiel, pasp, clap | 2, 8, 32 | the extension of that type |
/// | nclc | 10 | the colour parameters of a `colr` extension, `nclc` or ISO's `nclx` |
/// | gama | 4 | the extension, 16.16 |
/// | iccp | a pointer | a CFDataRef of the profile of a `colr` extension, the caller's when read |
/// | cgcs | a pointer | a CGColorSpaceRef of that, or of the parameters; the caller's; read only |
/// | rowb | 4 | bytes of a line, of uncompressed formats; read only |
/// | encw, ench | 4 | width and height in pixels |
///
/// `size_used` may be null. What isn't there gives codecExtensionNotFoundErr; paramErr for another
/// size, kQTPropertyNotSupportedErr for another class or id, for one that can't be written, and for
/// lines of formats whose length isn't known. A value that is set takes the place of all extensions
/// of its kind.
OSStatus ICMImageDescriptionGetProperty(ImageDescriptionHandle description, OSType property_class,
                                        OSType id, ByteCount size, void* value,
                                        ByteCount* size_used);
OSStatus ICMImageDescriptionSetProperty(ImageDescriptionHandle description, OSType property_class,
                                        OSType id, ByteCount size, const void* value);

/// Gives the handle a copy of the sample description at an index, from 1; the status is in
/// GetMoviesError: invalidMedia, paramErr, badImageDescription, memFullErr.
void GetMediaSampleDescription(Media media, SInt32 index, SampleDescriptionHandle description);
SInt32 GetMediaSampleDescriptionCount(Media media);
/// Replaces the sample description at an index. Its size field tells its size.
OSErr SetMediaSampleDescription(Media media, SInt32 index, SampleDescriptionHandle description);

/// What a codec tells of itself; noCodecErr for a type that isn't known.
inline constexpr OSErr noCodecErr = -8961;
struct CodecInfo {
  UInt8 typeName[32];  ///< Pascal string
  SInt16 version;
  SInt16 revisionLevel;
  OSType vendor;
};
OSErr GetCodecInfo(CodecInfo* info, OSType type);

/// A decompression in prospect: it keeps a copy of what it was begun for.
struct DecompressionSequence;
using ImageSequence = DecompressionSequence*;
OSErr DecompressSequenceBeginS(ImageSequence* sequence, ImageDescriptionHandle description);
/// Whether images of another description can go on in it: everything must be the same but data
/// reference, size and the name.
OSErr CDSequenceEquivalentImageDescription(ImageSequence sequence,
                                           ImageDescriptionHandle description, Boolean* equivalent);
/// Ends a sequence; null is allowed.
OSErr CDSequenceEnd(ImageSequence sequence);
