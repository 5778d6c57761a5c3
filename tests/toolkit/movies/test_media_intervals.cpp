#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "LL_Linked_Lists.h"
#include "QT_Media_Intervals.h"
#include "QT_Movie_Atoms.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "file_objects.h"
#include "media_editing.h"
#include "media_times.h"
#include "movie_model.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

constexpr SInt32 kEnd = 0x7FFFFFFF;
using Intervals = std::vector<std::pair<SInt32, SInt32>>;

Intervals Taken(LL_Interval* list) {
  Intervals intervals;
  for (const LL_Interval* at = list; at != nullptr; at = at->next)
    intervals.emplace_back(at->start, at->end);
  LL_DisposeLinkedList(ListHead(&list));
  return intervals;
}

Intervals Made(Track track, Boolean reduce, Boolean* had_overlap) {
  LL_Interval* list = nullptr;
  EXPECT_EQ(QT_MakeMediaIntervalList(track, 0, kEnd, reduce, &list, had_overlap), noErr);
  return Taken(list);
}

/// The intervals in order, united where they overlap or touch.
Intervals Reduced(Intervals intervals) {
  std::sort(intervals.begin(), intervals.end());
  Intervals united;
  for (const auto& [start, end] : intervals) {
    if (!united.empty() && start <= united.back().second)
      united.back().second = std::max(united.back().second, end);
    else
      united.emplace_back(start, end);
  }
  return united;
}

SInt32 TotalOf(const Intervals& intervals) {
  SInt32 sum = 0;
  for (const auto& [start, end] : intervals)
    sum += end - start;
  return sum;
}

class MediaIntervals : public testing::Test {
 protected:
  MediaIntervals() {
    RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=32x24:d=0.2", "-c:v", "mjpeg", path_.string()});
    base_ = ReadFile(path_);
  }
  ~MediaIntervals() override { Close(); }
  void Close() {
    if (movie_ != nullptr) QT_DisposeMovie(&movie_);
  }
  /// Opens the model's movie; its track.
  Track Open(const Model& model) { return OpenFile(MovieOf(model, base_)); }
  Track OpenFile(const Bytes& file) {
    Close();
    WriteFile(path_, file);
    const FSRef reference = ReferenceTo(path_);
    EXPECT_EQ(QT_OpenMovieFileFP(&reference, 0, nullptr, &movie_), noErr);
    return GetMovieIndTrack(movie_, 1);
  }

  const TemporaryFolder folder_;
  const std::filesystem::path path_ = folder_ / "movie.mov";
  Bytes base_;
  Movie movie_ = nullptr;
};

/// A model whose edits begin and end on samples, on whole units of both time scales.
Model MakeAlignedModel(std::mt19937* random) {
  Model model = MakeModel(random);
  model.movie_scale = 600;
  model.media_scale = PickOne<SInt64>({25, 600, 30000}, random);
  const SInt64 unit = std::max<SInt64>(model.media_scale / 600, 1);
  SInt64 begin = 0;
  for (Sample& sample : model.samples) {
    sample.begin = begin;
    sample.duration = unit * static_cast<SInt64>(1 + (*random)() % 6);
    begin += sample.duration;
  }
  for (Edit& edit : model.edits) {
    const std::size_t first = (*random)() % model.samples.size();
    const std::size_t last = first + (*random)() % (model.samples.size() - first);
    edit.rate = 0x10000;
    edit.media_time = edit.media_time == -1 ? -1 : model.samples[first].begin;
    edit.duration =
        (model.samples[last].begin + model.samples[last].duration - model.samples[first].begin) *
        600 / model.media_scale;
  }
  return model;
}

TEST_F(MediaIntervals, OfEditsOnSampleEdgesAreExact) {
  std::mt19937 random(3);
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    const Model model = MakeAlignedModel(&random);
    const Track track = Open(model);
    Intervals expected;
    for (const Edit& edit : model.edits) {
      if (edit.media_time == -1) continue;
      const auto length = static_cast<SInt32>(edit.duration * model.media_scale / 600);
      expected.emplace_back(edit.media_time, edit.media_time + length);
    }
    Boolean had_overlap = 7;
    ASSERT_EQ(Made(track, 0, &had_overlap), expected);
    ASSERT_EQ(had_overlap, 0);
    const Intervals reduced = Reduced(expected);
    ASSERT_EQ(Made(track, 1, &had_overlap), reduced);
    ASSERT_EQ(had_overlap != 0, TotalOf(reduced) < TotalOf(expected));

    SInt64 size = 0;
    SInt32 count = 0;
    ASSERT_EQ(QT_GetMovieUsedMediaSizeAndSampleCount(movie_, 0, kEnd, "vide"_4cc,
                                                     movieTrackMediaType, 1, &size, &count),
              noErr);
    SInt64 expected_size = 0;
    SInt32 expected_count = 0;
    for (const Sample& sample : model.samples) {
      for (const auto& [start, end] : reduced) {
        if (sample.begin >= start && sample.begin < end) {
          expected_size += sample.size;
          ++expected_count;
        }
      }
    }
    ASSERT_EQ(size, expected_size);
    ASSERT_EQ(count, expected_count);
  }
}

