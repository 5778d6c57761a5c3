#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <vector>

#include "GL_Math_Curves.h"
#include "GL_Math_Lists.h"
#include "GL_Math_Numbers.h"
#include "GL_Math_Random.h"
#include "GL_Memory.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr Fixed kOne = 0x10000;

SInt32 Size(const auto& list) {
  return static_cast<SInt32>(list.size());
}

TEST(Numbers, RoundCompareAndClamp) {
  UInt32 power = 0, rest = 0;
  GL_RoundToPowerOf2(3, 100, &power, &rest);
  EXPECT_EQ(power * 1000 + rest, 64036U);
  GL_RoundToPowerOf2(4, 5, &power, &rest);
  EXPECT_EQ(power * 1000 + rest, 16005U);
  const std::map<float, SInt32> even{{3.7F, 4}, {4, 4}, {-3.2F, -4}, {-2.9F, -2}, {0.9F, 0}};
  for (const auto& [x, expected] : even)
    EXPECT_EQ(GL_RoundToEven(x), expected) << x;
  EXPECT_EQ(GL_RoundDownFloatToNearestInteger(2.95F, 0.1F), 3);
  EXPECT_EQ(GL_RoundDownFloatToNearestInteger(2.85F, 0.1F), 2);
  EXPECT_TRUE(GL_FloatsEqualByPerc(100, 99.5F, 0.01F));
  EXPECT_FALSE(GL_FloatsEqualByPerc(0, 0, 0.01F));
  EXPECT_FALSE(GL_FloatsEqualByAbsDiff(1, 1.5F, 0.5F));
  SInt32 error = 9;
  EXPECT_TRUE(GL_Diff(10, 11.5, 0.1, &error));
  EXPECT_FALSE(GL_Diff(10, 10.5, 0.1, &error));
  EXPECT_EQ(error, 0);
  for (const auto& [a, b, tolerance] :
       {std::tuple{0.0, 1.0, 0.1}, {1.0, -1.0, 0.1}, {1.0, 1.0, 1.5}}) {
    EXPECT_FALSE(GL_Diff(a, b, tolerance, &error));
    EXPECT_EQ(std::exchange(error, 0), -50);
  }
  EXPECT_EQ(GL_FloatPercDiff(2, -2), 1);
  EXPECT_FLOAT_EQ(GL_FloatPercDiff(4, 5), 0.2F);
  SInt32 remainder = 0;
  EXPECT_EQ(GL_MultiplyDivide(2000000000, 3, 7, &remainder), 857142857);
  EXPECT_EQ(remainder, 1);
  SInt32 value = 5;
  GL_ClampIntToBounds(7, 6, &value);
  EXPECT_EQ(value, 6);
  EXPECT_EQ(GL_GetOverlapS32(0, 10, 7, 20), 3);
  EXPECT_EQ(GL_GetOverlapF64(0, 1, 2, 3), 0);
  EXPECT_EQ(GL_GetAntiMedianValue3(10, 5, 20), -5);
  EXPECT_EQ(GL_GetAntiMedianValue3(10, 15, 20), 0);
  EXPECT_EQ(GL_GetAntiMedianValue3(10, 25, 20), 5);
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      const UInt8 list[] = {static_cast<UInt8>(a), static_cast<UInt8>(b), 1};
      UInt8 sorted[3], least = 9, most = 9;
      std::partial_sort_copy(list, list + 3, sorted, sorted + 3);
      GL_GetMinMaxFrom3_U8(list[0], list[1], list[2], &least, &most);
      EXPECT_EQ(least, sorted[0]);
      EXPECT_EQ(most, sorted[2]);
      EXPECT_EQ(GL_GetMedianFilteredValue3_U8(list[0], list[1], list[2]), sorted[1]);
    }
  }
}

