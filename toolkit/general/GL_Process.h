/// Services of the running process: pending events, quitting, the alert sound. Main thread only.
#pragma once

#include "base_types.h"

/// Delivers events until none is left, so that long work on the main thread keeps the windows
/// alive. Any handler may run inside it. Returns the status that ended it.
SInt32 GL_HandlePendingEvents();
/// Posts the command `quit` to the main queue.
SInt32 GL_PostQuitEvent();
/// Plays the user's alert sound and returns at once.
void GL_SysBeep();
