#include "QT_Components.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "GL_Memory.h"
#include "descriptions_private.h"
#include "memory_handles.h"

using namespace quillmere;

namespace {

constexpr OSType kExporterType = "spit"_4cc;

/// A Pascal string as text.
std::string TextOf(const UInt8* bytes) {
  return {reinterpret_cast<const char*>(bytes) + 1, bytes[0]};
}

SInt32 NameOf(Component component, std::string* name) {
  Handle text = NewHandle(0);
  if (text == nullptr) return MemError();
  const SInt32 status = GetComponentInfo(component, nullptr, text, nullptr, nullptr);
  if (!status) *name = TextOf(reinterpret_cast<const UInt8*>(*text));
  GL_DisposeHandle(&text);
  return status;
}

/// Calls `visit(component)` for those that fit until it gives false.
template <class Visit>
void WalkComponents(const ComponentDescription& looking, Visit visit) {
  for (Component each = nullptr; (each = FindNextComponent(each, &looking)) != nullptr;) {
    if (!visit(each)) return;
  }
}

/// Calls `visit(spec)` for all codecs until it gives false.
template <class Visit>
SInt32 WalkCodecs(Visit visit) {
  CodecNameSpecList* list = nullptr;
  const SInt32 status = GetCodecNameList(&list, 1);
  if (status) return status;
  for (SInt16 i = 0; i < list->count && visit(list->list[i]); ++i) {
  }
  return DisposeCodecNameList(list);
}

SInt32 CanExport(OSType subtype, OSType manufacturer, UInt32 flag, Boolean* can) {
  const ComponentDescription looking = {kExporterType, subtype, manufacturer, flag, flag};
  *can = FindNextComponent(nullptr, &looking) != nullptr;
  return noErr;
}

SInt32 SizeProperty(Handle description, OSType property, SInt32* size) {
  UInt32 value = 0;
  const SInt32 status = ICMImageDescriptionGetProperty(description, "idsc"_4cc, property,
                                                       sizeof value, &value, nullptr);
  *size = status ? 0 : static_cast<SInt32>(value);
  return status;
}

}  // namespace

Component QT_GetComponentOfType(OSType type, OSType subtype, OSType manufacturer) {
  const ComponentDescription looking = {type, subtype, manufacturer, 0, cmpIsMissing};
  return FindNextComponent(nullptr, &looking);
}

SInt32 QT_GetComponentName(OSType type, OSType subtype, OSType manufacturer, char* name) {
  name[0] = '\0';
  std::string text;
  const SInt32 status = NameOf(QT_GetComponentOfType(type, subtype, manufacturer), &text);
  if (!status) std::memcpy(name, text.c_str(), text.size() + 1);
  return status;
}

SInt32 QT_GetComponentByNameAndType(const char* name, OSType type, Component* component,
                                    ComponentDescription* description) {
  const ComponentDescription looking = {type, 0, 0, 0, 0};
  *component = nullptr;
  *description = looking;
  SInt32 status = noErr;
  WalkComponents(looking, [&](Component each) {
    std::string text;
    ComponentDescription found{};
    status = NameOf(each, &text);
    if (!status) status = GetComponentInfo(each, &found, nullptr, nullptr, nullptr);
    const bool counts = text != "AIFF" || found.componentManufacturer == "soun"_4cc;
    if (status || text != name || !counts) return status == noErr;
    *component = each;
    *description = found;
    return false;
  });
  return status;
}

SInt32 QT_WalkComponentList(OSType type, OSType subtype, OSType manufacturer, UInt32 flags) {
  SInt32 status = noErr;
  WalkComponents({type, subtype, manufacturer, flags, flags}, [&status](Component each) {
    ComponentDescription description{};
    status = GetComponentInfo(each, &description, nullptr, nullptr, nullptr);
    return status == noErr;
  });
  return status;
}

Boolean QT_ComponentIsThreadSafe(Component component) {
  ComponentDescription description{};
  const SInt32 status = GetComponentInfo(component, &description, nullptr, nullptr, nullptr);
  return !status && (description.componentFlags & cmpThreadSafe) != 0;
}

SInt32 QT_EncoderCanExportFiles(OSType subtype, OSType manufacturer, Boolean* can) {
  constexpr UInt32 kExportsFiles = 16;
  return CanExport(subtype, manufacturer, kExportsFiles, can);
}

SInt32 QT_EncoderCanExportFromProcedures(OSType subtype, OSType manufacturer, Boolean* can) {
  constexpr UInt32 kExportsFromProcedures = 32768;
  return CanExport(subtype, manufacturer, kExportsFromProcedures, can);
}

SInt32 QT_GetCodecNameSpec(OSType codecType, Component component, CodecNameSpec* spec) {
  return WalkCodecs([=](const CodecNameSpec& each) {
    const bool fits = codecType != 0 ? each.cType == codecType : each.codec == component;
    if (fits) *spec = each;
    return !fits;
  });
}

SInt32 QT_IsCodecPresent(OSType codecType, const char* name, Boolean* isPresent) {
  return WalkCodecs([=](const CodecNameSpec& each) {
    const bool fits =
        codecType != 0 ? each.cType == codecType : name != nullptr && TextOf(each.typeName) == name;
    if (fits) *isPresent = 1;
    return !fits;
  });
}

SInt32 QT_GetCodecType(const char* name, OSType* codecType) {
  return WalkCodecs([=](const CodecNameSpec& each) {
    const bool fits = TextOf(each.typeName) == name;
    if (fits) *codecType = each.cType;
    return !fits;
  });
}

SInt32 QT_GetCodecName(OSType codecType, char* name) {
  CodecNameSpec spec{};
  const SInt32 status = QT_GetCodecNameSpec(codecType, nullptr, &spec);
  const std::string text = TextOf(spec.typeName);
  std::memcpy(name, text.c_str(), text.size() + 1);
  return status;
}

SInt32 QT_GetDimensionsFromMedia(Media media, SInt32* height, SInt32* width) {
  *height = 0;
  *width = 0;
  const MediaDescription description(media, 1);
  if (description.status()) return description.status();
  SizeProperty(description.get(), "encw"_4cc, width);
  const SInt32 status = SizeProperty(description.get(), "ench"_4cc, height);
  return status == kQTPropertyNotSupportedErr ? SInt32{noErr} : status;
}
