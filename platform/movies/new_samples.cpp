#include "new_samples.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <utility>

#include "big_endian.h"
#include "movie_toolbox.h"
#include "sample_table.h"

namespace quillmere::movies {

namespace {

/// A size table lists each sample when sizes differ; more than this many are not listed.
constexpr UInt64 kMaximumSamples = UInt64{1} << 24;
/// Bytes that follow each other make one chunk up to this, so that tracks can still be interleaved.
constexpr UInt64 kLargestChunk = UInt64{1} << 20;
constexpr UInt64 kMaximum32 = std::numeric_limits<UInt32>::max();
constexpr std::size_t kTableHead = 8;   // version and flags, count
constexpr std::size_t kSizesHead = 12;  // the same behind a constant size

/// The entries of a table of an `stbl`; none if it isn't there, nothing if it is too short.
std::optional<std::span<const UInt8>> EntriesOf(const Atom& stbl, OSType type,
                                                std::size_t entry_size) {
  const Atom* table = stbl.Find(type);
  if (table == nullptr) return std::span<const UInt8>();
  const std::span<const UInt8> bytes = table->payload();
  if (bytes.size() < kTableHead) return std::nullopt;
  const UInt64 size = UInt64{ReadU32(bytes.data() + 4)} * entry_size;
  if (size > bytes.size() - kTableHead) return std::nullopt;
  return bytes.subspan(kTableHead, static_cast<std::size_t>(size));
}

/// A table of an `stbl` in the making: the head and entries of the old one.
class GrowingTable {
 public:
  GrowingTable(const Atom& stbl, OSType type, std::size_t entry_size)
      : type_(type), entry_size_(entry_size) {
    const Atom* old = stbl.Find(type);
    const auto entries = EntriesOf(stbl, type, entry_size);
    is_good_ = entries.has_value();
    if (!is_good_) return;
    bytes_.assign(kTableHead, 0);
    if (old != nullptr) std::copy_n(old->payload().data(), 4, bytes_.data());
    bytes_.insert(bytes_.end(), entries->begin(), entries->end());
  }
  bool is_good() const { return is_good_; }
  UInt64 Count() const { return (bytes_.size() - kTableHead) / entry_size_; }
  /// The last entry; null if there is none.
  UInt8* Last() { return Count() > 0 ? bytes_.data() + bytes_.size() - entry_size_ : nullptr; }
  const UInt8* begin() const { return bytes_.data() + kTableHead; }
  std::vector<UInt8>& bytes() { return bytes_; }
  /// Appends so many samples of a value, to the last entry where that has it.
  void AppendRun(const Run& run) {
    UInt8* const last = Last();
    if (last != nullptr && ReadU32(last + 4) == run.value &&
        ReadU32(last) + UInt64{run.count} <= kMaximum32) {
      WriteU32(last, ReadU32(last) + run.count);
      return;
    }
    AppendU32(&bytes_, run.count);
    AppendU32(&bytes_, run.value);
  }
  /// Makes a table of runs tell of exactly so many samples; those that lack one get a value.
  void FitTo(UInt64 samples, UInt32 value) {
    UInt64 told = 0;
    UInt64 kept = 0;
    for (; kept < Count() && told < samples; ++kept)
      told += ReadU32(begin() + entry_size_ * kept);
    bytes_.resize(kTableHead + entry_size_ * kept);
    if (told > samples) WriteU32(Last(), ReadU32(Last()) - static_cast<UInt32>(told - samples));
    if (told < samples) AppendRun({static_cast<UInt32>(samples - told), value});
  }
  void StoreIn(Atom* stbl) {
    WriteU32(bytes_.data() + 4, static_cast<UInt32>(Count()));
    Atom* table = stbl->Find(type_);
    if (table == nullptr) table = &stbl->Add(Atom(type_));
    table->set_payload(std::move(bytes_));
  }

 private:
  OSType type_;
  std::size_t entry_size_;
  bool is_good_ = false;
  std::vector<UInt8> bytes_;
};

bool HasValue(const std::vector<Run>& runs, UInt32 value) {
  return std::ranges::any_of(runs, [value](const Run& run) { return run.value == value; });
}

}  // namespace

OSStatus NewSamples::Add(const NewSampleRun& run) {
  UInt64 end = 0;
  if (run.count == 0) return paramErr;
  if (!AddFits(run.offset, run.bytes, &end)) return invalidSampleTable;
  if (sample_count_ + run.count > kMaximumSamples) return invalidSampleTable;
  AppendRun(&durations_, run.count, run.duration);
  AppendRun(&compositions_, run.count, static_cast<UInt32>(run.composition_offset));
  AppendRun(&sizes_, run.count, run.size);
  AppendRun(&syncs_, run.count, run.is_sync ? 1 : 0);
  const bool goes_on = !chunks_.empty() && chunks_.back().end == run.offset &&
                       chunks_.back().description == run.description &&
                       end - chunks_.back().offset <= kLargestChunk;
  if (goes_on) {
    chunks_.back().end = end;
    chunks_.back().samples += run.count;
  } else {
    chunks_.push_back({run.offset, end, run.count, run.description});
  }
  duration_ += UInt64{run.duration} * run.count;
  sample_count_ += run.count;
  return noErr;
}

/// Makes the longer tables, all of them before it changes any.
class TableAppender {
 public:
  TableAppender(const NewSamples& added, UInt64 old_count, Atom* stbl)
      : added_(added),
        stbl_(*stbl),
        old_count_(old_count),
        durations_(*stbl, "stts"_4cc, 8),
        compositions_(*stbl, "ctts"_4cc, 8),
        chunk_runs_(*stbl, "stsc"_4cc, 12),
        syncs_(*stbl, "stss"_4cc, 4) {}

