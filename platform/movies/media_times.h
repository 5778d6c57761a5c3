/// Times and samples: which media time a track shows, which sample holds a media time, where the
/// next sample or edit begins, and where samples lie.
///
/// Track times are in the movie's time scale and count empty edits; media times in the media's own,
/// in the order of decoding. Samples count from 1. -1 stands for no time. Outputs may be null
/// unless said otherwise. Look-ups are binary searches in the sample table, or a step for each run
/// of like samples. Functions without a status leave it in GetMoviesError.
#pragma once

#include "base_types.h"
#include "movie_toolbox.h"

/// What runs a movie's time.
using TimeBase = MovieRecord*;
/// A time in a time scale.
struct TimeRecord {
  SInt64 value;
  TimeScale scale;
  TimeBase base;
};
TimeBase GetMovieTimeBase(Movie movie);

/// The first status other than 0 since the last ClearMoviesStickyError that a call of the thread
/// left in GetMoviesError.
OSErr GetMoviesStickyError();
void ClearMoviesStickyError();

// --- Tracks --------------------------------------------------------------------------------------

/// The media time that a track shows at a track time, rounded to the nearest unit; -1 in an empty
/// edit and beyond the edits.
TimeValue TrackTimeToMediaTime(TimeValue time, Track track);

/// The same in full width.
TimeValue64 TrackTimeToMediaDisplayTime(TimeValue64 time, Track track);

/// What the functions below look for; exactly one of the first five.
inline constexpr SInt16 nextTimeMediaSample = 1;  ///< a sample
/// A run of samples whose bytes follow each other in one file.
inline constexpr SInt16 nextTimeMediaEdit = 2;
inline constexpr SInt16 nextTimeTrackEdit = 4;    ///< an edit of the track, empty ones too
inline constexpr SInt16 nextTimeSyncSample = 8;   ///< a sample that needs no other
inline constexpr SInt16 nextTimeStep = 16;        ///< what a step shows: a sample
inline constexpr SInt16 nextTimeEdgeOK = 0x4000;  ///< what begins at the given time counts too

/// The first time behind `time` at which what the flags tell begins, or with a negative `rate` the
/// last one before it, and how long it lasts; -1 and 0 if there is none. Samples come in the order
/// in which they are shown. A sample begins at the first time that TrackTimeToMediaTime maps into
/// or behind it; one that an edit shows from its middle begins with the edit, and ends with it.
/// invalidTime for a negative time, paramErr for other flags or a `rate` of 0.
void GetTrackNextInterestingTime(Track track, SInt16 flags, TimeValue time, Fixed rate,
                                 TimeValue* interesting_time, TimeValue* duration);

/// The same over the enabled tracks of a movie whose media is of one of the types or has such a
/// characteristic (`eyes`, `ears`); all of them for no types. What begins in one track ends where
/// something begins in another.
void GetMovieNextInterestingTime(Movie movie, SInt16 flags, SInt16 type_count, const OSType* types,
                                 TimeValue time, Fixed rate, TimeValue* interesting_time,
                                 TimeValue* duration);

// --- Media ---------------------------------------------------------------------------------------

/// The same in a media, which has no track edits, in the order of decoding: samples and runs,
/// forward only.
void GetMediaNextInterestingTime(Media media, SInt16 flags, TimeValue time, Fixed rate,
                                 TimeValue* interesting_time, TimeValue* duration);

SInt32 GetMediaSampleCount(Media media);
/// The sample that holds a media time, its begin and its duration; 0, -1 and 0, with invalidTime,
/// for a time outside the media.
void MediaTimeToSampleNum(Media media, TimeValue time, SInt32* number, TimeValue* sample_time,
                          TimeValue* sample_duration);
/// The begin and duration of a sample; -1 and 0, with paramErr, if there is none of that number.
void SampleNumToMediaTime(Media media, SInt32 number, TimeValue* sample_time,
                          TimeValue* sample_duration);

/// The media's samples by display time: when the first one is shown, how long all are, and the sum
/// of all decode durations.
/// Whether samples are shown at other times than they are decoded at.
Boolean MediaContainsDisplayOffsets(Media media);
TimeValue64 GetMediaDisplayStartTime(Media media);
TimeValue64 GetMediaDisplayDuration(Media media);
TimeValue64 GetMediaDecodeDuration(Media media);
/// The begin and duration of a sample by display time; -1 and 0, with paramErr, if there is none of
/// that number.
void SampleNumToMediaDisplayTime(Media media, SInt32 number, TimeValue64* sample_time,
                                 TimeValue64* sample_duration);
/// GetTrackNextInterestingTime in a media by display time: samples, sync samples and steps.
void GetMediaNextInterestingDisplayTime(Media media, SInt16 flags, TimeValue64 time, Fixed rate,
                                        TimeValue64* interesting_time, TimeValue64* duration);
/// The next step of a media, by display time, from a time on; -1 if there is none.
OSErr MediaGetNextStepTime(MediaHandler handler, SInt16 flags, TimeValue time, TimeValue* next_time,
                           Fixed rate);
/// The bytes of all samples that begin to be shown within a span of display time.
OSErr GetMediaDataSizeTime64(Media media, TimeValue64 start, TimeValue64 duration, SInt64* size);

/// The bytes of all samples that `duration` units from `start` on touch; limited to the media.
OSErr GetMediaDataSize64(Media media, TimeValue start, TimeValue duration, SInt64* size);

#pragma pack(push, 2)
/// A run of like samples whose bytes follow each other.
struct SampleReference64Record {
  SInt64 dataOffset;  ///< in the file of the description's data reference, in bytes
  UInt32 dataSize;    ///< of all the samples, in bytes
  TimeValue durationPerSample;
  UInt32 numberOfSamples;
  SInt16 sampleFlags;  ///< mediaSampleNotSync, or 0
};
#pragma pack(pop)
static_assert(sizeof(SampleReference64Record) == 22);
inline constexpr SInt16 mediaSampleNotSync = 1;

/// References to the samples from that which holds `time` on: at most `most` records into
/// `references`, of one sample description. `sample_time` takes the begin of the first sample,
/// `description` (a handle of the caller's, or null) and `description_index` (from 1) the
/// description of all, `count` the number of records. invalidTime for a time outside the media.
OSErr GetMediaSampleReferences64(Media media, TimeValue time, TimeValue* sample_time,
                                 SampleDescriptionHandle description, SInt32* description_index,
                                 SInt32 most, SInt32* count, SampleReference64Record* references);
