#include "QT_Nclc.h"

void QT_FlipNclc(QT_Nclc* nclc) {
  nclc->colorParamType = __builtin_bswap32(nclc->colorParamType);
  nclc->primaries = __builtin_bswap16(nclc->primaries);
  nclc->transferFunction = __builtin_bswap16(nclc->transferFunction);
  nclc->matrix = __builtin_bswap16(nclc->matrix);
}

Boolean QT_StandardNclcPrimaries(UInt16 index) {
  return index == 1 || index == 5 || index == 6;
}

Boolean QT_StandardNclcTransferFunction(UInt16 index) {
  return index == 1 || index == 7;
}

Boolean QT_StandardNclcMatrix(UInt16 index) {
  return index == 1 || index == 6 || index == 7;
}

Boolean QT_StandardNclc(const QT_Nclc* nclc) {
  return QT_StandardNclcPrimaries(nclc->primaries) &&
         QT_StandardNclcTransferFunction(nclc->transferFunction) &&
         QT_StandardNclcMatrix(nclc->matrix);
}

Boolean QT_EqualNclc(const QT_Nclc* a, const QT_Nclc* b) {
  return a->colorParamType == b->colorParamType && a->primaries == b->primaries &&
         a->transferFunction == b->transferFunction && a->matrix == b->matrix;
}
