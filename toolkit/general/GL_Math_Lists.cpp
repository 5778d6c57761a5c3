#include "GL_Math_Lists.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace {

template <typename T>
std::span<const T> List(const T* values, SInt32 count) {
  return {values, static_cast<std::size_t>(std::max<SInt32>(count, 0))};
}

template <typename T, typename Value>
void Store(T* out, Value value) {
  if (out != nullptr) *out = static_cast<T>(value);
}

template <typename T, typename Mean>
void Average(const T* values, SInt32 count, Mean* mean, Mean* deviation) {
  const auto list = List(values, count);
  const double size = list.empty() ? 1.0 : static_cast<double>(list.size());
  double sum = 0;
  for (const T value : list)
    sum += static_cast<double>(static_cast<Mean>(value));
  const double center = sum / size;
  Store(mean, center);
  if (deviation == nullptr) return;
  double distance = 0;
  for (const T value : list)
    distance += std::fabs(static_cast<double>(static_cast<Mean>(value)) - center);
  Store(deviation, distance / size);
}

template <typename T>
Boolean FindInArray(T value, SInt32 count, const T* list, SInt32* index) {
  const auto values = List(list, count);
  const auto place = std::find(values.begin(), values.end(), value);
  const bool found = place != values.end();
  Store(index, found ? place - values.begin() : -1);
  return found;
}

template <typename T>
SInt32 Bisect(SInt32 count, const T* list, T value) {
  if (count <= 0) return -1;
  SInt32 low = 0;
  SInt32 high = count - 1;
  while (high - low > 1) {
    const SInt32 middle = low + (high - low) / 2;
    (list[middle] < value ? low : high) = middle;
  }
  if (list[high] == value) return high;
  return list[low] == value ? low : -1;
}

template <typename T>
T Closest(T x, SInt32 count, const T* list, SInt32* index) {
  Store(index, 0);
  if (list == nullptr) return 0;
  SInt32 best = 0;
  for (SInt32 i = 1; i < count; ++i) {
    if (std::fabs(list[i] - x) < std::fabs(list[best] - x)) best = i;
  }
  Store(index, best);
  return list[best];
}

template <typename T>
void MinMax(SInt32 count, const T* list, T* min, T* max, SInt32* min_index, SInt32* max_index) {
  T low = std::numeric_limits<T>::max();
  T high = std::numeric_limits<T>::lowest();
  SInt32 low_index = -1;
  SInt32 high_index = -1;
  for (SInt32 i = 0; i < count; ++i) {
    if (list[i] < low) {
      low = list[i];
      low_index = i;
    }
    if (list[i] > high) {
      high = list[i];
      high_index = i;
    }
  }
  Store(min, low);
  Store(max, high);
  Store(min_index, low_index);
  Store(max_index, high_index);
}

/// The sum of count / stride signed bytes at every stride-th place.
UInt32 StridedSum(const SInt8* bytes, UInt32 count, UInt32 stride) {
  UInt32 sum = 0;
  for (UInt32 i = 0; i < count / stride; ++i)
    sum += static_cast<UInt32>(static_cast<SInt32>(bytes[std::size_t{i} * stride]));
  return sum;
}

}  // namespace

void GL_GetAverageF(const float* values, SInt32 count, float* mean, float* deviation) {
  Average(values, count, mean, deviation);
}

void GL_GetAverageD(const double* values, SInt32 count, double* mean, double* deviation) {
  Average(values, count, mean, deviation);
}

void GL_GetAverageL(const SInt32* values, SInt32 count, float* mean, float* deviation) {
  Average(values, count, mean, deviation);
}

void GL_GetAverageU16(const UInt16* values, SInt32 count, UInt16* mean, UInt16* deviation,
                      UInt16* largest_deviation) {
  const auto list = List(values, count);
  const UInt64 size = std::max<UInt64>(list.size(), 1);
  UInt64 sum = 0;
  for (const UInt16 value : list)
    sum += value;
  const auto center = static_cast<SInt32>((sum + size / 2) / size);
  UInt64 distances = 0;
  SInt32 largest = 0;
  for (const UInt16 value : list) {
    const SInt32 distance = std::abs(value - center);
    distances += static_cast<UInt64>(distance);
    largest = std::max(largest, distance);
  }
  Store(mean, center);
  Store(deviation, (distances + size / 2) / size);
  Store(largest_deviation, largest);
}

float GL_GetAverageNoOutliers(const float* values, SInt32 count, float* deviation, UInt8* flags) {
  const auto list = List(values, count);
  const auto missing = [](float value) { return value == std::numeric_limits<float>::infinity(); };
  double sum = 0;
  SInt32 kept = 0;
  for (const float value : list) {
    if (missing(value)) continue;
    sum += static_cast<double>(value);
    ++kept;
  }
  const double mean = kept == 0 ? 0.0 : sum / kept;
  const auto distance = [mean](float value) {
    return std::fabs(static_cast<double>(value) - mean);
  };
  double distances = 0;
  for (const float value : list)
    distances += missing(value) ? 0.0 : distance(value);
  const double limit = kept == 0 ? 0.0 : 2 * std::max(distances / kept, 0.0001);
  for (std::size_t i = 0; i < list.size(); ++i) {
    const bool outside = !missing(list[i]) && distance(list[i]) > limit;
    if (flags != nullptr) flags[i] = missing(list[i]) || outside;
    if (!outside) continue;
    sum -= static_cast<double>(list[i]);
    distances -= distance(list[i]);
    --kept;
  }
  Store(deviation, kept == 0 ? 0.0 : distances / kept);
  return kept == 0 ? 0.0F : static_cast<float>(sum / kept);
}

