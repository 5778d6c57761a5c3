#include <algorithm>
#include <limits>
#include <utility>

#include "data_references.h"
#include "new_atoms.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

using namespace quillmere::movies;

namespace {

/// The atom that holds a media's graphics mode: `vmhd`, or `gmin` of other media.
Atom* GraphicsAtom(MediaRecord* media) {
  Atom& trak = TrackAtom(*media->track);
  if (Atom* vmhd = trak.FindPath({"mdia"_4cc, "minf"_4cc, "vmhd"_4cc})) return vmhd;
  return trak.FindPath({"mdia"_4cc, "minf"_4cc, "gmhd"_4cc, "gmin"_4cc});
}

}  // namespace

Media NewTrackMedia(Track track, OSType media_type, TimeScale time_scale, Handle data_reference,
                    OSType reference_type) {
  const auto fail = [](OSStatus status) -> Media {
    NoteStatus(status);
    return nullptr;
  };
  if (track == nullptr) return fail(invalidTrack);
  if (track->media || time_scale < 1) return fail(track->media ? invalidTrack : paramErr);
  auto media = std::make_unique<MediaRecord>();
  media->track = track;
  std::vector<UInt8> reference;
  if (data_reference != nullptr) {
    std::filesystem::path path;
    const OSStatus status = PathOfDataReference(data_reference, reference_type, &path);
    if (status != noErr) return fail(status);
    const auto* bytes = reinterpret_cast<const UInt8*>(*data_reference);
    reference.assign(bytes, bytes + GetHandleSize(data_reference));
    media->given.push_back({path, nullptr});
    // A file that can't be opened now fails the flatten, not the making of the media.
    if (OpenDataSource(path, &media->given.front().source) != noErr)
      media->given.front().source = nullptr;
  }
  const HeaderTimes times = TimesOf(*track->movie->file.movie->Find("mvhd"_4cc));
  TrackAtom(*track).Add(
      MakeMediaAtom(times, media_type, static_cast<UInt32>(time_scale), reference));
  track->media = std::move(media);
  NoteStatus(noErr);
  return track->media.get();
}

Media GetTrackMedia(Track track) {
  NoteStatus(track != nullptr ? noErr : OSStatus{invalidTrack});
  return track != nullptr ? track->media.get() : nullptr;
}

TimeScale GetMediaTimeScale(Media media) {
  NoteStatus(media != nullptr ? noErr : OSStatus{invalidMedia});
  return media != nullptr ? static_cast<TimeScale>(MediaHeaderOf(*media->track).time_scale) : 0;
}

TimeValue GetMediaDuration(Media media) {
  NoteStatus(media != nullptr ? noErr : OSStatus{invalidMedia});
  if (media == nullptr) return 0;
  return static_cast<TimeValue>(
      std::min<UInt64>(MediaHeaderOf(*media->track).duration, kLongestTimeValue));
}

void GetMediaHandlerDescription(Media media, OSType* type, char* name, OSType* manufacturer) {
  HandlerRecord handler;
  NoteStatus(media != nullptr ? noErr : OSStatus{invalidMedia});
  if (media != nullptr) {
    const Atom* hdlr = TrackAtom(*media->track).FindPath({"mdia"_4cc, "hdlr"_4cc});
    if (hdlr == nullptr || !ReadHandler(*hdlr, &handler)) NoteStatus(invalidMedia);
  }
  if (type != nullptr) *type = handler.component_subtype;
  if (manufacturer != nullptr) *manufacturer = handler.manufacturer;
  if (name == nullptr) return;
  std::span<const UInt8> text = handler.name;
  // A counted string says how long it is; ISO files have characters up to a zero byte instead.
  if (!text.empty() && text[0] < text.size() && handler.component_type != 0) {
    text = text.subspan(1, text[0]);
  }
  const auto end = std::find(text.begin(), text.end(), UInt8{0});
  const auto length = std::min<std::ptrdiff_t>(end - text.begin(), 255);
  std::copy_n(text.begin(), length, name);
  name[length] = '\0';
}

MediaHandler GetMediaHandler(Media media) {
  NoteStatus(media != nullptr ? noErr : OSStatus{invalidMedia});
  return media;
}

OSErr MediaSetGraphicsMode(MediaHandler handler, SInt32 mode, const RGBColor* op_color) {
  if (handler == nullptr) return invalidHandler;
  Atom* atom = GraphicsAtom(handler);
  GraphicsRecord graphics;
  if (atom == nullptr || !ReadGraphics(*atom, &graphics)) return invalidHandler;
  graphics.mode = static_cast<UInt16>(mode);
  if (op_color != nullptr) graphics.op_color = *op_color;
  return WriteGraphics(atom, graphics) ? OSErr{0} : invalidHandler;
}

OSErr MediaGetGraphicsMode(MediaHandler handler, SInt32* mode, RGBColor* op_color) {
  if (handler == nullptr) return invalidHandler;
  const Atom* atom = GraphicsAtom(handler);
  GraphicsRecord graphics;
  if (atom == nullptr || !ReadGraphics(*atom, &graphics)) return invalidHandler;
  if (mode != nullptr) *mode = graphics.mode;
  if (op_color != nullptr) *op_color = graphics.op_color;
  return noErr;
}
