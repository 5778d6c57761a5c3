/// The plan of a flatten: which bytes of which files go where, before a byte is written.
#pragma once

#include <memory>
#include <vector>

#include "data_source.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// Bytes of a file that are copied as they stand.
struct CopyRun {
  const DataSource* source;
  UInt64 offset;  ///< in the source, bytes
  UInt64 size;    ///< in bytes
};

struct FlattenPlan {
  /// Keeps the files of the runs open.
  std::vector<std::shared_ptr<DataSource>> sources;
  /// The media data, in the order in which it is written.
  std::vector<CopyRun> runs;
  UInt64 media_size = 0;
  /// For each track in the movie's order, where each of its chunks stands in the media data.
  std::vector<std::vector<UInt64>> chunk_offsets;
  /// For each track, the indices of data references (from 1) whose data is copied.
  std::vector<std::vector<UInt16>> used_references;
};

/// Plans the media data of the movie. Work and memory are by chunk, not by sample.
///
/// The data of new tracks comes first. Then the chunks keep the order in which they lie in their
/// file if that is one file and its tracks are interleaved, so that they stay large runs; otherwise
/// they are merged by the time at which they play. Bytes that several chunks share are written
/// once. couldNotResolveDataRef when a chunk's file can't be found, eofErr when a chunk does not
/// lie within its file as it is now, or a status of the sample tables.
OSStatus PlanFlatten(const MovieRecord& movie, FlattenPlan* plan);

}  // namespace quillmere::movies
