#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "GL_Math_Ratios.h"
#include "plain_fraction_scan.h"

bool operator==(const LongRatio& a, const LongRatio& b) {
  return a.n == b.n && a.d == b.d;
}

void PrintTo(const LongRatio& ratio, std::ostream* out) {
  *out << ratio.n << "/" << ratio.d;
}

namespace {

__extension__ using Wide = __int128;

constexpr SInt32 kHighest = std::numeric_limits<SInt32>::max();
constexpr SInt32 kLowest = std::numeric_limits<SInt32>::min();
constexpr UInt32 kHighestD = std::numeric_limits<UInt32>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Expected {
  bool exact;
  LongRatio ratio;
};

/// n / d by 128-bit arithmetic; where it does not fit, only that is known.
Expected Reduced(Wide n, Wide d, UInt32 largest_d = 4294967294U) {
  if (d < 0) {
    n = -n;
    d = -d;
  }
  Wide a = n < 0 ? -n : n;
  Wide b = d;
  while (b != 0) {
    const Wide rest = a % b;
    a = b;
    b = rest;
  }
  n /= a;
  d /= a;
  const bool exact = n <= kHighest - 1 && n >= -(kHighest - 1) && d <= largest_d;
  return {exact, {exact ? static_cast<SInt32>(n) : 0, exact ? static_cast<UInt32>(d) : 0}};
}

/// an/ad + bn/bd, exact as long as the common denominator and the sum over it stay within 63 bits.
Expected Sum(Wide an, Wide ad, Wide bn, Wide bd) {
  constexpr double kLargestSum = 0x1p63;
  const auto divisor = std::gcd(static_cast<SInt64>(ad), static_cast<SInt64>(bd));
  const Wide common = ad / divisor * bd;
  if (common > std::numeric_limits<SInt64>::max()) return {false, {}};
  const Wide a = an * (common / ad);
  const Wide b = bn * (common / bd);
  if (std::fabs(static_cast<double>(a) + static_cast<double>(b)) > kLargestSum) return {false, {}};
  return Reduced(a + b, common);
}

/// Mostly numbers of any magnitude, often limits and their neighbours.
class Operands {
 public:
  LongRatio Next() { return {Numerator(), Denominator()}; }
  SInt32 Numerator() {
    static constexpr SInt32 kLimits[] = {0, 1, -1, kHighest, kLowest, kHighest - 1, kLowest + 1};
    if (random_() % 6 == 0) return kLimits[random_() % std::size(kLimits)];
    return static_cast<SInt32>(random_()) >> random_() % 32;
  }
  UInt32 Denominator() {
    static constexpr UInt32 kLimits[] = {1, 2, kHighestD, kHighestD - 1, 0x7FFFFFFF, 0x80000000};
    if (random_() % 6 == 0) return kLimits[random_() % std::size(kLimits)];
    return std::max(static_cast<UInt32>(random_()) >> random_() % 32, 1U);
  }

