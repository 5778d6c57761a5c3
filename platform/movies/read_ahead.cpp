#include "read_ahead.h"

#include <algorithm>

namespace quillmere::movies {

namespace {

constexpr UInt64 kBlockSize = UInt64{128} << 10;
/// Stretches from this size on are read by themselves.
constexpr UInt64 kLargeStretch = kBlockSize / 2;

/// How far behind the last stretch one of that size may lie to go on from there: blocks should
/// not consist of gaps.
UInt64 LargestGap(UInt64 size) {
  return 4 * size + 512;
}

}  // namespace

/// The place from which a stretch goes on; null if there is none.
ReadAhead::Place* ReadAhead::FindPlace(const DataSource& source, UInt64 offset, UInt64 size) {
  for (Place& place : places_) {
    if (place.source == &source && offset >= place.next &&
        offset - place.next <= LargestGap(size)) {
      return &place;
    }
  }
  return nullptr;
}

/// Reads a block from `offset`, to the end of the source at most.
OSStatus ReadAhead::Fill(Place* place, UInt64 offset, UInt64 at_least) {
  if (!place->block) place->block = std::make_unique_for_overwrite<UInt8[]>(kBlockSize);
  const UInt64 file_size = place->source->size();
  const UInt64 left = file_size > offset ? file_size - offset : 0;
  place->begin = offset;
  place->size = std::max(std::min(kBlockSize, left), at_least);
  const OSStatus status = place->source->Read(offset, {place->block.get(), place->size});
  if (status != noErr) place->size = 0;
  return status;
}

OSStatus ReadAhead::Read(const DataSource& source, UInt64 offset, std::span<UInt8> bytes) {
  const UInt64 size = bytes.size();
  if (size >= kLargeStretch) return source.Read(offset, bytes);
  Place* place = FindPlace(source, offset, size);
  if (place == nullptr) {
    place = &*std::min_element(places_.begin(), places_.end(), [](const Place& a, const Place& b) {
      return a.last_use < b.last_use;
    });
    place->source = &source;
    place->size = 0;
    const OSStatus status = source.Read(offset, bytes);
    if (status != noErr) return status;
  } else {
    const bool at_hand = offset >= place->begin && offset - place->begin <= place->size &&
                         place->size - (offset - place->begin) >= size;
    if (!at_hand && Fill(place, offset, size) != noErr) return source.Read(offset, bytes);
    std::copy_n(place->block.get() + (offset - place->begin), size, bytes.begin());
  }
  place->next = offset + size;
  place->last_use = ++uses_;
  return noErr;
}

}  // namespace quillmere::movies
