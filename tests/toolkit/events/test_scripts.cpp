// Scripts of the bundle: finding, calling, and what the caller is told.
#include <gtest/gtest.h>

#include <string>

#include "AE_basic.h"
#include "AE_scripts.h"
#include "GL_Errors.h"
#include "cf_bundle.h"
#include "log_windows.h"
#include "test_files.h"

namespace {

using quillmere::Owned;
using quillmere::OwnedDescriptor;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

std::string BytesOf(const AEDesc* descriptor) {
  std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(descriptor)), '\0');
  if (!bytes.empty()) AEGetDescData(descriptor, bytes.data(), static_cast<Size>(bytes.size()));
  return bytes;
}

/// A bundle with one script "test.scpt".
class BundleScripts : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(folder_ / "Scripts");
    quillmere::SetBundleResourceFolder(folder_.path());
    Write(
        "function sum(...) local s = 0 for i = 1, select('#', ...) do s = s + select(i, ...) end "
        "return s end\n"
        "function fail(n) error{number = n, message = 'it failed'} end\n"
        "function nothing() end\n"
        "function code() return print or error end\n"
        "return 'ran'");
    ASSERT_EQ(noErr, AE_LoadCompiledScript(CFSTR("test"), &script_, &component_));
  }
  void TearDown() override {
    AE_UnloadCompiledScript(script_, component_);
    quillmere::SetBundleResourceFolder({});
  }

  void Write(std::string_view source) { WriteFile(folder_ / "Scripts/test.scpt", source); }

  SInt32 Call(const char* name, std::initializer_list<SInt32> numbers) {
    OwnedDescriptor arguments;
    AECreateList(arguments.get());
    for (const SInt32 number : numbers)
      AEPutPtr(arguments.get(), 0, typeSInt32, &number, sizeof number);
    AEDisposeDesc(&result_);
    AEDisposeDesc(&error_);
    AEDisposeDesc(&number_);
    return AE_CallScriptSubroutine(component_, script_, name, arguments.get(), &result_, &error_,
                                   &number_);
  }

  TemporaryFolder folder_;
  OSAID script_ = 0;
  ComponentInstance component_ = nullptr;
  AEDesc result_ = {typeNull, nullptr};
  AEDesc error_ = {typeNull, nullptr};
  AEDesc number_ = {typeNull, nullptr};
};

TEST_F(BundleScripts, CallsASubroutine) {
  SInt32 sum = 0;
  ASSERT_EQ(noErr, Call("sum", {1, 2, 39}));
  ASSERT_EQ(typeSInt32, result_.descriptorType);
  AEGetDescData(&result_, &sum, sizeof sum);
  EXPECT_EQ(42, sum);
  EXPECT_EQ(typeNull, error_.descriptorType);
  EXPECT_EQ(typeNull, number_.descriptorType);
  AEDisposeDesc(&result_);
  EXPECT_EQ(noErr, AE_RunNamedSubroutineNoParams(component_, script_, "sum", &result_));
  AEGetDescData(&result_, &sum, sizeof sum);
  EXPECT_EQ(0, sum);
  AEDisposeDesc(&result_);
}

TEST_F(BundleScripts, TellsTextAndNumberOfAScriptError) {
  SInt16 number = 0;
  EXPECT_EQ(errOSAScriptError, Call("fail", {-43}));
  EXPECT_EQ("it failed", BytesOf(&error_));
  EXPECT_EQ("TEXT"_4cc, error_.descriptorType);
  ASSERT_EQ(typeSInt16, number_.descriptorType);
  AEGetDescData(&number_, &number, sizeof number);
  EXPECT_EQ(fnfErr, number);

  EXPECT_EQ(errOSAScriptError, Call("fail", {100000}));  // more than a `shor` holds
  EXPECT_EQ("Error -1700 getting script error number", BytesOf(&error_));
  EXPECT_EQ(typeNull, number_.descriptorType);

  EXPECT_EQ(errOSAScriptError, Call("absent", {}));
  EXPECT_EQ("The script has no subroutine \"absent\".", BytesOf(&error_));
  AEDisposeDesc(&error_);
  AEDisposeDesc(&number_);
}

TEST_F(BundleScripts, TellsOfAResultThatIsNoDescriptor) {
  EXPECT_EQ(noErr, Call("code", {}));
  EXPECT_EQ("Error -1700 coercing result", BytesOf(&error_));
  AEDisposeDesc(&error_);
}

