#include "ORW_Icons.h"

SInt32 IC_PicToIcon(PicHandle picture, IconRef* icon) {
  *icon = nullptr;
  IconFamilyHandle family = NewIconFamily();
  if (family == nullptr) return MemError();
  SInt32 status = SetIconFamilyData(family, "PICT"_4cc, picture);
  if (!status) status = GetIconRefFromIconFamilyPtr(*family, GetHandleSize(family), icon);
  DisposeHandle(family);
  return status;
}
