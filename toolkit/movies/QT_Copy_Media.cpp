#include "QT_Copy_Media.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "GL_Errors.h"
#include "GL_Memory.h"
#include "QT_Media_Intervals.h"
#include "QT_Movie_Info.h"
#include "descriptions_private.h"
#include "interval_walks_private.h"
#include "memory_handles.h"
#include "reference_counted.h"

using quillmere::AtExit;

namespace {

constexpr SInt32 kMediaEnd = 0x7FFFFFFF;
constexpr SInt32 kBatch = 100;
/// Where a sample description, native, has its reserved bytes and its data reference's index.
constexpr std::size_t kReserved = 8;
constexpr std::size_t kReservedSize = 6;
constexpr std::size_t kDataReferenceIndex = 14;
constexpr SInt64 kMostNarrowOffset = 0x7FFFFFFF;

/// A span and how it cuts its first and last sample.
struct Span {
  SInt32 start = 0;
  SInt32 end = 0;
  SInt32 head = 0;           ///< of the first sample, before the span
  SInt32 firstDuration = 0;  ///< of the whole sample
  SInt32 last = 0;           ///< when the last sample begins
  SInt32 lastDuration = 0;
  SInt32 tail = 0;     ///< of the last sample, behind the span
  bool isOne = false;  ///< first and last are the same sample

  bool IsEmpty() const { return end <= start; }
};

SInt32 MakeSpan(Media media, SInt32 start, SInt32 end, Span* span) {
  const SInt32 duration = GetMediaDuration(media);
  if (media == nullptr) return invalidMedia;
  *span = {start, end == kMediaEnd ? duration : std::min(end, duration)};
  if (span->IsEmpty()) return noErr;
  SInt32 first = 0;
  MediaTimeToSampleNum(media, start, nullptr, &first, &span->firstDuration);
  if (GetMoviesError()) return GetMoviesError();
  MediaTimeToSampleNum(media, span->end - 1, nullptr, &span->last, &span->lastDuration);
  if (GetMoviesError()) return GetMoviesError();
  span->head = start - first;
  const SInt64 lastEnd = SInt64{span->last} + span->lastDuration;
  span->tail = static_cast<SInt32>(lastEnd - span->end);
  span->isOne = span->last == first;
  return noErr;
}

/// Copies a span in three stages: `copyPart(time, duration)` adds the sample at a time with a
/// duration, `copyBody(time, end)` whole samples up to a time.
template <class CopyPart, class CopyBody>
SInt32 CopyStages(const Span& span, CopyPart copyPart, CopyBody copyBody) {
  SInt32 position = span.start;
  if (span.head != 0) {
    const SInt32 duration = span.firstDuration - span.head - (span.isOne ? span.tail : 0);
    const SInt32 status = copyPart(position, duration);
    if (status) return status;
    position += duration;
    if (span.isOne) return noErr;
  }
  const SInt32 status = copyBody(position, span.last);
  return status ? status : copyPart(span.last, span.lastDuration - span.tail);
}

/// Samples fetched into one buffer and added from it.
class DataCopy {
 public:
  DataCopy(Media source, Media destination) : source_(source), destination_(destination) {}
  ~DataCopy() { GL_DisposeHandle(&description_); }
  DataCopy(const DataCopy&) = delete;
  DataCopy& operator=(const DataCopy&) = delete;

  SInt32 Begin(UInt64 bufferSize) {
    description_ = NewHandle(4);
    if (description_ == nullptr) return MemError();
    buffer_.resize(static_cast<std::size_t>(bufferSize));
    return noErr;
  }
  /// Fetches up to so many samples, 0 for as many as fit. A larger buffer is made where the samples
  /// ask for one.
  SInt32 Fetch(SInt64 time, ItemCount most) {
    SInt32 status = Get(time, most);
    if (status == maxSizeToGrowTooSmall) {
      buffer_.resize(static_cast<std::size_t>(size_));
      status = Get(time, count_);
    }
    return status;
  }
  SInt32 Add(SInt64 duration) {
    return AddMediaSample2(destination_, buffer_.data(), size_, duration, displayOffset_,
                           description_, count_, flags_, nullptr);
  }
  SInt64 time() const { return time_; }
  SInt64 duration() const { return duration_; }
  SInt64 count() const { return static_cast<SInt64>(count_); }
  UInt64 size() const { return size_; }
  Handle description() const { return description_; }

