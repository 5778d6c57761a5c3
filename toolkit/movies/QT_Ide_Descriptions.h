/// Sample descriptions of video (image_descriptions.h): their extensions by type, and the records
/// of QT_Ide.h in them.
///
/// Statuses are those of the platform calls; codecExtensionNotFoundErr (-8971) says that something
/// isn't there. Outputs then stay as they were where nothing else is told.
#pragma once

#include "QT_Ide.h"
#include "base_types.h"
#include "graphics_ports.h"
#include "image_descriptions.h"
#include "images.h"
#include "movie_toolbox.h"

// Extensions.

/// How many different types there are.
SInt32 QT_CountImageDescExtTypes(ImageDescriptionHandle description, SInt32* count);
/// Puts an extension in the place of all of its type.
SInt32 QT_AddSingleImageDescExtension(ImageDescriptionHandle description, OSType type,
                                      Handle extension);
/// Copies the first extension of a type in this way. A source without it changes nothing.
SInt32 QT_CopySingleImageDescExtOfType(OSType type, ImageDescriptionHandle source,
                                       ImageDescriptionHandle destination);
SInt32 QT_HasImageDescExtOfType(OSType type, ImageDescriptionHandle description, Boolean* has);
/// Copies all extensions: with `replace` each takes the place of one of its type as long as there
/// are any; else those of a type are left out for which the destination has as many already.
SInt32 QT_CopyAllImageDescExts(ImageDescriptionHandle source, ImageDescriptionHandle destination,
                               Boolean replace);
/// Puts an extension at an index, from 1, of its type; one more than there are appends. Those
/// behind it must be of the new one's size.
SInt32 QT_SetIndexedImageDescExtension(ImageDescriptionHandle description, OSType type,
                                       SInt32 index, Handle extension);
/// Stores second minus first in each field of the difference that isn't 0 in the mask; of the name,
/// 1 in its first byte if the names are equal. With `compareExtensions` the difference gets a
/// cleared extension of 4 bytes for each extension that differs: of the listed types, or of all
/// for none.
SInt32 QT_EqualImageDescs(ImageDescriptionHandle first, ImageDescriptionHandle second,
                          ImageDescriptionHandle mask, Boolean compareExtensions, SInt32 typeCount,
                          const OSType* types, ImageDescriptionHandle difference);
/// Whether the pictures of all descriptions of a media can go through one decompression. The port
/// is where they would be drawn, null for anywhere.
SInt32 QT_AreAllImageDescsEquivalent(Media media, CGrafPtr port, Boolean* equivalent);

// Records in a description.

SInt32 QT_GetFielFromImageDesc(ImageDescriptionHandle description, QT_Fiel* fiel);
SInt32 QT_SetFielInImageDesc(ImageDescriptionHandle description, const QT_Fiel* fiel);
SInt32 QT_GetPaspFromImageDesc(ImageDescriptionHandle description, QT_Pasp* pasp);
SInt32 QT_SetPaspInImageDesc(ImageDescriptionHandle description, const QT_Pasp* pasp);
SInt32 QT_GetClapFromImageDesc(ImageDescriptionHandle description, QT_Clap* clap);
SInt32 QT_SetClapInImageDesc(ImageDescriptionHandle description, const QT_Clap* clap);
/// A description without colour parameters gives a cleared record and no error.
SInt32 QT_GetNclcFromImageDesc(ImageDescriptionHandle description, QT_Nclc* nclc);
SInt32 QT_SetNclcInImageDesc(ImageDescriptionHandle description, const QT_Nclc* nclc);
/// The profile is the caller's.
SInt32 QT_GetIccProfileFromImageDesc(ImageDescriptionHandle description, CFDataRef* profile);
SInt32 QT_SetIccProfileInImageDesc(ImageDescriptionHandle description, CFDataRef profile);
SInt32 QT_GetGammaFromImageDesc(ImageDescriptionHandle description, float* gamma);
SInt32 QT_SetGammaInImageDesc(ImageDescriptionHandle description, float gamma);
SInt32 QT_GetHeightFromImagDesc(ImageDescriptionHandle description, SInt32* height);
SInt32 QT_GetWidthFromImagDesc(ImageDescriptionHandle description, SInt32* width);
/// `*exists` is false, without error, where the bytes of a line aren't known.
SInt32 QT_GetImageDescRowbytes(ImageDescriptionHandle description, Boolean* exists,
                               SInt32* rowBytes);
/// A colour space that the caller owns, null on a failure.
SInt32 QT_CreateColorSpaceForImageDesc(ImageDescriptionHandle description, CGColorSpaceRef* space);
SInt32 QT_CreateColorSpaceForNclc(const QT_Nclc* nclc, CGColorSpaceRef* space);
/// Whether there are colour parameters whose transfer function is specified; false for null.
SInt32 QT_HasGamm22inNclc(ImageDescriptionHandle description, Boolean* has);

// Records in the sample description of a media at an index, from 1, or the first. What isn't there
// gives false, a cleared record and no error.

SInt32 QT_GetIndexedFielFromMedia(Media media, SInt32 index, Boolean* has, QT_Fiel* fiel);
SInt32 QT_GetFielFromMedia(Media media, Boolean* has, QT_Fiel* fiel);
SInt32 QT_GetIndexedPaspFromMedia(Media media, SInt32 index, Boolean* has, QT_Pasp* pasp);
SInt32 QT_GetPaspFromMedia(Media media, Boolean* has, QT_Pasp* pasp);
SInt32 QT_GetIndexedClapFromMedia(Media media, SInt32 index, Boolean* has, QT_Clap* clap);
SInt32 QT_GetClapFromMedia(Media media, Boolean* has, QT_Clap* clap);
SInt32 QT_GetIndexedGammaFromMedia(Media media, SInt32 index, Boolean* has, float* gamma);
SInt32 QT_GetGammaFromMedia(Media media, Boolean* has, float* gamma);
/// A profile, the caller's, comes before colour parameters.
SInt32 QT_GetIndexedColrFromMedia(Media media, SInt32 index, Boolean* has, Boolean* isNclc,
                                  QT_Nclc* nclc, CFDataRef* profile);
SInt32 QT_GetColrFromMedia(Media media, Boolean* has, Boolean* isNclc, QT_Nclc* nclc,
                           CFDataRef* profile);
/// Of the first description: whether pictures have two fields, and if the top one is first, 2 where
/// that doesn't apply (QT_GetInterlaceFromFiel).
SInt32 QT_GetFielDataFromMedia(Media media, Boolean* has, Boolean* interlaced, UInt8* topFirst);

// New descriptions, which the caller owns; 72 pixels an inch, one frame.

/// What a codec is set to.
struct SCSpatialSettings {
  OSType codecType;
  void* codec;
  SInt16 depth;
  UInt32 spatialQuality;
};
/// `2vuy` sets depth and quality of the settings to 0 and 1023. noCodecErr for another codec that
/// isn't known.
SInt32 QT_MakeImageDescription(SCSpatialSettings* settings, SInt16 width, SInt16 height,
                               SInt32 dataSize, ImageDescriptionHandle* description);
SInt32 QT_MakeYuv2ImageDescription(SInt16 width, SInt16 height,
                                   ImageDescriptionHandle* description);
