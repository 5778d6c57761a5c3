/// Linear solvers, minimisers, fits, interpolation and linear programming in single precision, for
/// arrays from index 1, as NR_Util.h makes them.
///
/// Work space comes from the heap. What cannot go on, no memory included, ends the process through
/// NR_nrerror with the message that the routine tells. Matrices are tables of row pointers. See
/// ORW_NR_simple.h and ORW_NR_adapted.h for routines that return.
#pragma once

#include "base_types.h"

// Linear equations.

/// The singular value decomposition of `a` (m by n): `a` becomes U (m by n), `w` the n singular
/// values, not negative and in no order, `v` V (n by n, not transposed); the input was
/// U diag(w) V'. "no convergence in 30 svdcmp iterations" if a value doesn't converge in 29 QR
/// steps. Householder's bidiagonal form and the implicit QR method (Golub and Reinsch, Singular
/// value decomposition and least squares solutions, 1970).
void NR_svdcmp(float* const* a, SInt32 m, SInt32 n, float* w, float* const* v);
/// x = V diag(1 / w) U' b, with b of m and x of n elements; a singular value of 0 drops its term.
void NR_svbksb(const float* const* u, const float* w, const float* const* v, SInt32 m, SInt32 n,
               const float* b, float* x);

/// Fills `values` (ma places, from index 1) with the basis functions at `x`.
using NR_BasisFunction = void (*)(float x, float* values, SInt32 ma);
/// The least-squares fit of a linear combination of `ma` basis functions to `ndata` points with the
/// standard deviations `sig`. `u` (ndata by ma), `v` (ma by ma) and `w` (ma) take the
/// decomposition, singular values below 1e-5 of the largest being set to 0. `chi_square` (may be
/// null) takes the sum of squared deviations over their standard deviations.
void NR_svdfit(const float* x, const float* y, const float* sig, SInt32 ndata, float* coefficients,
               SInt32 ma, float* const* u, float* const* v, float* w, float* chi_square,
               NR_BasisFunction basis);

/// Gauss-Jordan elimination with full pivoting: `a` (n by n) becomes its inverse, `b` (n by m) the
/// solutions. A singular matrix ends in "gaussj: Singular Matrix-1" if no pivot can be chosen, or
/// "gaussj: Singular Matrix-2" if it is 0.
void NR_gaussj(float* const* a, SInt32 n, float* const* b, SInt32 m);

/// Crout's LU decomposition with implicit scaling (Crout, A short method for evaluating
/// determinants and solving systems of linear equations, 1941) of `a` (n by n), in place: `index`
/// takes the row exchanged with each column's, `parity` 1.0 for an even number of exchanges, else
/// -1.0. A row of zeros ends in "Singular matrix in routine ludcmp"; a pivot of 0 becomes 1e-20,
/// and NR_lubksb then gives very large values.
void NR_ludcmp(float* const* a, SInt32 n, SInt32* index, float* parity);
/// Solves A x = b with what NR_ludcmp made of A; `b` becomes the solution.
void NR_lubksb(const float* const* a, SInt32 n, const SInt32* index, float* b);

// Interpolation.

/// The value at `x` of the polynomial through n nodes, by Neville's tableau (Neville, Iterative
/// interpolation, 1934), and its last correction as an estimate of the error. Two equal nodes end
/// in "Error in routine polint".
void NR_polint(const float* nodes, const float* y, SInt32 n, float x, float* value, float* error);
/// The coefficients, the constant first, of the polynomial through degree + 1 nodes; all arrays
/// count from 0.
void NR_polcoe(const float* nodes, const float* y, SInt32 degree, float* coefficients);
/// The second derivatives at n nodes, in ascending order, of the cubic spline through them with the
/// given slopes at its ends; a slope above 9.9e29 stands for a second derivative of 0 there
/// (Ahlberg, Nilson and Walsh, The theory of splines and their applications, 1967). n is 2 or more.
void NR_spline(const float* x, const float* y, SInt32 n, float first_slope, float last_slope,
               float* second);
