/// The Qt application object that fonts need.
#pragma once

namespace quillmere::drawing {

/// Makes sure that there is a QGuiApplication. A program without one gets one on the offscreen
/// platform, which needs no display and lives until the process ends. Main thread, or before others
/// draw.
void NeedGuiApplication();

/// Ends the object that NeedGuiApplication made, if it did, so that a program that goes on to open
/// windows can make its own.
void EndOffscreenApplication();

}  // namespace quillmere::drawing
