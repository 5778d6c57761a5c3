#include "GL_Dates.h"

Boolean GL_EqualUTCDateTime(const UTCDateTime* a, const UTCDateTime* b) {
  return a && b && *a == *b;
}
