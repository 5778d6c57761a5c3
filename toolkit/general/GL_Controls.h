/// Dialog items: controls reached by window, signature and number.
///
/// Each operation finds the control and makes one call on it. The result is the first failing
/// status: errUnknownControl for a wrong number, errInvalidWindowRef once the window has gone, or
/// that of the call; outputs then stay as they were. Main thread only.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "views.h"

/// Sets or gets the value of a progress indicator, or its limits.
SInt32 GL_SetDialogItemValueByID(WindowRef window, OSType signature, SInt32 number, SInt32 value);
SInt32 GL_GetDialogItemValueByID(WindowRef window, OSType signature, SInt32 number, SInt32* value);
SInt32 GL_SetDialogItemMaxByID(WindowRef window, OSType signature, SInt32 number, SInt32 maximum);
SInt32 GL_GetDialogItemMaxByID(WindowRef window, OSType signature, SInt32 number, SInt32* maximum);

/// Makes the control react to the user, or dims it.
SInt32 GL_ActivateDialogItemByID(WindowRef window, OSType signature, SInt32 number, Boolean active);
/// Tells if the control is active.
SInt32 GL_IsDialogItemActiveByID(WindowRef window, OSType signature, SInt32 number,
                                 Boolean* active);
/// Draws the control now.
SInt32 GL_RenderDialogItemByID(WindowRef window, OSType signature, SInt32 number);
/// Draws the control and puts it on the screen, for code that goes on without serving events.
SInt32 GL_ForceDialogItemUpdateByID(WindowRef window, OSType signature, SInt32 number);

/// The control's frame in the coordinates of the enclosing view, logical pixels.
SInt32 GL_HIViewGetFrameByID(WindowRef window, OSType signature, SInt32 number, HIRect* frame);
SInt32 GL_HIViewSetFrameByID(WindowRef window, OSType signature, SInt32 number,
                             const HIRect* frame);

/// Shows a string in a static text.
SInt32 GL_SetDialogItemTextByID(WindowRef window, OSType signature, SInt32 number,
                                CFStringRef string);
/// Gets the text as a new string, which the caller owns.
SInt32 GL_CopyDialogItemTextByID(WindowRef window, OSType signature, SInt32 number,
                                 CFStringRef* string);
/// Shows a number in decimal.
SInt32 GL_SetDialogItemTextIntByID(WindowRef window, OSType signature, SInt32 number, SInt32 value);

/// Makes a progress bar determinate (1) or indeterminate (0), or tells which it is.
SInt32 GL_SetProgressIndicatorStateByID(WindowRef window, OSType signature, SInt32 number,
                                        Boolean determinate);
SInt32 GL_GetProgressIndicatorStateByID(WindowRef window, OSType signature, SInt32 number,
                                        Boolean* determinate);

/// Shows an image in an image view; null shows nothing.
SInt32 GL_ImageViewSetImageByID(WindowRef window, OSType signature, SInt32 number,
                                CGImageRef image);
/// Hits the control as a click of the user does.
SInt32 GL_HIViewSimulateClickByID(WindowRef window, OSType signature, SInt32 number,
                                  ControlPartCode part, UInt32 modifiers);
