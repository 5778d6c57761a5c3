#include "MF_FileObjects.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "creation.h"
#include "file_calls.h"
#include "file_objects.h"
#include "moves.h"
#include "test_files.h"
#include "volumes.h"

namespace fs = std::filesystem;
using namespace quillmere::test;
using quillmere::files::FailingCall;

namespace {

constexpr FSCatalogInfoBitmap kStaying =
    kFSCatInfoSettableInfo & ~(kFSCatInfoContentMod | kFSCatInfoAttrMod | kFSCatInfoAccessDate);

/// Two files with different information, a sidecar each if asked, in one folder or in two.
class TwoFiles {
 public:
  TwoFiles(bool in_one_folder, bool with_sidecars) : has_sidecars_(with_sidecars) {
    fs::create_directories(folder_ / "one");
    fs::create_directories(folder_ / "two");
    paths_[0] = folder_ / "one/first";
    paths_[1] = in_one_folder ? folder_ / "one/second" : folder_ / "two/second";
    for (std::size_t i = 0; i < 2; ++i) {
      WriteFile(paths_[i], i == 0 ? "first content" : "second");
      if (with_sidecars) WriteFile(SidecarOf(i), Sidecar(static_cast<UInt8>(i)));
      references[i] = ReferenceTo(paths_[i]);
      FSCatalogInfo info = SettableInfo(references[i]);
      std::memcpy(info.finderInfo, i == 0 ? "MooVTVOD" : "JPEGogle", 8);
      info.backupDate = {0, 3000000000U + static_cast<UInt32>(i), 5};
      info.createDate = {0, 3100000000U + static_cast<UInt32>(i), 0};
      info.contentModDate = {0, 3200000000U + static_cast<UInt32>(i), 0x8000};
      info.permissions.mode = i == 0 ? 0640 : 0755;
      info.textEncodingHint = static_cast<UInt32>(i);
      EXPECT_EQ(FSSetCatalogInfo(&references[i], kFSCatInfoSettableInfo, &info), noErr);
      infos_[i] = SettableInfo(references[i]);
    }
  }

  /// Name, content and information of both as they were, or with the contents exchanged, and
  /// nothing else in the folders.
  void Expect(bool is_exchanged, const std::string& when) const {
    for (std::size_t i = 0; i < 2; ++i) {
      const std::size_t content = is_exchanged ? 1 - i : i;
      ASSERT_TRUE(fs::exists(paths_[i])) << when;
      const Bytes bytes = ReadFile(paths_[i]);
      EXPECT_EQ(std::string(bytes.begin(), bytes.end()), content == 0 ? "first content" : "second")
          << when;
      ASSERT_EQ(fs::exists(SidecarOf(i)), has_sidecars_) << when;
      if (has_sidecars_) {
        EXPECT_EQ(ReadFile(SidecarOf(i)).back(), content) << when;
      }
      const FSCatalogInfo now = SettableInfo(ReferenceTo(paths_[i]));
      EXPECT_EQ(std::memcmp(now.finderInfo, infos_[i].finderInfo, 16), 0) << when;
      EXPECT_EQ(now.backupDate, infos_[i].backupDate) << when;
      EXPECT_EQ(now.createDate, infos_[i].createDate) << when;
      EXPECT_EQ(now.permissions.mode, infos_[i].permissions.mode) << when;
      EXPECT_EQ(now.textEncodingHint, infos_[i].textEncodingHint) << when;
      EXPECT_EQ(now.contentModDate, infos_[content].contentModDate) << when;
    }
    std::size_t count = 0;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder_.path()))
      count += entry.is_regular_file() ? 1 : 0;
    EXPECT_EQ(count, has_sidecars_ ? 4U : 2U) << when;
  }
  const fs::path& path(std::size_t i) const { return paths_[i]; }
  fs::path top() const { return folder_.path(); }

  FSRef references[2];

 private:
  fs::path SidecarOf(std::size_t i) const {
    return paths_[i].parent_path() / ("._" + paths_[i].filename().string());
  }
  static Bytes Sidecar(UInt8 mark) {
    Bytes bytes = {0, 5, 0x16, 7, 0, 2, 0, 0};
    bytes.resize(26);
    bytes.push_back(mark);
    return bytes;
  }

  bool has_sidecars_;
  TemporaryFolder folder_;
  fs::path paths_[2];
  FSCatalogInfo infos_[2];
};

