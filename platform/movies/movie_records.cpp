#include "movie_records.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "big_endian.h"

namespace quillmere::movies {

namespace {

/// A header atom's payload with its version; the offsets of fields behind the times move with it.
class HeaderLayout {
 public:
  /// `narrow` is the smallest payload of version 0, `growth` what version 1 has more.
  HeaderLayout(const Atom& atom, std::size_t narrow, std::size_t growth) {
    const std::span<const UInt8> bytes = atom.payload();
    if (bytes.empty()) return;
    wide_ = bytes[0] == 1;
    growth_ = wide_ ? growth : 0;
    fits_ = bytes.size() >= narrow + growth_;
  }
  bool fits() const { return fits_; }
  bool wide() const { return wide_; }
  /// Where a field stands whose offset is `narrow` in version 0.
  std::size_t Behind(std::size_t narrow) const { return narrow + growth_; }

 private:
  bool fits_ = false;
  bool wide_ = false;
  std::size_t growth_ = 0;
};

/// Payload sizes of version 0 and the offsets of their durations. Version 1 has creation and
/// modification time and duration in 64 bits: 8 bytes more before the duration, 12 behind it.
constexpr std::size_t kMovieHeaderSize = 100;
constexpr std::size_t kTrackHeaderSize = 84;
constexpr std::size_t kMediaHeaderSize = 24;
constexpr std::size_t kTimesGrowth = 12;
constexpr std::size_t kMovieDuration = 16;
constexpr std::size_t kTrackDuration = 20;
constexpr std::size_t kMediaDuration = 16;
constexpr std::size_t kMatrixSize = 36;

HeaderLayout LayoutOf(const Atom& atom, std::size_t size) {
  return {atom, size, kTimesGrowth};
}

UInt64 ReadDuration(const Atom& atom, const HeaderLayout& layout, std::size_t narrow) {
  const UInt8* bytes = atom.payload().data();
  return layout.wide() ? ReadU64(bytes + narrow + 8) : ReadU32(bytes + narrow);
}

/// Makes version 1 of a version 0 header: the same fields, its times in 64 bits.
void WidenTimes(Atom* atom, std::size_t duration_offset) {
  constexpr std::size_t kBehindTimes = 12;
  const std::span<const UInt8> old = atom->payload();
  std::vector<UInt8> bytes;
  bytes.reserve(old.size() + kTimesGrowth);
  AppendU32(&bytes, 0x01000000U | (ReadU32(old.data()) & 0xFFFFFF));
  AppendU64(&bytes, ReadU32(old.data() + 4));
  AppendU64(&bytes, ReadU32(old.data() + 8));
  const auto at = [&](std::size_t offset) {
    return old.begin() + static_cast<std::ptrdiff_t>(offset);
  };
  bytes.insert(bytes.end(), at(kBehindTimes), at(duration_offset));
  AppendU64(&bytes, ReadU32(old.data() + duration_offset));
  bytes.insert(bytes.end(), at(duration_offset + 4), old.end());
  atom->set_payload(std::move(bytes));
}

bool SetDuration(Atom* atom, std::size_t header_size, std::size_t narrow, UInt64 duration) {
  const HeaderLayout layout = LayoutOf(*atom, header_size);
  if (!layout.fits()) return false;
  const bool needs_wide = duration > std::numeric_limits<UInt32>::max();
  if (needs_wide && !layout.wide()) WidenTimes(atom, narrow);
  if (needs_wide || layout.wide()) {
    WriteU64(atom->mutable_payload().data() + narrow + 8, duration);
  } else {
    WriteU32(atom->mutable_payload().data() + narrow, static_cast<UInt32>(duration));
  }
  return true;
}

}  // namespace

MatrixRecord ReadMatrix(const UInt8* bytes) {
  MatrixRecord matrix = {};
  for (auto& row : matrix.matrix) {
    for (Fixed& value : row) {
      value = ReadS32(bytes);
      bytes += 4;
    }
  }
  return matrix;
}

void WriteMatrix(UInt8* bytes, const MatrixRecord& matrix) {
  for (const auto& row : matrix.matrix) {
    for (const Fixed value : row) {
      WriteU32(bytes, static_cast<UInt32>(value));
      bytes += 4;
    }
  }
}

bool ReadMovieHeader(const Atom& mvhd, MovieHeader* header) {
  const HeaderLayout layout = LayoutOf(mvhd, kMovieHeaderSize);
  if (!layout.fits()) return false;
  const UInt8* bytes = mvhd.payload().data();
  header->time_scale = ReadU32(bytes + (layout.wide() ? 20 : 12));
  header->duration = ReadDuration(mvhd, layout, kMovieDuration);
  header->rate = ReadS32(bytes + layout.Behind(20));
  header->volume = ReadS16(bytes + layout.Behind(24));
  header->matrix = ReadMatrix(bytes + layout.Behind(36));
  header->poster_time = ReadU32(bytes + layout.Behind(80));
  header->next_track_id = ReadU32(bytes + layout.Behind(96));
  return true;
}

bool SetMovieDuration(Atom* mvhd, UInt64 duration) {
  return SetDuration(mvhd, kMovieHeaderSize, kMovieDuration, duration);
}

void SetNextTrackId(Atom* mvhd, UInt32 id) {
  const HeaderLayout layout = LayoutOf(*mvhd, kMovieHeaderSize);
  if (layout.fits()) WriteU32(mvhd->mutable_payload().data() + layout.Behind(96), id);
}

bool SetMatrixOfMovie(Atom* mvhd, const MatrixRecord& matrix) {
  const HeaderLayout layout = LayoutOf(*mvhd, kMovieHeaderSize);
  if (layout.fits()) WriteMatrix(mvhd->mutable_payload().data() + layout.Behind(36), matrix);
  return layout.fits();
}

bool ReadTrackHeader(const Atom& tkhd, TrackHeader* header) {
  const HeaderLayout layout = LayoutOf(tkhd, kTrackHeaderSize);
  if (!layout.fits()) return false;
  const UInt8* bytes = tkhd.payload().data();
  header->flags = ReadU32(bytes) & 0xFFFFFF;
  header->id = ReadU32(bytes + (layout.wide() ? 20 : 12));
  header->duration = ReadDuration(tkhd, layout, kTrackDuration);
  header->layer = ReadS16(bytes + layout.Behind(32));
  header->alternate_group = ReadS16(bytes + layout.Behind(34));
  header->volume = ReadS16(bytes + layout.Behind(36));
  header->matrix = ReadMatrix(bytes + layout.Behind(40));
  header->width = ReadS32(bytes + layout.Behind(40 + kMatrixSize));
  header->height = ReadS32(bytes + layout.Behind(44 + kMatrixSize));
  return true;
}

bool WriteTrackHeader(Atom* tkhd, const TrackHeader& header) {
  if (!SetTrackDuration(tkhd, header.duration)) return false;
  const HeaderLayout layout = LayoutOf(*tkhd, kTrackHeaderSize);
  UInt8* bytes = tkhd->mutable_payload().data();
  WriteU32(bytes, (UInt32{bytes[0]} << 24) | (header.flags & 0xFFFFFF));
  WriteU32(bytes + (layout.wide() ? 20 : 12), header.id);
  WriteU16(bytes + layout.Behind(32), static_cast<UInt16>(header.layer));
  WriteU16(bytes + layout.Behind(34), static_cast<UInt16>(header.alternate_group));
  WriteU16(bytes + layout.Behind(36), static_cast<UInt16>(header.volume));
  WriteMatrix(bytes + layout.Behind(40), header.matrix);
  WriteU32(bytes + layout.Behind(40 + kMatrixSize), static_cast<UInt32>(header.width));
  WriteU32(bytes + layout.Behind(44 + kMatrixSize), static_cast<UInt32>(header.height));
  return true;
}

bool SetTrackDuration(Atom* tkhd, UInt64 duration) {
  return SetDuration(tkhd, kTrackHeaderSize, kTrackDuration, duration);
}

bool ReadMediaHeader(const Atom& mdhd, MediaHeader* header) {
  const HeaderLayout layout = LayoutOf(mdhd, kMediaHeaderSize);
  if (!layout.fits()) return false;
  const UInt8* bytes = mdhd.payload().data();
  header->time_scale = ReadU32(bytes + (layout.wide() ? 20 : 12));
  header->duration = ReadDuration(mdhd, layout, kMediaDuration);
  header->language = ReadU16(bytes + layout.Behind(20));
  header->quality = ReadU16(bytes + layout.Behind(22));
  return true;
}

bool SetMediaDuration(Atom* mdhd, UInt64 duration) {
  return SetDuration(mdhd, kMediaHeaderSize, kMediaDuration, duration);
}

bool ReadHandler(const Atom& hdlr, HandlerRecord* handler) {
  constexpr std::size_t kFixedPart = 24;
  const std::span<const UInt8> bytes = hdlr.payload();
  // Some writers end the atom before its name.
  if (bytes.size() < 12) return false;
  handler->component_type = ReadU32(bytes.data() + 4);
  handler->component_subtype = ReadU32(bytes.data() + 8);
  handler->manufacturer = bytes.size() >= 16 ? ReadU32(bytes.data() + 12) : 0;
  handler->name = bytes.subspan(std::min(kFixedPart, bytes.size()));
  return true;
}

bool ReadEditList(const Atom& elst, std::vector<EditRecord>* edits) {
  edits->clear();
  const std::span<const UInt8> bytes = elst.payload();
  if (bytes.size() < 8) return false;
  const bool wide = bytes[0] == 1;
  const std::size_t size = wide ? 20 : 12;
  const UInt64 count = ReadU32(bytes.data() + 4);
  if (count > (bytes.size() - 8) / size) return false;
  edits->reserve(count);
  for (const UInt8* entry = bytes.data() + 8; edits->size() < count; entry += size) {
    EditRecord edit;
    edit.track_duration = wide ? ReadU64(entry) : ReadU32(entry);
    edit.media_time = wide ? ReadS64(entry + 8) : ReadS32(entry + 4);
    edit.media_rate = ReadS32(entry + size - 4);
    edits->push_back(edit);
  }
  return true;
}

void WriteEditList(Atom* elst, const std::vector<EditRecord>& edits) {
  const std::span<const UInt8> old = elst->payload();
  const bool wide = (!old.empty() && old[0] == 1) ||
                    std::any_of(edits.begin(), edits.end(), [](const EditRecord& edit) {
                      return edit.track_duration > std::numeric_limits<UInt32>::max() ||
                             edit.media_time > std::numeric_limits<SInt32>::max() ||
                             edit.media_time < std::numeric_limits<SInt32>::min();
                    });
  std::vector<UInt8> bytes;
  AppendU32(&bytes, wide ? 0x01000000U : 0U);
  AppendU32(&bytes, static_cast<UInt32>(edits.size()));
  for (const EditRecord& edit : edits) {
    if (wide) {
      AppendU64(&bytes, edit.track_duration);
      AppendU64(&bytes, static_cast<UInt64>(edit.media_time));
    } else {
      AppendU32(&bytes, static_cast<UInt32>(edit.track_duration));
      AppendU32(&bytes, static_cast<UInt32>(edit.media_time));
    }
    AppendU32(&bytes, static_cast<UInt32>(edit.media_rate));
  }
  elst->set_payload(std::move(bytes));
}

bool ReadDataReferenceEntry(const Atom& entry, DataReferenceEntry* reference) {
  const std::span<const UInt8> bytes = entry.payload();
  if (bytes.size() < 4) return false;
  reference->type = entry.type();
  reference->is_self = (ReadU32(bytes.data()) & 1) != 0;
  reference->data = bytes.subspan(4);
  return true;
}

void SetSelfReference(Atom* entry) {
  entry->set_payload({0, 0, 0, 1});
}

std::optional<UInt16> DataReferenceOfDescription(const Atom& entry) {
  const std::span<const UInt8> bytes = entry.payload();
  if (bytes.size() < 8) return std::nullopt;
  return ReadU16(bytes.data() + 6);
}

bool SetDataReferenceOfDescription(Atom* entry, UInt16 index) {
  if (entry->payload().size() < 8) return false;
  WriteU16(entry->mutable_payload().data() + 6, index);
  return true;
}

bool ReadGraphics(const Atom& atom, GraphicsRecord* graphics) {
  const std::span<const UInt8> bytes = atom.payload();
  if (bytes.size() < 12) return false;
  graphics->mode = ReadU16(bytes.data() + 4);
  graphics->op_color = {ReadU16(bytes.data() + 6), ReadU16(bytes.data() + 8),
                        ReadU16(bytes.data() + 10)};
  return true;
}

bool WriteGraphics(Atom* atom, const GraphicsRecord& graphics) {
  if (atom->payload().size() < 12) return false;
  UInt8* bytes = atom->mutable_payload().data();
  WriteU16(bytes + 4, graphics.mode);
  WriteU16(bytes + 6, graphics.op_color.red);
  WriteU16(bytes + 8, graphics.op_color.green);
  WriteU16(bytes + 10, graphics.op_color.blue);
  return true;
}

std::optional<SInt16> ReadSoundBalance(const Atom& smhd) {
  const std::span<const UInt8> bytes = smhd.payload();
  if (bytes.size() < 6) return std::nullopt;
  return ReadS16(bytes.data() + 4);
}

}  // namespace quillmere::movies
