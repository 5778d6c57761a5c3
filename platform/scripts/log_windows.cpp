#include "log_windows.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <string>

namespace quillmere::scripts {
namespace {

void WriteToStandardError(void*, std::string_view window, std::string_view text) {
  std::string lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    if (end > 0) lines.append(window).append(": ").append(text.substr(0, end)).append("\n");
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  std::fwrite(lines.data(), 1, lines.size(), stderr);
}

struct Registration {
  std::mutex mutex;
  LogWindowReceiver receiver = &WriteToStandardError;
  void* user_data = nullptr;
};

Registration& Registered() {
  static auto* registration = new Registration;
  return *registration;
}

}  // namespace

void SetLogWindowReceiver(LogWindowReceiver receiver, void* user_data) {
  Registration& registered = Registered();
  const std::lock_guard lock(registered.mutex);
  registered.receiver = receiver != nullptr ? receiver : &WriteToStandardError;
  registered.user_data = user_data;
}

void AppendToLogWindow(std::string_view window, std::string_view text) {
  LogWindowReceiver receiver = nullptr;
  void* user_data = nullptr;
  {
    Registration& registered = Registered();
    const std::lock_guard lock(registered.mutex);
    receiver = registered.receiver;
    user_data = registered.user_data;
  }
  receiver(user_data, window, text);
}

}  // namespace quillmere::scripts
