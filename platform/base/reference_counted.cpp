#include "reference_counted.h"

CFTypeRef CFRetain(CFTypeRef object) {
  if (object) quillmere::ObjectOf(object)->references_.fetch_add(1, std::memory_order_relaxed);
  return object;
}

void CFRelease(CFTypeRef object) {
  const CFObject* counted = quillmere::ObjectOf(object);
  if (counted && counted->references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete counted;
}

SInt64 CFGetRetainCount(CFTypeRef object) {
  return object ? quillmere::ObjectOf(object)->references_.load(std::memory_order_relaxed) : 0;
}
