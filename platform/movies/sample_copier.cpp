#include "sample_copier.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "data_references.h"

namespace quillmere::movies {

namespace {

constexpr UInt64 kPiece = UInt64{1} << 20;

}  // namespace

SInt64 SampleCopier::Scaled(SInt64 time) const {
  if (source_scale_ == destination_scale_) return time;
  __extension__ using Wide = __int128;
  const Wide twice = 2 * Wide{time} * destination_scale_ + source_scale_;
  const Wide divisor = 2 * Wide{source_scale_};
  return static_cast<SInt64>(twice >= 0 ? twice / divisor : -((divisor - 1 - twice) / divisor));
}

OSStatus SampleCopier::MapDescription(UInt32 index, UInt32* mapped) {
  descriptions_.resize(table_->descriptions().size());
  UInt32& known = descriptions_[index - 1];
  if (known == 0) {
    Atom entry = SampleTableAtom(*source_.track)->Find("stsd"_4cc)->children()[index - 1];
    UInt16 reference = 1;
    if (!destination_.writer) {
      const UInt16 named = DataReferenceOfDescription(entry).value_or(0);
      const OSStatus status = FindOrAddReference(source_, named, &destination_, &reference);
      if (status != noErr) return status;
    }
    if (!SetDataReferenceOfDescription(&entry, reference)) return badImageDescription;
    const OSStatus status = AddDescription(&destination_, std::move(entry), &known);
    if (status != noErr) return status;
  }
  *mapped = known;
  return noErr;
}

OSStatus SampleCopier::CopyData(const SampleInfo& sample, UInt64 bytes, UInt64* offset) {
  std::shared_ptr<DataSource> source;
  const UInt16 reference = table_->descriptions()[sample.description - 1].data_reference;
  OSStatus status = SourceOfReference(source_, reference, &source);
  if (status != noErr) return status;
  if (sample.offset > source->size() || bytes > source->size() - sample.offset) return eofErr;
  std::vector<UInt8> piece;
  for (UInt64 done = 0; done < bytes && status == noErr;) {
    piece.resize(static_cast<std::size_t>(std::min(kPiece, bytes - done)));
    status = source->Read(sample.offset + done, piece);
    UInt64 place = 0;
    if (status == noErr) status = destination_.writer->Append(piece, &place);
    if (done == 0) *offset = place;
    done += piece.size();
  }
  return status;
}

OSStatus SampleCopier::CopyRun(const SampleInfo& sample, UInt64 count, UInt64 bytes) {
  NewSampleRun run = {};
  OSStatus status = MapDescription(sample.description, &run.description);
  run.offset = sample.offset;
  if (status == noErr && destination_.writer) status = CopyData(sample, bytes, &run.offset);
  if (status != noErr) return status;
  const bool has_packets = table_->descriptions()[sample.description - 1].frames_per_packet > 1;
  run.size = has_packets ? 1 : static_cast<UInt32>(sample.size);
  run.bytes = bytes;
  run.composition_offset = static_cast<SInt32>(Scaled(sample.composition_offset));
  run.is_sync = sample.is_sync;
  run.count = static_cast<UInt32>(count);
  run.duration = static_cast<UInt32>(sample.duration);
  if (source_scale_ == destination_scale_) return destination_.added.Add(run);
  // In another time scale equal durations round to different ones.
  const UInt64 size = bytes / count;
  run.count = 1;
  run.bytes = size;
  for (UInt64 i = 0; i < count && status == noErr; ++i) {
    const SInt64 begin = sample.decode_time + static_cast<SInt64>(i) * sample.duration;
    run.duration = static_cast<UInt32>(Scaled(begin + sample.duration) - Scaled(begin));
    status = destination_.added.Add(run);
    run.offset += size;
  }
  return status;
}

OSStatus SampleCopier::Copy(UInt64 first, UInt64 count, UInt64* time) {
  OSStatus status = SampleTableOf(&source_, &table_);
  if (status == noErr) status = DurationOfSamples(&destination_, time);
  if (status != noErr) return status;
  source_scale_ = MediaHeaderOf(*source_.track).time_scale;
  destination_scale_ = MediaHeaderOf(*destination_.track).time_scale;
  if (source_scale_ == 0 || destination_scale_ == 0) return invalidMedia;
  SampleTable::RunWalk walk(*table_, first);
  SampleInfo sample = {};
  UInt64 samples = 0;
  UInt64 bytes = 0;
  while (count > 0 && status == noErr && walk.Next(&sample, &samples, &bytes)) {
    if (samples > count) {
      samples = count;
      bytes = table_->SizeOfSamples(first, samples);
    }
    status = CopyRun(sample, samples, bytes);
    first += samples;
    count -= samples;
  }
  if (status == noErr) status = NoteMediaDuration(&destination_);
  return status;
}

}  // namespace quillmere::movies
