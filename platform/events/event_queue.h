/// The main event queue: what any thread posts and the main thread takes.
///
/// ReceiveNextEvent is called by the main thread only; it also fires the event loop timers that are
/// due. PostEventToQueue may be called from any thread.
#pragma once

#include "base_types.h"
#include "event_targets.h"
#include "events.h"

struct EventQueue;
using EventQueueRef = EventQueue*;

enum : SInt16 { kEventPriorityLow = 0, kEventPriorityStandard = 1, kEventPriorityHigh = 2 };

/// Waits without end.
inline constexpr EventTimeout kEventDurationForever = -1.0;

EventQueueRef GetMainEventQueue();
/// Adds an event behind those of its priority. The queue keeps a reference of its own.
/// eventAlreadyPostedErr if the event is in the queue.
OSStatus PostEventToQueue(EventQueueRef queue, EventRef event, SInt16 priority);
/// Takes the next event, waiting for one at most `timeout` seconds. `type_count` is 0 and `types`
/// null (all events) and `pull` true: then the caller owns the event; other arguments give
/// paramErr. When the queue is empty, the window system, if there is one, is served, which may
/// fill it; called from within that service it only looks into the queue. eventLoopTimedOutErr when
/// there is nothing.
OSStatus ReceiveNextEvent(ItemCount type_count, const EventTypeSpec* types, EventTimeout timeout,
                          Boolean pull, EventRef* event);

namespace quillmere::events {

/// The next event of the main queue, owned by the caller; null when it is empty.
EventRef TakeFromMainQueue();
bool MainQueueIsEmpty();
/// Ends the main thread's wait, in the queue or in the window system. Any thread.
void WakeMainThread();

}  // namespace quillmere::events
