#include "jpeg_reader_private.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>

#include "color_conversion.h"
#include "exif.h"
#include "jpeg_private.h"
#include "orientation.h"

namespace quillmere::imaging {
namespace {

/// No encoder makes more scans; each costs a pass over the whole picture, however few bytes it has.
constexpr int kMostScans = 200;
/// Bytes for which pixels are allocated without asking how many bytes the file has.
constexpr UInt64 kAlwaysDecodedPixels = UInt64{16} << 20;
/// A block of 64 pixels takes at least about one bit in the densest coding in use.
constexpr UInt64 kMostPixelsPerByte = 1024;
/// Rows turned at once: a cache line of the target is then written whole.
constexpr UInt32 kStripRows = 16;

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

/// One JPEG in memory, being decoded.
class JpegReader {
 public:
  explicit JpegReader(std::span<const UInt8> bytes) : bytes_(bytes) {}
  JpegReader(const JpegReader&) = delete;
  JpegReader& operator=(const JpegReader&) = delete;
  ~JpegReader() {
    if (created_) jpeg_destroy_decompress(&decompress_);
  }

  OSStatus ReadHeader() {
    decompress_.err = &errors_.manager;
    if (!errors_.Try([&] { jpeg_create_decompress(&decompress_); })) return memFullErr;
    created_ = true;
    progress_.progress_monitor = [](j_common_ptr common) {
      // Only called for decompressors here.
      if (reinterpret_cast<j_decompress_ptr>(common)->input_scan_number > kMostScans) {
        common->err->msg_code = JERR_BAD_STATE;
        common->err->error_exit(common);
      }
    };
    decompress_.progress = &progress_;
    const bool read = errors_.Try([&] {
      jpeg_mem_src(&decompress_, bytes_.data(), static_cast<unsigned long>(bytes_.size()));
      jpeg_save_markers(&decompress_, JPEG_APP0 + 1, 0xFFFF);
      jpeg_save_markers(&decompress_, JPEG_APP0 + 2, 0xFFFF);
      jpeg_read_header(&decompress_, TRUE);
    });
    if (!read) return FailureStatus();
    const UInt64 pixels = UInt64{decompress_.image_width} * decompress_.image_height;
    if (pixels > kMaximumImagePixels) return kImageInvalidData;
    if (pixels > kAlwaysDecodedPixels && pixels / kMostPixelsPerByte > bytes_.size()) {
      return kImageUnexpectedEnd;
    }
    return noErr;
  }

  UInt8 Orientation() const {
    for (const jpeg_marker_struct* marker : Markers()) {
      if (marker->marker != JPEG_APP0 + 1) continue;
      const std::span<const UInt8> exif = ExifOfSegment({marker->data, marker->data_length});
      if (!exif.empty()) return ParseExif(exif).orientation;
    }
    return 1;
  }
  UInt32 width() const { return decompress_.image_width; }
  UInt32 height() const { return decompress_.image_height; }
  /// What libjpeg first found wrong with the data; empty for nothing.
  const char* warning() const { return errors_.first_warning; }

  OSStatus Decode(UInt8 orientation, const PixelBlock& target) {
    // A file that ends before its first scan has nothing to show.
    if (decompress_.src->bytes_in_buffer <= 2) return kImageUnexpectedEnd;
    PrepareColors();
    if (!errors_.Try([&] { jpeg_start_decompress(&decompress_); })) return FailureStatus();
    if (!(orientation == 1 ? DecodeInPlace(target) : DecodeTurned(orientation, target))) {
      return FailureStatus();
    }
    // Rows are all there; what stands behind them does not matter.
    return noErr;
  }

 private:
  std::vector<jpeg_saved_marker_ptr> Markers() const {
    std::vector<jpeg_saved_marker_ptr> markers;
    for (jpeg_saved_marker_ptr marker = decompress_.marker_list; marker; marker = marker->next) {
      markers.push_back(marker);
    }
    return markers;
  }

  OSStatus FailureStatus() const {
    const int code = errors_.manager.msg_code;
    if (code == JERR_OUT_OF_MEMORY) return memFullErr;
    // The end of the data is met as a warning before it leads to an error.
    const bool ended = code == JERR_INPUT_EOF || code == JERR_INPUT_EMPTY ||
                       (decompress_.src && decompress_.src->bytes_in_buffer == 0);
    return ended ? kImageUnexpectedEnd : kImageInvalidData;
  }

  void PrepareColors() {
    const bool inks =
        decompress_.jpeg_color_space == JCS_CMYK || decompress_.jpeg_color_space == JCS_YCCK;
    const bool grey = decompress_.jpeg_color_space == JCS_GRAYSCALE;
    cmyk_ = inks;
    decompress_.out_color_space = inks ? JCS_CMYK : JCS_EXT_ARGB;
    // The defaults of djpeg: exact integer transform, smooth chroma.
    decompress_.dct_method = JDCT_ISLOW;
    decompress_.do_fancy_upsampling = TRUE;
    JOCTET* raw = nullptr;
    unsigned length = 0;
    boolean found = FALSE;
    if (!errors_.Try([&] { found = jpeg_read_icc_profile(&decompress_, &raw, &length); })) return;
    const std::unique_ptr<JOCTET, FreeMemory> profile(raw);
    if (!found) return;
    const ColorModel model = inks ? ColorModel::kCmyk : grey ? ColorModel::kGrey : ColorModel::kRgb;
    conversion_ = ConversionOfProfile({profile.get(), length}, model);
  }

