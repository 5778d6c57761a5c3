#include "CO_Edit.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <iterator>

#include "CO_Color_Conversions.h"
#include "CO_Gamma.h"
#include "CO_Sanitize.h"
#include "ORW_blas.h"
#include "edit_lines_private.h"

namespace {

using quillmere::color::CanEditBlocks;
using quillmere::color::EditBlocks;
using quillmere::color::kBlockPixels;
using quillmere::color::VectorCurve;
using quillmere::color::VectorCurveOf;

constexpr float kLeastPower = 0.01F;

bool IsStandard(const QT_Nclc& nclc) {
  return QT_StandardNclcTransferFunction(nclc.transferFunction) != 0;
}

/// Whether a power does anything.
bool IsPower(float gamma) {
  return std::abs(gamma - 1) >= kLeastPower;
}

void Decode(UInt16 transfer_function, float* rgb) {
  CO_ConvertGammaNormRGB_F32_indexed(rgb, transfer_function, rgb, kCO_TransferLinear);
}

void Encode(UInt16 transfer_function, float* rgb) {
  CO_ConvertGammaNormRGB_F32_indexed(rgb, kCO_TransferLinear, rgb, transfer_function);
}

/// A row vector times a matrix, in place.
void Apply(const float* matrix, float* triple) {
  const float in[] = {triple[0], triple[1], triple[2]};
  CB_MatrixTrVectorF(3, 3, matrix, in, triple);
}

/// Has `change(triple)` change each pixel from `first` to in front of `end`.
template <class Change>
void ForEachPixel(SInt32 first, SInt32 end, EditData* edit, Change change) {
  for (SInt32 i = first; i < end; ++i) {
    float triple[] = {edit->lineY[i], edit->lineCb[i], edit->lineCr[i]};
    change(triple);
    edit->lineY[i] = triple[0];
    edit->lineCb[i] = triple[1];
    edit->lineCr[i] = triple[2];
  }
}

/// What the RGB lines go through, settled once a line.
struct RGB_Steps {
  bool source_standard, destination_standard;
  bool source_power, destination_power;
  bool primaries;
  bool ratio;  ///< one power does the whole change
  bool gamma;

  explicit RGB_Steps(const EditData& edit)
      : source_standard(IsStandard(edit.sourceNclc)),
        destination_standard(IsStandard(edit.destNclc)),
        source_power(IsPower(edit.sourceGamma)),
        destination_power(IsPower(edit.destGamma)),
        primaries(CO_DoPrimaries(&edit) != 0),
        ratio(!primaries && !source_standard && !destination_standard &&
              !CO_EqualGamma(edit.sourceGamma, edit.destGamma)),
        gamma(!primaries && (source_standard != destination_standard ||
                             (source_standard && CO_DoTransferFunction(&edit)) || ratio)) {}

  void ToLinear(const EditData& edit, float* rgb) const {
    if (source_standard)
      Decode(edit.sourceNclc.transferFunction, rgb);
    else if (ratio)
      CO_SimpleGammaF32(rgb, edit.sourceGamma / edit.destGamma);
    else if (source_power)
      CO_SimpleGammaF32(rgb, edit.sourceGamma);
  }
  void FromLinear(const EditData& edit, float* rgb) const {
    if (destination_standard)
      Encode(edit.destNclc.transferFunction, rgb);
    else if (destination_power && !ratio)
      CO_SimpleGammaF32(rgb, 1 / edit.destGamma);
  }
};

constexpr std::size_t kMargin = 32;

/// Memory of `size` bytes with a margin in front, or null.
void* AllocateBehindMargin(std::size_t size) {
  auto* const block = static_cast<UInt8*>(std::calloc(1, size));
  return block != nullptr ? block + kMargin : nullptr;
}

template <class T>
void FreeBehindMargin(T** pointer) {
  if (*pointer == nullptr) return;
  std::free(reinterpret_cast<UInt8*>(*pointer) - kMargin);
  *pointer = nullptr;
}

void Free(void** block) {
  std::free(*block);
  *block = nullptr;
}

UInt32 Aligned(SInt32 width) {
  constexpr UInt32 kMultiple = 8;
  return (static_cast<UInt32>(std::max(width, 0)) + kMultiple - 1) / kMultiple * kMultiple;
}

UInt32 AllocatePlanes(SInt32 width, SInt32 height, float** y, float** cb, float** cr) {
  const UInt32 aligned = Aligned(width);
  const std::size_t size =
      std::size_t{aligned} * sizeof(float) * static_cast<std::size_t>(std::max(height, 0));
  *y = static_cast<float*>(AllocateBehindMargin(size + 2 * kMargin));
  *cb = static_cast<float*>(AllocateBehindMargin(size / 2 + 2 * kMargin));
  *cr = static_cast<float*>(AllocateBehindMargin(size / 2 + 2 * kMargin));
  return aligned;
}

void Destroy(ImageGammaFunction** function) {
  vImageDestroyGammaFunction(*function);
  *function = nullptr;
}

}  // namespace