 private:
  std::mt19937 random_{7};
};

TEST(LongRatios, AgreeWithWideArithmetic) {
  Operands operands;
  int approximated = 0;
  for (int i = 0; i < 1000000; ++i) {
    const LongRatio a = operands.Next();
    const LongRatio b = operands.Next();
    const Wide an = a.n;
    const Wide ad = a.d;
    const Wide bn = b.n;
    const Wide bd = b.d;
    SCOPED_TRACE(testing::PrintToString(a) + ", " + testing::PrintToString(b));
    const struct {
      Boolean (*operation)(const LongRatio*, const LongRatio*, LongRatio*);
      Expected expected;
    } cases[] = {{GL_LongRatioMul2, Reduced(an * bn, ad * bd)},
                 {GL_LongRatioAdd2, Sum(an, ad, bn, bd)},
                 {GL_LongRatioSubtract2, Sum(an, ad, -bn, bd)}};
    for (const auto& c : cases) {
      // A search costs microseconds, so most results that do not fit are left out.
      if (!c.expected.exact && ++approximated % 50 != 0) continue;
      LongRatio result;
      const Boolean exact = c.operation(&a, &b, &result);
      ASSERT_EQ(exact != 0, c.expected.exact);
      if (c.expected.exact) {
        ASSERT_EQ(result, c.expected.ratio);
      }
    }
    LongRatio reduced = a;
    GL_ReduceLongRatio(&reduced);
    const Wide product = an * reduced.d;
    ASSERT_TRUE(product == reduced.n * ad &&
                GL_GetGCD(static_cast<UInt64>(std::abs(SInt64{reduced.n})), reduced.d) == 1);
    ASSERT_EQ(GL_EqualLongRatio(&a, &b) != 0, an * bd == bn * ad);
    const bool greater = a.n < 0 && b.n < 0 ? an * bd < bn * ad : an * bd > bn * ad;
    ASSERT_EQ(GL_GreaterLongRatio(&a, &b) != 0, greater && !(a.n == 0 && b.n < 0));
  }
}

TEST(LongRatios, DivideAsTheProductWithTheInverse) {
  Operands operands;
  for (int i = 0; i < 100000; ++i) {
    const LongRatio a = operands.Next();
    const LongRatio b = operands.Next();
    if (b.n == 0) continue;
    const Expected inverse = Reduced(b.d, b.n, 2147483646U);
    if (!inverse.exact) continue;
    const Expected quotient = Reduced(Wide{a.n} * inverse.ratio.n, Wide{a.d} * inverse.ratio.d);
    if (!quotient.exact) continue;
    LongRatio result;
    ASSERT_TRUE(GL_LongRatioDiv2(&a, &b, &result));
    ASSERT_EQ(result, quotient.ratio);
    LongRatio rest;
    UInt32 whole = 0;
    ASSERT_TRUE(GL_LongRatioDiv2ToLong(&a, &b, &whole, &rest));
    ASSERT_EQ(whole, static_cast<UInt32>(quotient.ratio.n) / quotient.ratio.d);
    ASSERT_EQ(static_cast<UInt32>(rest.n) + whole * rest.d, static_cast<UInt32>(quotient.ratio.n));
  }
}

TEST(LongRatios, ComeFromWideNumbers) {
  constexpr SInt64 kWideLowest = std::numeric_limits<SInt64>::min();
  constexpr SInt64 kWideHighest = std::numeric_limits<SInt64>::max();
  const struct {
    SInt64 n, d;
    bool exact;
    LongRatio created;
  } cases[] = {
      {3, 0, false, {kHighest, 1}},
      {-3, 0, false, {kLowest, 1}},
      {0, 0, false, {1, 1}},
      {4, -6, true, {-2, 3}},
      {-4, -6, true, {2, 3}},
      {0, 7, true, {0, 1}},
      {0, -7, true, {0, 1}},
      {2147483646, 1, true, {2147483646, 1}},
      {2147483647, 1, false, {2147483647, 1}},
      {-2147483647, 1, false, {-2147483647, 1}},
      {1, 2147483646, true, {1, 2147483646}},
      {kWideLowest, kWideLowest, true, {1, 1}},
      {kWideLowest, kWideHighest, false, {-1, 1}},
      {kWideHighest, kWideLowest, false, {-1, 1}},
      {1, kWideLowest, false, {0, 1}},
      {kWideLowest, 1, false, {-kHighest, 1}},
  };
  for (const auto& c : cases) {
    LongRatio ratio = {9, 9};
    EXPECT_EQ(GL_CreateLongRatio(c.n, c.d, &ratio) != 0, c.exact) << c.n << "/" << c.d;
    if (c.exact || c.d == 0 || c.created.d == 1) {
      LongRatio scanned = c.created;
      if (c.n == kHighest || c.n == -kHighest) {
        ScanForBestFraction(static_cast<double>(c.n), kHighest, 1000000, &scanned.n, &scanned.d);
      }
      EXPECT_EQ(ratio, scanned) << c.n << "/" << c.d;
    }
    LongRatio set = {9, 9};
    EXPECT_EQ(GL_SetLongRatioFromSInt64(c.n, c.d, &set) != 0, c.exact);
    EXPECT_EQ(set, ratio);
  }
  LongRatio ratio;
  EXPECT_TRUE(GL_SetLongRatioFromSInt64(1, 4294967294, &ratio));
  EXPECT_EQ(ratio, (LongRatio{1, 4294967294U}));
  EXPECT_FALSE(GL_CreateLongRatio(1, 2147483647, &ratio));
  EXPECT_FALSE(GL_SetLongRatioFromSInt64(1, 4294967295, &ratio));
}

TEST(LongRatios, SaturateAndTakeTheirOwnResult) {
  const LongRatio large = {65536, 1};
  LongRatio ratio;
  EXPECT_FALSE(GL_LongRatioMul2(&large, &large, &ratio));
  EXPECT_EQ(ratio, (LongRatio{kHighest, 1}));

  const LongRatio zero = {0, 1};
  EXPECT_FALSE(GL_LongRatioDiv2(&large, &zero, &ratio));
  EXPECT_EQ(ratio, (LongRatio{kHighest, 1}));

  ratio = {-9, 6};
  const LongRatio factor = {5, 3};
  EXPECT_TRUE(GL_LongRatioMul2(&ratio, &factor, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-5, 2}));
  EXPECT_TRUE(GL_LongRatioInvert(&ratio, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-2, 5}));
  EXPECT_TRUE(GL_LongRatioSubtract2(&ratio, &ratio, &ratio));
  EXPECT_EQ(ratio, (LongRatio{0, 1}));

  // Denominators whose common multiple is beyond 63 bits.
  const LongRatio a = {1, 4294967291U};
  const LongRatio b = {1, 4294967279U};
  EXPECT_FALSE(GL_LongRatioAdd2(&a, &b, &ratio));
  // Records without a denominator are infinite, or nothing.
  for (const SInt32 n : {5, -5, 0}) {
    const LongRatio bad = {n, 0};
    EXPECT_FALSE(GL_LongRatioMulLong(&bad, 3, &ratio));
    EXPECT_EQ(ratio, (n == 0 ? LongRatio{0, 1} : LongRatio{n > 0 ? kHighest : -kHighest, 1}));
    EXPECT_FALSE(GL_LongRatioAddLong(&bad, 3, &ratio));
    EXPECT_EQ(ratio, (n == 0 ? LongRatio{0, 1} : LongRatio{n > 0 ? kHighest : -kHighest, 1}));
    EXPECT_TRUE(GL_EqualLongRatio(&bad, &bad));
  }
}

