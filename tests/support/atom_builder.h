/// Building and patching movie files byte by byte, independent of the code under test.
///
/// A file or atom is a plain vector of bytes. Paths name atoms from the outermost type inwards; the
/// first atom of each type counts. Edits keep the sizes of all enclosing 32-bit atoms right.
#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base_types.h"

namespace quillmere::test {

using Bytes = std::vector<UInt8>;

/// Appends big-endian values to bytes: `ByteWriter().U32(0).U16(1).Text("abcd").bytes`.
struct ByteWriter {
  Bytes bytes;
  ByteWriter& Number(UInt64 value, int width) {
    for (int shift = (width - 1) * 8; shift >= 0; shift -= 8) {
      bytes.push_back(static_cast<UInt8>(value >> shift));
    }
    return *this;
  }
  ByteWriter& U8(UInt64 value) { return Number(value, 1); }
  ByteWriter& U16(UInt64 value) { return Number(value, 2); }
  ByteWriter& U32(UInt64 value) { return Number(value, 4); }
  ByteWriter& U64(UInt64 value) { return Number(value, 8); }
  ByteWriter& Zeros(std::size_t count) {
    bytes.insert(bytes.end(), count, 0);
    return *this;
  }
  ByteWriter& Text(std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
    return *this;
  }
  ByteWriter& Raw(std::span<const UInt8> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return *this;
  }
};

inline UInt64 NumberAt(std::span<const UInt8> bytes, std::size_t offset, int width) {
  UInt64 value = 0;
  for (int i = 0; i < width; ++i) {
    value = (value << 8) | bytes[offset + static_cast<std::size_t>(i)];
  }
  return value;
}
inline UInt32 U32At(std::span<const UInt8> bytes, std::size_t offset) {
  return static_cast<UInt32>(NumberAt(bytes, offset, 4));
}
inline void PutNumber(Bytes* bytes, std::size_t offset, UInt64 value, int width) {
  const Bytes digits = ByteWriter().Number(value, width).bytes;
  std::copy(digits.begin(), digits.end(), bytes->begin() + static_cast<std::ptrdiff_t>(offset));
}

inline Bytes Concatenate(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts)
    all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// An atom with a 32-bit size.
inline Bytes MakeAtom(std::string_view type, std::span<const UInt8> content = {}) {
  return ByteWriter().U32(content.size() + 8).Text(type).Raw(content).bytes;
}
inline Bytes MakeAtom(std::string_view type, std::initializer_list<Bytes> children) {
  return MakeAtom(type, Concatenate(children));
}
/// The same with a 64-bit size.
inline Bytes MakeAtom64(std::string_view type, std::span<const UInt8> content) {
  return ByteWriter().U32(1).Text(type).U64(content.size() + 16).Raw(content).bytes;
}
/// The same with size 0: it reaches to the end of what encloses it.
inline Bytes MakeAtomToEnd(std::string_view type, std::span<const UInt8> content) {
  return ByteWriter().U32(0).Text(type).Raw(content).bytes;
}
/// An atom whose content starts with version and flags.
inline Bytes MakeFullAtom(std::string_view type, int version, UInt32 flags,
                          std::span<const UInt8> content) {
  return MakeAtom(
      type, ByteWriter().U8(static_cast<UInt64>(version)).Number(flags, 3).Raw(content).bytes);
}

/// Where an atom lies.
struct AtomPlace {
  std::size_t offset = 0;  ///< of its header
  std::size_t size = 0;    ///< header included
  std::size_t header = 8;
  std::size_t content() const { return offset + header; }
  std::size_t end() const { return offset + size; }
};

/// The atoms that stand one behind the other in `bytes` from `begin` to `end`.
inline std::vector<AtomPlace> AtomsIn(std::span<const UInt8> bytes, std::size_t begin,
                                      std::size_t end) {
  std::vector<AtomPlace> places;
  while (end - begin >= 8) {
    AtomPlace place{begin, U32At(bytes, begin), 8};
    if (place.size == 1 && end - begin >= 16) {
      place.size = static_cast<std::size_t>(NumberAt(bytes, begin + 8, 8));
      place.header = 16;
    } else if (place.size == 0) {
      place.size = end - begin;
    }
    if (place.size < place.header || place.size > end - begin) break;
    places.push_back(place);
    begin += place.size;
  }
  return places;
}

inline std::string TypeAt(std::span<const UInt8> bytes, const AtomPlace& place) {
  return std::string(bytes.begin() + static_cast<std::ptrdiff_t>(place.offset + 4),
                     bytes.begin() + static_cast<std::ptrdiff_t>(place.offset + 8));
}

/// The places of all atoms on a path, outermost first; empty if it is not there. `stsd`, `dref` and
/// ISO `meta` are stepped into behind their fields. A step "trak:2" means the second `trak`.
inline std::vector<AtomPlace> FindChain(std::span<const UInt8> bytes,
                                        const std::vector<std::string>& path) {
  std::vector<AtomPlace> chain;
  std::size_t begin = 0;
  std::size_t end = bytes.size();
  for (const std::string& step : path) {
    int nth = step.size() > 5 ? std::stoi(step.substr(5)) : 1;
    std::optional<AtomPlace> found;
    for (const AtomPlace& place : AtomsIn(bytes, begin, end)) {
      if (TypeAt(bytes, place) == step.substr(0, 4) && --nth == 0) found = place;
    }
    if (!found) return {};
    chain.push_back(*found);
    begin = found->content();
    end = found->end();
    const std::string type = step.substr(0, 4);
    if (type == "stsd" || type == "dref") begin += 8;
    if (type == "meta" && end - begin >= 8 && U32At(bytes, begin) == 0) begin += 4;
  }
  return chain;
}

inline std::optional<AtomPlace> FindAtom(std::span<const UInt8> bytes,
                                         const std::vector<std::string>& path) {
  const std::vector<AtomPlace> chain = FindChain(bytes, path);
  if (chain.empty()) return std::nullopt;
  return chain.back();
}

/// The atom's bytes, header included; the test fails by exception when it is not there.
inline Bytes AtomBytes(std::span<const UInt8> bytes, const std::vector<std::string>& path) {
  const std::optional<AtomPlace> place = FindAtom(bytes, path);
  if (!place) throw std::runtime_error("no atom " + path.back());
  const std::span<const UInt8> atom = bytes.subspan(place->offset, place->size);
  return Bytes(atom.begin(), atom.end());
}

/// Replaces `size` bytes at `offset` and corrects the size fields of the enclosing atoms.
inline void Splice(Bytes* bytes, std::span<const AtomPlace> enclosing, std::size_t offset,
                   std::size_t size, std::span<const UInt8> replacement) {
  const UInt64 delta = replacement.size() - size;  // wraps where the atom gets smaller
  for (const AtomPlace& place : enclosing) {
    const UInt32 written = U32At(*bytes, place.offset);
    if (written == 1) {
      PutNumber(bytes, place.offset + 8, place.size + delta, 8);
    } else if (written != 0) {
      PutNumber(bytes, place.offset, place.size + delta, 4);
    }
  }
  const auto at = bytes->begin() + static_cast<std::ptrdiff_t>(offset);
  bytes->insert(bytes->erase(at, at + static_cast<std::ptrdiff_t>(size)), replacement.begin(),
                replacement.end());
}

/// Replaces an atom, header included; an empty replacement removes it. Chunk offsets stay as they
/// are.
inline void ReplaceAtom(Bytes* bytes, const std::vector<std::string>& path,
                        std::span<const UInt8> replacement) {
  const std::vector<AtomPlace> chain = FindChain(*bytes, path);
  if (chain.empty()) throw std::runtime_error("no atom " + path.back());
  Splice(bytes, std::span(chain).first(chain.size() - 1), chain.back().offset, chain.back().size,
         replacement);
}

/// Appends a child to the container at `path`.
inline void AppendChild(Bytes* bytes, const std::vector<std::string>& path,
                        std::span<const UInt8> child) {
  const std::vector<AtomPlace> chain = FindChain(*bytes, path);
  if (chain.empty()) throw std::runtime_error("no atom " + path.back());
  Splice(bytes, chain, chain.back().end(), 0, child);
}

/// Calls `change` with the place of every chunk-offset field (`stco`, `co64`) of all tracks of a
/// `moov` (or file) and its width in bytes.
inline void ForEachChunkOffset(std::span<const UInt8> bytes,
                               const std::function<void(std::size_t, int)>& change) {
  for (int track = 1;; ++track) {
    const std::string step = "trak:" + std::to_string(track);
    if (!FindAtom(bytes, {"moov", step})) return;
    for (const auto& [type, width] : {std::pair("stco", 4), std::pair("co64", 8)}) {
      const auto table = FindAtom(bytes, {"moov", step, "mdia", "minf", "stbl", type});
      if (!table) continue;
      const UInt32 count = U32At(bytes, table->content() + 4);
      for (UInt32 i = 0; i < count; ++i) {
        change(table->content() + 8 + std::size_t{i} * static_cast<std::size_t>(width), width);
      }
    }
  }
}

/// Adds `delta` to all chunk offsets.
inline void ShiftChunkOffsets(Bytes* bytes, SInt64 delta) {
  ForEachChunkOffset(*bytes, [&](std::size_t offset, int width) {
    const UInt64 value = NumberAt(*bytes, offset, width) + static_cast<UInt64>(delta);
    PutNumber(bytes, offset, value, width);
  });
}

/// Replaces the whole `moov` of a file by `movie`; chunk offsets (which `movie` has for the old
/// layout) follow when the media data behind it moves.
inline void ReplaceMovie(Bytes* file, Bytes movie) {
  const std::optional<AtomPlace> moov = FindAtom(*file, {"moov"});
  const std::optional<AtomPlace> mdat = FindAtom(*file, {"mdat"});
  if (!moov) throw std::runtime_error("no moov");
  if (mdat && mdat->offset > moov->offset) {
    ShiftChunkOffsets(&movie, static_cast<SInt64>(movie.size()) - static_cast<SInt64>(moov->size));
  }
  ReplaceAtom(file, {"moov"}, movie);
}

/// Turns every `stco` into a `co64` and the other way round where `wide` is false. For files whose
/// `moov` stands behind the media data.
inline void SetChunkOffsetWidth(Bytes* file, bool wide) {
  for (int track = 1;; ++track) {
    const std::vector<std::string> table = {"moov", "trak:" + std::to_string(track), "mdia", "minf",
                                            "stbl"};
    if (!FindAtom(*file, table)) return;
    std::vector<std::string> path = table;
    path.push_back(wide ? "stco" : "co64");
    const std::optional<AtomPlace> old = FindAtom(*file, path);
    if (!old) continue;
    const int width = wide ? 4 : 8;
    const UInt32 count = U32At(*file, old->content() + 4);
    ByteWriter content;
    content.U32(0).U32(count);
    for (UInt32 i = 0; i < count; ++i) {
      content.Number(
          NumberAt(*file, old->content() + 8 + std::size_t{i} * static_cast<std::size_t>(width),
                   width),
          wide ? 8 : 4);
    }
    ReplaceAtom(file, path, MakeAtom(wide ? "co64" : "stco", content.bytes));
  }
}

/// Moves every track's `edts` behind its `mdia`.
inline void MoveEditsBehindMedia(Bytes* file) {
  for (int track = 1;; ++track) {
    const std::string step = "trak:" + std::to_string(track);
    if (!FindAtom(*file, {"moov", step})) return;
    if (!FindAtom(*file, {"moov", step, "edts"})) continue;
    const Bytes edits = AtomBytes(*file, {"moov", step, "edts"});
    ReplaceAtom(file, {"moov", step, "edts"}, {});
    AppendChild(file, {"moov", step}, edits);
  }
}

/// A zlib stream that holds the bytes uncompressed (stored blocks).
inline Bytes StoredZlibStream(std::span<const UInt8> bytes) {
  ByteWriter stream;
  stream.U8(0x78).U8(0x01);
  std::size_t done = 0;
  do {
    const std::size_t count = std::min<std::size_t>(bytes.size() - done, 65535);
    const bool last = done + count == bytes.size();
    stream.U8(last ? 1 : 0);
    for (const std::size_t value : {count, ~count})
      stream.U8(value & 0xFF).U8((value >> 8) & 0xFF);
    stream.Raw(bytes.subspan(done, count));
    done += count;
  } while (done < bytes.size());
  UInt32 low = 1;
  UInt32 high = 0;
  for (const UInt8 byte : bytes) {
    low = (low + byte) % 65521;
    high = (high + low) % 65521;
  }
  return stream.U32((high << 16) | low).bytes;
}

/// A `moov` that holds `movie` (a whole `moov`) as a `cmov`; `stream` is its zlib stream.
inline Bytes CompressedMovie(std::span<const UInt8> movie, std::span<const UInt8> stream) {
  const Bytes data = ByteWriter().U32(movie.size()).Raw(stream).bytes;
  return MakeAtom("moov", {MakeAtom("cmov", {MakeAtom("dcom", ByteWriter().Text("zlib").bytes),
                                             MakeAtom("cmvd", data)})});
}

/// Wraps the `moov` of a file, which stands behind the media data, in a `cmov`.
inline void CompressMovie(Bytes* file) {
  const Bytes movie = AtomBytes(*file, {"moov"});
  ReplaceAtom(file, {"moov"}, CompressedMovie(movie, StoredZlibStream(movie)));
}

/// Divides the media data: the chunks of the second track move to an `mdat` of their own at the end
/// of the file. `chunk_sizes` gives their sizes in order. For files whose `moov` stands last.
inline void MoveTrackToOwnMdat(Bytes* file, int track, std::span<const UInt64> chunk_sizes) {
  const std::vector<std::string> path = {
      "moov", "trak:" + std::to_string(track), "mdia", "minf", "stbl", "stco"};
  const std::optional<AtomPlace> table = FindAtom(*file, path);
  if (!table) throw std::runtime_error("no stco");
  Bytes data;
  for (std::size_t i = 0; i < chunk_sizes.size(); ++i) {
    const std::size_t field = table->content() + 8 + 4 * i;
    const std::size_t offset = U32At(*file, field);
    PutNumber(file, field, file->size() + 8 + data.size(), 4);
    const auto begin = file->begin() + static_cast<std::ptrdiff_t>(offset);
    data.insert(data.end(), begin, begin + static_cast<std::ptrdiff_t>(chunk_sizes[i]));
    std::fill(begin, begin + static_cast<std::ptrdiff_t>(chunk_sizes[i]), UInt8{0xA5});
  }
  const Bytes atom = MakeAtom("mdat", data);
  file->insert(file->end(), atom.begin(), atom.end());
}

}  // namespace quillmere::test
