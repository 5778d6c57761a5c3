#include "picture_player_private.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "big_endian.h"
#include "drawing.h"
#include "fonts.h"
#include "pack_bits_private.h"
#include "picture_format_private.h"
#include "pictures.h"
#include "ports_private.h"
#include "rectangles.h"
#include "region_bytes.h"

namespace quillmere::drawing {
namespace {

/// Fields of a picture in their order. Behind the end fields are 0 and IsGood is false.
class PictureReader {
 public:
  explicit PictureReader(std::span<const UInt8> bytes) : bytes_(bytes) {}

  std::span<const UInt8> Bytes(std::size_t count) {
    std::span<const UInt8> slice;
    is_good_ = is_good_ && SliceOf(bytes_, place_, count, &slice);
    if (is_good_) place_ += count;
    return slice;
  }
  UInt8 Read8() {
    const auto field = Bytes(1);
    return field.empty() ? UInt8{0} : field[0];
  }
  SInt16 Read16() {
    const auto field = Bytes(2);
    return field.empty() ? SInt16{0} : ReadS16(field.data());
  }
  UInt16 ReadUnsigned16() { return static_cast<UInt16>(Read16()); }
  SInt32 Read32() {
    const auto field = Bytes(4);
    return field.empty() ? 0 : ReadS32(field.data());
  }
  Point ReadPoint() {
    const SInt16 v = Read16();
    return {v, Read16()};
  }
  Rect ReadRect() {
    const Point first = ReadPoint();
    const Point last = ReadPoint();
    return {first.v, first.h, last.v, last.h};
  }
  RGBColor ReadColor() {
    const UInt16 red = ReadUnsigned16();
    const UInt16 green = ReadUnsigned16();
    return {red, green, ReadUnsigned16()};
  }
  void Align() { place_ += place_ % 2; }
  bool IsGood() const { return is_good_; }
  std::span<const UInt8> Rest() const { return bytes_.subspan(std::min(place_, bytes_.size())); }
  std::size_t Place() const { return place_; }
  void Fail() { is_good_ = false; }

 private:
  std::span<const UInt8> bytes_;
  std::size_t place_ = 0;
  bool is_good_ = true;
};

/// Where the places of a picture come to lie.
struct Mapping {
  Rect from;
  Rect to;

  static SInt32 Mapped(SInt32 place, SInt32 from, SInt32 size, SInt32 to, SInt32 to_size) {
    const SInt64 doubled = SInt64{2} * (place - from) * to_size + size;
    const SInt64 divisor = SInt64{2} * size;
    const SInt64 moved = doubled >= 0 ? doubled / divisor : -((divisor - 1 - doubled) / divisor);
    return static_cast<SInt32>(std::clamp<SInt64>(to + moved, -32768, 32767));
  }
  SInt32 H(SInt32 h) const {
    return Mapped(h, from.left, from.right - from.left, to.left, to.right - to.left);
  }
  SInt32 V(SInt32 v) const {
    return Mapped(v, from.top, from.bottom - from.top, to.top, to.bottom - to.top);
  }
  Point Of(Point point) const {
    return {static_cast<SInt16>(V(point.v)), static_cast<SInt16>(H(point.h))};
  }
  Rect Of(const Rect& rect) const {
    const Point first = Of(Point{rect.top, rect.left});
    const Point last = Of(Point{rect.bottom, rect.right});
    return {first.v, first.h, last.v, last.h};
  }
  double ScaleH() const {
    return static_cast<double>(to.right - to.left) / (from.right - from.left);
  }
  double ScaleV() const {
    return static_cast<double>(to.bottom - to.top) / (from.bottom - from.top);
  }
  /// A pen is as wide as it would be drawn, but not less than a pixel.
  Point PenOf(Point pen) const {
    const auto scaled = [](SInt16 size, double scale) {
      const long width = std::clamp(std::lround(size * scale), 1L, 32767L);
      return size < 1 ? size : static_cast<SInt16>(width);
    };
    return {scaled(pen.v, ScaleV()), scaled(pen.h, ScaleH())};
  }
};

class Player {
 public:
  Player(std::span<const UInt8> operations, const Mapping& mapping)
      : reader_(operations),
        mapping_(mapping),
        port_(CurrentPort()),
        outer_(port_.state),
        outer_clip_(CopyOf(port_.clip.get())) {
    port_.state = DrawingState{};
    port_.state.text_h = outer_.text_h * mapping_.ScaleH();
    port_.state.text_v = outer_.text_v * mapping_.ScaleV();
    port_.state.pen_size = mapping_.PenOf({1, 1});
  }
  Player(const Player&) = delete;
  Player& operator=(const Player&) = delete;
  ~Player() {
    port_.state = outer_;
    port_.clip = std::move(outer_clip_);
  }

  /// False if there is no end to the picture.
  bool Play() {
    while (reader_.IsGood()) {
      const UInt16 code = reader_.ReadUnsigned16();
      if (code == kPictureEnd) return reader_.IsGood();
      if (!IsPlayed(code)) return false;
      reader_.Align();
    }
    return false;
  }

