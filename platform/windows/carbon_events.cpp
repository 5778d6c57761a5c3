#include "carbon_events.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <algorithm>
#include <cstring>
#include <deque>
#include <utility>

#include "window_manager.h"
#include "windows_private.h"

struct EventParameter {
  OSType name;
  OSType type;
  std::vector<UInt8> bytes;
};

struct EventObject {
  OSType event_class = 0;
  UInt32 kind = 0;
  SInt32 references = 1;
  bool queued = false;
  WindowRef source = nullptr;  ///< the window that a command came from
  std::vector<EventParameter> parameters;
};

struct EventQueue {
  struct Entry {
    EventRef event;
    SInt16 priority;
  };
  std::deque<Entry> entries;
};

namespace {

using quillmere::AtExit;
using quillmere::windows::Application;

struct EventState {
  EventTarget application;
  EventTarget dispatcher;
  EventQueue queue;
  QEventLoop* loop = nullptr;  ///< the one of RunApplicationEventLoop
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
  if (event->event_class == kEventClassControl) {
    if (ControlRef control = ControlOf(event)) return GetControlEventTarget(control);
    return nullptr;
  }
  if (event->event_class == kEventClassCommand) {
    WindowRef window = event->source != nullptr ? event->source : quillmere::windows::FrontWindow();
    if (IsValidWindowPtr(window)) return GetWindowEventTarget(window);
  }
  return GetApplicationEventTarget();
}

/// A hit that waited in the queue while its control became inactive, as the second of two quick
/// clicks does, must not reach anybody.
bool IsStaleHit(EventRef event) {
  if (event->event_class != kEventClassControl || event->kind != kEventControlHit) return false;
  return !HIViewIsActive(ControlOf(event), nullptr);
}

bool Wants(const InstalledHandler& handler, EventRef event) {
  return std::any_of(
      handler.types.begin(), handler.types.end(), [event](const EventTypeSpec& type) {
        return type.eventClass == event->event_class && type.eventKind == event->kind;
      });
}

OSStatus CallHandlers(const EventTarget& target, EventRef event) {
  // A copy, since a handler may install others.
  const std::vector<InstalledHandler> handlers = target.handlers;
  for (auto handler = handlers.rbegin(); handler != handlers.rend(); ++handler) {
    if (!Wants(*handler, event)) continue;
    const OSStatus status = handler->procedure(nullptr, event, handler->user_data);
    if (status != eventNotHandledErr) return status;
  }
  return eventNotHandledErr;
}

OSStatus StandardHandling(EventRef event, WindowRef window) {
  HICommand command{};
  if (event->event_class != kEventClassCommand || event->kind != kEventCommandProcess ||
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

/// The next event of the queue, owned by the caller; null when it is empty.
EventRef TakeFromQueue() {
  auto& entries = State().queue.entries;
  if (entries.empty()) return nullptr;
  EventRef event = entries.front().event;
  entries.pop_front();
  event->queued = false;
  return event;
}

void DeliverQueue() {
  if (State().serving) return;  // what fills the queue now is for the caller of ReceiveNextEvent
  while (EventRef event = TakeFromQueue()) {
    SendEventToEventTarget(event, GetEventDispatcherTarget());
    // The analyzer does not count references: this one was the queue's and holds until here.
    ReleaseEvent(event);  // NOLINT(clang-analyzer-cplusplus.NewDelete)
  }
}

void ScheduleDelivery() {
  QMetaObject::invokeMethod(&Application(), &DeliverQueue, Qt::QueuedConnection);
}

}  // namespace

OSStatus CreateEvent(const void* /*allocator*/, OSType event_class, UInt32 kind, EventTime /*when*/,
                     UInt32 /*attributes*/, EventRef* event) {
  if (event == nullptr) return paramErr;
  auto made = std::make_unique<EventObject>();
  made->event_class = event_class;
  made->kind = kind;
  *event = made.release();
  return noErr;
}

EventRef RetainEvent(EventRef event) {
  if (event != nullptr) ++event->references;
  return event;
}

void ReleaseEvent(EventRef event) {
  if (event == nullptr || --event->references > 0) return;
  const std::unique_ptr<EventObject> last(event);
}

OSType GetEventClass(EventRef event) {
  return event != nullptr ? event->event_class : 0;
}

UInt32 GetEventKind(EventRef event) {
  return event != nullptr ? event->kind : 0;
}

OSStatus GetEventParameter(EventRef event, OSType name, OSType type, OSType* actual_type,
                           Size capacity, Size* actual_size, void* data) {
  if (event == nullptr || capacity < 0) return paramErr;
  for (const EventParameter& parameter : event->parameters) {
    if (parameter.name != name || parameter.type != type) continue;
    if (actual_type != nullptr) *actual_type = type;
    if (actual_size != nullptr) *actual_size = static_cast<Size>(parameter.bytes.size());
    const auto count = std::min(static_cast<std::size_t>(capacity), parameter.bytes.size());
    if (data != nullptr && count > 0) std::memcpy(data, parameter.bytes.data(), count);
    return noErr;
  }
  return eventParameterNotFoundErr;
}

OSStatus SetEventParameter(EventRef event, OSType name, OSType type, Size size, const void* data) {
  if (event == nullptr || size < 0 || (data == nullptr && size > 0)) return paramErr;
  const auto* bytes = static_cast<const UInt8*>(data);
  EventParameter parameter{name, type, std::vector<UInt8>(bytes, bytes + size)};
  for (EventParameter& present : event->parameters) {
    if (present.name == name) {
      present = std::move(parameter);
      return noErr;
    }
  }
  event->parameters.push_back(std::move(parameter));
  return noErr;
}

EventTargetRef GetApplicationEventTarget() {
  return &State().application;
}

EventTargetRef GetEventDispatcherTarget() {
  return &State().dispatcher;
}

OSStatus InstallEventHandler(EventTargetRef target, EventHandlerProcPtr handler,
                             ItemCount type_count, const EventTypeSpec* types, void* user_data) {
  if (target == nullptr || target == GetEventDispatcherTarget() || handler == nullptr ||
      (types == nullptr && type_count > 0)) {
    return paramErr;
  }
  target->handlers.push_back({handler, {types, types + type_count}, user_data});
  return noErr;
}

OSStatus SendEventToEventTarget(EventRef event, EventTargetRef target) {
  if (event == nullptr || target == nullptr) return paramErr;
  if (target == GetEventDispatcherTarget()) target = TargetOf(event);
  if (target == nullptr || IsStaleHit(event)) return eventNotHandledErr;
  RetainEvent(event);
  const AtExit release([event] { ReleaseEvent(event); });
  WindowRef window = target->window;
  for (const EventTarget* next = target; next != nullptr; next = next->parent) {
    const OSStatus status = CallHandlers(*next, event);
    if (status != eventNotHandledErr) return status;
  }
  return StandardHandling(event, window);
}

EventQueueRef GetMainEventQueue() {
  return &State().queue;
}

OSStatus PostEventToQueue(EventQueueRef queue, EventRef event, SInt16 priority) {
  if (queue != GetMainEventQueue() || event == nullptr) return paramErr;
  if (event->queued) return eventAlreadyPostedErr;
  auto place = std::find_if(queue->entries.begin(), queue->entries.end(),
                            [priority](const auto& entry) { return entry.priority < priority; });
  queue->entries.insert(place, {RetainEvent(event), priority});
  event->queued = true;
  ScheduleDelivery();
  return noErr;
}

OSStatus ReceiveNextEvent(ItemCount type_count, const EventTypeSpec* types, EventTimeout timeout,
                          Boolean pull, EventRef* event) {
  if (event == nullptr || type_count != 0 || types != nullptr || timeout > 0 || pull == 0) {
    return paramErr;
  }
  EventState& state = State();
  if (state.queue.entries.empty() && !state.serving) {
    state.serving = true;
    const AtExit served([&state] { state.serving = false; });
    Application().processEvents(QEventLoop::AllEvents);
  }
  *event = TakeFromQueue();
  return *event != nullptr ? noErr : eventLoopTimedOutErr;
}

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
  event->source = window;
  PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
  ReleaseEvent(event);
}

}  // namespace quillmere::windows
