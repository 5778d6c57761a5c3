#include "graphics_ports.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "picture_recorder_private.h"
#include "ports_private.h"
#include "rectangles.h"

namespace {

using quillmere::drawing::CurrentPort;
using quillmere::drawing::kPlane;

thread_local GraphicsPort* current_port = nullptr;

SInt32 WidthOf(const Rect& rect) {
  return rect.right - rect.left;
}
SInt32 HeightOf(const Rect& rect) {
  return rect.bottom - rect.top;
}

/// The bytes of a line, pairs of `2vuy` pixels being whole.
SInt32 RowBytesOf(SInt16 depth, const Rect& bounds) {
  const SInt32 width = WidthOf(bounds);
  if (depth == 1) return (width + 31) / 32 * 4;
  return depth == 16 ? (width + 1) / 2 * 4 : width * 4;
}

/// Gives a port new clear pixels; false without memory.
bool AllocatePixels(GraphicsPort* port, SInt16 depth, const Rect& bounds) {
  const SInt32 row_bytes = RowBytesOf(depth, bounds);
  const auto size =
      static_cast<std::size_t>(row_bytes) * static_cast<std::size_t>(HeightOf(bounds));
  std::unique_ptr<UInt8[]> memory(new (std::nothrow) UInt8[size]());
  if (!memory) return false;
  for (std::size_t i = 0; depth == 16 && i < size; ++i)
    memory[i] = i % 2 == 0 ? 128 : 16;
  port->pixels = {memory.get(), row_bytes, bounds, depth};
  port->memory = std::move(memory);
  return true;
}

/// The bits of a pixel of a format; 0 for one that worlds don't have.
SInt16 DepthOf(OSType format) {
  if (format == 1) return 1;
  if (format == "2vuy"_4cc) return 16;
  return format == 32 || format == "ARGB"_4cc ? SInt16{32} : SInt16{0};
}

}  // namespace

GraphicsPort::GraphicsPort() : clip(quillmere::drawing::RegionOf(kPlane)) {}
GraphicsPort::~GraphicsPort() = default;

void GetPort(GrafPtr* port) {
  if (port != nullptr) *port = &CurrentPort();
}

void SetPort(GrafPtr port) {
  current_port = port;
}

void GetGWorld(CGrafPtr* port, GDHandle* device) {
  GetPort(port);
  if (device != nullptr) *device = nullptr;
}

void SetGWorld(CGrafPtr port, GDHandle /*device*/) {
  SetPort(port);
}

OSErr NewGWorld(GWorldPtr* world, SInt16 depth, const Rect* bounds, CTabHandle colors,
                GDHandle device, GWorldFlags flags) {
  const OSType format = depth == 0 ? 32 : static_cast<OSType>(depth);
  return QTNewGWorld(world, format, bounds, colors, device, flags);
}

OSErr QTNewGWorld(GWorldPtr* world, OSType format, const Rect* bounds, CTabHandle /*colors*/,
                  GDHandle /*device*/, GWorldFlags /*flags*/) {
  if (world == nullptr) return paramErr;
  *world = nullptr;
  if (bounds == nullptr || EmptyRect(bounds)) return paramErr;
  if (DepthOf(format) == 0) return cDepthErr;
  auto port = std::make_unique<GraphicsPort>();
  if (!AllocatePixels(port.get(), DepthOf(format), *bounds)) return memFullErr;
  *world = port.release();
  return noErr;
}

OSErr QTNewGWorldFromPtr(GWorldPtr* world, OSType format, const Rect* bounds, CTabHandle /*colors*/,
                         GDHandle /*device*/, GWorldFlags /*flags*/, void* pixels,
                         SInt32 rowBytes) {
  if (world == nullptr) return paramErr;
  *world = nullptr;
  if (bounds == nullptr || EmptyRect(bounds) || pixels == nullptr) return paramErr;
  const SInt16 depth = DepthOf(format);
  if (depth < 16) return cDepthErr;
  if (rowBytes < RowBytesOf(depth, *bounds)) return paramErr;
  auto port = std::make_unique<GraphicsPort>();
  port->pixels = {static_cast<UInt8*>(pixels), rowBytes, *bounds, depth};
  *world = port.release();
  return noErr;
}

void DisposeGWorld(GWorldPtr world) {
  const std::unique_ptr<GraphicsPort> last(world);
  if (world != nullptr && current_port == world) current_port = nullptr;
}

PixMapHandle GetGWorldPixMap(GWorldPtr world) {
  return world != nullptr ? &world->handle : nullptr;
}

const BitMap* GetPortBitMapForCopyBits(CGrafPtr port) {
  return port != nullptr ? &port->pixels : nullptr;
}

Rect* GetPortBounds(CGrafPtr port, Rect* bounds) {
  if (bounds != nullptr) *bounds = port != nullptr ? port->pixels.bounds : Rect{};
  return bounds;
}

void GetClip(RgnHandle region) {
  CopyRgn(CurrentPort().clip.get(), region);
}

void SetClip(RgnHandle region) {
  CopyRgn(region, CurrentPort().clip.get());
}

void ClipRect(const Rect* rect) {
  if (rect != nullptr) RectRgn(CurrentPort().clip.get(), rect);
}

void LocalToGlobal(Point* point) {
  if (point == nullptr) return;
  const Point origin = CurrentPort().on_screen;
  *point = {static_cast<SInt16>(point->v + origin.v), static_cast<SInt16>(point->h + origin.h)};
}

void GlobalToLocal(Point* point) {
  if (point == nullptr) return;
  const Point origin = CurrentPort().on_screen;
  *point = {static_cast<SInt16>(point->v - origin.v), static_cast<SInt16>(point->h - origin.h)};
}

namespace quillmere::drawing {

OwnedRegion RegionOf(const Rect& rect) {
  OwnedRegion region(NewRgn());
  RectRgn(region.get(), &rect);
  return region;
}

OwnedRegion CopyOf(RgnHandle region) {
  OwnedRegion copy(NewRgn());
  CopyRgn(region, copy.get());
  return copy;
}

GraphicsPort& CurrentPort() {
  static thread_local GraphicsPort own;
  return current_port != nullptr ? *current_port : own;
}

CGrafPtr NewScreenPort(SInt32 width, SInt32 height, Point on_screen) {
  auto port = std::make_unique<GraphicsPort>();
  return PlaceScreenPort(port.get(), width, height, on_screen) ? port.release() : nullptr;
}

bool PlaceScreenPort(CGrafPtr port, SInt32 width, SInt32 height, Point on_screen) {
  constexpr SInt32 kMost = 32767;
  const Rect bounds = {0, 0, static_cast<SInt16>(std::clamp(height, 0, kMost)),
                       static_cast<SInt16>(std::clamp(width, 0, kMost))};
  port->on_screen = on_screen;
  if (port->memory && EqualRect(&bounds, &port->pixels.bounds)) return true;
  const std::unique_ptr<UInt8[]> old_memory = std::move(port->memory);
  const PixMap old = port->pixels;
  if (!AllocatePixels(port, 32, bounds)) return false;
  const auto kept = static_cast<std::size_t>(std::min(old.rowBytes, port->pixels.rowBytes));
  for (SInt32 y = 0; y < std::min(old.bounds.bottom, bounds.bottom); ++y)
    std::memcpy(port->pixels.baseAddr + std::ptrdiff_t{y} * port->pixels.rowBytes,
                old.baseAddr + std::ptrdiff_t{y} * old.rowBytes, kept);
  return true;
}

}  // namespace quillmere::drawing
