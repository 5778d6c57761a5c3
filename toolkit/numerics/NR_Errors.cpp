#include "NR_Errors.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {24001, 24001, "NR NoSVDConvergenceErr"},
    {24002, 24002, "NR NoClearExtrErr"},
    {24003, 24003, "NR SingMatrixErr"},
    {24004, 24004, "NR LackingPrecisionErr"},
};

}  // namespace

void NR_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