 private:
  SInt32 Get(SInt64 time, ItemCount most) {
    return GetMediaSample2(source_, buffer_.data(), buffer_.size(), &size_, time, &time_,
                           &duration_, &displayOffset_, description_, nullptr, most, &count_,
                           &flags_);
  }

  Media source_;
  Media destination_;
  std::vector<UInt8> buffer_;
  Handle description_ = nullptr;
  ByteCount size_ = 0;
  SInt64 time_ = 0;
  SInt64 duration_ = 0;
  SInt64 displayOffset_ = 0;
  ItemCount count_ = 0;
  UInt32 flags_ = 0;
};

SInt32 CopyData(const Span& span, DataCopy* copy) {
  const auto copyPart = [copy](SInt32 time, SInt32 duration) {
    const SInt32 status = copy->Fetch(time, 1);
    return status ? status : copy->Add(duration);
  };
  const auto copyBody = [copy](SInt32 position, SInt32 end) {
    SInt64 time = position;
    while (time < end) {
      SInt32 status = copy->Fetch(time, 0);
      if (!status && copy->duration() < 1) return SInt32{invalidSampleTable};
      const SInt64 fit = status ? 0 : (end - time) / copy->duration();
      if (!status && copy->count() > fit) status = copy->Fetch(time, static_cast<ItemCount>(fit));
      // A media that gives nothing doesn't get on.
      if (!status && (copy->count() < 1 || fit < 1)) status = invalidSampleTable;
      if (!status) status = copy->Add(copy->duration());
      if (status) return status;
      time += copy->duration() * copy->count();
    }
    return SInt32{noErr};
  };
  return CopyStages(span, copyPart, copyBody);
}

/// Runs of references fetched and added, with the description's data reference mapped.
class ReferenceCopy {
 public:
  ReferenceCopy(Media source, Media destination, const UInt16* map, SInt64 mostOffset)
      : source_(source),
        destination_(destination),
        map_(map),
        mostOffset_(mostOffset),
        references_(kBatch),
        offsets_(kBatch) {}
  ~ReferenceCopy() { GL_DisposeHandle(&description_); }
  ReferenceCopy(const ReferenceCopy&) = delete;
  ReferenceCopy& operator=(const ReferenceCopy&) = delete;

  SInt32 Begin() {
    description_ = NewHandle(4);
    return description_ != nullptr ? SInt32{noErr} : SInt32{MemError()};
  }
  SInt32 Fetch(SInt32 time, SInt32 most) {
    const SInt32 status = GetMediaSampleRuns(source_, time, nullptr, description_, nullptr, most,
                                             &count_, references_.data(), offsets_.data());
    if (status) return status;
    const bool isNear = std::all_of(begin(), begin() + count_, [this](const auto& run) {
      return run.dataOffset + run.dataSize <= mostOffset_;
    });
    if (!isNear) return paramErr;
    return count_ > 0 ? SInt32{noErr} : SInt32{invalidSampleTable};
  }
  /// Up to so many samples of the first run, in whole packets.
  SInt32 FetchSome(SInt32 time, SInt32 most) {
    SampleReference64Record& run = references_.front();
    SInt64 offset = 0;
    ByteCount size = 0;
    SInt32 duration = 0;
    SInt32 samples = 0;
    SInt16 flags = 0;
    const SInt32 status = GetMediaSampleReference(source_, &offset, &size, time, nullptr, &duration,
                                                  description_, nullptr, most, &samples, &flags);
    if (status) return status;
    run = {offset, static_cast<UInt32>(size), duration, static_cast<UInt32>(samples), flags};
    offsets_.front() = 0;
    count_ = 1;
    return noErr;
  }
  /// One sample of the first run, with a duration of its own.
  void KeepOne(SInt32 duration) {
    SampleReference64Record& run = references_.front();
    if (run.numberOfSamples > 1) run.dataSize /= run.numberOfSamples;
    run.numberOfSamples = 1;
    run.durationPerSample = duration;
    count_ = 1;
  }
  /// The first `runs` runs, the last of them with `samples` samples.
  void Keep(SInt32 runs, UInt32 samples) {
    count_ = runs;
    SampleReference64Record& run = references_[static_cast<std::size_t>(runs) - 1];
    run.dataSize = static_cast<UInt32>(UInt64{run.dataSize} * samples / run.numberOfSamples);
    run.numberOfSamples = samples;
  }
  SInt32 Add() {
    const SInt32 status = PrepareDescription();
    if (status) return status;
    return AddMediaSampleRuns(destination_, description_, count_, references_.data(),
                              offsets_.data(), nullptr);
  }
  std::vector<SampleReference64Record>::const_iterator begin() const { return references_.begin(); }
  SInt32 count() const { return count_; }

