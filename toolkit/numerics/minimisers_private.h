/// The search for a minimum in one and several variables, for every kind of objective.
///
/// An objective is anything that can be called with a float and returns one; Powell's method also
/// takes one of a vector. Limits of infinity are none.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "base_types.h"

namespace quillmere::numerics {

inline constexpr float kGoldenStep = 1.618034F;
inline constexpr float kGoldenSection = 0.381966F;
inline constexpr float kLargestStep = 100;
inline constexpr float kLeastDenominator = 1e-20F;
inline constexpr float kAbsoluteTolerance = 1e-10F;
inline constexpr float kLineTolerance = 0.0002F;
inline constexpr float kConvergenceFloor = 1e-25F;
inline constexpr int kMostSteps = 100;
inline constexpr SInt32 kMostIterations = 200;
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct Bracket {
  float a, b, c;
  float fa, fb, fc;
};

/// A point below `low` becomes that, anything else the lesser of itself and `high`.
inline float Held(float x, float low, float high) {
  return x < low ? low : std::min(x, high);
}

/// Walks downhill from a to b and on until three points enclose a minimum, or two that are equal
/// stand at a limit, by golden steps and parabolas. Only what a step may lead beyond is held to the
/// limits.
template <class Objective>
void FindBracket(Objective f, float low, float high, Bracket* p) {
  const auto step = [&] { return Held(p->c + kGoldenStep * (p->c - p->b), low, high); };
  p->fa = f(p->a);
  p->fb = f(p->b);
  if (p->fb > p->fa) {
    std::swap(p->a, p->b);
    std::swap(p->fa, p->fb);
  }
  p->c = Held(p->b + kGoldenStep * (p->b - p->a), low, high);
  p->fc = f(p->c);
  while (p->fb > p->fc) {
    const float r = (p->b - p->a) * (p->fb - p->fc);
    const float q = (p->b - p->c) * (p->fb - p->fa);
    const float denominator = std::copysign(std::max(std::fabs(q - r), kLeastDenominator), q - r);
    float u = p->b - ((p->b - p->c) * q - (p->b - p->a) * r) / (2 * denominator);
    const float far = Held(p->b + kLargestStep * (p->c - p->b), low, high);
    float fu = 0;
    if ((p->b - u) * (u - p->c) > 0) {
      fu = f(u);
      if (fu < p->fc) {
        *p = {p->b, u, p->c, p->fb, fu, p->fc};
        return;
      }
      if (fu > p->fb) {
        p->c = u;
        p->fc = fu;
        return;
      }
      u = step();
      fu = f(u);
    } else if ((p->c - u) * (u - far) > 0) {
      fu = f(u);
      if (fu < p->fc) {
        p->b = std::exchange(p->c, u);
        p->fb = std::exchange(p->fc, fu);
        u = step();
        fu = f(u);
      }
    } else {
      u = (u - far) * (far - p->c) >= 0 ? far : step();
      fu = f(u);
    }
    *p = {p->b, p->c, u, p->fb, p->fc, fu};
  }
}

/// The same from a and b, into the places of the caller.
template <class Objective>
void FindBracket(Objective f, float low, float high, float* a, float* b, float* c, float* fa,
                 float* fb, float* fc) {
  Bracket bracket{*a, *b, 0, 0, 0, 0};
  FindBracket(f, low, high, &bracket);
  *a = bracket.a;
  *b = bracket.b;
  *c = bracket.c;
  *fa = bracket.fa;
  *fb = bracket.fb;
  *fc = bracket.fc;
}

/// Brent's parabolas and golden sections between a and c, from b; the value there, and the place in
/// `place`. The best point so far after kMostSteps.
template <class Objective>
float FindMinimum(Objective f, float a, float b, float c, float tolerance, float* place) {
  float low = std::min(a, c);
  float high = std::max(a, c);
  // The least point, the next, and the one before that.
  float x = b;
  float w = b;
  float v = b;
  float fx = f(x);
  float fw = fx;
  float fv = fx;
  float step = 0;
  float step_before = 0;
  for (int i = 0; i < kMostSteps; ++i) {
    const float middle = 0.5F * (low + high);
    const float tol = tolerance * std::fabs(x) + kAbsoluteTolerance;
    if (std::fabs(x - middle) <= 2 * tol - 0.5F * (high - low)) break;
    bool parabola = false;
    if (std::fabs(step_before) > tol) {
      const float r = (x - w) * (fx - fv);
      float q = (x - v) * (fx - fw);
      float p = (x - v) * q - (x - w) * r;
      q = 2 * (q - r);
      if (q > 0) p = -p;
      q = std::fabs(q);
      const float before = std::exchange(step_before, step);
      parabola =
          std::fabs(p) < std::fabs(0.5F * q * before) && p > q * (low - x) && p < q * (high - x);
      if (parabola) {
        step = p / q;
        const float u = x + step;
        if (u - low < 2 * tol || high - u < 2 * tol) step = std::copysign(tol, middle - x);
      }
    }
    if (!parabola) {
      step_before = x >= middle ? low - x : high - x;
      step = kGoldenSection * step_before;
    }
    const float u = x + (std::fabs(step) >= tol ? step : std::copysign(tol, step));
    const float fu = f(u);
    if (fu <= fx) {
      (u >= x ? low : high) = x;
      v = std::exchange(w, std::exchange(x, u));
      fv = std::exchange(fw, std::exchange(fx, fu));
      continue;
    }
    (u < x ? low : high) = u;
    if (fu <= fw || w == x) {
      v = std::exchange(w, u);
      fv = std::exchange(fw, fu);
    } else if (fu <= fv || v == x || v == w) {
      v = u;
      fv = fu;
    }
  }
  *place = x;
  return fx;
}

/// The start of a bracket from its limits, if there is one on either side.
inline void StartWithinLimits(float low, float high, float* a, float* b) {
  constexpr float kPart = 0.01F;
  if (low > -kInfinity && high < kInfinity) {
    if (low > 0) {
      *a = low;
      *b = std::min(low + 1, low + kPart * (high - low));
    } else if (high < 0) {
      *a = std::max(high - 1, high - kPart * (high - low));
      *b = high;
    } else {
      *a = 0;
      *b = std::min(1.0F, kPart * high);
    }
  } else if (low > -kInfinity) {
    *a = std::max(low, 0.0F);
    *b = *a + 1;
  } else if (high < kInfinity) {
    *a = std::min(high, 0.0F);
    *b = *a - 1;
  }
}

/// Scales a direction by t and moves the point by it; arrays count from 1.
inline void MoveAlong(float t, float* point, float* direction, SInt32 n) {
  for (SInt32 j = 1; j <= n; ++j) {
    direction[j] *= t;
    point[j] += direction[j];
  }
}

/// Work space of Powell's method: vectors of n from index 1.
struct DirectionSetWork {
  float* start;
  float* beyond;
  float* direction;
};

/// Powell's direction set method from `point` along the columns of `directions`. `minimise_along`
/// takes a direction and the value to store; false if kMostIterations are not enough.
template <class Objective, class MinimiseAlong>
bool MinimiseByDirections(float* point, float* const* directions, SInt32 n, float tolerance,
                          SInt32* iterations, float* value, Objective f,
                          MinimiseAlong minimise_along, DirectionSetWork work) {
  *value = f(point);
  std::copy_n(point + 1, n, work.start + 1);
  for (*iterations = 1;; ++*iterations) {
    const float old = *value;
    SInt32 steepest = n;
    float decrease = 0;
    for (SInt32 i = 1; i <= n; ++i) {
      for (SInt32 j = 1; j <= n; ++j)
        work.direction[j] = directions[j][i];
      const float before = *value;
      minimise_along(work.direction, value);
      if (before - *value > decrease) {
        decrease = before - *value;
        steepest = i;
      }
    }
    if (2 * (old - *value) <= tolerance * (std::fabs(old) + std::fabs(*value)) + kConvergenceFloor)
      return true;
    if (*iterations == kMostIterations) return false;
    for (SInt32 j = 1; j <= n; ++j) {
      work.beyond[j] = 2 * point[j] - work.start[j];
      work.direction[j] = point[j] - work.start[j];
      work.start[j] = point[j];
    }
    const float beyond = f(work.beyond);
    if (!(beyond < old)) continue;
    const float rest = old - *value - decrease;
    const float whole = old - beyond;
    const float t = 2 * (old - 2 * *value + beyond) * rest * rest - decrease * whole * whole;
    if (!(t < 0)) continue;
    minimise_along(work.direction, value);
    for (SInt32 j = 1; j <= n; ++j) {
      directions[j][steepest] = directions[j][n];
      directions[j][n] = work.direction[j];
    }
  }
}

}  // namespace quillmere::numerics
