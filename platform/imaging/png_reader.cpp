#include "png_reader_private.h"

#include <png.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <csetjmp>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "color_conversion.h"

namespace quillmere::imaging {
namespace {

/// Bounds for what chunks other than the pixels may take; a colour profile can be some megabytes.
constexpr png_alloc_size_t kLargestChunk = 16U << 20;
/// A row and what a chunk may hold stay below it.
constexpr png_alloc_size_t kLargestAllocation = 2 * kLargestChunk;
constexpr png_uint_32 kMostKeptChunks = 16;
/// The most that the compression of PNG can shrink data.
constexpr UInt64 kMostBytesPerByte = 1100;

/// One PNG in memory, being decoded. libpng reports an error by a jump out of the failing call, so
/// every call that can fail goes through Try, with nothing else in the callable.
class PngReader {
 public:
  explicit PngReader(std::span<const UInt8> bytes) : bytes_(bytes) {}
  PngReader(const PngReader&) = delete;
  PngReader& operator=(const PngReader&) = delete;
  ~PngReader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  OSStatus ReadHeader() {
    png_ = png_create_read_struct_2(
        PNG_LIBPNG_VER_STRING, this, Fail, [](png_structp, png_const_charp) {}, nullptr, Allocate,
        [](png_structp, png_voidp memory) { std::free(memory); });
    if (png_) info_ = png_create_info_struct(png_);
    if (!info_) return memFullErr;
    const bool read = Try([&] {
      png_set_read_fn(png_, this, ReadBytes);
      png_set_user_limits(png_, kMaximumImageSide, kMaximumImageSide);
      png_set_chunk_malloc_max(png_, kLargestChunk);
      png_set_chunk_cache_max(png_, kMostKeptChunks);
      png_set_benign_errors(png_, 1);
      png_read_info(png_, info_);
    });
    if (!read) return status_;
    const UInt64 pixels = UInt64{width()} * height();
    if (pixels > kMaximumImagePixels) return kImageInvalidData;
    const UInt64 raw_bytes = UInt64{png_get_rowbytes(png_, info_)} * height();
    if (raw_bytes / kMostBytesPerByte > bytes_.size()) return kImageUnexpectedEnd;
    return noErr;
  }

  UInt32 width() const { return png_get_image_width(png_, info_); }
  UInt32 height() const { return png_get_image_height(png_, info_); }

  OSStatus Decode(DecodedImage* image) {
    const UInt8 color_type = png_get_color_type(png_, info_);
    const bool alpha =
        (color_type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png_, info_, PNG_INFO_tRNS) != 0;
    const bool deep = png_get_bit_depth(png_, info_) == 16;
    const ColorModel model =
        (color_type & PNG_COLOR_MASK_COLOR) != 0 ? ColorModel::kRgb : ColorModel::kGrey;
    const std::shared_ptr<const ColorConversion> conversion = Conversion(model);
    const bool convert_deep = deep && conversion;
    if (!SetTransforms(alpha, convert_deep)) return status_;
    const OSStatus status =
        convert_deep ? DecodeDeep(*conversion, image->block) : ReadRows(image->block);
    if (status != noErr) return status;
    if (conversion && !convert_deep) {
      for (UInt32 y = 0; y < height(); ++y)
        conversion->ConvertArgb(image->block.Row(y), width());
    }
    image->opaque = !alpha || AllOpaque(image->block);
    return noErr;
  }

 private:
  [[noreturn]] static void Fail(png_structp png, png_const_charp) {
    auto* self = static_cast<PngReader*>(png_get_error_ptr(png));
    self->status_ = self->ended_ ? kImageUnexpectedEnd : kImageInvalidData;
    std::longjmp(self->jump_, 1);
  }

  /// libpng asks for as much as a chunk claims to hold before it reads any of it, and only warns
  /// when that is above its own limit.
  static png_voidp Allocate(png_structp, png_alloc_size_t size) {
    return size <= kLargestAllocation ? std::malloc(size) : nullptr;
  }

  static void ReadBytes(png_structp png, png_bytep destination, std::size_t count) {
    auto* self = static_cast<PngReader*>(png_get_io_ptr(png));
    if (count > self->bytes_.size() - self->position_) {
      self->ended_ = true;
      png_error(png, "end of data");
    }
    std::memcpy(destination, self->bytes_.data() + self->position_, count);
    self->position_ += count;
  }

  template <class Call>
  [[nodiscard]] bool Try(const Call& call) {
    if (setjmp(jump_) != 0) return false;
    call();
    return true;
  }