TEST(Numbers, CountBitsPowersAndCombinations) {
  for (const auto& [max, bits] :
       std::map<UInt32, SInt32>{{0, 0}, {1, 1}, {255, 8}, {256, 9}, {0x7FFFFFFF, 31}})
    EXPECT_EQ(GL_GetNumBitsFromMaxValue(max), bits);
  EXPECT_EQ(GL_GetNumBitsFromMaxMinValue(127, -128), 8);
  EXPECT_EQ(GL_GetNumBitsFromMaxMinValue(128, -128), 9);
  EXPECT_EQ(GL_GetNumBitsFromMaxMinValue(7, 0), 3);
  EXPECT_EQ(GL_IntLog2(1023) * 100 + GL_IntLog2(1024) * 10 + GL_IntLog2(-3), 1000);
  EXPECT_EQ(GL_BitReverse(5, 0b10110), 0b01101U);
  EXPECT_EQ(GL_BitReverse(32, 1), 0x80000000U);
  EXPECT_DOUBLE_EQ(GL_PowExt(-8, 1.0 / 3), -2);
  EXPECT_EQ(GL_factorial(12), 479001600);
  EXPECT_EQ(GL_factorial(13), 1932053504);
  EXPECT_EQ(GL_binomial(10, 3), 120);
  EXPECT_EQ(GL_StdRandom1(1), 16838U);
}

TEST(Numbers, BinaryInversesMultiplyToNearlyOne) {
  Fixed a = 7, b = 7;
  EXPECT_EQ(GL_GetBestBinaryInverse(0, 5, &a, &b), 4);
  EXPECT_EQ(a, 7);
  for (SInt32 n = 1; n < 60; ++n) {
    for (SInt32 d = 1; d < 60; ++d) {
      ASSERT_EQ(GL_GetBestBinaryInverse(n, d, &a, &b), 0);
      EXPECT_LE(
          std::abs(a - std::lround(65536.0 * n / d)) + std::abs(b - std::lround(65536.0 * d / n)),
          1);
      // Neither neighbour does better by more than the rounding of a product.
      const double off = std::fabs(static_cast<double>(a) * b / kOne - kOne);
      EXPECT_LE(off, std::max(n, d) / std::min(n, d) + 1.0) << n << "/" << d;
      Fixed c = 0, e = 0;
      GL_GetBestBinaryInverse(-n, d, &c, &e);
      EXPECT_EQ(c, -a);
      EXPECT_EQ(e, -b);
    }
  }
}

TEST(Lists, MeansAndExtremes) {
  const std::vector<float> values{1, 2, 3, 10};
  float mean = 0, deviation = 0;
  GL_GetAverageF(values.data(), 4, &mean, &deviation);
  EXPECT_EQ(mean, 4);
  EXPECT_EQ(deviation, 3);
  GL_GetAverageF(nullptr, 0, &mean, nullptr);
  EXPECT_EQ(mean, 0);
  const UInt16 shorts[] = {1, 2, 2, 9};
  UInt16 mean16 = 0, deviation16 = 0, largest16 = 0;
  GL_GetAverageU16(shorts, 4, &mean16, &deviation16, &largest16);
  EXPECT_EQ(mean16 * 100 + deviation16 * 10 + largest16, 400 + 30 + 5);
  // 100 lies further out than twice the mean deviation; a missing value counts nowhere.
  const float outlier[] = {10, 11, kInfinity, 9, 10, 100};
  UInt8 flags[6];
  EXPECT_EQ(GL_GetAverageNoOutliers(outlier, 6, &deviation, flags), 10);
  EXPECT_TRUE(std::equal(flags, flags + 6, std::vector<UInt8>{0, 0, 1, 0, 0, 1}.begin()));
  const float missing[] = {kInfinity, kInfinity};
  EXPECT_EQ(GL_GetAverageNoOutliers(missing, 2, &deviation, flags), 0);
  EXPECT_EQ(flags[0] + flags[1], 2);

  const UInt8 white[] = {255, 255};
  UInt8 least = 0, most = 0;
  SInt32 at_least = 5, at_most = 5;
  GL_GetArrayMinMaxU8(2, white, &least, &most, &at_least, &at_most);
  EXPECT_EQ(at_least, -1);
  EXPECT_EQ(at_most, 0);
  const double doubles[] = {2, -1, 7, -1, 7};
  double low = 0, high = 0;
  GL_GetArrayMinMaxF64(5, doubles, &low, &high, &at_least, &at_most);
  EXPECT_EQ(at_least * 10 + at_most, 12);
}

