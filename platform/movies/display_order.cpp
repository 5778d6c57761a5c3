#include "display_order.h"

#include <algorithm>

#include "toolbox_records.h"

namespace quillmere::movies {

namespace {

/// More samples than this are not sorted.
constexpr UInt64 kMostSamples = UInt64{1} << 24;

std::unique_ptr<DisplayOrder> MakeOrder(const SampleTable& table) {
  struct Shown {
    SInt64 begin;
    SInt64 duration;
    UInt32 sample;
  };
  std::vector<Shown> shown;
  shown.reserve(table.sample_count());
  SampleTable::RunWalk walk(table, 0);
  SampleInfo first = {};
  UInt64 count = 0;
  UInt64 size = 0;
  while (walk.Next(&first, &count, &size)) {
    for (UInt64 i = 0; i < count; ++i) {
      const SInt64 decoded = first.decode_time + static_cast<SInt64>(i) * first.duration;
      shown.push_back(
          {decoded + first.composition_offset, first.duration, static_cast<UInt32>(shown.size())});
    }
  }
  if (!std::ranges::is_sorted(shown, {}, &Shown::begin))
    std::ranges::stable_sort(shown, {}, &Shown::begin);
  auto order = std::make_unique<DisplayOrder>();
  order->begins.reserve(shown.size());
  order->samples.reserve(shown.size());
  for (const Shown& each : shown) {
    order->begins.push_back(each.begin);
    order->samples.push_back(each.sample);
    order->end = std::max(order->end, each.begin + each.duration);
  }
  return order;
}

}  // namespace

OSStatus DisplayView::Open(MediaRecord* media) {
  const OSStatus status = SampleTableOf(media, &table_);
  if (status != noErr) return status;
  if (!table_->has_composition_offsets()) return noErr;
  if (table_->sample_count() > kMostSamples) return invalidSampleTable;
  if (!media->display) media->display = MakeOrder(*table_);
  order_ = media->display.get();
  return noErr;
}

SInt64 DisplayView::begin() const {
  return order_ != nullptr && !order_->begins.empty() ? order_->begins.front() : 0;
}

SInt64 DisplayView::end() const {
  return order_ != nullptr ? order_->end : table_->duration();
}

ShownSample DisplayView::Sorted(std::size_t index) const {
  const std::vector<SInt64>& begins = order_->begins;
  const SInt64 next = index + 1 < begins.size() ? begins[index + 1] : order_->end;
  return {order_->samples[index], begins[index], next - begins[index]};
}

std::optional<ShownSample> DisplayView::Decoded(std::optional<UInt64> sample) const {
  ShownSample shown = {sample.value_or(0), 0, 0};
  if (!sample || !table_->TimeOfSample(*sample, &shown.begin, &shown.duration)) return std::nullopt;
  return shown;
}

std::optional<ShownSample> DisplayView::At(SInt64 time) const {
  if (order_ == nullptr) return Decoded(table_->SampleAtTime(time));
  return time < end() ? LastUpTo(time) : std::nullopt;
}

std::optional<ShownSample> DisplayView::FirstFrom(SInt64 time) const {
  if (order_ != nullptr) {
    const auto found = std::ranges::lower_bound(order_->begins, time);
    if (found == order_->begins.end()) return std::nullopt;
    return Sorted(static_cast<std::size_t>(found - order_->begins.begin()));
  }
  auto shown = Decoded(table_->SampleAtTime(std::max(time, SInt64{0})));
  if (shown && shown->begin < time)
    shown = Decoded(table_->SampleAtTime(shown->begin + shown->duration));
  return shown;
}

std::optional<ShownSample> DisplayView::LastUpTo(SInt64 time) const {
  if (order_ != nullptr) {
    const auto found = std::ranges::upper_bound(order_->begins, time);
    if (found == order_->begins.begin()) return std::nullopt;
    return Sorted(static_cast<std::size_t>(found - order_->begins.begin()) - 1);
  }
  if (time < 0 || table_->duration() == 0) return std::nullopt;
  return Decoded(table_->SampleAtTime(std::min(time, table_->duration() - 1)));
}

}  // namespace quillmere::movies
