#include "jpeg_writer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "file_references.h"
#include "jpeg_private.h"
#include "reference_counted.h"

namespace quillmere::imaging {
namespace {

constexpr std::size_t kBufferSize = 256U << 10;
constexpr UInt32 kRowsAtOnce = 16;
constexpr int kMostNames = 100;

/// A new file under a hidden name beside `path`, which goes away unless it is renamed.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& path) : final_(path) {
    for (int i = 0; i < kMostNames && descriptor_ < 0; ++i) {
      // Short, so that a name of the full length can be written too.
      name_ = path.parent_path() /
              (".quillmere-" + std::to_string(getpid()) + "-" + std::to_string(i) + ".jpg.part");
      descriptor_ = open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
      if (descriptor_ < 0 && errno != EEXIST) break;
    }
    if (descriptor_ < 0) status_ = files::StatusOfErrno(errno);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (descriptor_ < 0) return;
    close(descriptor_);
    if (!renamed_) unlink(name_.c_str());
  }

  OSStatus status() const { return status_; }

  bool Write(const UInt8* bytes, std::size_t count) {
    while (count > 0) {
      const ssize_t written = write(descriptor_, bytes, count);
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) {
        status_ = files::StatusOfErrno(errno);
        return false;
      }
      bytes += written;
      count -= static_cast<std::size_t>(written);
    }
    return true;
  }

  OSStatus Rename() {
    if (rename(name_.c_str(), final_.c_str()) != 0) return files::StatusOfErrno(errno);
    renamed_ = true;
    return noErr;
  }

 private:
  std::filesystem::path final_;
  std::filesystem::path name_;
  int descriptor_ = -1;
  OSStatus status_ = noErr;
  bool renamed_ = false;
};

/// libjpeg's output: a buffer that is written to the file when it is full.
struct FileOutput {
  jpeg_destination_mgr manager{};  // first: libjpeg hands its address back
  TemporaryFile* file = nullptr;
  std::vector<UInt8> buffer = std::vector<UInt8>(kBufferSize);

  explicit FileOutput(TemporaryFile& to) : file(&to) {
    manager.init_destination = [](j_compress_ptr compress) { Of(compress)->Restart(); };
    manager.empty_output_buffer = [](j_compress_ptr compress) -> boolean {
      FileOutput* const output = Of(compress);
      if (!output->file->Write(output->buffer.data(), kBufferSize)) GiveUp(compress);
      output->Restart();
      return TRUE;
    };
    manager.term_destination = [](j_compress_ptr compress) {
      FileOutput* const output = Of(compress);
      const std::size_t rest = kBufferSize - output->manager.free_in_buffer;
      if (!output->file->Write(output->buffer.data(), rest)) GiveUp(compress);
    };
  }

 private:
  static FileOutput* Of(j_compress_ptr compress) {
    return reinterpret_cast<FileOutput*>(compress->dest);
  }
  static void GiveUp(j_compress_ptr compress) {
    compress->err->msg_code = JERR_FILE_WRITE;
    compress->err->error_exit(reinterpret_cast<j_common_ptr>(compress));
  }
  void Restart() {
    manager.next_output_byte = buffer.data();
    manager.free_in_buffer = kBufferSize;
  }
};

/// JFIF holds whole numbers up to 65535, per inch (unit 1) or per centimetre (unit 2).
void SetDensity(jpeg_compress_struct& compress, double x, double y) {
  const auto fits = [](double value) { return value >= 0.5 && value < 65535.5; };
  if (!fits(x) || !fits(y)) return;
  const auto whole = [](double value) { return std::abs(value - std::round(value)) < 1e-3; };
  const double x_metric = x / 2.54;
  const double y_metric = y / 2.54;
  const bool metric = !(whole(x) && whole(y)) && whole(x_metric) && whole(y_metric) &&
                      fits(x_metric) && fits(y_metric);
  compress.density_unit = metric ? 2 : 1;
  compress.X_density = static_cast<UINT16>(std::lround(metric ? x_metric : x));
  compress.Y_density = static_cast<UINT16>(std::lround(metric ? y_metric : y));
}

void Compress(jpeg_compress_struct& compress, const PixelBlock& picture, PixelOrder order,
              const JpegOptions& options) {
  compress.image_width = picture.width;
  compress.image_height = picture.height;
  compress.input_components = 4;
  compress.in_color_space = order == PixelOrder::kArgb ? JCS_EXT_XRGB : JCS_EXT_RGBX;
  jpeg_set_defaults(&compress);  // YCbCr, 4:2:0
  jpeg_set_quality(&compress, std::clamp(options.quality, 1, 100), TRUE);
  compress.dct_method = JDCT_ISLOW;
  SetDensity(compress, options.dots_per_inch_x, options.dots_per_inch_y);
  jpeg_start_compress(&compress, TRUE);
  while (compress.next_scanline < picture.height) {
    std::array<JSAMPROW, kRowsAtOnce> rows;
    const UInt32 count = std::min(kRowsAtOnce, picture.height - compress.next_scanline);
    for (UInt32 i = 0; i < count; ++i)
      rows[i] = picture.Row(compress.next_scanline + i);
    jpeg_write_scanlines(&compress, rows.data(), count);
  }
  jpeg_finish_compress(&compress);
}

}  // namespace

OSStatus WriteJpegFile(const PixelBlock& picture, PixelOrder order, const JpegOptions& options,
                       const std::filesystem::path& path) {
  if (!picture.pixels || picture.width == 0 || picture.height == 0 ||
      picture.width > JPEG_MAX_DIMENSION || picture.height > JPEG_MAX_DIMENSION) {
    return paramErr;
  }
  TemporaryFile file(path);
  if (file.status() != noErr) return file.status();
  JpegErrors errors;
  FileOutput output(file);
  jpeg_compress_struct compress{};
  compress.err = &errors.manager;
  if (!errors.Try([&] { jpeg_create_compress(&compress); })) return memFullErr;
  const AtExit destroy([&] { jpeg_destroy_compress(&compress); });
  compress.dest = &output.manager;
  if (!errors.Try([&] { Compress(compress, picture, order, options); })) {
    return file.status() != noErr ? file.status() : memFullErr;
  }
  return file.Rename();
}

}  // namespace quillmere::imaging