  OSStatus Run() {
    const bool is_good = durations_.is_good() && compositions_.is_good() && chunk_runs_.is_good() &&
                         syncs_.is_good() && ReadSizes() && ReadOffsets() && EndLastChunk();
    if (!is_good || old_count_ + added_.sample_count_ > kMaximumSamples) return invalidSampleTable;
    AppendDurations();
    AppendCompositions();
    AppendSyncs();
    AppendSizes();
    AppendChunks();
    AppendDependencies();
    return noErr;
  }

 private:
  /// Reads the number of samples, and what tells their sizes.
  bool ReadSizes() {
    const Atom* table = stbl_.Find("stsz"_4cc);
    compact_ = table == nullptr ? stbl_.Find("stz2"_4cc) : nullptr;
    if (compact_ != nullptr) table = compact_;
    if (table == nullptr) return true;
    const std::span<const UInt8> bytes = table->payload();
    if (bytes.size() < kSizesHead) return false;
    old_size_ = compact_ == nullptr ? ReadU32(bytes.data() + 4) : 0;
    old_bits_ = compact_ == nullptr ? 32 : bytes[7];
    old_sizes_ = bytes.subspan(kSizesHead);
    const bool has_bits = old_bits_ == 4 || old_bits_ == 8 || old_bits_ == 16 || old_bits_ == 32;
    return has_bits && (old_size_ != 0 || (old_count_ * old_bits_ + 7) / 8 <= old_sizes_.size());
  }

  bool ReadOffsets() {
    const bool is_wide = stbl_.Find("co64"_4cc) != nullptr;
    offset_bytes_ = is_wide ? 8 : 4;
    const auto entries = EntriesOf(stbl_, is_wide ? "co64"_4cc : "stco"_4cc, offset_bytes_);
    if (entries) old_offsets_ = *entries;
    return entries.has_value();
  }

  /// The last chunk may hold fewer samples than its run says; it has to say so when others follow.
  bool EndLastChunk() {
    const UInt64 chunks = old_offsets_.size() / offset_bytes_;
    UInt64 told = 0;
    for (UInt64 i = 0; i < chunk_runs_.Count(); ++i) {
      const UInt8* const run = chunk_runs_.begin() + 12 * i;
      const UInt64 end = i + 1 < chunk_runs_.Count() ? ReadU32(run + 12) : chunks + 1;
      told += (std::max<UInt64>(end, ReadU32(run)) - ReadU32(run)) * ReadU32(run + 4);
    }
    if (told <= old_count_) return told == old_count_;
    UInt8* const last = chunk_runs_.Last();
    const UInt64 samples = ReadU32(last + 4);
    if (told - old_count_ >= samples) return false;
    const auto left = static_cast<UInt32>(samples - (told - old_count_));
    if (ReadU32(last) == chunks) {
      WriteU32(last + 4, left);
      return true;
    }
    const UInt32 description = ReadU32(last + 8);
    for (const UInt64 field : {chunks, UInt64{left}, UInt64{description}})
      AppendU32(&chunk_runs_.bytes(), static_cast<UInt32>(field));
    return true;
  }

  void AppendDurations() {
    const UInt8* const last = durations_.Last();
    durations_.FitTo(old_count_, last != nullptr ? ReadU32(last + 4) : 0);
    for (const auto& run : added_.durations_)
      durations_.AppendRun(run);
    durations_.StoreIn(&stbl_);
  }

  void AppendCompositions() {
    const bool has_offsets = compositions_.Count() > 0 || added_.compositions_.size() != 1 ||
                             !HasValue(added_.compositions_, 0);
    if (!has_offsets) return;
    compositions_.FitTo(old_count_, 0);
    const bool is_negative = std::ranges::any_of(
        added_.compositions_, [](const auto& run) { return static_cast<SInt32>(run.value) < 0; });
    if (is_negative) compositions_.bytes()[0] = 1;
    for (const auto& run : added_.compositions_)
      compositions_.AppendRun(run);
    compositions_.StoreIn(&stbl_);
  }

