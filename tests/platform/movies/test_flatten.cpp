#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "atom_builder.h"
#include "overlay_support.h"
#include "replacement_guard.h"

namespace quillmere::test {
namespace {

namespace fs = std::filesystem;

/// Two seconds of picture and sound, a picture as overlay, and a folder for all of it.
class FlattenTest : public testing::Test {
 protected:
  void SetUp() override {
    RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48:r=10:d=2", "-f", "lavfi", "-i", "sine=d=2",
               "-c:v", "mjpeg", "-c:a", "pcm_s16le", "-timecode", "01:00:00:00", movie.string()});
    RunFfmpeg(
        {"-f", "lavfi", "-i", "color=red@0.5:s=64x48,format=rgba", "-frames:v", "1", png.string()});
  }

  /// The media data of the movie moves to a file of its own, named by `reference` in every `dref`.
  void MakeExternal(const fs::path& media, std::string_view type, const Bytes& reference) const {
    Bytes file = ReadFile(movie);
    WriteFile(media, file);
    Bytes moov = AtomBytes(file, {"moov"});
    for (int track = 1;; ++track) {
      const std::vector<std::string> path = {
          "moov", "trak:" + std::to_string(track), "mdia", "minf", "dinf", "dref"};
      if (!FindAtom(moov, path)) break;
      const Bytes entry = MakeFullAtom(type, 0, 0, reference);
      ReplaceAtom(&moov, path, MakeFullAtom("dref", 0, 0, ByteWriter().U32(1).Raw(entry).bytes));
    }
    WriteFile(movie, moov);
  }

  bool LeftOnly(std::vector<std::string> expected) const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder.path()))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(names, expected);
    return names == expected;
  }

  static std::string TrackHash(const fs::path& file, int track) {
    return RunOrFail({"ffmpeg", "-v", "error", "-ignore_editlist", "1", "-i", file.string(), "-map",
                      "0:" + std::to_string(track), "-c", "copy", "-f", "data", "-"});
  }

  TemporaryFolder folder;
  fs::path movie = folder / "a.mov";
  fs::path png = folder / "mask.png";
  fs::path output = folder / "a-clean.mov";
};

Bytes Text(std::string_view text) {
  return ByteWriter().Text(text).U8(0).bytes;
}

TEST_F(FlattenTest, KeepsAllTracksAndAddsTheOverlay) {
  const Bytes before = ReadFile(movie);
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  EXPECT_EQ(ReadFile(movie), before);
  for (int track = 0; track < 3; ++track)
    EXPECT_EQ(TrackHash(movie, track), TrackHash(output, track)) << track;
  const Bytes image = ReadFile(png);
  EXPECT_EQ(TrackHash(output, 3), std::string(image.begin(), image.end()));

  const std::string tags = RunOrFail({"exiftool", "-n", "-a", "-s3", "-TrackLayer", "-GraphicsMode",
                                      "-MajorBrand", output.string()});
  std::istringstream lines(tags);
  std::vector<std::string> values;
  for (std::string line; std::getline(lines, line);)
    values.push_back(line);
  EXPECT_NE(std::find(values.begin(), values.end(), "65535"), values.end());
  EXPECT_NE(std::find(values.begin(), values.end(), "256"), values.end());

  // Every track of the source stands in the output byte for byte, chunk offsets aside.
  const Bytes after = ReadFile(output);
  for (int track = 1; track <= 3; ++track) {
    const std::string step = "trak:" + std::to_string(track);
    Bytes old_track = AtomBytes(before, {"moov", step});
    Bytes new_track = AtomBytes(after, {"moov", step});
    for (Bytes* bytes : {&old_track, &new_track}) {
      const auto table = FindAtom(*bytes, {"trak", "mdia", "minf", "stbl", "stco"});
      ASSERT_TRUE(table);
      std::fill(bytes->begin() + static_cast<std::ptrdiff_t>(table->content() + 8),
                bytes->begin() + static_cast<std::ptrdiff_t>(table->end()), UInt8{0});
    }
    EXPECT_EQ(old_track, new_track);
  }
  EXPECT_EQ(AtomBytes(before, {"moov", "udta"}), AtomBytes(after, {"moov", "udta"}));
}

