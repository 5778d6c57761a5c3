#include "media_steps.h"

#include <algorithm>

namespace quillmere::movies {

namespace {

/// A chunk that holds samples, by number; false when there is none from `chunk` on.
bool FilledChunkFrom(const SampleTable& table, UInt64 chunk, ChunkInfo* info, UInt64* number) {
  for (*number = chunk; table.ChunkAt(*number, info); ++*number) {
    if (info->sample_count > 0) return true;
  }
  return false;
}

bool Adjoin(const SampleTable& table, const ChunkInfo& first, const ChunkInfo& second) {
  const auto file_of = [&](const ChunkInfo& chunk) {
    return table.descriptions()[chunk.description - 1].data_reference;
  };
  return first.offset + first.size == second.offset && file_of(first) == file_of(second);
}

/// Passes over the chunks that adjoin the one of this number; false when that reaches the end.
bool PassRun(const SampleTable& table, ChunkInfo* chunk, UInt64* number) {
  ChunkInfo next = {};
  UInt64 next_number = 0;
  while (FilledChunkFrom(table, *number + 1, &next, &next_number)) {
    const bool adjoins = Adjoin(table, *chunk, next);
    *chunk = next;
    *number = next_number;
    if (!adjoins) return true;
  }
  return false;
}

bool BeginsRun(const SampleTable& table, const ChunkInfo& chunk, UInt64 number) {
  ChunkInfo before = {};
  while (number > 0 && table.ChunkAt(--number, &before)) {
    if (before.sample_count > 0) return !Adjoin(table, before, chunk);
  }
  return true;
}

}  // namespace

std::optional<MediaStep> FirstSampleFrom(const SampleTable& table, SInt64 time) {
  std::optional<UInt64> sample = table.SampleAtTime(std::max(time, SInt64{0}));
  SampleInfo info = {};
  if (!sample || !table.SampleAt(*sample, &info)) return std::nullopt;
  if (info.decode_time < time) {
    sample = table.SampleAtTime(info.decode_time + info.duration);
    if (!sample || !table.SampleAt(*sample, &info)) return std::nullopt;
  }
  return MediaStep{info.decode_time, info.duration};
}

std::optional<MediaStep> FirstRunFrom(const SampleTable& table, SInt64 time) {
  const std::optional<UInt64> sample = table.SampleAtTime(std::max(time, SInt64{0}));
  SampleInfo info = {};
  if (!sample || !table.SampleAt(*sample, &info)) return std::nullopt;
  UInt64 number = info.chunk;
  ChunkInfo chunk = {};
  if (!table.ChunkAt(number, &chunk)) return std::nullopt;
  const bool is_behind = chunk.decode_time < time || !BeginsRun(table, chunk, number);
  if (is_behind && !PassRun(table, &chunk, &number)) return std::nullopt;
  const SInt64 begin = chunk.decode_time;
  const SInt64 end = PassRun(table, &chunk, &number) ? chunk.decode_time : table.duration();
  return MediaStep{begin, end - begin};
}

}  // namespace quillmere::movies