TEST(Lists, Search) {
  const SInt32 sorted[] = {1, 3, 3, 5, 8, 8, 8, 11};
  for (SInt32 value = 0; value <= 12; ++value) {
    const SInt32 at = GL_FindIndexInSortedListS32(8, sorted, value);
    const bool present = std::binary_search(sorted, sorted + 8, value);
    EXPECT_EQ(at >= 0, present) << value;
    if (at >= 0) {
      EXPECT_EQ(sorted[at], value);
    }
    SInt32 first = 7;
    EXPECT_EQ(GL_IsNumberInArrayS32(value, 8, sorted, &first) != 0, present);
    EXPECT_EQ(first, present ? std::lower_bound(sorted, sorted + 8, value) - sorted : -1);
  }
  EXPECT_EQ(GL_FindIndexInSortedListS32(0, sorted, 1), -1);
  const float list[] = {1, 4, 2};
  SInt32 at = 9;
  EXPECT_EQ(GL_GetClosestValueF32(3, 3, list, &at), 4);
  EXPECT_EQ(at, 1);
  const SInt32 consecutive[] = {5, 3, 4, 6}, gap[] = {5, 3, 4, 7}, twice[] = {3, 4, 4, 5};
  EXPECT_TRUE(GL_ArrayNumbersAreConsecutive(4, consecutive));
  EXPECT_FALSE(GL_ArrayNumbersAreConsecutive(4, gap));
  EXPECT_FALSE(GL_ArrayNumbersAreConsecutive(4, twice));
  EXPECT_FALSE(GL_AllValuesInArrayUniqueS32(4, twice));
}

TEST(Sums, RoundFractionsToTheTarget) {
  std::mt19937 random(6);
  for (int round = 0; round < 300; ++round) {
    std::vector<SInt32> n(2 + random() % 9), d(n.size());
    std::vector<Fixed> plain(n.size()), out(n.size());
    double exact = 0;
    for (std::size_t i = 0; i < n.size(); ++i) {
      n[i] = 1 + static_cast<SInt32>(random() % 500);
      d[i] = 1 + static_cast<SInt32>(random() % 500);
      plain[i] = static_cast<Fixed>(std::lround(65536.0 * n[i] / d[i]));
      exact += 65536.0 * n[i] / d[i];
    }
    const auto target = static_cast<Fixed>(std::lround(exact));
    ASSERT_EQ(GL_RoundFixedNumberListToExactSum(n.data(), d.data(), static_cast<SInt16>(n.size()),
                                                target, out.data()),
              0);
    const SInt32 before = std::accumulate(plain.begin(), plain.end(), 0);
    EXPECT_EQ(std::accumulate(out.begin(), out.end(), 0), target);
    SInt32 moved = 0;
    for (std::size_t i = 0; i < n.size(); ++i) {
      moved += out[i] - plain[i];
      EXPECT_LE(std::abs(out[i] - plain[i]), 1);
      EXPECT_LT(std::fabs(out[i] - 65536.0 * n[i] / d[i]), 1);
    }
    EXPECT_EQ(moved, target - before);
  }
  const SInt32 n[] = {1, 1, 1}, d[] = {2, 0, 2};
  Fixed out[] = {-1, -1, -1};
  EXPECT_EQ(GL_RoundFixedNumberListToExactSum(n, d, 3, kOne, out), 4);
  EXPECT_EQ(out[0], kOne / 2);
  EXPECT_EQ(out[2], -1);
}

TEST(Sums, FindTheClosestBelowTheTarget) {
  std::mt19937 random(8);
  for (int round = 0; round < 200; ++round) {
    std::vector<SInt32> values(1 + random() % 10), chosen(values.size(), -1);
    for (SInt32& value : values)
      value = 1 + static_cast<SInt32>(random() % 40);
    const SInt32 target = 1 + static_cast<SInt32>(random() % 120);
    SInt32 expected = 0;
    for (std::size_t subset = 0; subset < std::size_t{1} << values.size(); ++subset) {
      SInt32 sum = 0;
      for (std::size_t i = 0; i < values.size(); ++i)
        sum += (subset >> i & 1) != 0 ? values[i] : 0;
      if (sum < target) expected = std::max(expected, sum);
    }
    SInt32 sum = 0;
    GL_GetClosestSum(values.data(), Size(values), target, &sum, chosen.data());
    ASSERT_EQ(sum, expected);
    if (sum == 0) {
      EXPECT_EQ(chosen[0], -1);
      continue;
    }
    EXPECT_EQ(std::accumulate(chosen.begin(), chosen.end(), 0), sum);
    auto from = values.begin();
    for (const SInt32 part : chosen)
      if (part != 0) {
        from = std::find(from, values.end(), part);
        ASSERT_NE(from++, values.end());
      }
  }
  const SInt32 values[] = {3, 5, 9};
  SInt32 sum = 0, chosen[3];
  GL_GetClosestSum(values, 3, 9, &sum, chosen);
  EXPECT_EQ(sum, 8);
  EXPECT_TRUE(chosen[0] == 3 && chosen[1] == 5 && chosen[2] == 0);
}

