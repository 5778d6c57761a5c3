#include <array>
#include <cstdio>

#include "GL_CF.h"
#include "absolute_time.h"

namespace {

using quillmere::Owned;

CFGregorianDate LocalTime() {
  const Owned<CFTimeZoneRef> zone(CFTimeZoneCopySystem());
  return CFAbsoluteTimeGetGregorianDate(CFAbsoluteTimeGetCurrent(), zone.get());
}

/// Prints what fits a C string of 255 bytes, by whole characters, and a line end.
void PrintLine(CFStringRef line) {
  std::array<UInt8, 256> text{};
  CFIndex used = 0;
  CFStringGetBytes(line, {0, CFStringGetLength(line)}, CFStringGetSystemEncoding(), '?', 0,
                   text.data(), std::ssize(text) - 1, &used);
  std::printf("%s\n", reinterpret_cast<const char*>(text.data()));
}

}  // namespace

void CF_PrintWithTime(CFStringRef format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  CF_PrintWithTimeVA(format, arguments);
  va_end(arguments);
}

void CF_PrintWithTimeVA(CFStringRef format, std::va_list arguments) {
  const Owned<CFStringRef> text(
      CFStringCreateWithFormatAndArguments(kCFAllocatorDefault, nullptr, format, arguments));
  const CFGregorianDate now = LocalTime();
  const Owned<CFStringRef> line(CF_StringCreateWithFormat(
      CFSTR("%02d:%02d:%02d %@"), now.hour, now.minute, static_cast<int>(now.second), text.get()));
  PrintLine(line.get());
}

void CF_PrintDate() {
  const CFGregorianDate now = LocalTime();
  const Owned<CFStringRef> line(
      CF_StringCreateWithFormat(CFSTR("Date = %04d-%02d-%02d"), now.year, now.month, now.day));
  PrintLine(line.get());
}

void CF_PrintTime() {
  const CFGregorianDate now = LocalTime();
  const Owned<CFStringRef> line(CF_StringCreateWithFormat(
      CFSTR("Time = %02d:%02d:%02d"), now.hour, now.minute, static_cast<int>(now.second)));
  PrintLine(line.get());
}
