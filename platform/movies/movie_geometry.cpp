#include "movie_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <utility>

#include "big_endian.h"
#include "fixed_point.h"
#include "matrices.h"
#include "new_atoms.h"
#include "region_bytes.h"
#include "toolbox_records.h"
#include "track_geometry.h"

using namespace quillmere::movies;
using quillmere::ReadS32;
using quillmere::WriteU32;

namespace {

struct DisposeRegion {
  void operator()(RgnHandle region) const { DisposeRgn(region); }
};
using OwnedRegion = std::unique_ptr<Region, DisposeRegion>;

/// The clip of a `moov` or `trak`; null if it has none that reads.
OwnedRegion ReadClip(const Atom& owner) {
  const Atom* crgn = owner.FindPath({"clip"_4cc, "crgn"_4cc});
  std::vector<quillmere::RegionBand> bands;
  if (crgn == nullptr || !quillmere::BandsFromBytes(crgn->payload(), &bands)) return nullptr;
  OwnedRegion region(NewRgn());
  quillmere::SetBands(region.get(), bands);
  return region;
}

/// Puts a clip into a `moov` or `trak`, behind its header.
OSStatus WriteClip(Atom* owner, RgnHandle clip) {
  if (clip == nullptr) {
    owner->Remove("clip"_4cc);
    return noErr;
  }
  std::vector<UInt8> bytes = quillmere::RegionToBytes(clip);
  if (bytes.empty()) return paramErr;
  Atom* crgn = owner->FindPath({"clip"_4cc, "crgn"_4cc});
  if (crgn != nullptr) {
    crgn->set_payload(std::move(bytes));
    return noErr;
  }
  owner->Remove("clip"_4cc);
  Atom made("clip"_4cc);
  made.Add(Atom("crgn"_4cc)).set_payload(std::move(bytes));
  owner->Insert(owner->children().empty() ? 0 : 1, std::move(made));
  return noErr;
}

struct Corner {
  double x;
  double y;
};

/// The rows of pixels whose centres lie in a quadrilateral without bends.
std::vector<quillmere::RegionBand> RowsOf(const Corner (&corners)[4]) {
  double top = corners[0].y;
  double bottom = corners[0].y;
  for (const Corner& corner : corners) {
    top = std::min(top, corner.y);
    bottom = std::max(bottom, corner.y);
  }
  std::vector<quillmere::RegionBand> rows;
  const auto first = static_cast<SInt32>(std::clamp(std::ceil(top - 0.5), -32768.0, 32767.0));
  const auto end = static_cast<SInt32>(std::clamp(std::ceil(bottom - 0.5), -32768.0, 32767.0));
  for (SInt32 row = first; row < end; ++row) {
    const double y = row + 0.5;
    double left = 32767;
    double right = -32768;
    for (std::size_t i = 0; i < 4; ++i) {
      const Corner& a = corners[i];
      const Corner& b = corners[(i + 1) % 4];
      if ((a.y <= y) == (b.y <= y)) continue;
      const double x = a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y);
      left = std::min(left, x);
      right = std::max(right, x);
    }
    const auto from = static_cast<SInt32>(std::clamp(std::ceil(left - 0.5), -32768.0, 32767.0));
    const auto to = static_cast<SInt32>(std::clamp(std::ceil(right - 0.5), -32768.0, 32767.0));
    if (from < to) rows.push_back({row, row + 1, {from, to}});
  }
  return rows;
}

/// Adds a rectangle, moved by a matrix, to a region; corners at infinity add nothing.
void AddTransformed(const MatrixRecord& matrix, const Rect& rect, RgnHandle region) {
  Rect moved = rect;
  const OwnedRegion part(NewRgn());
  if (TransformRect(&matrix, &moved)) {
    RectRgn(part.get(), &moved);
  } else {
    FixedPoint points[] = {{Long2Fix(rect.left), Long2Fix(rect.top)},
                           {Long2Fix(rect.right), Long2Fix(rect.top)},
                           {Long2Fix(rect.right), Long2Fix(rect.bottom)},
                           {Long2Fix(rect.left), Long2Fix(rect.bottom)}};
    if (TransformFixedPoints(&matrix, points, 4) != noErr) return;
    Corner corners[4];
    std::transform(std::begin(points), std::end(points), corners, [](const FixedPoint& point) {
      return Corner{Fix2X(point.x), Fix2X(point.y)};
    });
    quillmere::SetBands(part.get(), RowsOf(corners));
  }
  UnionRgn(region, part.get(), region);
}

