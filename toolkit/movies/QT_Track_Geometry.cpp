#include "QT_Track_Geometry.h"

#include "QT_Aperture.h"
#include "QT_Matrices.h"
#include "QT_Movie_Info.h"
#include "QT_Tracks.h"
#include "fixed_point.h"
#include "matrices.h"
#include "movie_geometry.h"
#include "track_walks_private.h"

namespace {

constexpr OSType kVisual = "visu"_4cc;
constexpr OSType kClean = "cadi"_4cc;
constexpr OSType kProduction = "prdi"_4cc;
constexpr OSType kEncoded = "endi"_4cc;
constexpr OSType kHasModes = "hamd"_4cc;

SInt32 GetDimensions(Track track, OSType aperture, FixedPoint* dimensions) {
  return QTGetTrackProperty(track, kVisual, aperture, sizeof *dimensions, dimensions, nullptr);
}

SInt32 SetDimensions(Track track, OSType aperture, const FixedPoint* dimensions) {
  return QTSetTrackProperty(track, kVisual, aperture, sizeof *dimensions, dimensions);
}

FixedRect AtOrigin(Fixed width, Fixed height) {
  FixedRect rect{};
  rect.right = width;
  rect.bottom = height;
  return rect;
}

FixedRect AtOrigin(const FixedPoint& dimensions) {
  return AtOrigin(dimensions.x, dimensions.y);
}

FixedRect TrackBox(Track track) {
  Fixed width = 0;
  Fixed height = 0;
  GetTrackDimensions(track, &width, &height);
  return AtOrigin(width, height);
}

/// The clean aperture that a track's dimensions tell.
SInt32 ClapOfTrack(Track track, const FixedPoint& clean, QT_Clap* clap) {
  FixedPoint production{};
  FixedPoint encoded{};
  SInt32 status = GetDimensions(track, kProduction, &production);
  if (!status) status = GetDimensions(track, kEncoded, &encoded);
  QT_Pasp pasp{};
  if (!status) QT_GeneratePaspAndClapFromApertureDims(&production, &clean, &encoded, clap, &pasp);
  return status;
}

/// A matrix that takes what it took to dx, dy after a move to the origin.
void Shift(Fixed dx, Fixed dy, MatrixRecord* matrix) {
  TranslateMatrix(matrix, dx, dy);
  FixedPoint point{dx, dy};
  TransformFixedPoints(matrix, &point, 1);
  TranslateMatrix(matrix, -point.x, -point.y);
}

/// Moves a clip, which is disposed of, and stores it.
template <class Store>
void ShiftClip(RgnHandle clip, Fixed dx, Fixed dy, Store store) {
  if (clip == nullptr) return;
  OffsetRgn(clip, static_cast<SInt16>(Fix2Long(dx)), static_cast<SInt16>(Fix2Long(dy)));
  store(clip);
  DisposeRgn(clip);
}

/// The bounds of a region, which is disposed of.
Rect BoundsOf(RgnHandle region) {
  Rect bounds{};
  GetRegionBounds(region, &bounds);
  DisposeRgn(region);
  return bounds;
}

bool HasArea(const Rect& rect) {
  return rect.right > rect.left && rect.bottom > rect.top;
}

/// Takes a track's picture on through a matrix.
void MultiplyTrackMatrix(Track track, MatrixRecord by) {
  MatrixRecord matrix;
  GetTrackMatrix(track, &matrix);
  QT_MatrixLeftMultiply(&matrix, &by);
  SetTrackMatrix(track, &by);
}

/// Gives a track its enabled state back.
class KeptState {
 public:
  explicit KeptState(Track track) : track_(track), enabled_(GetTrackEnabled(track)) {}
  ~KeptState() { SetTrackEnabled(track_, enabled_); }
  KeptState(const KeptState&) = delete;
  KeptState& operator=(const KeptState&) = delete;

