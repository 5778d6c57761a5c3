#include "read_ahead.h"

#include <gtest/gtest.h>

#include <random>

#include "file_references.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

/// Any order of stretches gives the file's bytes, as a plain read does.
TEST(ReadAhead, GivesTheBytesOfTheFileInAnyOrder) {
  const TemporaryFolder folder;
  std::mt19937 random(7);
  std::vector<Bytes> contents(2, Bytes(700001));
  std::vector<std::shared_ptr<movies::DataSource>> sources(2);
  for (std::size_t i = 0; i < 2; ++i) {
    std::generate(contents[i].begin(), contents[i].end(),
                  [&] { return static_cast<UInt8>(random()); });
    const auto path = folder / std::to_string(i);
    WriteFile(path, contents[i]);
    ASSERT_EQ(movies::OpenDataSource(path, &sources[i]), noErr);
  }
  movies::ReadAhead reader;
  // Twelve places that go on, more than are remembered, with gaps, and some jumps.
  std::vector<std::size_t> next(12);
  std::generate(next.begin(), next.end(), [&] { return random() % 600000; });
  for (int step = 0; step < 20000; ++step) {
    const std::size_t place = random() % (step % 3 == 0 ? next.size() : 5);
    const std::size_t source = place % 2;
    const std::size_t size = random() % 50 == 0 ? random() % 90000 : random() % 300;
    const std::size_t offset = next[place];
    Bytes got(size, 0xEE);
    const bool within = offset + size <= contents[source].size();
    ASSERT_EQ(reader.Read(*sources[source], offset, got), within ? noErr : eofErr);
    if (within) {
      ASSERT_TRUE(std::equal(got.begin(), got.end(),
                             contents[source].begin() + static_cast<std::ptrdiff_t>(offset)));
    }
    next[place] = within ? offset + size + random() % 40 : random() % 600000;
  }
}

TEST(ReadAhead, AFileThatGetsShorterEndsTheReading) {
  const TemporaryFolder folder;
  const auto path = folder / "a";
  WriteFile(path, Bytes(400000, 1));
  std::shared_ptr<movies::DataSource> source;
  ASSERT_EQ(movies::OpenDataSource(path, &source), noErr);
  movies::ReadAhead reader;
  Bytes bytes(100);
  ASSERT_EQ(reader.Read(*source, 0, bytes), noErr);
  std::filesystem::resize_file(path, 150);
  // What is there still comes, though a block from there can't be filled.
  EXPECT_EQ(reader.Read(*source, 50, std::span(bytes).first(100)), noErr);
  EXPECT_EQ(reader.Read(*source, 150, std::span(bytes).first(1)), eofErr);
}

}  // namespace
}  // namespace quillmere::test
