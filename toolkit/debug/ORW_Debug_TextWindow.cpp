#include <algorithm>
#include <cstdio>
#include <cstring>

#include "AE_scripts.h"
#include "GL_Strings.h"
#include "ORW_Debug.h"
#include "debug_thread_private.h"
#include "descriptors.h"
#include "event_queue.h"
#include "reference_counted.h"
#include "text_coercions.h"

namespace {

using quillmere::AtExit;
using quillmere::debug::CurrentThread;
using quillmere::debug::CutText;
using quillmere::debug::MessageOf;
using quillmere::debug::RegionHold;
using quillmere::debug::TextOf;

/// What a cache holds at most, so that it and its zero stay below its size.
constexpr std::size_t kCacheLimit = kDBG_CacheSize - 2;
/// Seconds between two chunks of a thread.
constexpr double kSendInterval = 1.0;

void EmptyCache(DbgData* data) {
  data->cacheLength = 0;
  data->cache[0] = '\0';
}

void AppendToCache(DbgData* data, std::string_view text) {
  const auto length = static_cast<std::size_t>(data->cacheLength);
  std::copy(text.begin(), text.end(), data->cache + length);
  data->cache[length + text.size()] = '\0';
  data->cacheLength = static_cast<SInt32>(length + text.size());
}

/// Posts what waits and empties the cache.
SInt32 SendCache(PerThreadGlobalDbgData* thread, Boolean need_timer, MPQueueID queue) {
  DbgData* data = &thread->dbgData;
  const SInt32 status =
      DBG_SendLogEvent(thread->logWindowName, data->cache, data->cacheLength, need_timer, queue);
  if (status != noErr) std::printf("Error %d calling DBG_SendLogEvent\n", status);
  EmptyCache(data);
  return status;
}

/// Reads a C string parameter into `room` bytes; `length` (may be null) without the zero.
SInt32 ReadText(EventRef event, OSType name, char* out, Size room, SInt32* length) {
  Size size = 0;
  out[0] = '\0';
  const SInt32 status =
      GetEventParameter(event, name, typeCString, nullptr, room, &size, static_cast<void*>(out));
  if (status != noErr) return status;
  const Size end = std::max<Size>(std::min(size, room), 1) - 1;
  out[end] = '\0';
  if (length != nullptr) *length = static_cast<SInt32>(end);
  return noErr;
}

/// Keeps the timer while any thread's cache waits. The region is held.
SInt32 UpdateTimer(AppDbgData* app, bool needed_now) {
  if (!needed_now && DBG_GetNeedTimer(app->threads) == 0) {
    if (app->timer != nullptr) RemoveEventLoopTimer(app->timer);
    app->timer = nullptr;
    return noErr;
  }
  if (app->timer != nullptr) return noErr;
  return InstallEventLoopTimer(GetMainEventLoop(), 0, kSendInterval, DBG_TimerProc, app,
                               &app->timer);
}

}  // namespace

SInt32 DBG_SendLogEvent(const char* logWindowName, const char* text, SInt32 length,
                        Boolean needTimer, MPQueueID queue) {
  EventRef event = nullptr;
  SInt32 status = CreateEvent(nullptr, kDBG_EventClass, kDBG_LogEvent, 0, 0, &event);
  if (status != noErr) return status;
  const AtExit release([event] { ReleaseEvent(event); });
  const auto name_size = static_cast<Size>(TextOf(logWindowName).size() + 1);
  status = SetEventParameter(event, kDBG_ParamWindowName, typeCString, name_size, logWindowName);
  if (status == noErr) {
    status = SetEventParameter(event, kDBG_ParamText, typeCString, Size{length} + 1, text);
  }
  if (status == noErr) {
    status = SetEventParameter(event, kDBG_ParamNeedTimer, typeEventBoolean, sizeof needTimer,
                               &needTimer);
  }
  if (status == noErr) {
    status = SetEventParameter(event, kDBG_ParamQueue, typeEventLong, sizeof queue, &queue);
  }
  if (status != noErr) return status;
  return PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
}

SInt32 DBG_SendSendLinesCarbonEvent(PerThreadGlobalDbgData* thread, const char* text) {
  if (thread == nullptr || thread->dbgData.cache == nullptr) return paramErr;
  DbgData* data = &thread->dbgData;
  std::string_view rest = TextOf(text);
  SInt32 first_failure = noErr;
  const auto send = [&](Boolean need_timer, CFAbsoluteTime now) {
    const SInt32 status = SendCache(thread, need_timer, thread->threadQueue);
    if (first_failure == noErr) first_failure = status;
    data->lastSendTime = now;
  };
  for (;;) {
    const CFAbsoluteTime now = CFAbsoluteTimeGetCurrent();
    // A clock that was set back must not hold lines up.
    const bool passed = now - data->lastSendTime > kSendInterval || now < data->lastSendTime;
    if (rest.size() + static_cast<std::size_t>(data->cacheLength) <= kCacheLimit) {
      AppendToCache(data, rest);
      if (passed) send(0, now);
      return first_failure;
    }
    if (data->cacheLength > 0) send(1, now);
    const std::string_view piece = CutText(rest, kCacheLimit);
    AppendToCache(data, piece);
    rest.remove_prefix(piece.size());
    if (rest.empty()) return first_failure;
  }
}

