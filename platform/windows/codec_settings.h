/// The settings dialogs of compressors. Main thread only.
#pragma once

#include <vector>

#include "image_compression.h"

inline constexpr OSErr codecUnimpErr = -8962;

/// Shows a dialog with the compressor's settings and gives it what is chosen. userCanceledErr
/// (-128) leaves them as they were; codecUnimpErr for a compressor without settings, -3000 for
/// null.
OSErr ImageCodecRequestSettings(CompressorComponent compressor);

namespace quillmere::windows {

/// The next dialog isn't shown and behaves as if the user had chosen these values, 0 or 1 for each
/// setting; none for a cancel. For tests and command-line tools.
void QueueCodecChoices(const std::vector<int>& choices);

}  // namespace quillmere::windows