void TransformRegion(const MatrixRecord& matrix, RgnHandle region) {
  const OwnedRegion moved(NewRgn());
  for (const quillmere::RegionBand& band : quillmere::BandsOf(region)) {
    for (std::size_t i = 0; i + 1 < band.edges.size(); i += 2) {
      const auto edge = [](SInt32 place) { return static_cast<SInt16>(place); };
      AddTransformed(
          matrix, {edge(band.top), edge(band.edges[i]), edge(band.bottom), edge(band.edges[i + 1])},
          moved.get());
    }
  }
  CopyRgn(moved.get(), region);
}

SInt16 PixelsOf(Fixed size) {
  return static_cast<SInt16>(std::clamp(Fix2Long(size), 0, 32767));
}

/// Adds what a track covers of the movie, before the movie's clip and matrix.
void AddTrack(const TrackRecord& track, RgnHandle region) {
  if (!IsVisual(track)) return;
  const TrackSize size = SizeOfTrack(track);
  const Rect box = {0, 0, PixelsOf(size.height), PixelsOf(size.width)};
  const OwnedRegion covered(NewRgn());
  RectRgn(covered.get(), &box);
  if (const OwnedRegion clip = ReadClip(TrackAtom(track)))
    SectRgn(covered.get(), clip.get(), covered.get());
  TransformRegion(TrackHeaderOf(track).matrix, covered.get());
  UnionRgn(region, covered.get(), region);
}

void PlaceOnDisplay(const MovieRecord& movie, RgnHandle region) {
  if (const OwnedRegion clip = ReadClip(*movie.file.movie)) SectRgn(region, clip.get(), region);
  TransformRegion(MovieHeaderOf(movie).matrix, region);
}

/// Dimensions of an aperture, and where `tapt` has them.
struct ApertureDimensions {
  OSType property;
  OSType entry;
};
constexpr ApertureDimensions kApertureDimensions[] = {
    {"cadi"_4cc, "clef"_4cc}, {"prdi"_4cc, "prof"_4cc}, {"endi"_4cc, "enof"_4cc}};
constexpr std::size_t kDimensionsSize = 12;  // version and flags, width, height

const ApertureDimensions* FindDimensions(OSType property_class, OSType property_id) {
  if (property_class != "visu"_4cc) return nullptr;
  const auto* found =
      std::ranges::find(kApertureDimensions, property_id, &ApertureDimensions::property);
  return found != std::end(kApertureDimensions) ? found : nullptr;
}

bool ReadDimensions(const TrackRecord& track, OSType entry, FixedPoint* dimensions) {
  const Atom* atom = TrackAtom(track).FindPath({"tapt"_4cc, entry});
  if (atom == nullptr || atom->payload().size() < kDimensionsSize) return false;
  *dimensions = {ReadS32(atom->payload().data() + 4), ReadS32(atom->payload().data() + 8)};
  return true;
}

void WriteDimensions(const TrackRecord& track, OSType entry, const FixedPoint& dimensions) {
  Atom& trak = TrackAtom(track);
  Atom* tapt = trak.Find("tapt"_4cc);
  if (tapt == nullptr) tapt = &trak.Insert(trak.children().empty() ? 0 : 1, Atom("tapt"_4cc));
  Atom* atom = tapt->Find(entry);
  if (atom == nullptr) atom = &tapt->Add(Atom(entry));
  std::vector<UInt8> bytes(kDimensionsSize);
  WriteU32(bytes.data() + 4, static_cast<UInt32>(dimensions.x));
  WriteU32(bytes.data() + 8, static_cast<UInt32>(dimensions.y));
  atom->set_payload(std::move(bytes));
}

}  // namespace

