/// Lines, byte for byte, settings, and the log file.
#include "MF_FileObjects.h"
#include "debug_fixture.h"
#include "finder_information.h"
#include "status_texts.h"

namespace {

/// How a free-text line without a place of its own begins.
constexpr const char kFree[] = " - main -       ORW_Debug   967  ";

using quillmere::Owned;
using quillmere::test::DebugTest;

TEST_F(DebugTest, TextsJoinTheirPiecesWithCommas) {
  const std::string fnf =
      std::string(GetMacOSStatusErrorString(fnfErr)) + ", " + GetMacOSStatusCommentString(fnfErr);
  ASSERT_NE(", ", fnf);
  const struct {
    const char* assertion;
    const char* label;
    const char* error;
    SInt32 value;
    std::string expected;
  } cases[] = {
      {"", "END", nullptr, 0, "going to END"},
      {nullptr, nullptr, nullptr, 0, ""},
      {"", nullptr, "MF_Thing", 0, "MF_Thing"},
      {"err == 0 ", "END", "Open failed", -43,
       "err == 0  not true, Open failed, error=-43, " + fnf + ", going to END"},
      {"", nullptr, nullptr, -43, "error=-43, " + fnf},
      {"a", "", "", 1234567, "a not true, error=1234567"},
  };
  for (const auto& test : cases) {
    std::string text;
    DBG_MakeAssertStr(&main->printSett, test.assertion, test.label, test.error, test.value, &text);
    EXPECT_EQ(test.expected, text);
  }
  main->printSett.printErrorName = 0;
  main->printSett.printErrorComment = 0;
  main->printSett.printLabel = 0;
  std::string text;
  DBG_MakeAssertStr(&main->printSett, "", "END", "", -43, &text);
  EXPECT_EQ("error=-43", text);
}

TEST_F(DebugTest, PrefixesAlignNamesAndNumbers) {
  main->dbgData.subComponent = kDBG_MainTag;
  const std::string ellipsis = "\xE2\x80\xA6";
  const struct {
    const char* path;
    SInt32 line;
    std::string expected;
  } cases[] = {
      {"/a/b/File.cpp", 7, " - main -            File     7"},
      {"/a/exactly_fifteen.cpp", 0, " - main - exactly_fifteen"},
      {"abcdefghijklmno.cpp", 123456, " - main - abcdefghijklmno123456"},
      {"abcdefghijklmnop.cpp", 1234567, " - main - abcdefg" + ellipsis + "jklmnop1234567"},
      {"", 12, " - main    12"},
      {nullptr, -3, " - main"},
      // 15 characters of two bytes each are cut in front of the one that byte 18 splits.
      {"\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4", 0,
       " - main - \u00E4\u00E4\u00E4\u00E4\u00E4\u00E4\u00E4"},
  };
  for (const auto& test : cases) {
    std::string prefix;
    DBG_MakePrefix(main, test.path, test.line, &prefix);
    EXPECT_EQ(test.expected, prefix);
  }
  std::string prefix;
  main->dbgData.subComponent = kDBG_FileObjectsTag;
  DBG_MakePrefix(main, nullptr, 0, &prefix);
  EXPECT_EQ(" - mofX", prefix);
  main->dbgData.subComponent = 0;
  DBG_MakePrefix(main, nullptr, 0, &prefix);
  EXPECT_EQ(" - main", prefix);  // the thread's type
  main->printSett.sendToTextEdit = 1;
  main->printSett.printTime = 1;
  setenv("LC_ALL", "de_DE.UTF-8", 1);
  DBG_MakePrefix(main, nullptr, 0, &prefix);
  unsetenv("LC_ALL");
  ASSERT_EQ(8U, prefix.size());  // "19:05:09"
  EXPECT_EQ(':', prefix[2]);
  EXPECT_EQ(':', prefix[5]);
}

TEST_F(DebugTest, IndentationStopsAtSixtyFour) {
  char out[65];
  const struct {
    SInt32 level, step;
    std::size_t expected;
  } cases[] = {{1, 2, 2}, {32, 2, 64}, {200, 2, 64}, {-1, 2, 0}, {0x7FFFFFFF, 0x7FFFFFFF, 64}};
  for (const auto& test : cases) {
    DBG_MakeIndentStr(test.level, test.step, out);
    EXPECT_EQ(std::string(test.expected, ' '), out);
  }
}

TEST_F(DebugTest, TheFileHoldsTheLinesThatLevelAndDepthAllow) {
  EXPECT_EQ(1, DBG_ShouldPrint(kDBG_MainTag));
  DBG_SampleDebugAssert2("Third Party Client", "x", "END", "y", "/a/Source.c", 3, 0);
  DBG_PrintMessageVL(1, kDBG_MainTag, "/s/Caller.cpp", 88, "%s=%d", "n", 5);
  DBG_PrintMessageVL(2, kDBG_MainTag, "/s/Caller.cpp", 88, "too verbose");
  DBG_PrintMessageVL_Ext(1, kDBG_MainTag, "", 0, 4, "%s", "abc\u00E4");
  DBG_LogOSType(kDBG_MainTag, std::string(300, 'l').c_str(), "abcd"_4cc, nullptr, 0);
  DBG_LogLongVL(2, kDBG_MainTag, "silent", 1, nullptr, 0);
  DBG_LogLong(kDBG_MainTag, "n", -5, nullptr, 0);
  DBG_LogPtr(kDBG_MainTag, "p", reinterpret_cast<const void*>(0x10), nullptr, 0);
  int indents = 0;
  while (DBG_ShouldPrint(kDBG_MainTag) != 0)
    indents += DBG_Indent(kDBG_MainTag);
  EXPECT_EQ(11, indents);  // levels 0 to 10 print
  while (indents-- > 0)
    DBG_Outdent();
  EXPECT_EQ(0, main->dbgData.indentLevel);
  const std::string head = " - main";
  EXPECT_EQ(head + " -          Source     3  x not true, y, going to END\n" + head +
                " -          Caller    88  n=5\n" + kFree + "abc\n" + kFree +
                std::string(234, 'l') + "='abcd'\n" + kFree + "n = -5\n" + kFree + "p = 0x10\n",
            MainLog());
  EXPECT_EQ("Debug log for App, Main 0", std::string(main->logWindowName));
  quillmere::files::FinderInformation info;
  quillmere::files::ReadFinderInformation(LogFile(main->logWindowName), &info);
  EXPECT_EQ("TEXT"_4cc, info.Type());
  EXPECT_EQ("????"_4cc, info.Creator());
}

TEST_F(DebugTest, ListsBreakBeforeTheyPass255Bytes) {
  std::vector<SInt32> numbers(100, -2000000000);
  DBG_PrintSInt32List(kDBG_MainTag, nullptr, 0, numbers.data(), "list", 100);
  std::istringstream lines(MainLog());
  std::string line;
  const std::size_t head = std::strlen(kFree);
  ASSERT_TRUE(std::getline(lines, line));
  EXPECT_EQ("list, 100 elements:", line.substr(head));
  std::string all;
  while (std::getline(lines, line)) {
    EXPECT_LE(line.size() - head, 255U);
    EXPECT_EQ(',', line.back());
    all += line.substr(head);
  }
  std::string expected;
  for (int i = 0; i < 100; ++i)
    expected += "(" + std::to_string(i) + ",-2000000000),";
  EXPECT_EQ(expected, all);
}

TEST_F(DebugTest, AFileThatIsMovedAwayOrReplacedIsMadeAnew) {
  const auto path = LogFile(main->logWindowName);
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "one");
  std::filesystem::rename(path, path.parent_path() / "kept.txt");
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "two");
  EXPECT_EQ(std::string(kFree) + "two\n", MainLog());
  std::filesystem::remove(path);
  std::ofstream(path) << "other\n";
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "three");
  EXPECT_EQ(std::string("other\n") + kFree + "three\n", MainLog());
  EXPECT_EQ(std::string(kFree) + "one\n", Content(path.parent_path() / "kept.txt"));
}

