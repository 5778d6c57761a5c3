// Samples and bytes, of QT_Media_Intervals.h.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "QT_Media_Intervals.h"
#include "QT_Movie_Info.h"
#include "interval_walks_private.h"
#include "memory_handles.h"

namespace {

using namespace quillmere;

template <class T>
void Store(T* place, T value) {
  if (place != nullptr) *place = value;
}

/// What the records of a span of media add up to.
struct PartInfo {
  SInt64 samples = 0;
  SInt64 bytes = 0;
  SInt64 largest = 0;
  SInt64 smallest = std::numeric_limits<SInt32>::max();

  void Add(SInt64 size, SInt64 count, SInt64 counted) {
    const SInt64 of_one = size / count;
    samples += counted;
    bytes += of_one * counted;
    largest = std::max(largest, of_one);
    smallest = std::min(smallest, of_one);
  }
};

SInt32 MeasurePart(Media media, SInt32 start, SInt32 end, PartInfo* info) {
  for (SInt64 time = start; time < end;) {
    SInt64 size = 0;
    SInt32 duration = 0;
    SInt32 count = 0;
    const SInt32 status =
        QT_GetMediaSampleReference64(media, nullptr, &size, static_cast<SInt32>(time), nullptr,
                                     &duration, nullptr, nullptr, 0, &count, nullptr);
    if (status != noErr) return status;
    if (count < 1 || duration < 1) return invalidSampleTable;
    const SInt64 next = time + SInt64{count} * duration;
    info->Add(size, count, next > end ? (end - time) / duration : count);
    time = next;
  }
  return noErr;
}

/// A handle for descriptions; null without memory.
class DescriptionHandle {
 public:
  DescriptionHandle() : handle_(NewHandle(0)) {}
  DescriptionHandle(const DescriptionHandle&) = delete;
  DescriptionHandle& operator=(const DescriptionHandle&) = delete;
  ~DescriptionHandle() { DisposeHandle(handle_); }
  Handle get() const { return handle_; }
  SInt16 DataReference() const {
    constexpr std::size_t kPlace = 14;
    SInt16 index = 0;
    if (GetHandleSize(handle_) >= static_cast<Size>(kPlace + sizeof index))
      std::memcpy(&index, *handle_ + kPlace, sizeof index);
    return index;
  }

 private:
  Handle handle_;
};

/// The file intervals of the parts that a run of media has in common with a list of intervals,
/// which moves on over those that end within the run.
void CutRun(Media media, const TimeSpan& run, const LL_Interval** list,
            std::vector<QT_FileInterval>* found) {
  const SInt32 end = EndOf(run);
  for (const LL_Interval*& at = *list; at != nullptr && at->start < end; at = at->next) {
    const SInt32 from = std::max(at->start, run.time);
    const SInt32 to = std::min(at->end, end);
    QT_FileInterval part = {};
    if (to > from && QT_FillInMediaInterval(media, from, to - from, &part) == noErr)
      found->push_back(part);
    if (at->end > end) return;
  }
}

bool Overlap(const QT_FileInterval& first, const QT_FileInterval& second) {
  return first.dataRefIndex == second.dataRefIndex && second.beginOffset < first.endOffset;
}

UInt64 SizeUntil(Media media, SInt32 begin, SInt32 end) {
  SInt64 size = 0;
  GetMediaDataSize64(media, begin, end - begin, &size);
  return static_cast<UInt64>(size);
}

}  // namespace

SInt32 QT_GetMediaSampleReference64(Media media, SInt64* offset, SInt64* size, SInt32 mediaTime,
                                    SInt32* sampleTime, SInt32* duration,
                                    SampleDescriptionHandle description, SInt32* descriptionIndex,
                                    SInt32 mostSamples, SInt32* count, SInt16* flags) {
  Store(count, 0);
  Store(size, SInt64{0});
  SampleReference64Record record = {};
  SInt32 records = 0;
  const SInt32 status = GetMediaSampleReferences64(media, mediaTime, sampleTime, description,
                                                   descriptionIndex, 1, &records, &record);
  if (status != noErr || records == 0 || record.numberOfSamples == 0) return status;
  SInt64 samples = record.numberOfSamples;
  if (mostSamples != 0) samples = std::min<SInt64>(samples, mostSamples);
  Store(offset, SInt64{record.dataOffset});
  Store(size, record.dataSize / record.numberOfSamples * samples);
  Store(duration, TimeValue{record.durationPerSample});
  Store(count, static_cast<SInt32>(samples));
  Store(flags, SInt16{record.sampleFlags});
  return noErr;
}

