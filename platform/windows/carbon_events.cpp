#include "carbon_events.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <cmath>

#include "event_host.h"
#include "window_manager.h"
#include "windows_private.h"

namespace {

using quillmere::AtExit;
using quillmere::windows::Application;

/// The window that a command came from, a parameter that only this file reads.
constexpr OSType kSourceWindow = "srcW"_4cc;
constexpr OSType typeWindowRef = "wind"_4cc;

struct EventState {
  QApplication* application = nullptr;
  QEventLoop* loop = nullptr;     ///< the one of RunApplicationEventLoop
  QTimer* next_firing = nullptr;  ///< wakes the loop for the event loop timers
  bool quit = false;
  bool serving = false;  ///< ReceiveNextEvent is serving the window system
};

EventState& State() {
  static EventState state;
  return state;
}

/// The reference in the event's direct object, null if it has none of that type.
ControlRef ControlOf(EventRef event) {
  ControlRef control = nullptr;
  GetEventParameter(event, kEventParamDirectObject, typeControlRef, nullptr, kReferenceSize,
                    nullptr, static_cast<void*>(&control));
  return control;
}

EventTargetRef TargetOf(EventRef event) {
  if (GetEventClass(event) == kEventClassControl) {
    if (ControlRef control = ControlOf(event)) return GetControlEventTarget(control);
    return nullptr;
  }
  if (GetEventClass(event) == kEventClassCommand) {
    WindowRef window = nullptr;
    GetEventParameter(event, kSourceWindow, typeWindowRef, nullptr, kReferenceSize, nullptr,
                      static_cast<void*>(&window));
    if (window == nullptr) window = quillmere::windows::FrontWindow();
    if (IsValidWindowPtr(window)) return GetWindowEventTarget(window);
  }
  return GetApplicationEventTarget();
}

/// A hit that waited in the queue while its control became inactive, as the second of two quick
/// clicks does, must not reach anybody.
bool IsStaleHit(EventRef event) {
  if (GetEventClass(event) != kEventClassControl || GetEventKind(event) != kEventControlHit)
    return false;
  return !HIViewIsActive(ControlOf(event), nullptr);
}

OSStatus StandardHandling(EventRef event, EventTargetRef target) {
  auto* window = static_cast<WindowRef>(target->owner);
  HICommand command{};
  if (GetEventClass(event) != kEventClassCommand || GetEventKind(event) != kEventCommandProcess ||
      GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command,
                        nullptr, &command) != noErr) {
    return eventNotHandledErr;
  }
  switch (command.commandID) {
    case kHICommandClose:
      if (!IsValidWindowPtr(window)) return eventNotHandledErr;
      DisposeWindow(window);
      return noErr;
    case kHICommandQuit:
      // The windows go first: a job that runs in one of them learns of the end by that.
      quillmere::windows::DisposeAllWindows();
      QuitApplicationEventLoop();
      return noErr;
    default:
      return eventNotHandledErr;
  }
}

/// Has the loop woken when the next event loop timer is due.
void ArmNextFiring();

void FireTimers() {
  quillmere::events::FireDueTimers();
  ArmNextFiring();
}

void ArmNextFiring() {
  const double seconds = quillmere::events::SecondsToNextTimer();
  EventState& state = State();
  if (std::isinf(seconds)) {
    if (state.next_firing != nullptr) state.next_firing->stop();
    return;
  }
  if (state.next_firing == nullptr) {
    auto timer = std::make_unique<QTimer>();
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer.get(), &QTimer::timeout, &Application(), &FireTimers);
    state.next_firing = timer.release();
    state.next_firing->setParent(&Application());
  }
  // A longer time ends in a look at the clock and another wait.
  constexpr double kLongestWait = 1e6;
  state.next_firing->start(static_cast<int>(std::ceil(std::min(seconds, kLongestWait) * 1000)));
}

void DeliverQueue() {
  FireTimers();
  if (State().serving) return;  // what fills the queue now is for the caller of ReceiveNextEvent
  while (EventRef event = quillmere::events::TakeFromMainQueue()) {
    SendEventToEventTarget(event, GetEventDispatcherTarget());
    // The analyzer does not count references: this one was the queue's and holds until here.
    ReleaseEvent(event);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
  }
}

void ScheduleDelivery() {
  QMetaObject::invokeMethod(State().application, &DeliverQueue, Qt::QueuedConnection);
}

bool ServeWindowSystem(EventTimeout seconds) {
  EventState& state = State();
  if (state.serving) return false;
  state.serving = true;
  const AtExit served([&state] { state.serving = false; });
  if (seconds > 0) {
    QTimer limit;  // its firing is what ends the wait
    limit.setSingleShot(true);
    limit.setTimerType(Qt::PreciseTimer);
    if (!std::isinf(seconds))
      limit.start(static_cast<int>(std::ceil(std::min(seconds, 1e6) * 1000)));
    Application().processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
  } else {
    Application().processEvents(QEventLoop::AllEvents);
  }
  // Deliveries that were due have been put off; what the caller leaves in the queue needs another.
  if (!quillmere::events::MainQueueIsEmpty()) ScheduleDelivery();
  return true;
}

}  // namespace

namespace quillmere::windows {

void ConnectEvents(QApplication* application) {
  State().application = application;
  static constexpr events::EventHost kHost{ScheduleDelivery, ServeWindowSystem, TargetOf,
                                           IsStaleHit, StandardHandling};
  events::SetEventHost(&kHost);
  ScheduleDelivery();  // of what was posted before there was a window system
}

}  // namespace quillmere::windows

void FlushEvents(UInt16 mask, UInt16 /*stop_mask*/) {
  constexpr UInt16 kKeyDownMask = 8;
  if ((mask & kKeyDownMask) != 0) QCoreApplication::removePostedEvents(nullptr, QEvent::KeyPress);
}

void RunApplicationEventLoop() {
  EventState& state = State();
  if (state.loop != nullptr) return;
  Application();
  QEventLoop loop;
  state.loop = &loop;
  const AtExit ended([&state] {
    state.loop = nullptr;
    state.quit = false;
  });
  if (!state.quit) loop.exec();
}

void QuitApplicationEventLoop() {
  State().quit = true;
  if (State().loop != nullptr) State().loop->quit();
}

namespace quillmere::windows {

void PostHit(ViewRecord* control) {
  EventRef event = nullptr;
  if (CreateEvent(nullptr, kEventClassControl, kEventControlHit, 0, 0, &event) != noErr) return;
  SetEventParameter(event, kEventParamDirectObject, typeControlRef, kReferenceSize,
                    static_cast<const void*>(&control));
  PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
  ReleaseEvent(event);
}

void PostCommand(OSType command, UInt32 attributes, WindowRef window) {
  EventRef event = nullptr;
  if (CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, 0, &event) != noErr) return;
  const HICommand record{attributes, command, 0, 0};
  SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof record, &record);
  if (window != nullptr) {
    SetEventParameter(event, kSourceWindow, typeWindowRef, kReferenceSize,
                      static_cast<const void*>(&window));
  }
  PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
  ReleaseEvent(event);
}

}  // namespace quillmere::windows
