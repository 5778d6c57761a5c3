/// File objects for tests: references of paths, names, and what a file is seen to be.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "catalogue.h"
#include "file_references.h"

namespace quillmere::test {

inline FSRef ReferenceTo(const std::filesystem::path& path) {
  FSRef reference{};
  EXPECT_EQ(files::ReferenceOf(path, &reference), noErr) << path;
  return reference;
}

/// Where an object is, or the status that says why not.
inline std::string PlaceOf(const FSRef& reference) {
  std::filesystem::path path;
  const OSStatus status = files::PathOf(reference, &path);
  return status ? "status " + std::to_string(status) : path.string();
}

inline HFSUniStr255 NameRecord(std::u16string_view text) {
  HFSUniStr255 name{};
  name.length = static_cast<UInt16>(text.copy(name.unicode, 255));
  return name;
}

/// All the catalogue's information that can be set, and the name.
inline FSCatalogInfo SettableInfo(const FSRef& reference) {
  FSCatalogInfo info{};
  EXPECT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoSettableInfo, &info, nullptr, nullptr, nullptr),
            noErr);
  return info;
}

}  // namespace quillmere::test
