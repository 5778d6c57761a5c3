#include "GL_Controls.h"

#include "reference_counted.h"
#include "window_manager.h"

namespace {

/// Finds the control and calls `action` with it, which gives a status.
template <class Action>
SInt32 WithControl(WindowRef window, OSType signature, SInt32 number, Action action) {
  HIViewRef control = nullptr;
  const OSStatus status = HIViewFindByID(HIViewGetRoot(window), {signature, number}, &control);
  return status != noErr ? status : action(control);
}

}  // namespace

SInt32 GL_SetDialogItemValueByID(WindowRef window, OSType signature, SInt32 number, SInt32 value) {
  return WithControl(window, signature, number, [value](HIViewRef control) {
    SetControl32BitValue(control, value);
    return noErr;
  });
}

SInt32 GL_GetDialogItemValueByID(WindowRef window, OSType signature, SInt32 number, SInt32* value) {
  return WithControl(window, signature, number, [value](HIViewRef control) {
    *value = GetControl32BitValue(control);
    return noErr;
  });
}

SInt32 GL_SetDialogItemMaxByID(WindowRef window, OSType signature, SInt32 number, SInt32 maximum) {
  return WithControl(window, signature, number, [maximum](HIViewRef control) {
    SetControl32BitMaximum(control, maximum);
    return noErr;
  });
}

SInt32 GL_GetDialogItemMaxByID(WindowRef window, OSType signature, SInt32 number, SInt32* maximum) {
  return WithControl(window, signature, number, [maximum](HIViewRef control) {
    *maximum = GetControl32BitMaximum(control);
    return noErr;
  });
}

SInt32 GL_ActivateDialogItemByID(WindowRef window, OSType signature, SInt32 number,
                                 Boolean active) {
  return WithControl(window, signature, number,
                     [active](HIViewRef control) { return HIViewSetActivated(control, active); });
}

SInt32 GL_IsDialogItemActiveByID(WindowRef window, OSType signature, SInt32 number,
                                 Boolean* active) {
  return WithControl(window, signature, number, [active](HIViewRef control) {
    *active = HIViewIsActive(control, nullptr);
    return noErr;
  });
}

SInt32 GL_RenderDialogItemByID(WindowRef window, OSType signature, SInt32 number) {
  return WithControl(window, signature, number, HIViewRender);
}

SInt32 GL_ForceDialogItemUpdateByID(WindowRef window, OSType signature, SInt32 number) {
  return WithControl(window, signature, number, [window](HIViewRef control) {
    OSStatus status = HIViewSetNeedsDisplay(control, 1);
    if (status == noErr) status = HIViewRender(control);
    return status != noErr ? status : HIWindowFlush(window);
  });
}

SInt32 GL_HIViewGetFrameByID(WindowRef window, OSType signature, SInt32 number, HIRect* frame) {
  return WithControl(window, signature, number,
                     [frame](HIViewRef control) { return HIViewGetFrame(control, frame); });
}

SInt32 GL_HIViewSetFrameByID(WindowRef window, OSType signature, SInt32 number,
                             const HIRect* frame) {
  return WithControl(window, signature, number,
                     [frame](HIViewRef control) { return HIViewSetFrame(control, frame); });
}

SInt32 GL_SetDialogItemTextByID(WindowRef window, OSType signature, SInt32 number,
                                CFStringRef string) {
  return WithControl(window, signature, number, [string](HIViewRef control) {
    return SetControlData(control, 0, kControlStaticTextCFStringTag, kReferenceSize,
                          static_cast<const void*>(&string));
  });
}

SInt32 GL_CopyDialogItemTextByID(WindowRef window, OSType signature, SInt32 number,
                                 CFStringRef* string) {
  return WithControl(window, signature, number, [string](HIViewRef control) {
    return GetControlData(control, 0, kControlStaticTextCFStringTag, kReferenceSize,
                          static_cast<void*>(string), nullptr);
  });
}

SInt32 GL_SetDialogItemTextIntByID(WindowRef window, OSType signature, SInt32 number,
                                   SInt32 value) {
  const quillmere::Owned<CFStringRef> text(CFStringCreateWithFormat(
      kCFAllocatorDefault, nullptr, CFSTR("%ld"), static_cast<long>(value)));
  return GL_SetDialogItemTextByID(window, signature, number, text.get());
}

SInt32 GL_SetProgressIndicatorStateByID(WindowRef window, OSType signature, SInt32 number,
                                        Boolean determinate) {
  return WithControl(window, signature, number, [determinate](HIViewRef control) {
    const Boolean indeterminate = determinate == 0;
    return SetControlData(control, 0, kControlProgressBarIndeterminateTag, sizeof indeterminate,
                          &indeterminate);
  });
}

SInt32 GL_GetProgressIndicatorStateByID(WindowRef window, OSType signature, SInt32 number,
                                        Boolean* determinate) {
  return WithControl(window, signature, number, [determinate](HIViewRef control) {
    Boolean indeterminate = 0;
    const OSStatus status = GetControlData(control, 0, kControlProgressBarIndeterminateTag,
                                           sizeof indeterminate, &indeterminate, nullptr);
    if (status == noErr) *determinate = indeterminate == 0;
    return status;
  });
}

SInt32 GL_ImageViewSetImageByID(WindowRef window, OSType signature, SInt32 number,
                                CGImageRef image) {
  return WithControl(window, signature, number,
                     [image](HIViewRef control) { return HIImageViewSetImage(control, image); });
}

SInt32 GL_HIViewSimulateClickByID(WindowRef window, OSType signature, SInt32 number,
                                  ControlPartCode part, UInt32 modifiers) {
  return WithControl(window, signature, number, [part, modifiers](HIViewRef control) {
    return HIViewSimulateClick(control, part, modifiers, nullptr);
  });
}