/// Volumes that can't exchange files by themselves, for a test's life.
class PlainVolumes {
 public:
  PlainVolumes() {
    WriteFile(folder_ / "table", "30 1 8:1 / / rw - vfat /dev/sda1 rw\n");
    quillmere::files::UseMountTable(folder_ / "table");
  }
  ~PlainVolumes() { quillmere::files::UseMountTable({}); }

 private:
  TemporaryFolder folder_;
};

/// What is left after an act, which has succeeded or not; the last says when.
using Check = std::function<void(const TwoFiles&, bool has_succeeded, const std::string&)>;

/// Runs `act` with each of its changing calls failing in turn, on fresh files each time. An act may
/// get by without a call that is only a hint or has another way. Returns how many calls it makes
/// when none fails.
SInt64 FailEachCall(const std::function<SInt32(TwoFiles&)>& act, bool in_one_folder,
                    bool with_sidecars, const Check& check) {
  for (SInt64 call = 0;; ++call) {
    TwoFiles files(in_one_folder, with_sidecars);
    SInt32 status = noErr;
    bool has_failed = false;
    {
      const FailingCall failing(call, ENOSPC);
      status = act(files);
      has_failed = failing.HasFailed();
    }
    if (!has_failed) {
      EXPECT_EQ(status, noErr);
      return call;
    }
    if (status != noErr) {
      EXPECT_EQ(status, dskFulErr) << "call " << call;
    }
    check(files, status == noErr,
          "call " + std::to_string(call) + (in_one_folder ? " in one folder" : " in two"));
    if (testing::Test::HasFailure()) return call;
  }
}

SInt32 Exchange(TwoFiles& files) {
  return MF_FSExchangeObjectsCompat(&files.references[0], &files.references[1],
                                    &files.references[0], &files.references[1]);
}

TEST(FileObjectExchange, MovesTheContentAndNothingElse) {
  for (const bool is_native : {true, false}) {
    for (const bool in_one_folder : {true, false}) {
      for (const bool with_sidecars : {true, false}) {
        TwoFiles files(in_one_folder, with_sidecars);
        if (is_native) {
          ASSERT_EQ(FSExchangeObjects(&files.references[0], &files.references[1]), noErr);
        } else {
          const PlainVolumes plain;
          ASSERT_EQ(Exchange(files), noErr);
        }
        const std::string how = std::string(is_native ? "native" : "compatible") +
                                (in_one_folder ? ", one folder" : ", two folders");
        files.Expect(true, how);
        EXPECT_EQ(PlaceOf(files.references[0]), files.path(0)) << how;
        EXPECT_EQ(PlaceOf(files.references[1]), files.path(1)) << how;
        // And back.
        ASSERT_EQ(FSExchangeObjects(&files.references[0], &files.references[1]), noErr) << how;
        files.Expect(false, how + ", back");
        EXPECT_EQ(PlaceOf(files.references[0]), files.path(0)) << how;
      }
    }
  }
}

TEST(FileObjectExchange, AnyFailingCallLeavesBothFilesAsTheyWere) {
  const auto check = [](const TwoFiles& files, bool has_succeeded, const std::string& when) {
    files.Expect(has_succeeded, when);
  };
  const auto exchange_natively = [](TwoFiles& files) -> SInt32 {
    return FSExchangeObjects(&files.references[0], &files.references[1]);
  };
  for (const bool in_one_folder : {true, false}) {
    EXPECT_GT(FailEachCall(exchange_natively, in_one_folder, true, check), 6);
    const PlainVolumes plain;
    EXPECT_GT(FailEachCall(Exchange, in_one_folder, true, check), 12);
  }
}

