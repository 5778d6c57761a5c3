/// The colour parameter record: which primaries, transfer function and matrix a picture's numbers
/// are meant for.
///
/// It is the payload of a sample description's `colr` atom (ISO/IEC 14496-12, 12.1.5, and the
/// QuickTime file format), in native byte order unless told otherwise. The index 2 means not
/// specified; what the others mean CO_Color_Conversions.h and CO_Gamma.h tell.
#pragma once

#include "base_types.h"

inline constexpr OSType kQT_NclcType = "nclc"_4cc;
inline constexpr UInt16 kQT_NclcUnspecified = 2;

#pragma pack(push, 2)
struct QT_Nclc {
  OSType colorParamType;  ///< kQT_NclcType
  UInt16 primaries;
  UInt16 transferFunction;
  UInt16 matrix;
};
#pragma pack(pop)
static_assert(sizeof(QT_Nclc) == 10);

/// Swaps the bytes of each field, from big-endian to native order and back.
void QT_FlipNclc(QT_Nclc* nclc);
/// 1 for the indices that standards give: primaries 1, 5 and 6, transfer functions 1 and 7,
/// matrices 1, 6 and 7.
Boolean QT_StandardNclcPrimaries(UInt16 index);
Boolean QT_StandardNclcTransferFunction(UInt16 index);
Boolean QT_StandardNclcMatrix(UInt16 index);
/// 1 if all three of a record are standard.
Boolean QT_StandardNclc(const QT_Nclc* nclc);
/// 1 if all four fields are equal.
Boolean QT_EqualNclc(const QT_Nclc* a, const QT_Nclc* b);
