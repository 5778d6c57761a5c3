/// Frames of the planar format `y420`: luma, then Cb and Cr at half the width and height, 8 bits a
/// sample, behind a header of 32 bytes that says where the planes lie.
#pragma once

#include "base_types.h"

/// The header, whose numbers are big-endian in a frame. Readers take the places of the planes from
/// here.
struct PlanarPixmapInfoYUV420 {
  SInt32 offsetY;  ///< from the start of the header, in bytes
  UInt32 rowBytesY;
  SInt32 offsetCb;
  UInt32 rowBytesCb;
  SInt32 offsetCr;
  UInt32 rowBytesCr;
  UInt32 unused[2];
};
static_assert(sizeof(PlanarPixmapInfoYUV420) == 32);

/// Sets the header of a frame of that size in pixels, big-endian, but for its unused words. Rows of
/// luma are padded to 32 bytes, those of chroma to 16, and the planes to four lines of luma.
void QT_SetY420_Header(PlanarPixmapInfoYUV420* header, SInt32 height, SInt32 width);
/// The bytes of such a frame, header included. Sizes are 1 to 32767.
UInt32 QT_GetY420_FrameSize(SInt32 height, SInt32 width);
/// Turns the numbers of a header from native to big-endian order and back.
void QT_FlipPlanarPixmapInfoYUV420_NtoB(PlanarPixmapInfoYUV420* header);
void QT_FlipPlanarPixmapInfoYUV420_BtoN(PlanarPixmapInfoYUV420* header);
