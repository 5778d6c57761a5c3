/// Ports and pictures of windows. Main thread only.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "graphics_ports.h"
#include "pictures.h"

/// The port of a window, which belongs to it: its content's pixels, 0, 0 at the top left, placed
/// where it lies on the screen at the time of the call. What is drawn there lies under the window's
/// controls and is shown when the window is next drawn. Null for a window that has gone.
CGrafPtr GetWindowPort(WindowRef window);
/// Makes it the current port.
void SetPortWindowPort(WindowRef window);
/// Hands the window a picture that fills its content, over what is in its port, and is drawn
/// whenever the window is; null for none. It belongs to the window then, which does not kill one
/// that it had: the caller takes that by GetWindowPic.
void SetWindowPic(WindowRef window, PicHandle picture);
PicHandle GetWindowPic(WindowRef window);
