#include "QT_Media_Statistics.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "GL_Memory.h"
#include "QT_Codec_Families.h"
#include "descriptions_private.h"
#include "image_descriptions.h"
#include "interval_walks_private.h"
#include "media_times.h"
#include "memory_handles.h"
#include "reference_counted.h"
#include "track_walks_private.h"

using namespace quillmere;

namespace {

constexpr SInt32 kBatch = 100;

/// Calls `visit(run)` for the runs of like samples of a media until it gives false.
template <class Visit>
SInt32 WalkRuns(Media media, Visit visit) {
  SampleReference64Record runs[kBatch];
  const SInt32 end = GetMediaDuration(media);
  if (media == nullptr) return invalidMedia;
  for (SInt64 time = 0; time < end;) {
    SInt32 count = 0;
    const SInt32 status = GetMediaSampleReferences64(media, static_cast<SInt32>(time), nullptr,
                                                     nullptr, nullptr, kBatch, &count, runs);
    // A header may tell of more than there are samples.
    if (status) return status == invalidTime && time > 0 ? SInt32{noErr} : status;
    const SInt64 before = time;
    for (SInt32 i = 0; i < count; ++i) {
      if (!visit(runs[i])) return noErr;
      time += SInt64{runs[i].durationPerSample} * runs[i].numberOfSamples;
    }
    if (time == before) return invalidSampleTable;
  }
  return noErr;
}

SInt32 SizeOfEach(const SampleReference64Record& run) {
  const UInt32 samples = run.numberOfSamples;  // fields of a packed record have no references
  return static_cast<SInt32>(std::min(run.dataSize / std::max(samples, 1U), 0x7FFFFFFFU));
}

bool HasFixedSize(Media media) {
  return GetMediaSampleDescriptionCount(media) == 1 && QT_IsFixedSizeCompressor(FormatOf(media, 1));
}

/// The outputs of an analysis, and which of them aren't settled yet.
class Analysis {
 public:
  Analysis(SInt32* smallest, SInt32* largest, Boolean* dependent, SInt32* duration, Boolean* odd)
      : smallest_(smallest),
        largest_(largest),
        dependent_(dependent),
        duration_(duration),
        odd_(odd) {
    if (smallest != nullptr) *smallest = 0x7FFFFFFF;
    if (largest != nullptr) *largest = 0;
    if (dependent != nullptr) *dependent = 0;
    if (duration != nullptr) *duration = -1;
    if (odd != nullptr) *odd = 0;
  }
  bool WantsSizes() const { return smallest_ != nullptr || largest_ != nullptr; }
  /// False when all is settled.
  bool Take(const SampleReference64Record& run, bool isFixedSize) {
    TakeSize(SizeOfEach(run), isFixedSize);
    if (dependent_ != nullptr && (run.sampleFlags & mediaSampleNotSync) != 0) {
      *dependent_ = 1;
      dependent_ = nullptr;
    }
    if (duration_ != nullptr && *duration_ != run.durationPerSample) {
      const bool isFirst = *duration_ == -1;
      *duration_ = isFirst ? run.durationPerSample : 0;
      if (!isFirst) duration_ = nullptr;
    }
    if (odd_ != nullptr && run.durationPerSample % 2 != 0) {
      *odd_ = 1;
      odd_ = nullptr;
    }
    return WantsSizes() || dependent_ != nullptr || duration_ != nullptr || odd_ != nullptr;
  }

 private:
  void TakeSize(SInt32 size, bool isFixedSize) {
    if (smallest_ != nullptr) *smallest_ = std::min(*smallest_, size);
    if (largest_ != nullptr) *largest_ = std::max(*largest_, size);
    if (isFixedSize) smallest_ = largest_ = nullptr;
  }