TEST(Sums, ChecksumAddsEverySecondThirdAndFifthByte) {
  std::vector<SInt8> bytes(100);
  std::iota(bytes.begin(), bytes.end(), static_cast<SInt8>(-20));
  for (const UInt32 count : {0U, 1U, 7U, 30U, 100U}) {
    UInt32 expected = 0;
    for (UInt32 i = 0; i < count; ++i)
      expected += static_cast<UInt32>(bytes[i]);
    UInt32 shift = 8;
    for (const UInt32 step : {2U, 3U, 5U}) {
      UInt32 sum = 0;
      for (UInt32 i = 0; i < count / step; ++i)
        sum += static_cast<UInt32>(bytes[i * step]);
      expected += (sum & 0xFF) << shift;
      shift += 8;
    }
    EXPECT_EQ(GL_CalcCheckSum(bytes.data(), count), expected);
  }
}

TEST(Partitions, ComeInOrderWithAllTheirSigns) {
  for (SInt32 total = 0; total <= 5; ++total) {
    for (SInt32 count = 1; count <= 4; ++count) {
      std::vector<SInt32> parts(static_cast<std::size_t>(count)), last;
      SInt32 index = 0;
      SInt32 number = 0;
      for (GL_InitializePartition(parts.data(), total, count, &index); index >= 0;
           GL_GetNextPartition(parts.data(), total, count, &index)) {
        EXPECT_EQ(std::accumulate(parts.begin(), parts.end(), 0), total);
        EXPECT_LT(last, parts);
        last = parts;
        ++number;
      }
      EXPECT_EQ(number, total == 0 ? 1 : GL_binomial(total + count - 1, count - 1));
    }
  }
  struct Walk {
    std::set<std::vector<SInt32>> seen;
    SInt32 calls = 0;
  } walk;
  SInt32 parts[] = {2, 0, 1}, signs[2], stop = 0;
  GL_SignedPartitionRecursion(
      parts, 3, 2, 0, signs,
      [](SInt32* list, SInt32 count, void* context, SInt32* halt) {
        auto* to = static_cast<Walk*>(context);
        to->seen.insert({list, list + count});
        std::transform(list, list + count, list, [](SInt32 x) { return std::abs(x); });
        *halt = ++to->calls == 4;
      },
      &walk, &stop);
  EXPECT_EQ(walk.seen,
            (std::set<std::vector<SInt32>>{{2, 0, 1}, {2, 0, -1}, {-2, 0, 1}, {-2, 0, -1}}));
  EXPECT_EQ(stop, 1);
}

TEST(Peaks, AreFoundAndNarrowed) {
  const SInt32 histogram[] = {0, 1, 0, 2, 8, 9, 1, 0, 0, 0, 5, 6, 0, 0};
  SInt32 position = 0, width = 4, sum = 0;
  GL_GetNextPeak(0, 13, histogram, &position, &width, 0, 10, 0, &sum);
  EXPECT_EQ(sum, 20);
  EXPECT_EQ(position, 7);
  GL_GetNextPeak(0, 13, histogram, &position, &width, 0, 10, 0, &sum);
  EXPECT_EQ(sum, 11);
  GL_GetNextPeak(0, 13, histogram, &position, &width, 0, 10, 0, &sum);
  EXPECT_EQ(sum, 0);
  EXPECT_EQ(width, 4);
  position = 0;
  GL_GetNextPeak(0, 13, histogram, &position, &width, 1, 15, 0, &sum);
  EXPECT_EQ(width * 100 + sum, 217);
  EXPECT_EQ(position, 6);
  // The threshold as half of all, 32.
  position = 0;
  width = 4;
  GL_GetNextPeak(0, 13, histogram, &position, &width, 0, 0, kOne / 2, &sum);
  EXPECT_EQ(sum, 20);
}

