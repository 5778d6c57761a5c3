/// What an event holds, for the sources of this folder.
#pragma once

#include <atomic>
#include <vector>

#include "events.h"

struct EventParameter {
  OSType name;
  OSType type;
  std::vector<UInt8> bytes;
};

struct EventObject {
  OSType event_class = 0;
  UInt32 kind = 0;
  std::atomic<SInt32> references = 1;
  bool queued = false;  ///< guarded by the queue's lock
  std::vector<EventParameter> parameters;
};
