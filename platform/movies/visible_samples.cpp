#include "visible_samples.h"

#include <algorithm>
#include <optional>

#include "data_references.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"
#include "track_geometry.h"

namespace quillmere::movies {

namespace {

/// The media time that a track plays at a movie time, in media units; nothing in a gap or outside.
std::optional<SInt64> MediaTimeAt(const TrackRecord& track, SInt64 time) {
  std::vector<EditRecord> edits;
  if (!EditsOf(track, &edits)) return std::nullopt;
  const double media_scale = MediaHeaderOf(track).time_scale;
  const double movie_scale = MovieHeaderOf(*track.movie).time_scale;
  UInt64 start = 0;
  for (const EditRecord& edit : edits) {
    const auto at = static_cast<UInt64>(time) - start;
    if (static_cast<UInt64>(time) >= start && at < edit.track_duration) {
      if (edit.media_time == kEmptyEdit) return std::nullopt;
      const double played = static_cast<double>(at) * media_scale / movie_scale *
                            (static_cast<double>(edit.media_rate) / 65536.0);
      return edit.media_time + static_cast<SInt64>(played);
    }
    start += edit.track_duration;
  }
  return std::nullopt;
}

/// The sample that is on the screen at a media time: the one that was shown last.
bool SampleShownAt(const SampleTable& table, SInt64 time, SampleInfo* shown, UInt64* number) {
  if (table.sample_count() == 0) return false;
  const UInt64 around =
      table.SampleAtTime(std::clamp<SInt64>(time, 0, std::max<SInt64>(table.duration() - 1, 0)))
          .value_or(0);
  const UInt64 first = around > kReorderSpan ? around - kReorderSpan : 0;
  const UInt64 last = std::min(around + kReorderSpan, table.sample_count() - 1);
  bool found = false;
  SInt64 shown_since = 0;
  for (UInt64 i = first; i <= last; ++i) {
    SampleInfo sample = {};
    if (!table.SampleAt(i, &sample)) continue;
    const SInt64 start = sample.decode_time + sample.composition_offset;
    if (start > time || (found && start <= shown_since)) continue;
    *shown = sample;
    *number = i;
    shown_since = start;
    found = true;
  }
  if (found) return true;
  *number = first;
  return table.SampleAt(first, shown);
}

OSStatus DescribeSample(const TrackRecord& track, const SampleInfo& sample,
                        VisibleSample* visible) {
  const Atom* stsd = SampleTableAtom(track)->Find("stsd"_4cc);
  if (stsd == nullptr || sample.description == 0 || sample.description > stsd->children().size()) {
    return invalidSampleTable;
  }
  const Atom& entry = stsd->children()[sample.description - 1];
  const OSStatus status = SourceOfReference(
      *track.media, DataReferenceOfDescription(entry).value_or(0), &visible->source);
  if (status != noErr) return status;
  visible->format = entry.type();
  visible->media = track.media.get();
  visible->offset = sample.offset;
  visible->size = sample.size;
  if (!EncodedSizeOf(entry, &visible->encoded_width, &visible->encoded_height)) {
    return badImageDescription;
  }
  const TrackSize size = SizeOfTrack(track);
  visible->track_width = size.width;
  visible->track_height = size.height;
  visible->matrix = ConcatMatrices(TrackHeaderOf(track).matrix, MovieHeaderOf(*track.movie).matrix);
  MediaGetGraphicsMode(track.media.get(), &visible->graphics_mode, &visible->op_color);
  return noErr;
}

}  // namespace

OSStatus VisibleSamplesAt(Movie movie, TimeValue time, std::vector<VisibleSample>* samples) {
  samples->clear();
  if (movie == nullptr) return invalidMovie;
  if (time < 0) return invalidTime;
  std::vector<const TrackRecord*> tracks;
  for (const auto& track : movie->tracks) {
    const bool is_enabled = (TrackHeaderOf(*track).flags & kTrackEnabled) != 0;
    if (is_enabled && track->media && MediaTypeOf(*track) == "vide"_4cc) {
      tracks.push_back(track.get());
    }
  }
  std::reverse(tracks.begin(), tracks.end());
  std::stable_sort(tracks.begin(), tracks.end(), [](const auto* a, const auto* b) {
    return TrackHeaderOf(*a).layer > TrackHeaderOf(*b).layer;
  });
  for (const TrackRecord* track : tracks) {
    const std::optional<SInt64> media_time = MediaTimeAt(*track, time);
    if (!media_time) continue;
    const SampleTable* table = nullptr;
    OSStatus status = SampleTableOf(track->media.get(), &table);
    SampleInfo sample = {};
    if (status != noErr) return status;
    VisibleSample visible = {};
    if (!SampleShownAt(*table, *media_time, &sample, &visible.number)) continue;
    status = DescribeSample(*track, sample, &visible);
    if (status != noErr) return status;
    samples->push_back(std::move(visible));
  }
  return noErr;
}

void StillDensityOf(Movie movie, double* x, double* y) {
  *x = movie != nullptr ? movie->dots_per_inch_x : 0;
  *y = movie != nullptr ? movie->dots_per_inch_y : 0;
}

}  // namespace quillmere::movies
