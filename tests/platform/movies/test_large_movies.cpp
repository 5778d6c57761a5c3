/// Movies and outputs of more than 4 GiB, made of holes so that they take no room on the disk.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "atom_builder.h"
#include "flatten_plan.h"
#include "overlay_support.h"

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

constexpr UInt64 kGiB = UInt64{1} << 30;
constexpr UInt64 kFourGiB = UInt64{4} << 30;

/// One track: samples of one size, each in a chunk of its own.
struct LargeTrack {
  std::string file;  ///< that holds its media data; empty for the movie itself
  UInt32 sample_size = 0;
  std::vector<UInt64> offsets;
  bool wide = false;  ///< `co64`
};

/// A file of holes, with what is written into it.
class SparseFile {
 public:
  explicit SparseFile(const fs::path& path)
      : descriptor_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666)) {}
  SparseFile(const SparseFile&) = delete;
  SparseFile& operator=(const SparseFile&) = delete;
  ~SparseFile() { close(descriptor_); }

  void Put(UInt64 offset, const Bytes& bytes) const {
    ASSERT_EQ(pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset)),
              static_cast<ssize_t>(bytes.size()));
  }
  Bytes Get(UInt64 offset, std::size_t size) const {
    Bytes bytes(size);
    EXPECT_EQ(pread(descriptor_, bytes.data(), size, static_cast<off_t>(offset)),
              static_cast<ssize_t>(size));
    return bytes;
  }
  void Resize(UInt64 size) const { ASSERT_EQ(ftruncate(descriptor_, static_cast<off_t>(size)), 0); }
  struct stat Information() const {
    struct stat information = {};
    fstat(descriptor_, &information);
    return information;
  }

 private:
  int descriptor_;
};

const Bytes kMatrix =
    ByteWriter().U32(0x10000).Zeros(12).U32(0x10000).Zeros(12).U32(0x40000000).bytes;

Bytes MakeTrack(const LargeTrack& track, UInt32 id) {
  const std::size_t count = track.offsets.size();
  ByteWriter offsets;
  offsets.U32(count);
  for (const UInt64 offset : track.offsets)
    offsets.Number(offset, track.wide ? 8 : 4);
  const Bytes entry = MakeAtom("raw ", ByteWriter().Zeros(6).U16(1).Zeros(70).bytes);
  const Bytes stbl = MakeAtom(
      "stbl", {MakeFullAtom("stsd", 0, 0, Concatenate({ByteWriter().U32(1).bytes, entry})),
               MakeFullAtom("stts", 0, 0, ByteWriter().U32(1).U32(count).U32(100).bytes),
               MakeFullAtom("stsc", 0, 0, ByteWriter().U32(1).U32(1).U32(1).U32(1).bytes),
               MakeFullAtom("stsz", 0, 0, ByteWriter().U32(track.sample_size).U32(count).bytes),
               MakeFullAtom(track.wide ? "co64" : "stco", 0, 0, offsets.bytes)});
  const Bytes name = ByteWriter().Text(track.file).U8(0).bytes;
  const Bytes reference =
      track.file.empty() ? MakeFullAtom("url ", 0, 1, {}) : MakeFullAtom("url ", 0, 0, name);
  const Bytes dref =
      MakeFullAtom("dref", 0, 0, Concatenate({ByteWriter().U32(1).bytes, reference}));
  const Bytes minf = MakeAtom("minf", {MakeFullAtom("vmhd", 0, 1, ByteWriter().Zeros(8).bytes),
                                       MakeAtom("dinf", {dref}), stbl});
  const ByteWriter handler = ByteWriter().Text("mhlrvide").Zeros(13);
  const Bytes mdia = MakeAtom(
      "mdia",
      {MakeFullAtom("mdhd", 0, 0, ByteWriter().Zeros(8).U32(100).U32(100 * count).U32(0).bytes),
       MakeFullAtom("hdlr", 0, 0, handler.bytes), minf});
  const Bytes tkhd = MakeFullAtom("tkhd", 0, 7,
                                  ByteWriter()
                                      .Zeros(8)
                                      .U32(id)
                                      .Zeros(4)
                                      .U32(100 * count)
                                      .Zeros(16)
                                      .Raw(kMatrix)
                                      .U32(64 << 16)
                                      .U32(48 << 16)
                                      .bytes);
  return MakeAtom("trak", {tkhd, mdia});
}

Bytes MakeMoov(const std::vector<LargeTrack>& tracks) {
  Bytes content = MakeFullAtom("mvhd", 0, 0,
                               ByteWriter()
                                   .Zeros(8)
                                   .U32(100)
                                   .U32(100 * tracks.front().offsets.size())
                                   .U32(0x10000)
                                   .Zeros(12)
                                   .Raw(kMatrix)
                                   .Zeros(24)
                                   .U32(tracks.size() + 1)
                                   .bytes);
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const Bytes track = MakeTrack(tracks[i], static_cast<UInt32>(i + 1));
    content.insert(content.end(), track.begin(), track.end());
  }
  return MakeAtom("moov", content);
}