  /// Reads up to `count` rows to `row` and on; false on a failure, and when no row comes.
  bool ReadRows(UInt8* row, std::size_t row_bytes, UInt32 count) {
    std::array<JSAMPROW, kStripRows> rows;
    count = std::min(count, kStripRows);
    for (UInt32 i = 0; i < count; ++i)
      rows[i] = row + i * row_bytes;
    UInt32 done = 0;
    while (done < count) {
      JDIMENSION read = 0;
      const bool good = errors_.Try(
          [&] { read = jpeg_read_scanlines(&decompress_, rows.data() + done, count - done); });
      if (!good || read == 0) return false;
      done += read;
    }
    for (UInt32 i = 0; i < count; ++i)
      Colorize(row + i * row_bytes);
    return true;
  }

  void Colorize(UInt8* row) const {
    if (cmyk_) {
      InksToArgb(row);
    } else if (conversion_) {
      conversion_->ConvertArgb(row, width());
    }
  }

  /// Files with an Adobe marker hold 255 for no ink. Without a profile an ink takes away its share
  /// of what the black leaves: red = (255 - cyan) x (255 - black) / 255, rounded.
  void InksToArgb(UInt8* row) const {
    const std::size_t count = std::size_t{width()} * 4;
    const bool inverted = decompress_.saw_Adobe_marker;
    if (conversion_) {
      if (inverted) std::transform(row, row + count, row, [](UInt8 v) { return UInt8(255 - v); });
      conversion_->ConvertCmyk(row, row, width());
      return;
    }
    if (!inverted) std::transform(row, row + count, row, [](UInt8 v) { return UInt8(255 - v); });
    for (std::size_t i = 0; i < count; i += 4) {
      const unsigned black = row[i + 3];
      for (std::size_t c = 3; c > 0; --c) {
        row[i + c] = static_cast<UInt8>((row[i + c - 1] * black + 127) / 255);
      }
      row[i] = 255;
    }
  }

  bool DecodeInPlace(const PixelBlock& target) {
    for (UInt32 y = 0; y < target.height; y += kStripRows) {
      if (!ReadRows(target.Row(y), target.row_bytes, target.height - y)) return false;
    }
    return true;
  }

  bool DecodeTurned(UInt8 orientation, const PixelBlock& target) {
    DecodedImage strip;
    if (AllocateImage(width(), kStripRows, &strip) != noErr) {
      errors_.manager.msg_code = JERR_OUT_OF_MEMORY;
      return false;
    }
    for (UInt32 y = 0; y < height(); y += kStripRows) {
      strip.block.height = std::min(kStripRows, height() - y);
      if (!ReadRows(strip.block.pixels, strip.block.row_bytes, strip.block.height)) return false;
      PlaceRows(strip.block, y, orientation, target);
    }
    return true;
  }

  std::span<const UInt8> bytes_;
  JpegErrors errors_;
  jpeg_progress_mgr progress_{};
  jpeg_decompress_struct decompress_{};
  bool created_ = false;
  bool cmyk_ = false;
  std::shared_ptr<const ColorConversion> conversion_;
};

OSStatus OpenJpeg(JpegReader& reader, Turn turn, ImageShape* shape) {
  const OSStatus status = reader.ReadHeader();
  if (status != noErr) return status;
  shape->format = "jpeg"_4cc;
  shape->orientation = turn == Turn::kUpright ? reader.Orientation() : UInt8{1};
  shape->width = reader.width();
  shape->height = reader.height();
  if (SwapsSides(shape->orientation)) std::swap(shape->width, shape->height);
  return noErr;
}

}  // namespace

OSStatus ReadJpegShape(std::span<const UInt8> bytes, Turn turn, ImageShape* shape) {
  JpegReader reader(bytes);
  return OpenJpeg(reader, turn, shape);
}

OSStatus DecodeJpeg(std::span<const UInt8> bytes, Turn turn, DecodedImage* image) {
  JpegReader reader(bytes);
  ImageShape shape;
  OSStatus status = OpenJpeg(reader, turn, &shape);
  if (status == noErr) status = AllocateImage(shape.width, shape.height, image);
  if (status == noErr) status = reader.Decode(shape.orientation, image->block);
  image->opaque = true;
  image->warning = reader.warning();
  return status;
}

OSStatus DecodeJpegInto(std::span<const UInt8> bytes, Turn turn, const PixelBlock& target,
                        std::string* warning) {
  JpegReader reader(bytes);
  ImageShape shape;
  OSStatus status = OpenJpeg(reader, turn, &shape);
  if (status == noErr && (shape.width != target.width || shape.height != target.height)) {
    status = paramErr;
  }
  if (status == noErr) status = reader.Decode(shape.orientation, target);
  if (warning) *warning = reader.warning();
  return status;
}

}  // namespace quillmere::imaging