 private:
  /// False for an operation that isn't known.
  bool IsPlayed(UInt16 code) {
    return reader_.IsGood() && (IsState(code) || IsShape(code) || IsPassedOver(code));
  }

  bool IsState(UInt16 code) {
    DrawingState& state = port_.state;
    switch (code) {
      case kPictureClip:
        SetPictureClip();
        return true;
      case kPictureTextFont:
        SetFont(reader_.Read16());
        return true;
      case kPictureFontName:
        ReadFontName();
        return true;
      case kPictureTextFace:
        state.style.face = reader_.Read8();
        return true;
      case kPictureTextSize:
        state.style.size = std::max<SInt16>(reader_.Read16(), 0);
        return true;
      case kPictureTextRatio:
        SetTextRatio();
        return true;
      case kPicturePenSize:
        state.pen_size = mapping_.PenOf(reader_.ReadPoint());
        return true;
      case kPictureForeColor:
        state.fore = reader_.ReadColor();
        return true;
      case kPictureBackColor:
        state.back = reader_.ReadColor();
        return true;
      default:
        return false;
    }
  }

  bool IsShape(UInt16 code) {
    switch (code) {
      case kPictureFrameRect:
        DrawShape(FrameRect);
        return true;
      case kPicturePaintRect:
        DrawShape(PaintRect);
        return true;
      case kPictureEraseRect:
        DrawShape(EraseRect);
        return true;
      case kPicturePaintRegion:
        PaintRgn(ReadRegion().get());
        return true;
      case kPictureLongText:
        DrawLongText();
        return true;
      case kPicturePixels:
        DrawPixels(false);
        return true;
      case kPicturePixelsInRegion:
        DrawPixels(true);
        return true;
      default:
        return false;
    }
  }

  bool IsPassedOver(UInt16 code) {
    if (code == 0) return true;
    if (code != kPictureShortComment && code != kPictureLongComment) return false;
    reader_.Read16();
    if (code == kPictureLongComment) reader_.Bytes(reader_.ReadUnsigned16());
    return true;
  }

  void DrawShape(void (*draw)(const Rect*)) {
    const Rect rect = mapping_.Of(reader_.ReadRect());
    if (reader_.IsGood()) draw(&rect);
  }

  /// Empty if it is damaged.
  OwnedRegion ReadRegion() {
    std::vector<RegionBand> bands;
    const std::size_t size = SizeOfRegionBytes(reader_.Rest());
    if (size == 0 || !BandsFromBytes(reader_.Bytes(size), &bands)) reader_.Fail();
    OwnedRegion region(NewRgn());
    if (!reader_.IsGood()) return region;
    std::vector<RegionBand> mapped;
    for (const RegionBand& band : bands) {
      RegionBand moved = {mapping_.V(band.top), mapping_.V(band.bottom), {}};
      for (std::size_t i = 0; i + 1 < band.edges.size(); i += 2) {
        const SInt32 left = mapping_.H(band.edges[i]);
        const SInt32 right = mapping_.H(band.edges[i + 1]);
        if (left == right) continue;
        moved.edges.push_back(left);
        moved.edges.push_back(right);
      }
      if (moved.top < moved.bottom && !moved.edges.empty()) mapped.push_back(std::move(moved));
    }
    SetBands(region.get(), mapped);
    return region;
  }

  void SetPictureClip() {
    const OwnedRegion clip = ReadRegion();
    SectRgn(clip.get(), outer_clip_.get(), port_.clip.get());
  }

  /// Numbers that another process gave have names.
  void SetFont(SInt16 number) {
    const auto named = fonts_.find(number);
    port_.state.style.font = named != fonts_.end() ? named->second : number;
  }

  void ReadFontName() {
    PictureReader record(reader_.Bytes(reader_.ReadUnsigned16()));
    const SInt16 number = record.Read16();
    const std::size_t length = record.Read8();
    const std::span<const UInt8> text = record.Bytes(length);
    if (!record.IsGood()) return reader_.Fail();
    std::vector<UInt8> name(1, static_cast<UInt8>(length));
    name.insert(name.end(), text.begin(), text.end());
    GetFNum(name.data(), &fonts_[number]);
  }

  void SetTextRatio() {
    const Point numerator = reader_.ReadPoint();
    const Point denominator = reader_.ReadPoint();
    if (std::min({numerator.h, numerator.v, denominator.h, denominator.v}) < 1)
      return reader_.Fail();
    port_.state.text_h = outer_.text_h * mapping_.ScaleH() * numerator.h / denominator.h;
    port_.state.text_v = outer_.text_v * mapping_.ScaleV() * numerator.v / denominator.v;
  }

