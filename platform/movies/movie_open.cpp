#include <algorithm>
#include <limits>
#include <memory>
#include <utility>

#include "data_references.h"
#include "image_file_info.h"
#include "media_times.h"
#include "movie_playing.h"
#include "orientation.h"
#include "still_movie.h"
#include "toolbox_records.h"
#include "track_geometry.h"
#include "visual_context.h"

namespace quillmere::movies {

namespace {

/// Reads the file as a movie, or else as a still.
OSStatus ReadMovieOrStill(MovieRecord* movie) {
  const int descriptor = movie->source->descriptor();
  const OSStatus movie_status = ReadMovieFile(descriptor, &movie->file);
  if (movie_status != noMovieFound) return movie_status;
  imaging::ImageFileInfo info;
  if (imaging::ReadImageFileInfo(descriptor, &info) != noErr) return movie_status;
  movie->file = MovieFile();
  movie->file.file_size = movie->source->size();
  movie->dots_per_inch_x = info.dots_per_inch_x;
  movie->dots_per_inch_y = info.dots_per_inch_y;
  if (imaging::SwapsSides(info.orientation)) {  // the picture is shown upright
    std::swap(movie->dots_per_inch_x, movie->dots_per_inch_y);
  }
  return MakeStillMovie(info, &movie->file.movie);
}

}  // namespace

OSStatus CheckMovie(const MovieRecord& movie) {
  MovieHeader header;
  const Atom* mvhd = movie.file.movie->Find("mvhd"_4cc);
  if (mvhd == nullptr) return noMovieFound;
  if (!ReadMovieHeader(*mvhd, &header)) return badPublicMovieAtom;
  const bool has_scale = header.time_scale > 0 && header.time_scale <= kLongestTimeValue;
  return has_scale ? noErr : OSStatus{invalidMovie};
}

OSStatus OpenMovieAt(const std::filesystem::path& path, std::unique_ptr<MovieRecord>* movie) {
  auto opened = std::make_unique<MovieRecord>();
  opened->path = path;
  OSStatus status = OpenDataSource(path, &opened->source);
  if (status == noErr) status = ReadMovieOrStill(opened.get());
  if (status == noErr) status = CheckMovie(*opened);
  if (status != noErr) return status;
  MakeTrackRecords(opened.get());
  *movie = std::move(opened);
  return noErr;
}

}  // namespace quillmere::movies

using namespace quillmere::movies;

namespace {

/// What the properties ask for.
struct OpenRequest {
  const DataReferenceRecord* reference = nullptr;
  bool active = false;
  QTVisualContextRef context = nullptr;
};

/// Takes one property into the request. Classes and ids that only tune what does not apply here
/// (search of data references, where the user is asked) are accepted.
OSStatus TakeProperty(const QTNewMoviePropertyElement& property, OpenRequest* request) {
  const auto is = [&](OSType property_class, OSType id, std::size_t size) {
    return property.propClass == property_class && property.propID == id &&
           property.propValueSize == static_cast<Size>(size);
  };
  if (property.propValueAddress == nullptr) return paramErr;
  if (is("dloc"_4cc, "dref"_4cc, sizeof(DataReferenceRecord))) {
    request->reference = static_cast<const DataReferenceRecord*>(property.propValueAddress);
  } else if (is("mprp"_4cc, "actv"_4cc, sizeof(Boolean))) {
    request->active = *static_cast<const Boolean*>(property.propValueAddress) != 0;
  } else if (is("ctxt"_4cc, "visu"_4cc, sizeof(QTVisualContextRef))) {
    request->context = *static_cast<const QTVisualContextRef*>(property.propValueAddress);
  } else if (property.propClass != "mins"_4cc && property.propClass != "audi"_4cc) {
    return kQTPropertyNotSupportedErr;
  }
  return noErr;
}

}  // namespace

