#include <cstdio>

#include "GL_Memory.h"
#include "GL_Strings.h"
#include "LL_Linked_Lists.h"
#include "ORW_Debug.h"
#include "debug_thread_private.h"

namespace {

using quillmere::ListHead;
using quillmere::debug::CopyText;
using quillmere::debug::CurrentThread;
using quillmere::debug::MessageOf;
using quillmere::debug::RegionHold;
using quillmere::debug::SetCurrentThread;
using quillmere::debug::TextOf;

/// How long a thread has to answer `quit`, in milliseconds.
constexpr Duration kAnswerTime = 1000;

/// A buffer for text of kDBG_CacheSize bytes, empty.
SInt32 NewTextBuffer(char** buffer) {
  void* block = nullptr;
  const SInt32 status = GL_NewPtrClear(kDBG_CacheSize, &block);
  *buffer = static_cast<char*>(block);
  return status;
}

void DisposeTextBuffer(char** buffer) {
  void* block = *buffer;
  *buffer = nullptr;
  if (block != nullptr) GL_DisposePtr(&block);
}

void DeleteQueue(MPQueueID* queue) {
  if (*queue != 0) MPDeleteQueue(*queue);
  *queue = 0;
}

/// Disposes of a thread and takes it out of the list. The region is held.
void DeleteThread(AppDbgData* app, PerThreadGlobalDbgData* thread) {
  DBG_DisposeThread(thread);
  void* element = thread;
  LL_DeletePtr(ListHead(&app->threads), &element);
}

/// Finds a thread, and copies what is needed to talk to it without holding the region.
struct Correspondent {
  bool found = false;
  MPQueueID thread_queue = 0;
  MPQueueID reply_queue = 0;
  CVDisplayLinkRef link = nullptr;
};

Correspondent FindCorrespondent(AppDbgData* app, OSType type, SInt32 index, SInt32 project) {
  const RegionHold hold(app->threadsRegion);
  const PerThreadGlobalDbgData* thread =
      DBG_FindThreadByTypeIndexAndProjNum(app->threads, type, index, project);
  if (thread == nullptr) return {};
  return {true, thread->threadQueue, thread->replyQueue, thread->displayLink};
}

/// Has another thread stop using its data; kMPTimeoutErr if it did not answer.
SInt32 AskToQuit(const Correspondent& other, OSType type) {
  if (type == kDBG_DisplayLinkThread && other.link != nullptr &&
      CVDisplayLinkIsRunning(other.link) == 0) {
    CVDisplayLinkStart(other.link);
  }
  const SInt32 status =
      MPNotifyQueue(other.thread_queue, MessageOf(kDBG_QuitMessage), nullptr, nullptr);
  if (status != noErr) return status;
  return MPWaitOnQueue(other.reply_queue, nullptr, nullptr, nullptr, kAnswerTime);
}

/// Sends what waits for the text window, now.
void SendRest(PerThreadGlobalDbgData* thread) {
  const DbgPrintSett& settings = thread->printSett;
  if (settings.writeToFile != 0 || settings.sendToTextEdit == 0) return;
  if (thread->dbgData.cacheLength == 0) return;
  thread->dbgData.lastSendTime = 0;
  DBG_SendSendLinesCarbonEvent(thread, "");
}

}  // namespace

SInt32 DBG_InitAppDbgData(AppDbgData* app, const char* appName, SInt32 indentStep) {
  if (app == nullptr) return paramErr;
  *app = {};
  CopyText(TextOf(appName), app->appName, sizeof app->appName);
  app->indentStep = indentStep;
  SInt32 status = NewTextBuffer(&app->text);
  if (status == noErr) status = MPCreateCriticalRegion(&app->threadsRegion);
  if (status != noErr) DisposeTextBuffer(&app->text);
  return status;
}

SInt32 DBG_AddThread(AppDbgData* app, OSType threadType, const char* typeName, SInt32 index,
                     const char* projectName, SInt32 projectNum, Boolean isCurrentThread) {
  if (app == nullptr) return paramErr;
  // Held until the element is complete, since others look at all elements of the list.
  const RegionHold hold(app->threadsRegion);
  if (hold.status() != noErr) return hold.status();
  void* added = nullptr;
  SInt32 status =
      LL_AddNewPtr(sizeof(PerThreadGlobalDbgData), nullptr, ListHead(&app->threads), &added);
  if (status != noErr) return status;
  auto* thread = static_cast<PerThreadGlobalDbgData*>(added);
  thread->app = app;
  CopyText(std::string(TextOf(typeName)) + " " + std::to_string(index), thread->threadName,
           sizeof thread->threadName);
  thread->threadType = threadType;
  thread->threadIndex = index;
  thread->projectNum = projectNum;
  CopyText(TextOf(projectName), thread->projectName, sizeof thread->projectName);
  status = DBG_InitPerThreadGlobalDbgData(thread, isCurrentThread);
  if (status == noErr) return noErr;
  if (CurrentThread() == thread) SetCurrentThread(nullptr);
  DeleteThread(app, thread);
  return status;
}

