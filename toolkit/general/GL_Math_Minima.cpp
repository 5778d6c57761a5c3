// Minima of sampled curves, of GL_Math_Curves.h.

#include <algorithm>
#include <cmath>
#include <limits>

#include "GL_Math_Curves.h"
#include "NR_Parabolas.h"

namespace {

constexpr SInt32 kFewestSamples = 4;
constexpr SInt32 kMostSamples = 16;

void Store(float x, float y, float* position, float* value) {
  if (position != nullptr) *position = x;
  if (value != nullptr) *value = y;
}

/// Where the seven samples around a valley with two lowest points near sample k start; -1 if the
/// curve does not rise on the far side or ends before.
SInt32 StartOfWideValley(SInt32 count, const float* y, SInt32 k) {
  if (y[k - 2] > y[k - 1]) return k + 4 < count - 1 && y[k + 4] > y[k + 3] ? k - 2 : -1;
  if (y[k + 2] > y[k + 1]) return k - 4 >= 0 && y[k - 4] > y[k - 3] ? k - 4 : -1;
  return -1;
}

/// True if none of the inner three of seven samples exceeds the ones around them.
bool IsValley(const float* p) {
  return std::max({p[2], p[3], p[4]}) <= std::min(p[1], p[5]);
}

}  // namespace

float GL_GetMinFromArrayF(float first_x, float step, const float* samples, SInt32 count, float* x) {
  float least = std::numeric_limits<float>::infinity();
  if (count < kFewestSamples || count > kMostSamples) return least;
  for (SInt32 i = 0; i + 4 <= count; ++i) {
    float position = 0;
    float value = 0;
    if (NR_GetMinimumFrom4(samples + i, &position, &value) != noErr) continue;
    if (!(value < least && position > 0.9F && position < 2.1F)) continue;
    least = value;
    if (x != nullptr) *x = (position + static_cast<float>(i)) * step + first_x;
  }
  return least;
}

Boolean GL_RefineMinFromArrayF(const float* samples, float* position, float* value) {
  const float* const y = samples;
  Store(2.0F, y[2], position, value);
  if (!(y[0] > y[1] && y[4] > y[3])) return 0;
  const float left = std::fabs(y[1] - y[2]);
  const float across = std::fabs(y[1] - y[3]);
  const float right = std::fabs(y[3] - y[2]);
  float refined = 0;
  float least = 0;
  SInt32 status = noErr;
  if (left > across && right > across) {
    status = NR_GetMinimumFrom5(y, &refined, &least);
  } else if (left > across) {
    status = NR_GetMinimumFrom4(y + 1, &refined, &least);
    refined += 1;
  } else {
    status = NR_GetMinimumFrom4(y, &refined, &least);
  }
  if (status == noErr) Store(refined, least, position, value);
  return 1;
}

Boolean GL_GetArrayMinimumF_Ext(SInt32 count, const float* samples, float* position, float* value) {
  if (count <= 0) return 0;
  const auto k = static_cast<SInt32>(std::min_element(samples, samples + count) - samples);
  Store(static_cast<float>(k), samples[k], position, value);
  if (k < 2 || k > count - 3) return 0;
  float refined = 0;
  float least = 0;
  SInt32 start = k - 2;
  if (!GL_RefineMinFromArrayF(samples + start, &refined, &least)) {
    start = StartOfWideValley(count, samples, k);
    if (start < 0 || !IsValley(samples + start)) return 0;
    NR_GetMinimumFrom7(samples + start, &refined, &least);
  }
  Store(static_cast<float>(start) + refined, least, position, value);
  return 1;
}
