/// Media copied, with sample data or by reference.
///
/// A span goes from `start` to before `end`, in media time units of decoding; an `end` of
/// 0x7FFFFFFF or behind the media means its end, and an empty span copies nothing, with status 0.
/// Samples that a span takes part of keep all their data and last as long as that part. What is
/// copied comes behind what the destination holds; no track's edits change. A media that gets data
/// has to be open for that by way of the file of its first data reference. Statuses are those of
/// the movie toolbox; an error leaves what was copied so far in the media.
#pragma once

#include "base_types.h"
#include "media_editing.h"
#include "movie_toolbox.h"

/// Copies the span's samples with their data, in one pair of BeginMediaEdits and EndMediaEdits.
SInt32 QT_CopyMedia(Media source, Media destination, SInt32 start, SInt32 end);
/// Also puts what was copied at the end of the destination's track and saves the movie in a file,
/// as QT_SaveMovie does.
SInt32 QT_CopyMediaWithUpdate(Media source, SInt32 start, SInt32 end, Movie movie,
                              const FSRef* file, Track track, Media destination, Boolean* saved);
/// The same from the first video track of a movie file.
SInt32 QT_CopyVideoFileToMedia(const FSRef* sourceFile, SInt32 start, SInt32 end, Movie movie,
                               const FSRef* file, Track track, Media destination, Boolean* saved);
/// The same to the end of the first video track of another movie file, after a wait of three
/// seconds in which events go on.
SInt32 QT_CopyVideoFileToMovieFile(const FSRef* sourceFile, SInt32 start, SInt32 end,
                                   const FSRef* destinationFile, Boolean* saved);
/// The same to a new movie file with a video track like the source's.
SInt32 QT_CopyVideoFileToNewFile(const FSRef* sourceFile, SInt32 start, SInt32 end,
                                 const FSRef* folder, CFStringRef name, FSRef* file);

/// Copies references to the span's samples. `map` gives the destination's index for each of the
/// source's data references (QT_CopyDataReferencesIfNeeded). The first form is for offsets of 31
/// bits, and gives paramErr for others.
SInt32 QT_CopyMediaByReference(Media source, Media destination, SInt32 start, SInt32 end,
                               const UInt16* map);
SInt32 QT_CopyMediaByReference64(Media source, Media destination, SInt32 start, SInt32 end,
                                 const UInt16* map);
/// The same for sound, whose samples aren't cut, into a media with the same data references in the
/// same order.
SInt32 QT_CopySoundMediaByReference64(SInt32 start, SInt32 end, Media source, Media destination);

/// Adds a reference to samples that lie together: `size` bytes in all.
SInt32 QT_AddMediaSampleReference64(Media media, SInt64 offset, UInt32 size, SInt32 duration,
                                    SampleDescriptionHandle description, SInt32 count, SInt16 flags,
                                    SInt32* sampleTime);
/// Adds a reference to the sample that plays at a time of another media, without its part before
/// that time. The data references are taken to be the same.
SInt32 QT_CopyMediaSampleReference(Media source, Media destination, SInt32 mediaTime,
                                   SInt32* sampleTime);

/// Copies all samples with their data in decode order. The procedure (may be null) is called with a
/// null movie: message 0 at the start, 1 with the fraction of bytes behind each batch, 2 at the
/// end; its result isn't looked at.
SInt32 QT_CopyMediaWithProgress(Media source, Media destination, MovieProgressProcPtr progress,
                                SInt64 refcon);
