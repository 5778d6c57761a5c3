#include "flatten_plan.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

#include "big_endian.h"
#include "data_references.h"
#include "file_references.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// A source's tracks count as interleaved while no chunk lies behind one that plays this many
/// seconds later.
constexpr double kInterleaveSpan = 5.0;

struct PlannedChunk {
  UInt64 offset = 0;  ///< in its source
  UInt64 size = 0;
  double time = 0;  ///< movie time at which it starts to play, seconds
  UInt32 source = 0;
  UInt32 track = 0;
  bool is_new = false;
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

/// What the planner knows of a track.
struct TrackPlan {
  const SampleTable* table = nullptr;
  double start = 0;  ///< of its media in the movie, seconds
  double media_scale = 1;
  bool is_new = false;
  std::vector<UInt32> sources;  ///< by sample description
};

/// Goes through the chunks of a track. A chunk without bytes stands behind the one before it.
class ChunkCursor {
 public:
  ChunkCursor(const TrackPlan& track, UInt32 index) : track_(&track), walk_(*track.table) {
    chunk_.track = index;
    chunk_.is_new = track.is_new;
  }
  bool Next() {
    ChunkInfo info = {};
    if (!walk_.Next(&info)) return false;
    if (info.size > 0) {
      chunk_.offset = info.offset;
      chunk_.source = track_->sources[info.description - 1];
    } else {
      chunk_.offset += chunk_.size;
    }
    chunk_.size = info.size;
    chunk_.time = track_->start + static_cast<double>(info.decode_time) / track_->media_scale;
    return true;
  }
  const PlannedChunk& chunk() const { return chunk_; }

 private:
  const TrackPlan* track_;
  SampleTable::ChunkWalk walk_;
  PlannedChunk chunk_;
};

bool IsBefore(const PlannedChunk& a, const PlannedChunk& b, bool by_time) {
  if (a.is_new != b.is_new) return a.is_new;
  if (by_time && !a.is_new && a.time != b.time) return a.time < b.time;
  return std::tie(a.source, a.offset, a.track) < std::tie(b.source, b.offset, b.track);
}

/// Old media data counts as interleaved when it lies in one file in an order that suits playback.
class InterleaveCheck {
 public:
  void Add(const PlannedChunk& chunk) { Add(chunk.is_new, chunk.size, chunk.source, chunk.time); }
  void Add(const Region& region) {
    Add(region.is_new, region.end - region.begin, region.source, region.time);
  }
  bool is_interleaved() const { return is_interleaved_; }

 private:
  void Add(bool is_new, UInt64 size, UInt32 source, double time) {
    if (is_new || size == 0) return;
    if ((has_source_ && source != source_) || time < latest_ - kInterleaveSpan) {
      is_interleaved_ = false;
    }
    has_source_ = true;
    source_ = source;
    latest_ = std::max(latest_, time);
  }

  bool is_interleaved_ = true;
  bool has_source_ = false;
  UInt32 source_ = 0;
  double latest_ = -std::numeric_limits<double>::infinity();
};

/// Calls `visit(const PlannedChunk&)` for the chunks of all tracks, by source and offset or by
/// time, those of new tracks first, until it gives false. Each track has to be in that order by
/// itself.
template <class Visit>
void MergeChunks(const std::vector<TrackPlan>& tracks, bool by_time, Visit visit) {
  std::vector<ChunkCursor> cursors;
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    if (tracks[i].table == nullptr) continue;
    cursors.emplace_back(tracks[i], static_cast<UInt32>(i));
    if (!cursors.back().Next()) cursors.pop_back();
  }
  // A heap with the next chunk on top. Its track often goes on, so the top is replaced in place.
  const auto is_before = [by_time](const ChunkCursor& a, const ChunkCursor& b) {
    return IsBefore(a.chunk(), b.chunk(), by_time);
  };
  const auto sink = [&](std::size_t place) {
    for (std::size_t child = 2 * place + 1; child < cursors.size(); child = 2 * place + 1) {
      if (child + 1 < cursors.size() && is_before(cursors[child + 1], cursors[child])) ++child;
      if (!is_before(cursors[child], cursors[place])) return;
      std::swap(cursors[place], cursors[child]);
      place = child;
    }
  };
  for (std::size_t place = cursors.size(); place-- > 0;)
    sink(place);
  while (!cursors.empty()) {
    if (!visit(cursors.front().chunk())) return;
    if (!cursors.front().Next()) {
      std::swap(cursors.front(), cursors.back());
      cursors.pop_back();
    }
    sink(0);
  }
}

