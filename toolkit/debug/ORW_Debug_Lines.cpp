#include <algorithm>
#include <cstdio>
#include <cstring>

#include "GL_File_Paths.h"
#include "ORW_Debug.h"
#include "debug_thread_private.h"
#include "status_texts.h"

namespace {

using quillmere::Owned;
using quillmere::debug::CodeText;
using quillmere::debug::CurrentThread;
using quillmere::debug::CutText;
using quillmere::debug::TextOf;

/// Blanks fill the file part up to this many bytes, " - " included.
constexpr std::size_t kFilePartWidth = 18;
constexpr SInt32 kLongestFileName = 15;          ///< in characters, after shortening
constexpr std::size_t kShortenedNameBytes = 17;  ///< 14 characters and the ellipsis
constexpr std::size_t kTimeLimit = 31;
constexpr std::size_t kCommentLimit = 253;
constexpr SInt64 kLongestIndentation = 64;

std::string TagText(OSType tag) {
  return tag == "maiN"_4cc ? "main" : CodeText(tag);
}

std::string TimePart(DbgData* data) {
  if (data->dateFormatter == nullptr) {
    const Owned<CFLocaleRef> locale(CFLocaleCopyCurrent());
    data->dateFormatter = CFDateFormatterCreate(
        kCFAllocatorDefault, locale.get(), kCFDateFormatterNoStyle, kCFDateFormatterMediumStyle);
  }
  const Owned<CFStringRef> time(CFDateFormatterCreateStringWithAbsoluteTime(
      kCFAllocatorDefault, data->dateFormatter, CFAbsoluteTimeGetCurrent()));
  return std::string(CutText(quillmere::ToUtf8(time.get()), kTimeLimit));
}

std::string FilePart(const char* path) {
  Owned<CFMutableStringRef> shortened;
  if (GL_PosixPathToFileNameCFMutStrNoExtMaxLen(path, kLongestFileName, shortened.out()) != noErr) {
    return {};
  }
  const std::string name = quillmere::ToUtf8(shortened.get());
  const std::string dash = " - ";
  if (name.size() == kShortenedNameBytes) return dash + name;
  const std::size_t room = kFilePartWidth - dash.size();
  if (name.size() <= room) return dash + std::string(room - name.size(), ' ') + name;
  std::puts("Error abbreviating file name in debug string");
  return dash + std::string(CutText(name, room));
}

/// Writes a line to where the thread's settings send it.
void WriteLine(PerThreadGlobalDbgData* thread, const std::string& line) {
  if (thread->printSett.writeToFile != 0) {
    const SInt32 status = DBG_OpenCreateLogfile(thread->logWindowName, &thread->dbgData);
    if (status != noErr) {
      std::printf("Error %d opening/creating debug log file %s\n", status, thread->logWindowName);
      return;
    }
    FSWriteFork(thread->dbgData.logFork, fsFromLEOF, 0, line.size(), line.data(), nullptr);
  } else if (thread->printSett.sendToTextEdit != 0) {
    const SInt32 status = DBG_SendSendLinesCarbonEvent(thread, line.c_str());
    if (status != noErr) std::printf("Error %d calling DBG_SendSendLinesCarbonEvent\n", status);
  } else {
    std::fputs(line.c_str(), stderr);
  }
}

}  // namespace

namespace quillmere::debug {

std::string_view CutText(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  std::size_t end = limit;
  const auto continues = [&text](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
  };
  // A character has at most three bytes behind its first; more of them are no text.
  for (int back = 0; back < 3 && end > 0 && continues(end); ++back)
    --end;
  return text.substr(0, end == 0 || continues(end) ? limit : end);
}

void CopyText(std::string_view text, char* out, std::size_t room) {
  const std::string_view cut = CutText(text, room - 1);
  std::copy(cut.begin(), cut.end(), out);
  out[cut.size()] = '\0';
}

std::string_view TextOf(const char* text) {
  return text != nullptr ? std::string_view(text) : std::string_view();
}

std::string CodeText(OSType code) {
  UInt8 bytes[4];
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = static_cast<UInt8>(code >> (24 - 8 * i));
    bytes[i] = byte < 0x20 || byte == 0x7F ? UInt8{'?'} : byte;
  }
  const Owned<CFStringRef> text(CFStringCreateWithBytes(kCFAllocatorDefault, bytes, sizeof bytes,
                                                        kCFStringEncodingMacRoman, 0));
  return ToUtf8(text.get());
}

}  // namespace quillmere::debug

void DBG_MakeAbbrThreadName(OSType threadType, char* out) {
  quillmere::debug::CopyText(TagText(threadType), out, 5);
}

