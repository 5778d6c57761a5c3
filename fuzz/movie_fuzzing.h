/// What the targets that open whole movies share: a folder for the movie under test, opening it and
/// flattening it.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "aliases.h"
#include "file_references.h"
#include "movie_toolbox.h"

namespace quillmere::fuzz {

namespace fs = std::filesystem;

inline void Require(bool condition) {
  if (!condition) std::abort();
}

/// A folder for the movie under test and its output.
inline const fs::path& Folder() {
  static const fs::path folder = [] {
    std::string name = (fs::temp_directory_path() / "fuzz-flatten-XXXXXX").string();
    Require(mkdtemp(name.data()) != nullptr);
    std::atexit([] {
      std::error_code ignored;
      fs::remove_all(Folder(), ignored);
    });
    return fs::path(name);
  }();
  return folder;
}

inline fs::path WriteInput(const UInt8* data, std::size_t size) {
  const fs::path path = Folder() / "input.mov";
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return path;
}

inline Movie OpenMovie(const fs::path& path) {
  FSRef reference;
  AliasHandle alias = nullptr;
  Require(files::ReferenceOf(path, &reference) == noErr);
  Require(FSNewAlias(nullptr, &reference, &alias) == noErr);
  DataReferenceRecord record = {"alis"_4cc, alias};
  QTNewMoviePropertyElement property = {"dloc"_4cc, "dref"_4cc, sizeof record, &record, 0};
  Movie movie = nullptr;
  NewMovieFromProperties(1, &property, 0, nullptr, &movie);
  DisposeHandle(alias);
  return movie;
}

inline void Flatten(Movie movie) {
  FSRef folder;
  Handle output = nullptr;
  OSType type = 0;
  Require(files::ReferenceOf(Folder(), &folder) == noErr);
  Require(QTNewDataReferenceFromFSRefCFString(&folder, CFSTR("output.mov"), 0, &output, &type) ==
          noErr);
  Movie again = FlattenMovieDataToDataRef(movie, flattenAddMovieToDataFork, output, type,
                                          "TVOD"_4cc, -1, createMovieFileDeleteCurFile);
  // What is written opens again; no failure leaves a file.
  Require((again != nullptr) == fs::exists(Folder() / "output.mov"));
  if (again != nullptr) Require(GetMovieTrackCount(again) == GetMovieTrackCount(movie));
  DisposeMovie(again);
  DisposeHandle(output);
  std::error_code ignored;
  fs::remove(Folder() / "output.mov", ignored);
}

}  // namespace quillmere::fuzz
