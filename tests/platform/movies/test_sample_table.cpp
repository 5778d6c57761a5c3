/// Sample tables built by hand: old sound, several descriptions, compact sizes, and damaged tables.

#include "sample_table.h"

#include <gtest/gtest.h>

#include <memory>

#include "atom_builder.h"
#include "file_references.h"
#include "movie_toolbox.h"
#include "table_builder.h"

namespace quillmere::test {
namespace {

using movies::Atom;
using movies::ChunkInfo;
using movies::SampleInfo;
using movies::SampleTable;

/// The atom by itself; `parents` are put around so that it is read in its place.
std::unique_ptr<Atom> ParseTables(const Bytes& stbl) {
  const Bytes movie = MakeAtom(
      "moov", {MakeAtom("trak", {MakeAtom("mdia", {MakeAtom("minf", {MakeAtom("stbl", stbl)})})})});
  std::unique_ptr<Atom> root;
  EXPECT_EQ(movies::ParseAtom(std::make_shared<Bytes>(movie), &root), noErr);
  return root;
}

Atom* TablesOf(Atom* movie) {
  return movie->FindPath({"trak"_4cc, "mdia"_4cc, "minf"_4cc, "stbl"_4cc});
}

OSStatus ReadTables(const Bytes& stbl, OSType media_type, SampleTable* table) {
  const std::unique_ptr<Atom> movie = ParseTables(stbl);
  return SampleTable::Read(*TablesOf(movie.get()), media_type, table);
}

Bytes SoundVersion2(std::string_view format, UInt32 bytes_per_packet, UInt32 frames_per_packet) {
  ByteWriter content;
  content.Zeros(6).U16(1).U16(2).Zeros(6).U16(3).U16(16).U16(0xFFFE).U16(0).U32(0x10000);
  content.U32(72).U64(0x40E5888000000000U).U32(2).U32(0x7F000000).U32(16).U32(0);
  content.U32(bytes_per_packet).U32(frames_per_packet);
  return MakeAtom(format, content.bytes);
}

struct SoundCase {
  const char* name;
  Bytes description;
  UInt32 table_size;   ///< what stsz says of every sample
  UInt32 duration;     ///< of one sample
  UInt64 first_chunk;  ///< expected bytes of a chunk of 1280 samples
  UInt64 last_chunk;   ///< expected bytes of one of 100 samples
};

TEST(SampleTable, ChunksOfSoundHaveTheBytesOfTheirPackets) {
  const SoundVersion1 ima = {64, 68, 0};
  const SoundVersion1 plain24 = {1, 6, 0};
  const SoundVersion1 variable = {1024, 0, -2};
  const SoundCase cases[] = {
      {"8 bit", Sound("raw ", 1, 8), 1, 1, 1280, 100},
      {"16 bit stereo, size 1", Sound("twos", 2, 16), 1, 1, 5120, 400},
      {"16 bit stereo, true size", Sound("sowt", 2, 16), 4, 1, 5120, 400},
      {"size of one channel", Sound("sowt", 2, 16), 2, 1, 5120, 400},
      {"24 bit", Sound("in24", 2, 16), 1, 1, 7680, 600},
      {"24 bit, version 1", Sound("in24", 2, 16, &plain24), 1, 1, 7680, 600},
      {"double", Sound("fl64", 1, 16), 1, 1, 10240, 800},
      {"logarithmic", Sound("ulaw", 2, 16), 1, 1, 2560, 200},
      {"ima4, version 0", Sound("ima4", 2, 16), 1, 1, 1360, 136},
      {"ima4, version 1", Sound("ima4", 2, 16, &ima), 1, 1, 1360, 136},
      {"ima4 in whole packets", Sound("ima4", 2, 16, &ima), 68, 1, 87040, 6800},
      {"3 to 1", Sound("MAC3", 1, 8), 1, 1, 428, 34},
      {"6 to 1, stereo", Sound("MAC6", 2, 8), 1, 1, 428, 34},
      {"version 2, linear", SoundVersion2("lpcm", 8, 1), 1, 1, 10240, 800},
      {"version 2, packets", SoundVersion2("xxxx", 33, 160), 1, 1, 264, 33},
      {"packets counted, one size", Sound("ac-3", 2, 16), 1536, 1536, 1966080, 153600},
      {"blocks of plain sound", Sound("sowt", 2, 16), 4096, 1024, 5242880, 409600},
      {"variable, one size by chance", Sound("mp4a", 2, 16, &variable), 7, 1024, 8960, 700},
  };
  for (const SoundCase& one : cases) {
    SCOPED_TRACE(one.name);
    const Bytes stbl =
        Concatenate({Descriptions({one.description}), Table("stts", {1380, one.duration}, 2),
                     Table("stsc", {1, 1280, 1}, 3), Table("stco", {1000, 9000000}, 1),
                     ConstantSizes(one.table_size, 1380)});
    SampleTable table;
    ASSERT_EQ(ReadTables(stbl, "soun"_4cc, &table), noErr);
    std::vector<ChunkInfo> chunks;
    table.ForEachChunk([&](const ChunkInfo& chunk) {
      chunks.push_back(chunk);
      return true;
    });
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_EQ(chunks[0].size, one.first_chunk);
    EXPECT_EQ(chunks[1].sample_count, 100U);
    EXPECT_EQ(chunks[1].size, one.last_chunk);
    EXPECT_EQ(chunks[1].decode_time, SInt64{1280} * one.duration);
    EXPECT_EQ(table.data_size(), one.first_chunk + one.last_chunk);
    EXPECT_EQ(CheckChunkBounds(table, 1, 9000000 + one.last_chunk), noErr);
    EXPECT_EQ(CheckChunkBounds(table, 1, 9000000 + one.last_chunk - 1), eofErr);
    EXPECT_EQ(CheckChunkBounds(table, 2, 10), noErr);
  }
}

TEST(SampleTable, EachChunkIsMeasuredByItsOwnDescription) {
  const Bytes stbl = Concatenate(
      {Descriptions({Sound("sowt", 2, 16), Sound("ima4", 1, 16), Sound("in24", 1, 16, nullptr, 2)}),
       Table("stts", {1000, 1}, 2), Table("stsc", {1, 100, 1, 2, 640, 2, 3, 260, 3}, 3),
       Table("stco", {5000, 100, 9000}, 1), ConstantSizes(1, 1000)});
  SampleTable table;
  ASSERT_EQ(ReadTables(stbl, "soun"_4cc, &table), noErr);
  const UInt64 sizes[] = {400, 340, 780};
  for (UInt64 i = 0; i < 3; ++i) {
    ChunkInfo chunk = {};
    ASSERT_TRUE(table.ChunkAt(i, &chunk));
    EXPECT_EQ(chunk.size, sizes[i]);
    EXPECT_EQ(chunk.description, i + 1);
  }
  EXPECT_EQ(table.descriptions()[2].data_reference, 2);
  SampleInfo sample = {};
  ASSERT_TRUE(table.SampleAt(100 + 64 * 3 + 5, &sample));
  EXPECT_EQ(sample.offset, 100U + 3 * 34);
  EXPECT_EQ(sample.size, 34U);
}

TEST(SampleTable, ReadsCompactSizes) {
  const struct {
    UInt64 bits;
    Bytes entries;
    std::vector<UInt64> sizes;
  } cases[] = {{4, {0x12, 0x3F, 0x70}, {1, 2, 3, 15, 7}},
               {8, {200, 1, 2, 3, 255}, {200, 1, 2, 3, 255}},
               {16, {1, 0, 0, 2, 0, 3, 0, 4, 255, 255}, {256, 2, 3, 4, 65535}}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.bits);
    const Bytes sizes =
        MakeFullAtom("stz2", 0, 0, ByteWriter().U32(one.bits).U32(5).Raw(one.entries).bytes);
    const Bytes stbl =
        Concatenate({Descriptions({MakeAtom("mp4v", ByteWriter().Zeros(6).U16(1).Zeros(70).bytes)}),
                     Table("stts", {2, 10, 3, 20}, 2), Table("stsc", {1, 3, 1}, 3),
                     Table("stco", {100, 1000}, 1), Table("ctts", {1, 5, 2, 0xFFFFFFFE}, 2),
                     Table("stss", {1, 4}, 1), sizes});
    SampleTable table;
    ASSERT_EQ(ReadTables(stbl, "vide"_4cc, &table), noErr);
    const UInt64 offsets[] = {100, 100 + one.sizes[0], 100 + one.sizes[0] + one.sizes[1], 1000,
                              1000 + one.sizes[3]};
    const SInt64 times[] = {0, 10, 20, 40, 60};
    const SInt32 compositions[] = {5, -2, -2, 0, 0};
    for (UInt64 i = 0; i < 5; ++i) {
      SampleInfo sample = {};
      ASSERT_TRUE(table.SampleAt(i, &sample));
      EXPECT_EQ(sample.size, one.sizes[i]);
      EXPECT_EQ(sample.offset, offsets[i]);
      EXPECT_EQ(sample.decode_time, times[i]);
      EXPECT_EQ(sample.composition_offset, compositions[i]);
      EXPECT_EQ(sample.is_sync, i == 0 || i == 3);
      EXPECT_EQ(table.SampleAtTime(times[i] + 9), i);
    }
    EXPECT_EQ(table.duration(), 80);
    EXPECT_FALSE(table.SampleAtTime(80).has_value());
    EXPECT_FALSE(table.SampleAtTime(-1).has_value());
  }
}

/// A million samples with differing times and sizes: sums by the marks equal sums from the start.
TEST(SampleTable, LookUpsAgreeWithSumsFromTheStart) {
  constexpr UInt32 kSamples = 79 * 256;
  ByteWriter times;
  ByteWriter sizes;
  times.U32(0).U32(kSamples);
  sizes.U32(0).U32(0).U32(kSamples);
  for (UInt32 i = 0; i < kSamples; ++i) {
    times.U32(1).U32(i % 7);
    sizes.U32(1 + i / 2 * 37 % 1001);
  }
  ByteWriter compositions;
  compositions.U32(0).U32(kSamples / 4);
  for (UInt32 i = 0; i < kSamples / 4; ++i)
    compositions.U32(3).U32(i % 5);
  const Bytes stbl =
      Concatenate({Descriptions({MakeAtom("mp4v", ByteWriter().Zeros(6).U16(1).bytes)}),
                   MakeAtom("stts", times.bytes), MakeAtom("stsz", sizes.bytes),
                   Table("stsc", {1, 0, 1, 2, 12345, 1, 3, 0, 1, 4, 9999, 1}, 3),
                   Table("stco", {1, 2, 3, 50000000}, 1), MakeAtom("ctts", compositions.bytes),
                   Table("stss", {1, 2, 3, 100, 12341, kSamples}, 1)});
  SampleTable table;
  ASSERT_EQ(ReadTables(stbl, "vide"_4cc, &table), noErr);
  SInt64 time = 0;
  UInt64 offset = 2;
  for (UInt64 i = 0; i < kSamples; ++i) {
    if (i == 12345) offset = 50000000;
    SampleInfo sample = {};
    ASSERT_TRUE(table.SampleAt(i, &sample));
    ASSERT_EQ(sample.offset, offset);
    ASSERT_EQ(sample.decode_time, time);
    if (sample.duration > 0) {
      ASSERT_EQ(table.SampleAtTime(time + sample.duration - 1), i);
    }
    offset += sample.size;
    time += sample.duration;
  }
  EXPECT_EQ(table.duration(), time);
  SampleInfo last = {};
  UInt64 count = 0;
  UInt64 size = 0;
  for (const UInt64 start : {UInt64{0}, UInt64{12340}, UInt64{kSamples - 1}}) {
    SampleTable::RunWalk walk(table, start);
    UInt64 next = start;
    while (walk.Next(&last, &count, &size)) {
      for (UInt64 i = 0; i < count; ++i, ++next) {
        SampleInfo sample = {};
        ASSERT_TRUE(table.SampleAt(next, &sample));
        ASSERT_EQ(sample.offset, last.offset + i * last.size);
        ASSERT_EQ(sample.size, last.size);
        ASSERT_EQ(sample.decode_time, last.decode_time + static_cast<SInt64>(i) * last.duration);
        ASSERT_EQ(sample.composition_offset, last.composition_offset);
        ASSERT_EQ(sample.is_sync, last.is_sync);
      }
      ASSERT_EQ(size, count * last.size);
    }
    EXPECT_EQ(next, kSamples);
  }
  EXPECT_EQ(table.SizeOfSamples(0, kSamples), table.data_size());
}

TEST(SampleTable, RefusesTablesThatDoNotHoldTogether) {
  const Bytes video = Descriptions({MakeAtom("mp4v", ByteWriter().Zeros(6).U16(1).bytes)});
  const Bytes times = Table("stts", {4, 10}, 2);
  const Bytes runs = Table("stsc", {1, 2, 1}, 3);
  const Bytes offsets = Table("stco", {100, 200}, 1);
  const Bytes sizes = ConstantSizes(5, 4);
  const auto overstated = [](std::string_view type) {
    return MakeFullAtom(type, 0, 0, ByteWriter().U32(0xFFFFFFFF).Zeros(24).bytes);
  };
  const auto wide =
      MakeFullAtom("co64", 0, 0, ByteWriter().U32(2).U64(100).U64(0xFFFFFFFFFFFFFFFBU).bytes);
  const struct {
    const char* name;
    Bytes stbl;
    OSStatus status;
  } cases[] = {
      {"sound one", Concatenate({video, times, runs, offsets, sizes}), noErr},
      {"nothing", {}, noErr},
      {"last chunk short", Concatenate({video, times, Table("stsc", {1, 3, 1}, 3), offsets, sizes}),
       noErr},
      {"times short", Concatenate({video, Table("stts", {1, 10}, 2), runs, offsets, sizes}), noErr},
      {"times long", Concatenate({video, Table("stts", {9, 10}, 2), runs, offsets, sizes}), noErr},
      {"chunks missing", Concatenate({video, times, runs, Table("stco", {100}, 1), sizes}),
       invalidSampleTable},
      {"no times", Concatenate({video, runs, offsets, sizes}), invalidSampleTable},
      {"no chunk runs", Concatenate({video, times, offsets, sizes}), invalidSampleTable},
      {"no descriptions", Concatenate({times, runs, offsets, sizes}), invalidSampleTable},
      {"first chunk 2", Concatenate({video, times, Table("stsc", {2, 2, 1}, 3), offsets, sizes}),
       invalidSampleTable},
      {"chunk runs not ascending",
       Concatenate({video, times, Table("stsc", {1, 2, 1, 1, 2, 1}, 3), offsets, sizes}),
       invalidSampleTable},
      {"description 2", Concatenate({video, times, Table("stsc", {1, 2, 2}, 3), offsets, sizes}),
       invalidSampleTable},
      {"description 0", Concatenate({video, times, Table("stsc", {1, 2, 0}, 3), offsets, sizes}),
       invalidSampleTable},
      {"times overstated", Concatenate({video, overstated("stts"), runs, offsets, sizes}),
       invalidSampleTable},
      {"offsets overstated", Concatenate({video, times, runs, overstated("stco"), sizes}),
       invalidSampleTable},
      {"sizes overstated", Concatenate({video, times, runs, offsets, ConstantSizes(0, 0x40000000)}),
       invalidSampleTable},
      {"sync overstated", Concatenate({video, times, runs, offsets, sizes, overstated("stss")}),
       invalidSampleTable},
      {"offset beyond 64 bits", Concatenate({video, times, runs, wide, sizes}), invalidSampleTable},
      {"description cut",
       Concatenate({Descriptions({MakeAtom("mp4v", Bytes(3, 0))}), times, runs, offsets, sizes}),
       badImageDescription},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    SampleTable table;
    EXPECT_EQ(ReadTables(one.stbl, "vide"_4cc, &table), one.status);
    if (one.status != noErr) {
      EXPECT_EQ(table.chunk_count(), 0U);
    }
  }
  // A size of 1 in a format that is not known says nothing.
  SampleTable table;
  EXPECT_EQ(ReadTables(Concatenate({Descriptions({Sound("Xcmp", 2, 16)}), Table("stts", {4, 1}, 2),
                                    runs, offsets, ConstantSizes(1, 4)}),
                       "soun"_4cc, &table),
            invalidSampleTable);
}

TEST(SampleTable, ReplacingOffsetsChangesNothingElse) {
  const Bytes trailer = MakeAtom("zzzz", Bytes(3, 9));
  const Bytes narrow = Table("stco", {100, 200}, 1);
  const std::unique_ptr<Atom> movie = ParseTables(Concatenate({MakeAtom("aaaa"), narrow, trailer}));
  Atom* stbl = TablesOf(movie.get());
  const auto written = [&] {
    Bytes bytes;
    stbl->Write(&bytes);
    return bytes;
  };
  const Bytes before = written();
  const UInt64 same[] = {100, 200};
  EXPECT_EQ(movies::ReplaceChunkOffsets(stbl, same), noErr);
  EXPECT_EQ(written(), before);
  const UInt64 large[] = {0xFFFFFFFF, 0x100000000};
  EXPECT_EQ(movies::ReplaceChunkOffsets(stbl, large), noErr);
  const Bytes wide =
      MakeFullAtom("co64", 0, 0, ByteWriter().U32(2).U64(0xFFFFFFFF).U64(0x100000000).bytes);
  EXPECT_EQ(written(), MakeAtom("stbl", {MakeAtom("aaaa"), wide, trailer}));
  EXPECT_EQ(movies::ReplaceChunkOffsets(stbl, same), noErr);
  EXPECT_EQ(written(), before);
  EXPECT_EQ(movies::ReplaceChunkOffsets(stbl, std::span(same).first(1)), paramErr);
  EXPECT_EQ(written(), before);
}

/// The tables of one track of single-sample chunks at these offsets.
Bytes ChunksAt(std::initializer_list<UInt32> offsets, UInt32 size) {
  const auto count = static_cast<UInt32>(offsets.size());
  return Concatenate({Descriptions({Sound("sowt", 2, 16)}), Table("stts", {count, 10}, 2),
                      Table("stsc", {1, 1, 1}, 3), ConstantSizes(size, count),
                      Table("stco", offsets, 1)});
}

TEST(SampleTable, ChunksHaveToLieWithinTheFile) {
  SampleTable table;
  ASSERT_EQ(ReadTables(ChunksAt({100, 0, 900}, 100), "soun"_4cc, &table), noErr);
  struct Case {
    UInt16 reference;
    UInt64 file_size;
    OSStatus expected;
  };
  for (const Case& c : {Case{0, 1000, noErr}, Case{0, 999, eofErr}, Case{1, 999, eofErr},
                        Case{2, 0, noErr}, Case{0, 0, eofErr}, Case{0, 99, eofErr}}) {
    EXPECT_EQ(CheckChunkBounds(table, c.reference, c.file_size), c.expected) << c.file_size;
  }
}

TEST(SampleTable, ShiftedOffsetsKeepTheirWidthOrAreRefused) {
  struct Case {
    bool wide;
    UInt64 distance;
    OSStatus expected;
  };
  for (const Case& c :
       {Case{false, 0xFFFFFFFF - 900, noErr},
        Case{false, UInt64{0xFFFFFFFF} - 899, invalidSampleTable},
        Case{false, ~UInt64{0}, invalidSampleTable}, Case{true, UInt64{1} << 40, noErr},
        Case{true, ~UInt64{0} - 900, noErr}, Case{true, ~UInt64{0} - 899, invalidSampleTable}}) {
    const std::unique_ptr<Atom> movie = ParseTables(ChunksAt({100, 0, 900}, 100));
    Atom* stbl = TablesOf(movie.get());
    const UInt64 offsets[] = {100, 0, 900};
    ASSERT_EQ(ReplaceChunkOffsets(stbl, offsets, c.wide), noErr);
    ASSERT_EQ(ShiftChunkOffsets(stbl, c.distance), c.expected) << c.distance;
    if (c.expected != noErr) continue;
    const int width = c.wide ? 8 : 4;
    const Atom* shifted = stbl->Find(c.wide ? "co64"_4cc : "stco"_4cc);
    ASSERT_NE(shifted, nullptr);
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_EQ(NumberAt(shifted->payload(), 8 + i * static_cast<std::size_t>(width), width),
                offsets[i] + c.distance);
    }
  }
}

}  // namespace
}  // namespace quillmere::test
