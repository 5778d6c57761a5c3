/// Walks and roundings that the sources of QT_Media_Intervals.h share.
#pragma once

#include <algorithm>
#include <limits>

#include "LL_Linked_Lists.h"
#include "media_times.h"

namespace quillmere {

inline constexpr Fixed kForwards = 0x10000;

/// Toward zero, within 32 bits; 0 for not-a-number.
inline SInt32 Truncated(double value) {
  constexpr double kMost = std::numeric_limits<SInt32>::max();
  return value == value ? static_cast<SInt32>(std::clamp(value, -kMost, kMost)) : 0;
}

/// A truncation that lets nothing fall to the unit below by rounding.
inline SInt32 TruncatedUp(double value) {
  return Truncated(value + 0.1);
}

struct TimeSpan {
  SInt32 time;
  SInt32 duration;
};

/// When a span ends, held to what a time can say.
inline SInt32 EndOf(const TimeSpan& span) {
  return static_cast<SInt32>(std::min<SInt64>(SInt64{span.time} + span.duration, 0x7FFFFFFF));
}

/// Calls `visit` with each thing of a kind that begins in a track or media from `start` on, until
/// it gives false; `next` is the toolbox's search in that.
template <class Where, class Visit>
void WalkTimes(Where where, void (*next)(Where, SInt16, TimeValue, Fixed, TimeValue*, TimeValue*),
               SInt16 kind, SInt32 start, Visit visit) {
  TimeSpan span = {start, 0};
  for (SInt16 flags = kind | nextTimeEdgeOK;; flags = kind) {
    next(where, flags, span.time, kForwards, &span.time, &span.duration);
    if (span.time == -1 || !visit(span)) return;
  }
}
template <class Visit>
void WalkTrack(Track track, SInt16 kind, SInt32 start, Visit visit) {
  WalkTimes(track, GetTrackNextInterestingTime, kind, start, visit);
}
template <class Visit>
void WalkMedia(Media media, SInt16 kind, SInt32 start, Visit visit) {
  WalkTimes(media, GetMediaNextInterestingTime, kind, start, visit);
}

/// A new zeroed element at the end of a list that is built from its head on.
template <class Element>
class ListBuilder {
 public:
  explicit ListBuilder(Element** head) : head_(head) { *head = nullptr; }
  /// Null, with -108 as the status, without memory.
  Element* Add() {
    void* added = nullptr;
    // Into the empty list behind the last element, which takes no walk.
    Element** slot = last_ != nullptr ? &last_->next : head_;
    status_ = LL_AddNewPtr(sizeof(Element), LL_FrontPlace(), ListHead(slot), &added);
    if (status_ == noErr) last_ = static_cast<Element*>(added);
    return static_cast<Element*>(added);
  }
  SInt32 status() const { return status_; }

 private:
  Element** head_;
  Element* last_ = nullptr;
  SInt32 status_ = noErr;
};

}  // namespace quillmere
