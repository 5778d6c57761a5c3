/// Driving windows without a human: answers for pickers, and a desktop without a display. For tests
/// and command-line tools.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "base_types.h"
#include "carbon_events.h"

namespace quillmere::windows {

/// Works without a display from now on, unless the environment names a Qt platform. Call it before
/// the first window or nib.
void UseNoDisplay();

/// The next picker that runs shows no dialog and behaves as if the user had chosen this object. A
/// path that does not exist, or that the picker's filter hides, counts as a cancel.
void QueuePickerAnswer(const std::filesystem::path& path);
/// The next picker behaves as if the user had cancelled.
void QueuePickerCancel();
/// Answers not used yet.
std::size_t QueuedPickerAnswers();
/// The message of the picker that ran last, in UTF-8.
std::string LastPickerMessage();
/// The folder that the picker that ran last was told to open in; empty if it was told none.
std::filesystem::path LastPickerFolder();

/// The window that commands go to: the active one, or else one that is shown; null if there is
/// none.
WindowRef FrontWindow();

/// What a window shows, three bytes a pixel, red first, row by row; empty for one that has gone.
std::vector<UInt8> SnapshotOf(WindowRef window);

/// How often the system alert has been asked for, heard or not.
UInt64 AlertCount();

}  // namespace quillmere::windows
