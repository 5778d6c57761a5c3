#include "compositor.h"

#include <algorithm>
#include <cmath>

#include "decoded_images.h"
#include "decoded_video.h"
#include "fixed_point.h"
#include "placement.h"

namespace quillmere::movies {
namespace {

using imaging::AffineMap;
using imaging::Blend;
using imaging::BlendMode;
using imaging::PixelBlock;
using imaging::Turn;

struct GraphicsModeEntry {
  SInt32 graphics_mode;
  BlendMode blend;
  bool own_size;  ///< an alpha mode
};
constexpr GraphicsModeEntry kGraphicsModes[] = {
    {0x00, BlendMode::kCopy, false},
    {0x40, BlendMode::kCopy, false},
    {0x20, BlendMode::kWeighted, false},
    {0x24, BlendMode::kTransparent, false},
    {0x100, BlendMode::kStraightAlpha, true},
    {0x101, BlendMode::kPremultipliedWhite, true},
    {0x102, BlendMode::kPremultipliedBlack, true},
    {0x104, BlendMode::kWeightedStraightAlpha, true},
};

/// The entry of a mode; one that is not known is drawn as a copy.
const GraphicsModeEntry& EntryOf(SInt32 graphics_mode) {
  const auto* const found = std::find_if(
      std::begin(kGraphicsModes), std::end(kGraphicsModes),
      [&](const GraphicsModeEntry& entry) { return entry.graphics_mode == graphics_mode; });
  return found == std::end(kGraphicsModes) ? kGraphicsModes[0] : *found;
}

Blend BlendOf(const VisibleSample& sample) {
  Blend blend;
  blend.mode = EntryOf(sample.graphics_mode).blend;
  const UInt16 colors[3] = {sample.op_color.red, sample.op_color.green, sample.op_color.blue};
  for (std::size_t c = 0; c < 3; ++c) {
    blend.weight[c] = colors[c];
    blend.key[c] = static_cast<UInt8>(colors[c] >> 8);
  }
  return blend;
}

/// Whether the matrix leaves the picture as it lies, but for place and size.
Turn TurnOf(const MatrixRecord& matrix) {
  const bool upright = matrix.matrix[0][0] > 0 && matrix.matrix[1][1] > 0 &&
                       matrix.matrix[0][1] == 0 && matrix.matrix[1][0] == 0;
  return upright ? Turn::kUpright : Turn::kAsEncoded;
}

/// The map of a picture of that size into the frame.
AffineMap MapOf(const VisibleSample& sample, UInt32 width, UInt32 height, SInt32 left, SInt32 top) {
  const auto& matrix = sample.matrix.matrix;
  double across = 1;
  double down = 1;
  if (!EntryOf(sample.graphics_mode).own_size && sample.track_width > 0 &&
      sample.track_height > 0) {
    across = Fix2X(sample.track_width) / width;
    down = Fix2X(sample.track_height) / height;
  }
  AffineMap map;
  map.xx = Fix2X(matrix[0][0]) * across;
  map.xy = Fix2X(matrix[0][1]) * across;
  map.yx = Fix2X(matrix[1][0]) * down;
  map.yy = Fix2X(matrix[1][1]) * down;
  map.x0 = Fix2X(matrix[2][0]) - left;
  map.y0 = Fix2X(matrix[2][1]) - top;
  return map;
}

/// Cuts a picture that is shown at its own size to its track's box.
PixelBlock CutToTrack(PixelBlock picture, const VisibleSample& sample) {
  const auto side = [](UInt32 own, Fixed box) {
    return std::min(own, static_cast<UInt32>(std::max(0.0, std::ceil(Fix2X(box)))));
  };
  picture.width = side(picture.width, sample.track_width);
  picture.height = side(picture.height, sample.track_height);
  return picture;
}

class Composition {
 public:
  Composition(SInt32 left, SInt32 top, const PixelBlock& frame, std::string* warning)
      : left_(left), top_(top), frame_(frame), warning_(warning) {}

  OSStatus Draw(const std::vector<VisibleSample>& samples) {
    if (samples.empty()) imaging::FillBlack(frame_);
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const OSStatus status = DrawSample(samples[i], i == 0);
      if (status != noErr) return status;
    }
    return noErr;
  }

