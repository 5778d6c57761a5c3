#include "GL_Errors.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "CO_Errors.h"
#include "GL_Strings_Unicode.h"
#include "IA_Errors.h"
#include "LOG_errors.h"
#include "NR_Errors.h"
#include "NS_Errors.h"
#include "QT_Error_Keys.h"
#include "cf_bundle.h"
#include "error_keys.h"
#include "status_texts.h"

namespace {

using quillmere::errors::FindKey;
using quillmere::errors::FindRow;
using quillmere::errors::KeyRange;

constexpr KeyRange kFrameworkKeys[] = {
    {4000, 4000, "GL NoErr"},
    {4001, 4001, "GL BadSystemErr"},
    {4002, 4002, "GL FatalErr"},
    {4003, 4003, "GL MultipleOpenErr"},
    {4005, 4005, "GL NoFileToRevertToErr"},
    {4006, 4006, "GL PrintErr"},
    {4007, 4007, "GL NoPrinterErr"},
    {4008, 4008, "GL NilPointerErr"},
};

constexpr KeyRange kGeneralKeys[] = {
    {10001, 10006, "GL StringManipulationErr"},
    {10007, 10007, "GL NumberOutOfBoundsErr"},
    {10008, 10009, "GL CharacterErr"},
    {10014, 10014, "GL FileErr"},
    {10015, 10015, "GL PrefsFileNotFoundErr"},
    {10016, 10016, "GL FileErr"},
    {10017, 10017, "GL NoLargeVolumeSupportErr"},
    {10018, 10018, "GL LongFilePathErr"},
    {10019, 10019, "GL FileErr"},
    {10021, 10022, "GL ReadWriteErr"},
    {10026, 10026, "GL RectangleErr"},
    {10028, 10031, "GL BundleErr"},
    {10035, 10038, "GL MessagePortErr"},
};

/// A library's block of codes: the key of the block as a whole, and the function that finds a
/// code's own.
struct LibraryBlock {
  SInt32 first;
  SInt32 last;
  const char* lumped_key;
  void (*get_key)(SInt32 code, CFStringRef* outKey);
};

constexpr LibraryBlock kLibraries[] = {
    {10001, 10046, "GL GL_Err", GL_GetLibErrorKey},
    {11001, 11029, "GL QT_Err", QT_GetLibErrorKey},
    {14001, 14019, "GL CO_Err", CO_GetLibErrorKey},
    {19001, 19002, "GL IA_Err", IA_GetLibErrorKey},
    {22001, 22001, "GL LOG_Err", LOG_GetLibErrorKey},
    {25001, 25002, "GL NS_Err", NS_GetLibErrorKey},
    {24001, 24004, "GL NR_Err", NR_GetLibErrorKey},
};

constexpr KeyRange kSystemKeys[] = {
    {0, 0, "GL NoErr"},
    {-128, -128, "GL NoErr"},
    {-34, -34, "GL DiskFullErr"},
    {-35, -35, "GL DiskNotFoundErr"},
    {-36, -36, "GL IOErr"},
    {-39, -39, "GL EndOfFileErr"},
    {-42, -42, "GL TooManyFilesOpenErr"},
    {-43, -43, "GL FileNotFoundErr"},
    {-44, -44, "GL DiskLockedErr"},
    {-45, -45, "GL FileLockedErr"},
    {-47, -47, "GL FileBusyErr"},
    {-54, -54, "GL FileBusyErr"},
    {-48, -48, "GL DuplFileNameErr"},
    {-49, -49, "GL OpWrErr"},
    {-50, -50, "GL ParamErr"},
    {-61, -61, "GL WrPermErr"},
    {-108, -108, "GL MemoryErr"},
    {-152, -151, "GL MemoryErr"},
    {-120, -120, "GL FolderNotFndErr"},
    {-124, -124, "GL ServerNotRespondingErr"},
    {-5016, -5016, "GL ServerNotRespondingErr"},
    {-192, -192, "GL NoResourceErr"},
    {-1310, -1309, "GL FileTooBigErr"},
    {-1402, -1402, "GL FileNameErr"},
    {-1411, -1410, "GL FileNameErr"},
    {-1501, -1500, "GL System Sound Err"},
    {-1708, -1708, "GL AEventNotHandledErr"},
    {-10962, -10960, "GL NIB Err"},
};

constexpr KeyRange kMovieToolboxKeys[] = {
    {-2109, -2101, "QT AtomErr"},          {-2098, -2098, "QT NotThreadSafeErr"},
    {-2051, -2049, "QT DataRefErr"},       {-2047, -2047, "QT DataRefErr"},
    {-2000, -2000, "QT DataRefErr"},       {-2048, -2048, "QT NoMovieFndErr"},
    {-2020, -2020, "QT ToolboxUninitErr"}, {-2015, -2014, "QT MovieTimeErr"},
    {-2010, -2010, "QT InvalidMovieErr"},  {-2009, -2009, "QT InvalidTrackErr"},
    {-2008, -2008, "QT InvalidMediaErr"},  {-2007, -2002, "QT OpenMovieErr"},
    {-2001, -2001, "QT SampleDescErr"},    {-2209, -2000, "QT GeneralNonLibErr"},
    {-232, -200, "QT SoundErr"},           {-261, -250, "QT MIDI_Err"},
    {-8992, -8960, "QT CodecErr"},
};

/// A status of a component's instance, which is a 32-bit pattern with its highest bit set.
constexpr SInt32 StatusOfBits(UInt32 bits) {
  return static_cast<SInt32>(bits);
}

/// The families, in the order in which their keys are looked for: statuses may be in several.
constexpr KeyRange kFamilies[] = {
    {-49, -33, "GL File Err"},
    {-61, -51, "GL File Err"},
    {-124, -120, "GL File Err"},
    {-1311, -1300, "GL File Err"},
    {-1429, -1400, "GL File Err"},
    {-4276, -4270, "GL File Err"},
    {-98, -91, "GL Network Err"},
    {-117, -108, "GL Memory Err"},
    {-171, -170, "GL ColorSync Err"},
    {-182, -175, "GL ColorSync Err"},
    {-4217, -4200, "GL ColorSync Err"},
    {-247, -240, "GL Speech Err"},
    {-610, -600, "GL Process Err"},
    {-863, -850, "GL Help Err"},
    {-1762, -1700, "GL AEvent Err"},
    {-2799, -2720, "GL AEvent Err"},
    {-10025, -10002, "GL AEvent Err"},
    {-1862, -1850, "GL Drag Err"},
    {-3005, -3000, "GL Component Err"},
    {StatusOfBits(0x80008001), StatusOfBits(0x80008002), "GL Component Err"},
    {-4009, -4000, "GL ColorPicker Err"},
    {-5063, -5000, "GL AFP Err"},
    {-5604, -5603, "GL Menu Err"},
    {-5623, -5620, "GL Menu Err"},
    {-5618, -5600, "GL Window Err"},
    {-8809, -8790, "GL ATSUI Err"},
    {-8959, -8900, "GL ATSUI Err"},
    {-22018, -22000, "GL MLTE Err"},
    {100000, 100999, "GL POSIX Err"},
    {-30599, -30580, "GL Dialog Item Err"},
    {-5604, -5603, "GL Dialog Item Err"},
    {-29299, -29275, "GL MP Err"},
    {-21775, -21766, "GL vImage Err"},
};

Boolean IsOfFamily(std::string_view key, SInt32 status) {
  for (const KeyRange& row : kFamilies) {
    if (key == row.key && row.first <= status && status <= row.last) return 1;
  }
  return 0;
}

void SetKey(CFStringRef key, CFStringRef* outKey) {
  if (outKey) *outKey = key;
}

/// Sets the key, and its text of a string table (null: the default one) if the key has a text.
void SetKeyAndText(CFStringRef key, CFStringRef table, CFStringRef* outKey, CFStringRef* outText) {
  SetKey(key, outKey);
  if (outText == nullptr) return;
  if (GL_EqualCFStr(key, CFSTR(quillmere::errors::kNoErrorKey))) return;
  if (GL_EqualCFStr(key, CFSTR(quillmere::errors::kUnknownErrorKey))) return;
  *outText = CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, key, table);
}

}  // namespace

