#include "ORW_NR_adapted.h"

#include <cfloat>

#include "minimisers_private.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

constexpr SInt32 kMostVariables = 8;

bool IsLimit(float x) {
  return x >= -FLT_MAX && x <= FLT_MAX;
}

template <class Objective>
void FindBracketWithin(Objective f, float low, float high, float* a, float* b, float* c, float* fa,
                       float* fb, float* fc) {
  const float least = IsLimit(low) ? low : -kInfinity;
  const float most = IsLimit(high) ? high : kInfinity;
  StartWithinLimits(least, most, a, b);
  FindBracket(f, least, most, a, b, c, fa, fb, fc);
}

}  // namespace

void NR_Mnbrak(float low, float high, float* a, float* b, float* c, float* fa, float* fb, float* fc,
               NR_Function function, void* context) {
  FindBracketWithin([=](float x) { return function(x, context); }, low, high, a, b, c, fa, fb, fc);
}

void NR_MnbrakMD(float low, float high, float* a, float* b, float* c, float* fa, float* fb,
                 float* fc, NR_LineFunction line, NR_VectorFunction function, void* context,
                 SInt32 n, const float* point, const float* direction) {
  FindBracketWithin([=](float t) { return line(t, function, context, n, point, direction); }, low,
                    high, a, b, c, fa, fb, fc);
}

float NR_Brent(float a, float b, float c, NR_Function function, void* context, float tolerance,
               float* x) {
  return FindMinimum([=](float at) { return function(at, context); }, a, b, c, tolerance, x);
}

float NR_BrentMD(float a, float b, float c, float tolerance, float* x, NR_LineFunction line,
                 NR_VectorFunction function, void* context, SInt32 n, const float* point,
                 const float* direction) {
  return FindMinimum([=](float t) { return line(t, function, context, n, point, direction); }, a, b,
                     c, tolerance, x);
}

float NR_F1dim(float t, NR_VectorFunction function, void* context, SInt32 n, const float* point,
               const float* direction) {
  const WorkVector at(1, n);
  for (SInt32 j = 1; j <= n; ++j)
    at[j] = point[j] + t * direction[j];
  return function(at.get(), context);
}

void NR_Linmin(float* point, const float* lows, const float* highs, float* direction, SInt32 n,
               float* value, NR_VectorFunction function, void* context) {
  float least = -kInfinity;
  float most = kInfinity;
  for (SInt32 j = 1; j <= n; ++j) {
    const float d = direction[j];
    if (d == 0) continue;
    const float back = d > 0 ? lows[j] : highs[j];
    const float ahead = d > 0 ? highs[j] : lows[j];
    if (IsLimit(back)) least = std::max(least, (back - point[j]) / d);
    if (IsLimit(ahead)) most = std::min(most, (ahead - point[j]) / d);
  }
  float a = 0;
  float b = 1;
  float c = 0;
  float fa = 0;
  float fb = 0;
  float fc = 0;
  float t = 0;
  NR_MnbrakMD(least, most, &a, &b, &c, &fa, &fb, &fc, NR_F1dim, function, context, n, point,
              direction);
  *value =
      NR_BrentMD(a, b, c, kLineTolerance, &t, NR_F1dim, function, context, n, point, direction);
  MoveAlong(t, point, direction, n);
}

void NR_Powell(float* point, const float* lows, const float* highs, float* const* directions,
               SInt32 n, float tolerance, SInt32* iterations, float* value,
               NR_VectorFunction function, void* context) {
  if (n < 1 || n > kMostVariables) return;
  float start[kMostVariables + 1];
  float beyond[kMostVariables + 1];
  float direction[kMostVariables + 1];
  MinimiseByDirections(
      point, directions, n, tolerance, iterations, value,
      [=](const float* at) { return function(at, context); },
      [=](float* along, float* least) {
        NR_Linmin(point, lows, highs, along, n, least, function, context);
      },
      {start, beyond, direction});
}
