#include "QT_Movie_Dialogs.h"

#include "MF_FileObjects.h"
#include "NS_Navigation.h"
#include "QT_Movie_File.h"
#include "QT_Movie_Storage.h"
#include "aliases.h"
#include "descriptors.h"

namespace {

constexpr UInt16 kIsAliasFile = 0x8000;

/// What a filter shows of an item: 1, 0, or -1 for a file, whose reference is found then.
int Judge(const AEDesc* item, const void* info, FSRef* file) {
  constexpr OSType kFileSpecification = "fss "_4cc;
  const OSType type = item->descriptorType;
  if (type != kFileSpecification && type != typeFSRef && type != typeFileURL) return 0;
  if (static_cast<const NavFileOrFolderInfo*>(info)->isFolder) return 1;
  return NS_GetFileObjectFromAEDesc(item, file) == noErr ? -1 : 0;
}

SInt32 Choose(FSRef* file, const NavDialogCreationOptions* options, CFStringRef prompt) {
  if (prompt == nullptr) prompt = CFSTR("Please select a movie");
  return NS_GetSingleFileFromUser(NS_EventProcPrototype, QT_MovieFilter, nullptr,
                                  options != nullptr ? options->clientName : nullptr, prompt, file);
}

bool OpensAsMovie(const FSRef& file) {
  Boolean withImporter = 0;
  Boolean asMovie = 0;
  const SInt32 status = QT_CanQuickTimeOpenFile(&file, &withImporter, &asMovie, nullptr,
                                                kQTDontUseDataToFindImporter);
  return status == noErr && asMovie && !withImporter;
}

}  // namespace

SInt32 QT_OpenMovieWithDialog(FSRef* file, const NavDialogCreationOptions* options,
                              CFStringRef prompt, SInt16 flags, Movie* movie) {
  *movie = nullptr;
  const SInt32 status = Choose(file, options, prompt);
  return status ? status : QT_OpenMovieFile(file, flags, movie);
}

SInt32 QT_OpenMovieWithDialogFP(FSRef* file, const NavDialogCreationOptions* options,
                                CFStringRef prompt, UInt32 flags, QTVisualContextRef visualContext,
                                Movie* movie) {
  *movie = nullptr;
  const SInt32 status = Choose(file, options, prompt);
  return status ? status : QT_OpenMovieFileFP(file, flags, visualContext, movie);
}

Boolean QT_MovieFilter(AEDesc* item, void* info, void* /*callbackRecord*/, SInt16 /*mode*/) {
  FSRef file{};
  const int shown = Judge(item, info, &file);
  return shown >= 0 ? static_cast<Boolean>(shown) : Boolean{OpensAsMovie(file)};
}

Boolean QT_MoovFilter(AEDesc* item, void* info, void* /*callbackRecord*/, SInt16 /*mode*/) {
  FSRef file{};
  const int shown = Judge(item, info, &file);
  if (shown >= 0) return static_cast<Boolean>(shown);
  Boolean isMoov = 0;
  return OpensAsMovie(file) && QT_IsMooV_File(&file, &isMoov) == noErr && isMoov;
}

Boolean QT_movExtensionFilter(AEDesc* item, void* info, void* /*callbackRecord*/, SInt16 /*mode*/) {
  FSRef file{};
  const int shown = Judge(item, info, &file);
  if (shown >= 0) return static_cast<Boolean>(shown);
  MF_FinderInfo finder{};
  const bool isAlias = MF_FSGetFinderInfo(&file, &finder, nullptr, nullptr) == noErr &&
                       (finder.finderFlags & kIsAliasFile) != 0;
  if (isAlias && FSResolveAliasFile(&file, 1, nullptr, nullptr) != noErr) return 0;
  Boolean isMov = 0;
  return QT_Is_mov_File(&file, &isMov) == noErr && isMov;
}