void GL_GetSysErrorStringRef(SInt32 status, CFStringRef* outKey, CFStringRef* outText) {
  const KeyRange* row = FindRow(kSystemKeys, status);
  const CFStringRef key = row ? CFSTR(row->key) : GL_GetOtherSystemErrorKey(status);
  SetKeyAndText(key, CFSTR("GL System Errors"), outKey, outText);
}

void GL_GetQT_ErrorStringRef(SInt32 status, CFStringRef* outKey, CFStringRef* outText) {
  const CFStringRef key = CFSTR(FindKey(kMovieToolboxKeys, status));
  SetKeyAndText(key, CFSTR("QT System Errors"), outKey, outText);
}

void GL_GetFrameWorkErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText) {
  const KeyRange* row = FindRow(kFrameworkKeys, code);
  if (row) SetKeyAndText(CFSTR(row->key), CFSTR("GL Framework Errors"), outKey, outText);
}

void GL_GetLibraryErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText) {
  const LibraryBlock* library = FindRow(kLibraries, code);
  if (library == nullptr) return;
  CFStringRef key = nullptr;
  library->get_key(code, &key);
  SetKeyAndText(key, nullptr, outKey, outText);
}

void GL_GetLibraryLumpedErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText) {
  const LibraryBlock* library = FindRow(kLibraries, code);
  const char* key = library ? library->lumped_key : quillmere::errors::kUnknownErrorKey;
  SetKeyAndText(CFSTR(key), CFSTR("GL Lumped Library Errors"), outKey, outText);
}

