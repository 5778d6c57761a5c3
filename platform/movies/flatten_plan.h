/// The plan of a flatten: which bytes of which files go where, before a byte is written.
#pragma once

#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <vector>

#include "data_source.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// Bytes of a file that are copied as they stand.
struct CopyRun {
  UInt64 offset;  ///< in the source, bytes
  UInt64 size;    ///< in bytes
  UInt32 source;  ///< index into a list of sources
};
/// Takes one run; a status other than 0 ends the walk.
using RunVisitor = std::function<OSStatus(const CopyRun&)>;
/// Calls a visitor for runs in the order in which they are written; the first status that is not 0.
using RunWalk = std::function<OSStatus(const RunVisitor&)>;

/// The chunk offsets of one track, in half the memory while all are below 4 GiB.
class ChunkOffsets {
 public:
  void Append(UInt64 offset) {
    if (!is_wide_ && offset > std::numeric_limits<UInt32>::max()) Widen();
    if (is_wide_) {
      wide_.push_back(offset);
    } else {
      narrow_.push_back(static_cast<UInt32>(offset));
    }
    largest_ = std::max(largest_, offset);
  }
  void Reserve(UInt64 count) { narrow_.reserve(static_cast<std::size_t>(count)); }
  UInt64 size() const { return is_wide_ ? wide_.size() : narrow_.size(); }
  UInt64 operator[](UInt64 chunk) const { return is_wide_ ? wide_[chunk] : narrow_[chunk]; }
  UInt64 largest() const { return largest_; }  ///< 0 when there is none

 private:
  void Widen() {
    is_wide_ = true;
    wide_.reserve(narrow_.capacity());
    wide_.assign(narrow_.begin(), narrow_.end());
    narrow_ = {};
  }

  bool is_wide_ = false;
  std::vector<UInt32> narrow_;
  std::vector<UInt64> wide_;
  UInt64 largest_ = 0;
};

struct FlattenPlan {
  /// The files of the runs.
  std::vector<std::shared_ptr<DataSource>> sources;
  /// The media data, in runs as long as can be. A movie may have millions of them, so they are
  /// found from the sample tables again on each walk: the movie has to stand as it was planned.
  RunWalk runs;
  UInt64 media_size = 0;
  /// For each track in the movie's order, where each of its chunks stands in the media data.
  std::vector<ChunkOffsets> chunk_offsets;
  /// For each track, the indices of data references (from 1) whose data is copied.
  std::vector<std::vector<UInt16>> used_references;
};

/// Plans the media data of the movie. Work is by chunk, not by sample; memory is that of the chunk
/// offsets, unless chunks share bytes or a track's chunks do not follow each other in its file:
/// then some 100 bytes more for each chunk.
///
/// The data of new tracks comes first. Then the chunks keep the order in which they lie in their
/// file if that is one file and its tracks are interleaved, so that they stay large runs; otherwise
/// they are merged by the time at which they play. Bytes that several chunks share are written
/// once. couldNotResolveDataRef when a chunk's file can't be found, eofErr when a chunk does not
/// lie within its file as it is now, or a status of the sample tables.
OSStatus PlanFlatten(const MovieRecord& movie, FlattenPlan* plan);

}  // namespace quillmere::movies
