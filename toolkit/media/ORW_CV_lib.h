/// A small layer over pixel buffers and visual contexts.
#pragma once

#include "base_types.h"
#include "graphics_types.h"
#include "visual_context.h"

/// Makes a visual context that delivers pixel buffers of `pixelFormat` (32: 32-bit ARGB) in the
/// size of `rect`, in pixels, fractions cut off; its origin is not read. Rows are aligned to 64
/// bytes. `outContext` is set to null first; on success the caller owns the context and gives it up
/// with QTVisualContextRelease. Returns the status of QTPixelBufferContextCreate.
SInt32 CV_CreatePixelBufferContext(UInt32 pixelFormat, const CGRect* rect,
                                   QTVisualContextRef* outContext);
