/// Targets: where events are sent, and the handlers that meet them there.
///
/// An event that is sent to a target meets that target's handlers, the one installed last first; a
/// handler that answers eventNotHandledErr passes it on, first to the next handler, then to the
/// enclosing target. The application is the outermost one. Everything here belongs to the main
/// thread.
#pragma once

#include <vector>

#include "base_types.h"
#include "events.h"

struct EventTarget;
struct EventHandlerCall;
using EventTargetRef = EventTarget*;
using EventHandlerCallRef = EventHandlerCall*;

/// A class and kind that a handler wants.
struct EventTypeSpec {
  OSType eventClass;
  UInt32 eventKind;
};

/// The status that a handler returns: 0 ends the event, eventNotHandledErr passes it on.
using EventHandlerProcPtr = OSStatus (*)(EventHandlerCallRef call, EventRef event, void* user_data);

struct InstalledHandler {
  EventHandlerProcPtr procedure;
  std::vector<EventTypeSpec> types;
  void* user_data;
};

struct EventTarget {
  EventTarget* parent = nullptr;
  void* owner = nullptr;  ///< what the window system knows the target by; null for the application
  std::vector<InstalledHandler> handlers;
};

EventTargetRef GetApplicationEventTarget();
/// Not a target of its own: sends an event where it belongs. A control event goes to its control, a
/// command to the window that it came from or else the one in front, the rest to the application.
EventTargetRef GetEventDispatcherTarget();

/// Adds a handler for `type_count` classes and kinds; it stays as long as its target.
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerProcPtr handler,
                             ItemCount type_count, const EventTypeSpec* types, void* user_data);
/// Sends an event now. The result is that of the handler that ended it, 0 after standard handling,
/// or eventNotHandledErr.
OSStatus SendEventToEventTarget(EventRef event, EventTargetRef target);
