#include <algorithm>
#include <array>
#include <cctype>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "data_references.h"
#include "finder_information.h"
#include "image_file_info.h"
#include "movie_file.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"

struct ImporterRecord {
  quillmere::imaging::ImageFileInfo info;
  std::vector<UInt8> description;
};

namespace quillmere::movies {

namespace {

enum class FileKind { kUnknown, kImage, kMovie };

struct KindOfExtension {
  std::string_view extension;
  FileKind kind;
};
constexpr KindOfExtension kExtensions[] = {
    {".mov", FileKind::kMovie},  {".qt", FileKind::kMovie},   {".moov", FileKind::kMovie},
    {".mp4", FileKind::kMovie},  {".m4v", FileKind::kMovie},  {".m4a", FileKind::kMovie},
    {".m4b", FileKind::kMovie},  {".m4p", FileKind::kMovie},  {".mpg4", FileKind::kMovie},
    {".mqv", FileKind::kMovie},  {".3gp", FileKind::kMovie},  {".3gpp", FileKind::kMovie},
    {".3g2", FileKind::kMovie},  {".3gp2", FileKind::kMovie}, {".png", FileKind::kImage},
    {".jpg", FileKind::kImage},  {".jpeg", FileKind::kImage}, {".jpe", FileKind::kImage},
    {".jfif", FileKind::kImage},
};
struct KindOfFinderType {
  OSType type;
  FileKind kind;
};
constexpr KindOfFinderType kFinderTypes[] = {
    {"MooV"_4cc, FileKind::kMovie}, {"mpg4"_4cc, FileKind::kMovie}, {"M4V "_4cc, FileKind::kMovie},
    {"M4A "_4cc, FileKind::kMovie}, {"3gpp"_4cc, FileKind::kMovie}, {"PNGf"_4cc, FileKind::kImage},
    {"PNG "_4cc, FileKind::kImage}, {"JPEG"_4cc, FileKind::kImage},
};

FileKind KindByType(const std::filesystem::path& path) {
  files::FinderInformation information;
  files::ReadFinderInformation(path, &information);
  for (const KindOfFinderType& entry : kFinderTypes) {
    if (entry.type == information.Type()) return entry.kind;
  }
  return FileKind::kUnknown;
}

FileKind KindByContent(const std::filesystem::path& path) {
  imaging::ImageFileInfo info;
  if (LooksLikeMovie(path)) return FileKind::kMovie;
  if (imaging::ReadImageFileInfo(path, &info) == noErr) return FileKind::kImage;
  return FileKind::kUnknown;
}

/// The kind by name, then by Finder type. A file that has neither extension nor type, or that may
/// be read anyway, is judged by what is in it.
FileKind KindOf(const std::filesystem::path& path, bool may_read) {
  if (may_read) return KindByContent(path);
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const KindOfExtension& entry : kExtensions) {
    if (entry.extension == extension) return entry.kind;
  }
  const FileKind by_type = KindByType(path);
  if (by_type != FileKind::kUnknown || !extension.empty()) return by_type;
  return KindByContent(path);
}

void Answer(bool value, Boolean* answer) {
  if (answer != nullptr) *answer = value ? 1 : 0;
}

}  // namespace

}  // namespace quillmere::movies

using namespace quillmere::movies;

OSErr CanQuickTimeOpenDataRef(Handle data_reference, OSType type, Boolean* can_open_with_importer,
                              Boolean* can_open_as_movie, Boolean* prefer_importer, UInt32 flags) {
  Answer(false, can_open_with_importer);
  Answer(false, can_open_as_movie);
  Answer(false, prefer_importer);
  std::filesystem::path path;
  const OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status != noErr) return static_cast<OSErr>(status);
  std::error_code error;
  const std::filesystem::file_type kind_of_object = std::filesystem::status(path, error).type();
  // A link that leads nowhere, or to itself, is no file of any kind.
  if (error == std::errc::too_many_symbolic_link_levels) return noErr;
  if (kind_of_object == std::filesystem::file_type::not_found) return noErr;
  if (error) return quillmere::files::StatusOfErrno(error.value());
  if (kind_of_object != std::filesystem::file_type::regular) return noErr;
  const FileKind kind = KindOf(path, (flags & kQTDontUseDataToFindImporter) == 0);
  Answer(kind == FileKind::kImage, can_open_with_importer);
  Answer(kind != FileKind::kUnknown, can_open_as_movie);
  Answer(kind == FileKind::kImage, prefer_importer);
  return noErr;
}

OSErr GetGraphicsImporterForDataRef(Handle data_reference, OSType type,
                                    GraphicsImportComponent* importer) {
  if (importer == nullptr) return paramErr;
  *importer = nullptr;
  std::filesystem::path path;
  OSStatus status = PathOfDataReference(data_reference, type, &path);
  if (status != noErr) return static_cast<OSErr>(status);
  auto record = std::make_unique<ImporterRecord>();
  status = quillmere::imaging::ReadImageFileInfo(path, &record->info);
  if (status == noErr) status = MakeImageDescription(record->info, &record->description);
  constexpr OSStatus kUnknownImage = -3;
  constexpr OSStatus kDamagedImage = -4;
  if (status == kUnknownImage) status = noMovieFound;
  if (status == kDamagedImage) status = badImageDescription;
  if (status != noErr) return static_cast<OSErr>(status);
  *importer = record.release();
  return noErr;
}

OSErr GraphicsImportGetImageDescription(GraphicsImportComponent importer,
                                        ImageDescriptionHandle* description) {
  if (importer == nullptr || description == nullptr) return paramErr;
  return PtrToHand(importer->description.data(), description,
                   static_cast<Size>(importer->description.size()));
}

OSErr GraphicsImportGetDataOffsetAndSize(GraphicsImportComponent importer, UInt32* offset,
                                         UInt32* size) {
  if (importer == nullptr) return paramErr;
  if (importer->info.data_offset > std::numeric_limits<UInt32>::max()) return badImageDescription;
  if (offset != nullptr) *offset = static_cast<UInt32>(importer->info.data_offset);
  if (size != nullptr) *size = static_cast<UInt32>(importer->info.data_size);
  return noErr;
}

OSErr CloseComponent(GraphicsImportComponent importer) {
  const std::unique_ptr<ImporterRecord> closed(importer);
  return closed != nullptr ? OSErr{0} : invalidHandler;
}
