#include "CO_Errors.h"

#include "error_keys.h"

namespace {

constexpr quillmere::errors::KeyRange kKeys[] = {
    {14001, 14001, "CO UnkownYCbCrTypeErr"},
    {14003, 14005, "CO UnalignedWidthOrLineSizeErr"},
    {14006, 14007, "CO CleanCenterWithinLineErr"},
    {14008, 14009, "CO ImageCenterNotHalfPixelPackAlignedErr"},
    {14010, 14011, "CO NonStandardProductionApertureErr"},
    {14012, 14012, "CO NonStandardPixelAspectRatioErr"},
    {14013, 14013, "CO NonStandardCleanApertureErr"},
    {14014, 14015, "CO BufferSpatiallyNonStandardErr"},
    {14016, 14018, "CO NonStandardTimingInfoErr"},
};

}  // namespace

void CO_GetLibErrorKey(SInt32 code, CFStringRef* outKey) {
  quillmere::errors::SetKey(kKeys, code, outKey);
}