  SInt32* smallest_;
  SInt32* largest_;
  Boolean* dependent_;
  SInt32* duration_;
  Boolean* odd_;
};

/// Calls `visit(duration)` for the durations for which samples of a media are shown, those of like
/// samples once, until it gives false.
template <class Visit>
SInt32 WalkShownDurations(Media media, Visit visit) {
  if (media == nullptr) return invalidMedia;
  if (!MediaContainsDisplayOffsets(media)) {
    return WalkRuns(media, [&visit](const SampleReference64Record& run) {
      return visit(SInt64{run.durationPerSample});
    });
  }
  SInt64 time = GetMediaDisplayStartTime(media);
  SInt64 duration = 0;
  for (SInt16 flags = nextTimeMediaSample | nextTimeEdgeOK;; flags = nextTimeStep) {
    GetMediaNextInterestingDisplayTime(media, flags, time, kForwards, &time, &duration);
    if (GetMoviesError()) return GetMoviesError();
    if (time == -1 || !visit(duration)) return noErr;
  }
}

/// The bytes of what a media shows, but not more than it lasts by its header.
SInt32 ShownSize(Media media, bool tryFromZero, SInt64* size) {
  const SInt64 duration = std::min<SInt64>(GetMediaDisplayDuration(media), GetMediaDuration(media));
  const SInt32 status =
      GetMediaDataSizeTime64(media, GetMediaDisplayStartTime(media), duration, size);
  if (!status || !tryFromZero) return status;
  return GetMediaDataSizeTime64(media, 0, duration, size);
}

}  // namespace

SInt32 QT_AnalyzeMedia(Media media, SInt32* smallest, SInt32* largest, Boolean* hasDependent,
                       SInt32* commonDuration, Boolean* hasOddDuration) {
  Analysis analysis(smallest, largest, hasDependent, commonDuration, hasOddDuration);
  const bool isFixedSize = analysis.WantsSizes() && media != nullptr && HasFixedSize(media);
  return WalkRuns(
      media, [&](const SampleReference64Record& run) { return analysis.Take(run, isFixedSize); });
}

SInt32 QT_GetMediaMaxSampleSize(Media media, SInt32* size) {
  *size = 0;
  return WalkRuns(media, [size](const SampleReference64Record& run) {
    *size = std::max(*size, SizeOfEach(run));
    return true;
  });
}

SInt32 QT_GetMediaConstantSampleDuration(Media media, Boolean* isConstant) {
  *isConstant = 1;
  SInt32 first = -1;
  return WalkRuns(media, [&](const SampleReference64Record& run) {
    if (first == -1) first = run.durationPerSample;
    *isConstant = run.durationPerSample == first;
    return *isConstant != 0;
  });
}

SInt32 QT_IsMediaTemporallyCompressed(Media media, Boolean* isCompressed) {
  *isCompressed = 0;
  return WalkRuns(media, [isCompressed](const SampleReference64Record& run) {
    *isCompressed = (run.sampleFlags & mediaSampleNotSync) != 0;
    return *isCompressed == 0;
  });
}

SInt32 QT_GetFirstMediaDuration(Media media, Boolean wide, void* duration) {
  if (wide) {
    SampleNumToMediaDisplayTime(media, 1, nullptr, static_cast<SInt64*>(duration));
  } else {
    SampleNumToMediaTime(media, 1, nullptr, static_cast<SInt32*>(duration));
  }
  return GetMoviesError();
}

SInt32 QT_AllMediaDurationsEqual(Media media, SInt64* duration) {
  *duration = 0;
  bool isFirst = true;
  return WalkShownDurations(media, [&](SInt64 each) {
    const bool isEqual = std::exchange(isFirst, false) || each == *duration;
    *duration = isEqual ? each : 0;
    return isEqual;
  });
}

SInt32 QT_MediaHasOddDurations(Media media, Boolean* hasOdd) {
  *hasOdd = 0;
  return WalkShownDurations(media, [hasOdd](SInt64 duration) {
    *hasOdd = duration % 2 != 0;
    return *hasOdd == 0;
  });
}

