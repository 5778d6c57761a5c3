// Low-pass filters by detectors, of CO_filter.h.

#include <array>

#include "CO_filter.h"
#include "column_private.h"

namespace {

using namespace quillmere::color;

constexpr SInt32 kLeastLines = 5;
constexpr SInt32 kMostPasses = 200;
constexpr SInt32 kSmallCorrection = 5;

/// The five lines that a detector sees, the last being line i.
struct Window {
  SInt32 a, b, c, d, e;
};

/// One pass over a column: what was read of the last five lines, and what is proposed for them.
class Pass {
 public:
  Pass(SInt32 lines, UInt8* column, SInt32 stride, SInt32* largest)
      : lines_(lines), column_(column, stride), largest_(largest) {}

  /// `detect(this, window)` is called from line 3 on and proposes corrections; with `smooth_start`
  /// the first two lines are smoothed, with `smooth_end` the last two.
  template <class Detect>
  void Run(bool smooth_start, bool smooth_end, Detect detect) {
    for (line_ = 0; line_ < lines_; ++line_) {
      values_[Place(line_)] = column_[line_];
      weights_[Place(line_)] = 0;
      if (smooth_start && line_ == 1) column_[0] = ToSample(End(0, 1));
      if (smooth_start && line_ == 2) column_[1] = ToSample(SmoothedAt(1));
      if (line_ < 3) continue;
      detect(this, WindowHere());
      WriteProposal(line_ - 3);
    }
    for (SInt32 line = lines_ - 3; line < lines_; ++line)
      WriteProposal(line);
    if (!smooth_end) return;
    column_[lines_ - 2] = ToSample(SmoothedAt(lines_ - 2));
    column_[lines_ - 1] = ToSample(End(lines_ - 1, lines_ - 2));
  }

  void Correct(const Window& w, SInt32 b, SInt32 c, SInt32 d) {
    CO_UpdateNewValues(line_, w.b, w.c, w.d, b, c, d, proposals_.data(), weights_.data(), largest_);
  }
  /// Moves b and c toward each other by an amount; 0 or less is none.
  void Approach(const Window& w, SInt32 amount) {
    if (amount <= 0) return;
    const SInt32 up = w.b <= w.c ? amount : -amount;
    Correct(w, up, -up, 0);
  }

 private:
  static std::size_t Place(SInt32 line) { return static_cast<std::size_t>(line % 5); }
  SInt32 Read(SInt32 line) const { return values_[Place(line)]; }
  Window WindowHere() const {
    const SInt32 b = Read(line_ - 3);
    return {line_ == 3 ? b : Read(line_ - 4), b, Read(line_ - 2), Read(line_ - 1), Read(line_)};
  }
  double SmoothedAt(SInt32 line) const {
    return Smoothed(Read(line - 1), Read(line), Read(line + 1));
  }
  double End(SInt32 line, SInt32 next) const { return 0.666 * Read(line) + 0.333 * Read(next); }
  void WriteProposal(SInt32 line) {
    if (weights_[Place(line)] != 0) column_[line] = ToLimitedSample(proposals_[Place(line)]);
  }

  SInt32 lines_;
  Column<UInt8> column_;
  SInt32* largest_;
  SInt32 line_ = 0;
  std::array<SInt32, 5> values_ = {};
  std::array<double, 5> proposals_ = {};
  std::array<double, 5> weights_ = {};
};

void CorrectOutlier(Pass* pass, const Window& w) {
  const SInt32 correction = CO_RemoveOutlier(w.a, w.b, w.c, w.d, w.e);
  if (correction != 0) pass->Correct(w, 0, correction, 0);
}

void CorrectTwitter(Pass* pass, const Window& w) {
  pass->Approach(w, CO_ReduceTwitter(w.a, w.b, w.c, w.d));
}

void CorrectDoubling(Pass* pass, const Window& w) {
  pass->Approach(w, CO_ReduceLineDoubling(w.a, w.b, w.c, w.d));
}

bool IsCrater(const Window& w) {
  return (w.a > w.b && w.b < w.c && w.c > w.d && w.d < w.e) ||
         (w.a < w.b && w.b > w.c && w.c < w.d && w.d > w.e);
}

void CorrectCraterOrOutlier(Pass* pass, const Window& w) {
  if (!IsCrater(w)) {
    CorrectOutlier(pass, w);
    return;
  }
  SInt32 b = 0;
  SInt32 c = 0;
  SInt32 d = 0;
  CO_RemoveCrater(w.a, w.b, w.c, w.d, w.e, &b, &c, &d);
  if (c != 0) pass->Correct(w, b, c, d);
}

void CorrectTwitterAndDoubling(Pass* pass, const Window& w) {
  CorrectTwitter(pass, w);
  CorrectDoubling(pass, w);
}

}  // namespace

void CO_LowPassFilterVertLineNew(SInt32 lineCount, UInt8* column, SInt32 stride) {
  if (lineCount < kLeastLines) return;
  Pass(lineCount, column, stride, nullptr).Run(true, true, CorrectOutlier);
  Pass(lineCount, column, stride, nullptr).Run(false, true, CorrectTwitter);
  Pass(lineCount, column, stride, nullptr).Run(false, true, CorrectDoubling);
}

void CO_LowPassFilterVertLine(SInt32 lineCount, UInt8* column, SInt32 stride) {
  if (lineCount < kLeastLines) return;
  int stage = 1;
  for (SInt32 pass = 1; pass <= kMostPasses && stage < 3; ++pass) {
    SInt32 largest = 0;
    Pass(lineCount, column, stride, &largest)
        .Run(stage == 1, pass == 1,
             stage == 1 ? CorrectCraterOrOutlier : CorrectTwitterAndDoubling);
    if (largest <= kSmallCorrection) ++stage;
  }
}
