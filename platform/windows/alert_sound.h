/// The system alert.
#pragma once

#include "base_types.h"

inline constexpr UInt32 kUserPreferredAlert = 4096;

/// Plays the desktop's alert sound (4096; other numbers do nothing) and returns at once. Without a
/// sound server, or without a display, nothing is heard.
void AudioServicesPlayAlertSound(UInt32 sound);
