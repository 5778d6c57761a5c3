/// Sampled curves, polylines, tilted rectangles and the coverage of pixels by a circle.
///
/// Arrays belong to the caller. Only GL_SubdivideCurve allocates.
#pragma once

#include "base_types.h"

// Histograms.

/// Looks for the next place where a window of `width` entries sums up to a peak of at least
/// `threshold`. Entries `first` to `last` of the histogram are looked at, the window starting at
/// `position`; then `position` stands behind the peak's window, or behind `last` if there is none,
/// and `window_sum` takes the window's sum, 0 if there is none.
///
/// A threshold of 0 becomes the sum of all entries times `fraction`, rounded; it counts as at
/// least 1. The window ends where the sum is about to fall. With `narrow`, it is then made smaller
/// by one entry at a time, looking for the first peak again from its start to its end, as long as
/// one reaches the threshold: `position`, `width` and `window_sum` become those of the narrowest
/// window. Otherwise `width` stays as it was.
void GL_GetNextPeak(SInt32 first, SInt32 last, const SInt32* histogram, SInt32* position,
                    SInt32* width, Boolean narrow, SInt32 threshold, Fixed fraction,
                    SInt32* window_sum);

// Minima of curves sampled at equal steps, by least-squares parabolas (NR_GetMinimumFrom4 and its
// like). Positions count in samples from the first one. Optional outputs may be null.

/// The least of the minima of parabolas through every four neighbouring samples that lie between
/// their inner two (positions 0.9 to 2.1), `count` being 4 to 16. `x` takes its place on an axis
/// where the first sample is at `first_x` and they are `step` apart. +infinity, and `x` not
/// written, if there is none.
float GL_GetMinFromArrayF(float first_x, float step, const float* samples, SInt32 count, float* x);
/// The minimum near the middle of five samples: true if the outer two rise on both sides. The
/// parabola runs through all five if the middle one is the lowest by more than its neighbours
/// differ, else through the four on the lower side; if it has no clear extremum, and for false, the
/// result is position 2.0 and the middle sample. Both outputs are optional.
Boolean GL_RefineMinFromArrayF(const float* samples, float* position, float* value);
/// The minimum around the least sample of a curve, by five samples, or by seven if the valley has
/// two lowest points near each other. False, with the place and value of the first least sample, if
/// there is no valley or it is within two samples of an end; with nothing written for no samples.
Boolean GL_GetArrayMinimumF_Ext(SInt32 count, const float* samples, float* position, float* value);

// Polylines. `points` are pairs of x and y.

/// The inner point furthest from the chord from point `first` to point `last`: its distance, its
/// index, the chord's length and on which side it lies (1.0 or -1.0, the sign of its product with
/// (dy, -dx)). Distance 0, index 0, sign 1.0 without inner points, the length then not written. A
/// chord of length 0 has no sides: distance -1, index `first`, sign 1.0.
void GL_GetMaxChordDistance(const float* points, SInt32 first, SInt32 last, float* distance,
                            SInt32* index, float* chord, float* sign);

/// Picks the points of a polyline that matter, recursively, each before those of the two halves
/// into which it splits its span: a span is split at the point furthest from its chord if that
/// brings the larger distance of the halves below (1 - `improvement`) times its own; halves at a
/// distance of at most 1.0 are left alone (Douglas and Peucker, Algorithms for the reduction of the
/// number of points required to represent a digitized line, 1973).
///
/// The top call passes the depth 0, the index -1, a distance above 1.0, any chord and sign, and
/// `count` 0; then, if a point was picked, it hands out two heap lists of `count` entries that the
/// caller frees with GL_DisposePtr: the indices, and the distances over the chord's length with
/// their sign. Otherwise, or without memory, the lists are null and the count is 0. At most
/// `capacity` points are picked, to a depth of 199; `work` has 2 `capacity` places.
void GL_SubdivideCurve(const float* points, SInt32 depth, SInt32 first, SInt32 last, float distance,
                       SInt32 index, float chord, float sign, float improvement, SInt32 capacity,
                       SInt32* count, SInt32** indices, float** values, SInt32* work);

// Rectangles tilted along the direction (dx, dy) in an upright box, with a corner at the distance t
// along the box's side. For parts of the direction that are 0 see GL_CalcLargestEnclosedRect.

/// With u = height - t: p = t dy / dx and q = u dx / dy if dx dy > 0, else p = -t dx / dy and
/// q = -u dy / dx. The area is sqrt(p^2 + t^2) sqrt(u^2 + q^2).
double GL_CalcEnclosedRectArea(double height, double dx, double dy, double t);
/// The upper end of the corner's range: bisects 0 to `height` to 0.01, downwards where the area is
/// 0.
void GL_FindMaxLeftCorner(double height, double dx, double dy, double* t);
/// The corner of the largest such rectangle in a box of the height of `rect`, found to 0.1 by
/// bisection on the slope of the area between 0.1 and the corner's range less 0.5. 0.0 if |dx| or
/// |dy| is below 0.001.
void GL_CalcLargestEnclosedRect(const Rect* rect, double dx, double dy, double* t);

// Coverage of size by size pixels by a circle at their centre, row by row, each 0 to 1.

/// For a circle of the given area in pixels, by counting which of 100 by 100 points of each pixel
/// lie within it. Weights below `smallest` become 0; `count` and `sum` take the number and the sum
/// of the others. Costs 10000 tests a pixel.
void GL_GetPixelWeightsInCircle(SInt32 size, double area, double smallest, double* weights,
                                SInt32* count, double* sum);
/// For the circle that touches the sides, by the area under its arc; `size` is even.
///
/// A pixel of the upper right quadrant from (x, y) to (x + 1, y + 1) that the circle of radius r
/// crosses between x = xa and xb has the weight (xa - x) + F(xb) - F(xa) - (xb - xa) y, with
/// F(t) = (t sqrt(r^2 - t^2) - r^2 acos(t / r)) / 2, an integral of the arc.
void GL_GetPixelWeightsInCircle2(SInt32 size, double* weights);