TEST_F(FlattenTest, SameMovieGivesSameBytes) {
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  const Bytes first = ReadFile(output);
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  EXPECT_EQ(ReadFile(output), first);
}

TEST_F(FlattenTest, ExternalReferencesWithinReachResolve) {
  fs::create_directories(folder / "sub");
  for (const char* name : {"media.dat", "sub/a b.dat"}) {
    std::string url = name;
    if (url.find(' ') != std::string::npos) url.replace(url.find(' '), 1, "%20");
    const std::string sound = TrackHash(movie, 1);
    const Bytes original = ReadFile(movie);
    MakeExternal(folder / name, "url ", Text(url));
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr) << name;
    fs::remove(folder / name);
    EXPECT_TRUE(TrackHash(output, 1) == sound);
    WriteFile(movie, original);
  }
}

TEST_F(FlattenTest, ReferencesOutOfReachFailAndLeaveNothing) {
  const TemporaryFolder elsewhere;
  fs::create_directories(elsewhere / "deep");
  const fs::path media = elsewhere / "deep/media.dat";
  fs::create_symlink(media, folder / "link.dat");
  fs::create_directory(folder / "folder.dat");
  const std::string absolute = "file://" + media.string();
  struct Case {
    std::string_view type;
    std::string reference;
  };
  const Case cases[] = {{"url ", "missing.dat"},
                        {"url ", absolute},
                        {"url ", "link.dat"},
                        {"url ", "folder.dat"},
                        {"url ", "http://host/m.dat"},
                        {"url ", "file://host/media.dat"},
                        {"url ", ""},
                        {"url ", "media%00.dat"},
                        {"rsrc", "media.dat"},
                        {"what", "media.dat"},
                        {"alis", "not an alias record"}};
  const Bytes original = ReadFile(movie);
  for (const Case& c : cases) {
    MakeExternal(media, c.type, Text(c.reference));
    EXPECT_EQ(OverlayAndFlatten(movie, png, output), couldNotResolveDataRef) << c.reference;
    EXPECT_FALSE(fs::exists(output));
    WriteFile(movie, original);
  }
  LeftOnly({"a.mov", "mask.png", "link.dat", "folder.dat"});
}

/// An alias record as older systems write them: a classic path with its levels, and what is asked
/// of the further items (POSIX path below the volume's mount point).
Bytes ClassicAlias(const std::string& classic, int levels_from, int levels_to,
                   const std::string& posix) {
  ByteWriter record;
  const std::string name = classic.substr(classic.rfind(':') + 1);
  record.U32(0).U16(0).U16(2).U16(0);
  record.U8(4).Text("Disk").Zeros(23).U32(0).Text("H+").U16(0).U32(2);
  record.U8(name.size()).Text(name).Zeros(63 - name.size());
  record.U32(0xFFFFFFFF).U32(0).Zeros(8);
  record.U16(static_cast<UInt64>(levels_from)).U16(static_cast<UInt64>(levels_to)).Zeros(16);
  const auto item = [&](UInt64 tag, const std::string& text) {
    record.U16(tag).U16(text.size()).Text(text).Zeros(text.size() % 2);
  };
  item(2, classic);
  if (!posix.empty()) item(18, posix);
  if (!posix.empty()) item(19, "/");
  record.U16(0xFFFF).U16(0);
  PutNumber(&record.bytes, 4, record.bytes.size(), 2);
  return record.bytes;
}

