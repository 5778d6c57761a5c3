/// Media and tracks copied by value and by reference show the samples of their source; files that
/// movies are saved in survive what may happen.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "LL_Linked_Lists.h"
#include "QT_Copy_Media.h"
#include "QT_Copy_Tracks.h"
#include "QT_Data_References.h"
#include "QT_Metadata.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "QT_Tracks.h"
#include "atom_builder.h"
#include "cf_strings.h"
#include "file_calls.h"
#include "file_objects.h"
#include "image_descriptions.h"
#include "media_editing.h"
#include "media_times.h"
#include "memory_handles.h"
#include "movie_storage.h"
#include "reference_counted.h"
#include "test_files.h"
#include "track_editing.h"
#include "track_references.h"

namespace quillmere::test {
namespace {

constexpr SInt32 kEnd = 0x7FFFFFFF;

/// A sample of a media with its bytes.
struct Sample {
  SInt64 begin;
  SInt64 duration;
  SInt64 display_offset;
  UInt32 flags;
  std::string bytes;
  friend bool operator==(const Sample&, const Sample&) = default;
};

std::vector<Sample> SamplesOf(Media media) {
  std::vector<Sample> samples;
  std::vector<UInt8> room(1 << 21);
  const SInt64 end = GetMediaDecodeDuration(media);
  for (SInt64 time = 0; time < end;) {
    Sample sample{};
    ByteCount size = 0;
    ItemCount count = 0;
    const OSErr status = GetMediaSample2(media, room.data(), room.size(), &size, time,
                                         &sample.begin, &sample.duration, &sample.display_offset,
                                         nullptr, nullptr, 1, &count, &sample.flags);
    EXPECT_EQ(noErr, status);
    if (status || count != 1 || sample.duration < 1) break;
    sample.bytes.assign(reinterpret_cast<const char*>(room.data()), size);
    samples.push_back(sample);
    time += sample.duration;
  }
  return samples;
}

/// What a copy of a span shall hold.
std::vector<Sample> Cut(const std::vector<Sample>& samples, SInt64 start, SInt64 end) {
  std::vector<Sample> cut;
  for (Sample sample : samples) {
    const SInt64 first = std::max(sample.begin, start);
    const SInt64 last = std::min(sample.begin + sample.duration, end);
    if (first >= last) continue;
    sample.begin = first - start;
    sample.duration = last - first;
    cut.push_back(sample);
  }
  return cut;
}

std::vector<Sample> Behind(const std::vector<Sample>& samples, std::size_t count) {
  std::vector<Sample> behind(samples.begin() + static_cast<std::ptrdiff_t>(count), samples.end());
  const SInt64 start = behind.empty() ? 0 : behind.front().begin;
  for (Sample& sample : behind)
    sample.begin -= start;
  return behind;
}

/// The bytes that a track shows at a time; empty for nothing.
class ShownBytes {
 public:
  explicit ShownBytes(Track track) : track_(track) {
    const Media media = GetTrackMedia(track);
    samples_ = SamplesOf(media);
    for (std::size_t i = 0; i < samples_.size(); ++i)
      by_display_[samples_[i].begin + samples_[i].display_offset] = i;
  }
  std::string At(SInt32 time) const {
    const SInt64 media_time = TrackTimeToMediaDisplayTime(time, track_);
    const auto after = by_display_.upper_bound(media_time);
    if (media_time < 0 || after == by_display_.begin()) return {};
    return samples_[std::prev(after)->second].bytes;
  }

