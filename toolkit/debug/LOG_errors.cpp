#include "LOG_errors.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {22001, 22001, "LOG CouldNotSaveLogErr"},
};

}  // namespace

void LOG_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
