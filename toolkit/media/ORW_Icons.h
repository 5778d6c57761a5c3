/// Icons made of pictures.
#pragma once

#include "icons.h"
#include "pictures.h"

/// A new icon that shows a picture, which stays the caller's; the caller releases the icon. Null
/// after a failure.
SInt32 IC_PicToIcon(PicHandle picture, IconRef* icon);
