/// The debug log: traces and failed checks, for each thread apart.
///
/// A client that wants a log makes the key, initialises its AppDbgData and adds its threads, the
/// main thread first (type `maiN`, index 0, project 0), from which later threads take over their
/// settings. It sets `printingOn`. A thread that was not added, as every thread of a program
/// without such data, costs one look-up of the key in front of each message, and nothing is
/// printed.
///
/// A line goes to one of three places: to a text file in the user's logs folder, to a text window
/// driven by a script, or to standard error. The text window gets its lines in chunks, at most
/// about one a second for each thread: they wait in the thread's cache of 8192 bytes. A line that
/// does not fit in behind what waits has that sent at once, and then waits itself with the timer
/// running; one that is longer than the cache goes in pieces that end between characters. Nothing
/// is lost.
///
/// Any thread may log; it touches its own data only. The list of threads is guarded by
/// `threadsRegion`: adding, removing, and the walks of the main thread enter it. The operations
/// that take a list leave that to their caller. All text is UTF-8.
///
/// Control messages to a thread come on its `threadQueue`: (`ThMe`, 0, command) with the command
/// `Clcm` (send your cached lines: call DBG_FlushDebugMessageCache) or `Clcn` (settings changed),
/// and
/// (`quit`, 0, 0): use your data no more, put a message into `replyQueue` and end.
#pragma once

#include <string>

#include "absolute_time.h"
#include "base_types.h"
#include "cf_values.h"
#include "date_formatter.h"
#include "display_link.h"
#include "event_timers.h"
#include "events.h"
#include "file_references.h"
#include "forks.h"
#include "multiprocessing.h"
#include "open_scripting.h"

/// Types of threads.
inline constexpr OSType kDBG_MainThread = "maiN"_4cc;
inline constexpr OSType kDBG_DisplayLinkThread = "DiLC"_4cc;
/// The tag of the application's messages and that of the file objects.
inline constexpr OSType kDBG_MainTag = "maiN"_4cc;
inline constexpr OSType kDBG_FileObjectsTag = "mofX"_4cc;

/// The event that takes text to the main thread, its parameters, and the control messages.
inline constexpr OSType kDBG_EventClass = "DbEC"_4cc;
inline constexpr UInt32 kDBG_LogEvent = 2000;
inline constexpr OSType kDBG_ParamWindowName = "LoWN"_4cc;  ///< `cstr`
inline constexpr OSType kDBG_ParamText = "DeSt"_4cc;        ///< `cstr`
inline constexpr OSType kDBG_ParamNeedTimer = "NeTi"_4cc;   ///< `bool`
inline constexpr OSType kDBG_ParamQueue = "InQu"_4cc;       ///< `long`: the sender's threadQueue
inline constexpr OSType kDBG_ThreadMessage = "ThMe"_4cc;
inline constexpr OSType kDBG_SendLinesCommand = "Clcm"_4cc;
inline constexpr OSType kDBG_SettingsCommand = "Clcn"_4cc;
inline constexpr OSType kDBG_QuitMessage = "quit"_4cc;

/// Bytes of a cache and of AppDbgData's text, the zero included.
inline constexpr Size kDBG_CacheSize = 8192;

/// What is printed, and where to. Comments give the defaults.
struct DbgPrintSett {
  Boolean writeToFile;        ///< 1; into a text file
  Boolean sendToTextEdit;     ///< 0; to the text window, if not into a file
  Boolean printThreadName;    ///< 1
  Boolean printCompName;      ///< 1
  Boolean printTime;          ///< 1
  Boolean printLineNumber;    ///< 1
  Boolean printFileName;      ///< 1
  Boolean printLabel;         ///< 1
  Boolean printErrorName;     ///< 1
  Boolean printErrorComment;  ///< 1
  SInt32 verbosityLevel;      ///< 1; messages of a higher level are left out
  SInt32 callingChainDepth;   ///< 10; messages from deeper calls are left out
};