 private:
  Track track_;
  Boolean enabled_;
};

/// Keeps the height of a track that lies along an edge of its movie.
void KeepEdge(const Rect& source, const Rect& sourceMovie, const Rect& destinationMovie,
              Track track) {
  const Rect bounds = BoundsOf(GetTrackDisplayBoundsRgn(track));
  Rect target = bounds;
  if (source.top == 0 && bounds.top == 0) {
    target.bottom = source.bottom;
  } else if (source.bottom == sourceMovie.bottom && bounds.bottom == destinationMovie.bottom) {
    target.top = static_cast<SInt16>(bounds.bottom - (source.bottom - source.top));
  }
  if (target.top == bounds.top && target.bottom == bounds.bottom) return;
  MatrixRecord matrix;
  RectMatrix(&matrix, &bounds, &target);
  MultiplyTrackMatrix(track, matrix);
}

/// Layers a track in relation to the movie's first image track as the source is in its movie.
void LayerLike(Movie sourceMovie, Movie destinationMovie, Track source, Track track) {
  Track first = QT_GetFirstEnabledImageTrack(sourceMovie);
  Track other = QT_GetFirstEnabledImageTrack(destinationMovie);
  if (first == nullptr || other == nullptr) return;
  const SInt32 step = GetTrackLayer(source) - GetTrackLayer(first);
  const SInt32 layer = GetTrackLayer(other);
  if (step != 0) {
    SetTrackLayer(track, static_cast<SInt16>(layer + step));
  } else if (QT_GetTrackIndex(sourceMovie, first) > QT_GetTrackIndex(sourceMovie, source)) {
    SetTrackLayer(track, static_cast<SInt16>(layer + 1));
  }
}

}  // namespace

SInt32 QT_GetTrackProductionApertureDimensions(Track track, FixedPoint* dimensions) {
  return GetDimensions(track, kProduction, dimensions);
}

SInt32 QT_SetTrackProductionApertureDimensions(Track track, const FixedPoint* dimensions) {
  return SetDimensions(track, kProduction, dimensions);
}

SInt32 QT_GetTrackCleanApertureDimensions(Track track, FixedPoint* dimensions) {
  return GetDimensions(track, kClean, dimensions);
}

SInt32 QT_SetTrackCleanApertureDimensions(Track track, const FixedPoint* dimensions) {
  return SetDimensions(track, kClean, dimensions);
}

SInt32 QT_GetTrackEncodedPixelDimensions(Track track, FixedPoint* dimensions) {
  return GetDimensions(track, kEncoded, dimensions);
}

SInt32 QT_SetTrackEncodedPixelDimensions(Track track, const FixedPoint* dimensions) {
  return SetDimensions(track, kEncoded, dimensions);
}

SInt32 QT_TrackHasApertureModes(Track track, Boolean* hasModes) {
  *hasModes = 0;
  return QTGetTrackProperty(track, kVisual, kHasModes, sizeof *hasModes, hasModes, nullptr);
}

SInt32 QT_MovieHasApertureModes(Movie movie, Boolean* hasModes) {
  *hasModes = 0;
  return QTGetMovieProperty(movie, kVisual, kHasModes, sizeof *hasModes, hasModes, nullptr);
}

SInt32 QT_AllVisualTracksHaveApertureModeDimensions(Movie movie, Boolean* allHave) {
  *allHave = 1;
  SInt32 status = noErr;
  quillmere::WalkTracks(movie, quillmere::kEnabledVisual, [&](Track track) {
    status = QT_TrackHasApertureModes(track, allHave);
    return status == noErr && *allHave;
  });
  return status;
}

SInt32 QT_CalcMediaToTrackMatrix(Track track, SInt32 width, SInt32 height, Boolean useClap,
                                 const QT_Clap* clap, FixedRect* source, FixedRect* destination,
                                 MatrixRecord* matrix) {
  Boolean hasModes = 0;
  SInt32 status = QT_TrackHasApertureModes(track, &hasModes);
  FixedRect from = AtOrigin(Long2Fix(width), Long2Fix(height));
  FixedRect to = TrackBox(track);
  if (!status && hasModes) {
    FixedPoint clean{};
    QT_Clap used{};
    status = GetDimensions(track, kClean, &clean);
    if (!status && useClap) used = *clap;
    if (!status && !useClap) status = ClapOfTrack(track, clean, &used);
    if (!status)
      QT_GetScaledClip(Long2Fix(width), Long2Fix(height), nullptr, &used, nullptr, &from, 1);
    to = AtOrigin(clean);
  }
  if (status) return status;
  if (source != nullptr) *source = from;
  if (destination != nullptr) *destination = to;
  if (matrix != nullptr) QT_FixedRectMatrix(matrix, &from, &to);
  return noErr;
}

SInt32 QT_GetMediaToTrackMatrix(Track track, Boolean useAperture, Boolean useClap,
                                const QT_Clap* clap, SInt32 height, SInt32 width,
                                MatrixRecord* matrix) {
  FixedRect from = AtOrigin(Long2Fix(width), Long2Fix(height));
  FixedRect to = TrackBox(track);
  SInt32 status = noErr;
  if (useAperture) {
    FixedPoint clean{};
    status = GetDimensions(track, kClean, &clean);
    to = AtOrigin(clean);
    if (useClap) {
      QT_GetScaledClip(Long2Fix(width), Long2Fix(height), nullptr, clap, nullptr, &from, 1);
    } else {
      FixedPoint production{};
      const SInt32 second = GetDimensions(track, kProduction, &production);
      if (!status) status = second;
      const Fixed dx = (clean.x - production.x) / 2;
      const Fixed dy = (clean.y - production.y) / 2;
      to = AtOrigin(production);
      to.left += dx;
      to.right += dx;
      to.top += dy;
      to.bottom += dy;
    }
  }
  QT_FixedRectMatrix(matrix, &from, &to);
  return status;
}