TEST(FileObjectExchange, RefusesWhatItCannotDo) {
  TwoFiles files(false, false);
  const FSRef folder = ReferenceTo(files.top());
  FSRef a;
  FSRef b;
  const PlainVolumes plain;
  EXPECT_EQ(MF_FSExchangeObjectsCompat(&files.references[0], &folder, &a, &b), notAFileErr);
  EXPECT_EQ(FSExchangeObjects(&folder, &files.references[0]), notAFileErr);
  EXPECT_EQ(MF_FSExchangeObjectsCompat(&files.references[0], &files.references[1], &a, nullptr),
            paramErr);
  FSCatalogInfo info{};
  info.nodeFlags = kFSNodeLockedMask;
  ASSERT_EQ(FSSetCatalogInfo(&files.references[1], kFSCatInfoNodeFlags, &info), noErr);
  EXPECT_EQ(Exchange(files), fLckdErr);
  EXPECT_EQ(FSExchangeObjects(&files.references[0], &files.references[1]), fLckdErr);
  info.nodeFlags = 0;
  ASSERT_EQ(FSSetCatalogInfo(&files.references[1], kFSCatInfoNodeFlags, &info), noErr);
  files.Expect(false, "after refusals");
}

TEST(FileObjectMoves, AnyFailingCallLeavesTheFileWhereItWas) {
  const auto move = [](TwoFiles& files) -> SInt32 {
    const FSRef folder = ReferenceTo(files.top() / "two");
    return MF_FSMoveRenameObjectUnicode(&files.references[0], &folder, 5, u"third", 65535,
                                        &files.references[0]);
  };
  const auto check_move = [](const TwoFiles& files, bool has_succeeded, const std::string& when) {
    if (!has_succeeded) return files.Expect(false, when);
    EXPECT_TRUE(fs::exists(files.top() / "two/third")) << when;
    EXPECT_TRUE(fs::exists(files.top() / "two/._third")) << when;
  };
  EXPECT_GT(FailEachCall(move, true, true, check_move), 4);
  TwoFiles files(true, true);
  ASSERT_EQ(move(files), noErr);
  EXPECT_EQ(PlaceOf(files.references[0]), files.top() / "two/third");
  EXPECT_TRUE(fs::exists(files.top() / "two/._third"));
  EXPECT_FALSE(fs::exists(files.top() / "one/._first"));
  // Onto a name that is taken, and back home under the old name.
  const FSRef one = ReferenceTo(files.top() / "one");
  EXPECT_EQ(MF_FSMoveRenameObjectUnicode(&files.references[0], &one, 6, u"second", 65535,
                                         &files.references[0]),
            dupFNErr);
  EXPECT_EQ(PlaceOf(files.references[0]), files.top() / "two/third");
  EXPECT_EQ(MF_FSMoveRename(&files.references[0], &one, 5, u"first", 0, &files.references[0]),
            noErr);
  files.Expect(false, "moved home");
}

TEST(FileObjectMoves, CopiesAreWholeOrNotThere) {
  const auto copy = [](TwoFiles& files) -> SInt32 {
    const FSRef folder = ReferenceTo(files.top() / "two");
    return MF_FSCopyFile(&files.references[0], &folder, 4, u"copy", 65535, nullptr);
  };
  const auto check_copy = [](const TwoFiles& files, bool has_succeeded, const std::string& when) {
    if (!has_succeeded) return files.Expect(false, when);
    EXPECT_EQ(ReadFile(files.top() / "two/copy"), ReadFile(files.path(0))) << when;
    EXPECT_TRUE(fs::exists(files.top() / "two/._copy")) << when;
  };
  EXPECT_GT(FailEachCall(copy, true, true, check_copy), 10);
  TwoFiles files(true, true);
  ASSERT_EQ(copy(files), noErr);
  EXPECT_EQ(ReadFile(files.top() / "two/copy"), ReadFile(files.path(0)));
  EXPECT_EQ(ReadFile(files.top() / "two/._copy"), ReadFile(files.top() / "one/._first"));
  const FSCatalogInfo original = SettableInfo(files.references[0]);
  const FSCatalogInfo made = SettableInfo(ReferenceTo(files.top() / "two/copy"));
  EXPECT_EQ(std::memcmp(made.finderInfo, original.finderInfo, 16), 0);
  EXPECT_EQ(made.contentModDate, original.contentModDate);
  EXPECT_EQ(made.createDate, original.createDate);
  EXPECT_EQ(copy(files), dupFNErr);
}

