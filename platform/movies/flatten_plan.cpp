#include "flatten_plan.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

#include "data_references.h"
#include "file_references.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// A source's tracks count as interleaved while no chunk lies behind one that plays this many
/// seconds later.
constexpr double kInterleaveSpan = 5.0;

struct PlannedChunk {
  UInt64 offset;  ///< in its source
  UInt64 size;
  double time;  ///< movie time at which it starts to play, seconds
  UInt32 source;
  UInt32 track;
};

/// Bytes of one source that are written together: a chunk, or chunks that overlap.
struct Region {
  UInt64 begin;
  UInt64 end;
  double time;
  UInt32 source;
  bool is_new;
  UInt64 output = 0;
};

/// Seconds by which a track's media is moved on the movie's time line by its first edit.
double StartOfMedia(const TrackRecord& track, double movie_scale, double media_scale) {
  std::vector<EditRecord> edits;
  if (!EditsOf(track, &edits)) return 0;
  double start = 0;
  for (const EditRecord& edit : edits) {
    if (edit.media_time != kEmptyEdit) {
      return start - static_cast<double>(edit.media_time) / media_scale;
    }
    start += static_cast<double>(edit.track_duration) / movie_scale;
  }
  return 0;
}

class Planner {
 public:
  Planner(const MovieRecord& movie, FlattenPlan* plan) : movie_(movie), plan_(*plan) {}

  OSStatus Run() {
    plan_.chunk_offsets.resize(movie_.tracks.size());
    plan_.used_references.resize(movie_.tracks.size());
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i) {
      const OSStatus status = CollectTrack(static_cast<UInt32>(i));
      if (status != noErr) return status;
    }
    MakeRegions();
    OrderRegions();
    PlaceRegions();
    return noErr;
  }

 private:
  OSStatus CollectTrack(UInt32 index);
  OSStatus SourceIndex(MediaRecord& media, UInt32 track, UInt16 reference, UInt32* source);
  void MakeRegions();
  void OrderRegions();
  void PlaceRegions();
  bool IsInterleaved() const;
  bool IsNew(const PlannedChunk& chunk) const { return movie_.tracks[chunk.track]->is_new; }

  const MovieRecord& movie_;
  FlattenPlan& plan_;
  std::vector<PlannedChunk> chunks_;  ///< by track, in the order of its table
  std::vector<UInt32> region_of_chunk_;
  std::vector<Region> regions_;  ///< by source and offset
  std::vector<UInt32> order_;    ///< regions as they are written
  std::vector<UInt64> sizes_;    ///< of the sources, as they are now
  std::map<std::pair<UInt32, UInt16>, UInt32> source_of_reference_;
};

/// The source that a track's data reference stands for, opened and measured at its first use.
OSStatus Planner::SourceIndex(MediaRecord& media, UInt32 track, UInt16 reference, UInt32* source) {
  const auto known = source_of_reference_.find({track, reference});
  if (known != source_of_reference_.end()) {
    *source = known->second;
    return noErr;
  }
  std::shared_ptr<DataSource> opened;
  const OSStatus status = SourceOfReference(media, reference, &opened);
  if (status != noErr) return status;
  const auto place = std::find(plan_.sources.begin(), plan_.sources.end(), opened);
  *source = static_cast<UInt32>(place - plan_.sources.begin());
  if (place == plan_.sources.end()) {
    struct stat information = {};
    if (fstat(opened->descriptor(), &information) != 0) return files::StatusOfErrno(errno);
    sizes_.push_back(static_cast<UInt64>(information.st_size));
    plan_.sources.push_back(std::move(opened));
  }
  source_of_reference_[{track, reference}] = *source;
  plan_.used_references[track].push_back(reference);
  return noErr;
}

