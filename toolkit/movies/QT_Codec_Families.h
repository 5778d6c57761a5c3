/// What a four-character codec type is.
#pragma once

#include "base_types.h"

/// Uncompressed Y'CbCr.
Boolean QT_IsYC_CodecType(OSType type);
/// RGB, grey and what is decoded to them without loss.
Boolean QT_IsRGB_CodecType(OSType type);
Boolean QT_IsDV_CodecType(OSType type);
Boolean QT_IsJPEG_CodecType(OSType type);
Boolean QT_IsDVCProHD_CodecType(OSType type);
/// hdv1 to hdv6.
Boolean QT_IsHDV_CodecType(OSType type);
Boolean QT_IsXDCAM_CodecType(OSType type);
Boolean QT_IsProRes422CodecType(OSType type);
Boolean QT_IsAvidDNxHD_CodecType(OSType type);
Boolean QT_IsIMX_CodecType(OSType type);
/// Codecs whose pictures have one size; not all of DV's are in this list.
Boolean QT_CTypeHasEnforcedDims(OSType type);
/// Codecs whose samples are all of one size: uncompressed Y'CbCr, raw RGB and DV.
Boolean QT_IsFixedSizeCompressor(OSType type);
Boolean QT_CodecWantsY420_hardcoded(OSType type);
/// Types of files for handheld devices.
Boolean QT_Is_iDeviceSubType(OSType type);