TEST(FileObjects, UniqueNamesCountUpInCapitals) {
  const TemporaryFolder folder;
  fs::create_directories(folder / "a");
  fs::create_directories(folder / "b");
  WriteFile(folder / "a/00ABCDEF", "");
  WriteFile(folder / "b/00ABCDF0", "");
  const FSRef a = ReferenceTo(folder / "a");
  const FSRef b = ReferenceTo(folder / "b");
  UInt32 seed = 0xABCDEF;
  HFSUniStr255 name;
  ASSERT_EQ(MF_GenerateUniqueHFSUniStr(&seed, &a, &b, &name), noErr);
  EXPECT_EQ(std::u16string(name.unicode, name.length), u"00ABCDF1");
  EXPECT_EQ(seed, 0xABCDF2U);
  const FSRef none{};
  EXPECT_EQ(MF_GenerateUniqueHFSUniStr(&seed, &a, &none, &name), errFSBadFSRef);
}

TEST(FileObjects, FlagsTypesAndDates) {
  TwoFiles files(true, false);
  const FSRef file = files.references[0];
  MF_FinderInfo info;
  const struct {
    SInt32 (*set)(const FSRef*);
    SInt32 (*clear)(const FSRef*);
    UInt16 bit;
  } flags[] = {{MF_FSSetInvisible, MF_FSClearInvisible, 0x4000},
               {MF_FSSetNameLocked, MF_FSClearNameLocked, 0x1000},
               {MF_FSSetIsStationery, MF_FSClearIsStationery, 0x0800},
               {MF_FSSetHasCustomIcon, MF_FSClearHasCustomIcon, 0x0400}};
  for (const auto& flag : flags) {
    EXPECT_EQ(flag.set(&file), noErr);
    EXPECT_EQ(MF_FSGetFinderInfo(&file, &info, nullptr, nullptr), noErr);
    EXPECT_EQ(info.finderFlags, flag.bit);
    EXPECT_EQ(info.fileType, "MooV"_4cc);
    EXPECT_EQ(flag.clear(&file), noErr);
  }
  EXPECT_EQ(MF_FSChangeCreatorType(&file, 0, "abcd"_4cc), noErr);
  EXPECT_EQ(MF_FSGetFinderInfo(&file, &info, nullptr, nullptr), noErr);
  EXPECT_EQ(info.fileType, "abcd"_4cc);
  EXPECT_EQ(info.fileCreator, "TVOD"_4cc);
  const FSRef folder = ReferenceTo(files.top());
  EXPECT_EQ(MF_FSChangeCreatorType(&folder, 1, 1), notAFileErr);

  UTCDateTime last{};
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(MF_FSBumpDate(&file), noErr);
    const UTCDateTime now = SettableInfo(file).contentModDate;
    EXPECT_NE(now, last);
    last = now;
  }

  MF_FSChangeFinderFlags(&file, 1, kHasBeenInited | kIsStationery);
  FSCatalogInfo lock{};
  lock.nodeFlags = kFSNodeLockedMask;
  ASSERT_EQ(FSSetCatalogInfo(&file, kFSCatInfoNodeFlags, &lock), noErr);
  for (const bool with_lock : {false, true}) {
    ASSERT_EQ(MF_FSCopyFileMgrAttributes(&file, &files.references[1], with_lock), noErr);
    const FSCatalogInfo source = SettableInfo(file);
    const FSCatalogInfo copy = SettableInfo(files.references[1]);
    EXPECT_EQ(copy.nodeFlags & kFSNodeLockedMask, with_lock ? kFSNodeLockedMask : 0);
    EXPECT_EQ(copy.finderInfo[8], 0x08);  // stationery, not inited
    EXPECT_EQ(copy.contentModDate, source.contentModDate);
    EXPECT_EQ(copy.attributeModDate, source.attributeModDate);
    EXPECT_EQ(copy.createDate, source.createDate);
  }
}