TEST(Minima, OfSampledCurves) {
  const auto parabola = [](float vertex, int count) {
    std::vector<float> y;
    for (int i = 0; i < count; ++i)
      y.push_back((static_cast<float>(i) - vertex) * (static_cast<float>(i) - vertex) + 3);
    return y;
  };
  float x = -1, least = -1;
  for (int count = 4; count <= 16; ++count) {
    const auto y = parabola(1.4F, count);
    EXPECT_NEAR(GL_GetMinFromArrayF(10, 2, y.data(), count, &x), 3, 1e-2);
    EXPECT_NEAR(x, 12.8F, 2e-2);
  }
  const auto many = parabola(2, 17);
  EXPECT_EQ(GL_GetMinFromArrayF(0, 1, many.data(), 17, &x), kInfinity);
  EXPECT_EQ(GL_GetMinFromArrayF(0, 1, many.data(), 3, &x), kInfinity);
  for (const float vertex : {1.7F, 2.0F, 2.2F}) {
    const auto y = parabola(vertex, 5);
    EXPECT_TRUE(GL_RefineMinFromArrayF(y.data(), &x, &least));
    EXPECT_NEAR(x, vertex, 1e-3);
    EXPECT_NEAR(least, 3, 1e-3);
  }
  const auto falling = parabola(9, 5);
  EXPECT_FALSE(GL_RefineMinFromArrayF(falling.data(), &x, &least));
  EXPECT_EQ(x, 2);
  EXPECT_EQ(least, falling[2]);
  const auto valley = parabola(6.3F, 12);
  EXPECT_TRUE(GL_GetArrayMinimumF_Ext(12, valley.data(), &x, &least));
  EXPECT_NEAR(x, 6.3F, 1e-3);
  EXPECT_FALSE(GL_GetArrayMinimumF_Ext(5, falling.data(), &x, &least));
  EXPECT_EQ(x, 4);
  // Two lowest points: seven samples are fitted.
  const float wide[] = {9, 5, 3, 1, 2, 1.5F, 4, 6, 9, 10};
  EXPECT_TRUE(GL_GetArrayMinimumF_Ext(10, wide, &x, &least));
  EXPECT_GT(x, 3);
  EXPECT_LT(x, 5);
}

TEST(Polylines, KeepThePointsThatMatter) {
  std::vector<float> points;
  for (int i = 0; i <= 20; ++i) {
    points.push_back(static_cast<float>(i));
    points.push_back(i <= 10 ? 0 : static_cast<float>(i - 10) * 2);
  }
  float distance = -1, chord = -1, sign = 0;
  SInt32 index = -1;
  GL_GetMaxChordDistance(points.data(), 0, 20, &distance, &index, &chord, &sign);
  EXPECT_EQ(index, 10);
  EXPECT_FLOAT_EQ(chord, std::hypot(20.0F, 20.0F));
  EXPECT_FLOAT_EQ(distance, std::sqrt(50.0F));
  EXPECT_EQ(sign, 1);
  GL_GetMaxChordDistance(points.data(), 3, 4, &distance, &index, &chord, &sign);
  EXPECT_TRUE(distance == 0 && index == 0 && sign == 1);
  SInt32 count = 0, work[20];
  SInt32* indices = nullptr;
  float* values = nullptr;
  GL_SubdivideCurve(points.data(), 0, 0, 20, 2, -1, 0, 0, 0.5F, 10, &count, &indices, &values,
                    work);
  ASSERT_EQ(count, 1);
  EXPECT_EQ(indices[0], 10);
  EXPECT_FLOAT_EQ(values[0], 0.25F);
  GL_DisposePtr(reinterpret_cast<void**>(&indices));
  GL_DisposePtr(reinterpret_cast<void**>(&values));
  count = 0;
  GL_SubdivideCurve(points.data(), 0, 0, 10, 2, -1, 0, 0, 0.5F, 10, &count, &indices, &values,
                    work);
  EXPECT_EQ(count, 0);
}

