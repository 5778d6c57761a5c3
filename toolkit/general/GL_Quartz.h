/// Quartz images and float rectangles.
#pragma once

#include "base_types.h"
#include "graphics_types.h"
#include "views.h"

/// top = trunc y, left = trunc x, bottom = trunc(top + height), right = trunc(left + width).
void GL_HIRectToRect(const HIRect* from, Rect* to);
/// x = left, y = top, and the width and height of the rectangle.
void GL_RectToHIRect(const Rect* from, HIRect* to);

/// Gives an image view the size that fits `image` into `box` without changing its proportions. The
/// view keeps its centre, within a pixel. Returns the first failing status.
SInt32 GL_ScaleImageView(WindowRef window, CGImageRef image, const HIRect* box, OSType signature,
                         SInt32 number);
