/// What a window system gives to the events: it is woken when there is work for the main thread,
/// and knows which window or control an event belongs to. A process without one needs nothing of
/// this.
#pragma once

#include "event_targets.h"
#include "events.h"

namespace quillmere::events {

struct EventHost {
  /// Called from any thread when an event was posted or a timer changed. The host then has
  /// FireDueTimers called and the queue emptied on the main thread.
  void (*wake)();
  /// Serves the window system once; waits for it at most `seconds` if it has nothing to do
  /// (infinity: without end). False if it is being served already: the caller then only looks into
  /// the queue.
  bool (*serve)(EventTimeout seconds);
  /// The target that an event sent to the dispatcher belongs to, null for nobody.
  EventTargetRef (*route)(EventRef event);
  /// True for an event that must not reach anybody any more.
  bool (*is_stale)(EventRef event);
  /// The handling of an event that nobody on the way from `target` outwards wanted.
  OSStatus (*handle_unwanted)(EventRef event, EventTargetRef target);
};

/// Sets the process's host, which lives as long as the process; null for none.
void SetEventHost(const EventHost* host);
/// Null if there is none.
const EventHost* Host();

}  // namespace quillmere::events
