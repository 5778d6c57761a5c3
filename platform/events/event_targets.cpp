#include "event_targets.h"

#include <algorithm>

#include "event_host.h"
#include "reference_counted.h"

namespace {

using quillmere::AtExit;
using quillmere::events::EventHost;
using quillmere::events::Host;

bool Wants(const InstalledHandler& handler, EventRef event) {
  return std::any_of(
      handler.types.begin(), handler.types.end(), [event](const EventTypeSpec& type) {
        return type.eventClass == GetEventClass(event) && type.eventKind == GetEventKind(event);
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

}  // namespace

EventTargetRef GetApplicationEventTarget() {
  static EventTarget application;
  return &application;
}

EventTargetRef GetEventDispatcherTarget() {
  static EventTarget dispatcher;
  return &dispatcher;
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
  const EventHost* host = Host();
  if (target == GetEventDispatcherTarget()) {
    target = host != nullptr ? host->route(event) : GetApplicationEventTarget();
  }
  if (target == nullptr || (host != nullptr && host->is_stale(event))) return eventNotHandledErr;
  RetainEvent(event);
  const AtExit release([event] { ReleaseEvent(event); });
  for (const EventTarget* next = target; next != nullptr; next = next->parent) {
    const OSStatus status = CallHandlers(*next, event);
    if (status != eventNotHandledErr) return status;
  }
  return host != nullptr ? host->handle_unwanted(event, target) : eventNotHandledErr;
}
