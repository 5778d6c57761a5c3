#include "data_references.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "big_endian.h"
#include "media_editing.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kAliasFixedSize = 150;
constexpr UInt16 kAliasVersion = 2;
/// Tags of alias items.
constexpr UInt16 kTagPosixPath = 18;
constexpr UInt16 kTagMountPoint = 19;
constexpr UInt16 kTagEnd = 0xFFFF;

void PutPascalString(std::string_view text, std::size_t capacity, UInt8* place) {
  const std::size_t length = std::min(text.size(), capacity);
  place[0] = static_cast<UInt8>(length);
  std::copy_n(text.begin(), length, place + 1);
}

void AppendAliasItem(UInt16 tag, std::string_view data, std::vector<UInt8>* record) {
  const std::size_t start = record->size();
  record->resize(start + 4);
  WriteU16(record->data() + start, tag);
  WriteU16(record->data() + start + 2, static_cast<UInt16>(data.size()));
  record->insert(record->end(), data.begin(), data.end());
  if (data.size() % 2 != 0) record->push_back(0);
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// Undoes percent escapes; nothing when one is damaged or stands for a zero byte.
std::optional<std::string> Unescape(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      plain += text[i];
      continue;
    }
    if (text.size() - i < 3) return std::nullopt;
    const int high = HexDigit(text[i + 1]);
    const int low = HexDigit(text[i + 2]);
    if (high < 0 || low < 0 || high + low == 0) return std::nullopt;
    plain += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return plain;
}

/// True for "scheme:" at the start, as against a relative path.
bool HasScheme(std::string_view url) {
  const std::size_t colon = url.find_first_of(":/?#");
  return colon != std::string_view::npos && colon > 0 && url[colon] == ':';
}

/// The path in a file URL or relative reference; empty for any other URL.
fs::path PathOfUrl(std::span<const UInt8> bytes) {
  std::string_view url(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  url = url.substr(0, url.find('\0'));
  url = url.substr(0, url.find_first_of("?#"));
  constexpr std::string_view kFile = "file:";
  if (url.starts_with(kFile)) {
    url.remove_prefix(kFile.size());
    if (url.starts_with("//")) {
      url.remove_prefix(2);
      const std::size_t slash = url.find('/');
      if (slash == std::string_view::npos) return {};
      const std::string_view host = url.substr(0, slash);
      if (!host.empty() && host != "localhost") return {};
      url.remove_prefix(slash);
    }
  } else if (HasScheme(url) || url.starts_with("//")) {
    return {};
  }
  return Unescape(url).value_or(std::string());
}

/// True when a movie in `folder` may refer to `file`; both are free of symbolic links.
bool IsWithinReach(const fs::path& folder, const fs::path& file) {
  const auto [end_of_folder, rest] =
      std::mismatch(folder.begin(), folder.end(), file.begin(), file.end());
  if (end_of_folder == folder.end() && rest != file.end()) return true;
  return file.parent_path().parent_path() == folder.parent_path();
}

/// The first candidate that exists within reach of the movie; empty if none does.
fs::path PathWithinReach(const MovieRecord& movie, const std::vector<fs::path>& candidates) {
  std::error_code error;
  fs::path folder;
  if (!movie.trusts_references) {
    const fs::path movie_file = fs::canonical(movie.path, error);
    if (error) return {};
    folder = movie_file.parent_path();
  }
  for (const fs::path& candidate : candidates) {
    if (candidate.empty()) continue;
    fs::path file = fs::canonical(folder / candidate, error);
    if (error || !fs::is_regular_file(file, error)) continue;
    if (movie.trusts_references || IsWithinReach(folder, file)) return file;
  }
  return {};
}

/// The file that an entry of a movie's own `dref` names; empty if it can't be found.
fs::path PathOfEntry(const MovieRecord& movie, const Atom& entry) {
  DataReferenceEntry reference;
  if (!ReadDataReferenceEntry(entry, &reference)) return {};
  const bool is_alias = reference.type == "alis"_4cc;
  const bool is_url = reference.type == "url "_4cc;
  const bool is_urn = reference.type == "urn "_4cc;
  if (reference.is_self) return is_alias || is_url || is_urn ? movie.path : fs::path();
  if (is_url) return PathWithinReach(movie, {PathOfUrl(reference.data)});
  files::AliasContent alias;
  if (!is_alias || !files::ReadAlias(reference.data, &alias)) return {};
  return PathWithinReach(movie, {alias.relative_path, alias.absolute_path});
}

bool IsSelf(const Atom& entry) {
  DataReferenceEntry reference;
  return ReadDataReferenceEntry(entry, &reference) && reference.is_self;
}

std::shared_ptr<DataSource> ResolveEntry(const MovieRecord& movie, const Atom& entry) {
  const fs::path path = PathOfEntry(movie, entry);
  if (path.empty()) return nullptr;
  if (IsSelf(entry)) return movie.source;
  std::shared_ptr<DataSource> source;
  return OpenDataSource(path, &source) == noErr ? source : nullptr;
}

const Atom* ReferencesOf(const MediaRecord& media) {
  return TrackAtom(*media.track).FindPath({"mdia"_4cc, "minf"_4cc, "dinf"_4cc, "dref"_4cc});
}

}  // namespace

