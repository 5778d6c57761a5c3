// Minimisers, of ORW_NR_classic.h.

#include "NR_Util.h"
#include "ORW_NR_classic.h"
#include "minimisers_private.h"
#include "work_space_private.h"

namespace {

using namespace quillmere::numerics;

/// The line minimisation under way.
SInt32 NR_ncom = 0;
float* NR_pcom = nullptr;
float* NR_xicom = nullptr;
NR_PlainVectorFunction NR_func1 = nullptr;

}  // namespace

void NR_mnbrak(float* a, float* b, float* c, float* fa, float* fb, float* fc,
               NR_PlainFunction function) {
  FindBracket(function, -kInfinity, kInfinity, a, b, c, fa, fb, fc);
}

float NR_brent(float a, float b, float c, NR_PlainFunction function, float tolerance, float* x) {
  return FindMinimum(function, a, b, c, tolerance, x);
}

float NR_golden(float a, float b, float c, NR_PlainFunction function, float tolerance, float* x) {
  constexpr float kLarger = 0.61803399F;
  constexpr float kSmaller = 0.38196601F;
  float low = a;
  float high = c;
  const bool upper = std::fabs(c - b) > std::fabs(b - a);
  float x1 = upper ? b : b - kSmaller * (b - a);
  float x2 = upper ? b + kSmaller * (c - b) : b;
  float f1 = function(x1);
  float f2 = function(x2);
  while (std::fabs(high - low) > tolerance * (std::fabs(x1) + std::fabs(x2))) {
    if (f2 < f1) {
      low = std::exchange(x1, x2);
      x2 = kLarger * x2 + kSmaller * high;
      // Points that no longer differ have come as near as they can.
      if (x2 == x1) break;
      f1 = std::exchange(f2, function(x2));
    } else {
      high = std::exchange(x2, x1);
      x1 = kLarger * x1 + kSmaller * low;
      if (x1 == x2) break;
      f2 = std::exchange(f1, function(x1));
    }
  }
  *x = f1 < f2 ? x1 : x2;
  return std::min(f1, f2);
}

float NR_f1dim(float t) {
  const WorkVector at(1, NR_ncom);
  for (SInt32 j = 1; j <= NR_ncom; ++j)
    at[j] = NR_pcom[j] + t * NR_xicom[j];
  return NR_func1(at.get());
}

void NR_linmin(float* point, float* direction, SInt32 n, float* value,
               NR_PlainVectorFunction function) {
  const WorkVector start(1, n);
  const WorkVector along(1, n);
  std::copy_n(point + 1, n, start.get() + 1);
  std::copy_n(direction + 1, n, along.get() + 1);
  NR_ncom = n;
  NR_pcom = start.get();
  NR_xicom = along.get();
  NR_func1 = function;
  float a = 0;
  float b = 1;
  float c = 0;
  float fa = 0;
  float fb = 0;
  float fc = 0;
  float t = 0;
  NR_mnbrak(&a, &b, &c, &fa, &fb, &fc, NR_f1dim);
  *value = NR_brent(a, b, c, NR_f1dim, kLineTolerance, &t);
  NR_pcom = NR_xicom = nullptr;
  MoveAlong(t, point, direction, n);
}

void NR_powell(float* point, float* const* directions, SInt32 n, float tolerance,
               SInt32* iterations, float* value, NR_PlainVectorFunction function) {
  if (n < 1) return;
  const WorkVector start(1, n);
  const WorkVector beyond(1, n);
  const WorkVector direction(1, n);
  const bool converged = MinimiseByDirections(
      point, directions, n, tolerance, iterations, value, function,
      [=](float* along, float* least) { NR_linmin(point, along, n, least, function); },
      {start.get(), beyond.get(), direction.get()});
  if (!converged) NR_nrerror("powell exceeding maximum iterations.");
}
