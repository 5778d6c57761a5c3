#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "aliases.h"
#include "as_nobody.h"
#include "catalogue.h"
#include "creation.h"
#include "file_references.h"
#include "test_files.h"

namespace fs = std::filesystem;
using quillmere::files::NoteMoved;
using quillmere::files::PathOf;
using quillmere::files::ReferenceOf;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

namespace {

FSRef Reference(const fs::path& path) {
  FSRef reference;
  EXPECT_EQ(ReferenceOf(path, &reference), noErr) << path;
  return reference;
}

std::string Place(const FSRef& reference) {
  fs::path path;
  const OSStatus status = PathOf(reference, &path);
  return status ? "status " + std::to_string(status) : path.string();
}

std::vector<FSRef> List(const fs::path& folder) {
  const FSRef reference = Reference(folder);
  FSIterator iterator = nullptr;
  EXPECT_EQ(FSOpenIterator(&reference, 0, &iterator), noErr);
  std::vector<FSRef> all;
  for (OSErr status = noErr; status == noErr;) {
    FSRef batch[3];
    ItemCount count = 0;
    status = FSGetCatalogInfoBulk(iterator, 3, &count, nullptr, kFSCatInfoNone, nullptr, batch,
                                  nullptr, nullptr);
    EXPECT_TRUE(status == noErr || status == errFSNoMoreItems) << status;
    all.insert(all.end(), batch, batch + count);
  }
  FSCloseIterator(iterator);
  return all;
}

TEST(Places, EachNameOfAnObjectWithTwoKeepsItsOwn) {
  const TemporaryFolder folder;
  WriteFile(folder / "a.mov", "");
  fs::create_hard_link(folder / "a.mov", folder / "b.mov");
  const std::vector<FSRef> listed = List(folder.path());
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(Place(listed[0]), folder / "a.mov");
  EXPECT_EQ(Place(listed[1]), folder / "b.mov");
  EXPECT_EQ(FSCompareFSRefs(&listed[0], &listed[1]), 0);
  fs::remove(folder / "a.mov");
  EXPECT_EQ(Place(listed[0]), folder / "b.mov");
}

TEST(Places, WhatLiesInAMovedFolderIsFound) {
  const TemporaryFolder folder;
  fs::create_directories(folder / "one/deep");
  fs::create_directory(folder / "one-more");
  WriteFile(folder / "one/deep/file", "");
  WriteFile(folder / "one-more/file", "");
  const FSRef outer = Reference(folder / "one");
  const FSRef inner = Reference(folder / "one/deep");
  const FSRef file = Reference(folder / "one/deep/file");
  const FSRef neighbour = Reference(folder / "one-more/file");

  fs::rename(folder / "one", folder / "two");
  NoteMoved(outer, folder / "two");
  EXPECT_EQ(Place(file), folder / "two/deep/file");
  fs::rename(folder / "two/deep", folder / "deep");
  NoteMoved(inner, folder / "deep");
  EXPECT_EQ(Place(file), folder / "deep/file");
  EXPECT_EQ(Place(neighbour), folder / "one-more/file");

  // A stranger under the old name is not taken for the file.
  fs::create_directories(folder / "one/deep");
  WriteFile(folder / "one/deep/file", "");
  EXPECT_EQ(Place(file), folder / "deep/file");
}

TEST(Places, ReferenceRevivesWhenItsObjectIsSeenElsewhere) {
  const TemporaryFolder folder;
  WriteFile(folder / "a", "");
  const FSRef reference = Reference(folder / "a");
  fs::rename(folder / "a", folder / "b");
  EXPECT_EQ(Place(reference), "status " + std::to_string(fnfErr));
  List(folder.path());
  EXPECT_EQ(Place(reference), folder / "b");
}

TEST(Places, NamesThatAreNotUtf8Survive) {
  const TemporaryFolder folder;
  const std::string name = "caf\xE9.jpg";
  WriteFile(folder / name, "");
  const std::vector<FSRef> listed = List(folder.path());
  ASSERT_EQ(listed.size(), 1U);
  EXPECT_EQ(Place(listed[0]), (folder / name).string());
}

TEST(Places, OnlyRealSidecarsAreLeftOut) {
  const TemporaryFolder folder;
  const UInt8 sidecar[] = {0x00, 0x05, 0x16, 0x07, 0x00, 0x02};
  const UInt8 movie[] = {0x00, 0x00, 0x00, 0x08, 'w', 'i', 'd', 'e'};
  WriteFile(folder / "._clip.mov", movie);
  WriteFile(folder / "._x.mov", sidecar);
  WriteFile(folder / "x.mov", movie);
  const std::vector<FSRef> listed = List(folder.path());
  ASSERT_EQ(listed.size(), 2U);
  EXPECT_EQ(Place(listed[0]), folder / "._clip.mov");
  EXPECT_EQ(Place(listed[1]), folder / "x.mov");
}

TEST(Places, WhatCantBeReadIsNotDeletedAsASidecar) {
  const TemporaryFolder folder;
  const quillmere::test::AsNobody as_nobody(folder.path());
  fs::create_directory(folder / "sub");
  for (const char* name : {"x.mov", "._x.mov", "sub/._y.mov"}) {
    WriteFile(folder / name, "mine");
    fs::permissions(folder / name, fs::perms::owner_write);
  }
  ASSERT_EQ(List(folder.path()).size(), 2U);
  const FSRef file = Reference(folder / "x.mov");
  EXPECT_EQ(FSDeleteObject(&file), noErr);
  const FSRef sub = Reference(folder / "sub");
  EXPECT_EQ(FSDeleteObject(&sub), fBsyErr);
  EXPECT_TRUE(fs::exists(folder / "._x.mov"));
  EXPECT_TRUE(fs::exists(folder / "sub/._y.mov"));
}

TEST(Places, PathsAreBroughtToOneForm) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "sub");
  for (const char* form : {"sub", "sub/", "./sub//", "sub/../sub/."}) {
    EXPECT_EQ(Place(Reference(folder / form)), folder / "sub") << form;
  }
  EXPECT_EQ(Place(Reference("/")), "/");
}

TEST(Places, LinkToItselfCanBeListedAndRemembered) {
  const TemporaryFolder folder;
  fs::create_symlink("loop", folder / "loop");
  const std::vector<FSRef> listed = List(folder.path());
  ASSERT_EQ(listed.size(), 1U);
  AliasHandle alias = nullptr;
  ASSERT_EQ(FSNewAlias(nullptr, &listed[0], &alias), noErr);
  FSRef found;
  EXPECT_EQ(FSResolveAlias(nullptr, alias, &found, nullptr), noErr);
  EXPECT_EQ(FSCompareFSRefs(&found, &listed[0]), 0);
  DisposeHandle(alias);
}

TEST(Places, BytesThatAreNoReferenceLeadNowhere) {
  FSRef reference{};
  fs::path path;
  EXPECT_EQ(PathOf(reference, &path), errFSBadFSRef);
  const TemporaryFolder folder;
  reference = Reference(folder.path());
  for (std::size_t i = 8; i < sizeof(reference.hidden); ++i) {
    FSRef damaged = reference;
    damaged.hidden[i] ^= 0xFF;
    const std::string place = Place(damaged);
    EXPECT_TRUE(place == folder.path() || place.starts_with("status")) << i << " " << place;
  }
}

}  // namespace