TEST(Shapes, RectanglesAndCircles) {
  const Rect box{0, 0, 100, 100};
  double t = -1;
  GL_CalcLargestEnclosedRect(&box, 0.0005, 1, &t);
  EXPECT_EQ(t, 0);
  // With equal parts the area t u is the largest in the middle.
  GL_CalcLargestEnclosedRect(&box, 1, 1, &t);
  EXPECT_NEAR(t, 50, 0.2);
  EXPECT_NEAR(GL_CalcEnclosedRectArea(100, 1, 1, 30), 2 * 30 * 70, 1e-9);
  for (const SInt32 size : {2, 6, 16}) {
    const auto pixels = static_cast<std::size_t>(size * size);
    std::vector<double> sampled(pixels), exact(pixels);
    const double area = M_PI * size * size / 4;
    SInt32 count = 0;
    double sum = 0;
    GL_GetPixelWeightsInCircle(size, area, 0, sampled.data(), &count, &sum);
    GL_GetPixelWeightsInCircle2(size, exact.data());
    for (std::size_t i = 0; i < pixels; ++i) {
      EXPECT_NEAR(sampled[i], exact[i], 0.02);
      EXPECT_NEAR(exact[i], exact[pixels - 1 - i], 1e-12);
    }
    EXPECT_NEAR(std::accumulate(exact.begin(), exact.end(), 0.0), area, 1e-9);
    EXPECT_NEAR(sum, area, 0.02 * area);
  }
}

TEST(RandomNumbers, FillOrdersAndDistributions) {
  srandom(1);
  for (SInt32 count = 1; count < 40; ++count) {
    std::vector<SInt32> list(static_cast<std::size_t>(count));
    GL_RandomOrder(list.data(), count);
    std::sort(list.begin(), list.end());
    for (SInt32 i = 0; i < count; ++i)
      ASSERT_EQ(list[static_cast<std::size_t>(i)], i + 1);
    for (const SInt32 total : {count, count + 3, count * 50}) {
      GL_RandomDistribution(list.data(), count, total);
      ASSERT_EQ(std::accumulate(list.begin(), list.end(), 0), total);
      ASSERT_GE(*std::min_element(list.begin(), list.end()), 1);
    }
    const SInt32 x = GL_RandModRange(-3, count);
    ASSERT_TRUE(x >= -3 && x < count);
    ASSERT_LT(GL_RandomFloat(), 1);
  }
}

TEST(TestSeries, DrawWithinLimitsAndFavourRareValues) {
  srandom(2);
  const SInt32 lows[] = {0, -2, 5}, highs[] = {3, 2, 6};
  const GL_TestFilter filter = [](SInt32, const SInt32* v) -> Boolean { return v[0] + v[1] != 0; };
  SInt32 values[3 * 10];
  GL_GenerateRandomTestSeries3(9, 3, lows, highs, filter, values);
  std::set<std::vector<SInt32>> seen;
  for (int test = 0; test < 9; ++test) {
    const SInt32* v = values + 3 * test;
    seen.insert({v, v + 3});
    for (int p = 0; p < 3; ++p)
      EXPECT_TRUE(v[p] >= lows[p] && v[p] < highs[p]);
    EXPECT_NE(v[0] + v[1], 0);
  }
  EXPECT_EQ(seen.size(), 9U);
  double frequencies[3 * 4] = {};
  GL_CalcTestValueFrequencies(4000, 3, lows, highs, filter, 4, frequencies);
  for (int p = 0; p < 3; ++p)
    EXPECT_NEAR(std::accumulate(frequencies + 4 * p, frequencies + 4 * p + 4, 0.0), 1, 1e-9);
  // The first value is drawn nine times as often as the second; the series evens that out.
  const SInt32 low = 0, high = 2;
  const double skewed[] = {0.9, 0.1};
  int twos = 0;
  double correction = 0;
  for (int i = 0; i < 4000; ++i) {
    SInt32 value = 0;
    GL_GenerateRandomTestSeries4(1, 1, &low, &high, nullptr, skewed, 2, &value, &correction);
    twos += value;
  }
  EXPECT_NEAR(twos, 3600, 120);
  EXPECT_EQ(correction, 1);
  const double never[] = {1, 0};
  SInt32 value = 0;
  GL_GenerateRandomTestSeries4(1, 1, &low, &high, nullptr, never, 2, &value, &correction);
  EXPECT_EQ(correction, HUGE_VAL);
}

}  // namespace