/// Joins bytes that lie one behind the other in a source.
class RunJoiner {
 public:
  explicit RunJoiner(const RunVisitor& visit) : visit_(visit) {}
  OSStatus Add(UInt32 source, UInt64 offset, UInt64 size) {
    if (source == run_.source && offset == run_.offset + run_.size) {
      run_.size += size;  // within a file
      return noErr;
    }
    if (size == 0) return noErr;
    const OSStatus status = Finish();
    run_ = {offset, size, source};
    return status;
  }
  OSStatus Finish() { return run_.size > 0 ? visit_(run_) : OSStatus{noErr}; }

 private:
  const RunVisitor& visit_;
  CopyRun run_ = {};
};

OSStatus WalkMergedRuns(const std::vector<TrackPlan>& tracks, bool by_time,
                        const RunVisitor& visit) {
  RunJoiner joiner(visit);
  OSStatus status = noErr;
  MergeChunks(tracks, by_time, [&](const PlannedChunk& chunk) {
    status = joiner.Add(chunk.source, chunk.offset, chunk.size);
    return status == noErr;
  });
  return status == noErr ? joiner.Finish() : status;
}

OSStatus WalkListedRuns(const std::vector<CopyRun>& runs, const RunVisitor& visit) {
  RunJoiner joiner(visit);
  for (const CopyRun& run : runs) {
    const OSStatus status = joiner.Add(run.source, run.offset, run.size);
    if (status != noErr) return status;
  }
  return joiner.Finish();
}

class Planner {
 public:
  Planner(const MovieRecord& movie, FlattenPlan* plan) : movie_(movie), plan_(*plan) {}

  OSStatus Run() {
    plan_.chunk_offsets.resize(movie_.tracks.size());
    plan_.used_references.resize(movie_.tracks.size());
    tracks_.resize(movie_.tracks.size());
    for (std::size_t i = 0; i < movie_.tracks.size(); ++i) {
      const OSStatus status = CollectTrack(static_cast<UInt32>(i));
      if (status != noErr) return status;
    }
    bool by_time = false;
    if (tracks_ascend_ && FindOrder(&by_time)) {
      PlaceChunks(by_time);
    } else {
      CollectChunks();
      MakeRegions();
      OrderRegions();
      PlaceRegions();
    }
    return noErr;
  }

 private:
  OSStatus CollectTrack(UInt32 index);
  OSStatus SourceIndex(MediaRecord& media, UInt32 track, UInt16 reference, UInt32* source);
  OSStatus CheckChunks(MediaRecord& media, UInt32 index);
  bool FindOrder(bool* by_time) const;
  void PlaceChunks(bool by_time);
  void CollectChunks();
  void MakeRegions();
  void OrderRegions();
  void PlaceRegions();

  const MovieRecord& movie_;
  FlattenPlan& plan_;
  std::vector<TrackPlan> tracks_;
  bool tracks_ascend_ = true;  ///< each track's chunks follow each other by source and offset
  std::vector<UInt64> sizes_;  ///< of the sources, as they are now
  std::map<std::pair<UInt32, UInt16>, UInt32> source_of_reference_;

  std::vector<PlannedChunk> chunks_;  ///< by track, in the order of its table
  std::vector<UInt32> region_of_chunk_;
  std::vector<Region> regions_;  ///< by source and offset
  std::vector<UInt32> order_;    ///< regions as they are written
};

// --- Tracks and their files ----------------------------------------------------------------------

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
  const OSStatus status = SampleTableOf(track.media.get(), &table);
  if (status != noErr) return status;
  TrackPlan& plan = tracks_[index];
  plan.table = table;
  plan.is_new = track.is_new;
  plan.media_scale = std::max<double>(MediaHeaderOf(track).time_scale, 1);
  plan.start = StartOfMedia(track, MovieHeaderOf(movie_).time_scale, plan.media_scale);
  plan.sources.resize(table->descriptions().size());
  plan_.chunk_offsets[index].Reserve(table->chunk_count());
  return CheckChunks(*track.media, index);
}

/// Opens the files of a track's chunks, checks that the chunks lie within them, and looks if they
/// follow each other there.
OSStatus Planner::CheckChunks(MediaRecord& media, UInt32 index) {
  TrackPlan& track = tracks_[index];
  OSStatus status = noErr;
  UInt32 last_description = 0;
  UInt32 last_source = 0;
  UInt64 last_end = 0;
  track.table->ForEachChunk([&](const ChunkInfo& chunk) {
    UInt32& source = track.sources[chunk.description - 1];
    if (chunk.description != last_description) {
      const UInt16 reference = track.table->descriptions()[chunk.description - 1].data_reference;
      status = SourceIndex(media, index, reference, &source);
      last_description = chunk.description;
      if (status != noErr) return false;
    }
    if (chunk.size == 0) return true;
    UInt64 end = 0;
    if (!AddFits(chunk.offset, chunk.size, &end) || end > sizes_[source]) {
      status = eofErr;
      return false;
    }
    if (std::tie(source, chunk.offset) < std::tie(last_source, last_end)) tracks_ascend_ = false;
    last_source = source;
    last_end = end;
    return true;
  });
  return status;
}

