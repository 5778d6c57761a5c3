/// Samples of text media.
#pragma once

#include "media_editing.h"
#include "movie_toolbox.h"

/// Adds a text, shown in a box for a duration, between BeginMediaEdits and EndMediaEdits: `size`
/// bytes of text, which is UTF-8 in files. Colours are null for white on black. `sample_time` may
/// be null. paramErr for text of more than 65,535 bytes.
OSErr TextMediaAddTextSample(MediaHandler handler, const char* text, UInt32 size, const Rect* box,
                             const RGBColor* text_color, const RGBColor* background,
                             TimeValue duration, TimeValue* sample_time);
