/// A log client for tests: a logs folder of its own, a main thread, and a script whose text window
/// is a vector.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "ORW_Debug.h"
#include "event_queue.h"
#include "event_targets.h"
#include "log_windows.h"
#include "test_files.h"

namespace quillmere::test {

class DebugTest : public ::testing::Test {
 protected:
  using WindowText = std::pair<std::string, std::string>;

  void SetUp() override {
    setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
    ASSERT_EQ(noErr, DBG_CreateDbgDataKey());
    ASSERT_EQ(noErr, DBG_InitAppDbgData(&app, "App", 2));
    ASSERT_EQ(noErr, DBG_AddThread(&app, kDBG_MainThread, "Main", 0, nullptr, 0, 1));
    main = DBG_FindThreadByTypeIndexAndProjNum(app.threads, kDBG_MainThread, 0, 0);
    ASSERT_NE(nullptr, main);
    DBG_MakeDefaultDbgPrintSett(&main->printSett);
    main->printSett.printTime = 0;
    main->printingOn = 1;
  }
  void TearDown() override {
    Pump();
    DBG_DisposeAppDbgData(&app);
    scripts::SetLogWindowReceiver(nullptr, nullptr);
    if (app.scriptComponent != nullptr) CloseComponent(app.scriptComponent);
    EXPECT_EQ(0, DBG_ShouldPrint(kDBG_MainTag));
  }

  /// Sends lines to the text window from here on.
  void UseTextWindow() {
    main->printSett.writeToFile = 0;
    main->printSett.sendToTextEdit = 1;
    app.scriptComponent = OpenDefaultComponent(kOSAComponentType, kAppleScriptSubtype);
    const char script[] = "function add_text_to_log(w, t) log_window_append(w, t) end";
    AEDesc text{};
    ASSERT_EQ(noErr, AECreateDesc("scpt"_4cc, script, sizeof script - 1, &text));
    ASSERT_EQ(noErr, OSALoad(app.scriptComponent, &text, kOSAModeNull, &app.scriptID));
    AEDisposeDesc(&text);
    scripts::SetLogWindowReceiver(
        [](void* test, std::string_view window, std::string_view shown) {
          static_cast<DebugTest*>(test)->window_texts.emplace_back(window, shown);
        },
        this);
  }

  /// Handles what waits in the main queue, without firing timers.
  void Pump() {
    while (EventRef event = events::TakeFromMainQueue()) {
      if (GetEventClass(event) == kDBG_EventClass) {
        EXPECT_EQ(app.scriptComponent != nullptr ? SInt32{noErr} : SInt32{paramErr},
                  DBG_HandleLogEvent(&app, event));
      }
      ReleaseEvent(event);
    }
  }

  /// All text that came to a window.
  std::string TextOfWindow(const std::string& name) const {
    std::string all;
    for (const WindowText& text : window_texts) {
      if (text.first == name) all += text.second;
    }
    return all;
  }

  std::filesystem::path LogFile(const std::string& window) const {
    return folder.path() / "quillmere/logs/ORW debug logs" / (window + ".txt");
  }
  static std::string Content(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::string MainLog() const { return Content(LogFile(main->logWindowName)); }

  TemporaryFolder folder;
  AppDbgData app{};
  PerThreadGlobalDbgData* main = nullptr;
  std::vector<WindowText> window_texts;
};

}  // namespace quillmere::test