TEST_F(FlattenTest, AliasesOfOlderSystemsResolveOnlyWithinReach) {
  // The movie lies in "top/movies"; reached are that folder, what is beneath, and folders beside
  // it.
  const fs::path top = folder / "top";
  for (const char* name : {"movies/sub/deep", "beside/deep"})
    fs::create_directories(top / name);
  const std::string sound = TrackHash(movie, 1);
  const Bytes media = ReadFile(movie);
  const fs::path inner = top / "movies/m.mov";
  struct Case {
    const char* media;    ///< where the media data is, below "top"
    const char* classic;  ///< path on the disk that wrote the alias
    int from, to;         ///< levels up and down; -1 for none
    const char* posix;    ///< POSIX path, below "top" as well
    bool resolves;
  };
  const Case cases[] = {
      {"movies/x.dat", "Disk:work:movies:x.dat", 1, 1, "", true},
      {"movies/sub/deep/x.dat", "Disk:movies:sub:deep:x.dat", 1, 3, "", true},
      {"beside/x.dat", "Disk:work:beside:x.dat", 2, 2, "", true},
      {"beside/deep/x.dat", "Disk:work:beside:deep:x.dat", 2, 3, "", false},
      {"x.dat", "Disk:work:x.dat", 2, 1, "", false},
      {"../x.dat", "Disk:x.dat", 3, 1, "", false},
      {"x.dat", "Disk:movies:..:x.dat", 1, 2, "", false},
      {"x.dat", "Disk:movies:../x.dat", 1, 1, "", false},
      {"movies/x.dat", "Disk:elsewhere:x.dat", -1, -1, "movies/x.dat", true},
      {"beside/x.dat", "Disk:elsewhere:y.dat", 1, 1, "beside/x.dat", true},
      {"x.dat", "Disk:elsewhere:y.dat", 1, 1, "x.dat", false},
      {"movies/x.dat", "Disk:elsewhere:y.dat", 1, 1, "movies/sub/../x.dat", true},
      {"beside/deep/x.dat", "Disk:y.dat", 1, 1, "movies/../beside/deep/x.dat", false},
      {"movies/x.dat", "Disk:movies:x.dat", 1, 9, "", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.classic + std::string(" ") + c.posix);
    const fs::path data = (top / c.media).lexically_normal();
    const std::string posix = *c.posix == 0 ? "" : (top / c.posix).string();
    WriteFile(movie, media);
    MakeExternal(data, "alis", ClassicAlias(c.classic, c.from, c.to, posix));
    fs::copy_file(movie, inner, fs::copy_options::overwrite_existing);
    EXPECT_EQ(OverlayAndFlatten(inner, png, output), c.resolves ? noErr : couldNotResolveDataRef);
    EXPECT_EQ(fs::exists(output), c.resolves);
    if (c.resolves) {
      EXPECT_TRUE(TrackHash(output, 1) == sound);
    }
    fs::remove(output);
    fs::remove(data);
  }
}

TEST_F(FlattenTest, AliasesOfOursResolve) {
  fs::create_directory(folder / "sub");
  for (const char* name : {"media.dat", "sub/media.dat"}) {
    const Bytes original = ReadFile(movie);
    const std::string sound = TrackHash(movie, 1);
    WriteFile(folder / name, original);
    OwnedHandle alias;
    ASSERT_EQ(MakeAlias(folder / name, &alias), noErr);
    const auto* bytes = reinterpret_cast<const UInt8*>(*alias.get());
    MakeExternal(folder / name, "alis",
                 Bytes(bytes, bytes + static_cast<std::size_t>(GetHandleSize(alias.get()))));
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr) << name;
    EXPECT_TRUE(TrackHash(output, 1) == sound);
    WriteFile(movie, original);
  }
}