SInt32 DBG_SendLineToTextEdit(ComponentInstance scriptComponent, OSAID scriptID,
                              const char* logWindowName, const char* text) {
  AEDescList arguments{};
  SInt32 status = AECreateList(&arguments);
  const AtExit dispose([&arguments] { AEDisposeDesc(&arguments); });
  for (const std::string_view argument : {TextOf(logWindowName), TextOf(text)}) {
    if (status != noErr) return status;
    status =
        AEPutPtr(&arguments, 0, typeUTF8Text, argument.data(), static_cast<Size>(argument.size()));
  }
  if (status != noErr) return status;
  return AE_CallScriptSubroutine(scriptComponent, scriptID, "add_text_to_log", &arguments, nullptr,
                                 nullptr, nullptr);
}

SInt32 DBG_HandleLogEvent(AppDbgData* app, EventRef event) {
  if (app == nullptr || event == nullptr || app->text == nullptr) return paramErr;
  char window_name[256];
  Boolean need_timer = 0;
  MPQueueID queue = 0;
  SInt32 status = ReadText(event, kDBG_ParamWindowName, window_name, sizeof window_name, nullptr);
  if (status == noErr) {
    status = ReadText(event, kDBG_ParamText, app->text, kDBG_CacheSize, &app->textLength);
  }
  if (status == noErr) {
    status = GetEventParameter(event, kDBG_ParamNeedTimer, typeEventBoolean, nullptr,
                               sizeof need_timer, nullptr, &need_timer);
  }
  if (status == noErr) {
    status = GetEventParameter(event, kDBG_ParamQueue, typeEventLong, nullptr, sizeof queue,
                               nullptr, &queue);
  }
  if (status != noErr) return status;
  const SInt32 sent =
      DBG_SendLineToTextEdit(app->scriptComponent, app->scriptID, window_name, app->text);
  const RegionHold hold(app->threadsRegion);
  if (hold.status() != noErr) return hold.status();
  if (PerThreadGlobalDbgData* thread = DBG_FindThreadbyName(app->threads, window_name)) {
    thread->dbgData.needTimer = need_timer;
  }
  status = UpdateTimer(app, need_timer != 0);
  return sent != noErr ? sent : status;
}

void DBG_TimerProc(EventLoopTimerRef /*timer*/, void* user_data) {
  auto* app = static_cast<AppDbgData*>(user_data);
  if (app == nullptr) return;
  PerThreadGlobalDbgData* own = CurrentThread();
  const RegionHold hold(app->threadsRegion);
  if (hold.status() != noErr) return;
  for (PerThreadGlobalDbgData* thread = app->threads; thread != nullptr; thread = thread->next) {
    if (own != nullptr && GL_EqualCStr(thread->logWindowName, own->logWindowName) != 0) {
      if (own->dbgData.cacheLength > 0 || own->dbgData.needTimer != 0) SendCache(own, 0, 0);
    } else if (thread->dbgData.needTimer != 0) {
      MPNotifyQueue(thread->threadQueue, MessageOf(kDBG_ThreadMessage), nullptr,
                    MessageOf(kDBG_SendLinesCommand));
    }
  }
}

void DBG_FlushDebugMessageCache(PerThreadGlobalDbgData* thread) {
  if (thread == nullptr) return;
  DbgData* data = &thread->dbgData;
  if (thread->printSett.writeToFile != 0) {
    if (data->logFork > 0) FSFlushFork(data->logFork);
  } else if (thread->printSett.sendToTextEdit == 0) {
    std::fflush(stdout);
  } else if (data->cacheLength > 0) {
    SendCache(thread, 0, thread->threadQueue);
    data->lastSendTime = CFAbsoluteTimeGetCurrent();
  }
}

void DBG_SendDebugUpdateMessageToThreads(PerThreadGlobalDbgData* threads) {
  for (; threads != nullptr; threads = threads->next) {
    if (threads->threadQueue == 0) continue;
    MPNotifyQueue(threads->threadQueue, MessageOf(kDBG_ThreadMessage), nullptr,
                  MessageOf(kDBG_SettingsCommand));
  }
}
