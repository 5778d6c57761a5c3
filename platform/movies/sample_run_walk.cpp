// The walk over runs of like samples, of sample_table.h.

#include <algorithm>
#include <cstring>
#include <limits>

#include "big_endian.h"
#include "sample_table.h"

namespace quillmere::movies {

SampleTable::RunWalk::RunWalk(const SampleTable& table, UInt64 sample)
    : table_(&table), sample_(std::min(sample, table.sample_count())) {
  SampleInfo info = {};
  if (!table.SampleAt(sample, &info)) {
    decode_time_ = table.duration();
    return;
  }
  decode_time_ = info.decode_time;
  chunk_number_ = info.chunk;
  chunk_run_ = static_cast<std::size_t>(&table.RunOfChunk(info.chunk) - table.chunk_runs_.data());
  EnterChunk();
  offset_ = info.offset;
  times_ = table.TimeRunOf(sample);
  EnterTimes();
  EnterCompositions();
  sync_entry_ = table.FirstSyncEntry(sample + 1);
}

void SampleTable::RunWalk::EnterChunk() {
  const std::vector<ChunkRun>& runs = table_->chunk_runs_;
  while (chunk_run_ + 1 < runs.size() && runs[chunk_run_ + 1].first_chunk <= chunk_number_)
    ++chunk_run_;
  table_->PlaceChunk(runs[chunk_run_], chunk_number_, &chunk_);
  chunk_end_ = chunk_.first_sample + chunk_.sample_count;
  offset_ = chunk_.offset;
}

void SampleTable::RunWalk::EnterTimes() {
  const UInt8* const entry = table_->times_.entries + 8 * times_.entry;
  // The last time run goes on where there are more samples than it counts.
  const bool is_last = times_.entry + 1 >= table_->times_.count;
  times_end_ = is_last ? table_->sample_count_ : times_.first_sample + ReadU32(entry);
  duration_ = std::max(ReadS32(entry + 4), SInt32{0});  // time does not run backwards
}

void SampleTable::RunWalk::EnterCompositions() {
  const RawTable& compositions = table_->compositions_;
  if (composition_entry_ == 0 && sample_ > 0) {  // the walk begins here
    const std::vector<UInt64>& marks = table_->composition_marks_;
    const auto after = std::ranges::upper_bound(marks, sample_);
    if (after != marks.begin()) {
      composition_entry_ = static_cast<UInt64>(after - marks.begin() - 1) * kEntriesPerMark;
      compositions_end_ = *std::prev(after);
    }
  }
  while (composition_entry_ < compositions.count && compositions_end_ <= sample_) {
    const UInt8* record = compositions.entries + 8 * composition_entry_++;
    compositions_end_ += ReadU32(record);
    composition_offset_ = ReadS32(record + 4);
  }
  if (compositions_end_ > sample_) return;
  compositions_end_ = std::numeric_limits<UInt64>::max();
  composition_offset_ = 0;
}

UInt64 SampleTable::RunWalk::EndOfSyncRun(UInt64 end, bool* is_sync) {
  const RawTable& syncs = table_->syncs_;
  const auto next = [&] {
    return sync_entry_ < syncs.count ? ReadU32(syncs.entries + 4 * sync_entry_) - UInt64{1} : end;
  };
  while (sync_entry_ < syncs.count && next() < sample_)
    ++sync_entry_;
  *is_sync = sync_entry_ < syncs.count && next() == sample_;
  if (!*is_sync) return std::min(end, next());
  UInt64 run_end = sample_;
  for (; run_end < end && sync_entry_ < syncs.count && next() == run_end; ++sync_entry_)
    ++run_end;
  return run_end;
}

UInt64 SampleTable::RunWalk::EndOfSizeRun(UInt64 end) const {
  if (table_->constant_size_ != 0) return end;
  UInt64 sample = sample_ + 1;
  if (table_->size_bits_ == 32) {
    const UInt8* const sizes = table_->sizes_.entries;
    while (sample < end && std::memcmp(sizes + 4 * sample, sizes + 4 * sample_, 4) == 0)
      ++sample;
  } else {
    while (sample < end && table_->SizeOf(sample) == table_->SizeOf(sample_))
      ++sample;
  }
  return sample;
}

bool SampleTable::RunWalk::EnterNextChunk() {
  if (sample_ >= table_->sample_count_) return false;
  while (sample_ >= chunk_end_) {
    ++chunk_number_;
    EnterChunk();
  }
  return true;
}

bool SampleTable::RunWalk::Next(SampleInfo* first, UInt64* count, UInt64* size) {
  if (NextDescription() == 0) return false;
  while (sample_ >= times_end_) {
    times_.first_sample = times_end_;
    ++times_.entry;
    EnterTimes();
  }
  if (sample_ >= compositions_end_) EnterCompositions();
  UInt64 end = std::min({chunk_end_, times_end_, compositions_end_});
  const DescriptionInfo& description = table_->DescriptionOf(chunk_.description);
  const bool has_packets = description.frames_per_packet != 0;
  if (!has_packets) end = EndOfSizeRun(end);
  first->is_sync = true;
  if (table_->syncs_.entries != nullptr) end = EndOfSyncRun(end, &first->is_sync);
  *count = end - sample_;
  if (has_packets) {
    const UInt64 place = sample_ - chunk_.first_sample;
    offset_ = chunk_.offset + place / description.frames_per_packet * description.bytes_per_packet;
    first->size = description.bytes_per_packet;
    *size = table_->SizeInChunk(chunk_, sample_, *count);
  } else {
    first->size = table_->SizeOf(sample_);
    *size = first->size * *count;
  }
  first->offset = offset_;
  first->decode_time = decode_time_;
  first->duration = duration_;
  first->composition_offset = composition_offset_;
  first->description = chunk_.description;
  first->chunk = chunk_number_;
  offset_ += *size;
  decode_time_ += static_cast<SInt64>(*count) * duration_;
  sample_ = end;
  return true;
}

}  // namespace quillmere::movies