TEST(LongRatios, TakeWholeNumbers) {
  const LongRatio a = {3, 4};
  LongRatio ratio;
  EXPECT_TRUE(GL_LongRatioMulLong(&a, -2, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-3, 2}));
  EXPECT_TRUE(GL_LongRatioDivByLong(&a, -6, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-1, 8}));
  EXPECT_TRUE(GL_LongDivByLongRatio(6, &a, &ratio));
  EXPECT_EQ(ratio, (LongRatio{8, 1}));
  EXPECT_TRUE(GL_LongRatioAddLong(&a, -1, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-1, 4}));
  EXPECT_TRUE(GL_LongRatioSubtractLong(&a, 1, &ratio));
  EXPECT_EQ(ratio, (LongRatio{-1, 4}));
  EXPECT_TRUE(GL_LongSubtractLongRatio(2, &a, &ratio));  // minus the whole number
  EXPECT_EQ(ratio, (LongRatio{-5, 4}));
  // The negative of the lowest number is taken in 64 bits.
  EXPECT_TRUE(GL_LongSubtractLongRatio(kLowest, &a, &ratio) == 0 && ratio.n > 0);
  const LongRatio negative = {kLowest, 3};
  GL_AbsLongRatio(&negative, &ratio);
  EXPECT_EQ(ratio, (LongRatio{kHighest, 3}));
}

