/// Statistics of media and their samples.
///
/// Media times are in decode order. Samples and descriptions count from 1. Statuses are those of
/// the movie toolbox; the first error ends a walk and is the result.
#pragma once

#include "base_types.h"
#include "media_editing.h"
#include "movie_toolbox.h"

/// What a media's samples have in common, each output as far as it is wanted (not null): the
/// smallest and the largest sample in bytes (0x7FFFFFFF and 0 for none; the first one stands for
/// all where the media has one description, of a codec of fixed size), whether a sample needs
/// others, the duration of all (0 if they differ, -1 for none), and whether a duration is odd.
SInt32 QT_AnalyzeMedia(Media media, SInt32* smallest, SInt32* largest, Boolean* hasDependent,
                       SInt32* commonDuration, Boolean* hasOddDuration);
/// The largest sample in bytes.
SInt32 QT_GetMediaMaxSampleSize(Media media, SInt32* size);
/// Whether all samples last as long as the first.
SInt32 QT_GetMediaConstantSampleDuration(Media media, Boolean* isConstant);
/// Whether a sample needs others to be decoded.
SInt32 QT_IsMediaTemporallyCompressed(Media media, Boolean* isCompressed);
/// The duration of the first sample, a 64-bit number by display time or a 32-bit one: `duration`
/// is an SInt64 or an SInt32.
SInt32 QT_GetFirstMediaDuration(Media media, Boolean wide, void* duration);
/// The duration that all samples are shown for; 0 if they differ.
SInt32 QT_AllMediaDurationsEqual(Media media, SInt64* duration);
/// Whether a sample is shown for an odd number of units.
SInt32 QT_MediaHasOddDurations(Media media, Boolean* hasOdd);

/// The sample of a number, or, where the number is null or there is no such sample, the one that
/// holds a media time; -50 for a time outside the media. Outputs other than the number may be null;
/// the description is a new handle of the caller's. On failure numbers and offset are -1 and the
/// others 0.
SInt32 QT_GetSampleInfo(Media media, SInt32* sampleNumber, SInt32 mediaTime, SInt32* sampleTime,
                        SInt16* flags, SampleDescriptionHandle* description,
                        SInt32* descriptionIndex, SInt32* dataRefIndex, SInt32* size,
                        SInt64* offset);
/// The bytes of the sample that a track shows at a time.
SInt32 QT_GetSampleSize(Track track, SInt32 trackTime, SInt32* size);
/// Whether the samples, along track time, lie one behind the other in their file.
Boolean QT_IsDataOffsetMonotonousWithTrackTime(Track track);

/// Samples and bytes of the media of all tracks of a type.
SInt32 QT_GetMovieMediaTypeSampleCountAndSize(Movie movie, OSType mediaType, SInt32* count,
                                              SInt64* size);
/// Bytes of the media of all visual and aural tracks; sound that is part of digital video (`vdva`)
/// doesn't count.
SInt32 QT_GetMovieTotalMediaSize64(Movie movie, SInt64* size);