TEST_F(FlattenTest, EditsOfEveryKindAreKept) {
  const auto list = [](int version, const std::vector<std::array<SInt64, 3>>& edits) {
    ByteWriter content;
    content.U32(edits.size());
    for (const auto& edit : edits) {
      content.Number(static_cast<UInt64>(edit[0]), version == 1 ? 8 : 4);
      content.Number(static_cast<UInt64>(edit[1]), version == 1 ? 8 : 4);
      content.U32(static_cast<UInt64>(edit[2]));
    }
    return MakeAtom("edts", {MakeFullAtom("elst", version, 0, content.bytes)});
  };
  const Bytes original = ReadFile(movie);
  for (const int version : {0, 1}) {
    for (const Bytes& edits :
         {list(version, {{500, 0, 0x10000}, {500, 0, 0x10000}, {500, 0, 0x10000}}),
          list(version, {{300, -1, 0x10000}, {700, 2048, 0x10000}, {200, -1, 0x10000}}),
          list(version, {{400, 0, 0x20000}, {1600, 4096, 0x8000}, {100, 0, 0}}),
          list(version, {{0, 0, 0x10000}, {2000, 10, -0x10000}}), list(version, {})}) {
      Bytes file = original;
      ReplaceAtom(&file, {"moov", "trak", "edts"}, edits);
      WriteFile(movie, file);
      ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
      EXPECT_EQ(AtomBytes(ReadFile(output), {"moov", "trak", "edts"}), edits);
      EXPECT_EQ(TrackHash(output, 0), TrackHash(movie, 0));
    }
  }
}

