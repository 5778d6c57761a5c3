#include "QT_Ide.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <numeric>

#include "CO_Gamma.h"
#include "GL_Strings_Reports.h"
#include "QT_Codec_Families.h"

namespace {

constexpr UInt8 kProgressive = 1;
constexpr UInt8 kInterlaced = 2;
constexpr UInt8 kNotInterlaced = 2;  ///< for which field is first
constexpr float kGammaVideo = 2.2F;
constexpr float kGammaDisplay = 1.8F;

constexpr UInt32 Swapped(UInt32 value) {
  return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}
constexpr SInt32 Swapped(SInt32 value) {
  return std::bit_cast<SInt32>(Swapped(std::bit_cast<UInt32>(value)));
}

bool IsTopFirst(UInt8 detail) {
  return detail == 1 || detail == 9;
}

/// Whether two fractions with unsigned denominators are the same once they are reduced.
bool AreSame(SInt64 numerator_a, UInt32 denominator_a, SInt64 numerator_b, UInt32 denominator_b) {
  const auto reduced = [](SInt64 numerator, UInt32 denominator) {
    const SInt64 divisor = std::gcd(numerator, SInt64{denominator});
    return divisor == 0 ? std::pair<SInt64, SInt64>{0, 0}
                        : std::pair<SInt64, SInt64>{numerator / divisor, denominator / divisor};
  };
  return reduced(numerator_a, denominator_a) == reduced(numerator_b, denominator_b);
}

template <class Numerator>
float Quotient(Numerator numerator, UInt32 denominator) {
  return static_cast<float>(numerator) / static_cast<float>(denominator);
}

SInt32 SquareWidth(SInt32 width, const QT_Pasp& pasp) {
  constexpr float kRounding = 0.49F;
  const float wide = static_cast<float>(width) * static_cast<float>(pasp.hSpacing) /
                     static_cast<float>(pasp.vSpacing);
  constexpr float kMost = 2147483520.0F;
  return wide + kRounding < kMost ? static_cast<SInt32>(wide + kRounding) : 2147483647;
}

bool IsNtscLike(SInt32 height) {
  return height == 240 || (height >= 480 && height <= 486);
}
bool IsPalLike(SInt32 height) {
  return height == 288 || height == 576;
}

/// The transfer function of a gamma that tells no standard.
UInt16 TransferOfGamma(float gamma) {
  return CO_EqualGamma(gamma, kGammaDisplay) ? UInt16{kCO_TransferPower1_8}
                                             : UInt16{kCO_TransferUnspecified};
}

void Set(QT_Nclc* nclc, UInt16 primaries, UInt16 transfer_function, UInt16 matrix) {
  *nclc = {kQT_NclcType, primaries, transfer_function, matrix};
}

void GuessRGB(SInt32 height, float gamma, QT_Nclc* nclc) {
  const bool is_video = CO_EqualGamma(gamma, kGammaVideo) != 0;
  const UInt16 transfer = is_video ? UInt16{kCO_TransferBT709} : TransferOfGamma(gamma);
  if (IsNtscLike(height))
    Set(nclc, 6, transfer, 6);
  else if (IsPalLike(height))
    Set(nclc, 5, transfer, 6);
  else if (is_video)
    Set(nclc, 6, kCO_TransferUnspecified, 6);
  else
    Set(nclc, 4, transfer, 6);
}

const char* WordOfFields(UInt8 fields) {
  return fields == kProgressive ? "progressive" : "interlaced";
}
const char* WordOfDetail(UInt8 detail) {
  if (IsTopFirst(detail)) return "top field first";
  return detail == 0 ? "n.a." : "bottom field first";
}

// The formats of the texts.
constexpr char kFielText[] = "%s: fields %u, detail %u";
constexpr char kFielExtText[] = "%s: fields %u (%s), detail %u (%s)\n";
constexpr char kPaspText[] = "%s: hSp,vSp = %u,%u";
constexpr char kClapText[] = "%s: clean w,h = %u/%u,%u/%u, offset h,v = %d/%u,%d/%u";
constexpr char kNclcText[] = "%s: primaries %u, transferFunction %u, matrix %u";

}  // namespace

void QT_FlipPasp(QT_Pasp* pasp) {
  *pasp = {Swapped(pasp->hSpacing), Swapped(pasp->vSpacing)};
}

void QT_FlipClap(QT_Clap* clap) {
  *clap = {Swapped(clap->cleanApertureWidthN),
           Swapped(clap->cleanApertureWidthD),
           Swapped(clap->cleanApertureHeightN),
           Swapped(clap->cleanApertureHeightD),
           Swapped(clap->horizOffN),
           Swapped(clap->horizOffD),
           Swapped(clap->vertOffN),
           Swapped(clap->vertOffD)};
}

