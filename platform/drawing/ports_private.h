/// The record behind a port.
#pragma once

#include <memory>

#include "graphics_ports.h"
#include "regions.h"
#include "text_masks_private.h"

namespace quillmere::drawing {

struct DisposeRegion {
  void operator()(RgnHandle region) const { DisposeRgn(region); }
};
using OwnedRegion = std::unique_ptr<Region, DisposeRegion>;

/// A region of a rectangle, or the same as another.
OwnedRegion RegionOf(const Rect& rect);
OwnedRegion CopyOf(RgnHandle region);
/// All of the plane that coordinates reach.
inline constexpr Rect kPlane = {-32768, -32768, 32767, 32767};

struct DrawingState {
  RGBColor fore = {0, 0, 0};
  RGBColor back = {65535, 65535, 65535};
  Point pen = {};
  Point pen_size = {1, 1};
  TextStyle style;
  double text_h = 1;  ///< how far text is stretched
  double text_v = 1;
};

class PictureRecorder;

}  // namespace quillmere::drawing

struct GraphicsPort {
  GraphicsPort();
  GraphicsPort(const GraphicsPort&) = delete;
  GraphicsPort& operator=(const GraphicsPort&) = delete;
  ~GraphicsPort();

  PixMap pixels{};
  PixMap* handle = &pixels;
  std::unique_ptr<UInt8[]> memory;  ///< the pixels, if they are its own
  Point on_screen{};                ///< where its 0, 0 lies
  quillmere::drawing::OwnedRegion clip;
  quillmere::drawing::DrawingState state;
  std::unique_ptr<quillmere::drawing::PictureRecorder> recorder;  ///< of the open picture
};

namespace quillmere::drawing {

GraphicsPort& CurrentPort();

}  // namespace quillmere::drawing
