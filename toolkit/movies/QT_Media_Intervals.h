/// Intervals of media time that tracks use, and the bytes of a file behind them.
///
/// Track times are in the movie's time scale, media times in the media's; -1 is none. A media
/// interval is an LL_Interval: `start` is its first media time, `end` the one after its last. Lists
/// are linked lists that the caller disposes of with LL_DisposeLinkedList. -108 for a list that
/// there is no memory for; it then ends early.
#pragma once

#include "LL_Linked_Lists.h"
#include "base_types.h"
#include "movie_toolbox.h"

/// One edit of a track.
struct QT_TrackEdit {
  QT_TrackEdit* next;
  SInt32 trackTime;      ///< its start, movie time units
  SInt32 trackDuration;  ///< movie time units
  SInt32 mediaTime;      ///< begin of its media interval; -1 for an empty edit
  SInt32 mediaDuration;
  Float64
      rate;  ///< media seconds in a second of the track; 65536.0 for less than a media time unit
};

/// Bytes of a media's data.
struct QT_FileInterval {
  QT_FileInterval* next;
  SInt16 dataRefIndex;  ///< the data reference that holds them, from 1
  SInt64 beginOffset;   ///< of the first byte
  SInt64 endOffset;     ///< behind the last byte
};

/// A list of media intervals with a number that is the caller's.
struct QT_IntervalListElement {
  QT_IntervalListElement* next;
  LL_Interval* intervals;
  SInt32 key;
};

// From edits to intervals.

/// The media interval that a piece of one edit uses: -1, -1 for an empty edit or a duration of 0.
/// Its edges fall on sample edges where they come within a track time unit of one. A piece of one
/// track time unit in a media coarser than the movie uses one media time unit.
void QT_TrackEditToMediaInterval(Track track, SInt32 trackTime, SInt32 trackDuration,
                                 LL_Interval* interval);
/// The intervals of the edits that start from `startTime` on and before `endTime`, one for each
/// that isn't empty, in their order. With `reduce` they are sorted, and united where they overlap
/// or touch; `hadOverlap` (may be null) then says if some media is used twice, else it is 0.
SInt32 QT_MakeMediaIntervalList(Track track, SInt32 startTime, SInt32 endTime, Boolean reduce,
                                LL_Interval** list, Boolean* hadOverlap);
/// The same by walking the samples that begin to show in that time: an interval runs from the
/// begin of the first sample of an edit to the end of its last one. `sampleCount` (may be null)
/// takes the number of samples shown.
SInt32 QT_MakeMediaIntervalListNew(Track track, SInt32 startTime, SInt32 endTime, Boolean reduce,
                                   LL_Interval** list, SInt32* sampleCount, Boolean* hadOverlap);
/// All edits of a track, empty ones too.
SInt32 QT_MakeTrackEditList(Track track, QT_TrackEdit** list);
/// Writes a list of lists as 32-bit numbers: how many lists, and for each its key, how many
/// intervals, and their starts and ends. `packed` has room for 1 + 2 (lists + intervals) numbers.
void QT_PackMediaIntervalLists(const QT_IntervalListElement* lists, SInt32* packed);
/// Gives `destination`, whose media holds the pieces of the source's media that `intervals` names
/// back to back, the edits of `source`. With `doubleTimes` it has twice as many time units. Edits
/// that the intervals don't hold are left out. The first error of the toolbox ends it.
SInt32 QT_CopyTrackEditsUsingMediaIntervalList(Track source, Track destination,
                                               const LL_Interval* intervals, Boolean doubleTimes);

// Samples and bytes.

/// One record of sample references, from the sample that holds `mediaTime` on: where it lies, its
/// bytes, the begin and duration of a sample, its description (`description` is a handle of the
/// caller's) and index from 1, how many samples, at most `mostSamples` unless that is 0, and their
/// flags. Any output may be null. On failure, size and count are 0 and the others not written.
SInt32 QT_GetMediaSampleReference64(Media media, SInt64* offset, SInt64* size, SInt32 mediaTime,
                                    SInt32* sampleTime, SInt32* duration,
                                    SampleDescriptionHandle description, SInt32* descriptionIndex,
                                    SInt32 mostSamples, SInt32* count, SInt16* flags);
/// The samples from `start` to before `end`: how many, the largest, smallest and mean size in
/// bytes, and the bytes of a media time unit. Outputs may be null. -50, with none written, unless
/// start is below end; -2011 for a media that doesn't get on.
SInt32 QT_GetMediaPartInfo(Media media, SInt32 start, SInt32 end, SInt32* sampleCount,
                           SInt64* largest, SInt64* smallest, Float32* meanSize,
                           Float32* bytesPerTimeUnit);
/// The bytes from the sample at `mediaTime` to the one at `mediaTime` + `duration` - 1, which are
/// to lie in one file in that order. The link stays.
SInt32 QT_FillInMediaInterval(Media media, SInt32 mediaTime, SInt32 duration,
                              QT_FileInterval* interval);
/// Orders two QT_FileInterval by data reference, begin and end: -1, 0 or 1.
SInt32 QT_MediaIntervalComparator(const void* a, const void* b);
/// Tells if parts of a media that are apart in media time use the same bytes of a file; with
/// `intervals`, which are to be in order, only what of the media lies in them counts.
SInt32 QT_MediaIntervalsOverlapIndirectly(Media media, const LL_Interval* intervals,
                                          Boolean* overlap);
/// The begin time from which the media up to `endTime` (0x7FFFFFFF: its end) has the size nearest
/// to `wantedSize` bytes, and that size; 0 if it has no more in all.
SInt32 QT_MediaPartSizeToBeginTime(Media media, UInt64 wantedSize, SInt32 endTime,
                                   SInt32* beginTime, UInt64* actualSize);
/// Bytes and samples of the media that a track uses in edits that start in a time; what edits use
/// twice counts once.
SInt32 QT_GetTrackUsedMediaSizeAndSampleCount(Track track, SInt32 startTime, SInt32 endTime,
                                              SInt64* size, SInt32* sampleCount);
/// The sums over a movie's tracks of a type, by the flags of GetMovieIndTrackType; with
/// `enabledOnly` of the enabled ones.
SInt32 QT_GetMovieUsedMediaSizeAndSampleCount(Movie movie, SInt32 startTime, SInt32 endTime,
                                              OSType trackType, SInt32 flags, Boolean enabledOnly,
                                              SInt64* size, SInt32* sampleCount);