/// What stands at the start or the end of a chunk, other for each.
Bytes Mark(std::size_t track, std::size_t chunk, bool at_end) {
  return ByteWriter().Text(at_end ? "end " : "mark").U32(track).U32(chunk).bytes;
}

/// Marks the chunks of one file.
void MarkChunks(const SparseFile& file, const std::vector<LargeTrack>& tracks,
                const std::string& name) {
  for (std::size_t t = 0; t < tracks.size(); ++t) {
    if (tracks[t].file != name) continue;
    for (std::size_t c = 0; c < tracks[t].offsets.size(); ++c) {
      const UInt64 offset = tracks[t].offsets[c];
      file.Put(offset, Mark(t, c, false));
      file.Put(offset + tracks[t].sample_size - 12, Mark(t, c, true));
    }
  }
}

struct Output {
  Bytes moov;
  UInt64 media_begin = 0;
  UInt64 media_end = 0;
  bool has_wide_header = false;
};

/// Reads an output: the head as it is written by the flatten.
Output ReadOutput(const SparseFile& file) {
  Output output;
  UInt64 at = 0;
  const auto end = static_cast<UInt64>(file.Information().st_size);
  while (at < end) {
    const Bytes header = file.Get(at, 16);
    UInt64 size = U32At(header, 0);
    const bool wide = size == 1;
    if (wide) size = NumberAt(header, 8, 8);
    const std::string type(header.begin() + 4, header.begin() + 8);
    if (type == "moov") output.moov = file.Get(at, size);
    if (type == "mdat") {
      output.media_begin = at + (wide ? 16 : 8);
      output.media_end = at + size;
      output.has_wide_header = wide;
    }
    if (size < 8) {
      ADD_FAILURE() << "atom of " << size << " bytes";
      break;
    }
    at += size;
  }
  EXPECT_EQ(at, end);
  EXPECT_EQ(output.media_end, end);
  return output;
}

class LargeMovie : public testing::Test {
 protected:
  void SetUp() override {
    RunFfmpeg({"-f", "lavfi", "-i", "color=red:s=8x8", "-frames:v", "1", png_.string()});
    // Some file systems have no holes: nothing of this size is written to them.
    const SparseFile probe(folder_ / "probe");
    probe.Resize(kGiB);
    if (probe.Information().st_blocks > 0) GTEST_SKIP() << "the file system has no holes";
  }

  /// The movie's own media data lies in an `mdat` with a 64-bit size from byte 16 to `end`.
  void MakeMovie(const std::vector<LargeTrack>& tracks, UInt64 end) const {
    const SparseFile file(movie_);
    file.Resize(0);
    file.Put(0, ByteWriter().U32(1).Text("mdat").U64(end).bytes);
    MarkChunks(file, tracks, "");
    file.Put(end, MakeMoov(tracks));
  }

  /// Each chunk of the output has the bytes of the source's, and each table the width it needs.
  void ExpectChunks(const std::vector<LargeTrack>& tracks, const SparseFile& file,
                    const Output& output) const {
    for (std::size_t t = 0; t < tracks.size(); ++t) {
      const std::vector<std::string> stbl = {"moov", "trak:" + std::to_string(t + 1), "mdia",
                                             "minf", "stbl"};
      std::vector<std::string> path = stbl;
      path.push_back("co64");
      std::optional<AtomPlace> table = FindAtom(output.moov, path);
      const int width = table ? 8 : 4;
      path.back() = "stco";
      if (!table) table = FindAtom(output.moov, path);
      ASSERT_TRUE(table);
      ASSERT_EQ(U32At(output.moov, table->content() + 4), tracks[t].offsets.size());
      for (std::size_t c = 0; c < tracks[t].offsets.size(); ++c) {
        const std::size_t field = table->content() + 8 + c * static_cast<std::size_t>(width);
        const UInt64 offset = NumberAt(output.moov, field, width);
        EXPECT_GE(offset, output.media_begin);
        ASSERT_LE(offset + tracks[t].sample_size, output.media_end);
        EXPECT_EQ(file.Get(offset, 12), Mark(t, c, false)) << t << ' ' << c;
        EXPECT_EQ(file.Get(offset + tracks[t].sample_size - 12, 12), Mark(t, c, true));
      }
    }
  }

  /// Flattens with the overlay; the output takes next to no room.
  Output FlattenAndExpectChunks(const std::vector<LargeTrack>& tracks) const {
    EXPECT_EQ(OverlayAndFlatten(movie_, png_, output_), noErr);
    const SparseFile file(output_);
    const Output output = ReadOutput(file);
    EXPECT_LT(file.Information().st_blocks, 1 << 14);
    ExpectChunks(tracks, file, output);
    return output;
  }

