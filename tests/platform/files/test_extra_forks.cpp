/// Resource forks and named forks, where they are kept, and who may write them.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <random>

#include "apple_double.h"
#include "creation.h"
#include "file_calls.h"
#include "finder_information.h"
#include "forks.h"
#include "moves.h"
#include "test_files.h"

namespace {

namespace files = quillmere::files;
using files::ForkBytes;
using quillmere::test::ReadFile;
using quillmere::test::WriteFile;

class ExtraForksTest : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteFile(path, "data");
    ASSERT_EQ(noErr, files::ReferenceOf(path, &file));
    ASSERT_EQ(noErr, FSGetResourceForkName(&resource_fork));
  }
  OSErr Open(std::u16string_view name, SInt8 permission, FSIORefNum* fork) const {
    return FSOpenFork(&file, static_cast<UInt32>(name.size()), name.data(), permission, fork);
  }
  std::u16string_view ResourceName() const {
    return {reinterpret_cast<const char16_t*>(resource_fork.unicode), resource_fork.length};
  }
  void Write(std::u16string_view name, const ForkBytes& bytes) const {
    FSIORefNum fork = 0;
    ASSERT_EQ(noErr, Open(name, fsRdWrPerm, &fork));
    EXPECT_EQ(noErr, FSSetForkSize(fork, fsFromStart, 0));
    EXPECT_EQ(noErr, FSWriteFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), nullptr));
    EXPECT_EQ(noErr, FSCloseFork(fork));
  }
  ForkBytes Read(std::u16string_view name) const {
    FSIORefNum fork = 0;
    ForkBytes bytes;
    EXPECT_EQ(noErr, Open(name, fsRdPerm, &fork));
    EXPECT_EQ(noErr, files::ReadForkContent(fork, &bytes));
    FSCloseFork(fork);
    return bytes;
  }
  std::size_t FilesInFolder() const {
    return static_cast<std::size_t>(std::distance(
        std::filesystem::directory_iterator(folder.path()), std::filesystem::directory_iterator()));
  }

  quillmere::test::TemporaryFolder folder;
  const std::filesystem::path path = folder / "movie";
  const std::filesystem::path sidecar = folder / "._movie";
  FSRef file{};
  HFSUniStr255 resource_fork{};
};

ForkBytes Noise(std::size_t size, UInt32 seed) {
  std::mt19937 random(seed);
  ForkBytes bytes(size);
  for (UInt8& byte : bytes)
    byte = static_cast<UInt8>(random());
  return bytes;
}

TEST_F(ExtraForksTest, ForksOfEverySizeComeBack) {
  for (const std::size_t size : {0, 1, 3799, 3800, 3801, 65'536, 65'537, 1'000'000, 100, 0}) {
    const ForkBytes resource = Noise(size, 1);
    const ForkBytes named = Noise(size, 2);
    Write(ResourceName(), resource);
    const OSErr made = FSCreateFork(&file, 4, u"notü");
    EXPECT_TRUE(made == noErr || made == errFSForkExists) << made;
    Write(u"notü", named);
    EXPECT_EQ(resource, Read(ResourceName())) << size;
    EXPECT_EQ(named, Read(u"notü")) << size;
    EXPECT_EQ(quillmere::test::Bytes({'d', 'a', 't', 'a'}), ReadFile(path));
    // Two of 3,800 bytes may be too much for the attributes of one file.
    const bool is_small = size <= 1900;
    if (is_small || size > 3800) {
      EXPECT_EQ(is_small ? 1U : 2U, FilesInFolder()) << size;
    }
  }
}

