/// Fields of the movie's header atoms: decoded, and patched in place so that every other byte
/// stays.
///
/// Functions that read give false (or nothing) when the atom is too short for its version; those
/// that write give false then and leave it unchanged. Durations and times of version 0 atoms have
/// 32 bits, of version 1 64; an atom becomes version 1 when a duration needs it.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "atom.h"
#include "base_types.h"

namespace quillmere::movies {

/// `mvhd`
struct MovieHeader {
  UInt32 time_scale = 0;  ///< units a second
  UInt64 duration = 0;    ///< movie time units
  Fixed rate = 0;         ///< preferred rate
  SInt16 volume = 0;      ///< preferred volume, 0 to 256
  MatrixRecord matrix = {};
  UInt32 poster_time = 0;  ///< movie time units
  UInt32 next_track_id = 0;
};
bool ReadMovieHeader(const Atom& mvhd, MovieHeader* header);
bool SetMovieDuration(Atom* mvhd, UInt64 duration);
void SetNextTrackId(Atom* mvhd, UInt32 id);
bool SetMatrixOfMovie(Atom* mvhd, const MatrixRecord& matrix);

/// `tkhd`. Flags: 1 enabled, 2 in movie, 4 in preview, 8 in poster.
struct TrackHeader {
  UInt32 flags = 0;
  UInt32 id = 0;
  UInt64 duration = 0;  ///< movie time units
  SInt16 layer = 0;     ///< lower layers lie in front
  SInt16 alternate_group = 0;
  SInt16 volume = 0;
  MatrixRecord matrix = {};
  Fixed width = 0;  ///< 16.16 pixels
  Fixed height = 0;
};
inline constexpr UInt32 kTrackEnabled = 1;
bool ReadTrackHeader(const Atom& tkhd, TrackHeader* header);
/// Writes all fields of the record.
bool WriteTrackHeader(Atom* tkhd, const TrackHeader& header);
bool SetTrackDuration(Atom* tkhd, UInt64 duration);

/// `mdhd`
struct MediaHeader {
  UInt32 time_scale = 0;  ///< units a second
  UInt64 duration = 0;    ///< media time units
  UInt16 language = 0;
  UInt16 quality = 0;
};
bool ReadMediaHeader(const Atom& mdhd, MediaHeader* header);
bool SetMediaDuration(Atom* mdhd, UInt64 duration);

/// `hdlr`
struct HandlerRecord {
  OSType component_type = 0;     ///< `mhlr` or `dhlr`; 0 in ISO files
  OSType component_subtype = 0;  ///< media type
  OSType manufacturer = 0;
  std::span<const UInt8> name;  ///< as it stands: a counted string, or characters that end with 0
};
bool ReadHandler(const Atom& hdlr, HandlerRecord* handler);

/// One entry of `elst`.
struct EditRecord {
  UInt64 track_duration = 0;  ///< movie time units
  SInt64 media_time = 0;      ///< media time units; -1 for an empty edit
  Fixed media_rate = 0x10000;
};
inline constexpr SInt64 kEmptyEdit = -1;
/// False when the atom has fewer entries than it says.
bool ReadEditList(const Atom& elst, std::vector<EditRecord>* edits);
/// Replaces the entries; version 1 where a field needs it or the atom has it already.
void WriteEditList(Atom* elst, const std::vector<EditRecord>& edits);

/// One entry of `dref`: a reference that names a file, or the movie's own (`self`).
struct DataReferenceEntry {
  OSType type = 0;
  bool is_self = false;
  std::span<const UInt8> data;  ///< behind version and flags
};
bool ReadDataReferenceEntry(const Atom& entry, DataReferenceEntry* reference);
/// Makes an entry refer to the movie's own file; what it named before is gone.
void SetSelfReference(Atom* entry);

/// `data_reference` of an `stsd` entry, from 1; nothing if it is too short.
std::optional<UInt16> DataReferenceOfDescription(const Atom& entry);
bool SetDataReferenceOfDescription(Atom* entry, UInt16 index);

/// Graphics mode and colour of `vmhd` or `gmin`.
struct GraphicsRecord {
  UInt16 mode = 0;
  RGBColor op_color = {};
};
bool ReadGraphics(const Atom& atom, GraphicsRecord* graphics);
bool WriteGraphics(Atom* atom, const GraphicsRecord& graphics);
/// Balance of `smhd`, 8.8: -1.0 left to 1.0 right.
std::optional<SInt16> ReadSoundBalance(const Atom& smhd);

/// A matrix as it stands in header atoms, 36 bytes.
MatrixRecord ReadMatrix(const UInt8* bytes);
void WriteMatrix(UInt8* bytes, const MatrixRecord& matrix);

}  // namespace quillmere::movies
