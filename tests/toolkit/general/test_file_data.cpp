/// Moving bytes within a fork, and reading, writing, cutting and replacing the bytes of forks.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>
#include <random>

#include "GL_BlockMove.h"
#include "GL_File_Data.h"
#include "GL_Memory.h"
#include "catalogue.h"
#include "test_files.h"

namespace {

using quillmere::test::Bytes;
using quillmere::test::ReadFile;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

Bytes RandomBytes(std::size_t size, UInt64 seed) {
  std::mt19937_64 random(seed);
  Bytes bytes(size + 8);
  for (std::size_t i = 0; i < size; i += 8) {
    const UInt64 word = random();
    std::memcpy(&bytes[i], &word, 8);
  }
  bytes.resize(size);
  return bytes;
}

class FileData : public ::testing::Test {
 protected:
  void SetUp() override { Write("0123456789"); }
  void TearDown() override {
    if (fork != 0) {
      EXPECT_EQ(noErr, FSCloseFork(fork));
    }
  }
  template <class Content>
  void Write(const Content& content) {
    WriteFile(folder / "file", content);
    ASSERT_EQ(noErr, quillmere::files::ReferenceOf(folder / "file", &file));
  }
  void Open() { ASSERT_EQ(noErr, FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork)); }
  std::string Content() const {
    const Bytes bytes = ReadFile(folder / "file");
    return {bytes.begin(), bytes.end()};
  }

  TemporaryFolder folder;
  FSRef file{};
  FSIORefNum fork = 0;
};

/// What a move in memory makes of the bytes.
void MoveInMemory(Bytes* bytes, std::size_t source, std::size_t destination, std::size_t size) {
  if (bytes->size() < destination + size) bytes->resize(destination + size);
  std::memmove(bytes->data() + destination, bytes->data() + source, size);
}

TEST_F(FileData, RandomMovesEqualMovesInMemory) {
  constexpr int kMoves = 2000;
  constexpr int kEachLarge = 250;
  std::mt19937 random(20);
  const auto below = [&random](std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
  };
  Open();
  for (int i = 0; i < kMoves; ++i) {
    // The number of bits of a size is drawn, so that all magnitudes come.
    const std::size_t bits = i % kEachLarge == 0 ? 24 : 1 + below(14);
    const std::size_t size = (std::size_t{1} << (bits - 1)) + below(std::size_t{1} << (bits - 1));
    const std::size_t source = below(size + 5000) / (below(4) == 0 ? 2048 : 1);
    std::size_t destination = below(2 * size + 5000);
    if (below(4) == 0) destination = source + below(2048);  // nearly all of it overlaps
    Bytes bytes = RandomBytes(source + size + below(5000), static_cast<UInt64>(i));
    ASSERT_EQ(noErr, FSWriteFork(fork, fsFromStart, 0, bytes.size(), bytes.data(), nullptr));
    ASSERT_EQ(noErr, FSSetForkSize(fork, fsFromStart, static_cast<SInt64>(bytes.size())));
    const UInt32 buffers[] = {0, 4096, 7000, 65536, 1 << 20};
    const UInt32 buffer = bits == 24 ? 300'000 : buffers[below(std::size(buffers))];
    ASSERT_EQ(noErr, GL_BlockMoveDataWithinFile(
                         fork, static_cast<SInt64>(source), static_cast<SInt64>(destination),
                         static_cast<SInt64>(size), buffer, below(2) != 0, nullptr, nullptr));
    MoveInMemory(&bytes, source, destination, size);
    Bytes moved(bytes.size() + 1);
    ByteCount count = 0;
    ASSERT_EQ(eofErr, FSReadFork(fork, fsFromStart, 0, moved.size(), moved.data(), &count));
    moved.resize(count);
    ASSERT_TRUE(bytes == moved) << "move " << i << ": " << source << " to " << destination << ", "
                                << size << " bytes";
  }
}

/// What a progress procedure has seen.
struct Progress {
  std::vector<Float32> fractions;
  std::size_t stop_after = 1000;
  std::size_t memory_before = mallinfo2().uordblks + mallinfo2().hblkhd;
  std::size_t most_memory = 0;
};

SInt32 Note(Float32 fraction, void* ref_con) {
  auto* const progress = static_cast<Progress*>(ref_con);
  progress->fractions.push_back(fraction);
  const std::size_t now = mallinfo2().uordblks + mallinfo2().hblkhd;
  progress->most_memory = std::max(progress->most_memory, now - progress->memory_before);
  return progress->fractions.size() > progress->stop_after ? userCanceledErr : noErr;
}