OSStatus NewMovieFromProperties(ItemCount input_count, QTNewMoviePropertyElement* input_properties,
                                [[maybe_unused]] ItemCount output_count,
                                [[maybe_unused]] QTNewMoviePropertyElement* output_properties,
                                Movie* movie) {
  if (movie == nullptr || (input_count > 0 && input_properties == nullptr)) return paramErr;
  *movie = nullptr;
  OpenRequest request;
  OSStatus status = noErr;
  for (ItemCount i = 0; i < input_count; ++i) {
    QTNewMoviePropertyElement& property = input_properties[i];
    property.propStatus = TakeProperty(property, &request);
    if (status == noErr) status = property.propStatus;
  }
  if (status != noErr) return status;
  if (request.reference == nullptr) return invalidDataRef;
  std::filesystem::path path;
  status = PathOfDataReference(request.reference->dataRef, request.reference->dataRefType, &path);
  if (status != noErr) return status;
  std::unique_ptr<MovieRecord> opened;
  status = OpenMovieAt(path, &opened);
  if (status != noErr) return status;
  opened->active = request.active;
  opened->visual_context = request.context;
  *movie = opened.release();
  return noErr;
}

void DisposeMovie(Movie movie) {
  const std::unique_ptr<MovieRecord> disposed(movie);
}

TimeScale GetMovieTimeScale(Movie movie) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  return movie != nullptr ? static_cast<TimeScale>(MovieHeaderOf(*movie).time_scale) : 0;
}

TimeValue GetMovieDuration(Movie movie) {
  NoteStatus(movie != nullptr ? noErr : OSStatus{invalidMovie});
  if (movie == nullptr) return 0;
  return static_cast<TimeValue>(std::min<UInt64>(FullDurationOf(*movie), kLongestTimeValue));
}

void GetMovieBox(Movie movie, Rect* box) {
  NoteStatus(movie != nullptr && box != nullptr ? noErr : OSStatus{invalidMovie});
  if (box != nullptr) *box = movie != nullptr ? BoxOfMovie(*movie) : Rect{0, 0, 0, 0};
}

Boolean GetMovieActive(Movie movie) {
  return movie != nullptr && movie->active ? 1 : 0;
}

void SetMovieActive(Movie movie, Boolean active) {
  if (movie != nullptr) movie->active = active != 0;
}

TimeBase GetMovieTimeBase(Movie movie) {
  return movie;
}

void SetMovieTimeValue(Movie movie, TimeValue time) {
  if (movie == nullptr) return;
  const Fixed rate = movie->rate;
  movie->rate = 0;
  movie->time = time;
  movie->frame_delivered = false;
  SetMovieRate(movie, rate);
}

TimeValue GetMovieTime(Movie movie, [[maybe_unused]] void* time_record) {
  if (movie == nullptr) return 0;
  CatchUp(movie);
  return static_cast<TimeValue>(std::clamp<SInt64>(movie->time, 0, kLongestTimeValue));
}

namespace {

bool IsApertureMode(OSType mode) {
  constexpr OSType kModes[] = {"clas"_4cc, "clea"_4cc, "prod"_4cc, "enco"_4cc};
  return std::find(std::begin(kModes), std::end(kModes), mode) != std::end(kModes);
}

bool IsApertureProperty(OSType property_class, OSType property_id) {
  return property_class == "visu"_4cc && property_id == "apmd"_4cc;
}

}  // namespace

OSStatus QTSetMovieProperty(Movie movie, OSType property_class, OSType property_id, Size size,
                            const void* value) {
  if (movie == nullptr) return invalidMovie;
  if (!IsApertureProperty(property_class, property_id)) return kQTPropertyNotSupportedErr;
  if (size != static_cast<Size>(sizeof(OSType)) || value == nullptr) return paramErr;
  const OSType mode = *static_cast<const OSType*>(value);
  if (!IsApertureMode(mode)) return paramErr;
  movie->aperture_mode = mode;
  movie->frame_delivered = false;
  return noErr;
}

OSStatus QTGetMovieProperty(Movie movie, OSType property_class, OSType property_id, Size size,
                            void* value, Size* size_used) {
  if (movie == nullptr) return invalidMovie;
  if (IsApertureProperty(property_class, property_id))
    return StoreProperty(movie->aperture_mode, size, value, size_used);
  if (property_class != "visu"_4cc || property_id != "hamd"_4cc) return kQTPropertyNotSupportedErr;
  const Boolean has_dimensions = std::ranges::any_of(movie->tracks, [](const auto& track) {
    return IsVisual(*track) && HasApertureDimensions(*track);
  });
  return StoreProperty(has_dimensions, size, value, size_used);
}