TEST_F(FlattenTest, TheMoviesBoxFollowsMatrices) {
  struct Case {
    const char* name;
    std::array<SInt32, 9> matrix;  ///< of the picture track, which is 64 by 48
    Rect box;                      ///< top, left, bottom, right
  };
  constexpr SInt32 k1 = 0x10000;
  constexpr SInt32 kLast = 0x40000000;
  const Case cases[] = {
      {"upright", {k1, 0, 0, 0, k1, 0, 0, 0, kLast}, {0, 0, 48, 64}},
      {"quarter turn", {0, k1, 0, -k1, 0, 0, 48 * k1, 0, kLast}, {0, 0, 64, 48}},
      {"half turn", {-k1, 0, 0, 0, -k1, 0, 64 * k1, 48 * k1, kLast}, {0, 0, 48, 64}},
      {"three quarters", {0, -k1, 0, k1, 0, 0, 0, 64 * k1, kLast}, {0, 0, 64, 48}},
      {"mirrored", {-k1, 0, 0, 0, k1, 0, 64 * k1, 0, kLast}, {0, 0, 48, 64}},
      {"transposed", {0, k1, 0, k1, 0, 0, 0, 0, kLast}, {0, 0, 64, 48}},
      {"twice as wide", {2 * k1, 0, 0, 0, k1, 0, 0, 0, kLast}, {0, 0, 48, 128}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes file = ReadFile(movie);
    const auto header = FindAtom(file, {"moov", "trak", "tkhd"});
    for (std::size_t i = 0; i < 9; ++i)
      PutNumber(&file, header->content() + 40 + 4 * i, static_cast<UInt32>(c.matrix[i]), 4);
    WriteFile(movie, file);
    const OpenedMovie opened(movie);
    ASSERT_EQ(opened.status, noErr);
    Rect box = {};
    GetMovieBox(opened.movie, &box);
    EXPECT_EQ(box.bottom - box.top, c.box.bottom - c.box.top);
    EXPECT_EQ(box.right - box.left, c.box.right - c.box.left);
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
    EXPECT_EQ(AtomBytes(ReadFile(output), {"moov", "trak", "tkhd"}),
              AtomBytes(file, {"moov", "trak", "tkhd"}));
  }
}

TEST_F(FlattenTest, UnusedUnresolvedReferenceIsKept) {
  Bytes file = ReadFile(movie);
  const std::vector<std::string> path = {"moov", "trak", "mdia", "minf", "dinf", "dref"};
  const Bytes unused = MakeFullAtom("url ", 0, 0, Text("http://host/never"));
  const Bytes own = MakeFullAtom("url ", 0, 1, {});
  const Bytes dref = MakeFullAtom("dref", 0, 0, ByteWriter().U32(2).Raw(own).Raw(unused).bytes);
  ReplaceAtom(&file, path, dref);
  WriteFile(movie, file);
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  EXPECT_EQ(AtomBytes(ReadFile(output), path), dref);
}

TEST_F(FlattenTest, TruncatedMediaFails) {
  RunFfmpeg({"-i", movie.string(), "-map", "0", "-c", "copy", "-movflags", "+faststart",
             (folder / "b.mov").string()});
  const Bytes whole = ReadFile(folder / "b.mov");
  const std::size_t movie_end = FindAtom(whole, {"moov"})->end();
  for (int part = 1; part < 50; ++part) {
    const std::size_t size = whole.size() * static_cast<std::size_t>(part) / 50;
    WriteFile(movie, std::span(whole).first(size));
    EXPECT_NE(OverlayAndFlatten(movie, png, output), noErr) << size << " of " << movie_end;
    EXPECT_FALSE(fs::exists(output));
  }
  LeftOnly({"a.mov", "b.mov", "mask.png"});
}

TEST_F(FlattenTest, SourceCutWhileOpenFails) {
  const OpenedMovie opened(movie);
  ASSERT_EQ(AddOverlay(opened.movie, png), noErr);
  fs::resize_file(movie, 3000);
  EXPECT_EQ(Flatten(opened.movie, output), eofErr);
  EXPECT_FALSE(fs::exists(output));
}

TEST_F(FlattenTest, NeverReplacesASource) {
  const Bytes before = ReadFile(movie);
  const Bytes picture = ReadFile(png);
  EXPECT_EQ(OverlayAndFlatten(movie, png, movie), dupFNErr);
  EXPECT_EQ(OverlayAndFlatten(movie, png, png), dupFNErr);
  fs::create_hard_link(movie, output);
  EXPECT_EQ(OverlayAndFlatten(movie, png, output), dupFNErr);
  fs::remove(output);
  fs::create_symlink(movie, output);
  EXPECT_EQ(OverlayAndFlatten(movie, png, output), dupFNErr);
  EXPECT_EQ(ReadFile(movie), before);
  EXPECT_EQ(ReadFile(png), picture);
}

TEST_F(FlattenTest, ProtectedFilesAndTheirMediaStay) {
  const fs::path media = folder / "b-clean.mov";
  const fs::path other = folder / "other.mov";
  fs::copy_file(movie, other);
  MakeExternal(media, "url ", Text("b-clean.mov"));
  FSRef reference;
  ASSERT_EQ(files::ReferenceOf(movie, &reference), noErr);
  ASSERT_EQ(movies::ProtectFromReplacement(reference, true), noErr);
  EXPECT_EQ(OverlayAndFlatten(other, png, movie), fBsyErr);
  EXPECT_EQ(OverlayAndFlatten(other, png, media), fBsyErr);
  ASSERT_EQ(movies::ProtectFromReplacement(reference, false), noErr);
  EXPECT_EQ(OverlayAndFlatten(other, png, media), noErr);
}

TEST_F(FlattenTest, OlderOutputGoesOnlyWhenAsked) {
  WriteFile(output, "older");
  {
    const OpenedMovie opened(movie);
    EXPECT_EQ(Flatten(opened.movie, output, createMovieFileDontCreateMovie), dupFNErr);
  }
  EXPECT_EQ(ReadFile(output).size(), 5U);
  EXPECT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  EXPECT_GT(ReadFile(output).size(), 5U);
}

struct Progress {
  std::vector<SInt16> messages;
  Fixed last = -1;
  SInt16 fails_at = -1;
};

OSErr NoteProgress(Movie, SInt16 message, SInt16 operation, Fixed percent, SInt64 constant) {
  auto& progress = *reinterpret_cast<Progress*>(constant);
  EXPECT_EQ(operation, progressOpFlatten);
  if (message == movieProgressUpdatePercent) {
    EXPECT_GE(percent, progress.last);
    EXPECT_LE(percent, 0x10000);
    progress.last = percent;
  }
  progress.messages.push_back(message);
  return message == progress.fails_at ? OSErr{4008} : OSErr{0};
}

TEST_F(FlattenTest, ProgressProcedureIsCalledAndCanEndIt) {
  for (const int fails_at : {-1, int{movieProgressOpen}, int{movieProgressUpdatePercent}}) {
    const OpenedMovie opened(movie);
    ASSERT_EQ(AddOverlay(opened.movie, png), noErr);
    Progress progress;
    progress.fails_at = static_cast<SInt16>(fails_at);
    SetMovieProgressProc(opened.movie, NoteProgress, reinterpret_cast<SInt64>(&progress));
    EXPECT_EQ(Flatten(opened.movie, output), fails_at < 0 ? noErr : 4008);
    EXPECT_EQ(fs::exists(output), fails_at < 0);
    EXPECT_EQ(progress.messages.front(), movieProgressOpen);
    EXPECT_EQ(progress.messages.back(), movieProgressClose);
    if (fails_at < 0) {
      EXPECT_EQ(progress.last, 0x10000);
    }
    fs::remove(output);
  }
  LeftOnly({"a.mov", "mask.png"});
}

TEST_F(FlattenTest, WriteFailureLeavesNothing) {
  rlimit old_limit = {};
  getrlimit(RLIMIT_FSIZE, &old_limit);
  const auto old_handler = signal(SIGXFSZ, SIG_IGN);
  for (const rlim_t limit : {rlim_t{100}, rlim_t{10000}}) {
    const rlimit small = {limit, old_limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const OSStatus status = OverlayAndFlatten(movie, png, output);
    setrlimit(RLIMIT_FSIZE, &old_limit);
    EXPECT_NE(status, noErr);
  }
  signal(SIGXFSZ, old_handler);
  LeftOnly({"a.mov", "mask.png"});
}

TEST_F(FlattenTest, SharedBytesAreWrittenOnce) {
  // Every chunk of the picture track at one place: the output holds these bytes once.
  Bytes file = ReadFile(movie);
  const auto table = FindAtom(file, {"moov", "trak", "mdia", "minf", "stbl", "stco"});
  ASSERT_TRUE(table);
  const UInt32 count = U32At(file, table->content() + 4);
  for (UInt32 i = 1; i < count; ++i) {
    PutNumber(&file, table->content() + 8 + std::size_t{i} * 4, U32At(file, table->content() + 8),
              4);
  }
  WriteFile(movie, file);
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  EXPECT_LE(fs::file_size(output), fs::file_size(movie) + fs::file_size(png) + 2000);
  EXPECT_EQ(TrackHash(movie, 0), TrackHash(output, 0));
}

TEST_F(FlattenTest, TracksApartAreInterleaved) {
  // All sound behind all pictures, twenty seconds of it.
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48:r=5:d=20", "-f", "lavfi", "-i", "sine=d=20",
             "-c:v", "mjpeg", "-c:a", "pcm_s16le", movie.string()});
  Bytes file = ReadFile(movie);
  const auto table = FindAtom(file, {"moov", "trak:2", "mdia", "minf", "stbl", "stco"});
  const UInt32 count = U32At(file, table->content() + 4);
  ASSERT_GT(count, 10U);
  const Bytes copy = file;
  // The file twice in a row: pictures from the first half, sound from the second.
  for (UInt32 i = 0; i < count; ++i) {
    const std::size_t place = table->content() + 8 + std::size_t{i} * 4;
    PutNumber(&file, place, U32At(file, place) + copy.size(), 4);
  }
  file.insert(file.end(), copy.begin(), copy.end());
  WriteFile(movie, file);
  ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
  for (int track = 0; track < 2; ++track)
    EXPECT_EQ(TrackHash(movie, track), TrackHash(output, track));
  const Bytes after = ReadFile(output);
  const auto offsets = [&](const char* track) {
    const auto place = FindAtom(after, {"moov", track, "mdia", "minf", "stbl", "stco"});
    const UInt32 last = U32At(after, place->content() + 4) - 1;
    return std::pair(U32At(after, place->content() + 8),
                     U32At(after, place->content() + 8 + std::size_t{last} * 4));
  };
  EXPECT_LT(offsets("trak:2").first, offsets("trak:1").second);
}