TEST_F(FileData, MovesReportBothWaysKeepToTheirMemoryAndEndWhenTold) {
  const Bytes bytes = RandomBytes(4'000'000, 3);
  for (const SInt64 destination : {100, 0}) {
    Write(bytes);
    Open();
    Progress progress;
    progress.fractions.reserve(1000);
    progress.memory_before = mallinfo2().uordblks + mallinfo2().hblkhd;
    EXPECT_EQ(noErr, GL_BlockMoveDataWithinFile(fork, 50, destination, 3'000'000, 100'000, 0, Note,
                                                &progress));
    EXPECT_GE(progress.fractions.size(), 30U);
    EXPECT_EQ(0.0F, progress.fractions.front());
    EXPECT_TRUE(std::is_sorted(progress.fractions.begin(), progress.fractions.end()));
    EXPECT_GT(progress.fractions.back(), 0.99F);
    EXPECT_LE(progress.fractions.back(), 1.0F);
    EXPECT_LE(progress.most_memory, 110'000U);

    Progress stopped;
    stopped.stop_after = 3;
    EXPECT_EQ(userCanceledErr, GL_BlockMoveDataWithinFile(fork, 50, destination, 3'000'000, 100'000,
                                                          0, Note, &stopped));
    EXPECT_EQ(4U, stopped.fractions.size());
    EXPECT_EQ(noErr, FSCloseFork(fork));
    fork = 0;
  }
}

TEST_F(FileData, MovesThatMakeNoSense) {
  Open();
  constexpr SInt64 kMost = std::numeric_limits<SInt64>::max();
  const struct {
    SInt64 source;
    SInt64 destination;
    SInt64 size;
    SInt32 status;
  } rows[] = {{0, -1, 1, posErr}, {0, 5, -1, paramErr},     {0, 5, 0, noErr},
              {3, 3, 4, noErr},   {-1, 0, 4, posErr},       {0, kMost - 3, 4, posErr},
              {8, 0, 4, eofErr},  {kMost - 3, 0, 4, posErr}};
  for (const auto& row : rows) {
    EXPECT_EQ(row.status, GL_BlockMoveDataWithinFile(fork, row.source, row.destination, row.size, 0,
                                                     0, nullptr, nullptr))
        << row.source << " " << row.destination;
    EXPECT_EQ("0123456789", Content());
  }
}

TEST_F(FileData, RemovesAndReplaces) {
  const struct {
    UInt16 mode;
    SInt64 offset;
    SInt64 size;
    SInt32 status;
    const char* content;
  } rows[] = {{fsFromStart, 2, 3, noErr, "0156789"},
              {fsFromLEOF, -4, 4, noErr, "012345"},
              {fsFromStart, 0, 10, noErr, ""},
              {fsFromStart, 5, 0, noErr, "0123456789"},
              {fsFromStart, 7, 4, paramErr, "0123456789"},
              {fsFromStart, 7, -1, paramErr, "0123456789"},
              {fsFromStart, -1, 1, posErr, "0123456789"},
              {fsFromStart, 11, 0, eofErr, "0123456789"}};
  for (const auto& row : rows) {
    Write("0123456789");
    EXPECT_EQ(row.status, GL_RemoveDataFromFile(&file, row.mode, row.offset, row.size));
    EXPECT_EQ(row.content, Content());
  }
  EXPECT_EQ(noErr, GL_ReplaceDataInFile(0, &file, 3, "abc"));
  EXPECT_EQ("abc", Content());
  Open();
  EXPECT_EQ(noErr, GL_ReplaceDataInFile(fork, nullptr, 5, "defgh"));
  EXPECT_EQ("defgh", Content());
  EXPECT_EQ(noErr, GL_ClearFile(fork, 2, 7, 3));
  EXPECT_EQ(std::string("de\0\0\0\0\0\0\0", 9), Content());
  EXPECT_EQ(paramErr, GL_ClearFile(fork, 2, 7, 0));
  EXPECT_EQ(paramErr, GL_ClearFile(fork, 2, -1, 4));
  EXPECT_EQ(paramErr, GL_ReplaceDataInFile(0, nullptr, 3, "abc"));
  EXPECT_EQ(opWrErr, GL_RemoveAllDataFromFile(&file));
  EXPECT_EQ(noErr, FSCloseFork(fork));
  fork = 0;
  EXPECT_EQ(noErr, GL_RemoveAllDataFromFile(&file));
  EXPECT_EQ("", Content());
}

TEST_F(FileData, ReadsAndWritesOpenForksAndFiles) {
  const struct {
    UInt16 mode;
    SInt64 offset;
    UInt32 count;
    SInt32 status;
    const char* bytes;
  } rows[] = {{fsFromStart, 2, 3, noErr, "234"},          {fsFromStart, 2, 0, noErr, "23456789"},
              {fsFromLEOF, -2, 99, noErr, "89"},          {fsFromStart, 10, 0, noErr, ""},
              {fsFromStart, 0, ~0U, noErr, "0123456789"}, {fsFromStart, -2, 3, posErr, nullptr}};
  Open();
  for (const bool from_fork : {false, true}) {
    for (const auto& row : rows) {
      void* own = nullptr;
      UInt32 count = row.count;
      EXPECT_EQ(row.status,
                GL_ReadDataFromFork(from_fork ? fork : FSIORefNum{0}, from_fork ? nullptr : &file,
                                    0, nullptr, &own, 5, row.mode, row.offset, &count));
      EXPECT_EQ(row.bytes != nullptr, own != nullptr);
      if (own) {
        EXPECT_EQ(row.bytes, std::string(static_cast<char*>(own) + 5, count));
      }
      GL_DisposePtr(&own);
    }
  }
  char buffer[] = "....................";
  void* given = buffer;
  UInt32 count = 4;
  EXPECT_EQ(noErr,
            GL_ReadDataFromFork(fork, nullptr, 0, nullptr, &given, 3, fsFromStart, 1, &count));
  EXPECT_EQ("...1234....", std::string(buffer, 11));
  EXPECT_EQ(paramErr,
            GL_ReadDataFromFork(0, nullptr, 0, nullptr, &given, 0, fsFromStart, 0, &count));

  count = 3;
  EXPECT_EQ(noErr,
            GL_WriteDataToFork(fork, nullptr, 0, nullptr, "xyzabc", 2, fsFromLEOF, 0, &count));
  EXPECT_EQ("0123456789zab", Content());
  EXPECT_EQ(paramErr,
            GL_WriteDataToFork(fork, nullptr, 0, nullptr, nullptr, 0, fsFromStart, 0, &count));
  EXPECT_EQ(noErr, GL_WriteFileNoCache(fork, fsFromStart, 1, 2, "AB", 1));
  EXPECT_EQ(noErr, GL_ReadFileNoCache(fork, fsFromStart, 0, 4, buffer));
  EXPECT_EQ("0AB3", std::string(buffer, 4));
  EXPECT_EQ(eofErr, GL_ReadFileNoCache(fork, fsFromStart, 12, 4, buffer));
  void* all = nullptr;
  EXPECT_EQ(noErr, GL_ReadAllDataFromDataFork(0, &file, &all, &count));
  EXPECT_EQ(Content(), std::string(static_cast<char*>(all), count));
  GL_DisposePtr(&all);
}

/// A fork of a file as a whole.
std::string ForkOf(const FSRef& file, bool resource) {
  HFSUniStr255 name{};
  EXPECT_EQ(noErr, resource ? FSGetResourceForkName(&name) : FSGetDataForkName(&name));
  void* bytes = nullptr;
  UInt32 count = 0;
  EXPECT_EQ(noErr, GL_ReadDataFromFork(0, &file, name.length, name.unicode, &bytes, 0, fsFromStart,
                                       0, &count));
  const std::string text(static_cast<const char*>(bytes), count);
  GL_DisposePtr(&bytes);
  return text;
}

TEST_F(FileData, SmallFilesAreCopiedWithBothForksAndTheirInformation) {
  HFSUniStr255 resource{};
  ASSERT_EQ(noErr, FSGetResourceForkName(&resource));
  UInt32 count = 8;
  ASSERT_EQ(noErr, GL_WriteDataToFork(0, &file, resource.length, resource.unicode, "resource", 0,
                                      fsFromStart, 0, &count));
  FSCatalogInfo info{};
  std::memcpy(info.finderInfo, "TEXTabcd\x05", 9);  // inited, and has a custom icon
  info.contentModDate = quillmere::files::DateOfUnixTime(1'000'000, 0);
  ASSERT_EQ(noErr, FSSetCatalogInfo(&file, kFSCatInfoFinderInfo | kFSCatInfoContentMod, &info));
  WriteFile(folder / "copy", "longer than the other one");
  FSRef copy{};
  ASSERT_EQ(noErr, quillmere::files::ReferenceOf(folder / "copy", &copy));
  ASSERT_EQ(noErr, GL_CopySmallFile(&file, &copy));
  EXPECT_EQ("0123456789", ForkOf(copy, false));
  EXPECT_EQ("resource", ForkOf(copy, true));
  FSCatalogInfo read{};
  ASSERT_EQ(noErr, FSGetCatalogInfo(&copy, kFSCatInfoFinderInfo | kFSCatInfoContentMod, &read,
                                    nullptr, nullptr, nullptr));
  EXPECT_EQ(0, std::memcmp(read.finderInfo, "TEXTabcd\x04", 9));
  EXPECT_TRUE(read.contentModDate == info.contentModDate);
  const FSRef none{};
  EXPECT_NE(noErr, GL_CopySmallFile(&file, &none));
}

TEST_F(FileData, ForksOpenForWritingAreKnown) {
  Boolean data = 9;
  Boolean resource = 9;
  EXPECT_EQ(noErr, GL_IsFileOpenForWriting(&file, &resource, &data));
  EXPECT_EQ(0, data);
  EXPECT_EQ(0, resource);
  Open();
  EXPECT_EQ(noErr, GL_IsFileOpenForWriting(&file, &resource, &data));
  EXPECT_EQ(1, data);
  EXPECT_EQ(0, resource);
  const FSRef none{};
  EXPECT_EQ(errFSBadFSRef, GL_IsFileOpenForWriting(&none, &resource, &data));
}

}  // namespace
