/// Reading pictures.
#pragma once

#include <span>

#include "base_types.h"

namespace quillmere::drawing {

struct PictureStart {
  Rect frame;   ///< at 72 pixels an inch
  Rect source;  ///< what the operations' coordinates refer to
  Fixed h_resolution;
  Fixed v_resolution;
  std::size_t size;  ///< of all this; operations follow
};
/// False for what is no picture of version 2, or has a frame without pixels.
bool ReadPictureStart(std::span<const UInt8> bytes, PictureStart* start);

}  // namespace quillmere::drawing