void DBG_MakeIndentStr(SInt32 level, SInt32 step, char* out) {
  const auto count =
      static_cast<std::size_t>(std::clamp(SInt64{level} * step, SInt64{0}, kLongestIndentation));
  std::memset(out, ' ', count);
  out[count] = '\0';
}

void DBG_MakePrefix(PerThreadGlobalDbgData* thread, const char* fileName, SInt32 lineNumber,
                    std::string* prefix) {
  prefix->clear();
  const DbgPrintSett& settings = thread->printSett;
  if (settings.printTime != 0) *prefix += TimePart(&thread->dbgData);
  if (settings.printCompName != 0 && thread->dbgData.subComponent != 0) {
    *prefix += " - " + TagText(thread->dbgData.subComponent);
  } else if (settings.printThreadName != 0 && settings.sendToTextEdit == 0) {
    *prefix += " - " + TagText(thread->threadType);
  }
  if (settings.printFileName != 0 && !TextOf(fileName).empty()) *prefix += FilePart(fileName);
  if (lineNumber > 0 && settings.printLineNumber != 0) {
    char number[16];
    std::snprintf(number, sizeof number, "%6d", lineNumber);
    *prefix += number;
  }
}

void DBG_MakeAssertStr(const DbgPrintSett* settings, const char* assertion,
                       const char* exceptionLabel, const char* errorString, SInt32 value,
                       std::string* text) {
  text->clear();
  const auto add = [text](const std::string& piece) {
    if (!text->empty()) *text += ", ";
    *text += piece;
  };
  if (!TextOf(assertion).empty()) add(std::string(assertion) + " not true");
  if (!TextOf(errorString).empty()) add(errorString);
  if (value != 0) {
    add("error=" + std::to_string(value));
    const std::string_view name = TextOf(GetMacOSStatusErrorString(value));
    if (settings->printErrorName != 0 && !name.empty()) add(std::string(name));
    const std::string_view comment =
        CutText(TextOf(GetMacOSStatusCommentString(value)), kCommentLimit);
    if (settings->printErrorComment != 0 && !comment.empty()) add(std::string(comment));
  }
  if (!TextOf(exceptionLabel).empty() && settings->printLabel != 0) {
    add("going to " + std::string(exceptionLabel));
  }
}

void DBG_SampleDebugAssert2(const char* /*componentName*/, const char* assertion,
                            const char* exceptionLabel, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 value) {
  PerThreadGlobalDbgData* thread = CurrentThread();
  if (thread == nullptr || thread->app == nullptr) return;
  const DbgData& data = thread->dbgData;
  std::string prefix;
  DBG_MakePrefix(thread, data.fileName[0] != '\0' ? data.fileName : fileName,
                 data.line > 0 ? data.line : lineNumber, &prefix);
  char indentation[kLongestIndentation + 1];
  DBG_MakeIndentStr(data.indentLevel + 1, thread->app->indentStep, indentation);
  std::string text;
  DBG_MakeAssertStr(&thread->printSett, assertion, exceptionLabel, errorString, value, &text);
  WriteLine(thread, prefix + indentation + text + "\n");
}

void DBG_SampleDebugAssert1(const char* componentName, const char* assertion,
                            const char* exceptionLabel, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 value) {
  std::string text =
      TextOf(assertion).empty()
          ? "Check failed: " + std::string(TextOf(componentName)) + ":\n"
          : "Assertion failed: " + std::string(TextOf(componentName)) + ": " + assertion + "\n";
  const auto add = [&text](std::string_view head, std::string_view content) {
    if (!content.empty()) text.append("    ").append(head).append(content).append("\n");
  };
  add("", TextOf(exceptionLabel));
  add("", TextOf(errorString));
  add("file: ", TextOf(fileName));
  add("line: ", lineNumber != 0 ? std::to_string(lineNumber) : std::string());
  add("error: ", value != 0 ? std::to_string(value) : std::string());
  std::fputs(text.c_str(), stderr);
}

void DBG_DefaultDebugAssert(const char* /*componentName*/, const char* assertion,
                            const char* /*exceptionLabel*/, const char* errorString,
                            const char* fileName, SInt32 lineNumber, SInt32 /*value*/) {
  const std::string text =
      "AssertMacros: " + std::string(TextOf(assertion)) + ", " + std::string(TextOf(errorString)) +
      " file: " + std::string(TextOf(fileName)) + ", line: " + std::to_string(lineNumber) + "\n";
  std::fputs(text.c_str(), stderr);
}
