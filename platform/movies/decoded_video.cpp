#include "decoded_video.h"

#include <optional>

#include "big_endian.h"
#include "decoded_images.h"
#include "decoder_setup.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"
#include "video_decoder.h"

namespace quillmere::movies {

namespace {

std::span<const UInt8> SetupOf(const Atom& entry, const codecs::DecodableType& type) {
  if (type.setup == 0) return {};
  const std::span<const UInt8> extension = FindExtension(entry, type.setup);
  return type.setup == "esds"_4cc ? DecoderSetupOf(extension) : extension;
}

/// The bits of a pixel that a description tells.
UInt16 DepthOf(const Atom& entry) {
  constexpr std::size_t kDepth = 74;
  const auto payload = entry.payload();
  return payload.size() >= kDepth + 2 ? ReadU16(payload.data() + kDepth) : UInt16{0};
}

/// Samples of one description and file in decode order.
class SampleFeed {
 public:
  SampleFeed(const SampleTable& table, const DataSource& source, UInt64 first, UInt64 end)
      : table_(table), source_(source), next_(first), end_(end) {}

  bool Next(std::vector<UInt8>* bytes, SInt64* time) {
    SampleInfo info = {};
    if (status_ || next_ >= end_ || !table_.SampleAt(next_++, &info)) return false;
    imaging::FrameMemory memory;
    status_ = ReadSample(source_, info.offset, info.size, &memory);
    if (status_) return false;
    bytes->assign(memory.data(), memory.data() + info.size);
    *time = info.decode_time + info.composition_offset;
    return true;
  }
  OSStatus status() const { return status_; }

 private:
  const SampleTable& table_;
  const DataSource& source_;
  UInt64 next_;
  UInt64 end_;
  OSStatus status_ = noErr;
};

/// From where on a sample is decoded: the sample, up to it, that needs no other, or the one before
/// that; never across a change of description.
UInt64 StartOf(const SampleTable& table, UInt64 number, bool is_further) {
  UInt64 start = table.SyncSampleUpTo(number);
  if (is_further && start > 0) start = table.SyncSampleUpTo(start - 1);
  SampleInfo own = {};
  table.SampleAt(number, &own);
  SampleInfo first = {};
  while (start < number && table.SampleAt(start, &first) && first.description != own.description)
    ++start;
  return start;
}

}  // namespace

OSStatus DecodeVideo(const VisibleSample& sample, imaging::DecodedImage* image) {
  const codecs::DecodableType* const type = codecs::DecodableTypeOf(sample.format);
  if (type == nullptr || sample.media == nullptr) return codecs::kNoDecoder;
  const SampleTable* table = nullptr;
  SampleInfo info = {};
  OSStatus status = SampleTableOf(sample.media, &table);
  if (status) return status;
  const Atom* const stsd = SampleTableAtom(*sample.media->track)->Find("stsd"_4cc);
  if (stsd == nullptr || !table->SampleAt(sample.number, &info) || info.description == 0 ||
      info.description > stsd->children().size())
    return invalidSampleTable;
  const Atom& entry = stsd->children()[info.description - 1];
  const codecs::VideoFormat format = {sample.format, sample.encoded_width, sample.encoded_height,
                                      DepthOf(entry), SetupOf(entry, *type)};
  const SInt64 time = info.decode_time + info.composition_offset;
  // Pictures that are shown before the one they are decoded after may need those before that too.
  for (const bool is_further : {false, true}) {
    const UInt64 start = StartOf(*table, sample.number, is_further);
    SampleFeed feed(*table, *sample.source, start, sample.number + 1);
    const auto next = [&feed](std::vector<UInt8>* bytes, SInt64* at) {
      return feed.Next(bytes, at);
    };
    status = codecs::DecodePicture(format, next, time, image);
    if (feed.status()) return feed.status();
    if (status == noErr || start == 0) return status;
  }
  return status;
}

}  // namespace quillmere::movies
