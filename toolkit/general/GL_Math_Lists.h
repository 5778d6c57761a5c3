/// Operations on lists of numbers that the caller owns: means, extremes, searches, sums,
/// partitions.
///
/// Nothing allocates except where a comment says so. A negative count is an empty list. Outputs
/// that "may be null" are then not wanted.
#pragma once

#include "base_types.h"

// Means. The deviation is the mean absolute deviation from the mean. Sums run in double precision;
// an empty list has mean and deviation 0. Each output may be null.

void GL_GetAverageF(const float* values, SInt32 count, float* mean, float* deviation);
void GL_GetAverageD(const double* values, SInt32 count, double* mean, double* deviation);
void GL_GetAverageL(const SInt32* values, SInt32 count, float* mean, float* deviation);
/// In integers: both quotients are rounded by adding count / 2 first. `largest_deviation` takes the
/// largest difference from the rounded mean.
void GL_GetAverageU16(const UInt16* values, SInt32 count, UInt16* mean, UInt16* deviation,
                      UInt16* largest_deviation);
/// The mean of the values no further from the mean of all than twice their mean absolute deviation,
/// which counts as at least 0.0001; +infinity stands for a missing value. `deviation` takes the
/// mean of the kept values' deviations from the mean of all, `flags`, a byte for each value, 0 for
/// a kept and 1 for a missing or removed one. Without any value the mean and deviation are 0.
float GL_GetAverageNoOutliers(const float* values, SInt32 count, float* deviation, UInt8* flags);

// Searches. `index` (may be null) takes the position of the first hit, -1 if there is none.

Boolean GL_IsNumberInArrayS16(SInt16 value, SInt32 count, const SInt16* list, SInt32* index);
Boolean GL_IsNumberInArrayS32(SInt32 value, SInt32 count, const SInt32* list, SInt32* index);
Boolean GL_IsOSTypeInArray(OSType value, SInt32 count, const OSType* list, SInt32* index);
/// The position of a value in an ascending list by bisection (Knuth, The Art of Computer
/// Programming 3, 1998, 6.2.1), -1 if it is absent. Of equal values it is the one at the upper end
/// of the last interval: the first of them, but the second if they start the list.
SInt32 GL_FindIndexInSortedListS32(SInt32 count, const SInt32* list, SInt32 value);
SInt32 GL_FindIndexInSortedListF32(SInt32 count, const float* list, float value);
/// The value of the list nearest to `x`, the first of two equally near; `index` (may be null) takes
/// its position. For an empty list its first place, so that there must be one; 0 for a null list.
float GL_GetClosestValueF32(float x, SInt32 count, const float* list, SInt32* index);
double GL_GetClosestValueF64(double x, SInt32 count, const double* list, SInt32* index);

// Extremes, the first of equal ones, in one pass of strict comparisons that starts with the limits
// of the type. So a list without a value below the highest one of the type, or above the lowest,
// has that limit as its extreme and the index -1. Each output may be null.

void GL_GetArrayMinMaxU8(SInt32 count, const UInt8* list, UInt8* min, UInt8* max, SInt32* min_index,
                         SInt32* max_index);
void GL_GetArrayMinMaxS16(SInt32 count, const SInt16* list, SInt16* min, SInt16* max,
                          SInt32* min_index, SInt32* max_index);
void GL_GetArrayMinMaxS32(SInt32 count, const SInt32* list, SInt32* min, SInt32* max,
                          SInt32* min_index, SInt32* max_index);
void GL_GetArrayMinMaxF32(SInt32 count, const float* list, float* min, float* max,
                          SInt32* min_index, SInt32* max_index);
void GL_GetArrayMinMaxF64(SInt32 count, const double* list, double* min, double* max,
                          SInt32* min_index, SInt32* max_index);

// Comparing.

/// True if the lists are the same.
Boolean GL_EqualArrayS32(SInt32 count, const SInt32* a, const SInt32* b);
/// True if no value stands in the list twice; compares all pairs.
Boolean GL_AllValuesInArrayUniqueS32(SInt32 count, const SInt32* list);
/// True if the values are the `count` numbers from the least on, in any order.
Boolean GL_ArrayNumbersAreConsecutive(SInt32 count, const SInt32* list);

// Sums.

/// Rounds the fractions numerators[i] / denominators[i] to Fixed numbers whose sum is `target`. 0,
/// or 4 at a denominator of 0, with `out` filled up to that entry.
///
/// Each is rounded to the nearest; then, as long as the sum differs from the target, the entry
/// whose rounding went furthest the wrong way is moved by one unit of its last place, each at most
/// once. If none is left, a difference remains. Allocates a list of the errors only when there is
/// something to correct; without memory the rounded numbers stay.
SInt32 GL_RoundFixedNumberListToExactSum(const SInt32* numerators, const SInt32* denominators,
                                         SInt16 count, Fixed target, Fixed* out);
/// Raises `sum` by the subset of the positive `values` that brings it nearest to `target` from
/// below, never to it, and stores the subset in `chosen`, `count` places, in the order of the list
/// and zeros behind. Of equal sums the subset whose members come first wins. If no subset fits,
/// nothing is written.
///
/// An exhaustive search that leaves out branches which cannot win; its cost still doubles with each
/// value in the worst case. Allocates three lists of the count; without memory it does nothing.
void GL_GetClosestSum(const SInt32* values, SInt32 count, SInt32 target, SInt32* sum,
                      SInt32* chosen);
/// A checksum of signed bytes: the sum of all, plus the low bytes of three more sums times 2^8,
/// 2^16 and 2^24: over count / 2 bytes at every second place, count / 3 at every third, count / 5
/// at every fifth. Modulo 2^32.
UInt32 GL_CalcCheckSum(const void* bytes, UInt32 count);

// Partitions: ordered lists of `count` numbers, none negative, of a given sum (compositions with
// zeros; Knuth, The Art of Computer Programming 4A, 2011, 7.2.1.3).

/// Makes the first partition, 0 ... 0 total, and the index of its last place.
void GL_InitializePartition(SInt32* parts, SInt32 total, SInt32 count, SInt32* index);
/// Steps to the next partition in lexicographic order. `index` is that of the last part that is not
/// 0; -1 means that there are no more.
void GL_GetNextPartition(SInt32* parts, SInt32 total, SInt32 count, SInt32* index);
/// Multiplies each positive part by the next of the signs.
void GL_AddSignsToPartition(SInt32* parts, SInt32 count, const SInt32* signs);

/// Is given the signed parts; a `stop` other than 0 ends the walk. It may take the signs off the
/// parts.
using GL_SignedPartitionCallback = void (*)(SInt32* parts, SInt32 count, void* context,
                                            SInt32* stop);
/// Calls back for every list of `sign_count` signs from `position` on (0 for all), +1 before -1,
/// the first varying slowest, with the parts multiplied by it as GL_AddSignsToPartition does.
/// `signs` has `sign_count` places. The parts keep their signs between calls, and only positive
/// parts take one: a callback that wants each combination restores the magnitudes. The depth of
/// recursion is `sign_count`.
void GL_SignedPartitionRecursion(SInt32* parts, SInt32 count, SInt32 sign_count, SInt32 position,
                                 SInt32* signs, GL_SignedPartitionCallback callback, void* context,
                                 SInt32* stop);
