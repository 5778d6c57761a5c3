// Components that load scripts, call their subroutines and stop those that run away.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "event_builder.h"
#include "log_windows.h"
#include "open_scripting.h"
#include "test_files.h"
#include "text_coercions.h"

namespace {

using quillmere::OwnedDescriptor;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

std::string TextOf(const AEDesc& descriptor) {
  std::string text(static_cast<std::size_t>(AEGetDescDataSize(&descriptor)), '\0');
  if (!text.empty()) AEGetDescData(&descriptor, text.data(), static_cast<Size>(text.size()));
  return text;
}

AEDesc Built(const char* format, ...) {
  AEDesc built{};
  AEBuildError error{};
  va_list arguments;
  va_start(arguments, format);
  EXPECT_EQ(noErr, vAEBuildDesc(&built, &error, format, arguments))
      << format << " at " << error.fErrorPos;
  va_end(arguments);
  return built;
}

/// A component with one script.
class Scripts : public testing::Test {
 protected:
  void SetUp() override { Open({}); }
  void TearDown() override {
    EXPECT_EQ(noErr, CloseComponent(component_));
    quillmere::scripts::SetScriptLimits({});
  }

  void Open(const quillmere::scripts::ScriptLimits& limits) {
    if (component_ != nullptr) CloseComponent(component_);
    quillmere::scripts::SetScriptLimits(limits);
    component_ = OpenDefaultComponent("osa "_4cc, "ascr"_4cc);
    ASSERT_NE(nullptr, component_);
  }

  OSAError Load(const std::string& source, OSType type = typeScript) {
    OwnedDescriptor data;
    AECreateDesc(type, source.data(), static_cast<Size>(source.size()), data.get());
    return OSALoad(component_, data.get(), kOSAModeNull, &script_);
  }

  /// Calls a subroutine with a list of arguments, which is disposed of.
  OSAError Call(const char* name, AEDesc arguments, OSAID* result, OSAID context = 0) {
    const UInt32 self[] = {0, 2};
    OwnedDescriptor event;
    EXPECT_EQ(noErr,
              AEBuildAppleEvent("ascr"_4cc, "psbr"_4cc, "psn "_4cc, self, sizeof self, -1, 0,
                                event.get(), nullptr, "'----':@,'snam':TEXT(@)", &arguments, name));
    AEDisposeDesc(&arguments);
    return OSAExecuteEvent(component_, event.get(), script_, context, kOSAModeNull, result);
  }

  /// What a subroutine gives for a list of arguments.
  AEDesc Result(const char* name, AEDesc arguments) {
    OSAID id = 0;
    AEDesc result{};
    EXPECT_EQ(noErr, Call(name, arguments, &id)) << Error();
    EXPECT_EQ(noErr, OSACoerceToDesc(component_, id, typeWildCard, kOSAModeNull, &result));
    EXPECT_EQ(noErr, OSADispose(component_, id));
    return result;
  }

  std::string Error() {
    OwnedDescriptor text;
    EXPECT_EQ(noErr, OSAScriptError(component_, keyErrorString, typeText, text.get()));
    return TextOf(*text.get());
  }
  SInt32 ErrorNumber() {
    OwnedDescriptor number;
    SInt32 value = 0;
    EXPECT_EQ(noErr, OSAScriptError(component_, keyErrorNumber, typeSInt32, number.get()));
    AEGetDescData(number.get(), &value, sizeof value);
    return value;
  }

  /// Runs `body` as a subroutine and expects a script error with a number.
  void ExpectFault(const std::string& body, SInt32 number) {
    SCOPED_TRACE(body);
    OSAID result = 77;
    ASSERT_EQ(noErr, Load("function f(...) " + body + " end")) << Error();
    EXPECT_EQ(errOSAScriptError, Call("f", Built("[]"), &result));
    EXPECT_EQ(0U, result);
    EXPECT_EQ(number, ErrorNumber());
    EXPECT_NE("", Error());
    EXPECT_EQ(noErr, OSADispose(component_, script_));
  }