Boolean GL_IsNumberInArrayS16(SInt16 value, SInt32 count, const SInt16* list, SInt32* index) {
  return FindInArray(value, count, list, index);
}

Boolean GL_IsNumberInArrayS32(SInt32 value, SInt32 count, const SInt32* list, SInt32* index) {
  return FindInArray(value, count, list, index);
}

Boolean GL_IsOSTypeInArray(OSType value, SInt32 count, const OSType* list, SInt32* index) {
  return FindInArray(value, count, list, index);
}

SInt32 GL_FindIndexInSortedListS32(SInt32 count, const SInt32* list, SInt32 value) {
  return Bisect(count, list, value);
}

SInt32 GL_FindIndexInSortedListF32(SInt32 count, const float* list, float value) {
  return Bisect(count, list, value);
}

float GL_GetClosestValueF32(float x, SInt32 count, const float* list, SInt32* index) {
  return Closest(x, count, list, index);
}

double GL_GetClosestValueF64(double x, SInt32 count, const double* list, SInt32* index) {
  return Closest(x, count, list, index);
}

void GL_GetArrayMinMaxU8(SInt32 count, const UInt8* list, UInt8* min, UInt8* max, SInt32* min_index,
                         SInt32* max_index) {
  MinMax(count, list, min, max, min_index, max_index);
}

void GL_GetArrayMinMaxS16(SInt32 count, const SInt16* list, SInt16* min, SInt16* max,
                          SInt32* min_index, SInt32* max_index) {
  MinMax(count, list, min, max, min_index, max_index);
}

void GL_GetArrayMinMaxS32(SInt32 count, const SInt32* list, SInt32* min, SInt32* max,
                          SInt32* min_index, SInt32* max_index) {
  MinMax(count, list, min, max, min_index, max_index);
}

void GL_GetArrayMinMaxF32(SInt32 count, const float* list, float* min, float* max,
                          SInt32* min_index, SInt32* max_index) {
  MinMax(count, list, min, max, min_index, max_index);
}

void GL_GetArrayMinMaxF64(SInt32 count, const double* list, double* min, double* max,
                          SInt32* min_index, SInt32* max_index) {
  MinMax(count, list, min, max, min_index, max_index);
}

Boolean GL_EqualArrayS32(SInt32 count, const SInt32* a, const SInt32* b) {
  return std::ranges::equal(List(a, count), List(b, count));
}

Boolean GL_AllValuesInArrayUniqueS32(SInt32 count, const SInt32* list) {
  const auto values = List(list, count);
  for (auto place = values.begin(); place != values.end(); ++place) {
    if (std::find(values.begin(), place, *place) != place) return 0;
  }
  return 1;
}

Boolean GL_ArrayNumbersAreConsecutive(SInt32 count, const SInt32* list) {
  if (count <= 0) return 1;
  const auto [min, max] = std::ranges::minmax(List(list, count));
  if (static_cast<SInt64>(max) - min != static_cast<SInt64>(count) - 1) return 0;
  return GL_AllValuesInArrayUniqueS32(count, list);
}

UInt32 GL_CalcCheckSum(const void* bytes, UInt32 count) {
  const auto* first = static_cast<const SInt8*>(bytes);
  return StridedSum(first, count, 1) + ((StridedSum(first, count, 2) & 0xFFU) << 8) +
         ((StridedSum(first, count, 3) & 0xFFU) << 16) +
         ((StridedSum(first, count, 5) & 0xFFU) << 24);
}

void GL_InitializePartition(SInt32* parts, SInt32 total, SInt32 count, SInt32* index) {
  *index = count - 1;
  if (count <= 0) return;
  std::fill_n(parts, count, 0);
  parts[count - 1] = total;
}

void GL_GetNextPartition(SInt32* parts, SInt32 total, SInt32 count, SInt32* index) {
  const SInt32 last = count - 1;
  const SInt32 place = *index;
  if (place <= 0 || place > last || total < 1) {
    *index = -1;
    return;
  }
  const SInt32 left = parts[place] - 1;
  parts[place] = 0;
  ++parts[place - 1];
  parts[last] = left;
  *index = left == 0 ? place - 1 : last;
}

void GL_AddSignsToPartition(SInt32* parts, SInt32 count, const SInt32* signs) {
  for (SInt32 i = 0; i < count; ++i) {
    if (parts[i] > 0) parts[i] *= *signs++;
  }
}

void GL_SignedPartitionRecursion(SInt32* parts, SInt32 count, SInt32 sign_count, SInt32 position,
                                 SInt32* signs, GL_SignedPartitionCallback callback, void* context,
                                 SInt32* stop) {
  if (position >= sign_count) {
    GL_AddSignsToPartition(parts, count, signs);
    callback(parts, count, context, stop);
    return;
  }
  for (const SInt32 sign : {1, -1}) {
    signs[position] = sign;
    GL_SignedPartitionRecursion(parts, count, sign_count, position + 1, signs, callback, context,
                                stop);
    if (*stop != 0) return;
  }
}