UInt32 CO_AllocateEditBuffers(SInt32 width, EditData* edit) {
  edit->alignedWidth = Aligned(width);
  const std::size_t aligned = edit->alignedWidth;
  const std::size_t line = aligned * sizeof(float) + 128;
  edit->workBlock = std::calloc(1, aligned * 16 + 320);
  edit->workLine = std::calloc(1, line);
  for (float** pointer : {&edit->lineY, &edit->auxLineY, &edit->lineCb, &edit->auxLineCb,
                          &edit->lineCr, &edit->auxLineCr})
    *pointer = static_cast<float*>(AllocateBehindMargin(line));
  edit->extraLine = AllocateBehindMargin(line);
  return edit->alignedWidth;
}

void CO_AllocateScaleBuffers(SInt32 sourceWidth, SInt32 sourceHeight, SInt32 destinationWidth,
                             SInt32 destinationHeight, ScaleBuffers* scale) {
  scale->sourceAlignedWidth = AllocatePlanes(sourceWidth, sourceHeight, &scale->sourceY,
                                             &scale->sourceCb, &scale->sourceCr);
  scale->destAlignedWidth = AllocatePlanes(destinationWidth, destinationHeight, &scale->destY,
                                           &scale->destCb, &scale->destCr);
}

void CO_FreeEditBuffers(EditData* edit) {
  Free(&edit->workBlock);
  Free(&edit->workLine);
  for (float** pointer : {&edit->lineY, &edit->auxLineY, &edit->lineCb, &edit->auxLineCb,
                          &edit->lineCr, &edit->auxLineCr})
    FreeBehindMargin(pointer);
  FreeBehindMargin(&edit->extraLine);
  Free(&edit->extraBlock);
}

void CO_FreeScaleBuffers(ScaleBuffers* scale) {
  for (float** pointer : {&scale->sourceY, &scale->sourceCb, &scale->sourceCr, &scale->destY,
                          &scale->destCb, &scale->destCr})
    FreeBehindMargin(pointer);
  Free(&scale->scaleBlock);
}

void CO_FreeEditData(EditData* edit) {
  CO_FreeEditBuffers(edit);
  CO_FreeScaleBuffers(&edit->scale);
  Destroy(&edit->gammaFunction1);
  Destroy(&edit->gammaFunction2);
  Destroy(&edit->gammaFunction3);
  VI_DisposePolyData(&edit->polyData1);
  VI_DisposePolyData(&edit->polyData2);
}

Boolean CO_DoRange(const EditData* edit) {
  return edit->sourceRange != edit->destRange;
}

Boolean CO_DoTransferFunction(const EditData* edit) {
  return edit->sourceNclc.transferFunction != edit->destNclc.transferFunction;
}

Boolean CO_DoPrimaries(const EditData* edit) {
  const UInt16 source = edit->sourceNclc.primaries;
  const UInt16 destination = edit->destNclc.primaries;
  return source != destination && source != kQT_NclcUnspecified &&
         destination != kQT_NclcUnspecified;
}