 private:
  OSStatus DrawSample(const VisibleSample& sample, bool is_back) {
    if (sample.format == "jpeg"_4cc) return DrawJpeg(sample, is_back);
    return sample.format == "png "_4cc ? DrawPng(sample, is_back) : DrawVideo(sample, is_back);
  }

  OSStatus DrawVideo(const VisibleSample& sample, bool is_back) {
    imaging::DecodedImage image;
    const OSStatus status = DecodeVideo(sample, &image);
    if (status == noErr) Place(sample, image, is_back);
    return status;
  }

  /// A JPEG at the very back that covers the frame pixel by pixel is decoded into it without a
  /// detour.
  OSStatus DrawJpeg(const VisibleSample& sample, bool is_back) {
    imaging::FrameMemory memory;
    OSStatus status = ReadSample(*sample.source, sample.offset, sample.size, &memory);
    if (status != noErr) return status;
    const std::span<const UInt8> bytes(memory.data(), static_cast<std::size_t>(sample.size));
    const Turn turn = TurnOf(sample.matrix);
    imaging::ImageShape shape;
    status = imaging::ReadImageShape(bytes, turn, &shape);
    if (status != noErr) return status;
    if (shape.format != "jpeg"_4cc) return imaging::kImageUnknownType;
    const AffineMap map = MapOf(sample, shape.width, shape.height, left_, top_);
    Turn direct = Turn::kAsEncoded;
    if (is_back && EntryOf(sample.graphics_mode).blend == BlendMode::kCopy &&
        CoversFrame(bytes, map, turn, shape, &direct)) {
      std::string warning;
      status = imaging::DecodeJpegInto(bytes, direct, frame_, &warning);
      Note(warning);
      return status;
    }
    imaging::DecodedImage image;
    status = imaging::DecodeImage(bytes, turn, &image);
    if (status != noErr) return status;
    Note(image.warning);
    Place(sample, image, is_back);
    return noErr;
  }

  /// Whether the picture covers the frame pixel by pixel, and how it is decoded then: as it lies,
  /// or turned by its own tag where the map does just the same.
  bool CoversFrame(std::span<const UInt8> bytes, const AffineMap& map, Turn turn,
                   const imaging::ImageShape& shape, Turn* direct) const {
    const auto fits = [this](const imaging::ImageShape& one) {
      return one.width == frame_.width && one.height == frame_.height;
    };
    *direct = turn;
    if (map == AffineMap{}) return fits(shape);
    imaging::ImageShape upright;
    *direct = Turn::kUpright;
    return turn == Turn::kAsEncoded &&
           imaging::ReadImageShape(bytes, Turn::kUpright, &upright) == noErr && fits(upright) &&
           map == imaging::MapOfOrientation(upright.orientation, shape.width, shape.height);
  }

  OSStatus DrawPng(const VisibleSample& sample, bool is_back) {
    std::shared_ptr<const imaging::DecodedImage> image;
    const OSStatus status = DecodedImageOf(*sample.source, sample.offset, sample.size, &image);
    if (status != noErr) return status;
    Place(sample, *image, is_back);
    return noErr;
  }

  void Place(const VisibleSample& sample, const imaging::DecodedImage& image, bool is_back) {
    if (is_back) imaging::FillBlack(frame_);
    const AffineMap map = MapOf(sample, image.block.width, image.block.height, left_, top_);
    const bool own_size = EntryOf(sample.graphics_mode).own_size;
    imaging::DrawPicture(own_size ? CutToTrack(image.block, sample) : image.block, image.opaque,
                         map, BlendOf(sample), frame_);
  }

  void Note(const std::string& warning) {
    if (warning_ && warning_->empty()) *warning_ = warning;
  }

  SInt32 left_;
  SInt32 top_;
  PixelBlock frame_;
  std::string* warning_;
};

}  // namespace

OSStatus ComposeSamples(const std::vector<VisibleSample>& samples, SInt32 left, SInt32 top,
                        const PixelBlock& frame, std::string* warning) {
  if (warning) warning->clear();
  return Composition(left, top, frame, warning).Draw(samples);
}

}  // namespace quillmere::movies