TEST_F(FlattenTest, LargeKeptAtomsSurviveByteForByte) {
  Bytes content(std::size_t{3} << 20);
  for (std::size_t i = 0; i < content.size(); ++i)
    content[i] = static_cast<UInt8>(i * i >> 7);
  const Bytes original = ReadFile(movie);
  const Bytes whole = MakeAtom("uuid", content);
  const Bytes wide = MakeAtom64("quil", content);
  const Bytes meta = MakeFullAtom("meta", 0, 0, MakeAtom("free", content));
  Bytes cut = MakeAtom("last", content);
  PutNumber(&cut, 0, cut.size() + 1000, 4);
  // A size that holds only at the end of a file becomes a true one.
  for (const Bytes& last : {cut, MakeAtomToEnd("last", content)}) {
    WriteFile(movie, Concatenate({original, whole, wide, meta, last}));
    ASSERT_EQ(OverlayAndFlatten(movie, png, output), noErr);
    const Bytes after = ReadFile(output);
    const Bytes kept = Concatenate({whole, wide, meta, MakeAtom("last", content)});
    const std::size_t start = FindAtom(after, {"uuid"})->offset;
    EXPECT_TRUE(std::equal(kept.begin(), kept.end(), after.begin() + std::ptrdiff_t(start)));
    EXPECT_TRUE(FindAtom(after, {"mdat"}));
    for (int track = 0; track < 3; ++track)
      EXPECT_EQ(TrackHash(movie, track), TrackHash(output, track));
  }
}

