#include "NS_Errors.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {25001, 25001, "NS NoNavServicesErr"},
    {25002, 25002, "NS NoEventProcErr"},
};

}  // namespace

void NS_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
