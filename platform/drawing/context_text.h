/// Text in bitmap contexts (context_drawing.h).
#pragma once

#include <cstddef>

#include "base_types.h"
#include "context_drawing.h"

inline constexpr UInt32 kCGEncodingMacRoman = 1;

/// The font for text: a family's name and a size in units of the context. The encoding is one for
/// classic text; where text is valid UTF-8 it is read as that.
void CGContextSelectFont(CGContextRef context, const char* name, CGFloat size, UInt32 encoding);
/// Draws text upright in the fill colour, its base line's left end at a point. Nothing without a
/// font.
void CGContextShowTextAtPoint(CGContextRef context, CGFloat x, CGFloat y, const char* text,
                              std::size_t length);
