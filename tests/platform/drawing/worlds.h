/// Worlds for tests of drawing.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <random>

#include "drawing.h"
#include "graphics_ports.h"

namespace quillmere::test {

struct DisposeWorld {
  void operator()(GWorldPtr world) const { DisposeGWorld(world); }
};
/// A world that goes away at the end of a test; while it lives, another one can be the port.
using World = std::unique_ptr<GraphicsPort, DisposeWorld>;

inline World MakeWorld(const Rect& bounds, SInt16 depth = 32) {
  GWorldPtr world = nullptr;
  EXPECT_EQ(NewGWorld(&world, depth, &bounds, nullptr, nullptr, 0), noErr);
  SetGWorld(world, nullptr);
  return World(world);
}

/// The colour of a pixel as 0xAARRGGBB; of one bit, 0 for white and 1 for black.
inline UInt32 PixelAt(const World& world, SInt32 h, SInt32 v) {
  const PixMap& map = **GetGWorldPixMap(world.get());
  const UInt8* line = map.baseAddr + std::ptrdiff_t{v - map.bounds.top} * map.rowBytes;
  const SInt32 x = h - map.bounds.left;
  if (map.pixelSize == 1) return (line[x / 8] >> (7 - x % 8)) & 1;
  const UInt8* p = line + std::ptrdiff_t{x} * 4;
  return UInt32{p[0]} << 24 | UInt32{p[1]} << 16 | UInt32{p[2]} << 8 | p[3];
}

/// Fills a world with few colours at random, in runs of some length.
inline void FillAtRandom(const World& world, UInt32 seed) {
  const PixMap& map = **GetGWorldPixMap(world.get());
  std::mt19937 random(seed);
  SetGWorld(world.get(), nullptr);
  for (SInt32 v = map.bounds.top; v < map.bounds.bottom; ++v) {
    for (SInt32 h = map.bounds.left; h < map.bounds.right;) {
      const auto end = static_cast<SInt16>(h + 1 + static_cast<SInt32>(random() % 9));
      const auto level = [&] { return static_cast<UInt16>(random() % 5 * 16383); };
      const RGBColor color = {level(), level(), level()};
      const Rect run = {static_cast<SInt16>(v), static_cast<SInt16>(h), static_cast<SInt16>(v + 1),
                        end};
      RGBForeColor(&color);
      PaintRect(&run);
      h = end;
    }
  }
}

}  // namespace quillmere::test
