#include "track_geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "big_endian.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// An aperture mode, the `tapt` entry that holds its dimensions, and if `clap` cuts the picture.
struct ApertureMode {
  OSType mode;
  OSType tapt_entry;
  bool uses_pixel_aspect;
  bool uses_clap;
};
constexpr ApertureMode kApertureModes[] = {
    {"clea"_4cc, "clef"_4cc, true, true},
    {"prod"_4cc, "prof"_4cc, true, false},
    {"enco"_4cc, "enof"_4cc, false, false},
};

/// round(65536 a b / (c d)) for factors of 32 bits; the limit of a Fixed when it does not fit.
Fixed FixedQuotient(UInt64 a, UInt64 b, UInt64 c, UInt64 d) {
  __extension__ using Wide = unsigned __int128;
  const Wide numerator = Wide{a} * b * 65536;
  const Wide denominator = Wide{c} * d;
  const Wide rounded = (numerator + denominator / 2) / denominator;
  return static_cast<Fixed>(std::min<Wide>(rounded, std::numeric_limits<Fixed>::max()));
}

/// The size that a video description gives: the clean part of its pixels if `mode` cuts, stretched
/// by its pixel aspect. False when it has neither record.
bool SizeByDescription(const Atom& entry, const ApertureMode& mode, TrackSize* size) {
  UInt32 width = 0;
  UInt32 height = 0;
  if (!EncodedSizeOf(entry, &width, &height)) return false;
  const std::span<const UInt8> clap =
      mode.uses_clap ? FindExtension(entry, "clap"_4cc) : std::span<const UInt8>();
  const std::span<const UInt8> pasp =
      mode.uses_pixel_aspect ? FindExtension(entry, "pasp"_4cc) : std::span<const UInt8>();
  UInt32 fractions[4] = {width, 1, height, 1};
  UInt32 horizontal = 1;
  UInt32 vertical = 1;
  if (clap.size() >= 16) {
    for (std::size_t i = 0; i < 4; ++i)
      fractions[i] = ReadU32(clap.data() + i * 4);
  }
  if (pasp.size() >= 8) {
    horizontal = ReadU32(pasp.data());
    vertical = ReadU32(pasp.data() + 4);
  }
  if (clap.size() < 16 && pasp.size() < 8) return false;
  if (fractions[1] == 0 || fractions[3] == 0 || horizontal == 0 || vertical == 0) return false;
  size->width = FixedQuotient(fractions[0], horizontal, fractions[1], vertical);
  size->height = FixedQuotient(fractions[2], 1, fractions[3], 1);
  return size->width > 0 && size->height > 0;
}

/// Bounds of points in movie coordinates.
struct Bounds {
  double left = std::numeric_limits<double>::infinity();
  double top = std::numeric_limits<double>::infinity();
  double right = -std::numeric_limits<double>::infinity();
  double bottom = -std::numeric_limits<double>::infinity();
  void Add(double x, double y) {
    left = std::min(left, x);
    top = std::min(top, y);
    right = std::max(right, x);
    bottom = std::max(bottom, y);
  }
};

double Element(const MatrixRecord& matrix, int row, int column) {
  return matrix.matrix[row][column] / (column == 2 ? 1073741824.0 : 65536.0);
}

void AddTransformedPoint(const MatrixRecord& matrix, double x, double y, Bounds* bounds) {
  const double scale =
      x * Element(matrix, 0, 2) + y * Element(matrix, 1, 2) + Element(matrix, 2, 2);
  if (scale == 0) return;
  bounds->Add(
      (x * Element(matrix, 0, 0) + y * Element(matrix, 1, 0) + Element(matrix, 2, 0)) / scale,
      (x * Element(matrix, 0, 1) + y * Element(matrix, 1, 1) + Element(matrix, 2, 1)) / scale);
}

SInt16 ToCoordinate(double value) {
  return static_cast<SInt16>(std::clamp(std::floor(value + 0.5), -32768.0, 32767.0));
}

}  // namespace

TrackSize SizeOfTrack(const TrackRecord& track) {
  const TrackHeader header = TrackHeaderOf(track);
  const OSType mode_code = track.movie->aperture_mode;
  const auto* mode = std::find_if(std::begin(kApertureModes), std::end(kApertureModes),
                                  [&](const ApertureMode& m) { return m.mode == mode_code; });
  if (mode == std::end(kApertureModes)) return {header.width, header.height};
  const Atom& trak = TrackAtom(track);
  if (const Atom* entry = trak.FindPath({"tapt"_4cc, mode->tapt_entry})) {
    const std::span<const UInt8> bytes = entry->payload();
    if (bytes.size() >= 12) return {ReadS32(bytes.data() + 4), ReadS32(bytes.data() + 8)};
  }
  TrackSize size;
  const Atom* stsd = trak.FindPath({"mdia"_4cc, "minf"_4cc, "stbl"_4cc, "stsd"_4cc});
  if (stsd != nullptr && !stsd->children().empty() && MediaTypeOf(track) == "vide"_4cc &&
      SizeByDescription(stsd->children().front(), *mode, &size)) {
    return size;
  }
  return {header.width, header.height};
}

bool IsVisual(const TrackRecord& track) {
  constexpr OSType kInvisible[] = {"soun"_4cc, "tmcd"_4cc, "hint"_4cc, "meta"_4cc, 0};
  return std::find(std::begin(kInvisible), std::end(kInvisible), MediaTypeOf(track)) ==
         std::end(kInvisible);
}

MatrixRecord ConcatMatrices(const MatrixRecord& a, const MatrixRecord& b) {
  MatrixRecord product = {};
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      double sum = 0;
      for (int i = 0; i < 3; ++i)
        sum += Element(a, row, i) * Element(b, i, column);
      const double scaled = std::round(sum * (column == 2 ? 1073741824.0 : 65536.0));
      product.matrix[row][column] =
          static_cast<Fixed>(std::clamp(scaled, -2147483648.0, 2147483647.0));
    }
  }
  return product;
}

Rect BoxOfMovie(const MovieRecord& movie) {
  Bounds bounds;
  const MatrixRecord movie_matrix = MovieHeaderOf(movie).matrix;
  for (const auto& track : movie.tracks) {
    const TrackHeader header = TrackHeaderOf(*track);
    if ((header.flags & kTrackEnabled) == 0 || !IsVisual(*track)) continue;
    const TrackSize size = SizeOfTrack(*track);
    if (size.width <= 0 || size.height <= 0) continue;
    const MatrixRecord matrix = ConcatMatrices(header.matrix, movie_matrix);
    const double width = size.width / 65536.0;
    const double height = size.height / 65536.0;
    AddTransformedPoint(matrix, 0, 0, &bounds);
    AddTransformedPoint(matrix, width, 0, &bounds);
    AddTransformedPoint(matrix, 0, height, &bounds);
    AddTransformedPoint(matrix, width, height, &bounds);
  }
  if (!(bounds.left <= bounds.right)) return {0, 0, 0, 0};
  return {ToCoordinate(bounds.top), ToCoordinate(bounds.left), ToCoordinate(bounds.bottom),
          ToCoordinate(bounds.right)};
}

}  // namespace quillmere::movies
