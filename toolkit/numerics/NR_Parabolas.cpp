#include "NR_Parabolas.h"

#include <cmath>

#include "NR_Errors.h"

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

template <std::size_t size>
Parabola Fit(const float* samples) {
  constexpr double middle = (size - 1) / 2.0;
  double squares = 0;
  double fourth_powers = 0;
  double sum = 0;
  double moment = 0;
  double second_moment = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const double t = static_cast<double>(i) - middle;
    const double y = static_cast<double>(samples[i]);
    squares += t * t;
    fourth_powers += t * t * t * t;
    sum += y;
    moment += t * y;
    second_moment += t * t * y;
  }
  const double quadratic =
      (size * second_moment - squares * sum) / (size * fourth_powers - squares * squares);
  const double slope = moment / squares;
  const double height = (sum - quadratic * squares) / size;
  return {static_cast<float>(height - slope * middle + quadratic * middle * middle),
          static_cast<float>(slope - 2 * quadratic * middle), static_cast<float>(quadratic)};
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
