/// The way to the text window, and threads that come, log and go.
#include <atomic>
#include <thread>

#include "debug_fixture.h"

namespace {

using quillmere::test::DebugTest;

/// How a free-text line without a place of its own begins.
const std::string kFree = " - main -       ORW_Debug   967  ";

/// Sends a text as if the last chunk had just gone.
void SendNow(PerThreadGlobalDbgData* thread, const std::string& text) {
  thread->dbgData.lastSendTime = CFAbsoluteTimeGetCurrent();
  ASSERT_EQ(noErr, DBG_SendSendLinesCarbonEvent(thread, text.c_str()));
  ASSERT_LE(thread->dbgData.cacheLength, 8190);
  ASSERT_EQ(std::strlen(thread->dbgData.cache),
            static_cast<std::size_t>(thread->dbgData.cacheLength));
}

TEST_F(DebugTest, LinesWaitUntilASecondHasPassed) {
  UseTextWindow();
  SendNow(main, "one\n");
  SendNow(main, "two\n");
  Pump();
  EXPECT_TRUE(window_texts.empty());
  main->dbgData.lastSendTime -= 2;
  ASSERT_EQ(noErr, DBG_SendSendLinesCarbonEvent(main, "three\n"));
  EXPECT_EQ(0, main->dbgData.cacheLength);
  Pump();
  ASSERT_EQ(1U, window_texts.size());
  EXPECT_EQ("one\ntwo\nthree\n", window_texts[0].second);
  EXPECT_EQ(nullptr, app.timer);
  EXPECT_EQ(14, app.textLength);
}

TEST_F(DebugTest, TheCacheTakesExactlyWhatFits) {
  UseTextWindow();
  const std::string most(8185, 'm');
  SendNow(main, most);
  SendNow(main, "abcde");  // 8190 bytes
  EXPECT_EQ(8190, main->dbgData.cacheLength);
  Pump();
  EXPECT_TRUE(window_texts.empty());
  SendNow(main, "x");  // one more than fits: the rest goes ahead
  EXPECT_EQ(1, main->dbgData.cacheLength);
  Pump();
  EXPECT_EQ(1, main->dbgData.needTimer);
  ASSERT_NE(nullptr, app.timer);
  quillmere::events::FireDueTimers();
  Pump();
  EXPECT_EQ(most + "abcdex", TextOfWindow(main->logWindowName));
  EXPECT_EQ(0, main->dbgData.needTimer);
  EXPECT_EQ(nullptr, app.timer);
}

TEST_F(DebugTest, LongLinesGoInPiecesBetweenCharacters) {
  UseTextWindow();
  for (const std::size_t size : {8189U, 8190U, 8191U, 8192U, 16380U, 30000U}) {
    window_texts.clear();
    std::string line;
    while (line.size() < size)
      line += "\u00E4\U0001F3A5z";
    SendNow(main, "before\n");
    SendNow(main, line);
    DBG_FlushDebugMessageCache(main);
    Pump();
    EXPECT_EQ("before\n" + line, TextOfWindow(main->logWindowName)) << size;
    for (const WindowText& text : window_texts) {
      ASSERT_FALSE(text.second.empty());
      EXPECT_NE(0x80, text.second.front() & 0xC0) << "a character was split";
    }
  }
}

TEST_F(DebugTest, AThreadThatWaitsIsAskedForItsLines) {
  UseTextWindow();
  ASSERT_EQ(noErr, DBG_AddThread(&app, "work"_4cc, "Worker", 1, "Project", 3, 0));
  auto* worker = DBG_FindThreadByTypeIndexAndProjNum(app.threads, "work"_4cc, 1, 3);
  ASSERT_NE(nullptr, worker);
  EXPECT_EQ("Debug log for App, Project, Worker 1", std::string(worker->logWindowName));
  SendNow(worker, std::string(8190, 'w'));
  SendNow(worker, "rest\n");
  Pump();
  EXPECT_EQ(1, worker->dbgData.needTimer);
  quillmere::events::FireDueTimers();
  void* what = nullptr;
  void* command = nullptr;
  ASSERT_EQ(noErr, MPWaitOnQueue(worker->threadQueue, &what, nullptr, &command, 0));
  EXPECT_EQ(kDBG_ThreadMessage, reinterpret_cast<std::uintptr_t>(what));
  EXPECT_EQ(kDBG_SendLinesCommand, reinterpret_cast<std::uintptr_t>(command));
  DBG_SendDebugUpdateMessageToThreads(app.threads);
  ASSERT_EQ(noErr, MPWaitOnQueue(worker->threadQueue, &what, nullptr, &command, 0));
  EXPECT_EQ(kDBG_SettingsCommand, reinterpret_cast<std::uintptr_t>(command));
  // It goes without answering, never having bound its data: what it had is sent.
  EXPECT_EQ(noErr, DBG_RemoveThread(&app, "work"_4cc, 1, 0, 3));
  Pump();
  EXPECT_EQ(std::string(8190, 'w') + "rest\n",
            TextOfWindow("Debug log for App, Project, Worker 1"));
  EXPECT_EQ(nullptr, app.timer);
  EXPECT_EQ(noErr, DBG_RemoveThread(&app, "work"_4cc, 1, 0, 3));
}

TEST_F(DebugTest, EightThreadsJoinLogAndLeaveAtOnce) {
  UseTextWindow();
  constexpr SInt32 kRounds = 20;
  constexpr int kLines = 30;
  std::atomic<int> left = 8;
  std::vector<std::thread> threads;
  for (SInt32 t = 0; t < 8; ++t) {
    threads.emplace_back([this, t, &left] {
      for (SInt32 round = 0; round < kRounds; ++round) {
        ASSERT_EQ(noErr, DBG_AddThread(&app, "work"_4cc, "W", t * kRounds + round, nullptr, 0, 1));
        // The thread's own element is the one that its messages go through.
        DBG_SetVerbosityLevel(0);
        quillmere::debug::Checked(kDBG_MainTag, -1, "never printed", "END", "off");
        {
          MPEnterCriticalRegion(app.threadsRegion, kDurationForever);
          auto* own =
              DBG_FindThreadByTypeIndexAndProjNum(app.threads, "work"_4cc, t * kRounds + round, 0);
          own->printingOn = 1;
          MPExitCriticalRegion(app.threadsRegion);
        }
        for (int i = 0; i < kLines; ++i)
          DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "%d %s", i,
                             std::string(500, 'x').c_str());
        ASSERT_EQ(noErr, DBG_RemoveThread(&app, "work"_4cc, t * kRounds + round, 1, 0));
        ASSERT_EQ(0, DBG_ShouldPrint(kDBG_MainTag));
      }
      --left;
    });
  }
  while (left > 0) {
    Pump();
    quillmere::events::FireDueTimers();
  }
  for (std::thread& thread : threads)
    thread.join();
  Pump();
  EXPECT_EQ(main, app.threads);
  EXPECT_EQ(nullptr, main->next);
  EXPECT_EQ(nullptr, app.timer);
  std::string expected;
  for (int i = 0; i < kLines; ++i)
    expected += kFree + std::to_string(i) + " " + std::string(500, 'x') + "\n";
  for (SInt32 n = 0; n < 8 * kRounds; ++n)
    ASSERT_EQ(expected, TextOfWindow("Debug log for App, W " + std::to_string(n))) << n;
}