 private:
  Track track_;
  std::vector<Sample> samples_;
  std::map<SInt64, std::size_t> by_display_;
};

void ExpectShowsTheSame(Track source, Track copy, SInt32 start, SInt32 duration) {
  const ShownBytes expected(source);
  const ShownBytes shown(copy);
  ASSERT_EQ(duration, GetTrackDuration(copy));
  for (SInt32 time = 0; time < duration; ++time)
    ASSERT_EQ(expected.At(start + time), shown.At(time)) << time;
}

class Copying : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new TemporaryFolder;
    // B frames, for display offsets; sound in frames; edits; a time code that is referred to.
    RunFfmpeg({"-f",
               "lavfi",
               "-i",
               "testsrc=s=64x48:d=2:r=25",
               "-f",
               "lavfi",
               "-i",
               "sine=d=2:r=8000",
               "-c:v",
               "mpeg4",
               "-bf",
               "2",
               "-g",
               "10",
               "-c:a",
               "pcm_s16be",
               "-timecode",
               "01:00:00:00",
               "-movie_timescale",
               "600",
               (*folder_ / "source.mov").string()});
    RunFfmpeg({"-f", "lavfi", "-i", "sine=d=1:r=8000", "-c:a", "adpcm_ima_qt",
               (*folder_ / "packets.mov").string()});
  }
  static void TearDownTestSuite() {
    delete folder_;
    folder_ = nullptr;
  }
  Movie Open(const char* name) {
    const FSRef file = ReferenceTo(*folder_ / name);
    Movie movie = nullptr;
    EXPECT_EQ(noErr, QT_OpenMovieFile(&file, 0, &movie));
    opened_.push_back(movie);
    return movie;
  }
  /// A new file with a movie and a track like another one.
  Movie Create(const char* name, Track like, Track* track) {
    const FSRef folder = ReferenceTo(folder_->path());
    const Owned<CFStringRef> text(CreateFromUtf8(name));
    Movie movie = nullptr;
    EXPECT_EQ(noErr, QT_CreateMovieFile(&folder, text.get(), "TVOD"_4cc, QT_CreateDeletesExisting,
                                        &file_, &movie));
    opened_.push_back(movie);
    AliasHandle alias = nullptr;
    EXPECT_EQ(noErr, FSNewAlias(nullptr, &file_, &alias));
    EXPECT_EQ(noErr, AddEmptyTrackToMovie(like, movie, alias, "alis"_4cc, track));
    DisposeHandle(alias);
    return movie;
  }
  void TearDown() override {
    for (Movie movie : opened_)
      QT_DisposeMovie(&movie);
  }

  static inline TemporaryFolder* folder_ = nullptr;
  FSRef file_{};
  std::vector<Movie> opened_;
};

TEST_F(Copying, SpansOfMediaByValueAndByReference) {
  const Movie source = Open("source.mov");
  std::mt19937 random(7);
  for (const OSType type : {"vide"_4cc, "soun"_4cc}) {
    const Track track = GetMovieIndTrackType(source, 1, type, 1);
    const Media media = GetTrackMedia(track);
    const std::vector<Sample> samples = SamplesOf(media);
    const SInt32 duration = GetMediaDuration(media);
    Track by_value = nullptr;
    Track by_reference = nullptr;
    Create("value.mov", track, &by_value);
    Create("reference.mov", track, &by_reference);
    UInt16* map = nullptr;
    ASSERT_EQ(noErr, QT_CopyDataReferencesIfNeeded(media, GetTrackMedia(by_reference), &map));
    EXPECT_EQ(2, map[1]);
    for (int round = 0; round < (type == "vide"_4cc ? 25 : 4); ++round) {
      SCOPED_TRACE(round);
      const auto pick = [&] {
        return static_cast<SInt32>(random() % static_cast<UInt32>(duration));
      };
      SInt32 start = round == 0 ? 0 : pick();
      SInt32 end = round == 0 ? kEnd : round == 1 ? start + 1 : pick();
      if (end < start) std::swap(start, end);
      const std::vector<Sample> expected = Cut(samples, start, std::min(end, duration));
      for (const bool is_value : {true, false}) {
        const Media copy = GetTrackMedia(is_value ? by_value : by_reference);
        const std::size_t before = SamplesOf(copy).size();
        ASSERT_EQ(noErr, is_value ? QT_CopyMedia(media, copy, start, end)
                                  : QT_CopyMediaByReference64(media, copy, start, end, map));
        ASSERT_EQ(expected, Behind(SamplesOf(copy), before));
      }
    }
    const Media copy = GetTrackMedia(by_value);
    EXPECT_EQ(noErr, QT_CopyMedia(media, copy, 5, 5));
    EXPECT_EQ(invalidMedia, QT_CopyMedia(nullptr, copy, 0, kEnd));
    const SInt64 before = static_cast<SInt64>(SamplesOf(copy).size());
    static SInt32 calls;
    calls = 0;
    const auto progress = [](Movie, SInt16, SInt16, Fixed percent, SInt64) -> OSErr {
      EXPECT_LE(percent, 0x10000);
      ++calls;
      return -1;  // isn't looked at
    };
    EXPECT_EQ(noErr, QT_CopyMediaWithProgress(media, copy, progress, 0));
    EXPECT_GE(calls, 3);
    EXPECT_EQ(samples, Behind(SamplesOf(copy), static_cast<std::size_t>(before)));
    std::free(map);
  }
}

