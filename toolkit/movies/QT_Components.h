/// Components and codecs looked up, by type and by name; names are C strings of at most 255 bytes.
///
/// Codes of 0 stand for any. Statuses are those of the component calls.
#pragma once

#include "base_types.h"
#include "components.h"
#include "movie_toolbox.h"

/// The first component, of those that aren't missing, of a type, subtype and manufacturer; null if
/// there is none.
Component QT_GetComponentOfType(OSType type, OSType subtype, OSType manufacturer);
/// Its name, into 256 bytes: empty, with a status, if there is none.
SInt32 QT_GetComponentName(OSType type, OSType subtype, OSType manufacturer, char* name);
/// The component of a type with exactly that name, null if there is none, and what it is, or else
/// what was looked for. "AIFF" is that of manufacturer `soun` only.
SInt32 QT_GetComponentByNameAndType(const char* name, OSType type, Component* component,
                                    ComponentDescription* description);
/// Asks each component that fits for what it is; the first failure is the result.
SInt32 QT_WalkComponentList(OSType type, OSType subtype, OSType manufacturer, UInt32 flags);
Boolean QT_ComponentIsThreadSafe(Component component);
/// Whether an exporter of movies writes files, or takes its pictures from procedures.
SInt32 QT_EncoderCanExportFiles(OSType subtype, OSType manufacturer, Boolean* can);
SInt32 QT_EncoderCanExportFromProcedures(OSType subtype, OSType manufacturer, Boolean* can);

/// The codec of a type or, for 0, of a component; the record stays as it was if there is none.
SInt32 QT_GetCodecNameSpec(OSType codecType, Component component, CodecNameSpec* spec);
/// Sets the Boolean to true if there is a codec of the type, or for 0 of exactly the name; else it
/// stays.
SInt32 QT_IsCodecPresent(OSType codecType, const char* name, Boolean* isPresent);
/// The type of the codec of exactly a name; stays if there is none.
SInt32 QT_GetCodecType(const char* name, OSType* codecType);
/// The name of the codec of a type, into 32 bytes; empty if there is none.
SInt32 QT_GetCodecName(OSType codecType, char* name);

/// The encoded size of a media's first description, in pixels. A width that isn't known is 0.
SInt32 QT_GetDimensionsFromMedia(Media media, SInt32* height, SInt32* width);
