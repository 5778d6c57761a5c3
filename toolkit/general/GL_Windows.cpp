#include "GL_Windows.h"

#include "nibs.h"

SInt32 GL_CreateWindowFromNibByName(CFStringRef nib_name, CFStringRef window_name,
                                    WindowRef* window) {
  IBNibRef nib = nullptr;
  OSStatus status = CreateNibReference(nib_name, &nib);
  if (status != noErr) return status;
  status = CreateWindowFromNib(nib, window_name, window);
  DisposeNibReference(nib);
  return status;
}