  /// Asks libpng for ARGB of 8 bits, or RGBA of native 16.
  [[nodiscard]] bool SetTransforms(bool alpha, bool deep) {
    return Try([&] {
      png_set_expand(png_);
      png_set_gray_to_rgb(png_);
      if (deep) {
        if (!alpha) png_set_add_alpha(png_, 0xFFFF, PNG_FILLER_AFTER);
        if constexpr (std::endian::native == std::endian::little) png_set_swap(png_);
      } else {
        png_set_scale_16(png_);  // rounds to the nearest
        if (alpha) {
          png_set_swap_alpha(png_);
        } else {
          png_set_add_alpha(png_, 0xFF, PNG_FILLER_BEFORE);
        }
      }
      png_set_interlace_handling(png_);
      png_read_update_info(png_, info_);
    });
  }

  /// Reads all rows, and the chunks behind them so that a missing end is noticed.
  OSStatus ReadRows(const PixelBlock& target) {
    if (png_get_rowbytes(png_, info_) > target.row_bytes) return kImageInvalidData;
    std::vector<png_bytep> rows(target.height);
    for (UInt32 y = 0; y < target.height; ++y)
      rows[y] = target.Row(y);
    png_byte** const row_pointers = rows.data();
    const bool read = Try([&] {
      png_read_image(png_, row_pointers);
      png_read_end(png_, nullptr);
    });
    return read ? noErr : status_;
  }

  OSStatus DecodeDeep(const ColorConversion& conversion, const PixelBlock& target) {
    PixelBlock deep = target;
    deep.row_bytes = std::size_t{target.width} * 8;
    const FrameMemory memory = FrameMemory::Acquire(deep.row_bytes * target.height);
    if (!memory) return memFullErr;
    deep.pixels = memory.data();
    const OSStatus status = ReadRows(deep);
    if (status != noErr) return status;
    for (UInt32 y = 0; y < target.height; ++y) {
      conversion.ConvertRgba16(reinterpret_cast<const UInt16*>(deep.Row(y)), target.Row(y),
                               target.width);
    }
    return noErr;
  }

  std::shared_ptr<const ColorConversion> Conversion(ColorModel model) const {
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png_, info_, &name, &compression, &profile, &length) != 0) {
      return ConversionOfProfile({profile, length}, model);
    }
    double gamma = 0;
    if (png_get_valid(png_, info_, PNG_INFO_sRGB) != 0) return nullptr;
    if (png_get_gAMA(png_, info_, &gamma) == 0 || !(gamma > 0.01 && gamma < 100)) return nullptr;
    GammaAndPrimaries space = kSrgbPrimaries;
    png_get_cHRM(png_, info_, &space.white[0], &space.white[1], &space.red[0], &space.red[1],
                 &space.green[0], &space.green[1], &space.blue[0], &space.blue[1]);
    const bool usual_gamma = std::abs(gamma * kSrgbPrimaries.exponent - 1) < 0.05;
    if (usual_gamma && (model == ColorModel::kGrey || HasSrgbPrimaries(space))) return nullptr;
    space.exponent = 1 / gamma;
    return ConversionOfGamma(space, model);
  }

  static bool HasSrgbPrimaries(const GammaAndPrimaries& space) {
    const auto near = [](const std::array<double, 2>& a, const std::array<double, 2>& b) {
      return std::abs(a[0] - b[0]) < 0.002 && std::abs(a[1] - b[1]) < 0.002;
    };
    return near(space.white, kSrgbPrimaries.white) && near(space.red, kSrgbPrimaries.red) &&
           near(space.green, kSrgbPrimaries.green) && near(space.blue, kSrgbPrimaries.blue);
  }

  static bool AllOpaque(const PixelBlock& block) {
    for (UInt32 y = 0; y < block.height; ++y) {
      const UInt8* const row = block.Row(y);
      UInt8 all = 255;
      for (std::size_t x = 0; x < block.width; ++x)
        all &= row[x * 4];
      if (all != 255) return false;
    }
    return true;
  }

  std::span<const UInt8> bytes_;
  std::size_t position_ = 0;
  bool ended_ = false;
  OSStatus status_ = kImageInvalidData;
  std::jmp_buf jump_{};
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

OSStatus ReadPngShape(std::span<const UInt8> bytes, ImageShape* shape) {
  PngReader reader(bytes);
  const OSStatus status = reader.ReadHeader();
  if (status == noErr) *shape = {"png "_4cc, reader.width(), reader.height(), 1};
  return status;
}

OSStatus DecodePng(std::span<const UInt8> bytes, DecodedImage* image) {
  PngReader reader(bytes);
  OSStatus status = reader.ReadHeader();
  if (status == noErr) status = AllocateImage(reader.width(), reader.height(), image);
  return status == noErr ? reader.Decode(image) : status;
}

}  // namespace quillmere::imaging