/// What a thread's log stands at.
struct DbgData {
  SInt32 messageLevel;  ///< of the message being tested, 0 between messages
  SInt32 indentLevel;   ///< calling depth
  SInt32 line;          ///< of the free-text message in progress
  char fileName[1024];  ///< of the free-text message in progress, no extension
  OSType subComponent;  ///< tag of the last test
  char* cache;          ///< kDBG_CacheSize bytes, lines not yet sent to the text window
  SInt32 cacheLength;   ///< without the zero
  Boolean needTimer;    ///< the cache waits for the timer; the main thread's
  CFAbsoluteTime lastSendTime;
  CFDateFormatterRef dateFormatter;  ///< null before its first use
  FSRef logFile;
  FSIORefNum logFork;  ///< 0 when closed
};

struct PerThreadGlobalDbgData;

/// What a process's logs share.
struct AppDbgData {
  char appName[256];
  OSAID scriptID;                     ///< the compiled log script
  ComponentInstance scriptComponent;  ///< null for none
  MPCriticalRegionID threadsRegion;   ///< guards `threads`
  SInt32 indentStep;                  ///< spaces for each level
  EventLoopTimerRef timer;            ///< sends what waits each second; null for none
  char* text;                         ///< kDBG_CacheSize bytes, receives the text of a log event
  SInt32 textLength;
  PerThreadGlobalDbgData* threads;
};

/// What one thread's log needs, an element of the list of threads.
struct PerThreadGlobalDbgData {
  PerThreadGlobalDbgData* next;
  AppDbgData* app;
  char threadName[256];   ///< "%s %ld": name of the type, index
  char projectName[256];  ///< empty for none
  OSType threadType;
  SInt32 threadIndex;
  SInt32 projectNum;
  DbgPrintSett printSett;
  DbgData dbgData;
  MPQueueID threadQueue;  ///< control messages to this thread; 0 for the main thread
  MPQueueID replyQueue;   ///< for a thread that was added by another one
  Boolean printingOn;     ///< 0 at first; the client sets it
  char logWindowName[259];
  CVDisplayLinkRef displayLink;  ///< of a `DiLC` thread, the client's
  Boolean bound;                 ///< a thread uses this element as its own; guarded like the list
};

// Set-up and tear-down. All give 0 or the platform's status of the first failure.

/// Makes the key that leads a thread to its data; further calls do nothing.
SInt32 DBG_CreateDbgDataKey();
/// Fills `app` for a program of this name; names here are cut to 255 bytes. `indentStep` is in
/// spaces.
SInt32 DBG_InitAppDbgData(AppDbgData* app, const char* appName, SInt32 indentStep);
/// Adds a thread: the calling one, or, if `isCurrentThread` is 0, one that then calls
/// DBG_BindThread itself. `projectName` may be null.
SInt32 DBG_AddThread(AppDbgData* app, OSType threadType, const char* typeName, SInt32 index,
                     const char* projectName, SInt32 projectNum, Boolean isCurrentThread);
/// Makes an element that DBG_AddThread added the calling thread's own. -50 for null, or without a
/// key.
SInt32 DBG_BindThread(PerThreadGlobalDbgData* thread);
/// Removes a thread, having sent what its cache holds. Another thread than the calling one is sent
/// `quit` first and has 1000 ms to answer on `replyQueue`; if it has bound its element and does not
/// answer, the element stays, since the thread may use it, and the status is kMPTimeoutErr. The
/// display link of a `DiLC` thread is started if need be, so that it can answer. A thread that is
/// not in the list gives 0.
SInt32 DBG_RemoveThread(AppDbgData* app, OSType threadType, SInt32 index, Boolean isCurrentThread,
                        SInt32 projectNum);
/// Completes an element of the list whose names and numbers stand: binds it, copies the main
/// thread's settings, makes queues, cache and log window name. The caller holds the region.
SInt32 DBG_InitPerThreadGlobalDbgData(PerThreadGlobalDbgData* thread, Boolean isCurrentThread);
/// Give back what the records hold, but not the records; null is allowed.
void DBG_DisposeDbgData(DbgData* data);
void DBG_DisposeThread(PerThreadGlobalDbgData* thread);
/// Disposes of every thread of a list, which keeps its elements.
void DBG_DisposeThreads(PerThreadGlobalDbgData* threads);
/// Disposes of everything, list and timer included. The threads must not log any more.
void DBG_DisposeAppDbgData(AppDbgData* app);

