#include "decoded_images.h"

#include <algorithm>
#include <list>
#include <mutex>

#include "file_references.h"

namespace quillmere::movies {
namespace {

constexpr std::size_t kKeptBytes = 64U << 20;

struct Entry {
  DataSource::Identity identity;
  UInt64 offset;
  UInt64 size;
  std::shared_ptr<const imaging::DecodedImage> image;
};

class Cache {
 public:
  std::shared_ptr<const imaging::DecodedImage> Find(const DataSource::Identity& identity,
                                                    UInt64 offset, UInt64 size) {
    const std::scoped_lock lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
      return entry.identity == identity && entry.offset == offset && entry.size == size;
    });
    if (found == entries_.end()) return nullptr;
    entries_.splice(entries_.begin(), entries_, found);
    return found->image;
  }

  void Add(Entry entry) {
    const std::scoped_lock lock(mutex_);
    bytes_ += entry.image->ByteCount();
    entries_.push_front(std::move(entry));
    while (bytes_ > kKeptBytes && entries_.size() > 1) {
      bytes_ -= entries_.back().image->ByteCount();
      entries_.pop_back();
    }
  }

  void Clear() {
    const std::scoped_lock lock(mutex_);
    entries_.clear();
    bytes_ = 0;
  }

 private:
  std::mutex mutex_;
  std::list<Entry> entries_;  // the latest used first
  std::size_t bytes_ = 0;
};

Cache& TheCache() {
  static Cache cache;
  return cache;
}

}  // namespace

OSStatus ReadSample(const DataSource& source, UInt64 offset, UInt64 size,
                    imaging::FrameMemory* memory) {
  if (offset > source.size() || size > source.size() - offset) return eofErr;
  const auto count = static_cast<std::size_t>(size);
  *memory = imaging::FrameMemory::Acquire(count);
  if (!*memory) return memFullErr;
  return source.Read(offset, {memory->data(), count});
}

OSStatus DecodedImageOf(const DataSource& source, UInt64 offset, UInt64 size,
                        std::shared_ptr<const imaging::DecodedImage>* image) {
  *image = TheCache().Find(source.identity(), offset, size);
  if (*image) return noErr;
  imaging::FrameMemory bytes;
  OSStatus status = ReadSample(source, offset, size, &bytes);
  if (status != noErr) return status;
  auto decoded = std::make_shared<imaging::DecodedImage>();
  status = imaging::DecodeImage({bytes.data(), static_cast<std::size_t>(size)},
                                imaging::Turn::kUpright, decoded.get());
  if (status != noErr) return status;
  *image = decoded;
  TheCache().Add({source.identity(), offset, size, std::move(decoded)});
  return noErr;
}

void ForgetDecodedImages() {
  TheCache().Clear();
}

}  // namespace quillmere::movies