TEST(FileObjects, SpecificationsPathsAndNumbersLeadBack) {
  const TemporaryFolder folder;
  const std::string long_name = std::string(80, 'n') + ".jpg";
  for (const std::string& name : {std::string("plain.mov"), std::string("Größe"),
                                  std::string("\U0001F600 smile.png"), long_name,
                                  std::string("bad\xFF"
                                              "bytes")}) {
    WriteFile(folder / name, "x");
    WriteFile(folder / ("Other " + name), "x");
    const FSRef file = ReferenceTo(folder / name);
    FSSpec spec;
    ASSERT_EQ(MF_FSRefMakeFSSpec(&file, &spec), noErr) << name;
    FSRef found;
    ASSERT_EQ(MF_FSMakeFSRef(spec.vRefNum, spec.parID, spec.name, &found), noErr) << name;
    EXPECT_EQ(FSCompareFSRefs(&found, &file), 0) << name;
    UInt8 path[4096];
    ASSERT_EQ(MF_FSMakePath(&spec, path, sizeof(path)), noErr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(path)), (folder / name).string());
    UInt64 number = 0;
    ASSERT_EQ(MF_FSCreateFileIDRef(&file, &number), noErr);
    ASSERT_EQ(MF_FSResolveFileIDRef(spec.vRefNum, number, &found), noErr);
    EXPECT_EQ(FSCompareFSRefs(&found, &file), 0) << name;
  }
  FSRef root;
  FSRef parent;
  ASSERT_EQ(quillmere::files::ReferenceOf("/", &root), noErr);
  ASSERT_EQ(MF_FSGetParentRef(&root, &parent), noErr);
  EXPECT_FALSE(MF_FSRefValid(&parent));
  UInt8 classic[32];
  ASSERT_EQ(MF_UnicodeNameGetHFSName(40, std::u16string(40, u'é').c_str(), kTextEncodingMacRoman, 1,
                                     classic),
            noErr);
  EXPECT_EQ(classic[0], 27);
  HFSUniStr255 name;
  ASSERT_EQ(MF_HFSNameGetUnicodeName(classic, kTextEncodingMacRoman, &name), noErr);
  EXPECT_EQ(std::u16string(name.unicode, name.length), std::u16string(27, u'é'));
}

/// A tree with a link out of it, locked files and a locked folder.
void MakeTree(const fs::path& top, const fs::path& outside) {
  fs::create_directories(top / "sub/deep");
  fs::create_directories(top / "locked folder");
  fs::create_directory_symlink(outside, top / "sub/way out");
  WriteFile(top / "sub/deep/file", "x");
  WriteFile(top / "sub/deep/._file", Bytes{0, 5, 0x16, 7});
  WriteFile(top / "sub/._stray", Bytes{0, 5, 0x16, 7});
  WriteFile(top / "locked folder/locked file", "x");
  fs::create_symlink("nowhere", top / "dangling");
  fs::create_symlink("loop", top / "loop");
  fs::permissions(top / "locked folder/locked file", fs::perms(0444));
  fs::permissions(top / "locked folder", fs::perms(0555));
}

