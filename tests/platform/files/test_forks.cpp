/// Forks, files and folders made under a name, and the logs folder.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

#include "catalogue.h"
#include "creation.h"
#include "finder_information.h"
#include "folders.h"
#include "forks.h"
#include "test_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;

class ForksTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(noErr, quillmere::files::ReferenceOf(folder.path(), &parent)); }
  OSErr Create(const std::string& name, FSRef* made, FSCatalogInfoBitmap mask = kFSCatInfoNone,
               const FSCatalogInfo* info = nullptr) const {
    const Owned<CFStringRef> string(quillmere::CreateFromUtf8(name));
    const std::u16string_view units = quillmere::UnitsOf(string.get());
    return FSCreateFileUnicode(&parent, static_cast<UInt32>(units.size()),
                               reinterpret_cast<const UniChar*>(units.data()), mask, info, made,
                               nullptr);
  }
  std::string Content(const std::string& name) const {
    std::ifstream file(folder.path() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  quillmere::test::TemporaryFolder folder;
  FSRef parent{};
};

TEST_F(ForksTest, WritesGoWhereTheModeSays) {
  FSRef file{};
  ASSERT_EQ(noErr, Create("a", &file));
  FSIORefNum fork = 0;
  ASSERT_EQ(noErr, FSOpenFork(&file, 0, nullptr, fsWrPerm, &fork));
  EXPECT_GT(fork, 0);
  const struct {
    UInt16 mode;
    SInt64 offset;
    const char* bytes;
    OSErr status;
    const char* content;
  } writes[] = {
      {fsFromLEOF, 0, "0123456789", noErr, "0123456789"},
      {fsFromStart, 2, "ab", noErr, "01ab456789"},
      {fsAtMark, 77, "c", noErr, "01abc56789"},  // the offset has no meaning there
      {fsFromMark, -3, "d", noErr, "01dbc56789"},
      {fsFromMark, -4, "e", posErr, "01dbc56789"},
      {fsFromLEOF, -1, "xy", noErr, "01dbc5678xy"},
      {fsFromStart, -1, "z", posErr, "01dbc5678xy"},
      {4, 0, "z", static_cast<OSErr>(paramErr), "01dbc5678xy"},
  };
  for (const auto& write : writes) {
    ByteCount actual = 99;
    EXPECT_EQ(write.status, FSWriteFork(fork, write.mode, write.offset, std::strlen(write.bytes),
                                        write.bytes, &actual))
        << write.content;
    EXPECT_EQ(write.status == noErr ? std::strlen(write.bytes) : 0, actual);
    EXPECT_EQ(write.content, Content("a"));
  }
  EXPECT_EQ(dskFulErr, FSWriteFork(fork, fsFromStart, 5, ~ByteCount{0}, "z", nullptr));
  EXPECT_EQ(noErr, FSFlushFork(fork));
  EXPECT_EQ(noErr, FSCloseFork(fork));
  EXPECT_EQ(rfNumErr, FSCloseFork(fork));
  EXPECT_EQ(rfNumErr, FSWriteFork(fork, fsFromStart, 0, 1, "z", nullptr));
  for (const FSIORefNum wrong : {FSIORefNum{0}, FSIORefNum{-1}, FSIORefNum{32767}})
    EXPECT_EQ(rfNumErr, FSFlushFork(wrong));
}

TEST_F(ForksTest, ReadsSizesAndMarks) {
  FSRef file{};
  ASSERT_EQ(noErr, Create("a", &file));
  FSIORefNum fork = 0;
  ASSERT_EQ(noErr, FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork));
  ASSERT_EQ(noErr, FSWriteFork(fork, fsFromStart, 0, 10, "0123456789", nullptr));
  const struct {
    UInt16 mode;
    SInt64 offset;
    ByteCount count;
    OSErr status;
    const char* bytes;
  } reads[] = {{fsFromStart | noCacheMask, 2, 3, noErr, "234"},
               {fsAtMark, 99, 2, noErr, "56"},
               {fsFromMark | noCacheMask | forceReadMask, -1, 2, noErr, "67"},
               {fsFromLEOF, -3, 9, eofErr, "789"},
               {fsAtMark, 0, 1, eofErr, ""},
               {fsFromStart, 50, 1, eofErr, ""},
               {fsFromStart, 1, 0, noErr, ""},
               {fsFromLEOF, -11, 1, posErr, ""},
               {fsFromStart | 0x100, 0, 1, static_cast<OSErr>(paramErr), ""}};
  for (const auto& read : reads) {
    char bytes[16] = {};
    ByteCount actual = 99;
    EXPECT_EQ(read.status, FSReadFork(fork, read.mode, read.offset, read.count, bytes, &actual));
    EXPECT_STREQ(read.bytes, bytes);
    EXPECT_EQ(std::strlen(read.bytes), actual);
  }
  SInt64 number = 0;
  EXPECT_EQ(noErr, FSSetForkPosition(fork, fsFromLEOF, -2));
  EXPECT_EQ(noErr, FSGetForkPosition(fork, &number));
  EXPECT_EQ(8, number);
  EXPECT_EQ(eofErr, FSSetForkPosition(fork, fsFromMark, 3));
  EXPECT_EQ(posErr, FSSetForkPosition(fork, fsFromStart, -1));
  EXPECT_EQ(noErr, FSGetForkPosition(fork, &number));
  EXPECT_EQ(10, number);
  EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromMark, -6));
  EXPECT_EQ("0123", Content("a"));
  EXPECT_EQ(noErr, FSGetForkPosition(fork, &number));
  EXPECT_EQ(4, number);
  EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromStart, 6));
  EXPECT_EQ(std::string("0123\0\0", 6), Content("a"));
  EXPECT_EQ(noErr, FSGetForkSize(fork, &number));
  EXPECT_EQ(6, number);
  EXPECT_EQ(posErr, FSSetForkSize(fork, fsFromLEOF, -7));
  EXPECT_EQ(noErr, FSCloseFork(fork));
  EXPECT_EQ(rfNumErr, FSGetForkSize(fork, &number));
  ASSERT_EQ(noErr, FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork));
  EXPECT_EQ(wrPermErr, FSSetForkSize(fork, fsFromStart, 0));
  EXPECT_EQ(noErr, FSCloseFork(fork));
}

