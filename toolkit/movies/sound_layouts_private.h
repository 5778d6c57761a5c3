/// Channels and layouts of sound descriptions, for the sources of the movie library.
#pragma once

#include <vector>

#include "descriptions_private.h"
#include "sound_descriptions.h"

namespace quillmere {

/// How many channels a sound description tells of; 0 where it is too short.
inline SInt16 ChannelsOf(Handle description) {
  constexpr std::size_t kChannels = 24;
  return FieldOf<SInt16>(description, kChannels);
}

/// The bytes of a description's AudioChannelLayout; empty if it has none.
inline std::vector<UInt8> LayoutOf(Handle description) {
  ByteCount size = 0;
  if (QTSoundDescriptionGetPropertyInfo(description, "audi"_4cc, "clay"_4cc, nullptr, &size,
                                        nullptr) != noErr)
    return {};
  std::vector<UInt8> layout(static_cast<std::size_t>(size));
  if (QTSoundDescriptionGetProperty(description, "audi"_4cc, "clay"_4cc, size, layout.data(),
                                    nullptr) != noErr)
    return {};
  return layout;
}

}  // namespace quillmere