TEST(FileObjectFolders, TreesAreDeletedWholeAndNothingElse) {
  const TemporaryFolder folder;
  fs::create_directories(folder / "outside/inner");
  WriteFile(folder / "outside/inner/keep", "x");
  const auto count_outside = [&] {
    return std::distance(fs::recursive_directory_iterator(folder / "outside"), {});
  };
  MakeTree(folder / "tree", folder / "outside");
  const FSRef tree = ReferenceTo(folder / "tree");
  const FSRef file = ReferenceTo(folder / "outside/inner/keep");
  const FSRef link = ReferenceTo(folder / "tree/sub/way out");
  EXPECT_EQ(MF_FSDeleteContainer(&file), dirNFErr);
  EXPECT_EQ(MF_FSDeleteContainer(&link), dirNFErr);
  ASSERT_EQ(MF_FSDeleteContainerContents(&tree), noErr);
  EXPECT_TRUE(fs::is_empty(folder / "tree"));
  MakeTree(folder / "tree", folder / "outside");
  ASSERT_EQ(MF_FSDeleteContainer(&tree), noErr);
  EXPECT_FALSE(fs::exists(folder / "tree"));
  EXPECT_EQ(count_outside(), 2);
}

TEST(FileObjectFolders, FolderThatBecameALinkIsNotFollowed) {
  const TemporaryFolder folder;
  fs::create_directories(folder / "outside");
  WriteFile(folder / "outside/keep", "x");
  fs::create_directories(folder / "tree/sub");
  WriteFile(folder / "tree/sub/keep", "x");
  const FSRef sub = ReferenceTo(folder / "tree/sub");
  const FSRef file = ReferenceTo(folder / "tree/sub/keep");
  fs::rename(folder / "tree", folder / "moved");
  fs::create_directories(folder / "tree");
  fs::create_directory_symlink(folder / "outside", folder / "tree/sub");
  EXPECT_EQ(MF_FSDeleteContainer(&sub), fnfErr);
  EXPECT_EQ(FSDeleteObject(&file), fnfErr);
  EXPECT_TRUE(fs::exists(folder / "outside/keep"));
  EXPECT_TRUE(fs::exists(folder / "moved/sub/keep"));
}

struct Visit {
  std::vector<std::string> names;
  ItemCount quit_after = 0;
};

Boolean Note(Boolean, ItemCount level, const FSCatalogInfo* info, const FSRef* reference,
             const HFSUniStr255* name, void* data) {
  auto* visit = static_cast<Visit*>(data);
  const quillmere::Owned<CFStringRef> string(FSCreateStringFromHFSUniStr(nullptr, name));
  const fs::path path = PlaceOf(*reference);
  EXPECT_EQ(path.filename(), quillmere::ToUtf8(string.get()));
  EXPECT_EQ((info->nodeFlags & kFSNodeIsDirectoryMask) != 0,
            fs::symlink_status(path).type() == fs::file_type::directory);
  visit->names.push_back(std::to_string(level) + " " + path.filename().string());
  return visit->names.size() == visit->quit_after;
}

