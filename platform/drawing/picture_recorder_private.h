/// Writing the picture that is open in a port.
#pragma once

#include <span>
#include <vector>

#include "picture_format_private.h"
#include "pictures.h"
#include "ports_private.h"

namespace quillmere::drawing {

/// Appends what is drawn, and before it what of the port's state has changed since.
class PictureRecorder {
 public:
  PictureRecorder(const OpenCPicParams& header, PicHandle picture);

  void Shape(UInt16 code, const GraphicsPort& port, const Rect& rect);
  void PaintRegion(const GraphicsPort& port, RgnHandle region);
  /// `mask` is null for none.
  void Pixels(const GraphicsPort& port, const PixMap& from, const Rect& source,
              const Rect& destination, RgnHandle mask);
  /// At the port's pen.
  void Text(const GraphicsPort& port, std::span<const UInt8> text);
  /// Fills the handle.
  void Finish();

 private:
  void Add16(SInt32 value);
  void Add32(SInt32 value);
  void AddPoint(Point point);
  void AddRect(const Rect& rect);
  void AddColor(UInt16 code, const RGBColor& color);
  void AddRegion(RgnHandle region);
  void AddStrip(const PixMap& from, const Rect& source, const Rect& destination, RgnHandle mask);
  void AddLine(const PixMap& from, const Rect& source, SInt32 row);
  /// Operations begin at even places.
  void Align();
  void UpdateState(const GraphicsPort& port);
  void UpdateText(const DrawingState& state);

  PicHandle picture_;
  std::vector<UInt8> bytes_;
  OwnedRegion clip_;
  DrawingState state_;
  bool has_failed_ = false;
};

}  // namespace quillmere::drawing
