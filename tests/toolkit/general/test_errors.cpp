// Statuses, keys and texts: where ranges end and overlap, and that keys and texts keep step.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <set>
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

using TextFunction = void (*)(SInt32 code, CFStringRef* outKey, CFStringRef* outText);

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

TEST(Errors, FamiliesEndWhereTheyEndAndTheFirstMatchWins) {
  // A code just outside both ends of a range, those at its ends, and ranges that overlap.
  const struct {
    SInt32 status;
    const char* key;
  } cases[] = {
      {-32, "GL UnknownErr"},
      {-33, "GL File Err"},
      {-49, "GL File Err"},
      {-50, "GL UnknownErr"},
      {-51, "GL File Err"},
      {-61, "GL File Err"},
      {-62, "GL UnknownErr"},
      {-1299, "GL UnknownErr"},
      {-1300, "GL File Err"},
      {-1311, "GL File Err"},
      {-1312, "GL UnknownErr"},
      {-107, "GL UnknownErr"},
      {-117, "GL Memory Err"},
      {-118, "GL UnknownErr"},
      {-172, "GL UnknownErr"},
      {-174, "GL UnknownErr"},
      {-175, "GL ColorSync Err"},
      {-5603, "GL Menu Err"},
      {-5604, "GL Menu Err"},
      {-5605, "GL Window Err"},
      {-5618, "GL Window Err"},
      {-5619, "GL UnknownErr"},
      {-5620, "GL Menu Err"},
      {-10001, "GL UnknownErr"},
      {-10025, "GL AEvent Err"},
      {-30591, "GL Dialog Item Err"},
      {99999, "GL UnknownErr"},
      {100000, "GL POSIX Err"},
      {100999, "GL POSIX Err"},
      {101000, "GL UnknownErr"},
      {-2147450879, "GL Component Err"},
      {-2147450880, "GL UnknownErr"},
      {-2147450878, "GL Component Err"},
      {0x8001, "GL UnknownErr"},
      {-32767, "GL UnknownErr"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(quillmere::ToUtf8(GL_GetOtherSystemErrorKey(c.status)), c.key) << c.status;
  }
}

TEST(Errors, ClassifiersAreIndependentOfTheOrderOfFamilies) {
  for (const SInt32 shared : {-5603, -5604}) {
    EXPECT_TRUE(GL_IsMenuError(shared));
    EXPECT_TRUE(GL_IsWindowError(shared));
    EXPECT_TRUE(GL_IsControlError(shared));
    EXPECT_FALSE(GL_IsFileError(shared));
  }
  for (const SInt32 status : AllCodes()) {
    ASSERT_EQ(GL_IsDragError(status), GL_IsIconError(status)) << status;
    ASSERT_EQ(GL_IsWindowError(status), GL_IsDisplayError(status)) << status;
    const bool is_component = status == static_cast<SInt32>(0x80008001) ||
                              status == static_cast<SInt32>(0x80008002) ||
                              (status >= -3005 && status <= -3000);
    ASSERT_EQ(GL_IsComponentError(status) != 0, is_component) << status;
  }
}

TEST(Errors, ATextFunctionGivesTheKeyOfItsOwnNumberSpace) {
  const struct {
    TextFunction function;
    SInt32 code;
    const char* key;
  } cases[] = {
      {GL_GetSysErrorStringRef, -43, "GL FileNotFoundErr"},
      {GL_GetSysErrorStringRef, -40, "GL File Err"},
      {GL_GetSysErrorStringRef, -1310, "GL FileTooBigErr"},
      {GL_GetSysErrorStringRef, -1308, "GL File Err"},
      {GL_GetSysErrorStringRef, -128, "GL NoErr"},
      {GL_GetSysErrorStringRef, 1, "GL UnknownErr"},
      {GL_GetQT_ErrorStringRef, -2048, "QT NoMovieFndErr"},
      {GL_GetQT_ErrorStringRef, -2047, "QT DataRefErr"},
      {GL_GetQT_ErrorStringRef, -2100, "QT GeneralNonLibErr"},
      {GL_GetQT_ErrorStringRef, -2210, "GL UnknownErr"},
      {GL_GetFrameWorkErrorStringRef, 4008, "GL NilPointerErr"},
      {GL_GetFrameWorkErrorStringRef, 4004, "as it came"},
      {GL_GetLibraryErrorStringRef, 10005, "GL StringManipulationErr"},
      {GL_GetLibraryErrorStringRef, 10023, "GL UnknownErr"},
      {GL_GetLibraryErrorStringRef, 10046, "GL UnknownErr"},
      {GL_GetLibraryErrorStringRef, 10047, "as it came"},
      {GL_GetLibraryErrorStringRef, 11014, "GL UnknownErr"},
      {GL_GetLibraryErrorStringRef, 24003, "NR SingMatrixErr"},
      {GL_GetLibraryErrorStringRef, 25002, "NS NoEventProcErr"},
      {GL_GetLibraryErrorStringRef, 22002, "as it came"},
      {GL_GetLibraryLumpedErrorStringRef, 10023, "GL GL_Err"},
      {GL_GetLibraryLumpedErrorStringRef, 14019, "GL CO_Err"},
      {GL_GetLibraryLumpedErrorStringRef, 14020, "GL UnknownErr"},
      {GL_GetUnixErrorStringRef, 35001, "Unix error key"},
      {GL_GetUnixErrorStringRef, 35103, "Unix error key"},
      {GL_GetUnixErrorStringRef, 35104, "GL UnknownErr"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(KeyOf(c.function, c.code), c.key) << c.code;
}

TEST(Errors, KeyFunctionsKnowOnlyTheirOwnLibrary) {
  constexpr void (*kFunctions[])(SInt32, CFStringRef*) = {
      GL_GetLibErrorKey,  QT_GetLibErrorKey, CO_GetLibErrorKey, IA_GetLibErrorKey,
      LOG_GetLibErrorKey, NS_GetLibErrorKey, NR_GetLibErrorKey};
  constexpr const char* kPrefixes[] = {"GL ", "QT ", "CO ", "IA ", "LOG ", "NS ", "NR "};
  for (SInt32 code = 9990; code <= 26000; ++code) {
    int known = 0;
    for (std::size_t library = 0; library < std::size(kFunctions); ++library) {
      CFStringRef key = nullptr;
      kFunctions[library](code, &key);
      const std::string text = quillmere::ToUtf8(key);
      ASSERT_TRUE(text == "GL UnknownErr" || text.starts_with(kPrefixes[library])) << code;
      known += text != "GL UnknownErr" ? 1 : 0;
    }
    ASSERT_LE(known, 1) << code;
  }
  GL_GetLibErrorKey(10001, nullptr);
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
  for (SInt32 status = -11000; status <= 0; ++status) {
    if (!KeyOf(GL_GetSysErrorStringRef, status).ends_with(" Err") &&
        KeyOf(GL_GetSysErrorStringRef, status) != "GL UnknownErr") {
      EXPECT_STRNE(GetMacOSStatusErrorString(status), "") << status;
    }
  }
  testing::internal::CaptureStdout();
  GL_PrintErrorWithSystemComment(-43);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "error = -43, standard name = fnfErr, standard comment = file not found\n");
}

}  // namespace
