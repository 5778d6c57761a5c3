/// Event loop timers: procedures that the main thread's event loop calls at their times.
///
/// Timers may be installed and removed from any thread; they fire on the main thread, from the
/// application's event loop or within ReceiveNextEvent.
#pragma once

#include "base_types.h"
#include "events.h"

struct EventLoop;
struct EventLoopTimer;
using EventLoopRef = EventLoop*;
using EventLoopTimerRef = EventLoopTimer*;
/// Seconds.
using EventTimerInterval = double;

using EventLoopTimerProcPtr = void (*)(EventLoopTimerRef timer, void* user_data);

EventLoopRef GetMainEventLoop();

/// Installs a timer that fires `fire_delay` seconds from now (0: as soon as the loop runs) and then
/// every `interval` seconds (0: once, after which it waits to be removed). Firings that the loop
/// was too busy for are left out. paramErr for a null procedure, another loop, or a time that is
/// negative or no number.
OSStatus InstallEventLoopTimer(EventLoopRef loop, EventTimerInterval fire_delay,
                               EventTimerInterval interval, EventLoopTimerProcPtr procedure,
                               void* user_data, EventLoopTimerRef* timer);
/// Removes a timer; once this returns on the main thread it does not fire again. A timer may remove
/// itself. paramErr for what is no timer.
OSStatus RemoveEventLoopTimer(EventLoopTimerRef timer);

namespace quillmere::events {

/// Fires what is due, each timer once; a timer does not fire within its own procedure. Main thread.
void FireDueTimers();
/// Seconds until the next timer is due, 0 for one that is; infinity without timers.
EventTimerInterval SecondsToNextTimer();

}  // namespace quillmere::events
