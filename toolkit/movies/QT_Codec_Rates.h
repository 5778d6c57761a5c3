/// Data rates, in bytes a second unless told otherwise, and what handheld devices take.
#pragma once

#include "base_types.h"

UInt32 QT_GetProRes422HQ_DataRate(float frameRate, SInt32 width, SInt32 height);
UInt32 QT_GetProRes422DataRate(float frameRate, SInt32 width, SInt32 height);
UInt32 QT_GetProRes422LT_DataRate(float frameRate, SInt32 width, SInt32 height);
/// Of AVdh, AVdn or AVds at 59.94, 50, 25 or 24 frames a second, to a tenth; else 0.
UInt32 QT_GetAvidDNxHD_DataRate(OSType codecType, float frameRate, SInt32 height);
UInt32 QT_GetDVCProHD_DataRate(float frameRate);
UInt32 QT_GetAIC_DataRate(SInt32 width, SInt32 height);
/// For a codec quality, lossless from 1023 on.
UInt32 QT_GetJPEG_DataRate(UInt32 quality, SInt32 width, SInt32 height);
/// By the codec alone.
UInt32 QT_GetIMX_DataRate(SInt32 width, SInt32 height, OSType codecType);

// Devices, by the subtype of their files: `M4V `, `M4VH`, `M4VP`, `iphE`.

/// The largest picture, `small` or not, at the origin; empty for another subtype.
void QT_Get_iDeviceBox(OSType subtype, Boolean small, float frameRate, Rect* box);
/// Fits a larger picture into the box, and with `scaleUp` one that is smaller on both sides, which
/// else leaves the output as it was. Others are copied.
void QT_ScaleTo_iDeviceBox(OSType subtype, Boolean small, float frameRate, const Rect* source,
                           Boolean scaleUp, Rect* out);
/// Rises with the number of pixels.
UInt32 QT_Get_iDeviceDataRate(OSType subtype, SInt32 width, SInt32 height);
/// The rate that a device plays of a movie's, in frames a second.
float QT_Get_iDeviceFrameRate(OSType subtype, SInt32 height, float frameRate);

/// A word of four letters that a name hashes to; the same for equal names.
OSType GL_NameToFourCC(const char* name);
