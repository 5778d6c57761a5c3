/// Windows from nibs.
#pragma once

#include "base_types.h"
#include "cf_strings.h"
#include "window_manager.h"

/// Opens the nib, makes the window called `window_name` and closes the nib. The caller disposes of
/// the window.
SInt32 GL_CreateWindowFromNibByName(CFStringRef nib_name, CFStringRef window_name,
                                    WindowRef* window);
