/// Random numbers, distributions and orders, and random vectors for runs of tests.
///
/// All numbers come from the C library's `random`, 0 to 2^31 - 1, so that `srandom` repeats a run;
/// taking them modulo a number favours the low results by less than that number / 2^31. Arrays
/// belong to the caller.
#pragma once

#include "base_types.h"

/// 0 to n - 1, 1 to n, and low to high - 1. A range without numbers gives 0, 1 and `low`.
SInt32 GL_RandomMod(SInt32 n);
SInt32 GL_RandModIndex(SInt32 n);
SInt32 GL_RandModRange(SInt32 low, SInt32 high);
/// 0 to 1 without 1, in steps of 1 / 32767; and from `low` to `high` likewise.
float GL_RandomFloat();
float GL_RandomFloatRange(float low, float high);
/// The step of a linear congruential generator, (seed * 1103515245 + 12345) / 65536, to 15 bits:
/// the sample generator of the C standard (ISO/IEC 9899:1990, 7.10.2).
UInt32 GL_StdRandom1(UInt32 seed);

/// Splits `total` into `count` positive integers at random, in proportion to random numbers. A
/// total below `count` cannot be split so; then all are 1.
void GL_RandomDistribution(SInt32* out, SInt32 count, SInt32 total);
/// A random permutation of 1 to `count`: each number goes to a random place of those still empty.
void GL_RandomOrder(SInt32* out, SInt32 count);

/// Check that the low bits of signed and unsigned products and sums agree, over 10000 random pairs;
/// print that they do to standard output, or beep and print the pair.
void GL_TestLowBitsHypothesis16();
void GL_TestLowBitsHypothesis32();

// Test vectors. A series is a list of `num_tests` vectors of `test_size` integers, one after the
// other; position p of each lies in lows[p] <= value < highs[p]. A position without such a value is
// always lows[p].

/// True if the code under test takes the vector.
using GL_TestFilter = Boolean (*)(SInt32 test_size, const SInt32* vector);

/// Draws each value alone.
void GL_GenerateRandomTestSeries1(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, SInt32* values);
/// The same, printed to standard output as the flags say: a header with the test's name, the
/// numbers, and the values' types (quoted codes) and names where they are not null; a line a
/// vector, counted from 1.
void GL_GenerateRandomTestSeries2(const char* name, SInt32 num_tests, SInt32 test_size,
                                  const OSType* types, const char* const* value_names,
                                  const SInt32* lows, const SInt32* highs, Boolean print_values,
                                  Boolean print_header, SInt32* values);
/// Draws vectors that pass the filter (may be null) and all differ. There must be as many such
/// vectors: when ten million draws in a row bring none, the rest of the series is left as it is.
void GL_GenerateRandomTestSeries3(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, GL_TestFilter filter, SInt32* values);
/// Draws as the third series does, rare values more often: a value's chance is inverse to its
/// frequency, which `frequencies` holds in a row of `row_length` places for each position, from its
/// low on, and which counts as at least 0.0001. Where a value of a position would get less than 1%
/// of the draws, the frequencies of the position are drawn towards its largest until it does not,
/// or they are all the same. `largest_correction` takes the largest factor by which a frequency was
/// raised in all this, at least 1.0, and infinity for a frequency of 0. Without memory nothing is
/// drawn. A row holds as many values as a position has; further ones are not drawn.
void GL_GenerateRandomTestSeries4(SInt32 num_tests, SInt32 test_size, const SInt32* lows,
                                  const SInt32* highs, GL_TestFilter filter,
                                  const double* frequencies, SInt32 row_length, SInt32* values,
                                  double* largest_correction);
/// How often each value of each position comes up in `num_draws` vectors drawn one at a time by the
/// third series, over the number of draws; in rows as above, in which places without a value stay
/// as they are.
void GL_CalcTestValueFrequencies(SInt32 num_draws, SInt32 test_size, const SInt32* lows,
                                 const SInt32* highs, GL_TestFilter filter, SInt32 row_length,
                                 double* frequencies);
