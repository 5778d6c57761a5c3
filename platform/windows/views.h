/// Controls and what is drawn in them.
///
/// A control is reached by its window, a signature and a number. References stay safe to pass after
/// the window has gone; calls then give errInvalidWindowRef. Rectangles are in the window system's
/// logical pixels, y down, frames in the coordinates of the enclosing view. Main thread only.
#pragma once

#include "base_types.h"
#include "carbon_events.h"
#include "cf_strings.h"
#include "context_drawing.h"
#include "graphics_types.h"
#include "images.h"

struct HIShape;
using HIShapeRef = const HIShape*;
using ControlPartCode = SInt16;

/// What addresses a control in its window.
struct HIViewID {
  OSType signature;
  SInt32 id;
};
using ControlID = HIViewID;

inline constexpr OSStatus errUnknownControl = -30588;
inline constexpr OSStatus errControlIsNotActive = -30583;
inline constexpr OSStatus errDataNotSupported = -30581;
inline constexpr OSStatus errDataSizeMismatch = -30591;

/// Tags of control data: a CFStringRef, and a Boolean that is true for an indeterminate bar.
inline constexpr OSType kControlStaticTextCFStringTag = "cfst"_4cc;
inline constexpr OSType kControlProgressBarIndeterminateTag = "inde"_4cc;

/// The view that holds all others of the window; null for a window that has gone.
HIViewRef HIViewGetRoot(WindowRef window);
/// Finds a control under `start`; errUnknownControl if there is none, and `*control` is then null.
OSStatus HIViewFindByID(HIViewRef start, HIViewID id, HIViewRef* control);
OSStatus GetControlID(ControlRef control, ControlID* id);

/// Makes the control react to the user or not; an inactive one is drawn dimmed.
OSStatus HIViewSetActivated(HIViewRef view, Boolean active);
/// True if the control is active; `latent` (may be null): it would be if its parents were.
Boolean HIViewIsActive(HIViewRef view, Boolean* latent);
/// Draws the view now.
OSStatus HIViewRender(HIViewRef view);
/// Asks for the view to be drawn when events are next served.
OSStatus HIViewSetNeedsDisplay(HIViewRef view, Boolean needs_display);
OSStatus HIViewGetFrame(HIViewRef view, HIRect* frame);
/// Moves and sizes a view that no layout of the nib places; edges go to the nearest whole pixel.
OSStatus HIViewSetFrame(HIViewRef view, const HIRect* frame);
/// The view's own rectangle, with its origin at 0, 0.
OSStatus HIViewGetBounds(HIViewRef view, HIRect* bounds);
/// Hits the control as a click does: its hit event is sent at once. errControlIsNotActive if it is
/// inactive. `part` and `modifiers` are 0; `part_hit` may be null.
OSStatus HIViewSimulateClick(HIViewRef view, ControlPartCode part, UInt32 modifiers,
                             ControlPartCode* part_hit);

/// The value of a progress indicator, kept within its minimum and maximum; other controls have the
/// value 0 and do not change.
void SetControl32BitValue(ControlRef control, SInt32 value);
SInt32 GetControl32BitValue(ControlRef control);
void SetControl32BitMaximum(ControlRef control, SInt32 maximum);
SInt32 GetControl32BitMaximum(ControlRef control);
void SetControl32BitMinimum(ControlRef control, SInt32 minimum);
SInt32 GetControl32BitMinimum(ControlRef control);

/// Sets data of the control: `size` bytes at `data`. errDataNotSupported for a tag that the control
/// does not have, errDataSizeMismatch for another size than its type's. `part` is 0.
OSStatus SetControlData(ControlRef control, ControlPartCode part, OSType tag, Size size,
                        const void* data);
/// Gets data of the control; a string is a new one that the caller owns. `actual_size` may be null.
OSStatus GetControlData(ControlRef control, ControlPartCode part, OSType tag, Size capacity,
                        void* data, Size* actual_size);

/// Shows an image in an image view, scaled to its frame; null shows nothing. The pixels are copied.
OSStatus HIImageViewSetImage(HIViewRef view, CGImageRef image);
/// True if the image view shows an image.
Boolean HIImageViewHasImage(HIViewRef view);

/// The smallest rectangle around the shape, stored in and given back as `bounds`.
HIRect* HIShapeGetBounds(HIShapeRef shape, HIRect* bounds);

inline constexpr SInt16 kThemeBrushDialogBackgroundActive = 1;
inline constexpr UInt32 kHIThemeOrientationNormal = 0;
/// Sets a context's fill colour to a brush of the desktop's look: 1, the dialog's background.
/// paramErr for another brush or null. `info` is null.
OSStatus HIThemeSetFill(SInt16 brush, const void* info, CGContextRef context, UInt32 orientation);
