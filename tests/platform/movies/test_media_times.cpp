#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "media_times.h"
#include "movie_model.h"
#include "overlay_support.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

SInt64 Nearest(long double x) {
  return static_cast<SInt64>(std::floor(x + 0.5L));
}

SInt64 MediaTimeOf(const Model& model, const Edit& edit, SInt64 played) {
  return edit.media_time + Nearest(static_cast<long double>(played * edit.rate) *
                                   static_cast<long double>(model.media_scale) /
                                   static_cast<long double>(model.movie_scale * 65536));
}

/// Track times at which one of `begins`, or an edit, begins to show, with their ends.
std::map<SInt64, SInt64> ShownSteps(const Model& model, const std::vector<SInt64>& begins) {
  std::map<SInt64, SInt64> steps;
  SInt64 begin = 0;
  for (const Edit& edit : model.edits) {
    auto shown_before = begins.end();
    SInt64* end_before = nullptr;
    for (SInt64 played = 0; played < edit.duration && edit.media_time != -1; ++played) {
      const SInt64 media_time = MediaTimeOf(model, edit, played);
      const auto shown = std::upper_bound(begins.begin(), begins.end(), media_time);
      if (played > 0 && (shown == shown_before || media_time >= model.duration())) continue;
      shown_before = shown;
      if (end_before != nullptr) *end_before = begin + played;
      end_before = &steps[begin + played];
    }
    begin += edit.duration;
    if (end_before != nullptr) *end_before = begin;
  }
  return steps;
}

std::map<SInt64, SInt64> MediaSteps(const Model& model, const std::vector<SInt64>& begins) {
  std::map<SInt64, SInt64> steps;
  for (std::size_t i = 0; i < begins.size(); ++i)
    steps[begins[i]] = i + 1 < begins.size() ? begins[i + 1] : model.duration();
  return steps;
}

template <class Next>
void CheckSteps(const std::map<SInt64, SInt64>& steps, SInt64 time, Next next) {
  for (const SInt16 edge : {SInt16{0}, nextTimeEdgeOK}) {
    TimeValue found = 7;
    TimeValue duration = 7;
    next(edge, static_cast<TimeValue>(time), &found, &duration);
    const auto expected = edge != 0 ? steps.lower_bound(time) : steps.upper_bound(time);
    ASSERT_EQ(found, expected == steps.end() ? -1 : expected->first) << time << " " << edge;
    ASSERT_EQ(duration, expected == steps.end() ? 0 : expected->second - expected->first) << time;
  }
}

void CheckTrack(const Model& model, Track track, std::mt19937* random) {
  SInt64 total = 0;
  std::map<SInt64, SInt64> edit_steps;
  for (const Edit& edit : model.edits) {
    if (edit.duration > 0) edit_steps[total] = total + edit.duration;
    total += edit.duration;
  }
  const auto samples = ShownSteps(model, model.SampleBegins());
  const auto runs = ShownSteps(model, model.RunBegins());
  const auto next = [&](SInt16 kind) {
    return [=](SInt16 edge, TimeValue time, TimeValue* found, TimeValue* duration) {
      GetTrackNextInterestingTime(track, static_cast<SInt16>(kind | edge), time, 0x10000, found,
                                  duration);
    };
  };
  for (SInt64 time = 0; time <= total + 1; time += 1 + static_cast<SInt64>((*random)() % 4)) {
    ASSERT_NO_FATAL_FAILURE(CheckSteps(samples, time, next(nextTimeMediaSample)));
    ASSERT_NO_FATAL_FAILURE(CheckSteps(runs, time, next(nextTimeMediaEdit)));
    ASSERT_NO_FATAL_FAILURE(CheckSteps(edit_steps, time, next(nextTimeTrackEdit)));
    SInt64 expected = -1;
    SInt64 begin = 0;
    for (const Edit& edit : model.edits) {
      if (time >= begin && time < begin + edit.duration && edit.media_time != -1)
        expected = MediaTimeOf(model, edit, time - begin);
      begin += edit.duration;
    }
    ASSERT_EQ(TrackTimeToMediaTime(static_cast<TimeValue>(time), track), expected) << time;
  }
}

void CheckMedia(const Model& model, Media media, std::mt19937* random) {
  ASSERT_EQ(GetMediaSampleCount(media), static_cast<SInt32>(model.samples.size()));
  const auto next = [&](SInt16 kind) {
    return [=](SInt16 edge, TimeValue time, TimeValue* found, TimeValue* duration) {
      GetMediaNextInterestingTime(media, static_cast<SInt16>(kind | edge), time, 0x10000, found,
                                  duration);
    };
  };
  const auto samples = MediaSteps(model, model.SampleBegins());
  const auto runs = MediaSteps(model, model.RunBegins());
  for (int i = 0; i < 50; ++i) {
    const auto time = static_cast<TimeValue>((*random)() % static_cast<UInt32>(model.duration()));
    ASSERT_NO_FATAL_FAILURE(CheckSteps(samples, time, next(nextTimeMediaSample)));
    ASSERT_NO_FATAL_FAILURE(CheckSteps(runs, time, next(nextTimeMediaEdit)));
    const auto holder = std::prev(
        std::upper_bound(model.samples.begin(), model.samples.end(), time,
                         [](SInt64 value, const Sample& sample) { return value < sample.begin; }));
    SInt32 number = 0;
    TimeValue begin = 0, duration = 0;
    MediaTimeToSampleNum(media, time, &number, &begin, &duration);
    ASSERT_EQ(number, holder - model.samples.begin() + 1);
    ASSERT_EQ(begin, holder->begin);
    ASSERT_EQ(duration, holder->duration);
    SampleNumToMediaTime(media, number, &begin, nullptr);
    ASSERT_EQ(begin, holder->begin);

    const auto length = static_cast<TimeValue>(1 + (*random)() % 500);
    SInt64 size = 0, expected = 0;
    ASSERT_EQ(GetMediaDataSize64(media, time, length, &size), noErr);
    for (const Sample& sample : model.samples) {
      if (sample.begin < time + length && sample.begin + sample.duration > time)
        expected += sample.size;
    }
    ASSERT_EQ(size, expected);
  }
}

