// Image sources and destinations: the files of images.h.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <new>

#include "images.h"
#include "images_private.h"

using namespace quillmere::imaging;

const CFStringRef kUTTypePNG = CFSTR("public.png");
const CFStringRef kUTTypeJPEG = CFSTR("public.jpeg");
const CFStringRef kCGImageSourceTypeIdentifierHint = CFSTR("kCGImageSourceTypeIdentifierHint");
const CFStringRef kCGImageDestinationLossyCompressionQuality =
    CFSTR("kCGImageDestinationLossyCompressionQuality");
const CFStringRef kCGImagePropertyDPIWidth = CFSTR("DPIWidth");
const CFStringRef kCGImagePropertyDPIHeight = CFSTR("DPIHeight");

namespace {

/// All bytes of a regular file; false if it can't be read.
bool ReadWholeFile(const std::filesystem::path& path, FrameMemory* memory, std::size_t* size) {
  const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (descriptor < 0) return false;
  const quillmere::AtExit close_file([descriptor] { close(descriptor); });
  struct stat status;
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
  *size = static_cast<std::size_t>(status.st_size);
  *memory = FrameMemory::Acquire(*size);
  if (!*memory) return false;
  std::size_t done = 0;
  while (done < *size) {
    const ssize_t count = read(descriptor, memory->data() + done, *size - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  *size = done;
  return true;
}

/// The number under `key`, or `fallback`.
double NumberOf(CFDictionaryRef options, CFStringRef key, double fallback) {
  const CFNumberRef number =
      options ? quillmere::AsNumber(CFDictionaryGetValue(options, key)) : nullptr;
  double value = fallback;
  if (number) CFNumberGetValue(number, kCFNumberFloat64Type, &value);
  return std::isfinite(value) ? value : fallback;
}

}  // namespace

CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef) {
  if (!url) return nullptr;
  FrameMemory file;
  std::size_t size = 0;
  if (!ReadWholeFile(quillmere::PathOf(url), &file, &size)) return nullptr;
  auto decoded = std::make_shared<DecodedImage>();
  const OSStatus status = DecodeImage({file.data(), size}, Turn::kUpright, decoded.get());
  if (status == kImageUnknownType) return nullptr;
  auto source = std::make_unique<CGImageSource>();
  source->status = status;
  if (status == noErr) {
    if (!decoded->warning.empty()) source->status = kImageUnexpectedEnd;
    source->decoded = std::move(decoded);
  }
  return source.release();
}

SInt32 CGImageSourceGetStatus(CGImageSourceRef source) {
  return source ? source->status : paramErr;
}

CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, std::size_t index,
                                           CFDictionaryRef) {
  if (!source || !source->decoded || index != 0) return nullptr;
  auto image = std::make_unique<CGImage>();
  image->block = source->decoded->block;
  image->alpha_info = kCGImageAlphaFirst;
  image->decoded = source->decoded;
  return image.release();
}

CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type,
                                                      std::size_t count, CFDictionaryRef) {
  if (!url || count != 1 || CFStringCompare(type, kUTTypeJPEG, 0) != kCFCompareEqualTo)
    return nullptr;
  auto destination = std::make_unique<CGImageDestination>();
  destination->path = quillmere::PathOf(url);
  const std::filesystem::path folder = destination->path.parent_path();
  if (access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) != 0) return nullptr;
  return destination.release();
}

void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef options) {
  if (!destination || !image || destination->image) return;
  CFRetain(image);
  destination->image = image;
  constexpr double kUsualQuality = 0.8;
  const double quality =
      NumberOf(options, kCGImageDestinationLossyCompressionQuality, kUsualQuality);
  destination->options.quality =
      static_cast<int>(std::lround(std::fmin(1, std::fmax(0, quality)) * 100));
  destination->options.dots_per_inch_x = NumberOf(options, kCGImagePropertyDPIWidth, 0);
  destination->options.dots_per_inch_y = NumberOf(options, kCGImagePropertyDPIHeight, 0);
}

Boolean CGImageDestinationFinalize(CGImageDestinationRef destination) {
  if (!destination || !destination->image) return false;
  const CGImageRef image = destination->image;
  const bool alpha_first = image->alpha_info == kCGImageAlphaPremultipliedFirst ||
                           image->alpha_info == kCGImageAlphaFirst ||
                           image->alpha_info == kCGImageAlphaNoneSkipFirst;
  return WriteJpegFile(image->block, alpha_first ? PixelOrder::kArgb : PixelOrder::kRgba,
                       destination->options, destination->path) == noErr;
}
