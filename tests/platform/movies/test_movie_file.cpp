/// Movies as ffmpeg writes them, in every layout, read by the model and compared with ffprobe.

#include <gtest/gtest.h>
#include <zlib.h>

#include "atom_builder.h"
#include "file_references.h"
#include "movie_file.h"
#include "movie_records.h"
#include "movie_samples.h"
#include "movie_toolbox.h"
#include "sample_table.h"
#include "test_files.h"

namespace quillmere::test {
namespace {

using movies::Atom;
using movies::MovieFile;
using movies::ReadMovieFile;

/// How a movie is made: sound codec, further arguments, and what is patched afterwards.
struct Layout {
  const char* name;
  const char* file;
  std::vector<std::string> arguments;
  void (*patch)(Bytes*) = nullptr;
  bool fragmented = false;
};

std::ostream& operator<<(std::ostream& out, const Layout& layout) {
  return out << layout.name;
}

void Deflate(Bytes* file) {
  const Bytes movie = AtomBytes(*file, {"moov"});
  Bytes stream(compressBound(movie.size()));
  uLongf size = stream.size();
  ASSERT_EQ(compress(stream.data(), &size, movie.data(), movie.size()), Z_OK);
  stream.resize(size);
  ReplaceAtom(file, {"moov"}, CompressedMovie(movie, stream));
}

void WidenMovie(Bytes* file) {
  const Bytes movie = AtomBytes(*file, {"moov"});
  ReplaceAtom(file, {"moov"}, MakeAtom64("moov", std::span(movie).subspan(8)));
}

void OpenEndMovie(Bytes* file) {
  PutNumber(file, FindAtom(*file, {"moov"})->offset, 0, 4);
}

const Layout kLayouts[] = {
    {"mov_pcm", "a.mov", {"-c:a", "pcm_s16le"}},
    {"mov_pcm24", "a.mov", {"-c:a", "pcm_s24be"}},
    {"mov_float", "a.mov", {"-c:a", "pcm_f32le"}},
    {"mov_ulaw", "a.mov", {"-c:a", "pcm_mulaw"}},
    {"mov_ima4", "a.mov", {"-c:a", "adpcm_ima_qt"}},
    {"mov_aac", "a.mov", {"-c:a", "aac"}},
    {"mp4_aac", "a.mp4", {"-c:a", "aac"}},
    {"faststart", "a.mp4", {"-c:a", "aac", "-movflags", "+faststart"}},
    {"negative_offsets", "a.mp4", {"-c:a", "aac", "-movflags", "+negative_cts_offsets"}},
    {"wide_offsets",
     "a.mov",
     {"-c:a", "aac"},
     [](Bytes* file) { SetChunkOffsetWidth(file, true); }},
    {"stored_cmov", "a.mov", {"-c:a", "aac"}, CompressMovie},
    {"deflated_cmov", "a.mov", {"-c:a", "pcm_s16le"}, Deflate},
    {"edits_behind_media", "a.mov", {"-c:a", "aac"}, MoveEditsBehindMedia},
    {"wide_movie_atom", "a.mov", {"-c:a", "aac"}, WidenMovie},
    {"open_end_movie_atom", "a.mov", {"-c:a", "aac"}, OpenEndMovie},
    {"empty_moov",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_keyframe+empty_moov"},
     nullptr,
     true},
    {"default_base_moof",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_keyframe+empty_moov+default_base_moof"},
     nullptr,
     true},
    {"omit_tfhd_offset",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_keyframe+empty_moov+omit_tfhd_offset+separate_moof"},
     nullptr,
     true},
    {"first_fragment_in_moov",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_keyframe"},
     nullptr,
     true},
    {"delay_moov",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_keyframe+delay_moov+negative_cts_offsets"},
     nullptr,
     true},
    {"cmaf",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+cmaf+dash", "-frag_duration", "300000"},
     nullptr,
     true},
    {"every_frame",
     "a.mp4",
     {"-c:a", "aac", "-movflags", "+frag_every_frame+empty_moov"},
     nullptr,
     true},
    {"fragmented_pcm",
     "a.mov",
     {"-c:a", "pcm_s16le", "-movflags", "+frag_keyframe+empty_moov"},
     nullptr,
     true},
};

void MakeMovie(const Layout& layout, const std::filesystem::path& path) {
  std::vector<std::string> arguments = {
      "-f",       "lavfi",    "-i",   "testsrc2=s=64x48:r=25:d=2",
      "-f",       "lavfi",    "-i",   "sine=frequency=440:sample_rate=44100:duration=2",
      "-ac",      "2",        "-c:v", "mpeg4",
      "-bf",      "2",        "-g",   "12",
      "-flags:v", "+bitexact"};
  arguments.insert(arguments.end(), layout.arguments.begin(), layout.arguments.end());
  arguments.push_back(path.string());
  RunFfmpeg(arguments);
  if (layout.patch == nullptr) return;
  Bytes bytes = ReadFile(path);
  layout.patch(&bytes);
  WriteFile(path, bytes);
}

class MovieLayout : public testing::TestWithParam<Layout> {
 protected:
  void SetUp() override {
    path_ = folder_ / GetParam().file;
    MakeMovie(GetParam(), path_);
    ASSERT_EQ(ReadMovieFile(path_, &file_), noErr);
  }
  TemporaryFolder folder_;
  std::filesystem::path path_;
  MovieFile file_;
};

/// Movies whose tables come out as they went in, and movies whose tables are made of fragments.
class PlainLayout : public MovieLayout {};
class FragmentedLayout : public MovieLayout {};

TEST_P(MovieLayout, SamplesAreThoseThatFfprobeFinds) {
  const auto tables = ReadTables(*file_.movie);
  auto packets = ProbePackets(path_);
  ASSERT_EQ(tables.size(), packets.size());
  for (std::size_t i = 0; i < tables.size(); ++i) {
    SCOPED_TRACE(i);
    ExpectSamePackets(tables[i], packets[static_cast<int>(i)], !GetParam().fragmented);
    EXPECT_EQ(movies::CheckChunkBounds(tables[i], 0, file_.file_size), noErr);
  }
}

TEST_P(PlainLayout, UnchangedMovieWritesBackByteForByte) {
  const Layout& layout = GetParam();
  Bytes written;
  file_.movie->Write(&written);
  EXPECT_EQ(written.size(), file_.movie->Size());
  Bytes expected;
  Bytes bytes = ReadFile(path_);
  if (FindAtom(bytes, {"moov", "cmov"})) {
    Layout plain = layout;
    plain.patch = nullptr;
    MakeMovie(plain, path_);
    bytes = ReadFile(path_);
  }
  expected = AtomBytes(bytes, {"moov"});
  if (U32At(expected, 0) == 0) PutNumber(&expected, 0, expected.size(), 4);
  EXPECT_EQ(written, expected);
}

TEST_P(MovieLayout, DurationsCoverAllSamples) {
  movies::MovieHeader movie;
  ASSERT_TRUE(movies::ReadMovieHeader(*file_.movie->Find("mvhd"_4cc), &movie));
  EXPECT_NEAR(static_cast<double>(movie.duration) / movie.time_scale, 2.0, 0.1);
  const auto tables = ReadTables(*file_.movie);
  std::size_t index = 0;
  for (const Atom& track : file_.movie->children()) {
    if (track.type() != "trak"_4cc) continue;
    movies::MediaHeader media;
    movies::TrackHeader header;
    ASSERT_TRUE(movies::ReadMediaHeader(*track.FindPath({"mdia"_4cc, "mdhd"_4cc}), &media));
    ASSERT_TRUE(movies::ReadTrackHeader(*track.Find("tkhd"_4cc), &header));
    EXPECT_EQ(media.duration, static_cast<UInt64>(tables[index++].duration()));
    EXPECT_NEAR(static_cast<double>(header.duration) / movie.time_scale, 2.0, 0.1);
  }
}

/// The merged tables, put in front of the same file's bytes, are a plain movie that plays the same.
TEST_P(FragmentedLayout, MergedTablesReadAlikeInFfprobe) {
  EXPECT_TRUE(file_.was_fragmented);
  EXPECT_EQ(file_.movie->Find("mvex"_4cc), nullptr);
  const auto before = ProbePackets(path_);
  // The old atoms turn into room, so that all media data stays at its offset.
  Bytes bytes = ReadFile(path_);
  for (const movies::TopLevelAtom& atom : file_.top_level) {
    if (atom.type == "mdat"_4cc || atom.type == "ftyp"_4cc) continue;
    PutNumber(&bytes, atom.offset + 4, "free"_4cc, 4);
  }
  file_.movie->Write(&bytes);
  const std::filesystem::path plain = folder_ / "plain.mp4";
  WriteFile(plain, bytes);
  const auto after = ProbePackets(plain);
  ASSERT_EQ(after.size(), before.size());
  const auto tables = ReadTables(*file_.movie);
  for (const auto& [track, packets] : after) {
    SCOPED_TRACE(track);
    ExpectSamePackets(tables[static_cast<std::size_t>(track)], packets, true);
    EXPECT_EQ(packets.size(), before.at(track).size());
  }
}

std::string NameOf(const testing::TestParamInfo<Layout>& layout) {
  return layout.param.name;
}

std::vector<Layout> LayoutsThatAre(bool fragmented) {
  std::vector<Layout> layouts(std::begin(kLayouts), std::end(kLayouts));
  std::erase_if(layouts, [fragmented](const Layout& l) { return l.fragmented != fragmented; });
  return layouts;
}

INSTANTIATE_TEST_SUITE_P(Layouts, MovieLayout, testing::ValuesIn(kLayouts), NameOf);
INSTANTIATE_TEST_SUITE_P(Layouts, PlainLayout, testing::ValuesIn(LayoutsThatAre(false)), NameOf);
INSTANTIATE_TEST_SUITE_P(Layouts, FragmentedLayout, testing::ValuesIn(LayoutsThatAre(true)),
                         NameOf);

TEST(MovieFile, EveryTruncationGivesAStatusOrKeepsItsBounds) {
  const TemporaryFolder folder;
  for (const std::size_t layout : {std::size_t{5}, std::size_t{7}, std::size_t{16}}) {
    MakeMovie(kLayouts[layout], folder / "whole.mp4");
    const Bytes whole = ReadFile(folder / "whole.mp4");
    for (std::size_t part = 0; part < 50; ++part) {
      SCOPED_TRACE(part);
      const std::filesystem::path path = folder / "cut.mp4";
      WriteFile(path, std::span(whole).first(whole.size() * part / 50));
      MovieFile file;
      if (ReadMovieFile(path, &file) != noErr) {
        EXPECT_EQ(file.movie, nullptr);
        continue;
      }
      // A movie whose end is missing shows in its chunks, or ends with a whole fragment.
      bool within = true;
      for (const auto& table : ReadTables(*file.movie)) {
        within = within && movies::CheckChunkBounds(table, 0, file.file_size) == noErr;
      }
      EXPECT_EQ(within, file.was_fragmented);
    }
  }
}

TEST(MovieFile, KeepsUnknownTopLevelAtoms) {
  const TemporaryFolder folder;
  MakeMovie(kLayouts[5], folder / "a.mov");
  Bytes bytes = ReadFile(folder / "a.mov");
  const Bytes small = MakeAtom64("quil", ByteWriter().Text("kept").bytes);
  const Bytes large = MakeAtom("uuid", Bytes(movies::kLargestKeptAtom + 1, 7));
  const std::size_t at = bytes.size() + small.size();
  bytes = Concatenate({bytes, small, large, MakeAtomToEnd("last", Bytes(5, 1))});
  WriteFile(folder / "a.mov", bytes);
  MovieFile file;
  ASSERT_EQ(ReadMovieFile(folder / "a.mov", &file), noErr);
  ASSERT_EQ(file.kept.size(), 2U);
  Bytes written;
  for (const Atom& atom : file.kept)
    atom.Write(&written);
  EXPECT_EQ(written, Concatenate({small, MakeAtom("last", Bytes(5, 1))}));
  ASSERT_EQ(file.kept_in_file.size(), 1U);
  EXPECT_EQ(file.kept_in_file[0].type, "uuid"_4cc);
  EXPECT_EQ(file.kept_in_file[0].content.offset, at + 8);
  EXPECT_EQ(file.kept_in_file[0].content.size, large.size() - 8);
}

TEST(MovieFile, RefusesWhatIsNoMovie) {
  const TemporaryFolder folder;
  const Bytes header = MakeAtom("mvhd", Bytes(100, 0));
  const Bytes bomb = ByteWriter().U32(200U << 20).Raw(StoredZlibStream(Bytes(20, 0))).bytes;
  const Bytes twice = CompressedMovie(header, StoredZlibStream(header));
  const struct {
    const char* name;
    Bytes bytes;
    OSStatus status;
  } cases[] = {
      {"empty", {}, noMovieFound},
      {"text", ByteWriter().Text("no movie at all, only words").bytes, noMovieFound},
      {"no movie atom", MakeAtom("mdat", Bytes(100, 1)), noMovieFound},
      {"cut movie atom", ByteWriter().U32(1000).Text("moov").Raw(header).bytes, badPublicMovieAtom},
      {"damaged child", MakeAtom("moov", {header, ByteWriter().U32(99).Text("trak").bytes}),
       badPublicMovieAtom},
      {"damaged track",
       MakeAtom("moov", {header, MakeAtom("trak", ByteWriter().U32(7).U32(7).bytes)}),
       invalidTrack},
      {"movie that inflates too far",
       MakeAtom("moov", {MakeAtom("cmov", {MakeAtom("dcom", ByteWriter().Text("zlib").bytes),
                                           MakeAtom("cmvd", bomb)})}),
       badPublicMovieAtom},
      {"compressed twice", CompressedMovie(twice, StoredZlibStream(twice)), badPublicMovieAtom},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    WriteFile(folder / "file", one.bytes);
    MovieFile file;
    EXPECT_EQ(ReadMovieFile(folder / "file", &file), one.status);
  }
  MovieFile file;
  EXPECT_EQ(ReadMovieFile(folder / "missing", &file), fnfErr);
  EXPECT_EQ(ReadMovieFile(folder.path(), &file), noMovieFound);
}

}  // namespace
}  // namespace quillmere::test