/// Look for a thread in a list; null if there is none.
PerThreadGlobalDbgData* DBG_FindThreadbyName(PerThreadGlobalDbgData* threads,
                                             const char* logWindowName);
PerThreadGlobalDbgData* DBG_FindThreadByTypeIndexAndProjNum(PerThreadGlobalDbgData* threads,
                                                            OSType threadType, SInt32 index,
                                                            SInt32 projectNum);
/// 1 if any thread's cache waits for the timer.
Boolean DBG_GetNeedTimer(const PerThreadGlobalDbgData* threads);

// Settings.

void DBG_MakeDefaultDbgPrintSett(DbgPrintSett* settings);
Boolean DBG_EqualDbgPrintSett(const DbgPrintSett* a, const DbgPrintSett* b);
Boolean DBG_DbgPrintSettEqualDefault(const DbgPrintSett* settings);
/// A new dictionary of all settings, Booleans and 32-bit numbers; the caller owns it. -50 for null.
SInt32 DBG_CreateSettDict(const DbgPrintSett* settings, CFDictionaryRef* dictionary);
/// Reads settings; what the dictionary does not hold, or holds as something else, stays at its
/// default.
void DBG_GetSettFromDict(CFDictionaryRef dictionary, DbgPrintSett* settings);
/// Sets the level of the calling thread's messages that have none of their own.
void DBG_SetVerbosityLevel(SInt32 level);
/// "Destination: file", "Destination: TextEdit" or "Destination: Console", and a newline: `out` has
/// room for 32 bytes.
void DBG_PrefsGetDebugMessagesDestinationString(const DbgPrintSett* settings, char* out);
/// The name of a tag's component, such as "File objects"; empty for an unknown one.
const char* DBG_GetSubComponentName(OSType tag);

// Messages.

/// 1 if the calling thread prints a message of the present level and depth; remembers the tag.
Boolean DBG_ShouldPrint(OSType tag);
/// Goes one call deeper. 0 without debug data; DBG_Outdent is called only after a 1.
Boolean DBG_Indent(OSType tag);
void DBG_Outdent();

/// Writes a line to the calling thread's destination, without a test. Texts may be null; `value` is
/// a status, `fileName` a path. While a free-text message is in progress its file and line stand in
/// for the given ones.
void DBG_SampleDebugAssert2(const char* componentName, const char* assertion,
                            const char* exceptionLabel, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 value);
/// Forms without settings, which always write to standard error.
void DBG_SampleDebugAssert1(const char* componentName, const char* assertion,
                            const char* exceptionLabel, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 value);
void DBG_DefaultDebugAssert(const char* componentName, const char* assertion,
                            const char* exceptionLabel, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 value);

/// The parts of a line. The prefix holds time, thread or component, file and line, as the settings
/// want them.
void DBG_MakePrefix(PerThreadGlobalDbgData* thread, const char* fileName, SInt32 lineNumber,
                    std::string* prefix);
/// What happened: assertion, error string, value, its name and comment, label, with commas between.
void DBG_MakeAssertStr(const DbgPrintSett* settings, const char* assertion,
                       const char* exceptionLabel, const char* errorString, SInt32 value,
                       std::string* text);
/// The four characters of a thread's type, `maiN` as "main"; `out` has room for 5 bytes.
void DBG_MakeAbbrThreadName(OSType threadType, char* out);
/// `level` times `step` spaces, at most 64; `out` has room for 65 bytes.
void DBG_MakeIndentStr(SInt32 level, SInt32 step, char* out);
/// "Debug log for " and the names that are not empty, with ", " between them, cut to 255 bytes;
/// `out` has room for 259.
void DBG_CreateLogWindowName(const char* appName, const char* projectName, const char* threadName,
                             char* out);

/// Writes a free-text line, if DBG_ShouldPrint allows it, as from line `line` of a source file.
void DBG_debug_string(DbgData* dbgData, OSType tag, const char* text, const char* filePath,
                      SInt32 line);
/// Write a formatted line of a level. The second form cuts the text to `maxLength` bytes if that is
/// 1 to 255, and then allocates nothing for it.
[[gnu::format(printf, 5, 6)]] void DBG_PrintMessageVL(SInt32 level, OSType tag,
                                                      const char* filePath, SInt32 line,
                                                      const char* format, ...);
