/// Where the lines go that scripts write with `log_window_append(window, text)`.
///
/// A program with windows registers a receiver that shows the lines; without one they go to
/// standard error, each behind the window's name.
#pragma once

#include <string_view>

namespace quillmere::scripts {

/// Takes text in UTF-8, one or more lines, for the window of a name. It runs on the thread that
/// runs the script.
using LogWindowReceiver = void (*)(void* user_data, std::string_view window, std::string_view text);

/// Registers the receiver for the process; null goes back to standard error.
void SetLogWindowReceiver(LogWindowReceiver receiver, void* user_data);
/// Hands text to the receiver.
void AppendToLogWindow(std::string_view window, std::string_view text);

}  // namespace quillmere::scripts