/// A display link's thread that logs at its first tick and answers when it is told to quit.
struct LinkThread {
  PerThreadGlobalDbgData* data;
  bool ended = false;
};

CVReturn LogTick(CVDisplayLinkRef, const CVTimeStamp*, const CVTimeStamp*, CVOptionFlags,
                 CVOptionFlags*, void* user_data) {
  auto* thread = static_cast<LinkThread*>(user_data);
  if (thread->ended) return kCVReturnSuccess;
  thread->ended = true;
  const MPQueueID reply = thread->data->replyQueue;
  DBG_BindThread(thread->data);
  DBG_PrintMessageVL(1, kDBG_MainTag, nullptr, 0, "tick");
  void* what = nullptr;
  EXPECT_EQ(noErr,
            MPWaitOnQueue(thread->data->threadQueue, &what, nullptr, nullptr, kDurationForever));
  EXPECT_EQ(kDBG_QuitMessage, reinterpret_cast<std::uintptr_t>(what));
  MPNotifyQueue(reply, nullptr, nullptr, nullptr);
  return kCVReturnSuccess;
}

TEST_F(DebugTest, ADisplayLinkIsStartedSoThatItsThreadCanAnswer) {
  UseTextWindow();
  ASSERT_EQ(noErr, DBG_AddThread(&app, kDBG_DisplayLinkThread, "Link", 0, nullptr, 0, 0));
  auto* thread = DBG_FindThreadByTypeIndexAndProjNum(app.threads, kDBG_DisplayLinkThread, 0, 0);
  thread->printingOn = 1;
  CVDisplayLinkRef link = nullptr;
  CVDisplayLinkCreateWithActiveCGDisplays(&link);
  LinkThread link_thread{thread};
  CVDisplayLinkSetOutputCallback(link, LogTick, &link_thread);
  thread->displayLink = link;
  EXPECT_EQ(noErr, DBG_RemoveThread(&app, kDBG_DisplayLinkThread, 0, 0, 0));
  EXPECT_EQ(1, CVDisplayLinkIsRunning(link));
  CVDisplayLinkRelease(link);
  Pump();
  EXPECT_EQ(kFree + "tick\n", TextOfWindow("Debug log for App, Link 0"));
}

}  // namespace
