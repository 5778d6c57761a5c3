/// Events: records with a class, a kind and parameters that travel to targets.
///
/// A target is the application, a window or a control. An event that is sent to a target meets that
/// target's handlers, the one installed last first; a handler that answers eventNotHandledErr
/// passes it on, first to the next handler, then to the enclosing target (control, window,
/// application). What nobody handled gets the standard handling: the command `clos` closes its
/// window, `quit` closes all windows and ends the event loop. Everything here belongs to the main
/// thread.
///
/// What the user does to controls, menus and title bars arrives as events in the main queue. The
/// event loop empties it; ReceiveNextEvent lets a long operation empty it in between. A control hit
/// is dropped if the control has become inactive, or has gone, between the user's action and its
/// delivery.
#pragma once

#include "base_types.h"

struct EventObject;
struct EventTarget;
struct EventQueue;
struct EventHandlerCall;
struct WindowRecord;
struct ViewRecord;
using EventRef = EventObject*;
using EventTargetRef = EventTarget*;
using EventQueueRef = EventQueue*;
using EventHandlerCallRef = EventHandlerCall*;
using WindowRef = WindowRecord*;
using HIViewRef = ViewRecord*;
using ControlRef = ViewRecord*;
/// Seconds.
using EventTimeout = double;
using EventTime = double;

/// Statuses of the events family.
inline constexpr OSStatus eventParameterNotFoundErr = -9870;
inline constexpr OSStatus eventLoopTimedOutErr = -9875;
inline constexpr OSStatus eventAlreadyPostedErr = -9860;

/// Classes and kinds in use.
inline constexpr OSType kEventClassCommand = "cmds"_4cc;
inline constexpr OSType kEventClassControl = "cntl"_4cc;
inline constexpr UInt32 kEventCommandProcess = 1;
inline constexpr UInt32 kEventControlHit = 1;
inline constexpr UInt32 kEventControlDraw = 4;

/// Names and types of parameters.
inline constexpr OSType kEventParamDirectObject = "----"_4cc;
inline constexpr OSType kEventParamShape = "shap"_4cc;
inline constexpr OSType kEventParamCGContextRef = "cntx"_4cc;
inline constexpr OSType typeHICommand = "hcmd"_4cc;
inline constexpr OSType typeControlRef = "ctrl"_4cc;
inline constexpr OSType typeHIShapeRef = "shap"_4cc;
inline constexpr OSType typeCGContextRef = "cntx"_4cc;

/// The size in bytes of a parameter that is a reference, whatever it refers to.
inline constexpr Size kReferenceSize = sizeof(void*);

inline constexpr OSType kHICommandClose = "clos"_4cc;
inline constexpr OSType kHICommandQuit = "quit"_4cc;
inline constexpr UInt32 kHICommandFromMenu = 1;

/// A command as it stands in an event: 14 bytes.
#pragma pack(push, 2)
struct HICommand {
  UInt32 attributes;  ///< kHICommandFromMenu if a menu item gave it
  OSType commandID;
  UInt32 menu;       ///< number of the menu, 0 for none
  UInt16 menu_item;  ///< index from 1, 0 for none
};
#pragma pack(pop)
static_assert(sizeof(HICommand) == 14);

/// A class and kind that a handler wants.
struct EventTypeSpec {
  OSType eventClass;
  UInt32 eventKind;
};

/// The status that a handler returns: 0 ends the event, eventNotHandledErr passes it on.
using EventHandlerProcPtr = OSStatus (*)(EventHandlerCallRef call, EventRef event, void* user_data);

enum : SInt16 { kEventPriorityLow = 0, kEventPriorityStandard = 1, kEventPriorityHigh = 2 };

/// Makes an event with one reference, which the caller gives up with ReleaseEvent. `allocator` is
/// null; `when` in seconds since start, 0 for now; `attributes` 0.
OSStatus CreateEvent(const void* allocator, OSType event_class, UInt32 kind, EventTime when,
                     UInt32 attributes, EventRef* event);
/// Adds a reference and gives the event back.
EventRef RetainEvent(EventRef event);
/// Gives up a reference; null is allowed.
void ReleaseEvent(EventRef event);
OSType GetEventClass(EventRef event);
UInt32 GetEventKind(EventRef event);
/// Copies at most `capacity` bytes of the parameter to `data`. `actual_type` and `actual_size` (the
/// parameter's full size in bytes) may be null. eventParameterNotFoundErr if the event has no
/// parameter of that name and type.
OSStatus GetEventParameter(EventRef event, OSType name, OSType type, OSType* actual_type,
                           Size capacity, Size* actual_size, void* data);
/// Sets or replaces the parameter by a copy of `size` bytes.
OSStatus SetEventParameter(EventRef event, OSType name, OSType type, Size size, const void* data);

EventTargetRef GetApplicationEventTarget();
/// Null for a window that has gone.
EventTargetRef GetWindowEventTarget(WindowRef window);
EventTargetRef GetControlEventTarget(ControlRef control);
/// Not a target of its own: sends an event where it belongs. A control event goes to its control, a
/// command to the window that it came from or else the one in front, the rest to the application.
EventTargetRef GetEventDispatcherTarget();

/// Adds a handler for `type_count` classes and kinds; it stays as long as its target.
OSStatus InstallEventHandler(EventTargetRef target, EventHandlerProcPtr handler,
                             ItemCount type_count, const EventTypeSpec* types, void* user_data);
/// Sends an event now. The result is that of the handler that ended it, 0 after standard handling,
/// or eventNotHandledErr.
OSStatus SendEventToEventTarget(EventRef event, EventTargetRef target);

EventQueueRef GetMainEventQueue();
/// Adds an event behind those of its priority. The queue keeps a reference of its own.
/// eventAlreadyPostedErr if the event is in the queue.
OSStatus PostEventToQueue(EventQueueRef queue, EventRef event, SInt16 priority);
/// Takes the next event. `type_count` is 0 and `types` null (all events), `timeout` is 0 (no wait)
/// and `pull` true: then the caller owns the event; other arguments give paramErr. When the queue
/// is empty, the window system is served once, which may fill it; called from within that service
/// it only looks into the queue. eventLoopTimedOutErr when there is nothing.
OSStatus ReceiveNextEvent(ItemCount type_count, const EventTypeSpec* types, EventTimeout timeout,
                          Boolean pull, EventRef* event);
/// Drops waiting input; `mask` 8 means key-down events, `stop_mask` is 0.
void FlushEvents(UInt16 mask, UInt16 stop_mask);

/// Serves events until the command `quit` gets its standard handling or QuitApplicationEventLoop is
/// called.
void RunApplicationEventLoop();
void QuitApplicationEventLoop();