TEST_F(MediaIntervals, HoldTheSamplesShownAndNoOthers) {
  std::mt19937 random(8);
  for (int round = 0; round < 120; ++round) {
    SCOPED_TRACE(round);
    const Model model = MakeModel(&random);
    const Track track = Open(model);
    LL_Interval* list = nullptr;
    SInt32 count = 0;
    ASSERT_EQ(QT_MakeMediaIntervalListNew(track, 0, kEnd, 0, &list, &count, nullptr), noErr);
    // Sample by sample: each edit's first and last one.
    Intervals expected;
    SInt32 expected_count = 0;
    SInt64 begin = 0;
    for (const Edit& edit : model.edits) {
      const SInt64 end = begin + edit.duration;
      SInt64 last_shown = -1;
      Intervals of_edit;
      for (SInt64 time = begin; time < end && edit.media_time != -1; ++time) {
        const SInt32 media_time = TrackTimeToMediaTime(static_cast<SInt32>(time), track);
        SInt32 from = 0, duration = 0;
        MediaTimeToSampleNum(GetTrackMedia(track), media_time, nullptr, &from, &duration);
        if (from == -1 || from == last_shown) continue;
        last_shown = from;
        ++expected_count;
        if (of_edit.empty()) of_edit.emplace_back(from, 0);
        of_edit[0].second = from + duration;
      }
      expected.insert(expected.end(), of_edit.begin(), of_edit.end());
      begin = end;
    }
    ASSERT_EQ(Taken(list), expected);
    ASSERT_EQ(count, expected_count);
  }
}

TEST_F(MediaIntervals, DoNotDriftInTenHours) {
  constexpr UInt32 kSamples = 1078921;  // of 1001 / 30000 s
  constexpr UInt32 kDuration = kSamples * 1001;
  for (const UInt32 movie_scale : {600U, 1000U, 30000U}) {
    SCOPED_TRACE(movie_scale);
    Bytes file = base_;
    const std::vector<std::string> mdia = {"moov", "trak", "mdia"};
    const auto edit_units = static_cast<SInt64>(std::llround(kDuration * (movie_scale / 30000.0)));
    PatchNumber(&file, {"moov", "mvhd"}, 20, movie_scale);
    PatchNumber(&file, {"moov", "trak", "mdia", "mdhd"}, 20, 30000);
    PatchNumber(&file, {"moov", "trak", "mdia", "mdhd"}, 24, kDuration);
    ReplaceAtom(&file, {"moov", "trak", "mdia", "minf", "stbl", "stts"},
                TableOf("stts", {kSamples, 1001}, 2));
    ReplaceAtom(&file, {"moov", "trak", "mdia", "minf", "stbl", "stsc"},
                TableOf("stsc", {1, kSamples, 1}, 3));
    ReplaceAtom(&file, {"moov", "trak", "mdia", "minf", "stbl", "stco"}, TableOf("stco", {40}, 1));
    ReplaceAtom(&file, {"moov", "trak", "mdia", "minf", "stbl", "stsz"},
                MakeFullAtom("stsz", 0, 0, ByteWriter().U32(1).U32(kSamples).bytes));
    // The last half hour once more behind the whole.
    const SInt64 late = SInt64{1000000} * 1001;
    const auto late_units = static_cast<SInt64>(
        std::llround(static_cast<double>(kDuration - late) * (movie_scale / 30000.0)));
    ReplaceAtom(&file, {"moov", "trak", "edts", "elst"},
                TableOf("elst", {edit_units, 0, 0x10000, late_units, late, 0x10000}, 3));
    const Track track = OpenFile(file);
    Boolean had_overlap = 0;
    EXPECT_EQ(Made(track, 0, &had_overlap),
              (Intervals{{0, static_cast<SInt32>(kDuration)},
                         {static_cast<SInt32>(late), static_cast<SInt32>(kDuration)}}));
    QT_TrackEdit* edits = nullptr;
    ASSERT_EQ(QT_MakeTrackEditList(track, &edits), noErr);
    EXPECT_NEAR(edits->rate, 1.0, 1e-6);
    EXPECT_EQ(edits->next->trackTime, edit_units);
    LL_DisposeLinkedList(ListHead(&edits));
  }
}

