#include <array>

#include "overlay_support.h"
#include "table_builder.h"

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

const std::vector<std::string> kMedia = {"moov", "trak", "mdia", "minf", "stbl"};

std::vector<std::string> Beneath(std::vector<std::string> path, const std::string& child) {
  path.push_back(child);
  return path;
}

/// A movie whose sample descriptions are changed by hand, and the overlay for it.
class DescriptionsTest : public testing::Test {
 protected:
  void SetUp() override {
    RunFfmpeg({"-f", "lavfi", "-i", "color=blue@0.5:s=16x16,format=rgba", "-frames:v", "1",
               png.string()});
  }
  void MakeMovie(std::vector<std::string> input_and_codec) {
    input_and_codec.insert(input_and_codec.begin(), {"-f", "lavfi", "-i"});
    input_and_codec.push_back(movie.string());
    RunFfmpeg(input_and_codec);
  }

  TemporaryFolder folder;
  fs::path movie = folder / "a.mov";
  fs::path png = folder / "mask.png";
  fs::path output = folder / "a-clean.mov";
};

TEST_F(DescriptionsTest, AperturesAreKeptAndGiveTheMoviesBox) {
  MakeMovie({"testsrc=s=720x480:r=5:d=1", "-c:v", "mjpeg"});
  const Bytes original = ReadFile(movie);
  const Bytes aspect = MakeAtom("pasp", ByteWriter().U32(10).U32(11).bytes);
  ByteWriter fractions;
  for (const UInt32 number : {704U, 1U, 480U, 1U, 0U, 1U, 0U, 1U})
    fractions.U32(number);
  const Bytes clean = MakeAtom("clap", fractions.bytes);
  const auto dimensions = [](std::string_view type, UInt32 width, UInt32 height) {
    return MakeFullAtom(type, 0, 0, ByteWriter().U32(width << 16).U32(height << 16).bytes);
  };
  const Bytes tapt = MakeAtom("tapt", {dimensions("clef", 600, 450), dimensions("prof", 610, 460),
                                       dimensions("enof", 720, 480)});
  struct Case {
    const char* name;
    Bytes extensions;
    Bytes of_track;
    std::array<int, 4> widths;  ///< as encoded, clean, production, classic
    std::array<int, 4> heights;
  };
  const Case cases[] = {
      {"none", {}, {}, {720, 720, 720, 720}, {480, 480, 480, 480}},
      {"pixel aspect", aspect, {}, {720, 655, 655, 720}, {480, 480, 480, 480}},
      {"clean part", clean, {}, {720, 704, 720, 720}, {480, 480, 480, 480}},
      {"both", Concatenate({aspect, clean}), {}, {720, 640, 655, 720}, {480, 480, 480, 480}},
      {"of the track",
       Concatenate({aspect, clean}),
       tapt,
       {720, 600, 610, 720},
       {480, 450, 460, 480}},
  };
  constexpr OSType kModes[] = {"enco"_4cc, "clea"_4cc, "prod"_4cc, "clas"_4cc};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes file = original;
    const std::vector<std::string> descriptions = Beneath(kMedia, "stsd");
    const Bytes old = AtomBytes(file, descriptions);
    constexpr std::ptrdiff_t kFields = 16 + 86;  // of the table and of a video description
    Bytes entry(old.begin() + 16, old.begin() + kFields);
    entry.insert(entry.end(), c.extensions.begin(), c.extensions.end());
    PutNumber(&entry, 0, entry.size(), 4);
    ReplaceAtom(&file, descriptions, Descriptions({entry}));
    if (!c.of_track.empty()) AppendChild(&file, {"moov", "trak"}, c.of_track);
    WriteFile(movie, file);
    const OpenedMovie opened(movie);
    ASSERT_EQ(opened.status, noErr);
    for (std::size_t mode = 0; mode < 4; ++mode) {
      OSType value = kModes[mode];
      ASSERT_EQ(QTSetMovieProperty(opened.movie, "visu"_4cc, "apmd"_4cc, sizeof value, &value),
                noErr);
      Rect box = {};
      GetMovieBox(opened.movie, &box);
      EXPECT_EQ(box.right - box.left, c.widths[mode]) << mode;
      EXPECT_EQ(box.bottom - box.top, c.heights[mode]) << mode;
    }
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
    const Bytes after = ReadFile(output);
    EXPECT_EQ(AtomBytes(after, descriptions), AtomBytes(file, descriptions));
    if (!c.of_track.empty()) {
      EXPECT_EQ(AtomBytes(after, {"moov", "trak", "tapt"}), tapt);
    }
  }
}

