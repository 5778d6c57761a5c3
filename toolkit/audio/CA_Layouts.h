/// Channel layouts of sound (sound_descriptions.h).
#pragma once

#include "sound_descriptions.h"

/// Whether a layout, of the size its number of descriptions asks for, tells of two channels that
/// are each on their own: unknown, mono or discrete ones.
Boolean CA_LayoutIsDualMono(const AudioChannelLayout* layout);