 private:
  /// Clears the reserved bytes and maps the data reference, which a file may say is one that the
  /// media hasn't.
  SInt32 PrepareDescription() {
    if (GetHandleSize(description_) < static_cast<Size>(kDataReferenceIndex + sizeof(UInt16)))
      return badImageDescription;
    std::memset(*description_ + kReserved, 0, kReservedSize);
    if (map_ == nullptr) return noErr;
    SInt16 count = 0;
    const SInt32 status = GetMediaDataRefCount(source_, &count);
    const UInt16 index = quillmere::DataReferenceOf(description_);
    if (status || index < 1 || index > count) return status ? status : SInt32{invalidDataRef};
    std::memcpy(*description_ + kDataReferenceIndex, &map_[index], sizeof index);
    return noErr;
  }

  Media source_;
  Media destination_;
  const UInt16* map_;
  SInt64 mostOffset_;
  std::vector<SampleReference64Record> references_;
  std::vector<SInt32> offsets_;
  Handle description_ = nullptr;
  SInt32 count_ = 0;
};

/// How a batch goes on to an end: the runs that are whole, and what is needed of the one behind.
struct BatchCut {
  SInt32 wholeRuns = 0;
  SInt64 time = 0;     ///< behind the whole runs
  SInt64 samples = 0;  ///< of the run that goes beyond the end; 0 for none
};

BatchCut CutBatch(const ReferenceCopy& copy, SInt64 time, SInt64 end) {
  BatchCut cut = {0, time, 0};
  for (; cut.wholeRuns < copy.count() && cut.time < end; ++cut.wholeRuns) {
    const SampleReference64Record& run = copy.begin()[cut.wholeRuns];
    const SInt64 whole = SInt64{run.durationPerSample} * run.numberOfSamples;
    if (cut.time + whole > end) {
      cut.samples = run.numberOfSamples - (cut.time + whole - end) / run.durationPerSample;
      break;
    }
    cut.time += whole;
  }
  return cut;
}

/// Copies batches from `position` up to `end`, where a run that goes beyond is cut behind the
/// sample that holds it.
SInt32 CopyBatches(SInt32 position, SInt32 end, ReferenceCopy* copy) {
  SInt64 time = position;
  while (time < end) {
    SInt32 status = copy->Fetch(static_cast<SInt32>(time), kBatch);
    if (status) return status;
    const BatchCut cut = CutBatch(*copy, time, end);
    const SInt64 before = time;
    time = cut.time;
    if (cut.samples == 0) {
      const auto& last = copy->begin()[cut.wholeRuns - 1];
      copy->Keep(cut.wholeRuns, last.numberOfSamples);
    } else {
      const SampleReference64Record run = copy->begin()[cut.wholeRuns];
      const bool hasPackets = run.dataSize % run.numberOfSamples != 0;
      if (!hasPackets) {
        copy->Keep(cut.wholeRuns + 1, static_cast<UInt32>(cut.samples));
        time = end;
      } else if (cut.wholeRuns > 0) {
        copy->Keep(cut.wholeRuns, copy->begin()[cut.wholeRuns - 1].numberOfSamples);
      } else {
        status = copy->FetchSome(static_cast<SInt32>(time), static_cast<SInt32>(cut.samples));
        if (status) return status;
        time += SInt64{run.durationPerSample} * copy->begin()->numberOfSamples;
      }
    }
    status = copy->Add();
    if (status) return status;
    if (time == before) return invalidSampleTable;
  }
  return noErr;
}

SInt32 CopyByReference(Media source, Media destination, SInt32 start, SInt32 end, const UInt16* map,
                       SInt64 mostOffset) {
  Span span;
  SInt32 status = MakeSpan(source, start, end, &span);
  if (status || span.IsEmpty()) return status;
  ReferenceCopy copy(source, destination, map, mostOffset);
  status = copy.Begin();
  if (status) return status;
  const auto copyPart = [&copy](SInt32 time, SInt32 duration) {
    SInt32 result = copy.Fetch(time, 1);
    if (result) return result;
    copy.KeepOne(duration);
    return copy.Add();
  };
  const auto copyBody = [&copy](SInt32 position, SInt32 last) {
    return CopyBatches(position, last, &copy);
  };
  return CopyStages(span, copyPart, copyBody);
}

}  // namespace