OSStatus Planner::CollectTrack(UInt32 index) {
  const TrackRecord& track = *movie_.tracks[index];
  if (!track.media || SampleTableAtom(track) == nullptr) return noErr;
  const SampleTable* table = nullptr;
  OSStatus status = SampleTableOf(track.media.get(), &table);
  if (status != noErr) return status;
  if (chunks_.size() + table->chunk_count() > std::numeric_limits<UInt32>::max()) {
    return invalidSampleTable;
  }
  const double media_scale = std::max<double>(MediaHeaderOf(track).time_scale, 1);
  const double start = StartOfMedia(track, MovieHeaderOf(movie_).time_scale, media_scale);
  chunks_.reserve(chunks_.size() + table->chunk_count());
  UInt16 last_reference = 0;
  UInt32 source = 0;
  table->ForEachChunk([&](const ChunkInfo& chunk) {
    const UInt16 reference = table->descriptions()[chunk.description - 1].data_reference;
    if (reference != last_reference || last_reference == 0) {
      status = SourceIndex(*track.media, index, reference, &source);
      last_reference = reference;
      if (status != noErr) return false;
    }
    UInt64 end = 0;
    if (chunk.size > 0 &&
        (__builtin_add_overflow(chunk.offset, chunk.size, &end) || end > sizes_[source])) {
      status = eofErr;
      return false;
    }
    const double time = start + static_cast<double>(chunk.decode_time) / media_scale;
    chunks_.push_back({chunk.size > 0 ? chunk.offset : 0, chunk.size, time, source, index});
    return true;
  });
  return status;
}

void Planner::MakeRegions() {
  std::vector<UInt32> by_offset(chunks_.size());
  std::iota(by_offset.begin(), by_offset.end(), 0U);
  std::sort(by_offset.begin(), by_offset.end(), [&](UInt32 a, UInt32 b) {
    const PlannedChunk& left = chunks_[a];
    const PlannedChunk& right = chunks_[b];
    return std::tie(left.source, left.offset, left.size, a) <
           std::tie(right.source, right.offset, right.size, b);
  });
  region_of_chunk_.resize(chunks_.size());
  for (const UInt32 i : by_offset) {
    const PlannedChunk& chunk = chunks_[i];
    const UInt64 end = chunk.offset + chunk.size;
    const bool overlaps = !regions_.empty() && regions_.back().source == chunk.source &&
                          chunk.offset < regions_.back().end;
    if (!overlaps) {
      regions_.push_back({chunk.offset, end, chunk.time, chunk.source, IsNew(chunk)});
    } else {
      Region& region = regions_.back();
      region.end = std::max(region.end, end);
      region.time = std::min(region.time, chunk.time);
      region.is_new = region.is_new || IsNew(chunk);
    }
    region_of_chunk_[i] = static_cast<UInt32>(regions_.size() - 1);
  }
}

/// True when the old media data lies in one file in an order that suits playback.
bool Planner::IsInterleaved() const {
  const Region* previous = nullptr;
  double latest = -std::numeric_limits<double>::infinity();
  for (const Region& region : regions_) {
    if (region.is_new || region.begin == region.end) continue;
    if (previous != nullptr && previous->source != region.source) return false;
    if (region.time < latest - kInterleaveSpan) return false;
    latest = std::max(latest, region.time);
    previous = &region;
  }
  return true;
}

void Planner::OrderRegions() {
  order_.resize(regions_.size());
  std::iota(order_.begin(), order_.end(), 0U);
  std::stable_partition(order_.begin(), order_.end(), [&](UInt32 i) { return regions_[i].is_new; });
  if (IsInterleaved()) return;
  const auto first_old =
      std::find_if(order_.begin(), order_.end(), [&](UInt32 i) { return !regions_[i].is_new; });
  std::stable_sort(first_old, order_.end(),
                   [&](UInt32 a, UInt32 b) { return regions_[a].time < regions_[b].time; });
}

/// Gives every region its place in the output and joins those that lie together in their source.
void Planner::PlaceRegions() {
  for (const UInt32 i : order_) {
    Region& region = regions_[i];
    region.output = plan_.media_size;
    const UInt64 size = region.end - region.begin;
    if (size == 0) continue;
    plan_.media_size += size;
    const DataSource* source = plan_.sources[region.source].get();
    CopyRun* last = plan_.runs.empty() ? nullptr : &plan_.runs.back();
    if (last != nullptr && last->source == source && last->offset + last->size == region.begin) {
      last->size += size;
    } else {
      plan_.runs.push_back({source, region.begin, size});
    }
  }
  for (std::size_t i = 0; i < chunks_.size(); ++i) {
    const Region& region = regions_[region_of_chunk_[i]];
    plan_.chunk_offsets[chunks_[i].track].push_back(region.output +
                                                    (chunks_[i].offset - region.begin));
  }
}

}  // namespace

OSStatus PlanFlatten(const MovieRecord& movie, FlattenPlan* plan) {
  *plan = FlattenPlan();
  return Planner(movie, plan).Run();
}

}  // namespace quillmere::movies
