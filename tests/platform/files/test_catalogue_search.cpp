/// The search of the catalogue.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <limits>
#include <set>

#include "catalogue_search.h"
#include "subtree_walk.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::files::SubtreeWalk;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

class CatalogueSearch : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"b", "a/deep/er", "c"})
      fs::create_directories(folder / name);
    for (const char* name : {"b/Film.mov", "a/deep/er/FILM.MOV", "a/x", "c/\u00C4pfel.mov", "z"})
      WriteFile(folder / name, name);
    fs::create_directory_symlink(folder / "b", folder / "c/link");
    fs::create_symlink("film.mov", folder / "c/film.mov");
    const UInt8 sidecar[] = {0x00, 0x05, 0x16, 0x07, 0x00, 0x02};
    WriteFile(folder / "b/._Film.mov", sidecar);
  }

  /// The paths of what fulfils the terms, in the order in which they are found, taken in batches.
  std::vector<std::string> Find(const FSSearchParams& terms, ItemCount batch = 2) const {
    std::vector<std::string> found;
    FSRef root{};
    EXPECT_EQ(noErr, quillmere::files::ReferenceOf(folder.path(), &root));
    FSIterator iterator = nullptr;
    EXPECT_EQ(noErr, FSOpenIterator(&root, kFSIterateSubtree, &iterator));
    for (OSErr status = noErr; status == noErr;) {
      std::vector<FSRef> references(batch);
      ItemCount count = 0;
      status = FSCatalogSearch(iterator, &terms, batch, &count, nullptr, kFSCatInfoNone, nullptr,
                               references.data(), nullptr, nullptr);
      EXPECT_TRUE(status == noErr ? count == batch : status == errFSNoMoreItems) << status;
      for (ItemCount i = 0; i < count; ++i) {
        fs::path path;
        EXPECT_EQ(noErr, quillmere::files::PathOf(references[i], &path));
        found.push_back(path.lexically_relative(folder.path()));
      }
    }
    EXPECT_EQ(noErr, FSCloseIterator(iterator));
    return found;
  }
  std::vector<std::string> FindName(std::u16string_view name) const {
    return Find({0, fsSBFullName, static_cast<UInt32>(name.size()),
                 reinterpret_cast<const UniChar*>(name.data()), nullptr, nullptr});
  }
  FSCatalogInfo Information(const char* name) const {
    FSRef reference{};
    FSCatalogInfo info{};
    EXPECT_EQ(noErr, quillmere::files::ReferenceOf(folder / name, &reference));
    EXPECT_EQ(noErr, FSGetCatalogInfo(&reference, kFSCatInfoGettableInfo, &info, nullptr, nullptr,
                                      nullptr));
    return info;
  }

  TemporaryFolder folder;
};

using Paths = std::vector<std::string>;

TEST_F(CatalogueSearch, ByNameGoesDeepInOrderAndFollowsNoLink) {
  const struct {
    std::u16string name;
    Paths found;
  } rows[] = {{u"film.mov", {"a/deep/er/FILM.MOV", "b/Film.mov", "c/film.mov"}},
              {u"DEEP", {"a/deep"}},
              {u"\u00E4PFEL.mov", {"c/\u00C4pfel.mov"}},
              {u"film", {}},
              {u"", {}},
              {u"._Film.mov", {}}};
  for (const auto& row : rows)
    EXPECT_EQ(row.found, FindName(row.name));
}