void CheckReferences(const Model& model, Media media) {
  SampleReference64Record records[40];
  SInt32 count = 0, index = 0;
  TimeValue begin = -1;
  OwnedHandle description;
  *description.out() = NewHandle(4);
  ASSERT_EQ(
      GetMediaSampleReferences64(media, 0, &begin, description.get(), &index, 40, &count, records),
      noErr);
  ASSERT_EQ(begin, 0);
  ASSERT_EQ(index, 1);
  const auto field = [&](std::size_t offset) {
    UInt16 value = 0;
    std::memcpy(&value, *description.get() + offset, sizeof value);
    return value;
  };
  ASSERT_EQ(field(0), GetHandleSize(description.get()));
  ASSERT_EQ(field(14), 1);
  ASSERT_EQ(field(32), 32);
  ASSERT_EQ(field(34), 24);
  std::size_t sample = 0;
  for (const SampleReference64Record& record :
       std::span(records, static_cast<std::size_t>(count))) {
    SInt64 offset = record.dataOffset;
    UInt32 size = 0;
    for (UInt32 i = 0; i < record.numberOfSamples; ++i, ++sample) {
      ASSERT_LT(sample, model.samples.size());
      ASSERT_EQ(offset, model.samples[sample].offset);
      ASSERT_EQ(TimeValue{record.durationPerSample}, model.samples[sample].duration);
      offset += model.samples[sample].size;
      size += model.samples[sample].size;
    }
    ASSERT_EQ(UInt32{record.dataSize}, size);
  }
  ASSERT_EQ(sample, model.samples.size());
}

TEST(MediaTimes, AgreeWithASampleBySampleReference) {
  const TemporaryFolder folder;
  const std::filesystem::path path = folder / "movie.mov";
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=32x24:d=0.2", "-c:v", "mjpeg", path.string()});
  const Bytes base = ReadFile(path);
  std::mt19937 random(11);
  for (int round = 0; round < 150; ++round) {
    SCOPED_TRACE(round);
    const Model model = MakeModel(&random);
    WriteFile(path, MovieOf(model, base));
    const OpenedMovie opened(path);
    ASSERT_EQ(opened.status, noErr);
    const Track track = GetMovieIndTrack(opened.movie, 1);
    ASSERT_NO_FATAL_FAILURE(CheckTrack(model, track, &random));
    ASSERT_NO_FATAL_FAILURE(CheckMedia(model, GetTrackMedia(track), &random));
    ASSERT_NO_FATAL_FAILURE(CheckReferences(model, GetTrackMedia(track)));
  }
}

TEST(MediaTimes, RefuseWhatIsNotThere) {
  TimeValue time = 7;
  ClearMoviesStickyError();
  EXPECT_EQ(TrackTimeToMediaTime(0, nullptr), -1);
  EXPECT_EQ(GetMoviesError(), invalidTrack);
  GetTrackNextInterestingTime(nullptr, nextTimeTrackEdit, 0, 0x10000, &time, nullptr);
  EXPECT_EQ(time, -1);
  GetMediaNextInterestingTime(nullptr, nextTimeMediaSample, 0, 0x10000, nullptr, nullptr);
  EXPECT_EQ(GetMoviesError(), invalidMedia);
  EXPECT_EQ(GetMediaSampleCount(nullptr), 0);
  EXPECT_EQ(GetMediaDataSize64(nullptr, 0, 1, nullptr), invalidMedia);
  EXPECT_EQ(GetMoviesStickyError(), invalidTrack);
  ClearMoviesStickyError();

  const TemporaryFolder folder;
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=32x24:d=0.2", "-c:v", "mjpeg",
             (folder / "movie.mov").string()});
  const OpenedMovie opened(folder / "movie.mov");
  const Media media = GetTrackMedia(GetMovieIndTrack(opened.movie, 1));
  const TimeValue duration = GetMediaDuration(media);
  for (const TimeValue outside : {-1, duration, 0x7FFFFFFF}) {
    SInt32 count = 7;
    SampleReference64Record record;
    MediaTimeToSampleNum(media, outside, &count, &time, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(GetMoviesError(), invalidTime);
    EXPECT_EQ(
        GetMediaSampleReferences64(media, outside, nullptr, nullptr, nullptr, 1, &count, &record),
        invalidTime);
    EXPECT_EQ(GetMoviesStickyError(), invalidTime);
  }
  SampleNumToMediaTime(media, 0, &time, nullptr);
  EXPECT_EQ(time, -1);
  GetMediaNextInterestingTime(media, nextTimeMediaSample, 0, -0x10000, &time, nullptr);
  EXPECT_EQ(GetMoviesError(), paramErr);
  GetMediaNextInterestingTime(media, nextTimeTrackEdit, 0, 0x10000, &time, nullptr);
  EXPECT_EQ(GetMoviesError(), paramErr);
}

}  // namespace
}  // namespace quillmere::test
