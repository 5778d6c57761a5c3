// Pictures from any bytes, played at another size, recorded and played again; and icons.
#include <cstddef>

#include "icons.h"
#include "pictures.h"

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, std::size_t size) {
  constexpr Rect kBounds = {0, 0, 48, 64};
  GWorldPtr world = nullptr;
  if (NewGWorld(&world, 32, &kBounds, nullptr, nullptr, 0) != noErr) return 0;
  SetGWorld(world, nullptr);
  quillmere::drawing::PlayPicture(bytes, size, kBounds);
  const OpenCPicParams header = {kBounds, kPicture72Dpi, kPicture72Dpi, kOpenCPicVersion, 0, 0};
  const PicHandle picture = OpenCPicture(&header);
  quillmere::drawing::PlayPicture(bytes, size, {-3, -7, 100, 31});
  ClosePicture();
  DrawPicture(picture, &kBounds);
  KillPicture(picture);
  IconRef icon = nullptr;
  if (GetIconRefFromIconFamilyPtr(bytes, static_cast<Size>(size), &icon) == noErr)
    PlotIconRef(&kBounds, icon);
  ReleaseIconRef(icon);
  DisposeGWorld(world);
  return 0;
}
