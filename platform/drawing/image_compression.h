/// Images compressed from the pixels of worlds: alone and in sequences, by compressors.
///
/// There are compressors (components of type `imco`) of `raw ` (32 bits, alpha first), `png `,
/// `jpeg`, and, where FFmpeg's libraries are installed, of DV: `dvc `, `dvcp`, `dvpp`, `dv5n`,
/// `dv5p`, and `dvh5`, `dvh6`, `dvhp`, `dvhq`, which scale pictures to a size of their own. Pixels
/// are of worlds of 32 bits or of `2vuy`. Qualities go from 0 to 1023, and 1024 for lossless.
/// Statuses: paramErr, noCodecErr for a type without a compressor, cDepthErr for other worlds,
/// memFullErr.
#pragma once

#include <span>
#include <string_view>

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
/// Gives a compressor settings of its own, which are copied, or takes them. Those of DV are two
/// Booleans: progressive, which only its descriptions tell, and 16:9. Other compressors keep what
/// they are given. paramErr for settings of DV that are shorter.
OSErr ImageCodecSetSettings(CompressorComponent compressor, Handle settings);
OSErr ImageCodecGetSettings(CompressorComponent compressor, Handle settings);
/// Properties of a compressor. Class `imco` tells what it enforces on pictures: `enwi`, `enhe`
/// (SInt32, pixels), `encl`, `enpa`, `enfi` (extensions `clap`, `pasp`, `fiel` in native byte
/// order, 32, 8 and 2 bytes). Class `dvco` has the settings of DV: `prog` and `16x9`, a Boolean
/// each, which can be set. kQTPropertyNotSupportedErr (-2195) for what a compressor hasn't.
OSStatus QTGetComponentProperty(CompressorComponent compressor, OSType property_class,
                                OSType property_id, ByteCount size, void* value,
                                ByteCount* size_used);
OSStatus QTSetComponentProperty(CompressorComponent compressor, OSType property_class,
                                OSType property_id, ByteCount size, const void* value);

/// The most bytes that a picture in a rectangle of a world takes. A depth of 0 is the world's own;
/// `compressor` is null or one of the type.
OSErr GetMaxCompressionSize(PixMapHandle pixels, const Rect* rect, SInt16 depth, CodecQ quality,
                            OSType codec, CompressorComponent compressor, SInt32* size);
/// Compresses a picture into memory of that size, and makes its description, whose data size is
/// that of the bytes and which has what the compressor enforces as extensions.
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

namespace quillmere::drawing {

/// One byte of a compressor's settings, and what its values 0 and 1 mean to a person.
struct CodecChoice {
  const char* title;
  const char* names[2];
};
/// The bytes of a compressor's settings, for a dialog; none for null and where there are none.
std::span<const CodecChoice> ChoicesOf(CompressorComponent compressor);
/// What the compressor is called; empty for null.
std::string_view NameOf(CompressorComponent compressor);

}  // namespace quillmere::drawing
