#include "new_samples.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "big_endian.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

namespace {

/// A size table lists each sample when sizes differ; more than this many are not listed.
constexpr UInt64 kMaximumSamples = UInt64{1} << 24;

void ReplaceChild(Atom* parent, OSType type, std::vector<UInt8> payload) {
  Atom* child = parent->Find(type);
  if (child == nullptr) child = &parent->Add(Atom(type));
  child->set_payload(std::move(payload));
}

/// Version, flags and a count that is filled in later.
std::vector<UInt8> TableHead(UInt64 count) {
  std::vector<UInt8> bytes(4);
  AppendU32(&bytes, static_cast<UInt32>(count));
  return bytes;
}

}  // namespace

OSStatus NewSamples::Add(UInt64 offset, UInt32 size, UInt32 duration, UInt32 description,
                         UInt32 count, bool is_sync) {
  UInt64 end = 0;
  if (count == 0) return paramErr;
  if (!AddFits(offset, UInt64{size} * count, &end)) return invalidSampleTable;
  if (sample_count_ + count > kMaximumSamples) return invalidSampleTable;
  if (!times_.empty() && times_.back().duration == duration) {
    times_.back().count += count;
  } else {
    times_.push_back({count, duration});
  }
  chunks_.push_back({offset, count, size, description, is_sync});
  duration_ += UInt64{duration} * count;
  sample_count_ += count;
  changed_ = true;
  return noErr;
}

std::vector<UInt8> NewSamples::TimeToSample() const {
  std::vector<UInt8> bytes = TableHead(times_.size());
  for (const TimeRun& run : times_) {
    AppendU32(&bytes, run.count);
    AppendU32(&bytes, run.duration);
  }
  return bytes;
}

std::vector<UInt8> NewSamples::SampleToChunk() const {
  std::vector<UInt8> bytes = TableHead(0);
  UInt32 entries = 0;
  for (std::size_t i = 0; i < chunks_.size(); ++i) {
    const Chunk& chunk = chunks_[i];
    if (i > 0 && chunks_[i - 1].samples == chunk.samples &&
        chunks_[i - 1].description == chunk.description) {
      continue;
    }
    AppendU32(&bytes, static_cast<UInt32>(i + 1));
    AppendU32(&bytes, chunk.samples);
    AppendU32(&bytes, chunk.description);
    ++entries;
  }
  WriteU32(bytes.data() + 4, entries);
  return bytes;
}

std::vector<UInt8> NewSamples::SampleSizes() const {
  const bool is_constant = std::all_of(chunks_.begin(), chunks_.end(), [&](const Chunk& chunk) {
    return chunk.size_of_sample == chunks_.front().size_of_sample && chunk.size_of_sample != 0;
  });
  std::vector<UInt8> bytes =
      TableHead(is_constant && !chunks_.empty() ? chunks_.front().size_of_sample : 0);
  AppendU32(&bytes, static_cast<UInt32>(sample_count_));
  if (is_constant) return bytes;
  for (const Chunk& chunk : chunks_) {
    for (UInt32 i = 0; i < chunk.samples; ++i)
      AppendU32(&bytes, chunk.size_of_sample);
  }
  return bytes;
}

std::vector<UInt8> NewSamples::SyncSamples() const {
  std::vector<UInt8> bytes = TableHead(0);
  UInt32 sample = 1;
  UInt32 entries = 0;
  for (const Chunk& chunk : chunks_) {
    for (UInt32 i = 0; i < chunk.samples; ++i, ++sample) {
      if (!chunk.is_sync) continue;
      AppendU32(&bytes, sample);
      ++entries;
    }
  }
  WriteU32(bytes.data() + 4, entries);
  return bytes;
}

void NewSamples::WriteTo(Atom* stbl) {
  if (!std::exchange(changed_, false)) return;
  ReplaceChild(stbl, "stts"_4cc, TimeToSample());
  ReplaceChild(stbl, "stsc"_4cc, SampleToChunk());
  ReplaceChild(stbl, "stsz"_4cc, SampleSizes());
  const bool all_sync =
      std::all_of(chunks_.begin(), chunks_.end(), [](const Chunk& chunk) { return chunk.is_sync; });
  if (!all_sync) ReplaceChild(stbl, "stss"_4cc, SyncSamples());

  const bool is_wide = std::any_of(chunks_.begin(), chunks_.end(), [](const Chunk& chunk) {
    return chunk.offset > std::numeric_limits<UInt32>::max();
  });
  stbl->Remove(is_wide ? "stco"_4cc : "co64"_4cc);
  std::vector<UInt8> offsets = TableHead(chunks_.size());
  for (const Chunk& chunk : chunks_) {
    if (is_wide) {
      AppendU64(&offsets, chunk.offset);
    } else {
      AppendU32(&offsets, static_cast<UInt32>(chunk.offset));
    }
  }
  ReplaceChild(stbl, is_wide ? "co64"_4cc : "stco"_4cc, std::move(offsets));
}

}  // namespace quillmere::movies
