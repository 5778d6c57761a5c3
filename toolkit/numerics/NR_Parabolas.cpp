#include "NR_Parabolas.h"

#include <cmath>
#include <limits>

#include "NR_Errors.h"
#include "ORW_NR_simple.h"
#include "decomposition_private.h"

namespace {

constexpr float kLeastQuadratic = 0.001F;
constexpr float kLastPosition = 4.0F;

struct Parabola {
  float constant;
  float linear;
  float quadratic;

  float Extremum() const { return linear / (quadratic * -2); }
  float At(float x) const { return linear * x + constant + quadratic * x * x; }
};

template <SInt32 size>
Parabola Fit(const float* samples) {
  constexpr SInt32 kStride = 4;
  float matrix[(size + 1) * kStride];
  float right[kStride * kStride];
  float w[kStride];
  float coefficients[kStride];
  for (SInt32 i = 0; i < size; ++i) {
    const auto x = static_cast<float>(i);
    float* row = matrix + (i + 1) * kStride;
    row[1] = 1;
    row[2] = x;
    row[3] = x * x;
  }
  NR_svdcmpSPL4(matrix, size, 3, w, right);
  quillmere::numerics::Truncate(w + 1, 3);
  // Vectors count from 1.
  NR_svbksbSPL4(matrix, w, right, size, 3, samples - 1, coefficients);
  return {coefficients[1], coefficients[2], coefficients[3]};
}

SInt32 FitByPowers(const float* samples, SInt32 size, float* coefficients) {
  float ratio = 0;
  return NR_FitPolyLS(samples, size, coefficients, 3, &ratio);
}

void Store(const Parabola& parabola, float* constant, float* linear, float* quadratic) {
  *constant = parabola.constant;
  *linear = parabola.linear;
  *quadratic = parabola.quadratic;
}

void StoreExtremum(const Parabola& parabola, float x, float* position, float* value) {
  if (position != nullptr) *position = x;
  if (value != nullptr) *value = parabola.At(x);
}

SInt32 LimitedExtremum(const Parabola& parabola, float* position, float* value) {
  SInt32 status = noErr;
  float x = 0;
  if (std::fabs(parabola.quadratic) < kLeastQuadratic) {
    status = NR_NoClearExtrErr;
    x = parabola.linear > 0 ? 0 : kLastPosition;
  } else {
    x = parabola.Extremum();
    if (x < 0 || x > kLastPosition) {
      status = NR_NoClearExtrErr;
      x = x < 0 ? 0 : kLastPosition;
    }
  }
  StoreExtremum(parabola, x, position, value);
  return status;
}

}  // namespace

void NR_FitPieceOfParabolaTo4(const float* samples, float* constant, float* linear,
                              float* quadratic) {
  Store(Fit<4>(samples), constant, linear, quadratic);
}

void NR_FitPieceOfParabolaTo5(const float* samples, float* constant, float* linear,
                              float* quadratic) {
  Store(Fit<5>(samples), constant, linear, quadratic);
}

void NR_FitPieceOfParabolaTo7(const float* samples, float* constant, float* linear,
                              float* quadratic) {
  Store(Fit<7>(samples), constant, linear, quadratic);
}

SInt32 NR_FitPieceOfParabolaTo4_new(const float* samples, float* coefficients) {
  return FitByPowers(samples, 4, coefficients);
}

SInt32 NR_FitPieceOfParabolaTo5_new(const float* samples, float* coefficients) {
  return FitByPowers(samples, 5, coefficients);
}

SInt32 NR_FitPieceOfParabolaTo7_new(const float* samples, float* coefficients) {
  return FitByPowers(samples, 7, coefficients);
}

float NR_GetCenterValueOf5(const float* samples) {
  const Parabola parabola = Fit<5>(samples);
  return parabola.constant + 2 * parabola.linear + 4 * parabola.quadratic;
}

SInt32 NR_GetMinimumFrom4(const float* samples, float* position, float* value) {
  return LimitedExtremum(Fit<4>(samples), position, value);
}

SInt32 NR_GetMinimumFrom5(const float* samples, float* position, float* value) {
  return LimitedExtremum(Fit<5>(samples), position, value);
}

void NR_GetMinimumFrom7(const float* samples, float* position, float* value) {
  const Parabola parabola = Fit<7>(samples);
  StoreExtremum(parabola, parabola.Extremum(), position, value);
}

SInt32 NR_GetArrayMax(const float* samples, SInt32 count, float* value, float* position) {
  float peak = -std::numeric_limits<float>::infinity();
  SInt32 at = -1;
  for (SInt32 i = 0; i < count; ++i) {
    if (samples[i] > peak) {
      peak = samples[i];
      at = i;
    }
  }
  if (at <= 0 || at == count - 1) return NR_NoClearExtrErr;
  const float left = samples[at - 1];
  const float right = samples[at + 1];
  const float above_left = peak - left;
  const float above_right = peak - right;
  const float slope = left - right;
  float c[3];
  SInt32 start = at - 1;
  if (above_left > slope && above_right > slope) {
    NR_polcoeSPL(samples + start, 2, c);
  } else if (at >= 2 && slope > above_left && left - samples[at - 2] > above_left) {
    start = at - 2;
    const SInt32 status = NR_FitPieceOfParabolaTo4_new(samples + start, c);
    if (status != noErr) return status;
  } else {
    return NR_NoClearExtrErr;
  }
  const auto x = static_cast<float>(-0.5 * static_cast<double>(c[1]) / static_cast<double>(c[2]));
  *value = c[1] * x + c[0] + c[2] * x * x;
  *position = static_cast<float>(start) + x;
  return noErr;
}