SInt32 QT_CopyMedia(Media source, Media destination, SInt32 start, SInt32 end) {
  constexpr SInt64 kSmallestBuffer = 1048576;
  Span span;
  SInt32 status = MakeSpan(source, start, end, &span);
  if (status || span.IsEmpty()) return status;
  SInt64 largest = 0;
  status = QT_GetMediaPartInfo(source, span.start, span.end, nullptr, &largest, nullptr, nullptr,
                               nullptr);
  if (status) return status;
  DataCopy copy(source, destination);
  status = copy.Begin(
      static_cast<UInt64>(std::min(std::max(largest, kSmallestBuffer), SInt64{1} << 31)));
  if (!status) status = BeginMediaEdits(destination);
  if (!status) status = CopyData(span, &copy);
  return status ? status : EndMediaEdits(destination);
}

SInt32 QT_CopyMediaByReference(Media source, Media destination, SInt32 start, SInt32 end,
                               const UInt16* map) {
  return CopyByReference(source, destination, start, end, map, kMostNarrowOffset);
}

SInt32 QT_CopyMediaByReference64(Media source, Media destination, SInt32 start, SInt32 end,
                                 const UInt16* map) {
  return CopyByReference(source, destination, start, end, map, std::numeric_limits<SInt64>::max());
}

SInt32 QT_CopySoundMediaByReference64(SInt32 start, SInt32 end, Media source, Media destination) {
  const SInt32 duration = GetMediaDuration(source);
  if (source == nullptr) return invalidMedia;
  end = std::min(end, duration);
  if (end <= start) return noErr;
  ReferenceCopy copy(source, destination, nullptr, std::numeric_limits<SInt64>::max());
  const SInt32 status = copy.Begin();
  return status ? status : CopyBatches(start, end, &copy);
}

SInt32 QT_AddMediaSampleReference64(Media media, SInt64 offset, UInt32 size, SInt32 duration,
                                    SampleDescriptionHandle description, SInt32 count, SInt16 flags,
                                    SInt32* sampleTime) {
  if (count < 1) return paramErr;
  const SampleReference64Record reference = {offset, size, duration, static_cast<UInt32>(count),
                                             flags};
  return AddMediaSampleReferences64(media, description, 1, &reference, sampleTime);
}

SInt32 QT_CopyMediaSampleReference(Media source, Media destination, SInt32 mediaTime,
                                   SInt32* sampleTime) {
  Handle description = NewHandle(4);
  if (description == nullptr) return MemError();
  const AtExit dispose([&] { GL_DisposeHandle(&description); });
  SInt64 offset = 0;
  ByteCount size = 0;
  SInt32 begin = 0;
  SInt32 duration = 0;
  SInt16 flags = 0;
  const SInt32 status =
      GetMediaSampleReference(source, &offset, &size, mediaTime, &begin, &duration, description,
                              nullptr, 1, nullptr, &flags);
  if (status) return status;
  return QT_AddMediaSampleReference64(destination, offset, static_cast<UInt32>(size),
                                      duration - (mediaTime - begin), description, 1, flags,
                                      sampleTime);
}

SInt32 QT_CopyMediaWithProgress(Media source, Media destination, MovieProgressProcPtr progress,
                                SInt64 refcon) {
  const auto report = [&](SInt16 message, Fixed fraction) {
    if (progress != nullptr) progress(nullptr, message, 0, fraction, refcon);
  };
  SInt32 chunk = 0;
  SInt32 status = GetMediaPreferredChunkSize(source, &chunk);
  if (status) return status;
  SInt64 total = 0;
  status = GetMediaDataSizeTime64(source, GetMediaDisplayStartTime(source),
                                  GetMediaDisplayDuration(source), &total);
  if (status) return status;
  DataCopy copy(source, destination);
  status = copy.Begin(static_cast<UInt64>(chunk));
  if (!status) status = BeginMediaEdits(destination);
  if (status) return status;
  report(movieProgressOpen, 0);
  SInt64 copied = 0;
  for (SInt64 time = 0; copied < total;) {
    status = copy.Fetch(time, 0);
    if (!status && copy.size() == 0 && copy.duration() == 0) status = invalidSampleTable;
    if (!status) status = copy.Add(copy.duration());
    if (status) return status;
    copied += static_cast<SInt64>(copy.size());
    time = copy.time() + copy.duration() * copy.count();
    const double fraction = static_cast<double>(copied) / static_cast<double>(total);
    report(movieProgressUpdatePercent, quillmere::Truncated(fraction * 65536));
  }
  report(movieProgressClose, 0);
  return EndMediaEdits(destination);
}
