#include "QT_Movie_File.h"

#include <iterator>

#include "GL_File.h"
#include "GL_Memory.h"
#include "GL_Strings_Unicode.h"
#include "LL_Linked_Lists.h"
#include "MF_FileObjects.h"
#include "aliases.h"
#include "reference_counted.h"

namespace {

using quillmere::AtExit;
using quillmere::Owned;

/// Runs `action(alias)` with an alias of the file that lives as long as the call.
template <class Action>
SInt32 WithAlias(const FSRef* file, Action action) {
  AliasHandle alias = nullptr;
  const SInt32 status = FSNewAlias(nullptr, file, &alias);
  if (status != noErr) return status;
  const AtExit dispose([&] { GL_DisposeHandle(&alias); });
  return action(alias);
}

/// A flag of the open call and the Boolean property that it sets.
struct FlagProperty {
  UInt32 flag;
  OSType property_class;
  OSType property_id;
};
constexpr FlagProperty kFlagProperties[] = {
    {QT_OpenMovieActive, "mprp"_4cc, "actv"_4cc},
    {QT_OpenMovieDontResolveDataRefs, "mins"_4cc, "rdrn"_4cc},
    {QT_OpenMovieDontAskUser, "mins"_4cc, "aurn"_4cc},
    {QT_OpenMovieAsync, "mins"_4cc, "asok"_4cc},
    {QT_OpenMovieAudioPitch, "audi"_4cc, "aucp"_4cc},
};
constexpr std::size_t kMostProperties = 2 + std::size(kFlagProperties);

/// A movie stays in a folder's list when it opens as one and no importer is preferred.
SInt32 IsListedMovie(const FSRef* file, Boolean importer_flag, Boolean require_moov, bool* listed) {
  Boolean can_open_as_movie = 0;
  Boolean prefer_importer = 0;
  SInt32 status = QT_CanQuickTimeOpenFile(file, nullptr, &can_open_as_movie, &prefer_importer,
                                          importer_flag != 0 ? kQTDontUseDataToFindImporter : 0);
  *listed = status == noErr && can_open_as_movie != 0 && prefer_importer == 0;
  if (*listed && require_moov != 0) {
    Boolean is_movie = 0;
    status = QT_IsMooV_File(file, &is_movie);
    *listed = status == noErr && is_movie != 0;
  }
  return status;
}

}  // namespace

SInt32 QT_OpenMovieFileFP(const FSRef* file, UInt32 flags, QTVisualContextRef visual_context,
                          Movie* movie) {
  *movie = nullptr;
  return WithAlias(file, [&](AliasHandle alias) {
    DataReferenceRecord reference = {"alis"_4cc, alias};
    Boolean yes = 1;
    QTNewMoviePropertyElement properties[kMostProperties];
    ItemCount count = 0;
    const auto add = [&](OSType property_class, OSType property_id, Size size, void* value) {
      properties[count++] = {property_class, property_id, size, value, noErr};
    };
    add("dloc"_4cc, "dref"_4cc, sizeof reference, &reference);
    if (visual_context != nullptr) {
      add("ctxt"_4cc, "visu"_4cc, sizeof(QTVisualContextRef), &visual_context);
    }
    for (const FlagProperty& entry : kFlagProperties) {
      if ((flags & entry.flag) != 0) {
        add(entry.property_class, entry.property_id, sizeof yes, &yes);
      }
    }
    return NewMovieFromProperties(count, properties, 0, nullptr, movie);
  });
}

SInt32 QT_CanQuickTimeOpenFile(const FSRef* file, Boolean* can_open_with_importer,
                               Boolean* can_open_as_movie, Boolean* prefer_importer, UInt32 flags) {
  return WithAlias(file, [&](AliasHandle alias) {
    return SInt32{CanQuickTimeOpenDataRef(alias, "alis"_4cc, can_open_with_importer,
                                          can_open_as_movie, prefer_importer, flags)};
  });
}

SInt32 QT_CanQuickTimeOpenFileFast(const FSRef* file, Boolean* can_open_with_importer,
                                   Boolean* can_open_as_movie, Boolean* prefer_importer) {
  return QT_CanQuickTimeOpenFile(file, can_open_with_importer, can_open_as_movie, prefer_importer,
                                 kQTDontUseDataToFindImporter);
}

SInt32 QT_IsMooV_File(const FSRef* file, Boolean* is_movie) {
  *is_movie = 0;
  CFStringRef name = nullptr;
  SInt32 status = GL_CopyFileDirNameAsCFString(file, &name);
  if (status != noErr) return status;
  const Owned<CFStringRef> owned_name(name);
  constexpr SInt32 kLongestEnding = 5;
  const Owned<CFStringRef> ending(
      GL_CopyCFNameEndString(name, nullptr, kLongestEnding, kNameEndAtFullStop));
  MF_FinderInfo info = {};
  status = MF_FSGetFinderInfo(file, &info, nullptr, nullptr);
  if (status != noErr) return status;
  if (info.fileType == "MooV"_4cc) {
    *is_movie = 1;
  } else {
    *is_movie = GL_EqualCFStr(ending.get(), CFSTR(".mov"));
  }
  return noErr;
}

SInt32 QT_MakeFolderMovieFileList(const FSRef* folder, GL_FileObjectElement** list,
                                  Boolean importer_flag, Boolean require_moov) {
  SInt32 status = GL_MakeFolderFileObjList(folder, list);
  if (status != noErr) return status;
  for (GL_FileObjectElement* element = *list; element != nullptr;) {
    GL_FileObjectElement* next = element->next;
    bool listed = false;
    status = IsListedMovie(&element->fileRef, importer_flag, require_moov, &listed);
    if (!listed) {
      void* deleted = element;
      LL_DeletePtr(quillmere::ListHead(list), &deleted);
    }
    element = next;
  }
  return status;
}

SInt32 QT_GetGraphicsImporterForFile(const FSRef* file, GraphicsImportComponent* importer) {
  *importer = nullptr;
  return WithAlias(file, [&](AliasHandle alias) {
    return SInt32{GetGraphicsImporterForDataRef(alias, "alis"_4cc, importer)};
  });
}

SInt32 QT_GetImageReferenceFromFile(const FSRef* file, ImageDescriptionHandle* description,
                                    UInt32* data_offset, UInt32* data_size) {
  *description = nullptr;
  *data_offset = 0;
  *data_size = 0;
  GraphicsImportComponent importer = nullptr;
  SInt32 status = QT_GetGraphicsImporterForFile(file, &importer);
  if (status != noErr) return status;
  const AtExit close([&] { CloseComponent(importer); });
  status = GraphicsImportGetImageDescription(importer, description);
  if (status != noErr) return status;
  status = GraphicsImportGetDataOffsetAndSize(importer, data_offset, data_size);
  if (status != noErr) GL_DisposeHandle(description);
  return status;
}
