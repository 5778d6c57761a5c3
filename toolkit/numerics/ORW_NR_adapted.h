/// Minimisers in single precision with limits on every variable and a context for the objective.
///
/// Arrays count from 1. Nothing ends the process, and nothing is kept between calls, so that any
/// number of threads may run these on their own data; at an iteration limit the best point so far
/// comes out. A limit that is infinite, beyond the largest float or not-a-number is none.
#pragma once

#include "base_types.h"

/// The objective in one and in several variables; `context` is passed through unchanged.
using NR_Function = float (*)(float x, void* context);
using NR_VectorFunction = float (*)(const float* point, void* context);
/// An objective along a line; see NR_F1dim, which is one.
using NR_LineFunction = float (*)(float t, NR_VectorFunction function, void* context, SInt32 n,
                                  const float* point, const float* direction);

/// Walks downhill to three points a, b, c that enclose a minimum, or to a limit, where the values
/// of b and c are equal (bracketing by golden steps and parabolas: Brent, Algorithms for
/// minimization without derivatives, 1973).
///
/// Without limits it starts from the caller's a and b. With a lower one, at the larger of that and
/// 0 and 1 above; with an upper one, at the lesser of that and 0 and 1 below; with both, at the
/// limit nearest to 0, or 0, and 1 or, if less, 1/100 of the range (of the upper limit, from 0)
/// further in.
void NR_Mnbrak(float low, float high, float* a, float* b, float* c, float* fa, float* fb, float* fc,
               NR_Function function, void* context);
/// The same along a line.
void NR_MnbrakMD(float low, float high, float* a, float* b, float* c, float* fa, float* fb,
                 float* fc, NR_LineFunction line, NR_VectorFunction function, void* context,
                 SInt32 n, const float* point, const float* direction);

/// The minimum between a and c, from b, by parabolas and golden sections (the same source), to
/// `tolerance` times |x| plus 1e-10: its value; `x` takes its place. At most 100 steps.
float NR_Brent(float a, float b, float c, NR_Function function, void* context, float tolerance,
               float* x);
/// The same along a line.
float NR_BrentMD(float a, float b, float c, float tolerance, float* x, NR_LineFunction line,
                 NR_VectorFunction function, void* context, SInt32 n, const float* point,
                 const float* direction);

/// The objective at point + t direction, in a vector of NR_vector.
float NR_F1dim(float t, NR_VectorFunction function, void* context, SInt32 n, const float* point,
               const float* direction);

/// Moves the point to the minimum along a direction, within the limits of the variables, to a
/// tolerance of 0.0002; the direction becomes the distance moved.
void NR_Linmin(float* point, const float* lows, const float* highs, float* direction, SInt32 n,
               float* value, NR_VectorFunction function, void* context);

/// The minimum in 1 to 8 variables, from `point`, by Powell's direction set method (Powell, An
/// efficient method for finding the minimum of a function of several variables without calculating
/// derivatives, 1964), until an iteration lowers the value by no more than `tolerance` of it. The
/// columns of `directions` (row pointers, n by n) are the first directions, and change.
/// `iterations` is 200 if it didn't get there. The method tries points beyond the limits to choose
/// directions, but never stays there. Nothing is done for other numbers of variables.
void NR_Powell(float* point, const float* lows, const float* highs, float* const* directions,
               SInt32 n, float tolerance, SInt32* iterations, float* value,
               NR_VectorFunction function, void* context);
