/// Samples of media: fetched, and added with their data or by reference; and the data references
/// that samples lie in.
///
/// Data of added samples goes behind what the file of the media's first data reference holds,
/// between BeginMediaEdits and EndMediaEdits; until then what is added may not be readable. Times
/// are in media time units: decode times, to which a display offset is added. Runs are samples that
/// are alike in size, duration, display offset, flags and description and lie one behind the other.
/// Samples and descriptions count from 1. Outputs may be null unless said otherwise. Statuses are
/// those of the movies and files families.
#pragma once

#include "media_times.h"
#include "movie_toolbox.h"

// --- Adding --------------------------------------------------------------------------------------

/// Opens the file that data goes to; nests. invalidDataRef if there is no such file.
OSErr BeginMediaEdits(Media media);
/// Writes out what is still in memory. badMediaEdits without BeginMediaEdits.
OSErr EndMediaEdits(Media media);
inline constexpr OSErr noMediaEdits = -2034;  ///< data was added outside of edits

/// Adds samples that are alike with their data: `size` bytes in all from `offset` of a handle, or
/// from a pointer. The first's begin goes to `sample_time`. The description is copied, its data
/// reference index set. invalidDuration for a duration below 1, paramErr where the bytes aren't
/// those of so many samples of one size.
OSErr AddMediaSample(Media media, Handle data, SInt64 offset, ByteCount size,
                     TimeValue duration_per_sample, SampleDescriptionHandle description,
                     SInt32 sample_count, SInt16 sample_flags, TimeValue* sample_time);
OSErr AddMediaSample2(Media media, const UInt8* data, ByteCount size,
                      TimeValue64 duration_per_sample, TimeValue64 display_offset,
                      SampleDescriptionHandle description, ItemCount sample_count,
                      UInt32 sample_flags, TimeValue64* sample_time);

/// Adds samples that lie in the file of the description's data reference, index 1 unless it names
/// another one that the media has: `size` bytes in all at `offset`.
OSErr AddMediaSampleReference(Media media, SInt64 offset, UInt32 size,
                              TimeValue duration_per_sample, SampleDescriptionHandle description,
                              SInt32 sample_count, SInt16 sample_flags, TimeValue* sample_time);
#pragma pack(push, 2)
/// SampleReference64Record with an offset of 32 bits.
struct SampleReferenceRecord {
  SInt32 dataOffset;
  UInt32 dataSize;
  TimeValue durationPerSample;
  UInt32 numberOfSamples;
  SInt16 sampleFlags;
};
#pragma pack(pop)
static_assert(sizeof(SampleReferenceRecord) == 18);
/// The same for runs. The second takes a display offset for each; null for none.
OSErr AddMediaSampleReferences(Media media, SampleDescriptionHandle description, SInt32 count,
                               const SampleReferenceRecord* references, TimeValue* sample_time);
OSErr AddMediaSampleReferences64(Media media, SampleDescriptionHandle description, SInt32 count,
                                 const SampleReference64Record* references, TimeValue* sample_time);
OSErr AddMediaSampleRuns(Media media, SampleDescriptionHandle description, SInt32 count,
                         const SampleReference64Record* references, const SInt32* display_offsets,
                         TimeValue* sample_time);

// --- Fetching ------------------------------------------------------------------------------------

inline constexpr OSErr maxSizeToGrowTooSmall = -2027;

/// The samples from that which holds `time` on, at most `most_samples` and `largest_size` bytes; 0
/// for either leaves it to the media. The handle gets the bytes and their size. A sample larger
/// than `largest_size` gives maxSizeToGrowTooSmall.
OSErr GetMediaSample(Media media, Handle data, ByteCount largest_size, ByteCount* size,
                     TimeValue time, TimeValue* sample_time, TimeValue* duration_per_sample,
                     SampleDescriptionHandle description, SInt32* description_index,
                     SInt32 most_samples, SInt32* sample_count, SInt16* sample_flags);
/// The same by decode time into `room` bytes. Where they are too few, `size` and `sample_count` are
/// those wanted, with maxSizeToGrowTooSmall.
OSErr GetMediaSample2(Media media, UInt8* data, ByteCount room, ByteCount* size, TimeValue64 time,
                      TimeValue64* sample_time, TimeValue64* duration_per_sample,
                      TimeValue64* display_offset, SampleDescriptionHandle description,
                      ItemCount* description_index, ItemCount most_samples, ItemCount* sample_count,
                      UInt32* sample_flags);
/// Where such samples lie; 0 asks for as many as lie together.
OSErr GetMediaSampleReference(Media media, SInt64* offset, ByteCount* size, TimeValue time,
                              TimeValue* sample_time, TimeValue* duration_per_sample,
                              SampleDescriptionHandle description, SInt32* description_index,
                              SInt32 most_samples, SInt32* sample_count, SInt16* sample_flags);
/// GetMediaSampleReferences64 (media_times.h) with offsets of 32 bits, paramErr for larger ones;
/// and with the runs' display offsets.
OSErr GetMediaSampleReferences(Media media, TimeValue time, TimeValue* sample_time,
                               SampleDescriptionHandle description, SInt32* description_index,
                               SInt32 most, SInt32* count, SampleReferenceRecord* references);
OSErr GetMediaSampleRuns(Media media, TimeValue time, TimeValue* sample_time,
                         SampleDescriptionHandle description, SInt32* description_index,
                         SInt32 most, SInt32* count, SampleReference64Record* references,
                         SInt32* display_offsets);
/// How many bytes of media data are best read and written together.
OSErr GetMediaPreferredChunkSize(Media media, SInt32* size);

// --- Data references -----------------------------------------------------------------------------

/// Attributes of a data reference.
inline constexpr SInt32 dataRefSelfReference = 1;   ///< the movie's own file
inline constexpr SInt32 dataRefWasNotResolved = 2;  ///< there is no such file within reach

OSErr GetMediaDataRefCount(Media media, SInt16* count);
/// A copy of a data reference, a handle of the caller's, with its type; that of the movie's own
/// file is an alias of it. invalidDataRef for an index outside.
OSErr GetMediaDataRef(Media media, SInt16 index, Handle* data_reference, OSType* type,
                      SInt32* attributes);
/// Adds a copy of a data reference, of type `alis`, or `url ` to a file, behind those there are.
OSErr AddMediaDataRef(Media media, SInt16* index, Handle data_reference, OSType type);
/// A data reference (type `alis`) to a file.
OSErr QTNewDataReferenceFromFSRef(const FSRef* file, UInt32 flags, Handle* data_reference,
                                  OSType* type);