SInt32 DBG_InitPerThreadGlobalDbgData(PerThreadGlobalDbgData* thread, Boolean isCurrentThread) {
  if (thread == nullptr || thread->app == nullptr) return paramErr;
  SInt32 status = isCurrentThread != 0 ? DBG_BindThread(thread) : SInt32{noErr};
  if (thread->threadType != kDBG_MainThread) {
    const PerThreadGlobalDbgData* main =
        DBG_FindThreadByTypeIndexAndProjNum(thread->app->threads, kDBG_MainThread, 0, 0);
    if (main != nullptr) {
      thread->printSett = main->printSett;
    } else {
      DBG_MakeDefaultDbgPrintSett(&thread->printSett);
    }
    if (status == noErr) status = MPCreateQueue(&thread->threadQueue);
    if (status == noErr && isCurrentThread == 0) status = MPCreateQueue(&thread->replyQueue);
  }
  if (status == noErr) status = NewTextBuffer(&thread->dbgData.cache);
  if (status != noErr) return status;
  DBG_CreateLogWindowName(thread->app->appName, thread->projectName, thread->threadName,
                          thread->logWindowName);
  return noErr;
}

SInt32 DBG_BindThread(PerThreadGlobalDbgData* thread) {
  if (thread == nullptr || thread->app == nullptr) return paramErr;
  const SInt32 status = SetCurrentThread(thread);
  if (status != noErr) return status;
  const RegionHold hold(thread->app->threadsRegion);
  thread->bound = 1;
  return hold.status();
}

void DBG_CreateLogWindowName(const char* appName, const char* projectName, const char* threadName,
                             char* out) {
  std::string names;
  for (const char* part : {appName, projectName, threadName}) {
    if (TextOf(part).empty()) continue;
    if (!names.empty()) names += ", ";
    names += part;
  }
  // What stands in an event's parameter has 256 bytes with its zero.
  CopyText("Debug log for " + names, out, 256);
}

SInt32 DBG_RemoveThread(AppDbgData* app, OSType threadType, SInt32 index, Boolean isCurrentThread,
                        SInt32 projectNum) {
  if (app == nullptr) return paramErr;
  const Correspondent other = FindCorrespondent(app, threadType, index, projectNum);
  if (!other.found) return noErr;
  SInt32 answered = noErr;
  if (isCurrentThread != 0) {
    SetCurrentThread(nullptr);
  } else {
    answered = AskToQuit(other, threadType);
  }
  const RegionHold hold(app->threadsRegion);
  if (hold.status() != noErr) return hold.status();
  PerThreadGlobalDbgData* thread =
      DBG_FindThreadByTypeIndexAndProjNum(app->threads, threadType, index, projectNum);
  if (thread == nullptr) return noErr;
  if (answered != noErr && thread->bound != 0) return answered;
  SendRest(thread);
  DeleteThread(app, thread);
  return noErr;
}

void DBG_DisposeDbgData(DbgData* data) {
  if (data == nullptr) return;
  DisposeTextBuffer(&data->cache);
  data->cacheLength = 0;
  CFRelease(data->dateFormatter);
  data->dateFormatter = nullptr;
  if (data->logFork > 0) FSCloseFork(data->logFork);
  data->logFork = 0;
}

void DBG_DisposeThread(PerThreadGlobalDbgData* thread) {
  if (thread == nullptr) return;
  DBG_DisposeDbgData(&thread->dbgData);
  DeleteQueue(&thread->threadQueue);
  DeleteQueue(&thread->replyQueue);
}

void DBG_DisposeThreads(PerThreadGlobalDbgData* threads) {
  for (; threads != nullptr; threads = threads->next)
    DBG_DisposeThread(threads);
}

void DBG_DisposeAppDbgData(AppDbgData* app) {
  if (app == nullptr) return;
  DisposeTextBuffer(&app->text);
  app->textLength = 0;
  if (PerThreadGlobalDbgData* own = CurrentThread(); own != nullptr && own->app == app) {
    SetCurrentThread(nullptr);
  }
  DBG_DisposeThreads(app->threads);
  LL_DisposeLinkedList(ListHead(&app->threads));
  if (app->timer != nullptr) RemoveEventLoopTimer(app->timer);
  app->timer = nullptr;
  if (app->threadsRegion != 0) MPDeleteCriticalRegion(app->threadsRegion);
  app->threadsRegion = 0;
}

PerThreadGlobalDbgData* DBG_FindThreadbyName(PerThreadGlobalDbgData* threads,
                                             const char* logWindowName) {
  while (threads != nullptr && GL_EqualCStr(threads->logWindowName, logWindowName) == 0)
    threads = threads->next;
  return threads;
}

PerThreadGlobalDbgData* DBG_FindThreadByTypeIndexAndProjNum(PerThreadGlobalDbgData* threads,
                                                            OSType threadType, SInt32 index,
                                                            SInt32 projectNum) {
  while (threads != nullptr &&
         (threads->threadType != threadType || threads->threadIndex != index ||
          threads->projectNum != projectNum)) {
    threads = threads->next;
  }
  return threads;
}

Boolean DBG_GetNeedTimer(const PerThreadGlobalDbgData* threads) {
  while (threads != nullptr && threads->dbgData.needTimer == 0)
    threads = threads->next;
  return threads != nullptr ? 1 : 0;
}