TEST_F(ExtraForksTest, WalksListTheForksThatThereAre) {
  Write(ResourceName(), Noise(5000, 3));
  ASSERT_EQ(noErr, FSCreateFork(&file, 1, u"b"));
  ASSERT_EQ(noErr, FSCreateFork(&file, 1, u"a"));
  EXPECT_EQ(errFSForkExists, FSCreateFork(&file, 1, u"a"));
  EXPECT_EQ(errFSForkExists, FSCreateFork(&file, resource_fork.length, resource_fork.unicode));
  Write(u"a", Noise(4000, 4));
  std::vector<std::pair<std::u16string, SInt64>> found;
  CatPositionRec position{};
  HFSUniStr255 name{};
  SInt64 size = 0;
  UInt64 physical = 0;
  OSErr status = noErr;
  while ((status = FSIterateForks(&file, &position, &name, &size, &physical)) == noErr) {
    found.emplace_back(std::u16string(reinterpret_cast<const char16_t*>(name.unicode), name.length),
                       size);
    EXPECT_GE(physical, static_cast<UInt64>(size));
  }
  EXPECT_EQ(errFSNoMoreItems, status);
  const std::vector<std::pair<std::u16string, SInt64>> expected = {
      {u"", 4}, {std::u16string(ResourceName()), 5000}, {u"a", 4000}, {u"b", 0}};
  EXPECT_EQ(expected, found);

  EXPECT_EQ(noErr, FSDeleteFork(&file, 1, u"a"));
  EXPECT_EQ(noErr, FSDeleteFork(&file, 1, u"b"));
  EXPECT_EQ(errFSForkNotFound, FSDeleteFork(&file, 1, u"b"));
  EXPECT_EQ(noErr, FSDeleteFork(&file, resource_fork.length, resource_fork.unicode));
  FSIORefNum fork = 0;
  EXPECT_EQ(errFSForkNotFound, Open(u"a", fsRdPerm, &fork));
  EXPECT_EQ(errFSBadForkName, Open(std::u16string(101, u'x'), fsRdPerm, &fork));
  EXPECT_EQ(1U, FilesInFolder());
}

TEST_F(ExtraForksTest, OneWriterAtATime) {
  for (const std::u16string_view name : {std::u16string_view(u""), ResourceName()}) {
    FSIORefNum writer = 0;
    FSIORefNum other = 0;
    ASSERT_EQ(noErr, Open(name, fsCurPerm, &writer));
    EXPECT_EQ(opWrErr, Open(name, fsWrPerm, &other));
    ASSERT_EQ(noErr, Open(name, fsCurPerm, &other));  // to read, then
    EXPECT_EQ(wrPermErr, FSWriteFork(other, fsFromStart, 0, 1, "x", nullptr));
    EXPECT_EQ(noErr, FSWriteFork(writer, fsFromStart, 0, 2, "xy", nullptr));
    char byte = 0;
    EXPECT_EQ(noErr, FSReadFork(other, fsFromStart, 1, 1, &byte, nullptr));
    EXPECT_EQ('y', byte);
    FSCloseFork(other);
    const pid_t child = fork();
    if (child == 0) _exit(Open(name, fsRdWrPerm, &other) == opWrErr ? 0 : 1);
    int result = -1;
    ASSERT_EQ(child, waitpid(child, &result, 0));
    EXPECT_EQ(0, result);
    FSRef reference{};
    FSForkCBInfo info{};
    EXPECT_EQ(noErr, FSGetForkCBInfo(writer, 0, nullptr, nullptr, &info, &reference, nullptr));
    EXPECT_EQ(0, FSCompareFSRefs(&file, &reference));
    EXPECT_TRUE(info.isWritable);
    FSCloseFork(writer);
    EXPECT_EQ(noErr, Open(name, fsRdWrPerm, &writer));
    FSCloseFork(writer);
  }
}

