/// Bitmap contexts (context_drawing.h) of the toolkit's kind.
#pragma once

#include "base_types.h"
#include "context_drawing.h"
#include "graphics_types.h"
#include "images.h"

/// A context of a rectangle's size, its width and height plus 0.01 cut to whole pixels: generic
/// RGB, 8 bits a component, premultiplied alpha first, rows of 4 bytes a pixel. If `*buffer` is
/// null, the pixels are allocated, clear, and the caller frees them (free) when context and images
/// have gone. Null for a rectangle without pixels and without memory.
CGContextRef GL_CreateStdCGContext(CGRect rect, void** buffer);
/// Fills a rectangle with a colour of 16 bits a component and an alpha of 8.
void GL_FillRectWithColor(CGContextRef context, CGRect rect, RGBColor color, UInt8 alpha);
