/// Components: the importers, exporters, decompressors and media handlers that there are, by type.
///
/// They are found, not opened, here; an operation that uses one has an opening call of its own.
#pragma once

#include "image_descriptions.h"
#include "movie_toolbox.h"

struct ComponentRecord;
/// One of the components; they live as long as the program.
using Component = const ComponentRecord*;

/// A component, or what is looked for: 0 stands for any code, and of the flags only those of the
/// mask count.
struct ComponentDescription {
  OSType componentType;
  OSType componentSubType;
  OSType componentManufacturer;
  UInt32 componentFlags;
  UInt32 componentFlagsMask;
};
inline constexpr UInt32 cmpThreadSafe = 0x10000000;
inline constexpr UInt32 cmpIsMissing = 0x20000000;

/// Types of components.
inline constexpr OSType kGraphicsImporterType = "grip"_4cc;
inline constexpr OSType kGraphicsExporterType = "grex"_4cc;
inline constexpr OSType kCompressorType = "imco"_4cc;
inline constexpr OSType kDecompressorType = "imdc"_4cc;
inline constexpr OSType kMediaHandlerType = "mhlr"_4cc;
inline constexpr OSType kMovieImporterType = "eat "_4cc;

/// The component behind another one, or for null the first, that a description fits; null if there
/// is none.
Component FindNextComponent(Component component, const ComponentDescription* looking);
/// What a component is, and its name as a Pascal string in a handle of the caller's; outputs may be
/// null. -3000 for null.
OSErr GetComponentInfo(Component component, ComponentDescription* description, Handle name,
                       Handle info, Handle icon);

/// Which of the codecs of a type is meant, where it isn't one by itself: any, or the fastest, the
/// truest or the most compressing. There is one of each type here.
inline const Component anyCodec = nullptr;
inline const Component bestSpeedCodec = reinterpret_cast<Component>(-1);
inline const Component bestFidelityCodec = reinterpret_cast<Component>(-2);
inline const Component bestCompressionCodec = reinterpret_cast<Component>(-3);
/// The compressor and the decompressor of a codec type, each output null where there is none; one
/// that is null isn't looked for. noCodecErr if none is found.
OSErr FindCodec(OSType codec_type, Component specified, Component* compressor,
                Component* decompressor);
/// A resource of a component as a new handle of the caller's; -192 (resNotFound) and null where it
/// has none. Codecs have `cpix` 1: the pixel formats that they take or give, 4 bytes each in native
/// order, the one that they like best first.
inline constexpr OSErr resNotFound = -192;
OSErr GetComponentPublicResource(Component component, OSType type, SInt16 id, Handle* resource);

#pragma pack(push, 4)
/// A codec of the list of names.
struct CodecNameSpec {
  Component codec;
  OSType cType;
  UInt8 typeName[32];  ///< Pascal string
};
#pragma pack(pop)
static_assert(sizeof(CodecNameSpec) == 44);
/// The codecs, of which `list` has `count`.
struct CodecNameSpecList {
  SInt16 count;
  CodecNameSpec* list;
};
/// A new list of all codecs that decompress, freed with DisposeCodecNameList.
OSErr GetCodecNameList(CodecNameSpecList** list, SInt16 show_all);
OSErr DisposeCodecNameList(CodecNameSpecList* list);
