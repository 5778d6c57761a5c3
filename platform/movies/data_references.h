/// Data references: from a reference to the open file that it names.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "atom.h"
#include "data_source.h"
#include "movie_toolbox.h"

namespace quillmere::movies {

/// The file that a reference given by the program names; it need not exist. Only type `alis`.
/// invalidDataRef for anything else.
OSStatus PathOfDataReference(Handle reference, OSType type, std::filesystem::path* path);
/// An alias record of a path that need not exist: name, POSIX path and mount point.
std::vector<UInt8> MakeAliasRecord(const std::filesystem::path& path);
/// The same with all that identifies the file, if it exists.
std::vector<UInt8> AliasRecordOf(const std::filesystem::path& path);

/// Whether two paths, either of which may be empty, name one file.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);
/// How many data references a media has.
std::size_t CountReferences(const MediaRecord& media);
/// The path of the file of a media's data reference, by the same rule as below.
OSStatus PathOfReference(const MediaRecord& media, UInt16 index, std::filesystem::path* path);
/// Adds a `dref` entry that names a file, `path`, which may be empty where it is not known.
OSStatus AddReference(MediaRecord* media, Atom entry, const std::filesystem::path& path,
                      UInt16* index);
/// The index of the data reference of a media to the same file as that of another media, which is
/// added where there is none. couldNotResolveDataRef where the other one doesn't resolve.
OSStatus FindOrAddReference(const MediaRecord& source, UInt16 source_index, MediaRecord* media,
                            UInt16* index);
/// Forgets the open files of the movie, which have been written to.
void ReopenSources(MovieRecord* movie);

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
