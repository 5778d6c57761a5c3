#include "alert_sound.h"

#include <canberra.h>

#include <memory>

#include "automation.h"
#include "windows_private.h"

namespace {

UInt64 alerts = 0;

struct ContextDeleter {
  void operator()(ca_context* context) const { ca_context_destroy(context); }
};

/// The connection to the sound server, made for the first alert; null if there is none.
ca_context* SoundContext() {
  static const std::unique_ptr<ca_context, ContextDeleter> context = [] {
    ca_context* made = nullptr;
    if (ca_context_create(&made) != CA_SUCCESS) made = nullptr;
    return std::unique_ptr<ca_context, ContextDeleter>(made);
  }();
  return context.get();
}

}  // namespace

void AudioServicesPlayAlertSound(UInt32 sound) {
  if (sound != kUserPreferredAlert) return;
  ++alerts;
  if (qApp == nullptr || quillmere::windows::RunsWithoutDisplay()) return;
  if (ca_context* context = SoundContext()) {
    // Answers at once; a failure means that nobody can hear it.
    ca_context_play(context, 0, CA_PROP_EVENT_ID, "dialog-error", CA_PROP_EVENT_DESCRIPTION,
                    "Quillmere alert", CA_PROP_CANBERRA_CACHE_CONTROL, "permanent", nullptr);
  }
}

UInt64 quillmere::windows::AlertCount() {
  return alerts;
}