TEST_F(ForksTest, OpeningKeepsToPermissions) {
  FSRef file{};
  ASSERT_EQ(noErr, Create("a", &file));
  FSIORefNum fork = 7;
  EXPECT_EQ(static_cast<OSErr>(paramErr), FSOpenFork(&file, 0, nullptr, 4, &fork));
  EXPECT_EQ(0, fork);
  ASSERT_EQ(noErr, FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork));
  EXPECT_EQ(wrPermErr, FSWriteFork(fork, fsFromStart, 0, 1, "z", nullptr));
  FSCloseFork(fork);
  EXPECT_EQ(permErr, FSOpenFork(&parent, 0, nullptr, fsRdPerm, &fork));
  fs::remove(folder.path() / "a");
  EXPECT_EQ(fnfErr, FSOpenFork(&file, 0, nullptr, fsRdPerm, &fork));
  EXPECT_EQ(0, fork);
}

TEST_F(ForksTest, NewFilesHaveTheirFinderInformationAndNeverReplace) {
  FSCatalogInfo info{};
  std::memcpy(info.finderInfo, "TEXTabcd", 8);
  FSRef file{};
  ASSERT_EQ(noErr, Create("\u00E4 \U0001F3A5", &file, kFSCatInfoFinderInfo, &info));
  quillmere::files::FinderInformation read;
  quillmere::files::ReadFinderInformation(folder.path() / "\u00E4 \U0001F3A5", &read);
  EXPECT_EQ("TEXT"_4cc, read.Type());
  EXPECT_EQ("abcd"_4cc, read.Creator());
  const struct {
    std::string name;
    OSErr status;
  } names[] = {{"\u00E4 \U0001F3A5", dupFNErr},
               {"", errFSMissingName},
               {"a/b", bdNamErr},
               {"..", bdNamErr},
               {".", bdNamErr}};
  for (const auto& test : names)
    EXPECT_EQ(test.status, Create(test.name, nullptr)) << test.name;
  EXPECT_EQ(static_cast<OSErr>(paramErr), Create("x", nullptr, kFSCatInfoDataSizes, &info));
  EXPECT_FALSE(fs::exists(folder.path() / "x"));
}

TEST_F(ForksTest, TheLogsFolderIsMadeWhenAsked) {
  setenv("XDG_STATE_HOME", (folder.path() / "state").c_str(), 1);
  FSRef logs{};
  EXPECT_EQ(fnfErr, FSFindFolder(kUserDomain, kLogsFolderType, 0, &logs));
  EXPECT_EQ(noErr, FSFindFolder(kUserDomain, kLogsFolderType, 1, &logs));
  fs::path path;
  EXPECT_EQ(noErr, quillmere::files::PathOf(logs, &path));
  EXPECT_TRUE(fs::equivalent(folder.path() / "state/quillmere/logs", path));
  EXPECT_EQ(noErr, FSFindFolder(kUserDomain, kLogsFolderType, 0, &logs));
  unsetenv("XDG_STATE_HOME");
  setenv("HOME", folder.path().c_str(), 1);
  EXPECT_EQ(noErr, FSFindFolder(kUserDomain, kLogsFolderType, 1, &logs));
  EXPECT_TRUE(fs::is_directory(folder.path() / ".local/state/quillmere/logs"));
  EXPECT_EQ(static_cast<OSErr>(paramErr), FSFindFolder(kUserDomain, "none"_4cc, 1, &logs));
}

}  // namespace
