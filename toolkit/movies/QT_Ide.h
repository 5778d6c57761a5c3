/// The records of sample-description extensions: field order, pixel aspect, clean aperture and
/// colour parameters; their equality, texts and dictionaries, and what stands for colour parameters
/// that a file lacks.
///
/// Records are in native byte order; those of raw extensions are big-endian and go through the flip
/// operations, which are their own inverse. The layouts are those of the QuickTime file format,
/// chapter 3, and ISO/IEC 14496-12, 12.1.
#pragma once

#include "QT_Nclc.h"
#include "base_types.h"
#include "cf_values.h"

/// `fiel`. `fields`: 1 progressive, 2 interlaced, 0 not known. `detail`: 0 not applicable, 1 and 9
/// top field first, 6 and 14 bottom field first; 1 and 6 are those of the codecs mjpa and mjpb.
struct QT_Fiel {
  UInt8 fields;
  UInt8 detail;
};
/// `pasp`: a pixel is hSpacing over vSpacing times as wide as it is high.
struct QT_Pasp {
  UInt32 hSpacing;
  UInt32 vSpacing;
};
/// `clap`: size of the clean aperture in pixels, and how far its centre lies from the picture's to
/// the right and down.
struct QT_Clap {
  UInt32 cleanApertureWidthN;
  UInt32 cleanApertureWidthD;
  UInt32 cleanApertureHeightN;
  UInt32 cleanApertureHeightD;
  SInt32 horizOffN;
  UInt32 horizOffD;
  SInt32 vertOffN;
  UInt32 vertOffD;
};
static_assert(sizeof(QT_Fiel) == 2 && sizeof(QT_Pasp) == 8 && sizeof(QT_Clap) == 32);

void QT_FlipPasp(QT_Pasp* pasp);
void QT_FlipClap(QT_Clap* clap);
/// True if neither field is 0.
Boolean QT_ValidPasp(const QT_Pasp* pasp);

// Fields.

/// The detail of interlaced pictures for a codec.
void QT_SetFieldDetail(OSType codecType, Boolean topFirst, QT_Fiel* fiel);
/// The record of an interlace state: 1 interlaced, 0 progressive, any other not known.
void QT_InterlaceToFiel(OSType codecType, UInt8 interlaceState, Boolean topFirst, QT_Fiel* fiel);
/// `*topFirst` is 2 for a record that isn't interlaced.
void QT_GetInterlaceFromFiel(const QT_Fiel* fiel, Boolean* interlaced, UInt8* topFirst);

// Equality.

Boolean QT_EqualFiel(const QT_Fiel* a, const QT_Fiel* b);
/// As ratios; as they stand where one isn't valid.
Boolean QT_EqualPasp(const QT_Pasp* a, const QT_Pasp* b);
/// Whether both make a picture of that many pixels equally wide, in whole square pixels.
Boolean QT_EqualPasp2(SInt32 width, const QT_Pasp* a, const QT_Pasp* b);
/// As fractions.
Boolean QT_EqualClap(const QT_Clap* a, const QT_Clap* b);
/// All four values less than 0.1 apart.
Boolean QT_EqualClap2(const QT_Clap* a, const QT_Clap* b);
/// True for no gamma, 0, and for 1.8 to a thousandth, 16.16.
Boolean QT_GammaEqualsMacGamma(Fixed gamma);

// Texts: "LABEL: fields 2, detail 9" and so on, the first of a pair to standard output with a
// newline, the second into a buffer without one. The Ext forms tell what the fields mean, both with
// a newline; those of colour parameters have none. 200 bytes and the label are room enough.

void QT_PrintFielWithName(const char* label, const QT_Fiel* fiel);
void QT_SPrintFielWithName(char* buffer, const char* label, const QT_Fiel* fiel);
void QT_PrintFielWithNameExt(const char* label, const QT_Fiel* fiel);
void QT_SPrintFielWithNameExt(char* buffer, const char* label, const QT_Fiel* fiel);
void QT_PrintPaspWithName(const char* label, const QT_Pasp* pasp);
void QT_SPrintPaspWithName(char* buffer, const char* label, const QT_Pasp* pasp);
void QT_PrintClapWithName(const char* label, const QT_Clap* clap);
void QT_SPrintClapWithName(char* buffer, const char* label, const QT_Clap* clap);
void QT_PrintNclcWithName(const char* label, const QT_Nclc* nclc);
void QT_SPrintNclcWithName(char* buffer, const char* label, const QT_Nclc* nclc);
/// A labelled field of a report (GL_Strings_Reports.h).
void GL_AddPaspFieldDescrToTextPtr(char* buffer, SInt32* length, const char* label,
                                   const QT_Pasp* pasp);

// Dictionaries, the caller's. A missing key leaves its field as it was.

CFMutableDictionaryRef QT_CreateFielIdeExtDict(const QT_Fiel* fiel);
void QT_GetFielIdeExtFromDict(CFDictionaryRef dictionary, QT_Fiel* fiel);
CFMutableDictionaryRef QT_CreatePaspIdeExtDict(const QT_Pasp* pasp);
void QT_GetPaspIdeExtFromDict(CFDictionaryRef dictionary, QT_Pasp* pasp);
CFMutableDictionaryRef QT_CreateClapIdeExtDict(const QT_Clap* clap);
void QT_GetClapIdeExtFromDict(CFDictionaryRef dictionary, QT_Clap* clap);
CFMutableDictionaryRef QT_CreateNclcDict(const QT_Nclc* nclc);
/// The type is set, whatever the dictionary holds.
void QT_GetNclcExtFromDict(CFDictionaryRef dictionary, QT_Nclc* nclc);

/// Such a dictionary in another one: under "fiel" and "clap", or a key. Reading does nothing where
/// the key is missing.
void QT_AddFielToDict(CFMutableDictionaryRef dictionary, const QT_Fiel* fiel);
void QT_AddPaspToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const QT_Pasp* pasp);
void QT_AddClapToDict(CFMutableDictionaryRef dictionary, const QT_Clap* clap);
void QT_AddNclcToDict(CFMutableDictionaryRef dictionary, CFStringRef key, const QT_Nclc* nclc);
void QT_GetFielFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Fiel* fiel);
void QT_GetPaspFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Pasp* pasp);
void QT_GetClapFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Clap* clap);
void QT_GetNclcFromDict(CFDictionaryRef dictionary, CFStringRef key, QT_Nclc* nclc);

// Colour parameters that stand for those a file lacks.

/// By height in pixels, and where that doesn't tell, by what of 25 and 29.97 frames a second is
/// nearer.
void QT_CreateDefaultNclc(SInt32 height, double frameRate, QT_Nclc* nclc);
/// By codec, height and gamma.
void QT_GuessNclc(OSType codecType, SInt32 height, float gamma, QT_Nclc* nclc);
/// Settles each index that isn't specified by height and gamma.
void QT_ConformInNclc(QT_Nclc* nclc, SInt32 height, float gamma);
