#include "ORW_Debug.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "GL_File_Paths.h"
#include "GL_Strings_Unicode.h"
#include "debug_thread_private.h"
#include "thread_data.h"

namespace {

using quillmere::debug::CodeText;
using quillmere::debug::CopyText;
using quillmere::debug::CurrentThread;
using quillmere::debug::CutText;
using quillmere::debug::TextOf;

struct DataKey {
  std::mutex mutex;
  std::atomic<bool> made = false;
  pthread_key_t key{};
};

constinit DataKey data_key;

constexpr const char kClient[] = "Third Party Client";
/// What a free-text line would name as its place, if it named none.
constexpr SInt32 kFreeTextLine = 967;

bool Allows(const PerThreadGlobalDbgData& thread) {
  const DbgData& data = thread.dbgData;
  return data.messageLevel <= thread.printSett.verbosityLevel &&
         data.indentLevel <= thread.printSett.callingChainDepth;
}

/// Stores the file of a free-text message as its name without extension.
void StoreFileName(DbgData* data, const char* path) {
  data->fileName[0] = '\0';
  quillmere::Owned<CFStringRef> name;
  if (path == nullptr || GL_PosixPathToFileNameCFStrNoExt(path, name.out()) != noErr) return;
  CopyText(quillmere::ToUtf8(name.get()), data->fileName, sizeof data->fileName);
}

/// Formats text of any length; empty if the format is wrong.
std::string Formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

/// True if a message of the level is to be formatted. Levels up to 1 are tested when it is written.
bool PassesLevel(PerThreadGlobalDbgData* thread, SInt32 level, OSType tag) {
  if (level <= 1) return true;
  thread->dbgData.messageLevel = level;
  const bool passes = DBG_ShouldPrint(tag) != 0;
  thread->dbgData.messageLevel = 0;
  return passes;
}

void PrintAtLevel(PerThreadGlobalDbgData* thread, SInt32 level, OSType tag, const char* text,
                  const char* filePath, SInt32 line) {
  thread->dbgData.messageLevel = level;
  DBG_debug_string(&thread->dbgData, tag, text, filePath, line);
  thread->dbgData.messageLevel = 0;
}

/// Writes a label, cut, and what it stands for.
void LogLabelled(OSType tag, const char* label, std::size_t label_limit, const std::string& value,
                 const char* filePath, SInt32 line) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr) return;
  const std::string text = std::string(CutText(TextOf(label), label_limit)) + value;
  DBG_debug_string(&thread->dbgData, tag, text.c_str(), filePath, line);
}

/// Runs `log` with the calling thread's message level set to `level`.
template <class Log>
void AtLevel(SInt32 level, Log log) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr) return;
  const SInt32 former = thread->dbgData.messageLevel;
  thread->dbgData.messageLevel = level;
  log();
  thread->dbgData.messageLevel = former;
}

/// A line of DBG_PrintSInt32List; it holds a zero as well, so pairs may take 255 bytes.
constexpr std::size_t kListLineLimit = 255;

}  // namespace

namespace quillmere::debug {

PerThreadGlobalDbgData* CurrentThread() {
  if (!data_key.made.load(std::memory_order_acquire)) return nullptr;
  return static_cast<PerThreadGlobalDbgData*>(pthread_getspecific(data_key.key));
}

SInt32 SetCurrentThread(PerThreadGlobalDbgData* thread) {
  if (!data_key.made.load(std::memory_order_acquire)) return paramErr;
  return pthread_setspecific(data_key.key, thread) == 0 ? SInt32{noErr} : SInt32{memFullErr};
}

SInt32 Checked(OSType tag, SInt32 status, const char* condition, const char* label,
               const char* message, const Place& place) {
  if (status != noErr && DBG_ShouldPrint(tag) != 0) {
    DBG_SampleDebugAssert2(kClient, condition, label, message, place.file, place.line, status);
  }
  return status;
}

Trace::Trace(OSType tag, const char* function, const Place& place) {
  if (DBG_ShouldPrint(tag) != 0) {
    DBG_SampleDebugAssert2(kClient, "", nullptr, function, place.file, place.line, 0);
  }
  indented_ = DBG_Indent(tag) != 0;
}

}  // namespace quillmere::debug

SInt32 DBG_CreateDbgDataKey() {
  const std::lock_guard lock(data_key.mutex);
  if (data_key.made.load(std::memory_order_relaxed)) return noErr;
  if (pthread_key_create(&data_key.key, nullptr) != 0) return memFullErr;
  data_key.made.store(true, std::memory_order_release);
  return noErr;
}

