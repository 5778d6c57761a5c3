#include "icons.h"

#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "drawing.h"
#include "pictures.h"

struct IconRecord {
  std::vector<UInt8> family;
};

namespace {

constexpr std::size_t kHeader = 8;

struct Header {
  OSType type;
  UInt32 size;  ///< with itself
};
static_assert(sizeof(Header) == kHeader);

Header HeaderAt(std::span<const UInt8> bytes, std::size_t at) {
  Header header;
  std::memcpy(&header, bytes.data() + at, sizeof header);
  return header;
}

/// Whether bytes are a family whose elements fill it.
bool IsFamily(std::span<const UInt8> bytes) {
  if (bytes.size() < kHeader) return false;
  const Header family = HeaderAt(bytes, 0);
  if (family.type != kIconFamilyType || family.size != bytes.size()) return false;
  std::size_t at = kHeader;
  while (bytes.size() - at >= kHeader) {
    const Header element = HeaderAt(bytes, at);
    if (element.size < kHeader || element.size > bytes.size() - at) return false;
    at += element.size;
  }
  return at == bytes.size();
}

std::span<const UInt8> BytesOf(Handle handle) {
  if (handle == nullptr || *handle == nullptr) return {};
  return {reinterpret_cast<const UInt8*>(*handle), static_cast<std::size_t>(GetHandleSize(handle))};
}

/// Where an element of a family begins; its size if there is none.
std::size_t PlaceOf(std::span<const UInt8> family, OSType type) {
  std::size_t at = kHeader;
  while (at < family.size() && HeaderAt(family, at).type != type)
    at += HeaderAt(family, at).size;
  return at;
}

/// The data of an element; empty if there is none.
std::span<const UInt8> ElementOf(std::span<const UInt8> family, OSType type) {
  const std::size_t at = PlaceOf(family, type);
  if (at == family.size()) return {};
  return family.subspan(at + kHeader, HeaderAt(family, at).size - kHeader);
}

void Append(const Header& header, std::vector<UInt8>* bytes) {
  const auto* const words = reinterpret_cast<const UInt8*>(&header);
  bytes->insert(bytes->end(), words, words + sizeof header);
}

OSErr Fill(Handle handle, std::span<const UInt8> bytes) {
  SetHandleSize(handle, static_cast<Size>(bytes.size()));
  if (MemError() == noErr && !bytes.empty()) std::memcpy(*handle, bytes.data(), bytes.size());
  return MemError();
}

OSErr PlotPixels(const Rect& rect, std::span<const UInt8> element) {
  constexpr SInt16 kSide = 256;
  constexpr std::size_t kRow = std::size_t{4} * kSide;
  if (element.size() != kRow * kSide) return noIconDataAvailableErr;
  std::vector<UInt8> pixels(element.begin(), element.end());
  const Rect bounds = {0, 0, kSide, kSide};
  GWorldPtr world = nullptr;
  const OSErr status = QTNewGWorldFromPtr(&world, 32, &bounds, nullptr, nullptr, 0, pixels.data(),
                                          static_cast<SInt32>(kRow));
  if (status) return status;
  GrafPtr port = nullptr;
  GetPort(&port);
  CopyBits(GetPortBitMapForCopyBits(world), GetPortBitMapForCopyBits(port), &bounds, &rect, srcCopy,
           nullptr);
  DisposeGWorld(world);
  return noErr;
}

}  // namespace

IconFamilyHandle NewIconFamily() {
  constexpr Header kEmpty = {kIconFamilyType, kHeader};
  Handle family = nullptr;
  PtrToHand(&kEmpty, &family, sizeof kEmpty);
  return family;
}

OSErr SetIconFamilyData(IconFamilyHandle family, OSType element, Handle data) {
  const std::span<const UInt8> old = BytesOf(family);
  if (!IsFamily(old)) return static_cast<OSErr>(paramErr);
  const std::size_t at = PlaceOf(old, element);
  std::vector<UInt8> bytes(old.begin(), old.begin() + static_cast<std::ptrdiff_t>(at));
  const std::span<const UInt8> added = BytesOf(data);
  if (!added.empty()) {
    Append({element, static_cast<UInt32>(kHeader + added.size())}, &bytes);
    bytes.insert(bytes.end(), added.begin(), added.end());
  }
  if (at < old.size()) {
    const auto rest = old.subspan(at + HeaderAt(old, at).size);
    bytes.insert(bytes.end(), rest.begin(), rest.end());
  }
  const auto size = static_cast<UInt32>(bytes.size());
  std::memcpy(bytes.data() + offsetof(Header, size), &size, sizeof size);
  return Fill(family, bytes);
}

OSErr GetIconFamilyData(IconFamilyHandle family, OSType element, Handle data) {
  if (!IsFamily(BytesOf(family)) || data == nullptr) return static_cast<OSErr>(paramErr);
  const std::span<const UInt8> found = ElementOf(BytesOf(family), element);
  return found.empty() ? noIconDataAvailableErr : Fill(data, found);
}

OSErr GetIconRefFromIconFamilyPtr(const void* family, Size size, IconRef* icon) {
  if (icon == nullptr) return static_cast<OSErr>(paramErr);
  *icon = nullptr;
  if (family == nullptr || size < 0) return static_cast<OSErr>(paramErr);
  const std::span<const UInt8> bytes(static_cast<const UInt8*>(family),
                                     static_cast<std::size_t>(size));
  if (!IsFamily(bytes)) return static_cast<OSErr>(paramErr);
  *icon = new IconRecord{{bytes.begin(), bytes.end()}};
  return noErr;
}

OSErr ReleaseIconRef(IconRef icon) {
  const std::unique_ptr<IconRecord> last(icon);
  return icon != nullptr ? OSErr{noErr} : invalidIconRefErr;
}

OSErr PlotIconRef(const Rect* rect, IconRef icon) {
  if (icon == nullptr) return invalidIconRefErr;
  if (rect == nullptr) return static_cast<OSErr>(paramErr);
  const std::span<const UInt8> picture = ElementOf(icon->family, "PICT"_4cc);
  if (!picture.empty())
    return quillmere::drawing::PlayPicture(picture.data(), picture.size(), *rect);
  return PlotPixels(*rect, ElementOf(icon->family, "ic08"_4cc));
}
