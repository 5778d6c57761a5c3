/// Aliases that find their targets again, and what their records tell.
#include <gtest/gtest.h>

#include "aliases.h"
#include "catalogue.h"
#include "moves.h"
#include "resources.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
namespace files = quillmere::files;
using quillmere::test::WriteFile;

class AliasesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(folder / "a/b");
    fs::create_directories(folder / "c");
    WriteFile(folder / "a/b/target", "t");
    WriteFile(folder / "a/holder", "h");
    target = Reference("a/b/target");
    holder = Reference("a/holder");
    ASSERT_EQ(noErr, FSNewAlias(&holder, &target, &alias));
  }
  void TearDown() override { DisposeHandle(alias); }
  FSRef Reference(const std::string& name) const {
    FSRef reference{};
    EXPECT_EQ(noErr, files::ReferenceOf(folder / name, &reference)) << name;
    return reference;
  }
  /// Resolves the alias and tells where it leads.
  std::string Resolve(const FSRef* from, Boolean* changed) const {
    FSRef found{};
    fs::path path;
    const OSErr status = FSResolveAlias(from, alias, &found, changed);
    if (status) return std::to_string(status);
    EXPECT_EQ(noErr, files::PathOf(found, &path));
    return path.lexically_relative(folder.path()).native();
  }

  quillmere::test::TemporaryFolder folder;
  FSRef target{};
  FSRef holder{};
  AliasHandle alias = nullptr;
};

TEST_F(AliasesTest, FindTheirTargetsAfterAllMoves) {
  Boolean changed = 1;
  EXPECT_EQ("a/b/target", Resolve(nullptr, &changed));
  EXPECT_EQ(0, changed);
  // By others, then by us; the record follows each time.
  fs::rename(folder / "a/b/target", folder / "a/b/renamed");
  EXPECT_EQ("a/b/renamed", Resolve(nullptr, &changed));
  EXPECT_EQ(1, changed);
  EXPECT_EQ("a/b/renamed", Resolve(nullptr, &changed));
  EXPECT_EQ(0, changed);
  const FSRef elsewhere = Reference("c");
  FSRef moved = Reference("a/b/renamed");
  ASSERT_EQ(noErr, FSMoveObject(&moved, &elsewhere, nullptr));
  EXPECT_EQ("c/renamed", Resolve(nullptr, &changed));
  EXPECT_EQ(1, changed);
  // A new version that took its place is the target.
  WriteFile(folder / "new", "n");
  fs::rename(folder / "new", folder / "c/renamed");
  EXPECT_EQ("c/renamed", Resolve(nullptr, &changed));
  EXPECT_EQ(1, changed);
  fs::remove(folder / "c/renamed");
  EXPECT_EQ("-43", Resolve(nullptr, &changed));
}

TEST_F(AliasesTest, FindTargetsThatMovedWithThem) {
  fs::create_directories(folder / "copy");
  fs::copy(folder / "a", folder / "copy/a", fs::copy_options::recursive);
  fs::remove_all(folder / "a");
  const FSRef copy = Reference("copy/a/holder");
  Boolean changed = 0;
  EXPECT_EQ("copy/a/b/target", Resolve(&copy, &changed));
  EXPECT_EQ(1, changed);
}

TEST_F(AliasesTest, TellWhatTheirRecordsHold) {
  HFSUniStr255 name{};
  quillmere::Owned<CFStringRef> path;
  FSAliasInfoBitmap which = 0;
  FSAliasInfo info{};
  ASSERT_EQ(noErr, FSCopyAliasInfo(alias, &name, nullptr, path.out(), &which, &info));
  FSCatalogInfo catalogue{};
  ASSERT_EQ(noErr, FSGetCatalogInfo(&target,
                                    kFSCatInfoNodeID | kFSCatInfoParentDirID | kFSCatInfoCreateDate,
                                    &catalogue, nullptr, nullptr, nullptr));
  EXPECT_EQ(static_cast<UInt32>(catalogue.nodeID), info.nodeID);
  EXPECT_EQ(static_cast<UInt32>(catalogue.parentDirID), info.parentDirID);
  EXPECT_EQ(catalogue.createDate, info.targetCreateDate);
  EXPECT_EQ(0, info.isDirectory);
  EXPECT_EQ(6, name.length);
  EXPECT_EQ((folder / "a/b/target").native(), quillmere::ToUtf8(path.get()));
  SetHandleSize(alias, 100);
  EXPECT_EQ(static_cast<OSErr>(paramErr),
            FSCopyAliasInfo(alias, &name, nullptr, nullptr, nullptr, nullptr));
}

TEST_F(AliasesTest, FilesAndLinksAreFollowed) {
  const FSRef parent = Reference("c");
  FSCatalogInfo info{};
  info.finderInfo[8] = 0x80;
  FSRef file{};
  FSCreateResFile(&parent, 5, u"alias", kFSCatInfoFinderInfo, &info, &file, nullptr);
  ASSERT_EQ(noErr, ResError());
  const ResFileRefNum number = FSOpenResFile(&file, fsRdWrPerm);
  AliasHandle copy = nullptr;
  ASSERT_EQ(noErr, FSNewAlias(&file, &target, &copy));
  AddResource(copy, "alis"_4cc, 0, nullptr);
  CloseResFile(number);
  fs::create_symlink("alias", folder / "c/link");
  fs::create_symlink("loop", folder / "c/loop");
  Boolean was_alias = 0;
  FSRef found = Reference("c/link");
  EXPECT_EQ(noErr, FSResolveAliasFile(&found, 0, nullptr, &was_alias));
  EXPECT_EQ(0, FSCompareFSRefs(&found, &file));
  EXPECT_EQ(noErr, FSResolveAliasFile(&found, 1, nullptr, &was_alias));
  EXPECT_EQ(0, FSCompareFSRefs(&found, &target));
  EXPECT_EQ(1, was_alias);
  EXPECT_EQ(noErr, FSResolveAliasFile(&found, 1, nullptr, &was_alias));
  EXPECT_EQ(0, was_alias);
  found = Reference("c/loop");
  EXPECT_EQ(fnfErr, FSResolveAliasFile(&found, 1, nullptr, &was_alias));
}

}  // namespace
