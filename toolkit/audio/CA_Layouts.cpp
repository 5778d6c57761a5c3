#include "CA_Layouts.h"

#include <algorithm>

namespace {

bool IsOnItsOwn(const AudioChannelDescription& channel) {
  constexpr UInt32 kUnknown = 0xFFFFFFFF;
  constexpr UInt32 kMono = 42;
  constexpr UInt32 kFirstDiscrete = 400;
  constexpr UInt32 kLastDiscrete = 131071;
  const UInt32 label = channel.mChannelLabel;
  return label == kUnknown || label == kMono || (label >= kFirstDiscrete && label <= kLastDiscrete);
}

}  // namespace

Boolean CA_LayoutIsDualMono(const AudioChannelLayout* layout) {
  return layout->mChannelLayoutTag == 0 && layout->mNumberChannelDescriptions == 2 &&
         std::all_of(layout->mChannelDescriptions, layout->mChannelDescriptions + 2, IsOnItsOwn);
}
