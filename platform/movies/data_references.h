/// Data references: from a reference to the open file that it names.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "data_source.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// The file that a reference given by the program names; it need not exist. Only type `alis`.
/// invalidDataRef for anything else.
OSStatus PathOfDataReference(Handle reference, OSType type, std::filesystem::path* path);
/// An alias record of a path that need not exist: name, POSIX path and mount point.
std::vector<UInt8> MakeAliasRecord(const std::filesystem::path& path);

/// The open file of a media's data reference, `index` from 1.
///
/// A path that stands in a movie file is not trusted: it resolves only to a regular file in the
/// movie's own folder, beneath it, or directly in a folder beside it, judged after symbolic links.
/// References of other types than `alis` and `url `, and remote URLs, do not resolve. A media
/// without any `dref` has its data in the movie's file. couldNotResolveDataRef when there is no
/// such file.
OSStatus SourceOfReference(const MediaRecord& media, UInt16 index,
                           std::shared_ptr<DataSource>* source);
/// All files other than the movie's own that its data references resolve to.
std::vector<std::shared_ptr<DataSource>> ReferencedSources(const MovieRecord& movie);

}  // namespace quillmere::movies