Boolean QT_ValidPasp(const QT_Pasp* pasp) {
  return pasp->hSpacing != 0 && pasp->vSpacing != 0;
}

void QT_SetFieldDetail(OSType codecType, Boolean topFirst, QT_Fiel* fiel) {
  if (codecType == "mjpa"_4cc || codecType == "mjpb"_4cc)
    fiel->detail = topFirst ? 1 : 6;
  else
    fiel->detail = topFirst ? 9 : 14;
}

void QT_InterlaceToFiel(OSType codecType, UInt8 interlaceState, Boolean topFirst, QT_Fiel* fiel) {
  *fiel = {0, 0};
  if (interlaceState == 0) fiel->fields = kProgressive;
  if (interlaceState != 1) return;
  fiel->fields = kInterlaced;
  QT_SetFieldDetail(codecType, topFirst, fiel);
}

void QT_GetInterlaceFromFiel(const QT_Fiel* fiel, Boolean* interlaced, UInt8* topFirst) {
  *interlaced = fiel->fields == kInterlaced;
  *topFirst = *interlaced ? static_cast<UInt8>(IsTopFirst(fiel->detail)) : kNotInterlaced;
}

Boolean QT_EqualFiel(const QT_Fiel* a, const QT_Fiel* b) {
  return a->fields == b->fields && a->detail == b->detail;
}

Boolean QT_EqualPasp(const QT_Pasp* a, const QT_Pasp* b) {
  if (QT_ValidPasp(a) && QT_ValidPasp(b))
    return AreSame(a->hSpacing, a->vSpacing, b->hSpacing, b->vSpacing);
  return a->hSpacing == b->hSpacing && a->vSpacing == b->vSpacing;
}

Boolean QT_EqualPasp2(SInt32 width, const QT_Pasp* a, const QT_Pasp* b) {
  return SquareWidth(width, *a) == SquareWidth(width, *b);
}

Boolean QT_EqualClap(const QT_Clap* a, const QT_Clap* b) {
  return AreSame(a->cleanApertureWidthN, a->cleanApertureWidthD, b->cleanApertureWidthN,
                 b->cleanApertureWidthD) &&
         AreSame(a->cleanApertureHeightN, a->cleanApertureHeightD, b->cleanApertureHeightN,
                 b->cleanApertureHeightD) &&
         AreSame(a->horizOffN, a->horizOffD, b->horizOffN, b->horizOffD) &&
         AreSame(a->vertOffN, a->vertOffD, b->vertOffN, b->vertOffD);
}

Boolean QT_EqualClap2(const QT_Clap* a, const QT_Clap* b) {
  constexpr float kDistance = 0.1F;
  const auto near = [](float x, float y) { return std::abs(x - y) < kDistance; };
  return near(Quotient(a->cleanApertureWidthN, a->cleanApertureWidthD),
              Quotient(b->cleanApertureWidthN, b->cleanApertureWidthD)) &&
         near(Quotient(a->cleanApertureHeightN, a->cleanApertureHeightD),
              Quotient(b->cleanApertureHeightN, b->cleanApertureHeightD)) &&
         near(Quotient(a->horizOffN, a->horizOffD), Quotient(b->horizOffN, b->horizOffD)) &&
         near(Quotient(a->vertOffN, a->vertOffD), Quotient(b->vertOffN, b->vertOffD));
}

Boolean QT_GammaEqualsMacGamma(Fixed gamma) {
  constexpr double kLow = 1.799;
  constexpr double kHigh = 1.801;
  const double value = gamma / 65536.0;
  return gamma == 0 || (value > kLow && value < kHigh);
}

void QT_PrintFielWithName(const char* label, const QT_Fiel* fiel) {
  std::printf(kFielText, label, UInt32{fiel->fields}, UInt32{fiel->detail});
  std::printf("\n");
}

void QT_SPrintFielWithName(char* buffer, const char* label, const QT_Fiel* fiel) {
  std::sprintf(buffer, kFielText, label, UInt32{fiel->fields}, UInt32{fiel->detail});
}

void QT_PrintFielWithNameExt(const char* label, const QT_Fiel* fiel) {
  std::printf(kFielExtText, label, UInt32{fiel->fields}, WordOfFields(fiel->fields),
              UInt32{fiel->detail}, WordOfDetail(fiel->detail));
}

void QT_SPrintFielWithNameExt(char* buffer, const char* label, const QT_Fiel* fiel) {
  std::sprintf(buffer, kFielExtText, label, UInt32{fiel->fields}, WordOfFields(fiel->fields),
               UInt32{fiel->detail}, WordOfDetail(fiel->detail));
}

