/// Qt's fonts for the numbers and names of fonts.h.
#pragma once

#include <QFont>
#include <QString>

#include "base_types.h"

namespace quillmere::drawing {

/// The first number of a family that has no fixed one.
inline constexpr SInt16 kFirstFreeFont = 1024;

/// The default font for a number without a family.
QFont FontOfNumber(SInt16 number);
/// A classic family has a substitute of its kind where it isn't installed.
QFont FontOfFamily(const QString& name);

}  // namespace quillmere::drawing
