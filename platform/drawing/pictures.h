/// Pictures: drawing that is recorded and can be played back at any size.
///
/// A picture is a handle with what was drawn in the PICT format, version 2 (Inside Macintosh:
/// Imaging With QuickDraw, appendix A), big-endian: rectangles, regions, 32-bit pixels, text, and
/// the clip, colours, pen and text style they were drawn with. Pixels lose their alpha. Playing
/// takes bytes of any origin: it passes over nothing that it doesn't know, but ends there.
#pragma once

#include "base_types.h"
#include "graphics_ports.h"
#include "memory_handles.h"

using PicHandle = Handle;

inline constexpr OSErr pictureDataErr = -11005;  ///< bytes that are no picture of version 2
inline constexpr SInt16 kOpenCPicVersion = -2;
inline constexpr Fixed kPicture72Dpi = 0x480000;

/// The frame of a new picture and its pixels per inch, 16.16.
struct OpenCPicParams {
  Rect srcRect;
  Fixed hRes;
  Fixed vRes;
  SInt16 version;  ///< kOpenCPicVersion
  SInt16 reserved1;
  SInt32 reserved2;
};

/// Opens a picture in the current port, which records all drawing in it until ClosePicture; one at
/// a time, which belongs to the port. The handle is filled at that time and is the caller's. Null
/// for a frame or a resolution without pixels, if one is open, and without memory.
PicHandle OpenCPicture(const OpenCPicParams* header);
/// Ends recording. A picture that found no memory is left empty, as is one of a clip or region of
/// more than 32766 bytes.
void ClosePicture();
/// Gives up a picture; null is allowed.
void KillPicture(PicHandle picture);

/// Plays a picture in the current port, its frame filling `destination`, and leaves the port's
/// clip, colours, pen and text style as they were. It is recorded if a picture is open there.
void DrawPicture(PicHandle picture, const Rect* destination);
/// The frame, 0 for what is no picture.
Rect* QDGetPictureBounds(PicHandle picture, Rect* frame);

struct PictInfo {
  Rect sourceRect;  ///< the frame at the picture's own resolution
  Fixed hRes;
  Fixed vRes;
};
/// What a picture tells of itself. paramErr for null, pictureDataErr.
OSErr GetPictInfo(PicHandle picture, PictInfo* info);

namespace quillmere::drawing {

/// As DrawPicture, of bytes. pictureDataErr if the playing ended before the picture did; what came
/// before is drawn.
OSErr PlayPicture(const UInt8* bytes, std::size_t size, const Rect& destination);

}  // namespace quillmere::drawing
