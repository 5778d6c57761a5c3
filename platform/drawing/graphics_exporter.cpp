#include "graphics_exporter.h"

#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

#include "aliases.h"
#include "big_endian.h"
#include "file_references.h"
#include "graphics_ports.h"
#include "whole_files.h"

struct GraphicsExporter {
  PicHandle picture = nullptr;
  AliasHandle output = nullptr;
};

namespace {

using quillmere::AppendU32;
using quillmere::WriteU16;
using quillmere::WriteU32;

constexpr UInt32 kDescriptionSize = 86;
constexpr UInt32 kAtomHeader = 8;

struct DisposeWorld {
  void operator()(GWorldPtr world) const { DisposeGWorld(world); }
};
using World = std::unique_ptr<GraphicsPort, DisposeWorld>;

/// The image description of uncompressed pixels, with its atom header.
std::vector<UInt8> DescriptionAtom(const PictInfo& info, const PixMap& pixels) {
  constexpr std::string_view kName = "None";
  const auto width = static_cast<UInt16>(pixels.bounds.right - pixels.bounds.left);
  const auto height = static_cast<UInt16>(pixels.bounds.bottom - pixels.bounds.top);
  std::vector<UInt8> atom(kAtomHeader + kDescriptionSize);
  WriteU32(atom.data(), kAtomHeader + kDescriptionSize);
  WriteU32(atom.data() + 4, "idsc"_4cc);
  UInt8* const description = atom.data() + kAtomHeader;
  WriteU32(description, kDescriptionSize);
  WriteU32(description + 4, "raw "_4cc);
  WriteU32(description + 28, 0x3FF);  // lossless
  WriteU16(description + 32, width);
  WriteU16(description + 34, height);
  WriteU32(description + 36, static_cast<UInt32>(info.hRes));
  WriteU32(description + 40, static_cast<UInt32>(info.vRes));
  WriteU32(description + 44, UInt32{4} * width * height);
  WriteU16(description + 48, 1);  // frames
  description[50] = static_cast<UInt8>(kName.size());
  std::memcpy(description + 51, kName.data(), kName.size());
  WriteU16(description + 82, 32);      // depth
  WriteU16(description + 84, 0xFFFF);  // no colour table
  return atom;
}

/// Draws the picture and gives the bytes of the file.
OSErr MakeFile(PicHandle picture, std::vector<UInt8>* file) {
  PictInfo info;
  OSErr status = GetPictInfo(picture, &info);
  GWorldPtr made = nullptr;
  if (!status) status = NewGWorld(&made, 32, &info.sourceRect, nullptr, nullptr, kGWorldKeepLocal);
  if (status) return status;
  const World world(made);
  GrafPtr saved = nullptr;
  GetPort(&saved);
  SetPort(made);
  DrawPicture(picture, &info.sourceRect);
  SetPort(saved);
  const PixMap& pixels = **GetGWorldPixMap(made);
  *file = DescriptionAtom(info, pixels);
  const UInt32 size = static_cast<UInt32>(pixels.rowBytes) *
                      static_cast<UInt32>(pixels.bounds.bottom - pixels.bounds.top);
  AppendU32(file, kAtomHeader + size);
  AppendU32(file, "idat"_4cc);
  file->insert(file->end(), pixels.baseAddr, pixels.baseAddr + size);
  return noErr;
}

}  // namespace

OSErr OpenADefaultComponent(OSType type, OSType subtype, GraphicsExportComponent* component) {
  if (component == nullptr) return paramErr;
  *component = nullptr;
  if (type != kGraphicsExporterComponentType || subtype != kQTFileTypeQuickTimeImage)
    return noSuchComponent;
  *component = std::make_unique<GraphicsExporter>().release();
  return noErr;
}

OSErr CloseComponent(GraphicsExportComponent component) {
  const std::unique_ptr<GraphicsExporter> last(component);
  return component != nullptr ? noErr : paramErr;
}

OSErr GraphicsExportSetInputPicture(GraphicsExportComponent exporter, PicHandle picture) {
  if (exporter == nullptr || picture == nullptr) return paramErr;
  exporter->picture = picture;
  return noErr;
}

OSErr GraphicsExportSetDontRecompress(GraphicsExportComponent exporter, Boolean /*dont*/) {
  return exporter != nullptr ? noErr : paramErr;
}

OSErr GraphicsExportSetOutputDataReference(GraphicsExportComponent exporter, Handle reference,
                                           OSType type) {
  if (exporter == nullptr || reference == nullptr || type != "alis"_4cc) return paramErr;
  exporter->output = reference;
  return noErr;
}

OSErr GraphicsExportDoExport(GraphicsExportComponent exporter, UInt32* size) {
  if (exporter == nullptr || exporter->picture == nullptr || exporter->output == nullptr)
    return paramErr;
  FSRef file{};
  Boolean was_changed = 0;
  std::vector<UInt8> bytes;
  OSErr status = FSResolveAlias(nullptr, exporter->output, &file, &was_changed);
  if (!status) status = MakeFile(exporter->picture, &bytes);
  if (status) return status;
  std::filesystem::path path;
  OSStatus written = quillmere::files::PathOf(file, &path);
  if (!written) written = quillmere::ReplaceWholeFile(path, bytes, false);
  if (!written && size != nullptr) *size = static_cast<UInt32>(bytes.size());
  return static_cast<OSErr>(written);
}