TEST(LongRatios, CompareAndConvert) {
  const LongRatio half = {1, 2};
  const LongRatio minus_half = {-2, 4};
  const LongRatio quarter = {1, 4};
  EXPECT_EQ(GL_LongRatioPercDiff(&half, &minus_half), 1.0F);
  EXPECT_EQ(GL_LongRatioPercDiff(&half, &quarter), 0.5F);
  EXPECT_EQ(GL_LongRatioPercDiff(&quarter, &half), 0.5F);
  const LongRatio minus_one = {-1, 1};
  const LongRatio zero = {0, 1};
  const LongRatio minus_three = {-3, 1};
  EXPECT_FALSE(GL_GreaterLongRatio(&zero, &minus_one));
  EXPECT_TRUE(GL_GreaterLongRatio(&half, &minus_one));
  EXPECT_TRUE(GL_GreaterLongRatio(&minus_three, &minus_one));
  const LongRatio odd = {1, 0xFFFF0001U};
  EXPECT_EQ(GL_LongRatioToFloat(&odd), 1.0F / (65535.0F * 65536.0F + 1.0F));
  const Rect rect = {-1, 2, kHighest >> 16, -32768};
  LongRatio sides[4];
  GL_RectToLongRatio(&rect, &sides[0], &sides[1], &sides[2], &sides[3]);
  EXPECT_EQ(sides[0], (LongRatio{2, 1}));
  EXPECT_EQ(sides[1], (LongRatio{-32768, 1}));
  EXPECT_EQ(sides[2], (LongRatio{-1, 1}));
  EXPECT_EQ(sides[3], (LongRatio{32767, 1}));
}

TEST(LongRatios, FindCommonDivisorsAndMultiples) {
  EXPECT_EQ(GL_GetGCD(0, 0), 0U);
  EXPECT_EQ(GL_GetGCD(12, 0), 12U);
  EXPECT_EQ(GL_GetGCD(~UInt64{0}, 15), 15U);
  EXPECT_EQ(GL_GetLCM(0, 6), 6U);
  EXPECT_EQ(GL_GetLCM(4, 6), 12U);
  EXPECT_EQ(GL_GetLCM(0x7FFFFFFFFFFFFFFF, 1), 0x7FFFFFFFFFFFFFFFU);
  EXPECT_EQ(GL_GetLCM(UInt64{1} << 63, 1), 0U);
}

TEST(LongRatios, ReduceFactorsToA31BitProduct) {
  const struct {
    SInt32 a, b;
    bool reduce_a, reduce_b;
  } cases[] = {{1000000, 2000, true, false},    {2000, 1000000, false, true},
               {70000, 60000, true, true},      {60000, 70000, true, true},
               {50000, 50000, true, true},      {kHighest, 2, true, false},
               {kHighest, kHighest, true, true}};
  for (const auto& c : cases) {
    Boolean reduce_a = 9;
    Boolean reduce_b = 9;
    double factor_a = 1;
    double factor_b = 1;
    GL_Reduce32bitFactors(c.a, c.b, &reduce_a, &reduce_b, &factor_a, &factor_b);
    EXPECT_EQ(reduce_a != 0, c.reduce_a) << c.a << ", " << c.b;
    EXPECT_EQ(reduce_b != 0, c.reduce_b) << c.a << ", " << c.b;
    EXPECT_LE(factor_a * c.a * factor_b * c.b, 2147483647.0 * 1.0000001) << c.a << ", " << c.b;
  }
}

