/// Float rectangles. An HIRect's y axis points down, that of a CGRect in a bitmap context up.
#pragma once

#include "base_types.h"

using CGFloat = float;

struct CGPoint {
  CGFloat x;
  CGFloat y;
};
struct CGSize {
  CGFloat width;
  CGFloat height;
};
struct CGRect {
  CGPoint origin;
  CGSize size;
};
using HIPoint = CGPoint;
using HISize = CGSize;
using HIRect = CGRect;

static_assert(sizeof(CGRect) == 16);