TEST_F(CatalogueSearch, ByNumberDatesAndFinderInformation) {
  const FSCatalogInfo sought = Information("a/x");
  EXPECT_EQ(Paths{"a/x"}, Find({0, fsSBNodeID, 0, nullptr, &sought, &sought}));

  FSRef film{};
  ASSERT_EQ(noErr, quillmere::files::ReferenceOf(folder / "b/Film.mov", &film));
  FSCatalogInfo info{};
  std::memcpy(info.finderInfo, "MooVTVOD\x01", 9);
  info.contentModDate = quillmere::files::DateOfUnixTime(1'000'000, 500'000'000);
  ASSERT_EQ(noErr, FSSetCatalogInfo(&film, kFSCatInfoFinderInfo | kFSCatInfoContentMod, &info));
  FSCatalogInfo lower = info;
  FSCatalogInfo upper = info;
  EXPECT_EQ(Paths{"b/Film.mov"}, Find({0, fsSBFlMdDat, 0, nullptr, &lower, &upper}));
  --upper.contentModDate.fraction;
  EXPECT_EQ(Paths{}, Find({0, fsSBFlMdDat, 0, nullptr, &lower, &upper}));

  std::memset(upper.finderInfo, 0, 16);
  std::memset(upper.finderInfo, 0xFF, 8);
  lower.finderInfo[8] = 0;  // not in the mask
  EXPECT_EQ(Paths{"b/Film.mov"}, Find({0, fsSBFlFndrInfo, 0, nullptr, &lower, &upper}));
  lower.finderInfo[0] = 'm';
  EXPECT_EQ(Paths{}, Find({0, fsSBFlFndrInfo, 0, nullptr, &lower, &upper}));
  upper.finderInfo[0] = 0;
  EXPECT_EQ(Paths{"b/Film.mov"}, Find({0, fsSBFlFndrInfo, 0, nullptr, &lower, &upper}));
}

TEST_F(CatalogueSearch, AllObjectsInBatchesOfAnySize) {
  const FSCatalogInfo lower{};
  FSCatalogInfo upper{};
  upper.nodeID = std::numeric_limits<UInt64>::max();
  const FSSearchParams terms = {0, fsSBNodeID, 0, nullptr, &lower, &upper};
  const Paths all = Find(terms, 1);
  EXPECT_EQ(12U, all.size());
  EXPECT_EQ(all.size(), std::set<std::string>(all.begin(), all.end()).size());
  for (const ItemCount batch : {2U, 5U, 12U, 13U})
    EXPECT_EQ(all, Find(terms, batch));
}

TEST_F(CatalogueSearch, AnyDepthThroughOneDescriptorForEachOfAFewLevels) {
  const TemporaryFolder deep;
  constexpr int kLevels = 3000;  // paths far beyond what the system takes at once
  int level = open(deep.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < kLevels; ++i) {
    ASSERT_EQ(mkdirat(level, "level", 0755), 0);
    ASSERT_EQ(mkdirat(level, "next", 0755), 0);
    const int inner = openat(level, "level", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(level);
    level = inner;
  }
  close(level);
  SubtreeWalk walk;
  ASSERT_EQ(walk.Open(deep.path()), noErr);
  int levels = 0;
  int others = 0;
  while (const SubtreeWalk::Entry* entry = walk.Next())
    ++(entry->name == "level" ? levels : others);
  EXPECT_EQ(levels, kLevels);
  EXPECT_EQ(others, kLevels);
}

TEST_F(CatalogueSearch, TermsThatMakeNoSense) {
  FSRef root{};
  ASSERT_EQ(noErr, quillmere::files::ReferenceOf(folder.path(), &root));
  FSIterator subtree = nullptr;
  FSIterator flat = nullptr;
  ASSERT_EQ(noErr, FSOpenIterator(&root, kFSIterateSubtree, &subtree));
  ASSERT_EQ(noErr, FSOpenIterator(&root, kFSIterateFlat, &flat));
  const FSCatalogInfo info{};
  const UniChar name[] = {u'x'};
  const struct {
    FSIterator iterator;
    FSSearchParams terms;
  } rows[] = {{flat, {0, fsSBFullName, 1, name, nullptr, nullptr}},
              {nullptr, {0, fsSBFullName, 1, name, nullptr, nullptr}},
              {subtree, {0, fsSBFullName, 1, nullptr, nullptr, nullptr}},
              {subtree, {0, fsSBFullName, 256, name, nullptr, nullptr}},
              {subtree, {-1, fsSBFullName, 1, name, nullptr, nullptr}},
              {subtree, {0, 0x10000, 1, name, &info, &info}},
              {subtree, {0, fsSBNodeID, 0, nullptr, &info, nullptr}}};
  for (const auto& row : rows) {
    ItemCount count = 9;
    EXPECT_EQ(static_cast<OSErr>(paramErr),
              FSCatalogSearch(row.iterator, &row.terms, 1, &count, nullptr, 0, nullptr, nullptr,
                              nullptr, nullptr));
    EXPECT_EQ(0U, count);
  }
  EXPECT_EQ(noErr, FSCloseIterator(subtree));
  EXPECT_EQ(noErr, FSCloseIterator(flat));
}

}  // namespace
