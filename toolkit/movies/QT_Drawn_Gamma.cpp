// The gamma of drawn movies, of QT_Compression.h.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include "GL_Strings.h"
#include "QT_Compression.h"
#include "compressors_private.h"
#include "drawn_movie_private.h"
#include "fixed_point.h"
#include "interval_walks_private.h"

using namespace quillmere;

namespace {

/// The time of the movie's first visual sample.
SInt32 FirstVisualTime(Movie movie) {
  constexpr OSType kVisualTypes[] = {"eyes"_4cc};
  SInt32 time = 0;
  GetMovieNextInterestingTime(movie, nextTimeMediaSample | nextTimeEdgeOK, 1, kVisualTypes, 0,
                              kForwards, &time, nullptr);
  return std::max(time, 0);
}

/// A rectangle of the size of the movie's box, at the origin.
SInt32 GetBoxAtOrigin(Movie movie, Rect* rect) {
  Rect box{};
  GetMovieBox(movie, &box);
  *rect = {0, 0, static_cast<SInt16>(box.bottom - box.top),
           static_cast<SInt16>(box.right - box.left)};
  return GetMoviesError();
}

/// A four-character code, or a depth, as text.
std::string TextOf(OSType type) {
  constexpr OSType kDeepest = 40;
  if (type <= kDeepest) return std::to_string(type);
  char text[5];
  GL_OSTypeToCString(type, text);
  return text;
}

/// A few pixels of a world, from row and column 100 on or as near as there are any.
std::vector<UInt8> PixelsOf(PixMapHandle pixels) {
  constexpr SInt32 kPlace = 100;
  constexpr SInt32 kPixels = 4;
  const PixMap& map = **pixels;
  const SInt32 width = map.bounds.right - map.bounds.left;
  const SInt32 row = std::min(kPlace, map.bounds.bottom - map.bounds.top - 1);
  const SInt32 count = std::min(kPixels, width);
  const SInt32 column = std::min(kPlace, width - count) / 2 * 2;
  const SInt32 bytes = map.pixelSize / 8;
  const UInt8* const first =
      map.baseAddr + std::ptrdiff_t{row} * map.rowBytes + std::ptrdiff_t{column} * bytes;
  return {first, first + std::ptrdiff_t{count} * bytes};
}

/// How bytes of a pixel format stand for brightness.
struct Brightness {
  std::size_t step;  ///< the first byte of each has none: alpha or chroma
  int black;
  int range;
  const char* name;
};
constexpr Brightness kOfArgb = {4, 0, 255, ""};
constexpr Brightness kOf2vuy = {2, 16, 220, "Y "};

/// The mean ratio of the logarithms of two pictures' brightness; 0 where none can be told.
double MeasuredChange(const Brightness& kind, const std::vector<UInt8>& reference,
                      const std::vector<UInt8>& bytes) {
  constexpr int kDark = 20;
  double sum = 0;
  int count = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i % kind.step == 0 || reference[i] <= kDark || bytes[i] <= kDark) continue;
    const double before = std::log(reference[i] - kind.black) - std::log(kind.range);
    const double after = std::log(bytes[i] - kind.black) - std::log(kind.range);
    if (after == 0) continue;
    sum += before / after;
    ++count;
  }
  return count > 0 ? sum / count : 0;
}

void PrintReference(const std::vector<UInt8>& bytes) {
  std::printf("ARGB[4]: ");
  for (const UInt8 byte : bytes)
    std::printf("%02X ", byte);
  std::printf("\n");
}

void PrintChange(const Brightness& kind, double change) {
  if (change != 0)
    std::printf("Measured %sgamma change = %.2f\n", kind.name, change);
  else
    std::printf("Could not measure %sgamma change", kind.name);
}

/// Draws the first frame into a world of a format for each gamma level, and prints what comes out.
SInt32 TestGammaOfFormat(Movie movie, OSType codecType, OSType format, const Brightness& kind) {
  constexpr std::array<Fixed, 3> kLevels = {0, -1, 0x23333};
  Rect box{};
  PictureBuffer buffer;
  SInt32 status = GetBoxAtOrigin(movie, &box);
  if (!status) status = buffer.Make(format, box);
  std::vector<UInt8> reference;
  for (std::size_t i = 0; i < kLevels.size() && !status; ++i) {
    QTSetPixMapHandleRequestedGammaLevel(buffer.pixels(), kLevels[i]);
    status = DrawnMovie(movie, buffer.world()).Draw(FirstVisualTime(movie));
    if (status) break;
    std::printf("cType = %s, offscreen type = %s, reqGamma = %.2f, actGamma = %.2f\n",
                TextOf(codecType).c_str(), TextOf(format).c_str(), Fix2X(kLevels[i]),
                Fix2X(QTGetPixMapHandleGammaLevel(buffer.pixels())));
    const std::vector<UInt8> bytes = PixelsOf(buffer.pixels());
    if (i == 0) {
      reference = bytes;
      PrintReference(reference);
    } else {
      PrintChange(kind, MeasuredChange(kind, reference, bytes));
    }
  }
  return status;
}

}  // namespace

SInt32 QT_GetMovieGamma2(Movie movie, CGrafPtr port, Float32* gamma) {
  constexpr float kDefault = 2.2F;
  constexpr float kLeast = 0.01F;
  *gamma = kDefault;
  Rect box{};
  PictureBuffer buffer;
  SInt32 status = GetBoxAtOrigin(movie, &box);
  if (!status && port == nullptr) {
    status = buffer.Make(32, box);
    port = buffer.world();
  }
  if (status) return status;
  PixMapHandle pixels = GetGWorldPixMap(port);
  const Fixed level = QTGetPixMapHandleGammaLevel(pixels);
  const Fixed requested = QTGetPixMapHandleRequestedGammaLevel(pixels);
  QTSetPixMapHandleRequestedGammaLevel(pixels, -1);
  status = DrawnMovie(movie, port).Draw(FirstVisualTime(movie));
  const auto drawn = static_cast<float>(Fix2X(QTGetPixMapHandleGammaLevel(pixels)));
  if (!status && drawn >= kLeast) *gamma = drawn;
  QTSetPixMapHandleGammaLevel(pixels, level);
  QTSetPixMapHandleRequestedGammaLevel(pixels, requested);
  return status;
}

SInt32 QT_TestMovieGamma(Movie movie, OSType codecType) {
  const SInt32 status = TestGammaOfFormat(movie, codecType, 32, kOfArgb);
  return status ? status : TestGammaOfFormat(movie, codecType, "2vuy"_4cc, kOf2vuy);
}
