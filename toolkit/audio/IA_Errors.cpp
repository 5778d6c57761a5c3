#include "IA_Errors.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {19001, 19001, "IA SoundExportCompNotFoundErr"},
    {19002, 19002, "IA SoundImportCompNotFoundErr"},
};

}  // namespace

void IA_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