  void AppendSyncs() {
    const bool had_list = stbl_.Find("stss"_4cc) != nullptr;
    if (!had_list && !HasValue(added_.syncs_, 0)) return;
    std::vector<UInt8>& bytes = syncs_.bytes();
    if (!had_list) {
      for (UInt32 sample = 1; sample <= old_count_; ++sample)
        AppendU32(&bytes, sample);
    }
    auto sample = static_cast<UInt32>(old_count_);
    for (const auto& run : added_.syncs_) {
      for (UInt32 i = 0; i < run.count; ++i) {
        ++sample;
        if (run.value != 0) AppendU32(&bytes, sample);
      }
    }
    syncs_.StoreIn(&stbl_);
  }

  void AppendSizes() {
    std::vector<UInt8> bytes(4);
    const UInt32 size = added_.sizes_.front().value;
    const bool is_constant =
        added_.sizes_.size() == 1 && size != 0 && (old_count_ == 0 || old_size_ == size);
    AppendU32(&bytes, is_constant ? size : 0);
    AppendU32(&bytes, static_cast<UInt32>(old_count_ + added_.sample_count_));
    if (!is_constant) {
      bytes.reserve(kSizesHead + 4 * (old_count_ + added_.sample_count_));
      if (old_size_ == 0 && old_bits_ == 32) {
        const auto end = old_sizes_.begin() + static_cast<std::ptrdiff_t>(4 * old_count_);
        bytes.insert(bytes.end(), old_sizes_.begin(), end);
      } else {
        for (UInt64 i = 0; i < old_count_; ++i)
          AppendU32(&bytes,
                    old_size_ != 0 ? old_size_ : SizeTableEntry(old_sizes_.data(), old_bits_, i));
      }
      for (const auto& run : added_.sizes_) {
        for (UInt32 i = 0; i < run.count; ++i)
          AppendU32(&bytes, run.value);
      }
    }
    Atom* table = stbl_.Find(compact_ != nullptr ? "stz2"_4cc : "stsz"_4cc);
    if (table == nullptr) table = &stbl_.Add(Atom("stsz"_4cc));
    table->set_type("stsz"_4cc);
    table->set_payload(std::move(bytes));
  }

  void AppendChunks() {
    auto number = static_cast<UInt32>(old_offsets_.size() / offset_bytes_);
    bool is_wide = offset_bytes_ == 8;
    for (const NewSamples::Chunk& chunk : added_.chunks_) {
      ++number;
      is_wide = is_wide || chunk.offset > kMaximum32;
      const UInt8* const last = chunk_runs_.Last();
      if (last != nullptr && ReadU32(last + 4) == chunk.samples &&
          ReadU32(last + 8) == chunk.description)
        continue;
      AppendU32(&chunk_runs_.bytes(), number);
      AppendU32(&chunk_runs_.bytes(), chunk.samples);
      AppendU32(&chunk_runs_.bytes(), chunk.description);
    }
    chunk_runs_.StoreIn(&stbl_);
    StoreOffsets(is_wide);
  }

  void StoreOffsets(bool is_wide) {
    std::vector<UInt8> bytes(4);
    AppendU32(&bytes,
              static_cast<UInt32>(old_offsets_.size() / offset_bytes_ + added_.chunks_.size()));
    const auto append = [&](UInt64 offset) {
      if (is_wide) {
        AppendU64(&bytes, offset);
      } else {
        AppendU32(&bytes, static_cast<UInt32>(offset));
      }
    };
    for (std::size_t i = 0; i < old_offsets_.size(); i += offset_bytes_)
      append(offset_bytes_ == 8 ? ReadU64(old_offsets_.data() + i)
                                : ReadU32(old_offsets_.data() + i));
    for (const NewSamples::Chunk& chunk : added_.chunks_)
      append(chunk.offset);
    Atom* table = stbl_.Find(offset_bytes_ == 8 ? "co64"_4cc : "stco"_4cc);
    if (table == nullptr) table = &stbl_.Add(Atom("stco"_4cc));
    table->set_type(is_wide ? "co64"_4cc : "stco"_4cc);
    table->set_payload(std::move(bytes));
  }

  /// A table that has a byte for each sample tells nothing of those that are added.
  void AppendDependencies() {
    Atom* table = stbl_.Find("sdtp"_4cc);
    if (table == nullptr) return;
    std::vector<UInt8> bytes(table->payload().begin(), table->payload().end());
    bytes.resize(4 + old_count_ + added_.sample_count_);
    table->set_payload(std::move(bytes));
  }

  const NewSamples& added_;
  Atom& stbl_;
  UInt64 old_count_;
  GrowingTable durations_;
  GrowingTable compositions_;
  GrowingTable chunk_runs_;
  GrowingTable syncs_;
  const Atom* compact_ = nullptr;
  UInt32 old_size_ = 0;
  UInt32 old_bits_ = 32;
  std::span<const UInt8> old_sizes_;
  std::size_t offset_bytes_ = 4;
  std::span<const UInt8> old_offsets_;
};

OSStatus NewSamples::AppendTo(Atom* stbl, UInt64 old_count) {
  if (sample_count_ == 0) return noErr;
  const OSStatus status = TableAppender(*this, old_count, stbl).Run();
  if (status == noErr) *this = NewSamples();
  return status;
}

}  // namespace quillmere::movies