SInt32 QT_ShiftTrackMatrixAndClipF(Track track, Fixed dx, Fixed dy) {
  MatrixRecord matrix;
  GetTrackMatrix(track, &matrix);
  if (GetMoviesError()) return GetMoviesError();
  Shift(dx, dy, &matrix);
  SetTrackMatrix(track, &matrix);
  ShiftClip(GetTrackClipRgn(track), dx, dy,
            [track](RgnHandle clip) { SetTrackClipRgn(track, clip); });
  return GetMoviesError();
}

SInt32 QT_ShiftMovieMatrixAndClipF(Movie movie, Fixed dx, Fixed dy) {
  MatrixRecord matrix;
  GetMovieMatrix(movie, &matrix);
  if (GetMoviesError()) return GetMoviesError();
  Shift(dx, dy, &matrix);
  SetMovieMatrix(movie, &matrix);
  ShiftClip(GetMovieClipRgn(movie), dx, dy,
            [movie](RgnHandle clip) { SetMovieClipRgn(movie, clip); });
  return GetMoviesError();
}

Boolean QT_ScaleMovieMatrixToNewMovieBox(Movie movie, const Rect* box, Boolean fitWidth) {
  constexpr int kMostPasses = 10;
  const auto side = [fitWidth](const Rect& rect) {
    return SInt32{fitWidth ? rect.right - rect.left : rect.bottom - rect.top};
  };
  const auto present = [movie, &side] {
    Rect shown{};
    GetMovieBox(movie, &shown);
    return side(shown);
  };
  const SInt32 wanted = side(*box);
  SInt32 size = present();
  if (wanted < 1 || size < 1) return 0;
  Fixed scale = FixDiv(wanted, size);
  for (int pass = 1; pass <= kMostPasses; ++pass) {
    MatrixRecord matrix;
    GetMovieMatrix(movie, &matrix);
    ScaleMatrix(&matrix, scale, scale, 0, 0);
    SetMovieMatrix(movie, &matrix);
    size = present();
    if (size == wanted) return pass < kMostPasses;
    scale = size > wanted ? FixDiv(9999, 10000) : FixDiv(10000, 9999);
  }
  return 0;
}

SInt32 QT_CopyTrackDisplayLocation(Movie sourceMovie, Movie destinationMovie, Track sourceTrack,
                                   Track destinationTrack, Boolean copyEnabled, Boolean keepEdge) {
  if (sourceMovie == nullptr || destinationMovie == nullptr) return invalidMovie;
  if (sourceTrack == nullptr || destinationTrack == nullptr) return invalidTrack;
  {
    const KeptState sourceState(sourceTrack);
    const KeptState destinationState(destinationTrack);
    SetTrackEnabled(destinationTrack, 0);  // it doesn't count in its movie's bounds
    const Rect sourceBox = BoundsOf(GetMovieDisplayBoundsRgn(sourceMovie));
    const Rect destinationBox = BoundsOf(GetMovieDisplayBoundsRgn(destinationMovie));
    SetTrackEnabled(sourceTrack, 1);
    SetTrackEnabled(destinationTrack, 1);
    const Rect from = BoundsOf(GetTrackDisplayBoundsRgn(sourceTrack));
    const Rect to = BoundsOf(GetTrackDisplayBoundsRgn(destinationTrack));
    if (HasArea(from) && HasArea(to)) {
      MatrixRecord movieToMovie;
      MatrixRecord forth;
      MatrixRecord back;
      RectMatrix(&movieToMovie, &sourceBox, &destinationBox);
      RectMatrix(&forth, &from, &to);
      InverseMatrix(&forth, &back);
      MultiplyTrackMatrix(destinationTrack, back);
      MultiplyTrackMatrix(destinationTrack, movieToMovie);
    }
    if (keepEdge) KeepEdge(from, sourceBox, destinationBox, destinationTrack);
    LayerLike(sourceMovie, destinationMovie, sourceTrack, destinationTrack);
  }
  if (copyEnabled) SetTrackEnabled(destinationTrack, GetTrackEnabled(sourceTrack));
  return noErr;
}