namespace quillmere::movies {

bool HasApertureDimensions(const TrackRecord& track) {
  return std::ranges::all_of(kApertureDimensions, [&](const ApertureDimensions& aperture) {
    FixedPoint dimensions;
    return ReadDimensions(track, aperture.entry, &dimensions);
  });
}

}  // namespace quillmere::movies

void SetTrackDimensions(Track track, Fixed width, Fixed height) {
  ChangeTrackHeader(track, [=](TrackHeader* header) {
    header->width = width;
    header->height = height;
  });
}

void SetTrackMatrix(Track track, const MatrixRecord* matrix) {
  ChangeTrackHeader(track, [=](TrackHeader* header) {
    header->matrix = matrix != nullptr ? *matrix : kIdentityMatrix;
  });
}

void GetMovieMatrix(Movie movie, MatrixRecord* matrix) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  if (matrix != nullptr)
    *matrix = movie != nullptr ? MovieHeaderOf(*movie).matrix : kIdentityMatrix;
}

void SetMovieMatrix(Movie movie, const MatrixRecord* matrix) {
  const bool is_set = movie != nullptr && SetMatrixOfMovie(movie->file.movie->Find("mvhd"_4cc),
                                                           matrix ? *matrix : kIdentityMatrix);
  NoteStatus(is_set ? noErr : OSStatus{invalidMovie});
}

RgnHandle GetTrackClipRgn(Track track) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  return track != nullptr ? ReadClip(TrackAtom(*track)).release() : nullptr;
}

void SetTrackClipRgn(Track track, RgnHandle clip) {
  NoteStatus(track != nullptr ? WriteClip(&TrackAtom(*track), clip) : OSStatus{invalidTrack});
}

RgnHandle GetMovieClipRgn(Movie movie) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  return movie != nullptr ? ReadClip(*movie->file.movie).release() : nullptr;
}

void SetMovieClipRgn(Movie movie, RgnHandle clip) {
  NoteStatus(movie != nullptr ? WriteClip(movie->file.movie.get(), clip) : OSStatus{invalidMovie});
  if (movie != nullptr) FindTrackAtoms(movie);
}

Boolean TrackHasMatte(Track track) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  return track != nullptr && TrackAtom(*track).Find("matt"_4cc) != nullptr;
}

RgnHandle GetTrackDisplayBoundsRgn(Track track) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  if (track == nullptr) return nullptr;
  OwnedRegion region(NewRgn());
  AddTrack(*track, region.get());
  PlaceOnDisplay(*track->movie, region.get());
  return region.release();
}

RgnHandle GetMovieDisplayBoundsRgn(Movie movie) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  if (movie == nullptr) return nullptr;
  OwnedRegion region(NewRgn());
  for (const auto& track : movie->tracks) {
    if ((TrackHeaderOf(*track).flags & kTrackEnabled) != 0) AddTrack(*track, region.get());
  }
  PlaceOnDisplay(*movie, region.get());
  return region.release();
}

OSStatus QTGetTrackProperty(Track track, OSType property_class, OSType property_id, Size size,
                            void* value, Size* size_used) {
  if (track == nullptr) return invalidTrack;
  if (property_class == "visu"_4cc && property_id == "hamd"_4cc)
    return StoreProperty(Boolean{HasApertureDimensions(*track)}, size, value, size_used);
  const ApertureDimensions* aperture = FindDimensions(property_class, property_id);
  FixedPoint dimensions;
  if (aperture == nullptr || !ReadDimensions(*track, aperture->entry, &dimensions))
    return kQTPropertyNotSupportedErr;
  return StoreProperty(dimensions, size, value, size_used);
}

OSStatus QTSetTrackProperty(Track track, OSType property_class, OSType property_id, Size size,
                            const void* value) {
  if (track == nullptr) return invalidTrack;
  const ApertureDimensions* aperture = FindDimensions(property_class, property_id);
  if (aperture == nullptr) return kQTPropertyNotSupportedErr;
  FixedPoint dimensions;
  if (size != static_cast<Size>(sizeof dimensions) || value == nullptr) return paramErr;
  std::memcpy(&dimensions, value, sizeof dimensions);
  WriteDimensions(*track, aperture->entry, dimensions);
  return noErr;
}