/// The spline's value at `at`, beyond the ends that of the last cubic; the interval is found by
/// bisection. Two equal nodes around it end in "Bad xa input to routine splint".
void NR_splint(const float* x, const float* y, const float* second, SInt32 n, float at,
               float* value);

// Minimisers without limits, of the same methods as those of ORW_NR_adapted.h. NR_linmin and
// NR_powell keep what they work on in static variables, so that only one can run at a time.

using NR_PlainFunction = float (*)(float x);
using NR_PlainVectorFunction = float (*)(float* point);

/// Encloses a minimum downhill from a and b.
void NR_mnbrak(float* a, float* b, float* c, float* fa, float* fb, float* fc,
               NR_PlainFunction function);
/// Brent's method between a and c from b: the value of the minimum, with its place in `x`. At most
/// 100 steps, then the best point so far.
float NR_brent(float a, float b, float c, NR_PlainFunction function, float tolerance, float* x);
/// Golden section search between a and c from b (Kiefer, Sequential minimax search for a maximum,
/// 1953), until the outer points are within `tolerance` times the sum of the inner magnitudes.
float NR_golden(float a, float b, float c, NR_PlainFunction function, float tolerance, float* x);
/// The objective of the line minimisation that is under way.
float NR_f1dim(float t);
/// Moves the point to the minimum along a direction, which becomes the distance moved.
void NR_linmin(float* point, float* direction, SInt32 n, float* value,
               NR_PlainVectorFunction function);
/// Powell's direction set method. 200 iterations that are not enough end in "powell exceeding
/// maximum iterations.".
void NR_powell(float* point, float* const* directions, SInt32 n, float tolerance,
               SInt32* iterations, float* value, NR_PlainVectorFunction function);

// Fits of models.

/// A model at `x`: its value and its derivatives by the `ma` parameters `a`.
using NR_ModelFunction = void (*)(float x, float* a, float* y, float* derivatives, SInt32 ma);
/// One step of the fit of a model to `ndata` points with the standard deviations `sig` (Levenberg,
/// A method for the solution of certain non-linear problems in least squares, 1944; Marquardt, An
/// algorithm for least-squares estimation of nonlinear parameters, 1963).
///
/// `a` are the parameters, of which those with an `ia` other than 0 are fitted. A `lambda` below 0
/// starts a fit, and each call then lowers it tenfold if it lowered `chi_square`, else raises it
/// tenfold. A call with a lambda of 0 ends the fit: `covar` then holds the covariances and `alpha`
/// the curvatures (ma by ma, zeros for the other parameters), and the work space is released. It
/// stands in static variables, so that only one fit can be under way; starting the next drops one
/// that wasn't ended. A singular matrix ends the process as NR_gaussj does.
void NR_mrqmin(const float* x, const float* y, const float* sig, SInt32 ndata, float* a,
               const SInt32* ia, SInt32 ma, float* const* covar, float* const* alpha,
               float* chi_square, NR_ModelFunction model, float* lambda);
/// The curvatures `alpha`, the slopes `beta` and the chi-square of a model at `a`.
void NR_mrqcof(const float* x, const float* y, const float* sig, SInt32 ndata, float* a,
               const SInt32* ia, SInt32 ma, float* const* alpha, float* beta, float* chi_square,
               NR_ModelFunction model);
/// Spreads the covariances of `mfit` fitted parameters to the places of all, zeros elsewhere.
void NR_covsrt(float* const* covar, SInt32 ma, const SInt32* ia, SInt32 mfit);

/// The straight line through `ndata` points with its standard deviations (Bevington, Data reduction
/// and error analysis for the physical sciences, 1969). With `use_sig` points weigh 1 / sig^2 and
/// `q` is the probability of a worse chi-square, 1.0 for two points; without, all weigh the same,
/// the deviations come from the scatter (three points or more) and `q` is 1.0.
void NR_fit(const float* x, const float* y, SInt32 ndata, const float* sig, Boolean use_sig,
            float* intercept, float* slope, float* sigma_intercept, float* sigma_slope,
            float* chi_square, float* q);