TEST_F(DebugTest, NamesThatNoFileCanHaveStillGetALog) {
  std::string project(250, 'p');
  project[3] = '/';
  ASSERT_EQ(noErr, DBG_AddThread(&app, "work"_4cc, "\u00E4", 7, project.c_str(), 1, 0));
  auto* thread = DBG_FindThreadByTypeIndexAndProjNum(app.threads, "work"_4cc, 7, 1);
  ASSERT_NE(nullptr, thread);
  EXPECT_LT(std::strlen(thread->logWindowName), 256U);
  EXPECT_EQ(noErr, DBG_OpenCreateLogfile(thread->logWindowName, &thread->dbgData));
  std::string name(thread->logWindowName, 251);
  name.replace(name.find('/'), 1, ":");
  EXPECT_TRUE(std::filesystem::exists(LogFile(name)));
  EXPECT_EQ(1, DBG_EqualDbgPrintSett(&thread->printSett, &main->printSett));
}

TEST_F(DebugTest, AFolderThatCantBeMadeLosesTheLineAndSaysSo) {
  std::ofstream(folder.path() / "quillmere") << "in the way";
  testing::internal::CaptureStdout();
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "one");
  const std::string said = testing::internal::GetCapturedStdout();
  EXPECT_EQ(0U, said.find("Error -"));
  EXPECT_NE(std::string::npos,
            said.find(" opening/creating debug log file Debug log for App, Main 0\n"));
}

