#include "QT_Planar_Pixmaps.h"

#include <cstring>

#include "big_endian.h"

namespace {

constexpr UInt32 kHeaderSize = sizeof(PlanarPixmapInfoYUV420);

/// The luma plane of a frame, padded.
struct LumaPlane {
  UInt32 row_bytes;
  UInt32 size;
};

UInt32 RoundedUp(SInt32 value, UInt32 step) {
  return (static_cast<UInt32>(value) + step - 1) / step * step;
}

LumaPlane LumaPlaneOf(SInt32 height, SInt32 width) {
  const UInt32 row_bytes = RoundedUp(width, 32);
  return {row_bytes, row_bytes * RoundedUp(height, 4)};
}

/// A number whose bytes in memory are those of `value` from the highest on; its own inverse.
template <class Number>
void Flip(Number* value) {
  UInt8 bytes[sizeof(UInt32)];
  quillmere::WriteU32(bytes, static_cast<UInt32>(*value));
  std::memcpy(value, bytes, sizeof bytes);
}

}  // namespace

void QT_SetY420_Header(PlanarPixmapInfoYUV420* header, SInt32 height, SInt32 width) {
  const LumaPlane luma = LumaPlaneOf(height, width);
  header->offsetY = static_cast<SInt32>(kHeaderSize);
  header->rowBytesY = luma.row_bytes;
  header->offsetCb = static_cast<SInt32>(kHeaderSize + luma.size);
  header->rowBytesCb = luma.row_bytes / 2;
  header->offsetCr = static_cast<SInt32>(kHeaderSize + luma.size + luma.size / 4);
  header->rowBytesCr = luma.row_bytes / 2;
  QT_FlipPlanarPixmapInfoYUV420_NtoB(header);
}

UInt32 QT_GetY420_FrameSize(SInt32 height, SInt32 width) {
  return static_cast<UInt32>(UInt64{LumaPlaneOf(height, width).size} * 3 / 2 + kHeaderSize);
}

void QT_FlipPlanarPixmapInfoYUV420_NtoB(PlanarPixmapInfoYUV420* header) {
  for (SInt32* offset : {&header->offsetY, &header->offsetCb, &header->offsetCr})
    Flip(offset);
  for (UInt32* row_bytes : {&header->rowBytesY, &header->rowBytesCb, &header->rowBytesCr})
    Flip(row_bytes);
}

void QT_FlipPlanarPixmapInfoYUV420_BtoN(PlanarPixmapInfoYUV420* header) {
  QT_FlipPlanarPixmapInfoYUV420_NtoB(header);
}