/// A track whose chunks change between descriptions, and the bytes of each chunk.
struct MixedMedia {
  const char* name;
  Bytes descriptions;
  Bytes durations;
  Bytes chunks;  ///< `stsc`
  Bytes sizes;
  std::vector<std::size_t> chunk_sizes;
};

TEST_F(DescriptionsTest, CodecsMixedInOneTrackKeepTheirBytes) {
  MakeMovie({"sine=d=1", "-c:a", "pcm_s16le"});
  const Bytes original = ReadFile(movie);
  const SoundVersion1 ima = {64, 68, 0};
  const Bytes plain = Sound("sowt", 2, 16);
  const Bytes packed = Sound("ima4", 2, 16, &ima);
  const Bytes logarithmic = Sound("ulaw", 2, 16);
  const MixedMedia cases[] = {
      {"plain, then packets",
       Descriptions({plain, packed}),
       Table("stts", {740, 1}, 2),
       Table("stsc", {1, 100, 1, 2, 640, 2}, 3),
       ConstantSizes(1, 740),
       {400, 680}},
      {"three kinds in turn",
       Descriptions({packed, plain, logarithmic}),
       Table("stts", {128 + 7 + 9 + 64 + 1, 1}, 2),
       Table("stsc", {1, 128, 1, 2, 7, 2, 3, 9, 3, 4, 64, 1, 5, 1, 2}, 3),
       ConstantSizes(1, 128 + 7 + 9 + 64 + 1),
       {136, 28, 18, 68, 4}},
      {"sizes of each sample",
       Descriptions({Sound("mp4a", 2, 16), Sound("ac-3", 2, 16)}),
       Table("stts", {5, 1024}, 2),
       Table("stsc", {1, 2, 1, 2, 3, 2}, 3),
       MakeFullAtom("stsz", 0, 0,
                    ByteWriter().U32(0).U32(5).U32(10).U32(20).U32(30).U32(40).U32(50).bytes),
       {30, 120}},
  };
  for (const MixedMedia& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes file = original;
    // The chunks lie apart, in bytes that tell where they come from.
    Bytes media;
    std::vector<Bytes> chunks;
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < c.chunk_sizes.size(); ++i) {
      media.insert(media.end(), 13, 0xEE);
      places.push_back(media.size());
      Bytes& chunk = chunks.emplace_back();
      for (std::size_t k = 0; k < c.chunk_sizes[i]; ++k)
        chunk.push_back(static_cast<UInt8>(16 * (i + 1) + k % 16));
      media.insert(media.end(), chunk.begin(), chunk.end());
    }
    const std::size_t begin = FindAtom(file, {"mdat"})->offset;
    ReplaceAtom(&file, {"mdat"}, MakeAtom("mdat", media));
    ByteWriter offsets;
    offsets.U32(places.size());
    for (const std::size_t place : places)
      offsets.U32(begin + 8 + place);
    const Bytes tables = MakeAtom("stbl", {c.descriptions, c.durations, c.chunks, c.sizes,
                                           MakeFullAtom("stco", 0, 0, offsets.bytes)});
    ReplaceAtom(&file, kMedia, tables);
    WriteFile(movie, file);
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);

    const Bytes after = ReadFile(output);
    for (const char* table : {"stsd", "stts", "stsc", "stsz"})
      EXPECT_EQ(AtomBytes(after, Beneath(kMedia, table)), AtomBytes(file, Beneath(kMedia, table)));
    const AtomPlace placed = *FindAtom(after, Beneath(kMedia, "stco"));
    for (std::size_t i = 0; i < chunks.size(); ++i) {
      const std::size_t offset = U32At(after, placed.content() + 8 + 4 * i);
      ASSERT_LE(offset + chunks[i].size(), after.size());
      EXPECT_TRUE(std::equal(chunks[i].begin(), chunks[i].end(),
                             after.begin() + static_cast<std::ptrdiff_t>(offset)))
          << i;
    }
  }
}

}  // namespace
}  // namespace quillmere::test