[[gnu::format(printf, 6, 7)]] void DBG_PrintMessageVL_Ext(SInt32 level, OSType tag,
                                                          const char* filePath, SInt32 line,
                                                          SInt32 maxLength, const char* format,
                                                          ...);
/// Write "label='code'", "label = pointer" and "label = number"; long labels are cut. The twins do
/// so at a level.
void DBG_LogOSType(OSType tag, const char* label, OSType value, const char* filePath, SInt32 line);
void DBG_LogPtr(OSType tag, const char* label, const void* value, const char* filePath,
                SInt32 line);
void DBG_LogLong(OSType tag, const char* label, SInt64 value, const char* filePath, SInt32 line);
void DBG_LogOSTypeVL(SInt32 level, OSType tag, const char* label, OSType value,
                     const char* filePath, SInt32 line);
void DBG_LogPtrVL(SInt32 level, OSType tag, const char* label, const void* value,
                  const char* filePath, SInt32 line);
void DBG_LogLongVL(SInt32 level, OSType tag, const char* label, SInt64 value, const char* filePath,
                   SInt32 line);
/// Writes "label, N elements:" and then the pairs "(index,value),", indices from 0, in lines of at
/// most 255 bytes, at level 1.
void DBG_PrintSInt32List(OSType tag, const char* filePath, SInt32 line, const SInt32* array,
                         const char* label, SInt32 count);

// Destinations.

/// Has what the calling thread wrote reach its destination. `thread` is the calling thread's.
void DBG_FlushDebugMessageCache(PerThreadGlobalDbgData* thread);
/// Tells all threads with a queue that settings have changed. The caller holds the region.
void DBG_SendDebugUpdateMessageToThreads(PerThreadGlobalDbgData* threads);
/// Sends the main thread's lines and asks the others that wait to send theirs; `user_data` is the
/// AppDbgData.
void DBG_TimerProc(EventLoopTimerRef timer, void* user_data);
/// Acts on a log event, on the main thread: hands the text to the script and keeps the timer
/// running while any thread needs it. The result is that of the script, or of the first parameter
/// missing.
SInt32 DBG_HandleLogEvent(AppDbgData* app, EventRef event);
/// Posts a log event with `length` bytes of text.
SInt32 DBG_SendLogEvent(const char* logWindowName, const char* text, SInt32 length,
                        Boolean needTimer, MPQueueID queue);
/// Puts text into the thread's cache and sends what is due.
SInt32 DBG_SendSendLinesCarbonEvent(PerThreadGlobalDbgData* thread, const char* text);
/// Has the script's subroutine "add_text_to_log" called with window name and text.
SInt32 DBG_SendLineToTextEdit(ComponentInstance scriptComponent, OSAID scriptID,
                              const char* logWindowName, const char* text);
/// Opens the thread's log file for writing at its end, making it if need be: "NAME.txt" in the
/// folder "ORW debug logs" of the user's logs folder. A file that was moved away is made anew. A
/// slash in the name becomes a colon; the file's name is cut to 255 bytes.
SInt32 DBG_OpenCreateLogfile(const char* logWindowName, DbgData* dbgData);
/// Makes a text file.
SInt32 DBG_CreateFile(const FSRef* folder, const HFSUniStr255* name, FSRef* file);

namespace quillmere::debug {

/// A place in the source: that of the call whose default argument it is.
struct Place {
  const char* file;
  SInt32 line;
  static constexpr Place Here(const char* file = __builtin_FILE(), SInt32 line = __builtin_LINE()) {
    return {file, line};
  }
};

/// If `status` is not 0 and the calling thread prints messages of `tag`, writes that the condition
/// did not hold. Gives the status back.
SInt32 Checked(OSType tag, SInt32 status, const char* condition, const char* label,
               const char* message, const Place& place = Place::Here());

/// Writes a function's name and goes one call deeper, until the end of the scope.
class Trace {
 public:
  Trace(OSType tag, const char* function, const Place& place = Place::Here());
  ~Trace() {
    if (indented_) DBG_Outdent();
  }
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;

 private:
  bool indented_;
};

}  // namespace quillmere::debug