TEST_F(BundleScripts, NullArgumentsBuildNothing) {
  OwnedDescriptor list;
  AECreateList(list.get());
  EXPECT_EQ(paramErr, AE_CallScriptSubroutine(component_, script_, "sum", nullptr, &result_,
                                              &error_, &number_));
  EXPECT_EQ(typeNull, error_.descriptorType);
  EXPECT_EQ(paramErr, AE_CallScriptSubroutine(nullptr, script_, "sum", list.get(), nullptr, nullptr,
                                              nullptr));
  EXPECT_EQ(paramErr,
            AE_CallScriptSubroutine(component_, 0, "sum", list.get(), nullptr, nullptr, nullptr));
  EXPECT_EQ(paramErr, AE_RunNamedSubroutineNoParams(component_, script_, nullptr, nullptr));
}

/// IDs count up, so that the next one tells which were made, and that a result was given up.
TEST_F(BundleScripts, AnUnwantedResultIsGivenUp) {
  ASSERT_EQ(noErr, AE_RunNamedSubroutineNoParams(component_, script_, "nothing", nullptr));
  OSAID context = 0;
  ASSERT_EQ(noErr, OSAMakeContext(component_, nullptr, 0, &context));
  EXPECT_EQ(errOSAInvalidID, OSADispose(component_, context - 1));
}

TEST_F(BundleScripts, ScriptsThatAreNotThere) {
  OSAID script = 1;
  auto component = component_;
  EXPECT_EQ(fnfErr, AE_LoadCompiledScript(CFSTR("absent"), &script, &component));
  EXPECT_EQ(0U, script);
  EXPECT_EQ(nullptr, component);
  EXPECT_EQ(fnfErr, AE_LoadExecuteScript(CFSTR("absent"), nullptr, nullptr, nullptr));
  Write("function (");
  EXPECT_EQ(errOSAScriptError, AE_LoadCompiledScript(CFSTR("test"), &script, &component));
  EXPECT_EQ(nullptr, component);
}

TEST_F(BundleScripts, RunsAFileOnce) {
  EXPECT_EQ(noErr, AE_LoadExecuteScript(CFSTR("test"), &result_, &error_, &number_));
  EXPECT_EQ("ran", BytesOf(&result_));
  AEDisposeDesc(&result_);
  Write("error{number = -1, message = 'early'}");
  EXPECT_EQ(noErr, AE_LoadExecuteScript(CFSTR("test"), &result_, &error_, &number_));
  EXPECT_EQ(typeNull, result_.descriptorType);
  EXPECT_EQ("early", BytesOf(&error_));
  AEDisposeDesc(&error_);
  AEDisposeDesc(&number_);
}

TEST(DebugLogScript, HandsTheLinesToTheWindow) {
  std::string received;
  quillmere::scripts::SetLogWindowReceiver(
      [](void* to, std::string_view window, std::string_view text) {
        static_cast<std::string*>(to)->append(window).append("|").append(text);
      },
      &received);
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  OSAID script = 0;
  ComponentInstance component = nullptr;
  ASSERT_EQ(noErr, AE_LoadCompiledScript(CFSTR("debug log"), &script, &component));
  OwnedDescriptor lines;
  ASSERT_EQ(noErr, AEBuildDesc(lines.get(), nullptr, "[utf8(@),utf8(@)]", Size{3}, "win", Size{3},
                               "a\nb"));
  EXPECT_EQ(noErr, AE_CallScriptSubroutine(component, script, "add_text_to_log", lines.get(),
                                           nullptr, nullptr, nullptr));
  EXPECT_EQ("win|a\nb", received);
  AE_UnloadCompiledScript(script, component);
  quillmere::SetBundleResourceFolder({});
  quillmere::scripts::SetLogWindowReceiver(nullptr, nullptr);
}

TEST(BuildErrors, BecomeTexts) {
  const std::pair<AEBuildError, const char*> cases[] = {
      {{0, 0}, "Error 0 (No error) found at position 0."},
      {{4, 7}, "Error 4 (\"-\" not followed by digits) found at position 7."},
      {{8, 1}, "Error 8 (Missing $ or \"\xE2\x88\x9A\xC3\xA0\") found at position 1."},
      {{15, 3}, "Error 15 (Expected \",\" or \"}\") found at position 3."},
      {{19, 3}, "Error 19 (\"@@\" substitution must be coerced) found at position 3."},
      {{20, 3}, "Error 20 (Unknown error) found at position 3."},
  };
  for (const auto& [error, text] : cases) {
    OwnedDescriptor wide;
    OwnedDescriptor narrow;
    AE_BuildErrorToAEDesc(&error, wide.get());
    ASSERT_EQ("ut16"_4cc, wide.get()->descriptorType);
    EXPECT_EQ('\0', BytesOf(wide.get())[0]);  // big-endian
    ASSERT_EQ(noErr, AECoerceDesc(wide.get(), "utf8"_4cc, narrow.get()));
    EXPECT_EQ(text, BytesOf(narrow.get()));
  }
}

}  // namespace
