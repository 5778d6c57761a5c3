/// Where samples and runs of samples begin in a media.
#pragma once

#include <optional>

#include "sample_table.h"

namespace quillmere::movies {

/// Media time units from the media's start.
struct MediaStep {
  SInt64 time;
  SInt64 duration;
};

/// The first sample that begins at `time` or later and lasts.
std::optional<MediaStep> FirstSampleFrom(const SampleTable& table, SInt64 time);
/// The first run of chunks, adjoining in one file, that begins at `time` or later.
std::optional<MediaStep> FirstRunFrom(const SampleTable& table, SInt64 time);

}  // namespace quillmere::movies
