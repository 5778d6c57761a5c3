/// Events of windows: what targets windows and controls have, the classes and commands that they
/// know, and the application's event loop.
///
/// The records, the queue, the targets' handlers and the timers are those of `platform/events`,
/// which this header brings along. An event that is sent to a control goes on to its window and
/// then to the application. What nobody handled gets the standard handling: the command `clos`
/// closes its window, `quit` closes all windows and ends the event loop. Everything here belongs to
/// the main thread.
///
/// What the user does to controls, menus and title bars arrives as events in the main queue. The
/// event loop empties it; ReceiveNextEvent lets a long operation empty it in between. A control hit
/// is dropped if the control has become inactive, or has gone, between the user's action and its
/// delivery.
#pragma once

#include "base_types.h"
#include "event_queue.h"
#include "event_targets.h"
#include "event_timers.h"
#include "events.h"

struct WindowRecord;
struct ViewRecord;
using WindowRef = WindowRecord*;
using HIViewRef = ViewRecord*;
using ControlRef = ViewRecord*;

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

/// Null for a window that has gone.
EventTargetRef GetWindowEventTarget(WindowRef window);
EventTargetRef GetControlEventTarget(ControlRef control);
/// Drops waiting input; `mask` 8 means key-down events, `stop_mask` is 0.
void FlushEvents(UInt16 mask, UInt16 stop_mask);

/// Serves events until the command `quit` gets its standard handling or QuitApplicationEventLoop is
/// called.
void RunApplicationEventLoop();
void QuitApplicationEventLoop();
