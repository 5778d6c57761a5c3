#include "exif.h"

#include <algorithm>
#include <array>

namespace quillmere::imaging {
namespace {

constexpr UInt16 kOrientationTag = 0x0112;
constexpr UInt16 kXResolutionTag = 0x011A;
constexpr UInt16 kYResolutionTag = 0x011B;
constexpr UInt16 kResolutionUnitTag = 0x0128;
constexpr UInt16 kShortType = 3;
constexpr UInt16 kRationalType = 5;
constexpr std::size_t kEntrySize = 12;

/// Reads numbers in the block's byte order; what lies outside reads as 0.
class TiffReader {
 public:
  explicit TiffReader(std::span<const UInt8> bytes)
      : bytes_(bytes), big_endian_(bytes.size() >= 2 && bytes[0] == 'M') {}

  UInt32 Number(std::size_t offset, std::size_t size) const {
    if (offset > bytes_.size() || size > bytes_.size() - offset) return 0;
    UInt32 value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      value = (value << 8) | bytes_[offset + (big_endian_ ? i : size - 1 - i)];
    }
    return value;
  }
  UInt16 Short(std::size_t offset) const { return static_cast<UInt16>(Number(offset, 2)); }
  UInt32 Long(std::size_t offset) const { return Number(offset, 4); }
  /// A quotient of two longs; 0 where its divisor is 0.
  double Rational(std::size_t offset) const {
    const UInt32 divisor = Long(offset + 4);
    return divisor == 0 ? 0 : static_cast<double>(Long(offset)) / divisor;
  }
  std::size_t size() const { return bytes_.size(); }

 private:
  std::span<const UInt8> bytes_;
  bool big_endian_;
};

}  // namespace

ExifValues ParseExif(std::span<const UInt8> tiff) {
  ExifValues values;
  if (tiff.size() < 8 || tiff[0] != tiff[1] || (tiff[0] != 'I' && tiff[0] != 'M')) return values;
  const TiffReader reader(tiff);
  if (reader.Short(2) != 42) return values;
  const std::size_t directory = reader.Long(4);
  if (directory > reader.size()) return values;
  const std::size_t room = (reader.size() - directory) / kEntrySize;
  const std::size_t count = std::min<std::size_t>(reader.Short(directory), room);
  double units_per_inch = 1;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t entry = directory + 2 + i * kEntrySize;
    const UInt16 tag = reader.Short(entry);
    const UInt16 type = reader.Short(entry + 2);
    if (tag == kOrientationTag && type == kShortType) {
      const UInt16 orientation = reader.Short(entry + 8);
      if (orientation >= 1 && orientation <= 8)
        values.orientation = static_cast<UInt8>(orientation);
    } else if (tag == kXResolutionTag && type == kRationalType) {
      values.dots_per_inch_x = reader.Rational(reader.Long(entry + 8));
    } else if (tag == kYResolutionTag && type == kRationalType) {
      values.dots_per_inch_y = reader.Rational(reader.Long(entry + 8));
    } else if (tag == kResolutionUnitTag && type == kShortType) {
      // 1 none: only the aspect ratio is meant; 2 inch; 3 centimetre.
      const UInt16 unit = reader.Short(entry + 8);
      units_per_inch = unit == 3 ? 2.54 : unit == 1 ? 0 : 1;
    }
  }
  values.dots_per_inch_x *= units_per_inch;
  values.dots_per_inch_y *= units_per_inch;
  return values;
}

std::span<const UInt8> ExifOfSegment(std::span<const UInt8> segment) {
  static constexpr std::array<UInt8, 6> kName = {'E', 'x', 'i', 'f', 0, 0};
  if (segment.size() < kName.size() || !std::equal(kName.begin(), kName.end(), segment.begin())) {
    return {};
  }
  return segment.subspan(kName.size());
}

}  // namespace quillmere::imaging
