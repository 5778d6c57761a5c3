/// Writing a rendered still.
#pragma once

#include "visual_context.h"

/// Takes the rendered frame from the context and writes it as "name-clean.jpg" into the target
/// folder, at quality 0.8 and with the pixel density of the source. `mask_data` is the QM_MaskData;
/// its `stillError` takes the status.
void QM_ImageAvailableCallback(QTVisualContextRef context, const CVTimeStamp* time,
                               void* mask_data);
