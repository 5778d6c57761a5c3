/// Windows. A reference to a window stays safe to pass after the window has gone: calls then give
/// errInvalidWindowRef, and IsValidWindowPtr says false. Main thread only.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"

inline constexpr OSStatus errInvalidWindowRef = -5600;

/// False for null, for a window that has been closed, and for anything that never was a window.
Boolean IsValidWindowPtr(WindowRef window);
/// Keeps one pointer of the caller's with the window.
void SetWRefCon(WindowRef window, void* reference_constant);
/// The pointer kept, null if there is none or the window has gone.
void* GetWRefCon(WindowRef window);
/// Brings the window to the front and gives it the keyboard.
void SelectWindow(WindowRef window);
void ShowWindow(WindowRef window);
/// Closes and frees the window with its controls. Null and a window that has gone are allowed.
void DisposeWindow(WindowRef window);
/// A new string of the window's title, which the caller owns; null on failure.
OSStatus CopyWindowTitleAsCFString(WindowRef window, CFStringRef* title);
/// Puts what has been drawn in the window on the screen.
OSStatus HIWindowFlush(WindowRef window);