/// The same without weights for points at first_x, first_x + step ...
void NR_fitNoMWT(float first_x, float step, const float* y, SInt32 ndata, float* intercept,
                 float* slope, float* sigma_intercept, float* sigma_slope);
/// The line alone; arrays count from 0.
void NR_fitPts(const float* x, const float* y, SInt32 n, float* intercept, float* slope);

// Probabilities.

/// Pearson's chi-square test of counts against expected ones (Pearson, 1900), with nbins less
/// `constraints` degrees of freedom. An expected count of 0 or less ends in "Bad expected number in
/// chsone".
void NR_chsone(const float* bins, const float* expected, SInt32 nbins, SInt32 constraints,
               float* degrees, float* chi_square, float* probability);
/// The probability alone, with one constraint and no test; arrays count from 0.
float NR_ChiSquaredOne(const float* bins, const float* expected, SInt32 nbins);
/// The complement of the incomplete gamma function (Abramowitz and Stegun, Handbook of mathematical
/// functions, 1964, 6.5), by its series below a + 1 and its continued fraction above; neither
/// argument is tested. A series not done in 100 terms counts as 0, a fraction as what it has.
float NR_gammq(float a, float x);
/// The series, in `value`, and the logarithm of gamma(a). `value` is left alone if 100 terms are
/// not enough.
void NR_gser(float* value, float a, float x, float* log_gamma);
/// The continued fraction likewise (Lentz, Generating Bessel functions in Mie scattering
/// calculations using continued fractions, 1976).
void NR_gcf(float* value, float a, float x, float* log_gamma);
/// The logarithm of the gamma function for x above 0 (Lanczos, A precision approximation of the
/// gamma function, 1964).
float NR_gammln(float x);

/// Maximises a linear function of n variables, none negative, under m constraints, by the simplex
/// method in two phases (Dantzig, Linear programming and extensions, 1963).
///
/// `tableau` has m + 2 rows of n + 1 columns: row 1 is 0 and the coefficients of the objective,
/// rows 2 to m + 1 each constraint's constant, not negative, and its coefficients with the
/// opposite sign: m1 constraints of type at most, m2 at least, m3 equal, in this order. Row m + 2
/// is work space. `state` is 0 for a solution, 1 for an objective without bound, -1 if nothing
/// meets the constraints. Element (1, 1) is then the maximum; `iposv` (m) names the variable whose
/// value is the constant of each row, `izrov` (n) those that are 0: 1 to n the variables, above
/// that the slack of each constraint. Values within 1e-6 of 0 count as 0.
///
/// Counts that don't add up end in "Bad input constraint counts in simplx", a negative constant in
/// "Bad input tableau in simplx".
void NR_simplx(float* const* tableau, SInt32 m, SInt32 n, SInt32 m1, SInt32 m2, SInt32 m3,
               SInt32* state, SInt32* izrov, SInt32* iposv);
// Its steps. Row i and column k are those of constraint i and coefficient k: they stand at index
// i + 1 and k + 1 of the tableau; row 0 is the objective, row m + 1 the work space.

/// The largest element of a row, or, with `magnitude`, the largest magnitude, among the `count`
/// columns that `columns` lists, and its column; 0, and no column, for none.
void NR_simp1(const float* const* tableau, SInt32 row, const SInt32* columns, SInt32 count,
              Boolean magnitude, SInt32* column, float* largest);
/// The row that limits the growth of a column's variable first, 0 if none does.
void NR_simp2(const float* const* tableau, SInt32 m, SInt32 n, SInt32* row, SInt32 column);
/// Exchanges a row's variable with a column's, in the rows up to `last_row` and the columns up to
/// `last_column`.
void NR_simp3(float* const* tableau, SInt32 last_row, SInt32 last_column, SInt32 row,
              SInt32 column);
