/// Colour profiles as simple colour spaces: reading displays and profiles.
///
/// Statuses are those of color_profiles.h unless told otherwise; a failure leaves an output as it
/// was told or as it was. Elements are checked against their sizes: one that is too short for what
/// it says gives cmProfileError.
#pragma once

#include "CO_Color_Conversions.h"
#include "base_types.h"
#include "color_profiles.h"

/// Opens the main display's profile, and one in a file by its POSIX path; the caller closes it.
SInt32 CM_GetMainProfile(CMProfileRef* profile);
SInt32 CM_OpenProfileByPath(CMProfileRef* profile, const char* path);

/// The bytes of the red tone curve and of the red parametric curve ("rTRC", "aarg").
SInt32 CM_GetProfilePcsGammaTrcTagSize(CMProfileRef profile, UInt32* size);
SInt32 CM_GetProfileGammaParaTagSize(CMProfileRef profile, UInt32* size);
/// Reads a tone curve of at most `size` bytes through `buffer`: a power, or a table of `*count`
/// entries from 0.0 to 1.0 with `*gamma` 0.0. The table comes from malloc and is the caller's, null
/// for a power. A curve without entries is the power 1.0.
SInt32 CM_GetProfilePcsGammaTrcComponent(CMProfileRef profile, UInt32 size, OSType tag,
                                         void* buffer, float* gamma, UInt32* count, float** table);
/// Reads a parametric curve in the same way: its type and the parameters g, a, b, c, d, e, f
/// (ICC.1:2010, 10.16) that the type has, the others 0.
SInt32 CM_GetProfileGammaParaComponent(CMProfileRef profile, UInt32 size, OSType tag, void* buffer,
                                       UInt32* type, float* parameters);
/// The curves of red, green and blue. Elements that are not there leave powers and tables, or the
/// parametric words, 0. The tables are the caller's, to be given back with CM_FreeGammaTables.
SInt32 CM_GetProfilePcsGamma(CMProfileRef profile, GammaData* gamma);
/// Frees the tables of three channels.
void CM_FreeGammaTables(GammaData* gamma);

/// A colorant's XYZ ("rXYZ" ...) through a buffer of `size` bytes, and the three as columns.
SInt32 CM_GetProfilePcsMatrixColumn(CMProfileRef profile, OSType tag, UInt32 size, void* buffer,
                                    float* xyz);
SInt32 CM_GetProfilePcsMatrix(CMProfileRef profile, float* matrix);
/// x and y of full red, green and blue together.
SInt32 CM_GetProfilePcsWhitePt(CMProfileRef profile, float* x, float* y);
/// Curves, matrix and white, and those of the main display; the first error ends it. The caller
/// frees the tables.
SInt32 CM_GetProfilePcsColor(CMProfileRef profile, SimpleColorSpaceParams* color);
SInt32 CM_GetMonitorPCS(SimpleColorSpaceParams* color);

/// What a display's profile says of the display itself: the element "ndin" behind its first 8
/// bytes, twelve big-endian words in 16.16.
struct CM_NativeDisplayInfo {
  UInt32 reserved;
  UInt32 red[2];  ///< x, y
  UInt32 green[2];
  UInt32 blue[2];
  UInt32 white[2];
  UInt32 gamma[3];  ///< of red, green, blue
};
static_assert(sizeof(CM_NativeDisplayInfo) == 48);
/// A new block, which the caller gives back with free; null on a failure.
SInt32 CM_GetProfileNativeDisplayInfo(CMProfileRef profile, CM_NativeDisplayInfo** info);
void CM_NativeDisplayInfoToColor(const CM_NativeDisplayInfo* info, SimpleColorSpaceParams* color);
void CM_ColorToNativeDisplayInfo(const SimpleColorSpaceParams* color, CM_NativeDisplayInfo* info);
/// The main display's. Where its profile does not tell, the red gamma is 0.0 and the status
/// cmElementTagNotFound.
SInt32 CM_GetMonitorNativeColor(SimpleColorSpaceParams* color);
/// The same for such a display: gamma 2.2, D65, and the profile's colorants adapted to that from
/// D50 by Bradford's cone responses.
SInt32 CM_GetDefaultMonitorNativeColor(SimpleColorSpaceParams* color);
/// The colorants of the native display, of the default one if the profile does not tell, as
/// columns.
SInt32 CM_GetMonitorPrimariesAsXYZ(double* matrix);
/// The power of the main display's red tone curve: 0.0 for a table, 1.8 if it can't be read.
SInt32 CM_GetSystemGamma(float* gamma);