SInt32 QT_GetSampleInfo(Media media, SInt32* sampleNumber, SInt32 mediaTime, SInt32* sampleTime,
                        SInt16* flags, SampleDescriptionHandle* description,
                        SInt32* descriptionIndex, SInt32* dataRefIndex, SInt32* size,
                        SInt64* offset) {
  const auto store = [](auto* place, auto value) {
    if (place != nullptr) *place = static_cast<std::remove_pointer_t<decltype(place)>>(value);
  };
  Handle fetched = NewHandle(4);
  if (fetched == nullptr) return MemError();
  const AtExit dispose([&] { GL_DisposeHandle(&fetched); });
  SInt32 status = noErr;
  const bool hasNumber =
      sampleNumber != nullptr && *sampleNumber > 0 && *sampleNumber <= GetMediaSampleCount(media);
  if (hasNumber) {
    SampleNumToMediaTime(media, *sampleNumber, &mediaTime, nullptr);
    status = GetMoviesError();
  } else if (mediaTime < 0 || mediaTime >= GetMediaDuration(media)) {
    status = media != nullptr ? paramErr : SInt32{invalidMedia};
  }
  SInt64 place = 0;
  ByteCount bytes = 0;
  SInt32 begin = 0;
  SInt32 index = 0;
  SInt16 sampleFlags = 0;
  SInt32 number = hasNumber ? *sampleNumber : -1;
  if (!status)
    status = GetMediaSampleReference(media, &place, &bytes, mediaTime, &begin, nullptr, fetched,
                                     &index, 1, nullptr, &sampleFlags);
  if (!status && !hasNumber) MediaTimeToSampleNum(media, mediaTime, &number, nullptr, nullptr);
  const bool isGood = status == noErr;
  store(sampleNumber, isGood ? number : -1);
  store(sampleTime, isGood ? begin : 0);
  store(flags, isGood ? sampleFlags : 0);
  store(descriptionIndex, isGood ? index : -1);
  store(dataRefIndex, isGood ? DataReferenceOf(fetched) : -1);
  store(size, isGood ? static_cast<SInt64>(bytes) : 0);
  store(offset, isGood ? place : SInt64{-1});
  if (description != nullptr) *description = isGood ? std::exchange(fetched, nullptr) : nullptr;
  return status;
}

SInt32 QT_GetSampleSize(Track track, SInt32 trackTime, SInt32* size) {
  *size = 0;
  const SInt32 mediaTime = TrackTimeToMediaTime(trackTime, track);
  if (GetMoviesError()) return GetMoviesError();
  if (mediaTime == -1) return invalidTime;
  ByteCount bytes = 0;
  const SInt32 status =
      GetMediaSampleReference(GetTrackMedia(track), nullptr, &bytes, mediaTime, nullptr, nullptr,
                              nullptr, nullptr, 1, nullptr, nullptr);
  *size = static_cast<SInt32>(bytes);
  return status;
}

Boolean QT_IsDataOffsetMonotonousWithTrackTime(Track track) {
  Media media = GetTrackMedia(track);
  SInt64 last = -1;
  bool rises = media != nullptr;
  WalkTrack(track, nextTimeMediaSample, 0, [&](const TimeSpan& step) {
    SInt64 offset = 0;
    const SInt32 time = TrackTimeToMediaTime(step.time, track);
    if (GetMediaSampleReference(media, &offset, nullptr, time, nullptr, nullptr, nullptr, nullptr,
                                1, nullptr, nullptr) != noErr)
      return true;
    rises = offset >= std::exchange(last, offset);
    return rises;
  });
  return rises;
}

SInt32 QT_GetMovieMediaTypeSampleCountAndSize(Movie movie, OSType mediaType, SInt32* count,
                                              SInt64* size) {
  *count = 0;
  *size = 0;
  SInt32 status = movie != nullptr ? noErr : SInt32{invalidMovie};
  WalkTracks(movie, {mediaType, movieTrackMediaType}, [&](Track track) {
    Media media = GetTrackMedia(track);
    SInt64 bytes = 0;
    *count += GetMediaSampleCount(media);
    status = GetMediaDataSize64(media, 0, GetMediaDuration(media), &bytes);
    *size += bytes;
    return status == noErr;
  });
  return status;
}

SInt32 QT_GetMovieTotalMediaSize64(Movie movie, SInt64* size) {
  *size = 0;
  SInt32 status = movie != nullptr ? noErr : SInt32{invalidMovie};
  const auto add = [&](Track track, bool isVisual) {
    Media media = GetTrackMedia(track);
    if (!isVisual && FormatOf(media, 1) == "vdva"_4cc) return true;
    SInt64 bytes = 0;
    status = ShownSize(media, isVisual, &bytes);
    *size += bytes;
    return status == noErr;
  };
  WalkTracks(movie, kVisual, [&](Track track) { return add(track, true); });
  if (!status) WalkTracks(movie, kAural, [&](Track track) { return add(track, false); });
  return status;
}
