#include "events.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "event_record_private.h"

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
  if (event != nullptr) event->references.fetch_add(1, std::memory_order_relaxed);
  return event;
}

void ReleaseEvent(EventRef event) {
  if (event == nullptr || event->references.fetch_sub(1, std::memory_order_acq_rel) > 1) return;
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
