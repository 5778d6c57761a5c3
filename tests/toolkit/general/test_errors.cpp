// Statuses, keys and texts: every code of a wide range against the tables as they were agreed.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "CO_Errors.h"
#include "GL_Errors.h"
#include "GL_Strings_Unicode.h"
#include "IA_Errors.h"
#include "LOG_errors.h"
#include "NR_Errors.h"
#include "NS_Errors.h"
#include "QT_Error_Keys.h"
#include "cf_bundle.h"
#include "status_texts.h"
#include "strings_table.h"

namespace {

using quillmere::Owned;
using String = Owned<CFStringRef>;

struct Expected {
  SInt32 first;
  SInt32 last;
  const char* key;
};

constexpr Expected kFramework[] = {
    {4000, 4000, "GL NoErr"},
    {4001, 4001, "GL BadSystemErr"},
    {4002, 4002, "GL FatalErr"},
    {4003, 4003, "GL MultipleOpenErr"},
    {4005, 4005, "GL NoFileToRevertToErr"},
    {4006, 4006, "GL PrintErr"},
    {4007, 4007, "GL NoPrinterErr"},
    {4008, 4008, "GL NilPointerErr"},
};

constexpr Expected kLibrary[] = {
    {10001, 10001, "GL StringManipulationErr"},
    {10002, 10002, "GL StringManipulationErr"},
    {10003, 10003, "GL StringManipulationErr"},
    {10004, 10004, "GL StringManipulationErr"},
    {10005, 10005, "GL StringManipulationErr"},
    {10006, 10006, "GL StringManipulationErr"},
    {10007, 10007, "GL NumberOutOfBoundsErr"},
    {10008, 10008, "GL CharacterErr"},
    {10009, 10009, "GL CharacterErr"},
    {10014, 10014, "GL FileErr"},
    {10015, 10015, "GL PrefsFileNotFoundErr"},
    {10016, 10016, "GL FileErr"},
    {10017, 10017, "GL NoLargeVolumeSupportErr"},
    {10018, 10018, "GL LongFilePathErr"},
    {10019, 10019, "GL FileErr"},
    {10021, 10021, "GL ReadWriteErr"},
    {10022, 10022, "GL ReadWriteErr"},
    {10026, 10026, "GL RectangleErr"},
    {10028, 10028, "GL BundleErr"},
    {10029, 10029, "GL BundleErr"},
    {10030, 10030, "GL BundleErr"},
    {10031, 10031, "GL BundleErr"},
    {10035, 10038, "GL MessagePortErr"},
    {11001, 11001, "QT LowVersionErr"},
    {11002, 11002, "QT NoControllerOpenedErr"},
    {11003, 11003, "QT ComponentDidntHandleRequestErr"},
    {11004, 11004, "QT NoComponentFoundErr"},
    {11005, 11005, "QT DataRefIndexNotInMediaErr"},
    {11006, 11006, "QT CouldNotOpenMovieFileErr"},
    {11007, 11007, "QT CouldNotGetAllMovieFileReferencesErr"},
    {11008, 11008, "QT CouldNotDeleteMovieFileErr"},
    {11009, 11009, "QT CouldNotDeleteMovieFileErr"},
    {11010, 11010, "QT DataRefNotFileErr"},
    {11011, 11011, "QT NoVideoTrackErr"},
    {11013, 11013, "QT UnknownTimeScaleErr"},
    {11015, 11015, "QT MdatHeaderErr"},
    {11017, 11019, "QT AtomErr"},
    {11027, 11029, "QT LibErr"},
    {14001, 14001, "CO UnkownYCbCrTypeErr"},
    {14003, 14005, "CO UnalignedWidthOrLineSizeErr"},
    {14006, 14006, "CO CleanCenterWithinLineErr"},
    {14007, 14007, "CO CleanCenterWithinLineErr"},
    {14008, 14008, "CO ImageCenterNotHalfPixelPackAlignedErr"},
    {14009, 14009, "CO ImageCenterNotHalfPixelPackAlignedErr"},
    {14010, 14010, "CO NonStandardProductionApertureErr"},
    {14011, 14011, "CO NonStandardProductionApertureErr"},
    {14012, 14012, "CO NonStandardPixelAspectRatioErr"},
    {14013, 14013, "CO NonStandardCleanApertureErr"},
    {14014, 14014, "CO BufferSpatiallyNonStandardErr"},
    {14015, 14015, "CO BufferSpatiallyNonStandardErr"},
    {14016, 14018, "CO NonStandardTimingInfoErr"},
    {19001, 19001, "IA SoundExportCompNotFoundErr"},
    {19002, 19002, "IA SoundImportCompNotFoundErr"},
    {22001, 22001, "LOG CouldNotSaveLogErr"},
    {24001, 24001, "NR NoSVDConvergenceErr"},
    {24002, 24002, "NR NoClearExtrErr"},
    {24003, 24003, "NR SingMatrixErr"},
    {24004, 24004, "NR LackingPrecisionErr"},
    {25001, 25001, "NS NoNavServicesErr"},
    {25002, 25002, "NS NoEventProcErr"},
};

constexpr Expected kLumped[] = {
    {10001, 10046, "GL GL_Err"}, {11001, 11029, "GL QT_Err"}, {14001, 14019, "GL CO_Err"},
    {19001, 19001, "GL IA_Err"}, {19002, 19002, "GL IA_Err"}, {22001, 22001, "GL LOG_Err"},
    {25001, 25001, "GL NS_Err"}, {25002, 25002, "GL NS_Err"}, {24001, 24004, "GL NR_Err"},
};

constexpr Expected kSystem[] = {
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
    {-151, -151, "GL MemoryErr"},
    {-152, -152, "GL MemoryErr"},
    {-120, -120, "GL FolderNotFndErr"},
    {-124, -124, "GL ServerNotRespondingErr"},
    {-5016, -5016, "GL ServerNotRespondingErr"},
    {-192, -192, "GL NoResourceErr"},
    {-1309, -1309, "GL FileTooBigErr"},
    {-1310, -1310, "GL FileTooBigErr"},
    {-1402, -1402, "GL FileNameErr"},
    {-1410, -1410, "GL FileNameErr"},
    {-1411, -1411, "GL FileNameErr"},
    {-1500, -1500, "GL System Sound Err"},
    {-1501, -1501, "GL System Sound Err"},
    {-1708, -1708, "GL AEventNotHandledErr"},
    {-10962, -10960, "GL NIB Err"},
};

constexpr Expected kMovieToolbox[] = {
    {-2109, -2101, "QT AtomErr"},          {-2098, -2098, "QT NotThreadSafeErr"},
    {-2051, -2049, "QT DataRefErr"},       {-2047, -2047, "QT DataRefErr"},
    {-2000, -2000, "QT DataRefErr"},       {-2048, -2048, "QT NoMovieFndErr"},
    {-2020, -2020, "QT ToolboxUninitErr"}, {-2015, -2015, "QT MovieTimeErr"},
    {-2014, -2014, "QT MovieTimeErr"},     {-2010, -2010, "QT InvalidMovieErr"},
    {-2009, -2009, "QT InvalidTrackErr"},  {-2008, -2008, "QT InvalidMediaErr"},
    {-2007, -2002, "QT OpenMovieErr"},     {-2001, -2001, "QT SampleDescErr"},
    {-2209, -2000, "QT GeneralNonLibErr"}, {-232, -200, "QT SoundErr"},
    {-261, -250, "QT MIDI_Err"},           {-8992, -8960, "QT CodecErr"},
};

constexpr Expected kFamilies[] = {
    {-49, -33, "GL File Err"},
    {-61, -51, "GL File Err"},
    {-124, -120, "GL File Err"},
    {-1311, -1300, "GL File Err"},
    {-1429, -1400, "GL File Err"},
    {-4276, -4270, "GL File Err"},
    {-98, -91, "GL Network Err"},
    {-117, -108, "GL Memory Err"},
    {-171, -171, "GL ColorSync Err"},
    {-170, -170, "GL ColorSync Err"},
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
    {-2147450879, -2147450879, "GL Component Err"},
    {-2147450878, -2147450878, "GL Component Err"},
    {-4009, -4000, "GL ColorPicker Err"},
    {-5063, -5000, "GL AFP Err"},
    {-5604, -5604, "GL Menu Err"},
    {-5603, -5603, "GL Menu Err"},
    {-5623, -5620, "GL Menu Err"},
    {-5618, -5600, "GL Window Err"},
    {-8809, -8790, "GL ATSUI Err"},
    {-8959, -8900, "GL ATSUI Err"},
    {-22018, -22000, "GL MLTE Err"},
    {100000, 100999, "GL POSIX Err"},
    {-30599, -30580, "GL Dialog Item Err"},
    {-5604, -5604, "GL Dialog Item Err"},
    {-5603, -5603, "GL Dialog Item Err"},
    {-29299, -29275, "GL MP Err"},
    {-21775, -21766, "GL vImage Err"},
};

struct Classifier {
  Boolean (*is_of)(SInt32 status);
  const char* key;
};
constexpr Classifier kClassifiers[] = {
    {GL_IsFileError, "GL File Err"},
    {GL_IsNetworkError, "GL Network Err"},
    {GL_IsMemoryError, "GL Memory Err"},
    {GL_IsColorSyncError, "GL ColorSync Err"},
    {GL_IsSpeechError, "GL Speech Err"},
    {GL_IsProcessError, "GL Process Err"},
    {GL_IsHelpError, "GL Help Err"},
    {GL_IsAEventError, "GL AEvent Err"},
    {GL_IsDragError, "GL Drag Err"},
    {GL_IsIconError, "GL Drag Err"},
    {GL_IsComponentError, "GL Component Err"},
    {GL_IsColorPickerError, "GL ColorPicker Err"},
    {GL_IsAFP_Error, "GL AFP Err"},
    {GL_IsMenuError, "GL Menu Err"},
    {GL_IsWindowError, "GL Window Err"},
    {GL_IsDisplayError, "GL Window Err"},
    {GL_IsATSUI_Error, "GL ATSUI Err"},
    {GL_IsMLTE_Error, "GL MLTE Err"},
    {GL_IsPOSIX_Error, "GL POSIX Err"},
    {GL_IsControlError, "GL Dialog Item Err"},
    {GL_IsMP_Error, "GL MP Err"},
    {GL_Is_vImageError, "GL vImage Err"},
};

using TextFunction = void (*)(SInt32 code, CFStringRef* outKey, CFStringRef* outText);

/// The key of the first row that holds the code; an empty string if none does.
std::string KeyIn(std::span<const Expected> rows, SInt32 code) {
  for (const Expected& row : rows) {
    if (code >= row.first && code <= row.last) return row.key;
  }
  return "";
}

/// Every code from below the lowest to above the highest table row, and the ends of the range.
std::vector<SInt32> AllCodes() {
  std::vector<SInt32> codes = {std::numeric_limits<SInt32>::min(),
                               std::numeric_limits<SInt32>::max(),
                               static_cast<SInt32>(0x80008000),
                               static_cast<SInt32>(0x80008001),
                               static_cast<SInt32>(0x80008002),
                               static_cast<SInt32>(0x80008003),
                               0x8001,
                               0x8002,
                               -32767,
                               -32766};
  for (SInt32 code = -31000; code <= 36000; ++code)
    codes.push_back(code);
  for (SInt32 code = 99990; code <= 101010; ++code)
    codes.push_back(code);
  return codes;
}

/// The key that a text function sets; "as it came" if it sets none.
std::string KeyOf(TextFunction function, SInt32 code) {
  CFStringRef key = CFSTR("as it came");
  function(code, &key, nullptr);
  return quillmere::ToUtf8(key);
}

TEST(Errors, PlatformStatusesHaveTheirKeysAndThenThoseOfTheirFamilies) {
  for (const SInt32 code : AllCodes()) {
    std::string family = KeyIn(kFamilies, code);
    if (family.empty()) family = "GL UnknownErr";
    EXPECT_EQ(quillmere::ToUtf8(GL_GetOtherSystemErrorKey(code)), family) << code;
    const std::string own = KeyIn(kSystem, code);
    EXPECT_EQ(KeyOf(GL_GetSysErrorStringRef, code), own.empty() ? family : own) << code;
  }
}

TEST(Errors, EachClassifierTakesTheRangesOfItsFamily) {
  for (const SInt32 code : AllCodes()) {
    std::set<std::string> families;
    for (const Expected& row : kFamilies) {
      if (code >= row.first && code <= row.last) families.insert(row.key);
    }
    for (const Classifier& classifier : kClassifiers) {
      EXPECT_EQ(classifier.is_of(code), families.contains(classifier.key) ? 1 : 0)
          << classifier.key << " of " << code;
    }
  }
}

TEST(Errors, CodesOfOneNumberSpaceGetTheKeysOfTheirTables) {
  for (const SInt32 code : AllCodes()) {
    const std::string movie = KeyIn(kMovieToolbox, code);
    EXPECT_EQ(KeyOf(GL_GetQT_ErrorStringRef, code), movie.empty() ? "GL UnknownErr" : movie)
        << code;

    const std::string framework = KeyIn(kFramework, code);
    EXPECT_EQ(KeyOf(GL_GetFrameWorkErrorStringRef, code),
              framework.empty() ? "as it came" : framework)
        << code;

    const std::string lumped = KeyIn(kLumped, code);
    EXPECT_EQ(KeyOf(GL_GetLibraryLumpedErrorStringRef, code),
              lumped.empty() ? "GL UnknownErr" : lumped)
        << code;

    std::string own = lumped.empty() ? "as it came" : KeyIn(kLibrary, code);
    if (own.empty()) own = "GL UnknownErr";
    EXPECT_EQ(KeyOf(GL_GetLibraryErrorStringRef, code), own) << code;

    const bool is_unix = code >= 35001 && code <= 35103;
    EXPECT_EQ(KeyOf(GL_GetUnixErrorStringRef, code), is_unix ? "Unix error key" : "GL UnknownErr")
        << code;
  }
}

TEST(Errors, KeyFunctionsKnowOnlyTheirOwnLibrary) {
  constexpr void (*kFunctions[])(SInt32, CFStringRef*) = {
      GL_GetLibErrorKey,  QT_GetLibErrorKey, CO_GetLibErrorKey, IA_GetLibErrorKey,
      LOG_GetLibErrorKey, NS_GetLibErrorKey, NR_GetLibErrorKey};
  constexpr const char* kPrefixes[] = {"GL ", "QT ", "CO ", "IA ", "LOG ", "NS ", "NR "};
  for (std::size_t library = 0; library < std::size(kFunctions); ++library) {
    for (SInt32 code = 9990; code <= 26000; ++code) {
      const std::string expected = KeyIn(kLibrary, code);
      CFStringRef key = nullptr;
      kFunctions[library](code, &key);
      const bool own = expected.starts_with(kPrefixes[library]);
      EXPECT_EQ(quillmere::ToUtf8(key), own ? expected : "GL UnknownErr") << code;
    }
    kFunctions[library](10001, nullptr);
  }
}

TEST(Errors, LeaveTheTextOfSuccessAndOfUnknownCodesAlone) {
  const struct {
    TextFunction function;
    SInt32 code;
  } kSilent[] = {
      {GL_GetSysErrorStringRef, 0},          {GL_GetSysErrorStringRef, -128},
      {GL_GetSysErrorStringRef, -1},         {GL_GetQT_ErrorStringRef, -1999},
      {GL_GetFrameWorkErrorStringRef, 4000}, {GL_GetFrameWorkErrorStringRef, 4004},
      {GL_GetLibraryErrorStringRef, 10023},  {GL_GetLibraryErrorStringRef, 10039},
      {GL_GetLibraryErrorStringRef, 10047},  {GL_GetLibraryLumpedErrorStringRef, 10047},
      {GL_GetUnixErrorStringRef, 35000},     {GL_GetUnixErrorStringRef, 35104},
  };
  for (const auto& silent : kSilent) {
    const CFStringRef before = CFSTR("caller's own");
    CFStringRef text = before;
    CFStringRef key = nullptr;
    silent.function(silent.code, &key, &text);
    EXPECT_EQ(text, before) << silent.code;
  }
}

TEST(Errors, GiveTheCallerATextOfItsOwn) {
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  CFStringRef key = nullptr;
  String text;
  GL_GetSysErrorStringRef(-34, &key, text.out());
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "The disk is full.");
  EXPECT_EQ(CFGetRetainCount(text.get()), 1);
  EXPECT_EQ(key, CFSTR("GL DiskFullErr"));
  GL_GetUnixErrorStringRef(35002, nullptr, text.out());
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "Unix error: No such file or directory");
}

