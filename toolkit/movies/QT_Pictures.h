/// Pictures of movies.
#pragma once

#include "base_types.h"
#include "file_references.h"
#include "icons.h"
#include "images.h"
#include "movie_toolbox.h"
#include "visual_context.h"

/// Renders the movie's first frame, at time 0, into a pixel buffer of the movie box's size and
/// hands it to `imageAvailableCallback`, which runs before this returns. `pixelFormat` is 32 for
/// 32-bit ARGB; `colorSpace` is the space of the output. The movie's visual context and active
/// state are put back. Returns the first failing step's status; 0 means that the movie was served,
/// not that the callback succeeded.
SInt32 QT_DrawFirstFrame(Movie movie, UInt32 pixelFormat, CGColorSpaceRef colorSpace,
                         QTVisualContextImageAvailableCallback imageAvailableCallback,
                         void* userData);

/// The poster of a movie file as a new icon, which the caller releases; null, with status 0, for a
/// movie that shows nothing at its poster time. A poster that can't be drawn gives its status.
SInt32 QT_MovieFileToIcon(const FSRef* file, IconRef* icon);
