#include "QT_Movie_Queries.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "CA_Layouts.h"
#include "QT_Codec_Families.h"
#include "QT_Ide_Descriptions.h"
#include "QT_Media_Statistics.h"
#include "QT_Tracks.h"
#include "descriptions_private.h"
#include "fixed_point.h"
#include "interval_walks_private.h"
#include "matrices.h"
#include "movie_geometry.h"
#include "sound_layouts_private.h"
#include "track_walks_private.h"

using namespace quillmere;

namespace {

constexpr OSType kMixed = 0xFFFFFFFF;
constexpr OSType kVideoType = "vide"_4cc;

SInt32 CheckMovie(Movie movie) {
  return movie != nullptr ? SInt32{noErr} : SInt32{invalidMovie};
}

/// What depth a picture of one depth needs, after others that need `depth`.
SInt32 DeeperOf(SInt32 depth, SInt16 of) {
  switch (of) {
    case 1:
    case 34:
    case 36:
      return std::max(depth, 8);
    case 2:
    case 4:
    case 8:
    case 16:
      return depth == 0 || depth == 16 ? 16 : 32;
    case 24:
    case 32:
      return 32;
    case 40:
      return depth <= 8 ? 8 : 32;
    default:
      return depth;
  }
}

/// The codec of all descriptions of a media, kMixed if they differ.
OSType CodecOf(Media media, Boolean* hasRgb) {
  OSType codec = 0;
  WalkDescriptions(media, [&](Handle description) {
    const OSType each = FormatOf(description);
    if (QT_IsRGB_CodecType(each)) *hasRgb = 1;
    codec = codec == 0 || codec == each ? each : kMixed;
    return true;
  });
  return codec;
}

bool HasFixedSizeCodecs(Media media) {
  bool allFixed = true;
  WalkDescriptions(media, [&](Handle description) {
    allFixed = QT_IsFixedSizeCompressor(FormatOf(description)) != 0;
    return allFixed;
  });
  return allFixed;
}

float GammaOf(Handle description) {
  constexpr float kRgbGamma = 1.8F;
  constexpr float kVideoGamma = 2.0F;
  Fixed gamma = 0;
  if (ICMImageDescriptionGetProperty(description, "idsc"_4cc, "gama"_4cc, sizeof gamma, &gamma,
                                     nullptr) == noErr)
    return static_cast<float>(Fix2X(gamma));
  return QT_IsRGB_CodecType(FormatOf(description)) ? kRgbGamma : kVideoGamma;
}

/// Takes a value that has to be the same each time; -1 where it isn't.
bool Agree(float value, bool* isFirst, float* common) {
  const bool agrees = *isFirst || value == *common;
  *common = agrees ? value : -1.0F;
  *isFirst = false;
  return agrees;
}

float GammaOf(Track track) {
  constexpr float kOtherGamma = 2.0F;
  if (MediaTypeOf(track) != kVideoType) return kOtherGamma;
  bool isFirst = true;
  float gamma = kOtherGamma;
  WalkDescriptions(GetTrackMedia(track), [&](Handle description) {
    return Agree(GammaOf(description), &isFirst, &gamma);
  });
  return gamma;
}

/// Where a track stands in its movie; owns the clip.
struct Placement {
  MatrixRecord matrix{};
  RgnHandle clip = nullptr;
  Fixed width = 0;
  Fixed height = 0;

  explicit Placement(Track track) : clip(GetTrackClipRgn(track)) {
    GetTrackMatrix(track, &matrix);
    GetTrackDimensions(track, &width, &height);
  }
  ~Placement() { DisposeRgn(clip); }
  Placement(const Placement&) = delete;
  Placement& operator=(const Placement&) = delete;

  bool IsLike(const Placement& other) const {
    const bool sameClip = (clip == nullptr) == (other.clip == nullptr) &&
                          (clip == nullptr || EqualRgn(clip, other.clip));
    return sameClip && EqualMatrix(&matrix, &other.matrix) && width == other.width &&
           height == other.height;
  }
};

/// A track's edits that show media, one after the other.
class EditCursor {
 public:
  explicit EditCursor(Track track) : track_(track) { Find(nextTimeTrackEdit | nextTimeEdgeOK); }
  void Next() { Find(nextTimeTrackEdit); }
  bool IsAtEnd() const { return edit_.time == -1; }
  SInt64 begin() const { return edit_.time; }
  SInt64 end() const { return SInt64{edit_.time} + edit_.duration; }
  bool Holds(SInt64 time) const { return time >= begin() && time < end(); }

