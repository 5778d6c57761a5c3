#include "region_bytes.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "big_endian.h"

namespace quillmere {

namespace {

constexpr SInt16 kRowEnd = 0x7FFF;
constexpr std::size_t kRectangleSize = 10;
constexpr std::size_t kMostBytes = 32766;

/// Where two rows of edges differ, from left to right.
std::vector<SInt32> Turns(const std::vector<SInt32>& a, const std::vector<SInt32>& b) {
  std::vector<SInt32> turns;
  std::set_symmetric_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(turns));
  return turns;
}

void Append16(SInt32 value, std::vector<UInt8>* bytes) {
  bytes->resize(bytes->size() + 2);
  WriteU16(bytes->data() + bytes->size() - 2, static_cast<UInt16>(value));
}

void AppendRows(RgnHandle region, SInt32 top, std::vector<UInt8>* bytes) {
  std::vector<SInt32> above;
  SInt32 bottom = top;
  const auto append_row = [&](SInt32 v, const std::vector<SInt32>& edges) {
    Append16(v, bytes);
    for (const SInt32 turn : Turns(above, edges))
      Append16(turn, bytes);
    Append16(kRowEnd, bytes);
    above = edges;
  };
  for (const RegionBand& band : BandsOf(region)) {
    if (band.top > bottom) append_row(bottom, {});
    append_row(band.top, band.edges);
    bottom = band.bottom;
  }
  append_row(bottom, {});
  Append16(kRowEnd, bytes);
}

/// Reads 16-bit numbers one behind the other; 0 behind the last.
class Reader {
 public:
  explicit Reader(std::span<const UInt8> bytes) : bytes_(bytes) {}
  SInt16 Next() {
    is_good_ = is_good_ && bytes_.size() >= 2;
    if (!is_good_) return 0;
    const SInt16 value = ReadS16(bytes_.data());
    bytes_ = bytes_.subspan(2);
    return value;
  }
  bool IsGood() const { return is_good_; }

 private:
  std::span<const UInt8> bytes_;
  bool is_good_ = true;
};

/// The places of a row up to its end; false if they don't rise.
bool ReadTurns(Reader* reader, std::vector<SInt32>* turns) {
  for (SInt32 h = reader->Next(); h != kRowEnd; h = reader->Next()) {
    if (!reader->IsGood() || (!turns->empty() && h <= turns->back())) return false;
    turns->push_back(h);
  }
  return true;
}

bool ReadRows(Reader reader, std::vector<RegionBand>* bands) {
  std::vector<SInt32> edges;
  SInt32 top = reader.Next();
  while (top != kRowEnd) {
    std::vector<SInt32> turns;
    if (!ReadTurns(&reader, &turns)) return false;
    edges = Turns(edges, turns);
    const SInt32 bottom = reader.Next();
    if (!reader.IsGood() || edges.size() % 2 != 0) return false;
    if (!edges.empty()) {
      if (bottom == kRowEnd || bottom <= top) return false;
      bands->push_back({top, bottom, edges});
    }
    top = bottom;
  }
  return reader.IsGood();
}

}  // namespace

std::vector<UInt8> RegionToBytes(RgnHandle region) {
  std::vector<UInt8> bytes;
  Append16(0, &bytes);
  Rect bounds;
  GetRegionBounds(region, &bounds);
  for (const SInt16 edge : {bounds.top, bounds.left, bounds.bottom, bounds.right})
    Append16(edge, &bytes);
  if (!IsRegionRectangular(region)) AppendRows(region, bounds.top, &bytes);
  if (bytes.size() > kMostBytes) return {};
  WriteU16(bytes.data(), static_cast<UInt16>(bytes.size()));
  return bytes;
}

std::size_t SizeOfRegionBytes(std::span<const UInt8> bytes) {
  if (bytes.size() < kRectangleSize) return 0;
  const std::size_t size = ReadU16(bytes.data());
  return size >= kRectangleSize ? size : 0;
}

bool BandsFromBytes(std::span<const UInt8> bytes, std::vector<RegionBand>* bands) {
  bands->clear();
  if (bytes.empty() || SizeOfRegionBytes(bytes) != bytes.size()) return false;
  if (bytes.size() > kRectangleSize) return ReadRows(Reader(bytes.subspan(kRectangleSize)), bands);
  const auto edge = [&bytes](std::size_t i) { return SInt32{ReadS16(bytes.data() + 2 + 2 * i)}; };
  if (edge(0) < edge(2) && edge(1) < edge(3))
    bands->push_back({edge(0), edge(2), {edge(1), edge(3)}});
  return true;
}

}  // namespace quillmere
