#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "CO_filter.h"
#include "ORW_NR_double.h"

namespace {

using Samples = std::vector<int>;

/// A column within a frame of other bytes, which are to stay.
class FramedColumn {
 public:
  static constexpr SInt32 kStride = 6;
  explicit FramedColumn(const Samples& samples)
      : lines_(samples.size()), bytes_(samples.size() * kStride + 40, 0xA5) {
    for (std::size_t i = 0; i < lines_; ++i)
      column()[i * kStride] = static_cast<UInt8>(samples[i]);
  }
  UInt8* column() { return bytes_.data() + 20; }
  SInt32 lines() const { return static_cast<SInt32>(lines_); }
  Samples Read() {
    Samples samples;
    for (std::size_t i = 0; i < lines_; ++i) {
      samples.push_back(column()[i * kStride]);
      column()[i * kStride] = 0xA5;
    }
    EXPECT_EQ(std::count(bytes_.begin(), bytes_.end(), 0xA5),
              static_cast<std::ptrdiff_t>(bytes_.size()));
    return samples;
  }

 private:
  std::size_t lines_;
  std::vector<UInt8> bytes_;
};

/// Random columns: noise, steps, zigzags and flats.
Samples RandomColumn(std::size_t lines, std::mt19937* random) {
  Samples samples(lines);
  const unsigned kind = (*random)() % 4;
  int level = static_cast<int>((*random)() % 256);
  for (std::size_t i = 0; i < lines; ++i) {
    if (kind == 0 || (*random)() % 5 == 0) level = static_cast<int>((*random)() % 256);
    const int zigzag = kind == 2 && i % 2 != 0 ? 40 : kind == 3 && i / 2 % 2 != 0 ? 60 : 0;
    samples[i] = std::clamp(level + zigzag, 0, 255);
  }
  return samples;
}

int Rounded(double sum) {
  return static_cast<int>(std::clamp(sum + 0.49, 0.0, 255.0));
}

/// The pass of a low-pass filter with all its proposals in lists as long as the column.
Samples ReferencePass(const Samples& in, int stage, bool starts, bool ends, int* largest) {
  const std::size_t n = in.size();
  Samples out = in;
  std::vector<double> proposals(n), weights(n);
  const auto propose = [&](std::size_t line, int correction, int weight) {
    if (correction == 0) return;
    proposals[line] = (weights[line] * proposals[line] + (in[line] + correction) * weight) /
                      (weights[line] + weight);
    weights[line] += weight;
    *largest = std::max(*largest, weight);
  };
  if (starts) {
    out[0] = Rounded(0.666 * in[0] + 0.333 * in[1]);
    out[1] = Rounded(0.25 * in[0] + 0.5 * in[1] + 0.25 * in[2]);
  }
  for (std::size_t i = 3; i < n; ++i) {
    const int b = in[i - 3], c = in[i - 2], d = in[i - 1], e = in[i], a = i == 3 ? b : in[i - 4];
    const auto approach = [&](int amount) {
      if (amount <= 0) return;
      const int up = b <= c ? amount : -amount;
      propose(i - 3, up, amount);
      propose(i - 2, -up, amount);
    };
    const bool is_crater = (a > b && b < c && c > d && d < e) || (a < b && b > c && c < d && d > e);
    if (stage == 1 && is_crater) {
      SInt32 of_b, of_c, of_d;
      CO_RemoveCrater(a, b, c, d, e, &of_b, &of_c, &of_d);
      if (of_c != 0) {
        propose(i - 3, of_b, std::abs(of_c));
        propose(i - 2, of_c, std::abs(of_c));
        propose(i - 1, of_d, std::abs(of_c));
      }
    } else if (stage <= 1) {
      const int correction = CO_RemoveOutlier(a, b, c, d, e);
      propose(i - 2, correction, std::abs(correction));
    }
    if (stage == 2 || stage == 3) approach(CO_ReduceTwitter(a, b, c, d));
    if (stage == 2 || stage == 4) approach(CO_ReduceLineDoubling(a, b, c, d));
  }
  for (std::size_t line = 0; line < n; ++line) {
    if (weights[line] != 0) out[line] = Rounded(proposals[line]);
  }
  if (ends) {
    out[n - 2] = Rounded(0.25 * in[n - 3] + 0.5 * in[n - 2] + 0.25 * in[n - 1]);
    out[n - 1] = Rounded(0.666 * in[n - 1] + 0.333 * in[n - 2]);
  }
  return out;
}

Samples ThreePasses(Samples samples) {
  int largest = 0;
  samples = ReferencePass(samples, 0, true, true, &largest);
  samples = ReferencePass(samples, 3, false, true, &largest);
  return ReferencePass(samples, 4, false, true, &largest);
}

Samples IteratedPasses(Samples samples) {
  int stage = 1;
  for (int pass = 1; pass <= 200 && stage < 3; ++pass) {
    int largest = 0;
    samples = ReferencePass(samples, stage, stage == 1, pass == 1, &largest);
    if (largest <= 5) ++stage;
  }
  return samples;
}

/// Filters by taps with the lines near the ends by shorter ones.
Samples ByTaps(const Samples& in, const double* taps, int count) {
  const int n = static_cast<int>(in.size()), half = count / 2;
  const auto at = [&](int i) { return in[static_cast<std::size_t>(i)]; };
  Samples out(in.size());
  for (int i = 0; i < n; ++i) {
    double sum = 0;
    int value = 0;
    if (i == 0 || i == n - 1) {
      value = Rounded((at(i) + at(i == 0 ? 1 : n - 2)) / 2.0);
    } else if (i < half || i >= n - half) {
      value = Rounded(at(i - 1) / 4.0 + at(i) / 2.0 + at(i + 1) / 4.0);
    } else {
      for (int k = 0; k < count; ++k)
        sum += taps[k] * at(i - half + k);
      value = Rounded(sum);
      const auto [least, most] = std::minmax({at(i - 1), at(i), at(i + 1)});
      if (count == 7) value = std::clamp(value, least, most);
    }
    out[static_cast<std::size_t>(i)] = value;
  }
  return out;
}

TEST(VerticalFilters, AgreeWithWholeColumnReferences) {
  double taps7[7], taps9[9];
  ASSERT_EQ(NR_MakeLowPassFilter7_d(taps7), noErr);
  ASSERT_EQ(NR_MakeLowPassFilter9_d(taps9), noErr);
  constexpr SInt32 kStride = FramedColumn::kStride;
  const struct {
    std::function<void(FramedColumn*)> filter;
    std::function<Samples(const Samples&)> reference;
  } filters[] = {
      {[](FramedColumn* c) { CO_LowPassFilterVertLineNew(c->lines(), c->column(), kStride); },
       ThreePasses},
      {[](FramedColumn* c) { CO_LowPassFilterVertLine(c->lines(), c->column(), kStride); },
       IteratedPasses},
      {[&](FramedColumn* c) { CO_LowPassFilterVertLine7(c->lines(), taps7, c->column(), kStride); },
       [&](const Samples& in) { return ByTaps(in, taps7, 7); }},
      {[&](FramedColumn* c) { CO_LowPassFilterVertLine9(c->lines(), taps9, c->column(), kStride); },
       [&](const Samples& in) { return ByTaps(in, taps9, 9); }},
  };
  std::mt19937 random(2);
  for (int round = 0; round < 3000; ++round) {
    const std::size_t lines = 1 + random() % 40;
    const Samples samples = RandomColumn(lines, &random);
    const Samples flat(lines, 200);
    for (const auto& each : filters) {
      SCOPED_TRACE(testing::Message() << "filter " << &each - filters << " round " << round);
      FramedColumn column(samples), even(flat);
      each.filter(&column);
      each.filter(&even);
      ASSERT_EQ(column.Read(), lines < 5 ? samples : each.reference(samples));
      ASSERT_EQ(even.Read(), flat);
    }
  }
}

TEST(VerticalFilters, HalveTheLines) {
  double taps[8];
  ASSERT_EQ(NR_MakeSubsamplingFilter8_d(taps), noErr);
  constexpr double kTent[] = {0.125, 0.375, 0.375, 0.125};
  std::mt19937 random(9);
  for (std::size_t lines = 0; lines < 40; ++lines) {
    SCOPED_TRACE(lines);
    const Samples in = RandomColumn(lines, &random);
    const auto at = [&](std::size_t i) { return in[i]; };
    const auto mean = [&](std::size_t row) {
      return Rounded((at(2 * row) + at(2 * row + 1)) / 2.0);
    };
    const auto sum = [&](const double* weights, std::size_t count, std::size_t first) {
      double total = 0;
      for (std::size_t k = 0; k < count; ++k)
        total += weights[k] * at(first + k);
      return Rounded(total);
    };
    Samples tent, eight;
    for (std::size_t row = 0; row < lines / 2; ++row) {
      const bool has_four = row >= 1 && 2 * row + 2 < lines;
      if (row == 0 || has_four || lines % 2 == 0)
        tent.push_back(has_four ? sum(kTent, 4, 2 * row - 1) : mean(row));
      eight.push_back(row >= 2 && 2 * row + 4 < lines ? sum(taps, 8, 2 * row - 3) : mean(row));
    }
    FramedColumn source(in), to_tent(Samples(tent.size(), 0)), to_eight(Samples(eight.size(), 0));
    CO_SubsampleVertLineTent(source.lines(), source.column(), FramedColumn::kStride,
                             to_tent.column(), FramedColumn::kStride);
    CO_SubsampleVertLine8(source.lines(), taps, source.column(), FramedColumn::kStride,
                          to_eight.column(), FramedColumn::kStride);
    ASSERT_EQ(to_tent.Read(), tent);
    ASSERT_EQ(to_eight.Read(), eight);
    ASSERT_EQ(source.Read(), in);
  }
}

TEST(VerticalFilters, OfFrameColumns) {
  std::mt19937 random(12);
  for (std::size_t lines = 0; lines < 60; ++lines) {
    SCOPED_TRACE(lines);
    const Samples in = RandomColumn(lines, &random);
    const auto clamped = [&](int i) {
      return in[static_cast<std::size_t>(std::clamp(i, 0, static_cast<int>(lines) - 1))];
    };
    // A frame of three pixels; the columns of its second pair of bytes.
    using Filter = void (*)(SInt32, SInt32, UInt8*, SInt32, UInt8*);
    const auto filtered = [&](Filter filter, int offset) {
      FramedColumn column(in);
      std::vector<UInt8> scratch(lines + 4 + 8, 0x5A);
      filter(3, column.lines(), column.column() - 2 - offset, 1, scratch.data());
      EXPECT_EQ(std::count(scratch.end() - 8, scratch.end(), 0x5A), 8);
      return column.Read();
    };
    Samples smooth, soft = in, joined = in;
    const int n = static_cast<int>(lines);
    for (int i = 0; i < n; ++i) {
      smooth.push_back((clamped(i - 2) + 2 * clamped(i - 1) + 2 * clamped(i) + 2 * clamped(i + 1) +
                        clamped(i + 2) + 3) /
                       8);
      const int at = clamped(i);
      const int before = i == 0 && n > 1 ? clamped(1) : clamped(i - 1);
      const int after = i == n - 1 && n > 1 ? clamped(n - 2) : clamped(i + 1);
      const int two_before = i == 1 ? clamped(1) : i == 0 ? clamped(0) : clamped(i - 2);
      const int two_after = i == n - 2 ? clamped(n - 2) : clamped(i + 2);
      if ((at > before && at > after) || (at < before && at < after)) {
        const int out = std::min(std::abs(at - before), std::abs(at - after)) / 4;
        const int pull = (two_before + 2 * at + two_after + 1) / 4 - at;
        soft[static_cast<std::size_t>(i)] += std::clamp(pull, -out, out);
      }
    }
    EXPECT_EQ(filtered(CO_FilterVertChromaLine, 0), smooth);
    EXPECT_EQ(filtered(CO_FilterVertBrLine, 1), soft);
    // No single peaks or dips are left, and the ends stay.
    const Samples level = filtered(CO_FilterVertChromaLine2, 0);
    if (lines > 0) {
      EXPECT_EQ(level.front(), in.front());
      EXPECT_EQ(level.back(), in.back());
    }
  }
  // The zigzag comes together by quarters of its steps; then a peak and a dip are left, and go.
  const UInt8 zigzag[] = {100, 100, 140, 100, 140, 140};
  const UInt8 expected[] = {100, 110, 110, 120, 140, 140};
  std::vector<UInt8> frame(2 * 6), scratch(10);
  for (std::size_t i = 0; i < 6; ++i)
    frame[2 * i] = zigzag[i];
  CO_FilterVertChromaLine2(1, 6, frame.data(), 0, scratch.data());
  for (std::size_t i = 0; i < 6; ++i)
    EXPECT_EQ(frame[2 * i], expected[i]) << i;
}

TEST(VerticalDetectors, MeasureWhatStandsOut) {
  EXPECT_EQ(CO_RemoveOutlier(100, 100, 200, 100, 100), -80);
  EXPECT_EQ(CO_RemoveOutlier(100, 100, 120, 100, 100), 0);
  EXPECT_EQ(CO_RemoveOutlier(100, 100, 10, 100, 100), 70);
  EXPECT_EQ(CO_ReduceTwitter(50, 10, 60, 20), 25);
  EXPECT_EQ(CO_ReduceTwitter(50, 10, 60, 55), 5);
  EXPECT_EQ(CO_ReduceTwitter(10, 50, 20, 60), 15);
  EXPECT_EQ(CO_ReduceTwitter(10, 20, 30, 40), 0);
  EXPECT_EQ(CO_ReduceLineDoubling(10, 10, 100, 100), 18);
  EXPECT_EQ(CO_ReduceLineDoubling(10, 12, 20, 22), 0);
  EXPECT_EQ(CO_ReduceLineDoubling(20, 18, 60, 61), -36);
  SInt32 b, c, d;
  CO_RemoveCrater(60, 40, 100, 42, 70, &b, &c, &d);
  EXPECT_EQ(c, -38);
  EXPECT_EQ(b, 19);
  CO_RemoveCrater(40, 60, 10, 58, 30, &b, &c, &d);
  EXPECT_EQ(c, 31);
  EXPECT_EQ(d, -15);

  double values[5] = {}, weights[5] = {};
  SInt32 largest = 3;
  values[2] = 100;
  weights[2] = 10;
  CO_UpdateNewValues(4, 0, 90, 0, 0, 30, 0, values, weights, &largest);
  EXPECT_EQ(values[2], 115);
  EXPECT_EQ(weights[2], 40);
  EXPECT_EQ(weights[1] + weights[3], 0);
  EXPECT_EQ(largest, 30);
  CO_UpdateNewValues(4, 0, 90, 0, 5, 0, 5, values, weights, nullptr);
  EXPECT_EQ(weights[1], 0);
}

}  // namespace