 private:
  void Find(SInt16 flags) {
    do {
      GetTrackNextInterestingTime(track_, flags, edit_.time, kForwards, &edit_.time,
                                  &edit_.duration);
      flags = nextTimeTrackEdit;
    } while (edit_.time != -1 && TrackTimeToMediaTime(edit_.time, track_) == -1);
  }

  Track track_;
  TimeSpan edit_{0, 0};
};

/// From the first begin to the last end of the tracks that count.
template <class Counts>
SInt32 FindExtent(Movie movie, const TrackSelection& selection, Counts counts, SInt32* start,
                  SInt32* end) {
  bool isFirst = true;
  SInt32 first = 0;
  SInt32 last = 0;
  WalkTracks(movie, selection, [&](Track track) {
    if (!counts(track)) return true;
    const SInt32 offset = GetTrackOffset(track);
    first = isFirst ? offset : std::min(first, offset);
    last = std::max(last, GetTrackDuration(track));
    isFirst = false;
    return true;
  });
  if (start != nullptr) *start = first;
  if (end != nullptr) *end = last;
  return last - first;
}

}  // namespace

SInt32 QT_GetMaxDepth(Movie movie, SInt32* depth) {
  constexpr std::size_t kDepth = 82;
  *depth = 0;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    WalkDescriptions(GetTrackMedia(track), [&](Handle description) {
      *depth = DeeperOf(*depth, FieldOf<SInt16>(description, kDepth));
      return true;
    });
    return true;
  });
  return CheckMovie(movie);
}

SInt32 QT_GetMovieCType(Movie movie, Boolean includeText, OSType* type, Boolean* hasRgb) {
  *type = 0;
  *hasRgb = 0;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    const OSType mediaType = MediaTypeOf(track);
    if (!includeText && !ShowsImages(track)) return true;
    const OSType value =
        mediaType == kVideoType ? CodecOf(GetTrackMedia(track), hasRgb) : mediaType;
    *type = *type == 0 || *type == value ? value : kMixed;
    return *type != kMixed;
  });
  return CheckMovie(movie);
}

SInt32 QT_DoEnabledVideoTracksUseFixedSizeCompressorTypesOnly(Movie movie, Boolean* fixedOnly) {
  *fixedOnly = 1;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    *fixedOnly = MediaTypeOf(track) == kVideoType && HasFixedSizeCodecs(GetTrackMedia(track));
    return *fixedOnly != 0;
  });
  return CheckMovie(movie);
}

SInt32 QT_DoEnabledVideoTracksUseOneCompressorType(Movie movie, OSType* type) {
  *type = 0;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    Boolean hasRgb = 0;
    const OSType codec =
        MediaTypeOf(track) == kVideoType ? CodecOf(GetTrackMedia(track), &hasRgb) : kMixed;
    *type = *type == 0 || *type == codec ? codec : kMixed;
    return *type != kMixed;
  });
  if (*type == kMixed) *type = 0;
  return CheckMovie(movie);
}

Boolean QT_EnabledVideoTracksHaveSameMediaTimeScale(Movie movie) {
  SInt32 scale = 0;
  bool areSame = true;
  WalkTracks(movie, kEnabledVideo, [&](Track track) {
    const SInt32 each = GetMediaTimeScale(GetTrackMedia(track));
    areSame = scale == 0 || each == scale;
    scale = each;
    return areSame;
  });
  return areSame;
}

SInt32 QT_AnyEnabledVideoTrackIsComposited(Movie movie, Boolean* isComposited) {
  constexpr SInt32 kCopy = 0;
  constexpr SInt32 kDitherCopy = 64;
  *isComposited = 0;
  SInt32 status = CheckMovie(movie);
  WalkTracks(movie, kEnabledVideo, [&](Track track) {
    SInt32 mode = 0;
    status = MediaGetGraphicsMode(GetMediaHandler(GetTrackMedia(track)), &mode, nullptr);
    *isComposited = (!status && mode != kCopy && mode != kDitherCopy) || TrackHasMatte(track);
    return !status && !*isComposited;
  });
  return status;
}

SInt32 QT_MovieHasOneSimpleVideoTrack(Movie movie, Boolean* isSimple) {
  constexpr SInt32 kNoTemporalInformation = -9461;
  *isSimple = 0;
  SInt32 visual = 0;
  WalkTracks(movie, kEnabledVisual, [&](Track track) {
    if (MediaTypeOf(track) != kText.type) ++visual;
    return true;
  });
  if (movie == nullptr || visual != 1 || QT_CountEnabledVideoTracks(movie) != 1)
    return CheckMovie(movie);
  Media media = GetTrackMedia(QT_GetFirstEnabledVideoTrack(movie));
  Boolean areEquivalent = 0;
  Boolean isCompressed = 0;
  SInt32 status = QT_AreAllImageDescsEquivalent(media, nullptr, &areEquivalent);
  if (!status && areEquivalent) {
    status = QT_IsMediaTemporallyCompressed(media, &isCompressed);
    *isSimple = !status && !isCompressed;
    if (status == kNoTemporalInformation) status = noErr;
  }
  return status;
}

