/// Images compressed from the pixels of worlds: alone and in sequences, by compressors.
///
/// There are compressors (components of type `imco`) of `raw ` (32 bits, alpha first), `png ` and
/// `jpeg`. Pixels are of worlds of 32 bits or of `2vuy`. Qualities go from 0 to 1023, and 1024 for
/// lossless. Statuses: paramErr, noCodecErr for a type without a compressor, cDepthErr for other
/// worlds, memFullErr.
#pragma once

#include "graphics_ports.h"
#include "memory_handles.h"

using CodecQ = UInt32;
inline constexpr CodecQ codecNormalQuality = 512;
inline constexpr CodecQ codecMaxQuality = 1023;
inline constexpr CodecQ codecLosslessQuality = 1024;

struct ImageCompressor;
/// An open compressor; null where any of the type will do.
using CompressorComponent = ImageCompressor*;
inline constexpr OSType kCompressorComponentType = "imco"_4cc;

/// Opens the compressor of a type; the caller closes it. invalidComponentID (-3000), and null,
/// where there is none.
OSErr OpenADefaultComponent(OSType type, OSType subtype, CompressorComponent* compressor);
OSErr CloseComponent(CompressorComponent compressor);
/// Gives a compressor settings of its own, which are copied.
OSErr ImageCodecSetSettings(CompressorComponent compressor, Handle settings);
/// A property of a compressor, class `imco`: what it enforces on pictures (`enwi`, `enhe`, `encl`,
/// `enpa`, `enfi`). These compressors enforce nothing: -2195.
OSStatus QTGetComponentProperty(CompressorComponent compressor, OSType property_class,
                                OSType property_id, ByteCount size, void* value,
                                ByteCount* size_used);

/// The most bytes that a picture in a rectangle of a world takes. A depth of 0 is the world's own;
/// `compressor` is null or one of the type.
OSErr GetMaxCompressionSize(PixMapHandle pixels, const Rect* rect, SInt16 depth, CodecQ quality,
                            OSType codec, CompressorComponent compressor, SInt32* size);
/// Compresses a picture into memory of that size, and makes its description, whose data size is
/// that of the bytes.
OSErr CompressImage(PixMapHandle pixels, const Rect* rect, CodecQ quality, OSType codec,
                    Handle description, UInt8* data);
/// A new description of the pixels themselves, `raw `.
OSErr MakeImageDescriptionForPixMap(PixMapHandle pixels, Handle* description);

struct CompressionSequence;
using CompressionSequenceID = CompressionSequence*;
/// Begins a sequence of pictures of one size, each compressed alone, and makes their description.
OSErr CompressSequenceBegin(CompressionSequenceID* sequence, PixMapHandle pixels, const Rect* rect,
                            SInt16 depth, OSType codec, CompressorComponent compressor,
                            CodecQ quality, Handle description);
OSErr GetCSequenceMaxCompressionSize(CompressionSequenceID sequence, PixMapHandle pixels,
                                     SInt32* size);
/// Compresses the next picture into memory of the most bytes; `size` takes how many it is.
OSErr CompressSequenceFrame(CompressionSequenceID sequence, PixMapHandle pixels, const Rect* rect,
                            UInt32 flags, UInt8* data, SInt32* size);
/// Ends a sequence; null is allowed.
OSErr CDSequenceEnd(CompressionSequenceID sequence);