TEST_F(ExtraForksTest, ForksFollowARename) {
  Write(ResourceName(), Noise(10'000, 5));
  FSIORefNum fork = 0;
  ASSERT_EQ(noErr, Open(ResourceName(), fsRdWrPerm, &fork));
  EXPECT_EQ(noErr, FSWriteFork(fork, fsFromLEOF, 0, 3, "end", nullptr));
  ASSERT_EQ(noErr, FSRenameUnicode(&file, 3, u"new", 65535, &file));
  EXPECT_EQ(noErr, FSWriteFork(fork, fsFromLEOF, 0, 3, "end", nullptr));
  EXPECT_EQ(noErr, FSCloseFork(fork));
  ForkBytes expected = Noise(10'000, 5);
  for (const char unit : std::string_view("endend"))
    expected.push_back(static_cast<UInt8>(unit));
  EXPECT_EQ(expected, Read(ResourceName()));
  EXPECT_FALSE(std::filesystem::exists(sidecar));
  EXPECT_TRUE(std::filesystem::exists(folder / "._new"));
}

TEST_F(ExtraForksTest, AFailureAtAnyStepKeepsTheOldFork) {
  const ForkBytes old = Noise(20'000, 6);
  for (const std::size_t new_size : {std::size_t{30'000}, std::size_t{100}}) {
    bool has_failed = true;
    for (SInt64 step = 0; has_failed && step < 20; ++step) {
      Write(ResourceName(), old);
      FSIORefNum fork = 0;
      ASSERT_EQ(noErr, Open(ResourceName(), fsRdWrPerm, &fork));
      {
        const files::FailingCall failing(step, EIO);
        const ForkBytes fresh = Noise(new_size, 7);
        const OSErr status = files::ReplaceForkContent(fork, fresh);
        has_failed = failing.HasFailed();
        EXPECT_EQ(has_failed ? ioErr : OSErr{noErr}, status) << step;
      }
      FSCloseFork(fork);
      EXPECT_EQ(has_failed ? old : Noise(new_size, 7), Read(ResourceName())) << step;
      EXPECT_LE(FilesInFolder(), 2U);
    }
    EXPECT_FALSE(has_failed);
  }
}

TEST_F(ExtraForksTest, SidecarsOfOthersAreReadAndKept) {
  files::AppleDouble other;
  other.finder_information = Noise(32, 8);
  other.attributes = {{"com.example.note", 3, Noise(50, 9)}, {"empty", 0, {}}};
  other.others = {{4, Noise(20, 10)}};
  other.resource_fork = Noise(300, 11);
  ForkBytes bytes;
  ASSERT_TRUE(files::BuildAppleDouble(other, &bytes));
  WriteFile(sidecar, bytes);
  EXPECT_EQ(other.resource_fork, Read(ResourceName()));
  Write(ResourceName(), Noise(9000, 12));
  files::AppleDouble written;
  ASSERT_TRUE(files::ParseAppleDouble(ReadFile(sidecar), &written));
  EXPECT_EQ(other.finder_information, written.finder_information);
  ASSERT_EQ(2U, written.attributes.size());
  EXPECT_EQ(3, written.attributes[0].flags);
  EXPECT_EQ(other.attributes[0].value, written.attributes[0].value);
  ASSERT_EQ(1U, written.others.size());
  EXPECT_EQ(other.others[0].bytes, written.others[0].bytes);

  // A damaged one stays as it is.
  bytes[30] = 0xFF;
  WriteFile(sidecar, bytes);
  FSIORefNum fork = 0;
  EXPECT_EQ(ioErr, Open(ResourceName(), fsRdWrPerm, &fork));
  EXPECT_EQ(bytes, ReadFile(sidecar));
  // And so does a file of the user's that happens to have the name.
  WriteFile(sidecar, "mine");
  ASSERT_EQ(noErr, Open(ResourceName(), fsRdWrPerm, &fork));
  EXPECT_EQ(noErr, FSWriteFork(fork, fsFromStart, 0, 3, "abc", nullptr));
  EXPECT_EQ(dupFNErr, files::ReplaceForkContent(fork, Noise(9000, 13)));
  FSCloseFork(fork);
  EXPECT_EQ(4U, ReadFile(sidecar).size());
  EXPECT_EQ(ForkBytes({'a', 'b', 'c'}), Read(ResourceName()));
}

}  // namespace
