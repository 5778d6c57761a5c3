/// Graphics ports and offscreen worlds: where drawing goes, and its own coordinates.
///
/// Each thread has a current port. A port has pixels, a clip, a drawing state (colours, pen, text
/// style) and, while one is recorded into it, a picture; a thread that has set none draws into one
/// of its own, which has no pixels. Worlds have 32 or 1 bit a pixel: alpha, red, green and blue of
/// 8 bits each, alpha first; or one bit, set for black, the leftmost pixel on top of its byte. What
/// is drawn into 32 bits is opaque. Worlds of `2vuy`, 16 bits a pixel, hold frames of movies and
/// pictures to be compressed; other drawing leaves them alone. One thread at a time uses a port.
#pragma once

#include "base_types.h"
#include "regions.h"

inline constexpr OSErr cDepthErr = -157;  ///< a depth that worlds don't have

/// Pixels and what they stand for; `rowBytes` from one line to the next.
struct PixMap {
  UInt8* baseAddr;
  SInt32 rowBytes;
  Rect bounds;
  SInt16 pixelSize;  ///< bits, 1, 16 for `2vuy`, or 32
  Fixed gammaLevel = 0;
  Fixed requestedGammaLevel = 0;
};
using PixMapPtr = PixMap*;
using PixMapHandle = PixMapPtr*;
using BitMap = PixMap;

struct GraphicsPort;
using CGrafPtr = GraphicsPort*;
using GrafPtr = GraphicsPort*;
using GWorldPtr = GraphicsPort*;
/// Devices and colour tables that worlds are made for: there are none but the default, null.
struct GDevice;
using GDHandle = GDevice**;
struct ColorTable;
using CTabHandle = ColorTable**;

/// The current port, and making another the current one. Null is the thread's own.
void GetPort(GrafPtr* port);
void SetPort(GrafPtr port);
void GetGWorld(CGrafPtr* port, GDHandle* device);
void SetGWorld(CGrafPtr port, GDHandle device);

using GWorldFlags = UInt32;
inline constexpr GWorldFlags kGWorldKeepLocal = 8;
/// A new world of that depth, 0 for 32, whose pixels are clear: transparent black, or white of one
/// bit. Its bounds are `bounds`. paramErr without bounds or for bounds without pixels, cDepthErr,
/// or memFullErr.
OSErr NewGWorld(GWorldPtr* world, SInt16 depth, const Rect* bounds, CTabHandle colors,
                GDHandle device, GWorldFlags flags);
/// The same of a pixel format: 1, 32, `ARGB`, which is 32, or `2vuy`, whose pixels are black at
/// first.
OSErr QTNewGWorld(GWorldPtr* world, OSType format, const Rect* bounds, CTabHandle colors,
                  GDHandle device, GWorldFlags flags);
/// The same over pixels of the caller's, which outlive it and are left as they are. The format
/// isn't
/// 1. paramErr also for lines that are shorter than their pixels.
OSErr QTNewGWorldFromPtr(GWorldPtr* world, OSType format, const Rect* bounds, CTabHandle colors,
                         GDHandle device, GWorldFlags flags, void* pixels, SInt32 rowBytes);
/// Ends a world, null allowed. If it is the current port, the thread's own becomes that.
void DisposeGWorld(GWorldPtr world);

/// The pixels of a world or port, valid as long as it; null for null.
PixMapHandle GetGWorldPixMap(GWorldPtr world);
const BitMap* GetPortBitMapForCopyBits(CGrafPtr port);
/// Its bounds, which it returns as well.
Rect* GetPortBounds(CGrafPtr port, Rect* bounds);

/// The current port's clip, to which drawing is held beside its bounds. All of the plane at first.
void GetClip(RgnHandle region);
void SetClip(RgnHandle region);
void ClipRect(const Rect* rect);

/// Between the current port's coordinates and those of the screen.
void LocalToGlobal(Point* point);
void GlobalToLocal(Point* point);

namespace quillmere::drawing {

/// A port of `width` by `height` pixels of 32 bits, transparent at first, whose top left, 0, 0,
/// lies at a point of the screen. Ended by DisposeGWorld. Null without memory.
CGrafPtr NewScreenPort(SInt32 width, SInt32 height, Point on_screen);
/// Moves and resizes such a port; what it shows stays at its top left. False without memory.
bool PlaceScreenPort(CGrafPtr port, SInt32 width, SInt32 height, Point on_screen);

}  // namespace quillmere::drawing
