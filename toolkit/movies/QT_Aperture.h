/// Apertures: what pixel aspect and clean aperture make of a picture, and the records for given
/// rectangles and dimensions.
///
/// Sizes and rectangles of encoded pixels are 16.16 or whole pixels; offsets of a clean aperture
/// count from the picture's centre. Fractions stay exact where the records have room. A record with
/// a denominator of 0 counts as none.
#pragma once

#include "GL_Math_Ratios.h"
#include "QT_Ide.h"
#include "base_types.h"
#include "movie_toolbox.h"

/// The clean part of a picture, all of it without `clap`, stretched by `pasp` (null for square
/// pixels) to the right, or, with `scaleHorizontally` false, downward. What ends beyond 32767 is
/// shrunk as a whole. Each output may be null: `rect` is rounded, left and right to the nearest
/// pixel (halves away from 0), top and bottom by adding a half and cutting.
void QT_GetScaledClip(Fixed width, Fixed height, const QT_Pasp* pasp, const QT_Clap* clap,
                      Rect* rect, FixedRect* fixedRect, Boolean scaleHorizontally);
/// The clean part at its aspect; the whole picture at its aspect, the production aperture; and the
/// clean part in encoded pixels, at the rectangle's place.
void QT_CalcFixedApertureRects(const Rect* rect, const QT_Pasp* pasp, const QT_Clap* clap,
                               FixedRect* clean, FixedRect* production, FixedRect* encodedClean);

/// Reduces each of the fractions; null is allowed, and 0/0 stays.
void QT_ReducePaspAndClap(QT_Pasp* pasp, QT_Clap* clap);
/// The clean aperture that makes `clip` of a frame, reduced.
void QT_FixedClipToClap(const FixedRect* frame, const FixedRect* clip, QT_Clap* clap);
void QT_ClipToClap(const Rect* frame, const Rect* clip, QT_Clap* clap);
/// One of the whole picture.
void QT_InitDefaultClap(Fixed width, Fixed height, QT_Clap* clap);
/// Its four values; true if all are exact.
Boolean QT_ClapExtToLongRatio(const QT_Clap* clap, LongRatio* width, LongRatio* height,
                              LongRatio* horizontalOffset, LongRatio* verticalOffset);
/// Whether it takes anything of a picture away.
Boolean QT_ClapHasEffect(const QT_Clap* clap, SInt32 height, SInt32 width);

/// Scales it with a picture of that size, by 16.16 factors.
void QT_ScaleClap(Fixed width, Fixed height, Fixed scaleX, Fixed scaleY, QT_Clap* clap);
/// What it, or a pixel aspect, is when a picture is scaled from one rectangle to another.
void QT_TransformClap(const QT_Clap* clap, const Rect* from, const Rect* to, QT_Clap* out);
void QT_TransformPasp(const QT_Pasp* pasp, const Rect* from, const Rect* to, QT_Pasp* out);
/// The pixel aspect that makes the production dimensions of the encoded ones.
void QT_GeneratePasp(const FixedPoint* encoded, const FixedPoint* production, QT_Pasp* pasp);

/// Both records of the dimensions of the production, the clean and the encoded picture, the clean
/// one in the middle.
void QT_GeneratePaspAndClapFromApertureDims(const FixedPoint* production, const FixedPoint* clean,
                                            const FixedPoint* encoded, QT_Clap* clap,
                                            QT_Pasp* pasp);

/// Gives the clean apertures of two formats, PAL at 59:54 and 1280 by 1080 at 3:2, that are as near
/// as arithmetic in 16.16 comes, their exact values.
void QT_SnapClap(const Rect* rect, const QT_Pasp* pasp, QT_Clap* clap);
/// Scales the pixel aspect or the clean aperture of a description so that horizontal spacing times
/// the numerator of the clean width stays below 2^31, for those who multiply them in 32 bits. A
/// description that lacks either stays as it is.
SInt32 QT_CheckPaspAndClapForOverflow(ImageDescriptionHandle description);