std::vector<UInt8> MakeAliasRecord(const fs::path& path) {
  std::vector<UInt8> record(kAliasFixedSize);
  WriteU16(record.data() + 6, kAliasVersion);
  WriteU16(record.data() + 42, 0x482B);  // a volume with Unicode names
  PutPascalString(path.filename().string(), 63, record.data() + 50);
  WriteU16(record.data() + 130, 0xFFFF);  // no relative path
  WriteU16(record.data() + 132, 0xFFFF);
  AppendAliasItem(kTagPosixPath, path.string(), &record);
  AppendAliasItem(kTagMountPoint, "/", &record);
  AppendAliasItem(kTagEnd, {}, &record);
  WriteU16(record.data() + 4, static_cast<UInt16>(record.size()));
  return record;
}

std::vector<UInt8> AliasRecordOf(const fs::path& path) {
  FSRef file{};
  Handle alias = nullptr;
  if (files::ReferenceOf(path, &file) != noErr || FSNewAlias(nullptr, &file, &alias) != noErr)
    return MakeAliasRecord(path);
  const auto* bytes = reinterpret_cast<const UInt8*>(*alias);
  std::vector<UInt8> record(bytes, bytes + GetHandleSize(alias));
  DisposeHandle(alias);
  return record;
}

OSStatus PathOfDataReference(Handle reference, OSType type, fs::path* path) {
  if (reference == nullptr || type != "alis"_4cc) return invalidDataRef;
  FSRef target;
  if (FSResolveAlias(nullptr, reference, &target, nullptr) == noErr) {
    return files::PathOf(target, path);
  }
  const std::span bytes(reinterpret_cast<const UInt8*>(*reference),
                        static_cast<std::size_t>(GetHandleSize(reference)));
  files::AliasContent content;
  if (!files::ReadAlias(bytes, &content) || content.absolute_path.empty()) return invalidDataRef;
  *path = content.absolute_path;
  return noErr;
}

bool IsSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return !a.empty() && !b.empty() && (a == b || fs::equivalent(a, b, error));
}

std::size_t CountReferences(const MediaRecord& media) {
  const Atom* dref = ReferencesOf(media);
  return dref != nullptr ? dref->children().size() : 0;
}

OSStatus PathOfReference(const MediaRecord& media, UInt16 index, fs::path* path) {
  const MovieRecord& movie = *media.track->movie;
  const Atom* dref = ReferencesOf(media);
  path->clear();
  if (dref == nullptr) {
    *path = movie.path;
  } else if (index >= 1 && index <= dref->children().size()) {
    const bool is_given = index <= media.given.size() && !media.given[index - 1U].path.empty();
    *path =
        is_given ? media.given[index - 1U].path : PathOfEntry(movie, dref->children()[index - 1U]);
  }
  return path->empty() ? OSStatus{couldNotResolveDataRef} : noErr;
}

OSStatus SourceOfReference(const MediaRecord& media, UInt16 index,
                           std::shared_ptr<DataSource>* source) {
  const MovieRecord& movie = *media.track->movie;
  const Atom* dref = ReferencesOf(media);
  if (dref == nullptr) {
    *source = movie.source;
  } else if (index == 0 || index > dref->children().size()) {
    *source = nullptr;
  } else if (index <= media.given.size() && !media.given[index - 1U].path.empty()) {
    const GivenReference& given = media.given[index - 1U];
    if (!given.source && OpenDataSource(given.path, &given.source) != noErr) given.source = nullptr;
    *source = given.source;
  } else {
    *source = ResolveEntry(movie, dref->children()[index - 1U]);
  }
  return *source ? noErr : OSStatus{couldNotResolveDataRef};
}

void ReopenSources(MovieRecord* movie) {
  std::shared_ptr<DataSource> source;
  if (movie->source && OpenDataSource(movie->path, &source) == noErr) movie->source = source;
  for (const auto& track : movie->tracks) {
    if (!track->media) continue;
    for (const GivenReference& given : track->media->given)
      given.source = nullptr;
  }
}

std::vector<std::shared_ptr<DataSource>> ReferencedSources(const MovieRecord& movie) {
  std::vector<std::shared_ptr<DataSource>> sources;
  for (const auto& track : movie.tracks) {
    const Atom* dref = track->media ? ReferencesOf(*track->media) : nullptr;
    if (dref == nullptr) continue;
    for (const Atom& entry : dref->children()) {
      std::shared_ptr<DataSource> source = ResolveEntry(movie, entry);
      if (source && source != movie.source) sources.push_back(std::move(source));
    }
  }
  return sources;
}

}  // namespace quillmere::movies

OSErr QTNewDataReferenceFromFSRef(const FSRef* file, [[maybe_unused]] UInt32 flags,
                                  Handle* data_reference, OSType* type) {
  if (file == nullptr || data_reference == nullptr || type == nullptr) return paramErr;
  *type = "alis"_4cc;
  return FSNewAlias(nullptr, file, data_reference);
}

OSErr QTNewDataReferenceFromFSRefCFString(const FSRef* folder, CFStringRef name,
                                          [[maybe_unused]] UInt32 flags, Handle* data_reference,
                                          OSType* type) {
  if (folder == nullptr || data_reference == nullptr || type == nullptr) return paramErr;
  *data_reference = nullptr;
  const std::string file_name = quillmere::ToUtf8(name);
  if (file_name.empty() || file_name == "." || file_name == ".." ||
      file_name.find('/') != std::string::npos || file_name.find('\0') != std::string::npos) {
    return bdNamErr;
  }
  if (CFStringGetLength(name) > 255) return errFSNameTooLong;
  std::filesystem::path path;
  const OSStatus status = quillmere::files::PathOf(*folder, &path);
  if (status != noErr) return static_cast<OSErr>(status);
  const std::vector<UInt8> record = quillmere::movies::MakeAliasRecord(path / file_name);
  *type = "alis"_4cc;
  return PtrToHand(record.data(), data_reference, static_cast<Size>(record.size()));
}