TEST_F(MediaIntervals, OfShortEdits) {
  const struct {
    SInt64 movie_scale, media_scale, sample_duration, edit_duration;
    Intervals expected;
  } cases[] = {
      {600, 600, 1, 100, {{0, 1}}},   // a still
      {600, 600, 20, 1, {{0, 1}}},    // one unit of equal scales
      {1000, 600, 20, 1, {{0, 1}}},   // less than a media time unit
      {25, 600, 100, 1, {{0, 24}}},   // one of many units
      {600, 600, 20, 50, {{0, 20}}},  // past the media's end
  };
  for (const auto& c : cases) {
    const Model model = {c.movie_scale,
                         c.media_scale,
                         {{0, c.sample_duration, 10, 40}},
                         {0},
                         {{c.edit_duration, 0, 0x10000}}};
    EXPECT_EQ(Made(Open(model), 0, nullptr), c.expected) << c.movie_scale << " " << c.media_scale;
  }
  LL_Interval interval = {nullptr, 5, 5};
  QT_TrackEditToMediaInterval(nullptr, 0, 10, &interval);
  EXPECT_EQ(interval.start, -1);
  EXPECT_EQ(interval.end, -1);
}

TEST_F(MediaIntervals, MeasureBytesLikeASampleBySampleSum) {
  std::mt19937 random(21);
  for (int round = 0; round < 60; ++round) {
    SCOPED_TRACE(round);
    const Model model = MakeModel(&random);
    const Media media = GetTrackMedia(Open(model));
    const auto duration = static_cast<SInt32>(model.duration());
    SInt32 count = 7;
    SInt64 largest = 0, smallest = 0;
    float mean = 0, per_unit = 0;
    ASSERT_EQ(
        QT_GetMediaPartInfo(media, 0, duration, &count, &largest, &smallest, &mean, &per_unit),
        noErr);
    double total = 0;
    std::vector<UInt32> sizes;
    for (const Sample& sample : model.samples) {
      total += sample.size;
      sizes.push_back(sample.size);
    }
    ASSERT_EQ(count, static_cast<SInt32>(sizes.size()));
    ASSERT_EQ(largest, *std::max_element(sizes.begin(), sizes.end()));
    ASSERT_EQ(smallest, *std::min_element(sizes.begin(), sizes.end()));
    ASSERT_FLOAT_EQ(mean, static_cast<float>(total / count));
    ASSERT_FLOAT_EQ(per_unit, static_cast<float>(total / duration));
    ASSERT_EQ(QT_GetMediaPartInfo(media, 3, 3, &count, nullptr, nullptr, nullptr, nullptr),
              paramErr);

    // The begin time of every size: the nearest of all, the earlier one first.
    const auto size_from = [&](SInt32 begin) {
      SInt64 sum = 0;
      for (const Sample& sample : model.samples)
        sum += sample.begin + sample.duration > begin ? sample.size : 0;
      return sum;
    };
    for (SInt64 wanted = 0; wanted < static_cast<SInt64>(total) + 20; wanted += 7) {
      SInt32 begin = -1;
      UInt64 actual = 0;
      ASSERT_EQ(
          QT_MediaPartSizeToBeginTime(media, static_cast<UInt64>(wanted), kEnd, &begin, &actual),
          noErr);
      ASSERT_EQ(static_cast<SInt64>(actual), size_from(begin));
      SInt64 nearest = size_from(0);
      for (const Sample& sample : model.samples) {
        const SInt64 size = size_from(static_cast<SInt32>(sample.begin + sample.duration));
        if (std::abs(size - wanted) < std::abs(nearest - wanted)) nearest = size;
      }
      ASSERT_EQ(std::abs(static_cast<SInt64>(actual) - wanted), std::abs(nearest - wanted));
    }
  }
}

TEST_F(MediaIntervals, TellBytesUsedTwice) {
  // Chunks at 40, 60 and 50: the third lies across the end of the first two.
  Model model = {600,
                 600,
                 {{0, 10, 10, 40}, {10, 10, 10, 60}, {20, 10, 15, 50}},
                 {0, 1, 2},
                 {{30, 0, 0x10000}}};
  const LL_Interval first_two = {nullptr, 0, 20};
  LL_Interval apart[] = {{nullptr, 0, 5}, {nullptr, 21, 29}};
  apart[0].next = &apart[1];
  LL_Interval crossing[] = {{nullptr, 5, 15}, {nullptr, 15, 30}};
  crossing[0].next = &crossing[1];
  Boolean overlap = 7;
  const Media media = GetTrackMedia(Open(model));
  const struct {
    const LL_Interval* intervals;
    bool overlap;
  } cases[] = {{nullptr, true}, {&first_two, false}, {apart, false}, {crossing, true}};
  for (const auto& c : cases) {
    EXPECT_EQ(QT_MediaIntervalsOverlapIndirectly(media, c.intervals, &overlap), noErr);
    EXPECT_EQ(overlap != 0, c.overlap) << &c - cases;
  }
  QT_FileInterval interval = {};
  EXPECT_EQ(QT_FillInMediaInterval(media, 12, 10, &interval), noErr);
  EXPECT_EQ(interval.dataRefIndex, 1);
  EXPECT_EQ(interval.beginOffset, 60);
  EXPECT_EQ(interval.endOffset, 65);
  EXPECT_EQ(QT_MediaIntervalsOverlapIndirectly(nullptr, nullptr, &overlap), invalidMedia);
  EXPECT_EQ(overlap, 0);
}