  ComponentInstance component_ = nullptr;
  OSAID script_ = 0;
};

TEST_F(Scripts, CallsASubroutineWithTheItemsOfAList) {
  ASSERT_EQ(noErr, Load("local calls = 0\n"
                        "function join(a, b, c) calls = calls + 1\n"
                        "  return a .. '/' .. b .. '/' .. tostring(c) .. '/' .. calls end"));
  OwnedDescriptor first;
  *first.get() = Result("join", Built("[TEXT(@),utf8(@),-7]", "\xC3\xA4", Size{2}, "ab"));
  EXPECT_EQ("\xC3\xA4/ab/-7/1", TextOf(*first.get()));
  EXPECT_EQ(typeUTF8Text, first.get()->descriptorType);
  OwnedDescriptor second;  // the script's variables live on
  *second.get() = Result("join", Built("['b   ',(7)]"));
  EXPECT_EQ("b   /7/nil/2", TextOf(*second.get()));
}

/// Each value goes through a script and comes back as itself.
TEST_F(Scripts, ValuesComeBackAsTheyWent) {
  ASSERT_EQ(noErr, Load("function same(x) return x end"));
  const SInt64 wide = -5'000'000'000;
  struct Case {
    AEDesc descriptor;
    OSType type;
  };
  const Case cases[] = {
      {Built("[long(@)]", -123456), typeSInt32},
      {Built("[comp(@)]", wide), typeSInt64},
      {Built("[doub(@)]", 0.1), typeIEEE64BitFloatingPoint},
      {Built("[bool(@)]", 1), typeBoolean},
      {Built("[utf8(@)]", Size{5}, "a\0\xE2\x82\xAC"), typeUTF8Text},
      {Built("[TEXT($FF00$)]"), typeText},
      {Built("[qdrt($0001000200030004$)]"), "qdrt"_4cc},
  };
  for (const Case& one : cases) {
    OwnedDescriptor sent;
    ASSERT_EQ(noErr, AEGetNthDesc(&one.descriptor, 1, typeWildCard, nullptr, sent.get()));
    OwnedDescriptor back;
    *back.get() = Result("same", one.descriptor);
    EXPECT_EQ(one.type, back.get()->descriptorType);
    EXPECT_EQ(TextOf(*sent.get()), TextOf(*back.get()));
  }
}

TEST_F(Scripts, ConvertsListsAndRecordsWithinEachOther) {
  ASSERT_EQ(noErr, Load("function swap(r) return {r['ab'][2], name = r.flag, r['ab'][1]}, 1 end\n"
                        "function record(r) return {ab = r['ab'][3].x, n = #r['ab']} end"));
  const char* const format = "[{ab:[1,2,{x:bool(@)}],'flag':TEXT(@)}]";
  OwnedDescriptor record;
  *record.get() = Result("record", Built(format, 0, "t"));
  EXPECT_TRUE(AECheckIsRecord(record.get()));
  SInt32 count = 0;
  Boolean truth = 1;
  EXPECT_EQ(noErr, AEGetParamPtr(record.get(), "n   "_4cc, typeSInt32, nullptr, &count,
                                 sizeof count, nullptr));
  EXPECT_EQ(3, count);
  EXPECT_EQ(noErr,
            AEGetParamPtr(record.get(), "ab  "_4cc, typeBoolean, nullptr, &truth, 1, nullptr));
  EXPECT_EQ(0, truth);

  OSAID mixed = 0;  // neither a list nor a record
  ASSERT_EQ(noErr, Call("swap", Built(format, 0, "t"), &mixed));
  OwnedDescriptor none;
  EXPECT_EQ(errAECoercionFail,
            OSACoerceToDesc(component_, mixed, typeWildCard, kOSAModeNull, none.get()));
}

TEST_F(Scripts, ReadsTextAndCodesOfAnyForm) {
  ASSERT_EQ(noErr, Load("function all(...) local t = {}\n"
                        "  for i = 1, select('#', ...) do t[i] = tostring((select(i, ...))) end\n"
                        "  return table.concat(t, '|') end"));
  const UniChar native[] = {0x20AC, 'x'};
  const UniChar marked[] = {0xFEFF, 0xE4};
  OwnedDescriptor text;
  *text.get() = Result("all", Built("[utxt(@),ut16($20AC0041$),ut16(@),type(msng),type(abc),a]",
                                    Size{4}, native, Size{4}, marked));
  EXPECT_EQ(
      "\xE2\x82\xACx|\xE2\x82\xAC"
      "A|\xC3\xA4|nil|abc |a   ",
      TextOf(*text.get()));
}

TEST_F(Scripts, ValuesWithoutADescriptorAreRefused) {
  ASSERT_EQ(noErr,
            Load("function cycle() local t = {} t[1] = t return t end\n"
                 "function wide() local t = {} for i = 1, 60 do t = {t, t} end return t end\n"
                 "function code() return error end\n"
                 "function hole() return {1, nil, 3, [9] = 1} end\n"
                 "function long_key() return {abcde = 1} end"));
  const std::pair<const char*, OSAError> cases[] = {{"cycle", errAECoercionFail},
                                                    {"wide", memFullErr},
                                                    {"code", errAECoercionFail},
                                                    {"hole", errAECoercionFail},
                                                    {"long_key", errAECoercionFail}};
  for (const auto& [name, status] : cases) {
    OSAID id = 0;
    OwnedDescriptor result;
    ASSERT_EQ(noErr, Call(name, Built("[]"), &id));
    EXPECT_EQ(status, OSACoerceToDesc(component_, id, typeWildCard, kOSAModeNull, result.get()))
        << name;
    EXPECT_EQ(typeNull, result.get()->descriptorType);
  }
}

TEST_F(Scripts, TellsOfScriptErrors) {
  ExpectFault("error('no')", errOSAGeneralError);
  EXPECT_EQ("script:1: no", Error());
  ExpectFault("error{number = -43, message = 'gone'}", fnfErr);
  EXPECT_EQ("gone", Error());
  ExpectFault("error{number = 1 << 40, message = 'x'}", errOSAGeneralError);
  ExpectFault("error(error)", errOSAGeneralError);
  ExpectFault("local x = nil + 1", errOSAGeneralError);
}

TEST_F(Scripts, RefusesWhatIsNoScript) {
  EXPECT_EQ(errOSAScriptError, Load("function ("));
  EXPECT_EQ(OSASyntaxError, ErrorNumber());
  EXPECT_EQ(0U, script_);
  EXPECT_EQ(errOSABadStorageType, Load("\x1bLua\x54"));
  EXPECT_EQ(errOSABadStorageType, Load("return", typeText));
  OwnedDescriptor none;
  EXPECT_EQ(errOSABadSelector, OSAScriptError(component_, "abcd"_4cc, typeWildCard, none.get()));
}

TEST_F(Scripts, NamesOfNoSubroutineAreScriptErrors) {
  ASSERT_EQ(noErr, Load("value = 1"));
  for (const char* name : {"f", "value", "error", ""}) {  // the library's are not the script's
    OSAID result = 0;
    EXPECT_EQ(errOSAScriptError, Call(name, Built("[]"), &result)) << name;
    EXPECT_EQ(errAEEventNotHandled, ErrorNumber());
  }
}

/// What reaches out of the sandbox is not there.
TEST_F(Scripts, SeesTheSafeLibrariesOnly) {
  ASSERT_EQ(noErr, Load("function seen(name) local v = _G\n"
                        "  for part in string.gmatch(name, '%w+') do v = v and v[part] end\n"
                        "  return type(v) end"));
  for (const char* name : {"io", "os", "package", "debug", "coroutine", "require", "load", "dofile",
                           "loadfile", "collectgarbage", "print", "warn", "string.dump"}) {
    OwnedDescriptor type;
    *type.get() = Result("seen", Built("[TEXT(@)]", name));
    EXPECT_EQ("nil", TextOf(*type.get())) << name;
  }
  for (const char* name : {"string.rep", "table.sort", "math.floor", "utf8.char", "pcall"}) {
    OwnedDescriptor type;
    *type.get() = Result("seen", Built("[TEXT(@)]", name));
    EXPECT_EQ("function", TextOf(*type.get())) << name;
  }
}

/// Every way to run on ends, also where the script catches errors and where a library loops.
TEST_F(Scripts, StopsWhatRunsTooLong) {
  Open({.instructions = 200'000, .memory = 4 << 20, .processor_seconds = 60});
  for (const char* body : {
           "while true do end",
           "while true do pcall(function() while true do end end) end",
           "local function r() pcall(r) return r() end r()",
           "table.sort({3, 2, 1}, function() while true do end end)",
           "local t = setmetatable({}, {__index = function(t, k) return t[k + 1] and 1 end}) "
           "while true do pcall(function() return t[1] end) end",
           "while true do xpcall(error, function() while true do end end) end",
           "xpcall(function() while true do end end, function() while true do end end)",
           "local x <close> = setmetatable({}, {__close = function() while true do end end})",
       }) {
    ExpectFault(body, errAETimeout);
  }
  for (const char* body : {
           "string.rep('', 1 << 62)",
           "table.move({}, 1, math.maxinteger - 1, 2)",
           "table.insert(setmetatable({}, {__len = function() return 1 << 60 end}), 1, 1)",
           "string.find(('a'):rep(3000), ('a-'):rep(12) .. 'b')",
           "for x in string.gmatch(('^'):rep(20000), '^.-.-b') do end",
           "return (('a'):rep(2000000)):find(('a'):rep(100000) .. 'b', 1, true)",
           "setmetatable({}, {__gc = function() while true do end end})",
           "table.concat(setmetatable({}, {__index = string.char}), '', 1, 1 << 40)",
       }) {
    ExpectFault(body, errOSAGeneralError);
  }
}

TEST_F(Scripts, StopsWhatTakesTooMuchMemory) {
  Open({.instructions = 50'000'000, .memory = 4 << 20, .processor_seconds = 60});
  for (const char* body :
       {"local t = {} while true do t[#t + 1] = {} end",
        "local s = 'x' while true do s = s .. s end", "return string.rep('x', 4 << 20)"}) {
    ExpectFault(body, memFullErr);
  }
  // The component is as good as new.
  ASSERT_EQ(noErr, Load("function f() return ('x'):rep(1000) end"));
  OwnedDescriptor text;
  *text.get() = Result("f", Built("[]"));
  EXPECT_EQ(std::string(1000, 'x'), TextOf(*text.get()));
}

TEST_F(Scripts, StopsWhatTakesTooMuchProcessorTime) {
  Open({.instructions = INT64_MAX, .memory = 4 << 20, .processor_seconds = 0.05});
  ExpectFault("while true do end", errAETimeout);
}

TEST_F(Scripts, OrdinaryPatternsPass) {
  ASSERT_EQ(noErr, Load("function trim(s) return (s:gsub('^%s*(.-)%s*$', '%1')) end\n"
                        "function count(s) return select(2, s:gsub('[%w_]+', '')) end"));
  OwnedDescriptor text;
  *text.get() = Result("trim", Built("[TEXT(@)]", "  a line of text \n"));
  EXPECT_EQ("a line of text", TextOf(*text.get()));
  const std::string words(8000, 'w');
  OwnedDescriptor count;
  *count.get() = Result("count", Built("[TEXT(@)]", words.c_str()));
  EXPECT_EQ(typeSInt32, count.get()->descriptorType);
}

TEST_F(Scripts, ContextsKeepVariablesApart) {
  const TemporaryFolder folder;
  const auto run = [&](std::string_view source, OSAID context, OSAID* result) {
    FSRef file{};
    WriteFile(folder / "a.scpt", source);
    EXPECT_EQ(noErr, quillmere::files::ReferenceOf(folder / "a.scpt", &file));
    return OSALoadExecuteFile(component_, &file, context, kOSAModeNull, result);
  };
  OSAID parent = 0;
  OSAID child = 0;
  OSAID other = 0;
  OSAID result = 0;
  ASSERT_EQ(noErr, OSAMakeContext(component_, nullptr, 0, &parent));
  ASSERT_EQ(noErr, OSAMakeContext(component_, nullptr, parent, &child));
  ASSERT_EQ(noErr, OSAMakeContext(component_, nullptr, 0, &other));
  ASSERT_EQ(noErr, run("a = 1 _G.b = 2", parent, &result));
  ASSERT_EQ(noErr, run("a = a + b", child, &result));
  for (const auto& [context, sum] : {std::pair{parent, 1}, {child, 3}, {other, -1}}) {
    OwnedDescriptor value;
    SInt32 number = 0;
    ASSERT_EQ(noErr, run("return a or -1", context, &result));
    ASSERT_EQ(noErr, OSACoerceToDesc(component_, result, typeSInt32, 0, value.get()));
    AEGetDescData(value.get(), &number, sizeof number);
    EXPECT_EQ(sum, number);
  }
  EXPECT_EQ(errOSAScriptError, run("error('in a file')", other, &result));
  EXPECT_EQ("a.scpt:1: in a file", Error());
  EXPECT_EQ(errOSABadStorageType, run("\x1bLua", other, &result));
  EXPECT_EQ(errOSAInvalidID, run("return 1", result + 1000, &result));

  // One script in two contexts has two sets of variables.
  ASSERT_EQ(noErr, Load("n = 0 function f() n = n + 1 return n end"));
  for (const auto& [context, count] : {std::pair{OSAID{0}, 1}, {other, 1}, {OSAID{0}, 2}}) {
    OwnedDescriptor value;
    SInt32 number = 0;
    ASSERT_EQ(noErr, Call("f", Built("[]"), &result, context));
    ASSERT_EQ(noErr, OSACoerceToDesc(component_, result, typeSInt32, 0, value.get()));
    AEGetDescData(value.get(), &number, sizeof number);
    EXPECT_EQ(count, number);
  }
}

TEST_F(Scripts, RefusesBadIdsAndComponents) {
  OSAID result = 0;
  OwnedDescriptor none;
  const auto stranger = reinterpret_cast<ComponentInstance>(std::uintptr_t{987654});
  ASSERT_EQ(noErr, Load("function f() end"));
  ASSERT_EQ(noErr, Call("f", Built("[]"), &result));
  EXPECT_EQ(errOSAInvalidID, OSACoerceToDesc(component_, script_, typeWildCard, 0, none.get()));
  EXPECT_EQ(noErr, OSADispose(component_, result));
  EXPECT_EQ(errOSAInvalidID, OSADispose(component_, result));
  EXPECT_EQ(noErr, OSADispose(component_, kOSANullScript));
  EXPECT_EQ(errOSAInvalidID, OSAMakeContext(component_, nullptr, script_, &result));
  EXPECT_EQ(noErr, OSADispose(component_, script_));
  EXPECT_EQ(errOSAInvalidID, Call("f", Built("[]"), &result));
  EXPECT_EQ(badComponentInstance, OSADispose(stranger, 1));
  EXPECT_EQ(invalidComponentID, CloseComponent(stranger));
  EXPECT_EQ(invalidComponentID, CloseComponent(ComponentInstance{nullptr}));
  EXPECT_EQ(nullptr, OpenDefaultComponent("osa "_4cc, "java"_4cc));
  OwnedDescriptor event;
  AECreateAppleEvent("aevt"_4cc, "quit"_4cc, nullptr, -1, 0, event.get());
  EXPECT_EQ(errAEEventNotHandled, OSAExecuteEvent(component_, event.get(), 1, 0, 0, &result));
}

struct Received {
  ComponentInstance component;
  std::vector<std::string> lines;
  OSErr close_status;
};

TEST_F(Scripts, LinesReachTheRegisteredWindow) {
  Received received = {component_, {}, noErr};
  quillmere::scripts::SetLogWindowReceiver(
      [](void* user_data, std::string_view window, std::string_view text) {
        auto* const to = static_cast<Received*>(user_data);
        to->lines.push_back(std::string(window) + ">" + std::string(text));
        to->close_status = CloseComponent(to->component);  // a running component stays
      },
      &received);
  ASSERT_EQ(noErr, Load("function f(w, t) log_window_append(w, t) end"));
  AEDisposeDesc(std::vector<AEDesc>{Result("f", Built("[TEXT(@),TEXT(@)]", "win", "a\nb"))}.data());
  EXPECT_EQ(std::vector<std::string>{"win>a\nb"}, received.lines);
  EXPECT_EQ(static_cast<OSErr>(errOSASystemError), received.close_status);

  quillmere::scripts::SetLogWindowReceiver(nullptr, nullptr);
  testing::internal::CaptureStderr();
  quillmere::scripts::AppendToLogWindow("win", "a\r\nb\n");
  EXPECT_EQ("win: a\nwin: b\n", testing::internal::GetCapturedStderr());
}

}  // namespace
