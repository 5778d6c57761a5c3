#include "absolute_time.h"

#include <chrono>

CFAbsoluteTime CFAbsoluteTimeGetCurrent() {
  constexpr double kSecondsFrom1970To2001 = 978307200.0;
  const std::chrono::duration<double> since_1970 =
      std::chrono::system_clock::now().time_since_epoch();
  return since_1970.count() - kSecondsFrom1970To2001;
}