TEST_F(MediaIntervals, FilesAreCutBehindASample) {
  Model model;
  model.movie_scale = model.media_scale = 600;
  for (SInt64 i = 0; i < 6; ++i)
    model.samples.push_back({i * 20, 20, 10, 1000 + i * 10});
  model.chunks = {0};
  model.edits = {{120, 0, 0x10000}, {60, -1, 0x10000}};
  const struct {
    TimeValue time;
    SInt32 status;
    UInt64 size;
  } rows[] = {{0, noErr, 1000},  {20, noErr, 1010},     {21, noErr, 1020},
              {39, noErr, 1020}, {101, invalidTime, 0}, {130, invalidTime, 0}};
  for (const auto& row : rows) {
    const Track track = Open(model);
    const std::filesystem::path media = folder_ / "media";
    WriteFile(media, Bytes(2000));
    const FSRef file = ReferenceTo(media);
    EXPECT_EQ(QT_MoveBackMovieEOF(0, &file, track, row.time), row.status) << row.time;
    EXPECT_EQ(std::filesystem::file_size(media), row.size ? row.size : 2000) << row.time;
  }
}

TEST(PackedIntervals, StandInListOrder) {
  LL_Interval intervals[] = {{nullptr, 1, 2}, {nullptr, 5, 9}};
  intervals[0].next = &intervals[1];
  QT_IntervalListElement lists[] = {{nullptr, intervals, -7}, {nullptr, nullptr, 8}};
  lists[0].next = &lists[1];
  SInt32 packed[10];
  std::fill_n(packed, 10, 99);
  QT_PackMediaIntervalLists(lists, packed);
  const SInt32 expected[] = {2, -7, 2, 1, 2, 5, 9, 8, 0, 99};
  EXPECT_TRUE(std::equal(packed, packed + 10, expected));
}

TEST_F(MediaIntervals, CarryEditsToCopiedMedia) {
  std::mt19937 random(33);
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    Model model = MakeAlignedModel(&random);
    // In a coarser media times round into what follows an edit.
    while (model.media_scale < model.movie_scale)
      model = MakeAlignedModel(&random);
    const Track source = Open(model);
    const Media media = GetTrackMedia(source);
    LL_Interval* pieces = nullptr;
    ASSERT_EQ(QT_MakeMediaIntervalList(source, 0, kEnd, 1, &pieces, nullptr), noErr);
    // A track whose media holds the pieces back to back.
    const Track copy = NewMovieTrack(movie_, 32 << 16, 24 << 16, 0);
    const Media copied = NewTrackMedia(copy, "vide"_4cc, static_cast<SInt32>(model.media_scale),
                                       nullptr, "alis"_4cc);
    Handle description = NewHandle(0);
    for (const LL_Interval* at = pieces; at != nullptr; at = at->next) {
      for (const Sample& sample : model.samples) {
        if (sample.begin < at->start || sample.begin >= at->end) continue;
        SInt64 offset = 0, size = 0;
        ASSERT_EQ(QT_GetMediaSampleReference64(media, &offset, &size,
                                               static_cast<SInt32>(sample.begin), nullptr, nullptr,
                                               description, nullptr, 1, nullptr, nullptr),
                  noErr);
        ASSERT_EQ(AddMediaSampleReference(copied, offset, static_cast<UInt32>(size),
                                          static_cast<SInt32>(sample.duration), description, 1, 0,
                                          nullptr),
                  noErr);
      }
    }
    DisposeHandle(description);
    ASSERT_EQ(QT_CopyTrackEditsUsingMediaIntervalList(source, copy, pieces, 0), noErr);
    LL_DisposeLinkedList(ListHead(&pieces));
    // Both show the same bytes at every time.
    for (SInt32 time = 0; time < GetTrackDuration(source); ++time) {
      SInt64 offsets[2] = {-1, -1};
      for (const Track track : {source, copy}) {
        const SInt32 shown = TrackTimeToMediaTime(time, track);
        if (shown == -1) continue;
        QT_GetMediaSampleReference64(GetTrackMedia(track), &offsets[track == copy ? 1 : 0], nullptr,
                                     shown, nullptr, nullptr, nullptr, nullptr, 1, nullptr,
                                     nullptr);
      }
      ASSERT_EQ(offsets[0], offsets[1]) << time;
    }
  }
}

}  // namespace
}  // namespace quillmere::test
