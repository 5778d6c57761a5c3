/// Movies made for a test.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "QT_Compression.h"
#include "QT_Movie_Info.h"
#include "QT_Movie_Storage.h"
#include "QT_New_Tracks.h"
#include "cf_strings.h"
#include "drawing.h"
#include "file_objects.h"
#include "image_descriptions.h"
#include "media_editing.h"
#include "memory_handles.h"
#include "sound_descriptions.h"
#include "test_files.h"

namespace quillmere::test {

/// A new movie in a file, whose tracks are made sample by sample.
class MadeMovie : public testing::Test {
 protected:
  MadeMovie() {
    const FSRef folder = ReferenceTo(folder_.path());
    EXPECT_EQ(noErr, QT_CreateMovieFile(&folder, CFSTR("made.mov"), 0, 0, &file_, &movie_));
  }
  ~MadeMovie() override { QT_DisposeMovie(&movie_); }

  /// A video track of raw pictures, 2 by 2 pixels of `depth` bits, one of each duration.
  Track AddVideo(OSType codec, const std::vector<SInt32>& durations, SInt16 depth = 32) {
    Track track = nullptr;
    Media media = nullptr;
    EXPECT_EQ(noErr, QT_NewVideoTrack(movie_, &file_, 2, 2, 600, &track, &media));
    ImageDescription record{};
    record.idSize = sizeof record;
    record.cType = codec;
    record.width = record.height = 2;
    record.depth = depth;
    Handle description = nullptr;
    EXPECT_EQ(noErr, PtrToHand(&record, &description, sizeof record));
    EXPECT_EQ(noErr, BeginMediaEdits(media));
    UInt8 pixels[32] = {};
    SInt32 number = 0;
    for (const SInt32 duration : durations) {
      pixels[0] = static_cast<UInt8>(++number);
      EXPECT_EQ(noErr, AddMediaSample2(media, pixels, 16 + static_cast<ByteCount>(number % 3),
                                       duration, 0, description, 1, 0, nullptr));
    }
    EXPECT_EQ(noErr, EndMediaEdits(media));
    DisposeHandle(description);
    EXPECT_EQ(noErr, InsertMediaIntoTrack(track, 0, 0, GetMediaDuration(media), 0x10000));
    return track;
  }
  /// A second of sound of so many channels.
  Track AddSound(SInt16 channels) {
    Track track = nullptr;
    Media media = nullptr;
    EXPECT_EQ(noErr, QT_NewSoundTrack(movie_, &file_, 8000, &track, &media));
    SoundDescription record{};
    record.descSize = sizeof record;
    record.dataFormat = "twos"_4cc;
    record.numChannels = channels;
    record.sampleSize = 16;
    record.sampleRate = 8000U << 16;
    Handle description = nullptr;
    EXPECT_EQ(noErr, PtrToHand(&record, &description, sizeof record));
    const std::vector<UInt8> bytes(static_cast<std::size_t>(8000 * 2 * channels), 1);
    EXPECT_EQ(noErr, BeginMediaEdits(media));
    EXPECT_EQ(noErr, AddMediaSample2(media, bytes.data(), bytes.size(), 1, 0, description, 8000, 0,
                                     nullptr));
    EXPECT_EQ(noErr, EndMediaEdits(media));
    DisposeHandle(description);
    EXPECT_EQ(noErr, InsertMediaIntoTrack(track, 0, 0, 8000, 0x10000));
    return track;
  }

  /// A track of 40 by 24 red pixels, one sample for each codec, 200 units of 600 long; the first
  /// `shown` samples are.
  void AddDrawn(const std::vector<OSType>& codecs, SInt32 shown = 1) {
    Track track = nullptr;
    Media media = nullptr;
    ASSERT_EQ(noErr, QT_NewVideoTrack(movie_, &file_, 24, 40, 600, &track, &media));
    const auto draw = [](Rect rect, SInt64 red, SInt64, SInt64) {
      const RGBColor color = {static_cast<UInt16>(red), 0, 0};
      RGBForeColor(&color);
      PaintRect(&rect);
    };
    for (const OSType codec : codecs)
      ASSERT_EQ(noErr, QT_AddCompressedTextImageToMedia(40 << 16, 24 << 16, draw, 65535, 0, 0,
                                                        media, codec, 200, nullptr));
    ASSERT_EQ(noErr, InsertMediaIntoTrack(track, 0, 0, 200 * shown, 0x10000));
  }

  TemporaryFolder folder_;
  FSRef file_{};
  Movie movie_ = nullptr;
};

}  // namespace quillmere::test