TEST(FileObjectFolders, WalksGoAsDeepAsAsked) {
  const TemporaryFolder folder;
  MakeTree(folder / "tree", folder.path());
  const FSRef tree = ReferenceTo(folder / "tree");
  const std::vector<std::string> all = {"1 dangling", "1 locked folder", "2 locked file",
                                        "1 loop",     "1 sub",           "2 deep",
                                        "3 file",     "2 way out"};
  Visit visit;
  ASSERT_EQ(MF_FSIterateContainer(&tree, 0, kFSCatInfoNone, 0, 1, Note, &visit), noErr);
  EXPECT_EQ(visit.names, all);
  visit.names.clear();
  ASSERT_EQ(MF_FSIterateContainer(&tree, 1, kFSCatInfoNone, 0, 1, Note, &visit), noErr);
  EXPECT_EQ(visit.names,
            (std::vector<std::string>{"1 dangling", "1 locked folder", "1 loop", "1 sub"}));
  for (ItemCount quit = 1; quit <= all.size(); ++quit) {
    Visit cut{{}, quit};
    ASSERT_EQ(MF_FSIterateContainer(&tree, 0, kFSCatInfoNone, 0, 1, Note, &cut), noErr);
    EXPECT_EQ(cut.names, std::vector<std::string>(all.begin(), all.begin() + SInt64(quit)));
  }
  EXPECT_EQ(MF_FSIterateContainer(&tree, 0, kFSCatInfoNone, 0, 1, nullptr, nullptr), paramErr);
  Handle items = nullptr;
  ItemCount count = 0;
  ASSERT_EQ(MF_FSGetDirectoryItems(&tree, &items, &count, nullptr), noErr);
  EXPECT_EQ(count, 4U);
  EXPECT_EQ(GetHandleSize(items), Size(4 * sizeof(FSRef)));
  DisposeHandle(items);
  const FSRef file = ReferenceTo(folder / "tree/sub/deep/file");
  EXPECT_EQ(MF_FSGetDirectoryItems(&file, &items, &count, nullptr), dirNFErr);
  EXPECT_EQ(items, nullptr);
}

TEST(FileObjectFolders, DefaultFolderHasToBeOne) {
  TwoFiles files(true, false);
  const FSRef folder = ReferenceTo(files.top());
  FSRef old_folder;
  FSRef between;
  ASSERT_EQ(MF_FSSetDefault(&folder, &old_folder), noErr);
  EXPECT_EQ(PlaceOf(old_folder), fs::current_path());
  EXPECT_EQ(MF_FSSetDefault(&files.references[0], &between), dirNFErr);
  EXPECT_EQ(FSCompareFSRefs(&between, &folder), 0);
  EXPECT_EQ(MF_FSRestoreDefault(&old_folder), noErr);
}

TEST(FileObjectForks, AreCopiedThroughAnyBuffer) {
  const TemporaryFolder folder;
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, std::size_t{4096}, std::size_t{10000}}) {
    for (const ByteCount buffer_size : {1, 100, 4095, 5000, 20000}) {
      Bytes content(size);
      for (std::size_t i = 0; i < size; ++i)
        content[i] = static_cast<UInt8>(i * 7);
      WriteFile(folder / "from", content);
      WriteFile(folder / "to", Bytes(500, 9));
      const FSRef from = ReferenceTo(folder / "from");
      const FSRef to = ReferenceTo(folder / "to");
      FSIORefNum source = 0;
      FSIORefNum target = 0;
      ASSERT_EQ(FSOpenFork(&from, 0, nullptr, fsRdPerm, &source), noErr);
      ASSERT_EQ(FSOpenFork(&to, 0, nullptr, fsRdWrPerm, &target), noErr);
      Bytes buffer(buffer_size);
      EXPECT_EQ(MF_FSCopyFork(source, target, buffer.data(), buffer_size), noErr);
      FSRef same;
      EXPECT_EQ(MF_FileRefNumGetFSRef(target, &same), noErr);
      EXPECT_EQ(FSCompareFSRefs(&same, &to), 0);
      EXPECT_EQ(FSDeleteObject(&to), fBsyErr);
      FSCloseFork(source);
      FSCloseFork(target);
      EXPECT_EQ(ReadFile(folder / "to"), content) << size << " " << buffer_size;
    }
  }
  UInt64 logical = 0;
  ItemCount forks = 0;
  const FSRef to = ReferenceTo(folder / "to");
  EXPECT_EQ(MF_FSGetTotalForkSizes(&to, &logical, nullptr, &forks), noErr);
  EXPECT_EQ(logical, 10000U);
  EXPECT_EQ(forks, 1U);
  const FSRef top = ReferenceTo(folder.path());
  EXPECT_EQ(MF_FSGetForkSizes(&top, &logical, nullptr), notAFileErr);
}

}  // namespace