TEST_F(Copying, SeveralDescriptionsAndDataReferences) {
  RunFfmpeg({"-f", "lavfi", "-i", "testsrc2=s=64x48:d=1:r=25", "-c:v", "mjpeg",
             (*folder_ / "other.mov").string()});
  const Track video = QT_GetFirstVideoTrack(Open("source.mov"));
  const Media first = GetTrackMedia(video);
  const Media second = GetTrackMedia(QT_GetFirstVideoTrack(Open("other.mov")));
  Track mixed = nullptr;
  const Movie movie = Create("mixed.mov", video, &mixed);
  const Media media = GetTrackMedia(mixed);
  for (const Media source : {first, second, first}) {
    UInt16* map = nullptr;
    ASSERT_EQ(noErr, QT_CopyDataReferencesIfNeeded(source, media, &map));
    ASSERT_EQ(noErr, QT_CopyMediaByReference64(source, media, 300, 5000, map));
    std::free(map);
    ASSERT_EQ(noErr, QT_CopyMedia(source, media, 700, 4000));
  }
  SInt16 references = 0;
  EXPECT_EQ(noErr, GetMediaDataRefCount(media, &references));
  EXPECT_EQ(3, references);
  EXPECT_EQ(4, GetMediaSampleDescriptionCount(media));
  SInt32 start = 0;
  EXPECT_EQ(noErr, QT_DataRefIndexToStartTime(1, media, &start));
  EXPECT_EQ(4700, start);
  ASSERT_EQ(noErr, InsertMediaIntoTrack(mixed, 0, 0, GetMediaDuration(media), 0x10000));
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));

  const Media read = GetTrackMedia(QT_GetFirstVideoTrack(Open("mixed.mov")));
  const std::vector<Sample> samples = SamplesOf(read);
  ASSERT_EQ(SamplesOf(media), samples);
  std::mt19937 random(5);
  for (int round = 0; round < 10; ++round) {
    auto from = static_cast<SInt32>(random() % 20000);
    auto to = static_cast<SInt32>(random() % 20000);
    if (to < from) std::swap(from, to);
    Track copy = nullptr;
    Create("span.mov", video, &copy);
    UInt16* map = nullptr;
    ASSERT_EQ(noErr, QT_CopyDataReferencesIfNeeded(read, GetTrackMedia(copy), &map));
    ASSERT_EQ(noErr, QT_CopyMediaByReference64(read, GetTrackMedia(copy), from, to, map));
    std::free(map);
    EXPECT_EQ(Cut(samples, from, to), SamplesOf(GetTrackMedia(copy)));
    Create("span.mov", video, &copy);
    ASSERT_EQ(noErr, QT_CopyMedia(read, GetTrackMedia(copy), from, to));
    EXPECT_EQ(Cut(samples, from, to), SamplesOf(GetTrackMedia(copy)));
  }
}

TEST_F(Copying, SoundInPacketsStaysInPackets) {
  const Movie source = Open("packets.mov");
  const Track track = QT_GetFirstSoundTrack(source);
  const Media media = GetTrackMedia(track);
  Track copy = nullptr;
  Create("packets copy.mov", track, &copy);
  ASSERT_EQ(noErr, QT_CopyDataReferences(media, GetTrackMedia(copy)));
  SInt64 size = 0;
  const SInt32 end = 64 * 20 + 10;
  ASSERT_EQ(noErr, QT_CopySoundMediaByReference64(64 * 4, end, media, GetTrackMedia(copy)));
  EXPECT_EQ(17 * 64, GetMediaDuration(GetTrackMedia(copy)));
  EXPECT_EQ(noErr, GetMediaDataSize64(GetTrackMedia(copy), 0, end, &size));
  EXPECT_EQ(17 * 34, size);
}

