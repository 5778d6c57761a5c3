/// Events: records with a class, a kind and parameters.
///
/// An event is counted: who makes or takes one gives it up with ReleaseEvent. References may be
/// taken and given up on any thread; the parameters belong to one thread at a time, which is the
/// maker's until the event is posted and the receiver's from then on.
#pragma once

#include "base_types.h"

struct EventObject;
using EventRef = EventObject*;
/// Seconds.
using EventTimeout = double;
using EventTime = double;

/// Statuses of the events family.
inline constexpr OSStatus eventParameterNotFoundErr = -9870;
inline constexpr OSStatus eventLoopTimedOutErr = -9875;
inline constexpr OSStatus eventAlreadyPostedErr = -9860;

/// Types of parameters that hold plain values: bytes of a C string with its zero, one Boolean, 32
/// bits, 32 bits unsigned.
inline constexpr OSType typeCString = "cstr"_4cc;
inline constexpr OSType typeEventBoolean = "bool"_4cc;
inline constexpr OSType typeEventLong = "long"_4cc;

/// Makes an event with one reference, which the caller gives up with ReleaseEvent. `allocator` is
/// null; `when` in seconds since start, 0 meaning the present; `attributes` 0.
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
