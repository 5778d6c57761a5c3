#include "GL_Process.h"

#include "alert_sound.h"
#include "carbon_events.h"
#include "reference_counted.h"

SInt32 GL_HandlePendingEvents() {
  for (;;) {
    EventRef event = nullptr;
    const OSStatus status = ReceiveNextEvent(0, nullptr, 0, 1, &event);
    if (status != noErr) return status;
    SendEventToEventTarget(event, GetEventDispatcherTarget());
    ReleaseEvent(event);
  }
}

SInt32 GL_PostQuitEvent() {
  EventRef event = nullptr;
  OSStatus status = CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, 0, &event);
  if (status != noErr) return status;
  const quillmere::AtExit release([event] { ReleaseEvent(event); });
  HICommand command{};
  command.commandID = kHICommandQuit;
  status =
      SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command);
  if (status != noErr) return status;
  return PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard);
}

void GL_SysBeep() {
  AudioServicesPlayAlertSound(kUserPreferredAlert);
}