TEST_F(Copying, TracksShowWhatTheirSourceShows) {
  const Movie source = Open("source.mov");
  const Track video = QT_GetFirstVideoTrack(source);
  const SInt32 duration = GetTrackDuration(video);
  std::mt19937 random(11);
  // Edits in the middle of groups of pictures, an empty one, and one at half speed.
  ASSERT_EQ(noErr, InsertEmptyTrackSegment(video, duration / 3, duration / 10));
  ASSERT_EQ(noErr, DeleteTrackSegment(video, duration / 7, duration / 9));
  ASSERT_EQ(noErr, ScaleTrackSegment(video, duration / 2, duration / 8, duration / 4));
  ASSERT_EQ(noErr, InsertTrackSegment(video, video, duration / 20, duration / 5, duration / 2));
  for (const Boolean with_data : {Boolean{1}, Boolean{0}}) {
    Track other = nullptr;
    const Movie movie = Create("tracks.mov", video, &other);
    DisposeMovieTrack(other);
    Track copy = nullptr;
    ASSERT_EQ(noErr, QT_CopyTrack(video, movie, with_data, with_data ? &file_ : nullptr, &copy));
    ExpectShowsTheSame(video, copy, 0, GetTrackDuration(video));
    for (int round = 0; round < 4; ++round) {
      const auto start = static_cast<SInt32>(random() % static_cast<UInt32>(duration));
      const SInt32 length = 1 + static_cast<SInt32>(random() % 300);
      ASSERT_EQ(noErr, QT_CopyTrackSegment(video, movie, start, length, with_data, &file_, &copy));
      ExpectShowsTheSame(video, copy, start, length);
    }
    // Saved and opened again, it shows the same.
    ASSERT_EQ(noErr, QT_CopyTrackTotally(video, movie, with_data, &file_, &copy));
    EXPECT_NE(nullptr, GetTrackReference(copy, "tmcd"_4cc, 1));
    const SInt32 index = QT_GetTrackIndex(movie, copy);
    Boolean is_in_file = 0;
    ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
    EXPECT_TRUE(is_in_file);
    const Movie again = Open("tracks.mov");
    ExpectShowsTheSame(video, GetMovieIndTrack(again, index), 0, GetTrackDuration(video));
    EXPECT_EQ(7,
              std::stoi(RunOrFail({"ffprobe", "-v", "error", "-show_entries", "format=nb_streams",
                                   "-of", "csv=p=0", (*folder_ / "tracks.mov").string()})));
  }
  Track none = nullptr;
  EXPECT_EQ(paramErr, QT_CopyTrack(video, nullptr, 1, nullptr, &none));
  const Movie movie = Create("own.mov", video, &none);
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
  ASSERT_EQ(noErr, QT_CopyTrack(video, nullptr, 1, &file_, &none));
  EXPECT_EQ(nullptr, none);
  EXPECT_EQ(2, QT_CountVideoTracks(Open("own.mov")));
  Track slow = nullptr;
  ASSERT_EQ(noErr, QT_CopyTrackTotallyWithProgress(video, movie, &file_, &slow, nullptr, 0));
  EXPECT_NEAR(GetTrackDuration(video), GetTrackDuration(slow), 2);
}