/// Values of all magnitudes, many of them hard: simple fractions and their near neighbours, single
/// precision, limits of the range and of the 32-bit denominators.
std::vector<double> ScannedValues(int count) {
  std::mt19937_64 random(5);
  std::vector<double> values = {0.0,
                                -0.0,
                                kInfinity,
                                -kInfinity,
                                3.0e9,
                                -3.0e9,
                                1.0 / 2147483647,
                                std::nextafter(1.0 / 2147483647, 0),
                                -1e-10,
                                2147483647.0,
                                2147483646.5,
                                std::nextafter(2147483647.0, 0),
                                21473 / 4294967295.0,
                                21472.5 / 4294967295.0,
                                5e-324};
  const auto fraction = [&random](UInt64 range) {
    return static_cast<double>(random() % range + 1) / static_cast<double>(random() % range + 1);
  };
  while (values.size() < static_cast<std::size_t>(count)) {
    double value = 0;
    switch (random() % 7) {
      case 0:
        value =
            std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 62) - 84);
        break;
      case 1:
        value = fraction(5000);
        break;
      case 2:
        value = fraction(4294967295);
        break;
      case 3:
        value = static_cast<double>(static_cast<float>(fraction(5000)));
        break;
      case 4:
        value = fraction(500) + std::ldexp(1.0, -static_cast<int>(random() % 60));
        break;
      case 5:
        value = std::nextafter(fraction(50000), random() % 2 == 0 ? 0 : kInfinity);
        break;
      default:
        value = std::exp(std::uniform_real_distribution<>(-22, 22)(random));
    }
    values.push_back(random() % 2 == 0 ? value : -value);
  }
  return values;
}

void ExpectTheScansWinner(double value, UInt32 max_numerator, UInt32 max_tests) {
  LongRatio scanned;
  LongRatio found;
  ScanForBestFraction(value, max_numerator, max_tests, &scanned.n, &scanned.d);
  GL_GetBestN_OverD(value, max_numerator, max_tests, &found.n, &found.d);
  ASSERT_EQ(found, scanned) << testing::PrintToString(value) << ", " << max_numerator << ", "
                            << max_tests;
}

TEST(BestFraction, IsTheScansWinner) {
  // A hundredth of the tests in use, of the same kind: the scan itself is slow.
  for (const double value : ScannedValues(20000))
    ASSERT_NO_FATAL_FAILURE(ExpectTheScansWinner(value, 2147483647, 10000));
  for (const double value : ScannedValues(100))
    ASSERT_NO_FATAL_FAILURE(ExpectTheScansWinner(value, 2147483647, 1000000));
}

TEST(BestFraction, IsTheScansWinnerForOtherBudgets) {
  std::mt19937 random(3);
  for (const double value : ScannedValues(20000)) {
    const UInt32 max_tests = 10 + static_cast<UInt32>(random() % 1000);
    // At most ten passes and a few: the step stays above 0.
    const UInt32 max_numerator = max_tests * (3 + static_cast<UInt32>(random() % 100000));
    ASSERT_NO_FATAL_FAILURE(ExpectTheScansWinner(value, max_numerator, max_tests));
  }
}

TEST(BestFraction, StandsArgumentsOutOfRange) {
  const struct {
    double value;
    UInt32 max_numerator, max_tests;
    LongRatio best;
  } cases[] = {
      {std::numeric_limits<double>::quiet_NaN(), kHighest, 1000000, {0, 1}},
      {0.5, 0, 1000000, {0, 1}},
      {kInfinity, 0, 0, {0, 1}},
      {1.0, 1, 1000000, {0, 1}},
      {0.75, 100, 1000000, {3, 4}},
      {-0.75, 100, 0, {-3, 4}},
      {1e10, kHighestD, 10, {kHighest, 1}},
      {0.75, kHighestD, kHighestD, {3, 4}},
  };
  for (const auto& c : cases) {
    LongRatio best;
    GL_GetBestN_OverD(c.value, c.max_numerator, c.max_tests, &best.n, &best.d);
    EXPECT_EQ(best, c.best) << c.value << ", " << c.max_numerator << ", " << c.max_tests;
  }
}

}  // namespace
