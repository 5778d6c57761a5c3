#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "GL_File.h"
#include "QT_Error_Keys.h"
#include "QT_Movie_Atoms.h"
#include "big_endian.h"
#include "file_objects.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

Bytes Words(std::initializer_list<UInt32> words) {
  Bytes bytes;
  for (const UInt32 word : words)
    AppendU32(&bytes, word);
  return bytes;
}

constexpr UInt32 kMdat = "mdat"_4cc;
constexpr UInt32 kWide = "wide"_4cc;
constexpr UInt32 kData = 0xABABABAB;
const Bytes kInitialHeader = Words({8, kWide, 8, kMdat});

/// A file that starts with `start` and goes on with zeros, unwritten, to `size`.
FSRef SparseFile(const std::filesystem::path& path, const Bytes& start, UInt64 size) {
  WriteFile(path, start);
  std::filesystem::resize_file(path, size);
  return ReferenceTo(path);
}

Bytes StartOf(const std::filesystem::path& path, std::size_t size) {
  std::ifstream file(path, std::ios::binary);
  Bytes bytes(size);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(size));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

class Fork {
 public:
  explicit Fork(const FSRef& file) { EXPECT_EQ(GL_OpenDataFork(&file, fsRdWrPerm, &number_), 0); }
  Fork(const Fork&) = delete;
  Fork& operator=(const Fork&) = delete;
  ~Fork() { FSCloseFork(number_); }
  FSIORefNum number() const { return number_; }

 private:
  FSIORefNum number_ = 0;
};

TEST(MovieDataHeaders, AreClosedInTheFormThatTheSizeNeeds) {
  const TemporaryFolder folder;
  const struct {
    UInt64 size;
    SInt64 position;
    Bytes header;
  } cases[] = {
      {16, 0, Words({8, kWide, 8, kMdat})},
      {0x7FFFFFFE, 0, Words({8, kWide, 0x7FFFFFF6, kMdat})},
      {0x7FFFFFFF, 0, Words({1, kMdat, 0, 0x7FFFFFFF})},
      {0x180000005, 0, Words({1, kMdat, 1, 0x80000005})},
      {0x8000001D, 32, Words({8, kWide, 0x7FFFFFF5, kMdat})},
      {0x8000001F, 32, Words({1, kMdat, 0, 0x7FFFFFFF})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.size);
    const Fork fork(SparseFile(folder / "data", {}, 0));
    ASSERT_EQ(FSSetForkSize(fork.number(), fsFromStart, c.position), noErr);
    ASSERT_EQ(FSSetForkPosition(fork.number(), fsFromStart, c.position), noErr);
    ASSERT_EQ(QT_WriteInitialMdatHeader(fork.number()), noErr);
    ASSERT_EQ(FSSetForkSize(fork.number(), fsFromStart, static_cast<SInt64>(c.size)), noErr);
    ASSERT_EQ(c.position == 0 ? QT_SetFileSizeInMdatHeader(fork.number())
                              : QT_SetFileSizeInMdatHeaderAtMark(fork.number(), c.position),
              noErr);
    Bytes expected(static_cast<std::size_t>(c.position));
    expected.insert(expected.end(), c.header.begin(), c.header.end());
    EXPECT_EQ(StartOf(folder / "data", expected.size()), expected);
    EXPECT_EQ(std::filesystem::file_size(folder / "data"), c.size);
  }
  const Fork fork(SparseFile(folder / "data", {}, 0));
  EXPECT_EQ(QT_SetFileSizeInMdatHeader(fork.number()), paramErr);
  EXPECT_NE(QT_SetFileSizeInMdatHeaderAtMark(fork.number(), 40), noErr);
  EXPECT_EQ(std::filesystem::file_size(folder / "data"), 0U);
}

