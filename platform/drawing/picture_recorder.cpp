#include "picture_recorder_private.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "big_endian.h"
#include "fonts.h"
#include "fonts_private.h"
#include "pack_bits_private.h"
#include "raster_private.h"
#include "rectangles.h"
#include "region_bytes.h"

namespace quillmere::drawing {
namespace {

constexpr int kComponents = 3;
constexpr SInt32 kStripWidth = 4080;  ///< pixels whose line the format can hold

bool IsSame(const RGBColor& a, const RGBColor& b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}
bool IsSame(Point a, Point b) {
  return a.h == b.h && a.v == b.v;
}

}  // namespace

PictureRecorder::PictureRecorder(const OpenCPicParams& header, PicHandle picture)
    : picture_(picture), clip_(RegionOf(kPlane)) {
  const Rect& rect = header.srcRect;
  const auto at_72 = [](SInt32 size, Fixed resolution) {
    return static_cast<SInt32>(
        std::clamp<SInt64>((SInt64{size} * kPicture72Dpi + resolution / 2) / resolution, 1, 32767));
  };
  Add16(0);  // the size, filled in at the end
  AddRect({rect.top, rect.left,
           static_cast<SInt16>(rect.top + at_72(rect.bottom - rect.top, header.vRes)),
           static_cast<SInt16>(rect.left + at_72(rect.right - rect.left, header.hRes))});
  Add16(kPictureVersion);
  Add16(kPictureVersion2);
  Add16(kPictureHeader);
  Add16(kOpenCPicVersion);
  Add16(0);
  Add32(header.hRes);
  Add32(header.vRes);
  AddRect(rect);
  Add32(0);
}

void PictureRecorder::Add16(SInt32 value) {
  bytes_.resize(bytes_.size() + 2);
  WriteU16(bytes_.data() + bytes_.size() - 2, static_cast<UInt16>(value));
}

void PictureRecorder::Add32(SInt32 value) {
  AppendU32(&bytes_, static_cast<UInt32>(value));
}

void PictureRecorder::AddPoint(Point point) {
  Add16(point.v);
  Add16(point.h);
}

void PictureRecorder::AddRect(const Rect& rect) {
  for (const SInt16 edge : {rect.top, rect.left, rect.bottom, rect.right})
    Add16(edge);
}

void PictureRecorder::AddColor(UInt16 code, const RGBColor& color) {
  Add16(code);
  for (const UInt16 component : {color.red, color.green, color.blue})
    Add16(component);
}

void PictureRecorder::AddRegion(RgnHandle region) {
  const std::vector<UInt8> bytes = RegionToBytes(region);
  has_failed_ = has_failed_ || bytes.empty();
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

void PictureRecorder::Align() {
  if (bytes_.size() % 2 != 0) bytes_.push_back(0);
}

void PictureRecorder::UpdateState(const GraphicsPort& port) {
  const DrawingState& state = port.state;
  if (!EqualRgn(clip_.get(), port.clip.get())) {
    Add16(kPictureClip);
    AddRegion(port.clip.get());
    CopyRgn(port.clip.get(), clip_.get());
  }
  if (!IsSame(state.fore, state_.fore)) AddColor(kPictureForeColor, state.fore);
  if (!IsSame(state.back, state_.back)) AddColor(kPictureBackColor, state.back);
  if (!IsSame(state.pen_size, state_.pen_size)) {
    Add16(kPicturePenSize);
    AddPoint(state.pen_size);
  }
  const TextStyle written = state_.style;
  const double text_h = state_.text_h;
  const double text_v = state_.text_v;
  state_ = state;
  state_.style = written;  // these go with the next text
  state_.text_h = text_h;
  state_.text_v = text_v;
}

void PictureRecorder::UpdateText(const DrawingState& state) {
  if (state.style.font != state_.style.font) {
    if (state.style.font >= kFirstFreeFont) {  // such a number is for this process alone
      UInt8 name[256];
      GetFontName(state.style.font, name);
      Add16(kPictureFontName);
      Add16(3 + name[0]);
      Add16(state.style.font);
      bytes_.insert(bytes_.end(), name, name + 1 + name[0]);
      Align();
    }
    Add16(kPictureTextFont);
    Add16(state.style.font);
  }
  if (state.style.face != state_.style.face) {
    Add16(kPictureTextFace);
    bytes_.push_back(state.style.face);
    Align();
  }
  if (state.style.size != state_.style.size) {
    Add16(kPictureTextSize);
    Add16(state.style.size);
  }
  if (state.text_h != state_.text_h || state.text_v != state_.text_v) {
    constexpr SInt16 kWhole = 256;
    const auto part = [](double ratio) {
      return static_cast<SInt16>(std::clamp(std::lround(ratio * kWhole), 1L, 32767L));
    };
    Add16(kPictureTextRatio);
    AddPoint({part(state.text_v), part(state.text_h)});
    AddPoint({kWhole, kWhole});
  }
  state_ = state;
}

void PictureRecorder::Shape(UInt16 code, const GraphicsPort& port, const Rect& rect) {
  UpdateState(port);
  Add16(code);
  AddRect(rect);
}

void PictureRecorder::PaintRegion(const GraphicsPort& port, RgnHandle region) {
  UpdateState(port);
  Add16(kPicturePaintRegion);
  AddRegion(region);
}

void PictureRecorder::Pixels(const GraphicsPort& port, const PixMap& from, const Rect& source,
                             const Rect& destination, RgnHandle mask) {
  Rect seen;
  if (!SectRect(&source, &from.bounds, &seen)) return;
  UpdateState(port);
  // Where a column or row of the source comes to lie.
  const auto mapped = [](SInt32 edge, SInt32 from_edge, SInt32 size, SInt32 to, SInt32 to_size) {
    return static_cast<SInt16>(to + (SInt64{2} * (edge - from_edge) * to_size + size) /
                                        (SInt64{2} * size));
  };
  const SInt32 width = source.right - source.left;
  const SInt32 height = source.bottom - source.top;
  Rect target = destination;
  target.top =
      mapped(seen.top, source.top, height, destination.top, destination.bottom - destination.top);
  target.bottom = mapped(seen.bottom, source.top, height, destination.top,
                         destination.bottom - destination.top);
  for (SInt32 left = seen.left; left < seen.right; left += kStripWidth) {
    Rect strip = seen;
    strip.left = static_cast<SInt16>(left);
    strip.right = static_cast<SInt16>(std::min<SInt32>(left + kStripWidth, seen.right));
    target.left = mapped(strip.left, source.left, width, destination.left,
                         destination.right - destination.left);
    target.right = mapped(strip.right, source.left, width, destination.left,
                          destination.right - destination.left);
    AddStrip(from, strip, target, mask);
  }
}

void PictureRecorder::AddStrip(const PixMap& from, const Rect& source, const Rect& destination,
                               RgnHandle mask) {
  const SInt32 width = source.right - source.left;
  Add16(mask != nullptr ? kPicturePixelsInRegion : kPicturePixels);
  Add32(0xFF);  // where the address was
  Add16(static_cast<SInt32>(kIsPixMap) | (width * 4));
  AddRect(source);
  Add16(0);  // version
  Add16(kPackedByComponent);
  Add32(0);  // size of all lines; they tell their own
  Add32(kPicture72Dpi);
  Add32(kPicture72Dpi);
  Add16(kDirectPixels);
  Add16(32);
  Add16(kComponents);
  Add16(8);
  for (int i = 0; i < 3; ++i)
    Add32(0);  // planes, colour table, reserved
  AddRect(source);
  AddRect(destination);
  Add16(0);  // a plain copy
  if (mask != nullptr) AddRegion(mask);
  for (SInt32 row = source.top; row < source.bottom; ++row)
    AddLine(from, source, row);
  Align();
}

void PictureRecorder::AddLine(const PixMap& from, const Rect& source, SInt32 row) {
  const auto width = static_cast<std::size_t>(source.right - source.left);
  const UInt8* const line = from.baseAddr + std::ptrdiff_t{row - from.bounds.top} * from.rowBytes;
  std::vector<UInt8> planes(kComponents * width);
  for (std::size_t i = 0; i < width; ++i) {
    const auto h = static_cast<SInt32>(i) + source.left - from.bounds.left;
    for (std::size_t k = 0; k < kComponents; ++k)
      planes[k * width + i] =
          from.pixelSize == 1 ? (IsBlack(line, h) ? UInt8{0} : UInt8{255})
                              : line[std::ptrdiff_t{h} * 4 + 1 + static_cast<std::ptrdiff_t>(k)];
  }
  std::vector<UInt8> packed;
  PackBits(planes, &packed);
  if (static_cast<SInt32>(width) * 4 > kShortLine)
    Add16(static_cast<SInt32>(packed.size()));
  else
    bytes_.push_back(static_cast<UInt8>(packed.size()));
  bytes_.insert(bytes_.end(), packed.begin(), packed.end());
}

void PictureRecorder::Text(const GraphicsPort& port, std::span<const UInt8> text) {
  UpdateState(port);
  UpdateText(port.state);
  Add16(kPictureLongText);
  AddPoint(port.state.pen);
  bytes_.push_back(static_cast<UInt8>(text.size()));
  bytes_.insert(bytes_.end(), text.begin(), text.end());
  Align();
}

void PictureRecorder::Finish() {
  Add16(kPictureEnd);
  WriteU16(bytes_.data(), static_cast<UInt16>(bytes_.size()));
  if (has_failed_) return;
  SetHandleSize(picture_, static_cast<Size>(bytes_.size()));
  if (GetHandleSize(picture_) == static_cast<Size>(bytes_.size()))
    std::memcpy(*picture_, bytes_.data(), bytes_.size());
}

}  // namespace quillmere::drawing