  TemporaryFolder folder_;
  fs::path movie_ = folder_ / "a.mov";
  fs::path png_ = folder_ / "mask.png";
  fs::path output_ = folder_ / "a-clean.mov";
};

TEST_F(LargeMovie, MediaBeyondFourGiBIsPlanned) {
  const std::vector<LargeTrack> tracks = {
      {"", UInt32{kGiB}, {16, kGiB + 16, 2 * kGiB + 16, 3 * kGiB + 16, 4 * kGiB + 16}, true}};
  MakeMovie(tracks, 5 * kGiB + 16);
  const OpenedMovie opened(movie_);
  ASSERT_EQ(opened.status, noErr);
  movies::FlattenPlan plan;
  ASSERT_EQ(movies::PlanFlatten(*opened.movie, &plan), noErr);
  EXPECT_EQ(plan.media_size, 5 * kGiB);
  ASSERT_EQ(plan.chunk_offsets[0].size(), 5U);
  for (UInt64 i = 0; i < 5; ++i)
    EXPECT_EQ(plan.chunk_offsets[0][i], i * kGiB);
  std::vector<UInt64> runs;
  EXPECT_EQ(plan.runs([&](const movies::CopyRun& run) {
    runs.insert(runs.end(), {run.offset, run.size});
    return noErr;
  }),
            noErr);
  EXPECT_EQ(runs, (std::vector<UInt64>{16, 5 * kGiB}));
}

TEST_F(LargeMovie, MediaBeyondFourGiBIsFlattened) {
  const std::vector<LargeTrack> tracks = {
      {"", UInt32{kGiB}, {16, kGiB + 16, 2 * kGiB + 16, 3 * kGiB + 16, 4 * kGiB + 16}, true},
      {"", 1000, {5 * kGiB + 16, 5 * kGiB + 5000, 5 * kGiB + 9000}, true},
      {"", 1000, {5 * kGiB + 30000}, true}};
  MakeMovie(tracks, 5 * kGiB + 40000);
  const Output output = FlattenAndExpectChunks(tracks);
  EXPECT_TRUE(output.has_wide_header);
  EXPECT_GT(output.media_end - output.media_begin, 5 * kGiB);
}

TEST_F(LargeMovie, OffsetsBecomeWideWhereOnlyTheOutputNeedsIt) {
  const std::vector<LargeTrack> tracks = {{"one.bin", UInt32{kGiB}, {0, kGiB, 2 * kGiB}},
                                          {"two.bin", UInt32{kGiB}, {0, kGiB, 2 * kGiB}}};
  for (const LargeTrack& track : tracks) {
    const SparseFile file(folder_ / track.file);
    file.Resize(3 * kGiB);
    MarkChunks(file, tracks, track.file);
  }
  MakeMovie(tracks, 16);
  const Output output = FlattenAndExpectChunks(tracks);
  EXPECT_TRUE(output.has_wide_header);
  EXPECT_TRUE(FindAtom(output.moov, {"moov", "trak", "mdia", "minf", "stbl", "co64"}) ||
              FindAtom(output.moov, {"moov", "trak:2", "mdia", "minf", "stbl", "co64"}));
}

TEST_F(LargeMovie, OffsetsAndSizesAtTheEdgeOfThirtyTwoBits) {
  // The last chunk's place and the media data's size go by 4 GiB, a few bytes at a time.
  const UInt64 png_size = fs::file_size(png_);
  MakeMovie({{"", 100, {16, 200}}}, 400);
  const UInt64 head = FlattenAndExpectChunks({{"", 100, {16, 200}}}).media_begin;
  for (const SInt64 distance : {-40, -9, -8, -7, -1, 0, 1, 7, 8, 9, 40}) {
    for (const UInt64 last_size : {UInt64{100}, UInt64{1000}}) {
      SCOPED_TRACE(distance);
      // First with the last chunk's start near the edge, then with the end of the media data.
      for (const UInt64 before : {head + png_size, png_size + 8 + last_size}) {
        const UInt64 last = kFourGiB - before + static_cast<UInt64>(distance);
        const std::vector<LargeTrack> tracks = {
            {"", UInt32{kGiB}, {16, kGiB + 16, 2 * kGiB + 16}},
            {"", static_cast<UInt32>(last - 3 * kGiB), {3 * kGiB + 16}},
            {"", static_cast<UInt32>(last_size), {last + 16}, last + 16 >= kFourGiB}};
        MakeMovie(tracks, last + 16 + last_size);
        const Output output = FlattenAndExpectChunks(tracks);
        const UInt64 media_size = output.media_end - output.media_begin;
        EXPECT_EQ(media_size, png_size + last + last_size);
        EXPECT_EQ(output.has_wide_header, media_size + 8 >= kFourGiB);
      }
    }
  }
}

}  // namespace
}  // namespace quillmere::test