TEST_F(FlattenTest, DataNamedByItsPlaceElsewhereIsRefused) {
  // One item of 16 bytes at offset 64, with construction method 0 (in the file) or 1 (in `idat`).
  const auto locations = [](int method) {
    return MakeFullAtom("iloc", 1, 0,
                        ByteWriter()
                            .U16(0x4400)
                            .U16(1)
                            .U16(1)
                            .U16(UInt64(method))
                            .U16(0)
                            .U16(1)
                            .U32(64)
                            .U32(16)
                            .bytes);
  };
  const Bytes original = ReadFile(movie);
  for (const std::size_t room : {std::size_t{10}, std::size_t{3} << 20}) {
    const Bytes free = MakeAtom("free", Bytes(room, 1));
    for (const int method : {0, 1}) {
      const Bytes children = Concatenate({free, locations(method)});
      const Bytes iso = MakeFullAtom("meta", 0, 0, children);
      const Bytes handler = MakeFullAtom("hdlr", 0, 0, Bytes(20, 0));
      const Bytes quick_time = MakeAtom("meta", Concatenate({handler, children}));
      for (const Bytes& atom : {iso, quick_time, MakeAtom("udta", iso)}) {
        WriteFile(movie, Concatenate({original, atom}));
        EXPECT_EQ(OverlayAndFlatten(movie, png, output), method == 0 ? invalidMovie : noErr)
            << room << ' ' << method;
      }
    }
  }
}

TEST_F(FlattenTest, StillBecomesAMovie) {
  ASSERT_EQ(OverlayAndFlatten(png, png, output), noErr);
  const Bytes image = ReadFile(png);
  const std::string content(image.begin(), image.end());
  EXPECT_EQ(TrackHash(output, 0), content);
  EXPECT_EQ(TrackHash(output, 1), content);
}

}  // namespace
}  // namespace quillmere::test
