/// Display links: a thread that calls a procedure at the rate of the display.
///
/// The procedure runs on the link's own thread, first right after the start and then once for each
/// refresh of the display, 60 times a second; refreshes that it was too busy for are left out.
/// Links are counted; the last release stops the thread first. Start, stop and release must not be
/// called from within the procedure.
#pragma once

#include "base_types.h"

struct DisplayLink;
using CVDisplayLinkRef = DisplayLink*;
using CVReturn = SInt32;
using CVOptionFlags = UInt64;

inline constexpr CVReturn kCVReturnSuccess = 0;
inline constexpr CVReturn kCVReturnInvalidArgument = -6661;
inline constexpr CVReturn kCVReturnDisplayLinkAlreadyRunning = -6671;
inline constexpr CVReturn kCVReturnDisplayLinkNotRunning = -6672;
inline constexpr CVReturn kCVReturnDisplayLinkCallbacksNotSet = -6673;

/// A moment of the display: seconds since an arbitrary start, on a clock that is never set.
struct CVTimeStamp {
  UInt64 frame;  ///< number of refreshes since the link was started
  double seconds;
};

/// What a link calls: `now`, and the time of the refresh that is prepared.
using CVDisplayLinkOutputCallback = CVReturn (*)(CVDisplayLinkRef link, const CVTimeStamp* now,
                                                 const CVTimeStamp* output, CVOptionFlags flags_in,
                                                 CVOptionFlags* flags_out, void* user_data);

/// Makes a link with one reference, which the caller gives up with CVDisplayLinkRelease.
CVReturn CVDisplayLinkCreateWithActiveCGDisplays(CVDisplayLinkRef* link);
/// Sets the procedure of a link that does not run.
CVReturn CVDisplayLinkSetOutputCallback(CVDisplayLinkRef link, CVDisplayLinkOutputCallback callback,
                                        void* user_data);
CVReturn CVDisplayLinkStart(CVDisplayLinkRef link);
/// Stops the link; its procedure does not run any more when this returns.
CVReturn CVDisplayLinkStop(CVDisplayLinkRef link);
Boolean CVDisplayLinkIsRunning(CVDisplayLinkRef link);
CVDisplayLinkRef CVDisplayLinkRetain(CVDisplayLinkRef link);
/// Gives up a reference; null is allowed.
void CVDisplayLinkRelease(CVDisplayLinkRef link);