SInt32 QT_GetMediaPartInfo(Media media, SInt32 start, SInt32 end, SInt32* sampleCount,
                           SInt64* largest, SInt64* smallest, Float32* meanSize,
                           Float32* bytesPerTimeUnit) {
  if (start >= end) return paramErr;
  PartInfo info;
  const SInt32 status = MeasurePart(media, start, end, &info);
  if (status != noErr) return status;
  const auto bytes = static_cast<double>(info.bytes);
  const auto samples = static_cast<double>(info.samples);
  Store(sampleCount, static_cast<SInt32>(info.samples));
  Store(largest, info.largest);
  Store(smallest, info.smallest);
  Store(meanSize, static_cast<Float32>(info.samples > 0 ? bytes / samples : 0));
  Store(bytesPerTimeUnit, static_cast<Float32>(bytes / (static_cast<double>(end) - start)));
  return noErr;
}

SInt32 QT_FillInMediaInterval(Media media, SInt32 mediaTime, SInt32 duration,
                              QT_FileInterval* interval) {
  const DescriptionHandle description;
  if (description.get() == nullptr) return memFullErr;
  SInt64 begin = 0;
  SInt32 status = QT_GetMediaSampleReference64(media, &begin, nullptr, mediaTime, nullptr, nullptr,
                                               description.get(), nullptr, 1, nullptr, nullptr);
  if (status != noErr) return status;
  SInt64 last = 0;
  SInt64 last_size = 0;
  status = QT_GetMediaSampleReference64(media, &last, &last_size, mediaTime + duration - 1, nullptr,
                                        nullptr, nullptr, nullptr, 1, nullptr, nullptr);
  if (status != noErr) return status;
  interval->dataRefIndex = description.DataReference();
  interval->beginOffset = begin;
  interval->endOffset = last + last_size;
  return noErr;
}

SInt32 QT_MediaIntervalComparator(const void* a, const void* b) {
  const auto* first = static_cast<const QT_FileInterval*>(a);
  const auto* second = static_cast<const QT_FileInterval*>(b);
  const auto order = [](SInt64 x, SInt64 y) { return x < y ? -1 : x > y ? 1 : 0; };
  if (const int by_file = order(first->dataRefIndex, second->dataRefIndex)) return by_file;
  if (const int by_begin = order(first->beginOffset, second->beginOffset)) return by_begin;
  return order(first->endOffset, second->endOffset);
}

SInt32 QT_MediaIntervalsOverlapIndirectly(Media media, const LL_Interval* intervals,
                                          Boolean* overlap) {
  ClearMoviesStickyError();
  std::vector<QT_FileInterval> found;
  const bool is_cut = intervals != nullptr;
  WalkMedia(media, nextTimeMediaEdit, 0, [&](const TimeSpan& run) {
    if (run.duration < 1) return false;
    if (is_cut) {
      CutRun(media, run, &intervals, &found);
      return intervals != nullptr;
    }
    QT_FileInterval whole = {};
    if (QT_FillInMediaInterval(media, run.time, run.duration, &whole) == noErr)
      found.push_back(whole);
    return true;
  });
  std::sort(found.begin(), found.end(), [](const QT_FileInterval& a, const QT_FileInterval& b) {
    return QT_MediaIntervalComparator(&a, &b) < 0;
  });
  *overlap = std::adjacent_find(found.begin(), found.end(), Overlap) != found.end() ? 1 : 0;
  return GetMoviesStickyError();
}

SInt32 QT_MediaPartSizeToBeginTime(Media media, UInt64 wantedSize, SInt32 endTime,
                                   SInt32* beginTime, UInt64* actualSize) {
  ClearMoviesStickyError();
  const SInt32 end =
      endTime == std::numeric_limits<SInt32>::max() ? GetMediaDuration(media) : endTime;
  *beginTime = 0;
  *actualSize = SizeUntil(media, 0, end);
  if (*actualSize <= wantedSize) return QT_GetMoviesStickyError();
  // Between them the size passes the wanted one: above it from `low`, at most it from `high`.
  SInt32 low = 0;
  SInt32 high = end;
  UInt64 size = *actualSize;
  while (high - low > 1 && size != wantedSize) {
    const SInt32 middle = low + (high - low) / 2;
    const UInt64 from_middle = SizeUntil(media, middle, end);
    if (from_middle >= wantedSize) {
      low = middle;
      size = from_middle;
    } else {
      high = middle;
    }
  }
  const UInt64 from_high = SizeUntil(media, high, end);
  const bool high_is_nearer = size > wantedSize && wantedSize - from_high < size - wantedSize;
  *beginTime = high_is_nearer ? high : low;
  *actualSize = high_is_nearer ? from_high : size;
  return QT_GetMoviesStickyError();
}