TEST(MovieDataHeaders, AreRepaired) {
  const TemporaryFolder folder;
  constexpr UInt64 kLarge = 0x180000000;
  const UInt32 ftyp = "ftyp"_4cc;
  const struct {
    Bytes start;
    UInt64 size;
    SInt32 status;
    Bytes repaired;  ///< empty: as it was
    std::string text;
  } cases[] = {
      // Right, or no header behind the start.
      {Words({8, ftyp, 92, kMdat}), 100, 0, {}, ""},
      {Words({8, ftyp, 8, kMdat, 1, kMdat, 1, 0x7FFFFFF8}), kLarge, 0, {}, ""},
      {Words({8, ftyp, 8, kMdat, 1, kMdat, 1, 0x7FFFFFF0}), kLarge, 0, {}, ""},
      {Words({50, kMdat, kData, 50, kMdat}), 100, 0, {}, ""},
      {Words({8, ftyp}), 0x300000, 0, {}, ""},
      {Words({8, ftyp, 8, kMdat}), 20, 0, {}, ""},
      {{}, 0, 0, {}, ""},
      // Wrong: too long, too short with an atom behind it, 0, and with an odd start.
      {Words({8, ftyp, 93, kMdat, kData}), 100, QT_MdatHeaderErr,
       Words({8, ftyp, 92, kMdat, kData}), "first mdat from 93 to 92"},
      {Words({8, ftyp, 40, kMdat}), 100, QT_MdatHeaderErr, Words({8, ftyp, 92, kMdat}),
       "first mdat from 40 to 92"},
      {Words({8, ftyp, 0xFFFFFFF0, kMdat}), 100, QT_MdatHeaderErr, Words({8, ftyp, 92, kMdat}),
       "first mdat from 4294967280 to 92"},
      {Words({8, ftyp, 8, kMdat, 1, kMdat, 0, 12}), kLarge, QT_MdatHeaderErr,
       Words({8, ftyp, 8, kMdat, 1, kMdat, 1, 0x7FFFFFF0}), "second mdat from 12 to 6442450936"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const FSRef file = SparseFile(folder / "movie.mp4", c.start, c.size);
    testing::internal::CaptureStdout();
    EXPECT_EQ(QT_FixMpg4Mdat(&file), c.status);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(text,
              c.text.empty() ? "" : "Torvelle: correcting mpg4 file: changed size in " + c.text);
    const Bytes& expected = c.repaired.empty() ? c.start : c.repaired;
    EXPECT_EQ(StartOf(folder / "movie.mp4", expected.size()), expected);
    EXPECT_EQ(std::filesystem::file_size(folder / "movie.mp4"), c.size);
    EXPECT_EQ(QT_FixMpg4Mdat(&file), noErr) << "it is right now";
  }

  // A header that straddles two blocks.
  Bytes far = Words({8, kWide});
  far.resize((1 << 20) - 6);
  const Bytes header = Words({7, kMdat, kData, kData, kData, kData});
  far.insert(far.end(), header.begin(), header.end());
  WriteFile(folder / "far", far);
  const FSRef file = ReferenceTo(folder / "far");
  EXPECT_EQ(QT_FixMpg4Mdat(&file), QT_MdatHeaderErr);
  WriteU32(far.data() + (1 << 20) - 6, 24);
  EXPECT_EQ(ReadFile(folder / "far"), far);
}

using Atoms = std::vector<std::pair<SInt64, OSType>>;

TEST(MainAtoms, AreListedOnEveryInput) {
  const TemporaryFolder folder;
  const struct {
    Bytes start;
    UInt64 size;
    SInt32 status;
    Atoms atoms;
  } cases[] = {
      {{}, 0, 0, {}},
      {Words({16, "ftyp"_4cc, 0, 0, 24, kMdat}), 40, 0, {{16, "ftyp"_4cc}, {24, kMdat}}},
      {Words({8, "free"_4cc, 8, "wide"_4cc}), 16, eofErr, {{8, "free"_4cc}, {8, kWide}}},
      {Words({1, kMdat, 1, 0x80000000}), 0x180000000, 0, {{0x180000000, kMdat}}},
      {Words({1, kMdat, 1, 0, 0}), 0x100000010, 0, {{0x100000000, kMdat}, {0, 0}}},
      // Sizes that lead nowhere: 0, less than a header, beyond the end, negative.
      {Words({8, "free"_4cc, 0, kMdat, 8}), 100, 0, {{8, "free"_4cc}, {0, kMdat}}},
      {Words({7, kMdat}), 100, 0, {{7, kMdat}}},
      {Words({1, kMdat, 0, 15}), 100, 0, {{15, kMdat}}},
      {Words({101, kMdat}), 100, 0, {{101, kMdat}}},
      {Words({1, kMdat, 0xFFFFFFFF, 0xFFFFFFF0}), 100, 0, {{-16, kMdat}}},
      {Words({8}), 4, eofErr, {{8, 0}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const Fork fork(SparseFile(folder / "movie.mp4", c.start, c.size));
    UInt32 count = 7;
    SInt64* sizes = nullptr;
    OSType* types = nullptr;
    EXPECT_EQ(QT_GetMainAtoms(fork.number(), &count, &sizes, &types), c.status);
    Atoms atoms;
    for (UInt32 i = 0; i < count; ++i)
      atoms.emplace_back(sizes[i], types[i]);
    EXPECT_EQ(atoms, c.atoms);
    EXPECT_EQ(sizes == nullptr, c.atoms.empty());
    std::free(sizes);
    std::free(types);
  }
}

}  // namespace
}  // namespace quillmere::test
