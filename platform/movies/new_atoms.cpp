#include "new_atoms.h"

#include <algorithm>
#include <utility>

#include "big_endian.h"
#include "movie_records.h"

namespace quillmere::movies {

const MatrixRecord kIdentityMatrix = {{{0x10000, 0, 0}, {0, 0x10000, 0}, {0, 0, 0x40000000}}};

namespace {

/// Bytes of an atom's content, appended field by field.
class Fields {
 public:
  Fields& U8(UInt8 value) {
    bytes_.push_back(value);
    return *this;
  }
  Fields& U16(UInt16 value) {
    bytes_.resize(bytes_.size() + 2);
    WriteU16(bytes_.data() + bytes_.size() - 2, value);
    return *this;
  }
  Fields& U32(UInt32 value) {
    AppendU32(&bytes_, value);
    return *this;
  }
  /// 64 bits in wide headers, else 32.
  Fields& Time(UInt64 value, bool is_wide) {
    if (is_wide) {
      AppendU64(&bytes_, value);
    } else {
      AppendU32(&bytes_, static_cast<UInt32>(value));
    }
    return *this;
  }
  Fields& Zeros(std::size_t count) {
    bytes_.resize(bytes_.size() + count);
    return *this;
  }
  Fields& Matrix(const MatrixRecord& matrix) {
    bytes_.resize(bytes_.size() + 36);
    WriteMatrix(bytes_.data() + bytes_.size() - 36, matrix);
    return *this;
  }
  Fields& PascalString(std::string_view text) {
    U8(static_cast<UInt8>(text.size()));
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return *this;
  }
  Atom MakeAtom(OSType type) {
    Atom atom(type);
    atom.set_payload(std::move(bytes_));
    return atom;
  }

 private:
  std::vector<UInt8> bytes_;
};

Fields HeaderStart(const HeaderTimes& times, UInt32 flags) {
  Fields fields;
  fields.U32((times.is_wide ? 0x01000000U : 0U) | flags);
  fields.Time(times.creation, times.is_wide).Time(times.modification, times.is_wide);
  return fields;
}

Atom MakeHandler(OSType kind, OSType type, std::string_view name) {
  return Fields().U32(0).U32(kind).U32(type).Zeros(12).PascalString(name).MakeAtom("hdlr"_4cc);
}

/// A table with no entries: version and flags, and `words` zero fields.
Atom MakeEmptyTable(OSType type, std::size_t words) {
  return Fields().Zeros(4 + words * 4).MakeAtom(type);
}

Atom MakeMediaInformationHeader(OSType media_type) {
  if (media_type == "vide"_4cc) return Fields().U32(1).Zeros(8).MakeAtom("vmhd"_4cc);
  if (media_type == "soun"_4cc) return Fields().Zeros(8).MakeAtom("smhd"_4cc);
  Atom gmhd("gmhd"_4cc);
  gmhd.Add(
      Fields().U32(0).U16(0x40).U16(0x8000).U16(0x8000).U16(0x8000).Zeros(4).MakeAtom("gmin"_4cc));
  return gmhd;
}

Atom MakeDataInformation(const std::vector<UInt8>& reference) {
  std::vector<UInt8> entry(4);
  if (reference.empty()) entry[3] = 1;
  entry.insert(entry.end(), reference.begin(), reference.end());
  Atom alias("alis"_4cc);
  alias.set_payload(std::move(entry));
  Atom dref = Fields().U32(0).U32(1).MakeAtom("dref"_4cc);
  dref.Add(std::move(alias));
  Atom dinf("dinf"_4cc);
  dinf.Add(std::move(dref));
  return dinf;
}

}  // namespace

Atom MakeEmptySampleTable() {
  Atom stbl("stbl"_4cc);
  stbl.Add(MakeEmptyTable("stsd"_4cc, 1));
  stbl.Add(MakeEmptyTable("stts"_4cc, 1));
  stbl.Add(MakeEmptyTable("stsc"_4cc, 1));
  stbl.Add(MakeEmptyTable("stsz"_4cc, 2));
  stbl.Add(MakeEmptyTable("stco"_4cc, 1));
  return stbl;
}

HeaderTimes TimesOf(const Atom& mvhd) {
  const std::span<const UInt8> bytes = mvhd.payload();
  if (bytes.size() >= 20 && bytes[0] == 1) {
    return {ReadU64(bytes.data() + 4), ReadU64(bytes.data() + 12), true};
  }
  if (bytes.size() < 12) return {};
  return {ReadU32(bytes.data() + 4), ReadU32(bytes.data() + 8), false};
}

Atom MakeTrackAtom(const HeaderTimes& times, const NewTrackFields& track) {
  Fields header = HeaderStart(times, 0xF);
  header.U32(track.id).U32(0).Time(0, times.is_wide).Zeros(8);
  header.U16(0).U16(0).U16(static_cast<UInt16>(track.volume)).U16(0).Matrix(kIdentityMatrix);
  header.U32(static_cast<UInt32>(track.width)).U32(static_cast<UInt32>(track.height));
  Atom edts("edts"_4cc);
  edts.Add(MakeEmptyTable("elst"_4cc, 1));
  Atom trak("trak"_4cc);
  trak.Add(header.MakeAtom("tkhd"_4cc));
  trak.Add(std::move(edts));
  return trak;
}

Atom MakeMediaAtom(const HeaderTimes& times, OSType media_type, UInt32 time_scale,
                   const std::vector<UInt8>& reference) {
  Fields header = HeaderStart(times, 0);
  constexpr UInt16 kUndetermined = 0x55C4;  // language "und", 5 bits a letter
  header.U32(time_scale).Time(0, times.is_wide).U16(kUndetermined).U16(0);
  Atom minf("minf"_4cc);
  minf.Add(MakeMediaInformationHeader(media_type));
  minf.Add(MakeHandler("dhlr"_4cc, "alis"_4cc, "DataHandler"));
  minf.Add(MakeDataInformation(reference));
  minf.Add(MakeEmptySampleTable());
  Atom mdia("mdia"_4cc);
  mdia.Add(header.MakeAtom("mdhd"_4cc));
  mdia.Add(MakeHandler("mhlr"_4cc, media_type,
                       media_type == "vide"_4cc ? "VideoHandler" : "MediaHandler"));
  mdia.Add(std::move(minf));
  return mdia;
}

Atom MakeMovieAtom(UInt32 time_scale, UInt32 duration) {
  Fields header = HeaderStart({}, 0);
  header.U32(time_scale).U32(duration).U32(0x10000).U16(0x100).Zeros(10);
  header.Matrix(kIdentityMatrix).Zeros(24).U32(1);
  Atom moov("moov"_4cc);
  moov.Add(header.MakeAtom("mvhd"_4cc));
  return moov;
}

}  // namespace quillmere::movies