Boolean CO_DoMatrix(const EditData* edit) {
  const auto is_other = [](UInt16 matrix) { return matrix == 1 || matrix == 7; };
  const UInt16 source = edit->sourceNclc.matrix;
  const UInt16 destination = edit->destNclc.matrix;
  return (source == kCO_MatrixBT601 && is_other(destination)) ||
         (destination == kCO_MatrixBT601 && is_other(source));
}

Boolean CO_DoNclc(const EditData* edit) {
  return CO_DoTransferFunction(edit) || CO_DoPrimaries(edit) || CO_DoMatrix(edit);
}

Boolean CO_DoGamma(const EditData* edit) {
  const bool source = IsStandard(edit->sourceNclc);
  if (source != IsStandard(edit->destNclc)) return 1;
  return source ? CO_DoTransferFunction(edit)
                : static_cast<Boolean>(!CO_EqualGamma(edit->sourceGamma, edit->destGamma));
}

void CO_YUVF_LinesEditGammaNclc(SInt32 count, EditData* edit) {
  const UInt16 from = edit->sourceNclc.transferFunction;
  const UInt16 to = edit->destNclc.transferFunction;
  const bool do_nclc = CO_DoNclc(edit) != 0;
  const bool are_powers = from == kCO_TransferUnspecified && to == kCO_TransferUnspecified;
  if (!do_nclc && (!are_powers || CO_EqualGamma(edit->sourceGamma, edit->destGamma))) return;
  const bool source_power = from == kCO_TransferUnspecified && IsPower(edit->sourceGamma);
  const bool destination_power = to == kCO_TransferUnspecified && IsPower(edit->destGamma);
  float luma[3];
  CO_IndexToMatrixF(edit->sourceNclc.matrix, luma);
  const auto change = [&](float* triple) {
    CO_SanitizeNormYCbCrF32(triple, luma);
    Apply(edit->yuvToRgb, triple);
    if (source_power) CO_SimpleGammaF32(triple, edit->sourceGamma);
    if (do_nclc) {
      Decode(from, triple);
      Apply(edit->rgbToRgb, triple);
      Encode(to, triple);
    }
    if (destination_power) CO_SimpleGammaF32(triple, 1 / edit->destGamma);
    Apply(edit->rgbToYuv, triple);
  };
  const VectorCurve* const decoding = do_nclc ? VectorCurveOf(from) : nullptr;
  const VectorCurve* const encoding = do_nclc ? VectorCurveOf(to) : nullptr;
  SInt32 done = 0;
  if (decoding != nullptr && encoding != nullptr && CanEditBlocks(*decoding, *edit)) {
    const SInt32 blocks = std::max(count, 0) / kBlockPixels;
    EditBlocks(blocks, *decoding, *encoding, luma, edit);
    done = blocks * kBlockPixels;
  }
  ForEachPixel(done, count, edit, change);
}

void CO_RGBF_LinesEditGammaNclc(SInt32 count, EditData* edit) {
  const RGB_Steps steps(*edit);
  if (!steps.primaries && !steps.gamma) return;
  const bool sanitise = QT_StandardNclcMatrix(edit->sourceNclc.matrix) != 0;
  float luma[3];
  CO_IndexToMatrixF(edit->sourceNclc.matrix, luma);
  ForEachPixel(0, count, edit, [&](float* rgb) {
    if (sanitise) CO_SanitizeNormRGB_F32(rgb, luma);
    steps.ToLinear(*edit, rgb);
    if (steps.primaries) Apply(edit->rgbToRgb, rgb);
    steps.FromLinear(*edit, rgb);
  });
}

void CO_MakeDefaultColorSett(float* settings) {
  constexpr float kDefaults[] = {1, 0, 1, 1};
  std::copy(std::begin(kDefaults), std::end(kDefaults), settings);
}