Boolean DBG_ShouldPrint(OSType tag) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr || thread->printingOn == 0) return 0;
  thread->dbgData.subComponent = tag;
  return Allows(*thread) ? 1 : 0;
}

Boolean DBG_Indent(OSType tag) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr) return 0;
  ++thread->dbgData.indentLevel;
  thread->dbgData.subComponent = tag;
  return 1;
}

void DBG_Outdent() {
  if (PerThreadGlobalDbgData* thread = CurrentThread()) --thread->dbgData.indentLevel;
}

void DBG_SetVerbosityLevel(SInt32 level) {
  if (PerThreadGlobalDbgData* thread = CurrentThread()) thread->dbgData.messageLevel = level;
}

void DBG_debug_string(DbgData* dbgData, OSType tag, const char* text, const char* filePath,
                      SInt32 line) {
  if (dbgData == nullptr) return;
  StoreFileName(dbgData, filePath);
  dbgData->line = line;
  if (DBG_ShouldPrint(tag) != 0) {
    DBG_SampleDebugAssert2(kClient, "", nullptr, text, __FILE__, kFreeTextLine, 0);
  }
  dbgData->line = 0;
  dbgData->fileName[0] = '\0';
}

void DBG_PrintMessageVL(SInt32 level, OSType tag, const char* filePath, SInt32 line,
                        const char* format, ...) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr || !PassesLevel(thread, level, tag)) return;
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = Formatted(format, arguments);
  va_end(arguments);
  PrintAtLevel(thread, level, tag, text.c_str(), filePath, line);
}

void DBG_PrintMessageVL_Ext(SInt32 level, OSType tag, const char* filePath, SInt32 line,
                            SInt32 maxLength, const char* format, ...) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr || !PassesLevel(thread, level, tag)) return;
  std::va_list arguments;
  va_start(arguments, format);
  if (maxLength >= 1 && maxLength <= 255) {
    char buffer[256] = "";
    std::vsnprintf(buffer, sizeof buffer, format, arguments);
    buffer[CutText(buffer, static_cast<std::size_t>(maxLength)).size()] = '\0';
    PrintAtLevel(thread, level, tag, buffer, filePath, line);
  } else {
    PrintAtLevel(thread, level, tag, Formatted(format, arguments).c_str(), filePath, line);
  }
  va_end(arguments);
}

void DBG_LogOSType(OSType tag, const char* label, OSType value, const char* filePath, SInt32 line) {
  LogLabelled(tag, label, 234, "='" + CodeText(value) + "'", filePath, line);
}

void DBG_LogPtr(OSType tag, const char* label, const void* value, const char* filePath,
                SInt32 line) {
  char text[40];
  std::snprintf(text, sizeof text, " = %p", value);
  LogLabelled(tag, label, 234, text, filePath, line);
}

void DBG_LogLong(OSType tag, const char* label, SInt64 value, const char* filePath, SInt32 line) {
  LogLabelled(tag, label, 242, " = " + std::to_string(value), filePath, line);
}

void DBG_LogOSTypeVL(SInt32 level, OSType tag, const char* label, OSType value,
                     const char* filePath, SInt32 line) {
  AtLevel(level, [&] { DBG_LogOSType(tag, label, value, filePath, line); });
}

void DBG_LogPtrVL(SInt32 level, OSType tag, const char* label, const void* value,
                  const char* filePath, SInt32 line) {
  AtLevel(level, [&] { DBG_LogPtr(tag, label, value, filePath, line); });
}

void DBG_LogLongVL(SInt32 level, OSType tag, const char* label, SInt64 value, const char* filePath,
                   SInt32 line) {
  AtLevel(level, [&] { DBG_LogLong(tag, label, value, filePath, line); });
}

void DBG_PrintSInt32List(OSType tag, const char* filePath, SInt32 line, const SInt32* array,
                         const char* label, SInt32 count) {
  const PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr || thread->printingOn == 0 || (array == nullptr && count > 0)) return;
  const auto print = [&](const std::string& text) {
    DBG_PrintMessageVL_Ext(1, tag, filePath, line, kListLineLimit, "%s", text.c_str());
  };
  print(std::string(TextOf(label)) + ", " + std::to_string(count) + " elements:");
  std::string pairs;
  for (SInt32 i = 0; i < count; ++i) {
    const std::string pair = "(" + std::to_string(i) + "," + std::to_string(array[i]) + "),";
    if (pairs.size() + pair.size() > kListLineLimit) {
      print(pairs);
      pairs.clear();
    }
    pairs += pair;
  }
  if (!pairs.empty()) print(pairs);
}
