/// Exporting a picture into an image file.
///
/// There is one exporter, type `grex` and subtype `qtif`: a file of the two atoms idsc, an image
/// description, and idat, the pixels (QuickTime File Format, appendix A). The pixels are
/// uncompressed, 32 bits each, alpha first.
#pragma once

#include "base_types.h"
#include "memory_handles.h"
#include "pictures.h"

struct GraphicsExporter;
using GraphicsExportComponent = GraphicsExporter*;

inline constexpr OSType kGraphicsExporterComponentType = "grex"_4cc;
inline constexpr OSType kQTFileTypeQuickTimeImage = "qtif"_4cc;
inline constexpr OSErr noSuchComponent = -2109;

/// Opens the exporter; the caller closes it. noSuchComponent, and null, for another type.
OSErr OpenADefaultComponent(OSType type, OSType subtype, GraphicsExportComponent* component);
OSErr CloseComponent(GraphicsExportComponent component);
/// What to export: a picture, which stays the caller's and lives until the export.
OSErr GraphicsExportSetInputPicture(GraphicsExportComponent exporter, PicHandle picture);
/// Pixels are never compressed here, so that this changes nothing.
OSErr GraphicsExportSetDontRecompress(GraphicsExportComponent exporter, Boolean dont);
/// Where to: an existing file by a data reference of type `alis`, which stays the caller's.
OSErr GraphicsExportSetOutputDataReference(GraphicsExportComponent exporter, Handle reference,
                                           OSType type);
/// Exports, and stores the size of the file, unless `size` is null. paramErr without an input or an
/// output, pictureDataErr, or a status of the files family; the file then is as it was.
OSErr GraphicsExportDoExport(GraphicsExportComponent exporter, UInt32* size);
