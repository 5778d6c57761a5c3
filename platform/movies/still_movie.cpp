#include "still_movie.h"

#include <utility>
#include <vector>

#include "fixed_point.h"
#include "movie_records.h"
#include "new_atoms.h"
#include "new_samples.h"
#include "sample_descriptions.h"

namespace quillmere::movies {

namespace {

/// Where the upright picture takes its axes from, by orientation tag (TIFF 6.0, Exif 2.3): the
/// coefficients of the encoded x and y, and if the result is moved by the width or height.
struct Turn {
  SInt8 a, b, c, d;         ///< x' = a x + c y, y' = b x + d y
  SInt8 x_width, x_height;  ///< x' += x_width * width + x_height * height
  SInt8 y_width, y_height;
};
constexpr Turn kTurns[] = {
    {1, 0, 0, 1, 0, 0, 0, 0},    // 1 upright
    {-1, 0, 0, 1, 1, 0, 0, 0},   // 2 mirrored left to right
    {-1, 0, 0, -1, 1, 0, 0, 1},  // 3 upside down
    {1, 0, 0, -1, 0, 0, 0, 1},   // 4 mirrored top to bottom
    {0, 1, 1, 0, 0, 0, 0, 0},    // 5 mirrored at the main diagonal
    {0, 1, -1, 0, 0, 1, 0, 0},   // 6 to be turned right
    {0, -1, -1, 0, 0, 1, 1, 0},  // 7 mirrored at the other diagonal
    {0, -1, 1, 0, 0, 0, 1, 0},   // 8 to be turned left
};

Fixed Times(SInt8 factor, UInt32 pixels) {
  return Long2Fix(factor * static_cast<SInt32>(pixels));
}

}  // namespace

MatrixRecord UprightMatrix(UInt8 orientation, UInt32 width, UInt32 height) {
  const Turn& turn = kTurns[orientation >= 1 && orientation <= 8 ? orientation - 1 : 0];
  MatrixRecord matrix = kIdentityMatrix;
  matrix.matrix[0][0] = Long2Fix(turn.a);
  matrix.matrix[0][1] = Long2Fix(turn.b);
  matrix.matrix[1][0] = Long2Fix(turn.c);
  matrix.matrix[1][1] = Long2Fix(turn.d);
  matrix.matrix[2][0] = Times(turn.x_width, width) + Times(turn.x_height, height);
  matrix.matrix[2][1] = Times(turn.y_width, width) + Times(turn.y_height, height);
  return matrix;
}

OSStatus MakeStillMovie(const imaging::ImageFileInfo& info, std::unique_ptr<Atom>* movie) {
  constexpr UInt32 kLargestTrackSide = 32767;
  if (info.width > kLargestTrackSide || info.height > kLargestTrackSide) {
    return badImageDescription;
  }
  std::vector<UInt8> record;
  OSStatus status = MakeImageDescription(info, &record);
  if (status != noErr) return status;
  Atom entry(0);
  status = MakeDescriptionAtom(record, "vide"_4cc, &entry);
  if (status != noErr) return status;

  NewSamples samples;
  const auto size = static_cast<UInt32>(info.data_size);
  status = samples.Add({info.data_offset, size, size, 1, kStillDuration, 0, 1, true});
  if (status != noErr) return status;

  auto moov = std::make_unique<Atom>(MakeMovieAtom(kStillTimeScale, kStillDuration));
  Atom trak = MakeTrackAtom({}, {1, Long2Fix(static_cast<SInt32>(info.width)),
                                 Long2Fix(static_cast<SInt32>(info.height)), 0});
  TrackHeader header;
  Atom* tkhd = trak.Find("tkhd"_4cc);
  ReadTrackHeader(*tkhd, &header);
  header.duration = kStillDuration;
  header.matrix = UprightMatrix(info.orientation, info.width, info.height);
  WriteTrackHeader(tkhd, header);
  WriteEditList(trak.FindPath({"edts"_4cc, "elst"_4cc}), {{kStillDuration, 0, 0x10000}});

  Atom mdia = MakeMediaAtom({}, "vide"_4cc, kStillTimeScale, {});
  SetMediaDuration(mdia.Find("mdhd"_4cc), kStillDuration);
  Atom* stbl = mdia.FindPath({"minf"_4cc, "stbl"_4cc});
  Atom* stsd = stbl->Find("stsd"_4cc);
  stsd->Add(std::move(entry));
  stsd->mutable_payload()[7] = 1;
  status = samples.AppendTo(stbl, 0);
  if (status != noErr) return status;
  trak.Add(std::move(mdia));
  moov->Add(std::move(trak));
  SetNextTrackId(moov->Find("mvhd"_4cc), 2);
  *movie = std::move(moov);
  return noErr;
}

}  // namespace quillmere::movies