TEST_F(Copying, WholeMoviesAndTheirMetadata) {
  const Movie source = Open("source.mov");
  QTMetaDataRef metadata = nullptr;
  ASSERT_EQ(noErr, QTCopyMovieMetaData(source, &metadata));
  const auto bytes = [](const char* text) { return reinterpret_cast<const UInt8*>(text); };
  QTMetaDataItem item = 0;
  EXPECT_EQ(noErr, QTMetaDataAddItem(metadata, "mdta"_4cc, "mdta"_4cc, bytes("com.test.title"), 14,
                                     bytes("Title"), 5, kQTMetaDataTypeUTF8, &item));
  EXPECT_EQ(noErr, QTMetaDataAddItem(metadata, "udta"_4cc, "udta"_4cc,
                                     bytes("\xA9"
                                           "cmt"),
                                     4, bytes("Note"), 4, kQTMetaDataTypeUTF8, &item));
  EXPECT_EQ(noErr, QTMetaDataAddItem(metadata, "itms"_4cc, "itsk"_4cc,
                                     bytes("\xA9"
                                           "alb"),
                                     4, bytes("Disc"), 4, kQTMetaDataTypeUTF8, nullptr));
  EXPECT_EQ(kQTMetaDataInvalidKeyErr,
            QTMetaDataAddItem(metadata, "udta"_4cc, "udta"_4cc, bytes("long one"), 8, bytes(""), 0,
                              0, nullptr));
  QTMetaDataRelease(metadata);
  Movie copy = nullptr;
  ASSERT_EQ(noErr, QT_CloneMovie(source, &copy, 0));
  opened_.push_back(copy);
  EXPECT_EQ(QT_CountTracks(source), QT_CountTracks(copy));
  ExpectShowsTheSame(QT_GetFirstVideoTrack(source), QT_GetFirstVideoTrack(copy), 0,
                     GetTrackDuration(QT_GetFirstVideoTrack(source)));
  Movie whole = nullptr;
  SetMovieSelection(source, 3, 5);
  ASSERT_EQ(noErr, QT_CopyMovie(source, &whole));
  opened_.push_back(whole);
  TimeValue time = 0;
  GetMovieSelection(source, &time, nullptr);
  EXPECT_EQ(3, time);
  EXPECT_EQ(GetMovieDuration(source), GetMovieDuration(whole));
  ExpectShowsTheSame(QT_GetFirstVideoTrack(source), QT_GetFirstVideoTrack(whole), 0,
                     GetTrackDuration(QT_GetFirstVideoTrack(source)));
  Movie sound = nullptr;
  ASSERT_EQ(noErr, QT_CloneSoundByReference(source, &sound));
  opened_.push_back(sound);
  EXPECT_EQ(1, QT_CountTracks(sound));
  ASSERT_EQ(noErr, QT_CopyMovieMetaData(source, sound));

  // Another reader finds the items of a file that holds the movie by reference.
  const FSRef folder = ReferenceTo(folder_->path());
  Handle reference = nullptr;
  OSType type = 0;
  ASSERT_EQ(noErr,
            QTNewDataReferenceFromFSRefCFString(&folder, CFSTR("sound.mov"), 0, &reference, &type));
  ASSERT_EQ(noErr, QT_CreateReferenceMovie(sound, reference, type, QT_CreateDeletesExisting, 0));
  DisposeHandle(reference);
  const std::string told = RunOrFail({"exiftool", "-s", "-UserData:Comment", "-Keys:all",
                                      "-ItemList:all", (*folder_ / "sound.mov").string()});
  for (const char* text : {"Title", "Note", "Disc"})
    EXPECT_NE(std::string::npos, told.find(text)) << told;
  const Movie again = Open("sound.mov");
  ASSERT_EQ(noErr, QTCopyMovieMetaData(again, &metadata));
  const UInt8* key = bytes("com.test.title");
  ASSERT_EQ(noErr, QT_GetMetaDataIndexedItemWithKey(metadata, 1, 0, "mdta"_4cc, key, 14, &item));
  EXPECT_EQ(-2177, QT_GetMetaDataIndexedItemWithKey(metadata, 2, 0, "mdta"_4cc, key, 14, &item));
  QTMetaDataRelease(metadata);
  SInt32 count = 0;
  EXPECT_EQ(noErr, QT_GetMovieDataRefCount(again, 0, 0, 0, &count));
  EXPECT_EQ(1, count);
  GL_FileObjectElement* files = nullptr;
  EXPECT_EQ(noErr, QT_GetMovieReferencedFiles(again, &files));
  ASSERT_NE(nullptr, files);
  EXPECT_EQ(PlaceOf(ReferenceTo(*folder_ / "source.mov")), PlaceOf(files->fileRef));
  LL_DisposeLinkedList(ListHead(&files));
  Track found = nullptr;
  SInt16 index = 0;
  EXPECT_EQ(noErr, QT_FindDataRefByName(again, CFSTR("SOURCE.mov"), &found, &index, nullptr));
  EXPECT_EQ(1, index);
  EXPECT_EQ(invalidMedia, QT_FindDataRefByName(again, CFSTR("other.mov"), &found, &index, nullptr));
  EXPECT_EQ(nullptr, found);
}