void QT_PrintPaspWithName(const char* label, const QT_Pasp* pasp) {
  std::printf(kPaspText, label, pasp->hSpacing, pasp->vSpacing);
  std::printf("\n");
}

void QT_SPrintPaspWithName(char* buffer, const char* label, const QT_Pasp* pasp) {
  std::sprintf(buffer, kPaspText, label, pasp->hSpacing, pasp->vSpacing);
}

void QT_PrintClapWithName(const char* label, const QT_Clap* clap) {
  char text[1024];
  std::snprintf(text, sizeof text, kClapText, label, clap->cleanApertureWidthN,
                clap->cleanApertureWidthD, clap->cleanApertureHeightN, clap->cleanApertureHeightD,
                clap->horizOffN, clap->horizOffD, clap->vertOffN, clap->vertOffD);
  std::printf("%s\n", text);
}

void QT_SPrintClapWithName(char* buffer, const char* label, const QT_Clap* clap) {
  std::sprintf(buffer, kClapText, label, clap->cleanApertureWidthN, clap->cleanApertureWidthD,
               clap->cleanApertureHeightN, clap->cleanApertureHeightD, clap->horizOffN,
               clap->horizOffD, clap->vertOffN, clap->vertOffD);
}

void QT_PrintNclcWithName(const char* label, const QT_Nclc* nclc) {
  std::printf(kNclcText, label, UInt32{nclc->primaries}, UInt32{nclc->transferFunction},
              UInt32{nclc->matrix});
}

void QT_SPrintNclcWithName(char* buffer, const char* label, const QT_Nclc* nclc) {
  std::sprintf(buffer, kNclcText, label, UInt32{nclc->primaries}, UInt32{nclc->transferFunction},
               UInt32{nclc->matrix});
}

void GL_AddPaspFieldDescrToTextPtr(char* buffer, SInt32* length, const char* label,
                                   const QT_Pasp* pasp) {
  char text[64];
  std::snprintf(text, sizeof text, ": horiz %u, vert %u\n", pasp->hSpacing, pasp->vSpacing);
  GL_AddCStringToTextPtr(buffer, length, label);
  GL_AddCStringToTextPtr(buffer, length, text);
}

void QT_CreateDefaultNclc(SInt32 height, double frameRate, QT_Nclc* nclc) {
  constexpr double kPalRate = 25;
  constexpr double kNtscRate = 29.97;
  const bool is_pal = std::abs(frameRate - kPalRate) < std::abs(frameRate - kNtscRate);
  if (height >= 720)
    Set(nclc, 1, kCO_TransferBT709, 1);
  else if (height >= 480 && height <= 486)
    Set(nclc, 6, kCO_TransferBT709, 6);
  else
    Set(nclc, height == 576 || is_pal ? 5 : 6, kCO_TransferBT709, 6);
}

void QT_GuessNclc(OSType codecType, SInt32 height, float gamma, QT_Nclc* nclc) {
  if (QT_IsRGB_CodecType(codecType)) return GuessRGB(height, gamma, nclc);
  if (!CO_EqualGamma(gamma, kGammaVideo))
    Set(nclc, 4, TransferOfGamma(gamma), 6);
  else if (height >= 720)
    Set(nclc, 1, kCO_TransferBT709, 1);
  else
    Set(nclc, IsNtscLike(height) ? 6 : 5, kCO_TransferBT709, 6);
}

void QT_ConformInNclc(QT_Nclc* nclc, SInt32 height, float gamma) {
  const bool is_display = CO_EqualGamma(gamma, kGammaDisplay) != 0;
  const bool is_hd = height == 720 || height == 1080;
  if (nclc->primaries == kQT_NclcUnspecified) {
    const UInt16 by_height = is_hd ? 1 : IsPalLike(height) ? 5 : 6;
    const bool is_of_display = is_display || nclc->transferFunction == kCO_TransferPower1_8;
    nclc->primaries = is_of_display ? UInt16{4} : by_height;
  }
  if (nclc->transferFunction == kCO_TransferUnspecified) {
    const bool is_standard = is_hd || IsPalLike(height) || IsNtscLike(height);
    if (CO_EqualGamma(gamma, kGammaVideo))
      nclc->transferFunction = is_standard ? kCO_TransferBT709 : kCO_TransferPower2_2;
    else if (is_display)
      nclc->transferFunction = kCO_TransferPower1_8;
  }
  if (nclc->matrix == kQT_NclcUnspecified) nclc->matrix = is_hd ? 1 : 6;
}