TEST_F(DebugTest, FileObjectsTraceTheirCallsAndFailedChecks) {
  FSRef none{};
  FSRef parent{};
  EXPECT_NE(noErr, MF_FSGetParentRef(&none, &parent));
  std::istringstream lines(MainLog());
  std::string opening;
  std::string failure;
  std::getline(lines, opening);
  std::getline(lines, failure);
  EXPECT_EQ("  MF_FSGetParentRef", opening.substr(opening.size() - 19));
  EXPECT_EQ(0U, opening.find(" - mofX -  MF_FileObjects"));
  EXPECT_NE(std::string::npos,
            failure.find("    result == 0  not true, FSGetCatalogInfo failed, error="));
  EXPECT_NE(std::string::npos, failure.find(", going to END"));
  EXPECT_EQ(0, main->dbgData.indentLevel);
}

TEST_F(DebugTest, FormsWithoutSettingsWriteToStandardError) {
  main->printSett.writeToFile = 0;
  testing::internal::CaptureStderr();
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "console");
  DBG_SampleDebugAssert1("C", "", nullptr, nullptr, nullptr, 0, 0);
  DBG_SampleDebugAssert1("C", "a", "END", "why", "f.c", 4, -50);
  DBG_DefaultDebugAssert("C", "a", "END", nullptr, "f.c", 4, -50);
  EXPECT_EQ(
      std::string(kFree) +
          "console\n"
          "Check failed: C:\n"
          "Assertion failed: C: a\n    END\n    why\n    file: f.c\n    line: 4\n    error: -50\n"
          "AssertMacros: a,  file: f.c, line: 4\n",
      testing::internal::GetCapturedStderr());
}

TEST_F(DebugTest, SettingsGoThroughADictionary) {
  DbgPrintSett settings{};
  DBG_MakeDefaultDbgPrintSett(&settings);
  EXPECT_EQ(1, DBG_DbgPrintSettEqualDefault(&settings));
  settings.printErrorComment = 0;
  settings.sendToTextEdit = 1;
  settings.callingChainDepth = -7;
  EXPECT_EQ(0, DBG_DbgPrintSettEqualDefault(&settings));
  CFDictionaryRef dictionary = nullptr;
  ASSERT_EQ(noErr, DBG_CreateSettDict(&settings, &dictionary));
  EXPECT_EQ(12, CFDictionaryGetCount(dictionary));
  DbgPrintSett read{};
  DBG_GetSettFromDict(dictionary, &read);
  EXPECT_EQ(1, DBG_EqualDbgPrintSett(&settings, &read));
  CFRelease(dictionary);
  const Owned<CFMutableDictionaryRef> odd(CFDictionaryCreateMutable(kCFAllocatorDefault));
  CFDictionarySetValue(odd.get(), CFSTR("Verbosity Level"), CFSTR("high"));
  CFDictionarySetValue(odd.get(), CFSTR("Print Time"), kCFBooleanFalse);
  DBG_GetSettFromDict(odd.get(), &read);
  EXPECT_EQ(1, read.verbosityLevel);
  EXPECT_EQ(0, read.printTime);
  char text[32];
  DBG_PrefsGetDebugMessagesDestinationString(&read, text);
  EXPECT_STREQ("Destination: file\n", text);
}

}  // namespace