void GL_GetUnixErrorStringRef(SInt32 code, CFStringRef* outKey, CFStringRef* outText) {
  constexpr SInt32 kLargestErrno = 103;
  if (code <= GL_UnixErrBase || code > GL_UnixErrBase + kLargestErrno) {
    SetKey(CFSTR(quillmere::errors::kUnknownErrorKey), outKey);
    return;
  }
  SetKey(CFSTR("Unix error key"), outKey);
  if (outText) {
    *outText = CFStringCreateWithFormat(kCFAllocatorDefault, nullptr, CFSTR("Unix error: %s"),
                                        std::strerror(code - GL_UnixErrBase));
  }
}

CFStringRef GL_GetOtherSystemErrorKey(SInt32 status) {
  return CFSTR(FindKey(kFamilies, status));
}

void GL_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kGeneralKeys, code, outKey);
}

void GL_PrintErrorWithSystemComment(SInt32 status) {
  std::printf("error = %ld, standard name = %s, standard comment = %s\n", static_cast<long>(status),
              GetMacOSStatusErrorString(status), GetMacOSStatusCommentString(status));
}

Boolean GL_IsFileError(SInt32 status) {
  return IsOfFamily("GL File Err", status);
}

Boolean GL_IsNetworkError(SInt32 status) {
  return IsOfFamily("GL Network Err", status);
}

Boolean GL_IsMemoryError(SInt32 status) {
  return IsOfFamily("GL Memory Err", status);
}

Boolean GL_IsColorSyncError(SInt32 status) {
  return IsOfFamily("GL ColorSync Err", status);
}

Boolean GL_IsSpeechError(SInt32 status) {
  return IsOfFamily("GL Speech Err", status);
}

Boolean GL_IsProcessError(SInt32 status) {
  return IsOfFamily("GL Process Err", status);
}

Boolean GL_IsHelpError(SInt32 status) {
  return IsOfFamily("GL Help Err", status);
}

Boolean GL_IsAEventError(SInt32 status) {
  return IsOfFamily("GL AEvent Err", status);
}

Boolean GL_IsDragError(SInt32 status) {
  return IsOfFamily("GL Drag Err", status);
}

Boolean GL_IsIconError(SInt32 status) {
  return IsOfFamily("GL Drag Err", status);
}

Boolean GL_IsComponentError(SInt32 status) {
  return IsOfFamily("GL Component Err", status);
}

Boolean GL_IsColorPickerError(SInt32 status) {
  return IsOfFamily("GL ColorPicker Err", status);
}

Boolean GL_IsAFP_Error(SInt32 status) {
  return IsOfFamily("GL AFP Err", status);
}

Boolean GL_IsMenuError(SInt32 status) {
  return IsOfFamily("GL Menu Err", status);
}

Boolean GL_IsWindowError(SInt32 status) {
  return IsOfFamily("GL Window Err", status);
}

Boolean GL_IsDisplayError(SInt32 status) {
  return IsOfFamily("GL Window Err", status);
}

Boolean GL_IsATSUI_Error(SInt32 status) {
  return IsOfFamily("GL ATSUI Err", status);
}

Boolean GL_IsMLTE_Error(SInt32 status) {
  return IsOfFamily("GL MLTE Err", status);
}

Boolean GL_IsPOSIX_Error(SInt32 status) {
  return IsOfFamily("GL POSIX Err", status);
}

Boolean GL_IsControlError(SInt32 status) {
  return IsOfFamily("GL Dialog Item Err", status);
}

Boolean GL_IsMP_Error(SInt32 status) {
  return IsOfFamily("GL MP Err", status);
}

Boolean GL_Is_vImageError(SInt32 status) {
  return IsOfFamily("GL vImage Err", status);
}