TEST_F(Copying, DataAndMoviesTakeTurnsInAFile) {
  const Track video = QT_GetFirstVideoTrack(Open("source.mov"));
  const Media source = GetTrackMedia(video);
  Track track = nullptr;
  const Movie movie = Create("turns.mov", video, &track);
  const Media media = GetTrackMedia(track);
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, BeginMediaEdits(media));
  for (int turn = 0; turn < 3; ++turn) {  // a movie is saved while data is still being added
    ASSERT_EQ(noErr, QT_CopyMedia(source, media, turn * 4000, turn * 4000 + 3000));
    ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
    ASSERT_EQ(SamplesOf(media), SamplesOf(GetTrackMedia(QT_GetFirstVideoTrack(Open("turns.mov")))));
  }
  ASSERT_EQ(noErr, EndMediaEdits(media));
  EXPECT_EQ(noMediaEdits, EndMediaEdits(media));
  // Room of older movies is used again: the file doesn't grow by saving.
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
  const auto size = std::filesystem::file_size(*folder_ / "turns.mov");
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
  EXPECT_EQ(size, std::filesystem::file_size(*folder_ / "turns.mov"));
}

/// Movies of other makers may end in an atom that reaches to the end of the file, or is cut off.
TEST_F(Copying, FilesThatEndInAnOpenAtomTakeMoreData) {
  const Track video = QT_GetFirstVideoTrack(Open("source.mov"));
  RunFfmpeg({"-i", (*folder_ / "source.mov").string(), "-c", "copy", "-movie_timescale", "600",
             "-movflags", "+faststart", (*folder_ / "first.mov").string()});
  const Bytes whole = ReadFile(*folder_ / "first.mov");
  const std::vector<AtomPlace> atoms = AtomsIn(whole, 0, whole.size());
  ASSERT_EQ("mdat", TypeAt(whole, atoms.back()));
  for (const UInt64 size_field : {UInt64{0}, UInt64{atoms.back().size + 1000}}) {
    Bytes open = whole;
    PutNumber(&open, atoms.back().offset, size_field, 4);
    WriteFile(*folder_ / "open.mov", open);
    const FSRef file = ReferenceTo(*folder_ / "open.mov");
    Track copy = nullptr;
    ASSERT_EQ(noErr, QT_CopyTrack(video, nullptr, 1, &file, &copy));
    const Movie again = Open("open.mov");
    EXPECT_EQ(2, QT_CountVideoTracks(again));
    EXPECT_EQ(SamplesOf(GetTrackMedia(video)),
              SamplesOf(GetTrackMedia(QT_GetFirstVideoTrack(again))));
    ExpectShowsTheSame(video, GetMovieIndTrackType(again, 2, "vide"_4cc, 1), 0,
                       GetTrackDuration(video));
  }
  Bytes padded = whole;
  padded.insert(padded.end(), 3, 0);
  WriteFile(*folder_ / "open.mov", padded);
  const FSRef file = ReferenceTo(*folder_ / "open.mov");
  Track copy = nullptr;
  EXPECT_EQ(badPublicMovieAtom, QT_CopyTrack(video, nullptr, 1, &file, &copy));
  EXPECT_EQ(padded, ReadFile(*folder_ / "open.mov")) << "what can't be added to stays";
}

/// Each write fails in turn: the file then opens with the old or the new movie.
TEST_F(Copying, SavingSurvivesEveryFailure) {
  const Movie source = Open("source.mov");
  const Track video = QT_GetFirstVideoTrack(source);
  SInt32 failures = 0;
  for (SInt64 call = 0;; ++call) {
    SCOPED_TRACE(call);
    Track track = nullptr;
    const Movie movie = Create("saved.mov", video, &track);
    ASSERT_EQ(noErr, QT_CopyMedia(GetTrackMedia(QT_GetFirstVideoTrack(source)),
                                  GetTrackMedia(track), 0, 100));
    ASSERT_EQ(noErr, InsertMediaIntoTrack(track, 0, 0, 100, 0x10000));
    Boolean is_in_file = 0;
    ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
    bool failed = false;
    SInt32 status = noErr;
    {
      files::FailingCall failing(call, ENOSPC);
      Track added = nullptr;
      status = QT_CopyTrack(video, movie, 1, &file_, &added);
      if (!status) status = QT_SaveMovie(movie, &file_, &is_in_file);
      failed = failing.HasFailed();
    }
    const Movie again = Open("saved.mov");
    ASSERT_NE(nullptr, again);
    const SInt32 tracks = QT_CountTracks(again);
    EXPECT_TRUE(tracks == 1 || tracks == 2);
    EXPECT_FALSE(SamplesOf(GetTrackMedia(GetMovieIndTrack(again, 1))).empty());
    if (status == noErr) {
      EXPECT_EQ(2, tracks);
    }
    if (!failed) break;
    ++failures;
  }
  EXPECT_GE(failures, 5);
}