SInt32 QT_EnabledVideoTracksHaveEqualSpatialCharacteristics(Movie movie, Boolean* areEqual,
                                                            RgnHandle* clip, MatrixRecord* matrix,
                                                            Fixed* width, Fixed* height) {
  if (clip != nullptr) *clip = nullptr;
  if (width != nullptr) *width = 0;
  if (height != nullptr) *height = 0;
  *areEqual = 1;
  Track first = QT_GetFirstEnabledVideoTrack(movie);
  if (first == nullptr) return CheckMovie(movie);
  Placement placement(first);
  WalkTracks(movie, kEnabledVideo, [&](Track track) {
    *areEqual = placement.IsLike(Placement(track));
    return *areEqual != 0;
  });
  if (!*areEqual) return noErr;
  if (clip != nullptr) *clip = std::exchange(placement.clip, nullptr);
  if (matrix != nullptr) *matrix = placement.matrix;
  if (width != nullptr) *width = placement.width;
  if (height != nullptr) *height = placement.height;
  return noErr;
}

Boolean QT_TrackPairOverlapTemporally(Track first, Track second) {
  EditCursor a(first);
  EditCursor b(second);
  while (!a.IsAtEnd() && !b.IsAtEnd()) {
    if (a.Holds(b.begin()) || b.Holds(a.begin())) return 1;
    if (a.end() <= b.end()) {
      a.Next();
    } else {
      b.Next();
    }
  }
  return 0;
}

Boolean QT_AnyTracksOverlapTemporally(Movie movie, OSType trackType, SInt32 flags,
                                      Boolean enabledOnly) {
  std::vector<Track> tracks;
  WalkTracks(movie, {trackType, flags | (enabledOnly ? movieTrackEnabledOnly : 0)},
             [&](Track track) {
               tracks.push_back(track);
               return true;
             });
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    for (std::size_t j = i + 1; j < tracks.size(); ++j) {
      if (QT_TrackPairOverlapTemporally(tracks[i], tracks[j])) return 1;
    }
  }
  return 0;
}

SInt32 QT_GetMovieGamma1(Movie movie, Float32* gamma) {
  bool isFirst = true;
  *gamma = 2.0F;
  WalkTracks(movie, kVisual, [&](Track track) { return Agree(GammaOf(track), &isFirst, gamma); });
  return CheckMovie(movie);
}

SInt32 QT_GetMovieSoundDuration(Movie movie, SInt32* start, SInt32* end) {
  return FindExtent(
      movie, kEnabledAural, [](Track) { return true; }, start, end);
}

SInt32 QT_GetMovieVideoDuration(Movie movie, SInt32* start, SInt32* end) {
  return FindExtent(movie, kEnabledVisual, ShowsImages, start, end);
}

SInt32 QT_GetSoundTrackSampleRate(Track track, UInt32* rate) {
  constexpr std::size_t kSampleRate = 32;
  const MediaDescription description(GetTrackMedia(track), 1);
  *rate = FieldOf<UInt32>(description.get(), kSampleRate);
  return description.status();
}

Boolean QT_IsAnySoundTrackDV(Movie movie) {
  bool isDv = false;
  WalkTracks(movie, kEnabledAural, [&](Track track) {
    isDv = FormatOf(GetTrackMedia(track), 1) == "vdva"_4cc;
    return !isDv;
  });
  return isDv;
}

SInt32 QT_MovieHasDualMonoSound(Movie movie, Boolean* isDualMono) {
  *isDualMono = 0;
  std::vector<SInt16> channels;
  WalkTracks(movie, kEnabledSound, [&](Track track) {
    const MediaDescription description(GetTrackMedia(track), 1);
    channels.push_back(ChannelsOf(description.get()));
    return true;
  });
  if (channels.size() == 2) *isDualMono = channels[0] == 1 && channels[1] == 1;
  if (channels.size() == 1 && channels[0] == 2) {
    Track track = QT_GetFirstEnabledSoundTrack(movie);
    const MediaDescription description(GetTrackMedia(track), 1);
    const std::vector<UInt8> layout = LayoutOf(description.get());
    *isDualMono = layout.empty() ||
                  CA_LayoutIsDualMono(reinterpret_cast<const AudioChannelLayout*>(layout.data()));
  }
  return CheckMovie(movie);
}
