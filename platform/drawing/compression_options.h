/// Options of a compression session: which compressor, its settings, the quality.
#pragma once

#include "cf_strings.h"
#include "image_compression.h"

struct ICMCompressionSessionOptions;
using ICMCompressionSessionOptionsRef = ICMCompressionSessionOptions*;

/// Properties of class `icso`: the compressor's settings (Handle, whose bytes are copied and given
/// as a new handle of the caller's), the compressor (CompressorComponent, which outlives the
/// options) and the quality (CodecQ).
inline constexpr OSType kQTPropertyClass_ICMCompressionSessionOptions = "icso"_4cc;
inline constexpr OSType kICMCompressionSessionOptionsPropertyID_CompressorSettings = "cost"_4cc;
inline constexpr OSType kICMCompressionSessionOptionsPropertyID_CompressorComponent = "imco"_4cc;
inline constexpr OSType kICMCompressionSessionOptionsPropertyID_Quality = "qual"_4cc;

/// New options, which the caller releases: any compressor, no settings, normal quality.
OSStatus ICMCompressionSessionOptionsCreate(CFAllocatorRef allocator,
                                            ICMCompressionSessionOptionsRef* options);
void ICMCompressionSessionOptionsRelease(ICMCompressionSessionOptionsRef options);
/// Sets or reads a property. paramErr for null and for another size than the value's type has,
/// kQTPropertyNotSupportedErr for a property that there isn't.
OSStatus ICMCompressionSessionOptionsSetProperty(ICMCompressionSessionOptionsRef options,
                                                 OSType property_class, OSType property_id,
                                                 ByteCount size, const void* value);
OSStatus ICMCompressionSessionOptionsGetProperty(ICMCompressionSessionOptionsRef options,
                                                 OSType property_class, OSType property_id,
                                                 ByteCount size, void* value, ByteCount* size_used);