// --- Tracks whose chunks follow each other and share nothing -------------------------------------

/// Finds out in which order the chunks are written. False when chunks of different tracks share
/// bytes.
bool Planner::FindOrder(bool* by_time) const {
  InterleaveCheck check;
  std::vector<UInt64> new_ends(plan_.sources.size());
  std::vector<UInt64> old_ends(plan_.sources.size());
  std::vector<UInt64> new_begins(plan_.sources.size(), std::numeric_limits<UInt64>::max());
  bool is_shared = false;
  MergeChunks(tracks_, false, [&](const PlannedChunk& chunk) {
    if (chunk.size == 0) return true;
    UInt64& end = (chunk.is_new ? new_ends : old_ends)[chunk.source];
    is_shared = chunk.offset < end;
    end = chunk.offset + chunk.size;
    if (chunk.is_new) {
      new_begins[chunk.source] = std::min(new_begins[chunk.source], chunk.offset);
    } else {  // new chunks have all been seen
      is_shared =
          is_shared || (chunk.offset < new_ends[chunk.source] && end > new_begins[chunk.source]);
    }
    check.Add(chunk);
    return !is_shared;
  });
  *by_time = !check.is_interleaved();
  return !is_shared;
}

void Planner::PlaceChunks(bool by_time) {
  MergeChunks(tracks_, by_time, [this](const PlannedChunk& chunk) {
    plan_.chunk_offsets[chunk.track].Append(plan_.media_size);
    plan_.media_size += chunk.size;
    return true;
  });
  plan_.runs = [tracks = std::move(tracks_), by_time](const RunVisitor& visit) {
    return WalkMergedRuns(tracks, by_time, visit);
  };
}

// --- Any tracks ----------------------------------------------------------------------------------

void Planner::CollectChunks() {
  std::size_t count = 0;
  for (const TrackPlan& track : tracks_)
    count += track.table != nullptr ? track.table->chunk_count() : 0;
  chunks_.reserve(count);
  for (std::size_t i = 0; i < tracks_.size(); ++i) {
    if (tracks_[i].table == nullptr) continue;
    ChunkCursor cursor(tracks_[i], static_cast<UInt32>(i));
    while (cursor.Next())
      chunks_.push_back(cursor.chunk());
  }
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
      regions_.push_back({chunk.offset, end, chunk.time, chunk.source, chunk.is_new});
    } else {
      Region& region = regions_.back();
      region.end = std::max(region.end, end);
      region.time = std::min(region.time, chunk.time);
      region.is_new = region.is_new || chunk.is_new;
    }
    region_of_chunk_[i] = static_cast<UInt32>(regions_.size() - 1);
  }
}

void Planner::OrderRegions() {
  order_.resize(regions_.size());
  std::iota(order_.begin(), order_.end(), 0U);
  std::stable_partition(order_.begin(), order_.end(), [&](UInt32 i) { return regions_[i].is_new; });
  InterleaveCheck check;
  for (const Region& region : regions_)
    check.Add(region);
  if (check.is_interleaved()) return;
  const auto first_old =
      std::find_if(order_.begin(), order_.end(), [&](UInt32 i) { return !regions_[i].is_new; });
  std::stable_sort(first_old, order_.end(),
                   [&](UInt32 a, UInt32 b) { return regions_[a].time < regions_[b].time; });
}

void Planner::PlaceRegions() {
  std::vector<CopyRun> runs;
  runs.reserve(order_.size());
  for (const UInt32 i : order_) {
    Region& region = regions_[i];
    region.output = plan_.media_size;
    plan_.media_size += region.end - region.begin;
    runs.push_back({region.begin, region.end - region.begin, region.source});
  }
  for (std::size_t i = 0; i < chunks_.size(); ++i) {
    const Region& region = regions_[region_of_chunk_[i]];
    plan_.chunk_offsets[chunks_[i].track].Append(region.output +
                                                 (chunks_[i].offset - region.begin));
  }
  plan_.runs = [runs = std::move(runs)](const RunVisitor& visit) {
    return WalkListedRuns(runs, visit);
  };
}

}  // namespace

OSStatus PlanFlatten(const MovieRecord& movie, FlattenPlan* plan) {
  *plan = FlattenPlan();
  return Planner(movie, plan).Run();
}

}  // namespace quillmere::movies