/// A temporary folder that goes with the test.
struct Folder {
  std::filesystem::path path;
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "errorsXXXXXX").string();
    path = mkdtemp(name.data());
  }
  ~Folder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
    quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  }
};

TEST(Errors, ShowTheKeyWhereTheTableHasNoEntry) {
  const Folder folder;
  std::filesystem::create_directory(folder.path / "en.lproj");
  std::ofstream(folder.path / "en.lproj/GL System Errors.strings")
      << "\"gl diskfullerr\" = \"keys of tables are exact\"; \"GL IOErr\" = \"Ein\\U00e4ther\";";
  quillmere::SetBundleResourceFolder(folder.path);
  String text;
  GL_GetSysErrorStringRef(-34, nullptr, text.out());
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "GL DiskFullErr");
  GL_GetSysErrorStringRef(-36, nullptr, text.out());
  EXPECT_EQ(quillmere::ToUtf8(text.get()), "Ein\u00e4ther");
}

TEST(Errors, EveryKeyHasATextAndEveryTextAKey) {
  const std::map<std::string, std::vector<TextFunction>> kTables = {
      {"GL System Errors", {GL_GetSysErrorStringRef}},
      {"QT System Errors", {GL_GetQT_ErrorStringRef}},
      {"GL Framework Errors", {GL_GetFrameWorkErrorStringRef}},
      {"GL Lumped Library Errors", {GL_GetLibraryLumpedErrorStringRef}},
      {"Localizable", {GL_GetLibraryErrorStringRef}},
  };
  const std::vector<SInt32> codes = AllCodes();
  for (const auto& [table, functions] : kTables) {
    std::set<std::string> keys;
    for (const SInt32 code : codes) {
      for (const TextFunction function : functions)
        keys.insert(KeyOf(function, code));
    }
    for (const char* const textless : {"GL NoErr", "GL UnknownErr", "as it came"})
      keys.erase(textless);

    std::ifstream file(
        std::filesystem::path(QUILLMERE_RESOURCES) / "en.lproj" / (table + ".strings"),
        std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(file)), {});
    std::set<std::string> entries;
    for (const auto& [key, text] : quillmere::ParseStringsTable(
             {reinterpret_cast<const UInt8*>(content.data()), content.size()})) {
      const std::string name(key.begin(), key.end());
      EXPECT_GT(text.size(), 10U) << name;
      EXPECT_EQ(text.back(), u'.') << name;
      entries.insert(name);
    }
    EXPECT_EQ(entries, keys) << table;
  }
}

TEST(Errors, NameAndExplainPlatformStatuses) {
  EXPECT_STREQ(GetMacOSStatusErrorString(-43), "fnfErr");
  EXPECT_STREQ(GetMacOSStatusCommentString(-43), "file not found");
  EXPECT_STREQ(GetMacOSStatusErrorString(-30591), "errDataSizeMismatch");
  EXPECT_STREQ(GetMacOSStatusErrorString(0), "noErr");
  for (const SInt32 none : {1, -1, 10001, std::numeric_limits<SInt32>::min()}) {
    EXPECT_STREQ(GetMacOSStatusErrorString(none), "") << none;
    EXPECT_STREQ(GetMacOSStatusCommentString(none), "") << none;
  }
  // Whatever has a key of its own has a name, too.
  for (const Expected& row : kSystem) {
    for (SInt32 status = row.first; status <= row.last; ++status)
      EXPECT_STRNE(GetMacOSStatusErrorString(status), "") << status;
  }
  testing::internal::CaptureStdout();
  GL_PrintErrorWithSystemComment(-43);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "error = -43, standard name = fnfErr, standard comment = file not found\n");
}

}  // namespace