  void DrawLongText() {
    const Point pen = reader_.ReadPoint();
    const std::size_t count = reader_.Read8();
    const std::span<const UInt8> text = reader_.Bytes(count);
    if (!reader_.IsGood()) return;
    port_.state.pen = mapping_.Of(pen);
    DrawText(text.data(), 0, static_cast<SInt16>(count));
  }

  /// The lines of pixels, alpha first; empty if they are damaged or of a kind that isn't known.
  std::vector<UInt8> ReadLines(const Rect& bounds, SInt32 row_bytes, SInt16 packing,
                               SInt16 components) {
    constexpr std::size_t kLeastInLine = 2;  // packed bytes of a line, its length apart
    const auto width = static_cast<std::size_t>(bounds.right - bounds.left);
    std::vector<UInt8> pixels;
    for (SInt32 row = bounds.top; row < bounds.bottom; ++row) {
      std::vector<UInt8> line(width * static_cast<std::size_t>(components));
      if (packing == kUnpacked) {
        const auto bytes = reader_.Bytes(static_cast<std::size_t>(row_bytes));
        if (bytes.empty()) return {};
        pixels.insert(pixels.end(), bytes.begin(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(width * 4));
        continue;
      }
      const std::size_t size = row_bytes > kShortLine ? reader_.ReadUnsigned16() : reader_.Read8();
      if (size < kLeastInLine || !UnpackBits(reader_.Bytes(size), line)) return {};
      const UInt8* const red = line.data() + (components == 4 ? width : 0);
      for (std::size_t i = 0; i < width; ++i)
        pixels.insert(pixels.end(), {255, red[i], red[width + i], red[2 * width + i]});
    }
    return pixels;
  }

  void DrawPixels(bool has_mask) {
    reader_.Read32();
    const UInt16 row_field = reader_.ReadUnsigned16();
    const SInt32 row_bytes = row_field & kRowBytesMask;
    const Rect bounds = reader_.ReadRect();
    reader_.Read16();
    const SInt16 packing = reader_.Read16();
    reader_.Bytes(12);
    const SInt16 kind = reader_.Read16();
    const SInt16 depth = reader_.Read16();
    const SInt16 components = reader_.Read16();
    reader_.Bytes(14);
    const Rect source = reader_.ReadRect();
    const Rect destination = mapping_.Of(reader_.ReadRect());
    reader_.Read16();
    const OwnedRegion mask = has_mask ? ReadRegion() : nullptr;
    const bool is_known = (row_field & kIsPixMap) != 0 && kind == kDirectPixels && depth == 32 &&
                          (components == 3 || components == 4) &&
                          (packing == kUnpacked || packing == kPackedByComponent) &&
                          !EmptyRect(&bounds) && (bounds.right - bounds.left) * 4 <= row_bytes;
    if (!is_known) reader_.Fail();
    if (!reader_.IsGood()) return;
    std::vector<UInt8> pixels = ReadLines(bounds, row_bytes, packing, components);
    if (pixels.empty()) return reader_.Fail();
    if (packing == kUnpacked)
      for (std::size_t i = 0; i < pixels.size(); i += 4)
        pixels[i] = 255;
    const PixMap map = {pixels.data(), (bounds.right - bounds.left) * 4, bounds, 32};
    CopyBits(&map, &port_.pixels, &source, &destination, srcCopy, mask.get());
  }

  PictureReader reader_;
  Mapping mapping_;
  GraphicsPort& port_;
  DrawingState outer_;
  OwnedRegion outer_clip_;
  std::map<SInt16, SInt16> fonts_;
};

}  // namespace

bool ReadPictureStart(std::span<const UInt8> bytes, PictureStart* start) {
  PictureReader reader(bytes);
  reader.Read16();  // the low bits of the size
  *start = {reader.ReadRect(), {}, kPicture72Dpi, kPicture72Dpi, 0};
  start->source = start->frame;
  if (reader.ReadUnsigned16() != kPictureVersion || reader.ReadUnsigned16() != kPictureVersion2 ||
      reader.ReadUnsigned16() != kPictureHeader)
    return false;
  const SInt16 version = reader.Read16();
  reader.Read16();
  const SInt32 h_resolution = reader.Read32();
  const SInt32 v_resolution = reader.Read32();
  const Rect source = reader.ReadRect();
  reader.Read32();
  if (version == kOpenCPicVersion) {
    start->source = source;
    start->h_resolution = h_resolution;
    start->v_resolution = v_resolution;
  }
  start->size = reader.Place();
  return reader.IsGood() && !EmptyRect(&start->frame) && !EmptyRect(&start->source);
}

OSErr PlayPicture(const UInt8* bytes, std::size_t size, const Rect& destination) {
  PictureStart start;
  const std::span<const UInt8> all(bytes, size);
  if (!ReadPictureStart(all, &start)) return pictureDataErr;
  if (EmptyRect(&destination)) return noErr;
  Player player(all.subspan(start.size), {start.source, destination});
  return player.Play() ? noErr : pictureDataErr;
}

}  // namespace quillmere::drawing