/// A process that saves is killed at any moment.
TEST_F(Copying, SavingSurvivesKills) {
  const Movie source = Open("source.mov");
  Track track = nullptr;
  const Movie movie = Create("killed.mov", QT_GetFirstVideoTrack(source), &track);
  ASSERT_EQ(noErr, QT_CopyMedia(GetTrackMedia(QT_GetFirstVideoTrack(source)), GetTrackMedia(track),
                                0, kEnd));
  Boolean is_in_file = 0;
  ASSERT_EQ(noErr, QT_SaveMovie(movie, &file_, &is_in_file));
  std::mt19937 random(3);
  for (int kill_number = 0; kill_number < 40; ++kill_number) {
    const pid_t child = fork();
    if (child == 0) {
      for (int round = 0;; ++round) {
        Track more = nullptr;
        if (round % 2 == 0) {
          QT_CopyTrackSegment(track, movie, 0, 0, 0, &file_, &more);
        } else {
          DisposeMovieTrack(GetMovieIndTrack(movie, 2));
        }
        Boolean saved = 1;
        QT_SaveMovie(movie, &file_, &saved);
      }
    }
    usleep(static_cast<useconds_t>(random() % 20000));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    Movie again = nullptr;
    ASSERT_EQ(noErr, QT_OpenMovieFile(&file_, 0, &again));
    const SInt32 tracks = QT_CountTracks(again);
    EXPECT_TRUE(tracks == 1 || tracks == 2) << tracks;
    EXPECT_EQ(SamplesOf(GetTrackMedia(track)).size(),
              SamplesOf(GetTrackMedia(GetMovieIndTrack(again, 1))).size());
    QT_DisposeMovie(&again);
  }
}

TEST_F(Copying, FilesAreMadeUnderFreeNamesAndDeleted) {
  const FSRef folder = ReferenceTo(folder_->path());
  std::vector<std::string> made;
  for (int i = 0; i < 3; ++i) {
    Movie movie = nullptr;
    FSRef file{};
    ASSERT_EQ(noErr, QT_CreateMovieFileWithIndex(&folder, CFSTR("Name"), 0, 0, &file, &movie));
    made.push_back(std::filesystem::path(PlaceOf(file)).filename().string());
    QT_DisposeMovie(&movie);
    if (i == 2) {
      EXPECT_EQ(noErr, QT_DeletePotentiallyBusyMovieFile(&file, 2));
      EXPECT_EQ(0, std::memcmp(&file, FSRef{}.hidden, sizeof file));
    }
  }
  EXPECT_EQ((std::vector<std::string>{"Name", "Name 2", "Name 3"}), made);
  EXPECT_FALSE(std::filesystem::exists(*folder_ / "Name 3"));
  Movie movie = nullptr;
  FSRef file{};
  EXPECT_EQ(dupFNErr, QT_CreateMovieFileNew(&folder, CFSTR("Name"), 0, 0, &file, &movie));
  const FSRef source = ReferenceTo(*folder_ / "source.mov");
  Boolean saved = 0;
  ASSERT_EQ(noErr, QT_CopyVideoFileToNewFile(&source, 0, kEnd, &folder, CFSTR("video.mov"), &file));
  const Movie copy = Open("video.mov");
  EXPECT_EQ(SamplesOf(GetTrackMedia(QT_GetFirstVideoTrack(Open("source.mov")))),
            SamplesOf(GetTrackMedia(QT_GetFirstVideoTrack(copy))));
  Track track = QT_GetFirstVideoTrack(copy);
  ASSERT_EQ(noErr, QT_CopyVideoFileToMedia(&source, 0, 1000, copy, &file, track,
                                           GetTrackMedia(track), &(saved = 1)));
  EXPECT_EQ(noErr, QT_TotallyDeleteMovieFile(&file, Open("video.mov"), 0));
  opened_.pop_back();
  EXPECT_FALSE(std::filesystem::exists(*folder_ / "video.mov"));
  EXPECT_TRUE(std::filesystem::exists(*folder_ / "source.mov"));
}

}  // namespace
}  // namespace quillmere::test
