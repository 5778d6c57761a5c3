/// Times as text beside the C library's.
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

#include "date_formatter.h"

namespace {

using quillmere::Owned;

TEST(DateFormatter, MediumTimesAreTheLocalesInLocalTime) {
  const Owned<CFLocaleRef> german(CFLocaleCreate(kCFAllocatorDefault, CFSTR("de_DE.UTF-8")));
  const Owned<CFDateFormatterRef> formatter(CFDateFormatterCreate(
      kCFAllocatorDefault, german.get(), kCFDateFormatterNoStyle, kCFDateFormatterMediumStyle));
  ASSERT_TRUE(formatter);
  for (const double time : {0.0, 86399.0, 700000000.25, -1.0, CFAbsoluteTimeGetCurrent()}) {
    const Owned<CFStringRef> text(
        CFDateFormatterCreateStringWithAbsoluteTime(kCFAllocatorDefault, formatter.get(), time));
    const auto seconds = static_cast<std::time_t>(std::floor(time + 978307200.0));
    std::tm parts{};
    localtime_r(&seconds, &parts);
    char expected[16];
    std::strftime(expected, sizeof expected, "%H:%M:%S", &parts);
    EXPECT_EQ(expected, quillmere::ToUtf8(text.get()));
  }
  EXPECT_EQ(nullptr, CFDateFormatterCreateStringWithAbsoluteTime(nullptr, nullptr, 0));
}

TEST(DateFormatter, NowIsNow) {
  const double before = static_cast<double>(std::time(nullptr)) - 978307200.0;
  const double now = CFAbsoluteTimeGetCurrent();
  EXPECT_GE(now + 1, before);
  EXPECT_LE(now, static_cast<double>(std::time(nullptr)) - 978307200.0 + 1);
}

}  // namespace
