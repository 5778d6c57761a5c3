#include "image_file_info.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "exif.h"
#include "file_references.h"
#include "image_bytes_private.h"
#include "image_decoder.h"
#include "reference_counted.h"

namespace quillmere::imaging {
namespace {

/// More chunks or segments than this before the picture's data are no picture of anyone's.
constexpr int kMostSegments = 20000;
constexpr double kInchesPerMetre = 1 / 0.0254;

/// The headers of one open file, read piece by piece.
class HeaderFile {
 public:
  HeaderFile(int descriptor, UInt64 size) : descriptor_(descriptor), size_(size) {}

  /// Fills `bytes`; false at the file's end (damaged) and on a read error (its status in status()).
  bool Read(UInt64 offset, std::span<UInt8> bytes) {
    if (offset > size_ || bytes.size() > size_ - offset) return false;
    while (!bytes.empty()) {
      const ssize_t count =
          pread(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) status_ = files::StatusOfErrno(errno);
      if (count <= 0) return false;
      bytes = bytes.subspan(static_cast<std::size_t>(count));
      offset += static_cast<UInt64>(count);
    }
    return true;
  }
  UInt64 size() const { return size_; }
  OSStatus status() const { return status_; }

 private:
  int descriptor_;
  UInt64 size_;
  OSStatus status_ = kImageInvalidData;
};

/// PNG: IHDR first, then chunks up to the first IDAT. A chunk is size, type, data, check sum.
bool ReadPngHeaders(HeaderFile& file, ImageFileInfo& info) {
  info.format = "png "_4cc;
  std::array<UInt8, 8> head;
  std::array<UInt8, 13> header;
  if (!file.Read(8, head) || BigEndian32(&head[0]) != header.size() ||
      BigEndian32(&head[4]) != "IHDR"_4cc || !file.Read(16, header)) {
    return false;
  }
  info.width = BigEndian32(&header[0]);
  info.height = BigEndian32(&header[4]);
  const UInt8 color_type = header[9];
  const bool grey = (color_type & 3) == 0;
  bool alpha = (color_type & 4) != 0;
  UInt64 offset = 8 + 12 + header.size();
  for (int i = 0; i < kMostSegments; ++i) {
    if (!file.Read(offset, head)) return false;
    const UInt32 size = BigEndian32(&head[0]);
    const OSType type = BigEndian32(&head[4]);
    if (type == "tRNS"_4cc) alpha = true;
    if (type == "pHYs"_4cc) {
      std::array<UInt8, 9> density;
      if (size != density.size() || !file.Read(offset + 8, density)) return false;
      if (density[8] == 1) {
        info.dots_per_inch_x = BigEndian32(&density[0]) / kInchesPerMetre;
        info.dots_per_inch_y = BigEndian32(&density[4]) / kInchesPerMetre;
      }
    }
    if (type == "IDAT"_4cc) {
      info.depth = alpha ? 32 : grey ? 40 : 24;
      return info.width > 0 && info.height > 0;
    }
    offset += UInt64{12} + size;
  }
  return false;
}

/// Frame headers are C0 to CF but for DHT (C4), JPG (C8) and DAC (CC).
bool IsFrameHeader(UInt8 marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// What one segment (its data without marker and length) says.
void TakeJpegSegment(UInt8 marker, std::span<const UInt8> data, ImageFileInfo& info) {
  if (IsFrameHeader(marker) && data.size() >= 6) {
    info.height = BigEndian16(&data[1]);
    info.width = BigEndian16(&data[3]);
    info.depth = data[5] == 1 ? 40 : 24;
  } else if (marker == 0xE0 && data.size() >= 12 && BigEndian32(data.data()) == "JFIF"_4cc) {
    const double per_inch = data[7] == 1 ? 1 : data[7] == 2 ? 2.54 : 0;
    info.dots_per_inch_x = BigEndian16(&data[8]) * per_inch;
    info.dots_per_inch_y = BigEndian16(&data[10]) * per_inch;
  } else if (marker == 0xE1) {
    const std::span<const UInt8> exif = ExifOfSegment(data);
    if (exif.empty()) return;
    const ExifValues values = ParseExif(exif);
    info.orientation = values.orientation;
    // JFIF comes first in a file that has both, and counts.
    if (info.dots_per_inch_x <= 0 || info.dots_per_inch_y <= 0) {
      info.dots_per_inch_x = values.dots_per_inch_x;
      info.dots_per_inch_y = values.dots_per_inch_y;
    }
  }
}

/// JPEG: segments from the start up to the first scan.
bool ReadJpegHeaders(HeaderFile& file, ImageFileInfo& info) {
  info.format = "jpeg"_4cc;
  UInt64 offset = 2;
  std::vector<UInt8> data;
  for (int i = 0; i < kMostSegments; ++i) {
    std::array<UInt8, 4> head;
    if (!file.Read(offset, head)) return false;
    if (head[0] != 0xFF) return false;
    if (head[1] == 0xFF) {  // fill bytes may stand before a marker
      ++offset;
      continue;
    }
    const UInt8 marker = head[1];
    if (marker == 0xDA) return info.width > 0 && info.height > 0;
    if (marker == 0xD9) return false;
    if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {  // markers without a segment
      offset += 2;
      continue;
    }
    const UInt16 length = BigEndian16(&head[2]);
    if (length < 2) return false;
    if (IsFrameHeader(marker) || marker == 0xE0 || marker == 0xE1) {
      data.resize(length - 2U);
      if (!file.Read(offset + 4, data)) return false;
      TakeJpegSegment(marker, data, info);
    }
    offset += UInt64{2} + length;
  }
  return false;
}

}  // namespace

OSStatus ReadImageFileInfo(int file_descriptor, ImageFileInfo* info) {
  if (!info) return paramErr;
  *info = {};
  struct stat status;
  if (fstat(file_descriptor, &status) != 0) return files::StatusOfErrno(errno);
  if (!S_ISREG(status.st_mode)) return kImageUnknownType;
  HeaderFile file(file_descriptor, static_cast<UInt64>(status.st_size));
  std::array<UInt8, 8> start{};
  const std::size_t available = std::min<UInt64>(start.size(), file.size());
  if (!file.Read(0, std::span(start).first(available))) return file.status();
  ImageFileInfo found;
  found.data_size = file.size();
  bool whole = false;
  if (StartsWith(start, kPngSignature)) {
    whole = ReadPngHeaders(file, found);
  } else if (StartsWith(start, kJpegSignature)) {
    whole = ReadJpegHeaders(file, found);
  } else {
    return kImageUnknownType;
  }
  if (!whole) return file.status();
  *info = found;
  return noErr;
}

OSStatus ReadImageFileInfo(const std::filesystem::path& path, ImageFileInfo* info) {
  // Without O_NONBLOCK a pipe of that name would wait for its writer.
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return files::StatusOfErrno(errno);
  const AtExit close_file([descriptor] { close(descriptor); });
  return ReadImageFileInfo(descriptor, info);
}

}  // namespace quillmere::imaging
