#include "decoded_video.h"

#include <optional>

#include "big_endian.h"
#include "decoded_images.h"
#include "decoder_setup.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"
#include "video_decoder.h"

namespace quillmere::movies {

struct VideoDecoding {
  std::unique_ptr<codecs::VideoDecoder> decoder;
  UInt32 description = 0;  ///< of its samples, from 1
  UInt64 next = 0;         ///< the sample it takes next
  SInt64 time = 0;         ///< of the last picture, media time units
};

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

/// Samples of one description in decode order, up to where the picture of one has to come out.
class SampleFeed {
 public:
  SampleFeed(const SampleTable& table, const DataSource& source, UInt64 wanted,
             VideoDecoding* decoding)
      : table_(table), source_(source), last_(wanted + kReorderSpan), decoding_(*decoding) {}

  bool Next(std::vector<UInt8>* bytes, SInt64* time) {
    SampleInfo info = {};
    if (status_ || decoding_.next > last_ || !table_.SampleAt(decoding_.next, &info) ||
        info.description != decoding_.description)
      return false;
    imaging::FrameMemory memory;
    status_ = ReadSample(source_, info.offset, info.size, &memory);
    if (status_) return false;
    bytes->assign(memory.data(), memory.data() + info.size);
    *time = info.decode_time + info.composition_offset;
    ++decoding_.next;
    return true;
  }
  OSStatus status() const { return status_; }

 private:
  const SampleTable& table_;
  const DataSource& source_;
  UInt64 last_;
  VideoDecoding& decoding_;
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

/// A sample to be decoded, with what its media tells of it.
struct Wanted {
  const SampleTable* table = nullptr;
  const Atom* entry = nullptr;
  SampleInfo info = {};
  SInt64 time = 0;  ///< at which it is shown
};

OSStatus Find(const VisibleSample& sample, Wanted* wanted) {
  const OSStatus status = SampleTableOf(sample.media, &wanted->table);
  if (status) return status;
  const Atom* const stsd = SampleTableAtom(*sample.media->track)->Find("stsd"_4cc);
  const bool is_there = stsd != nullptr && wanted->table->SampleAt(sample.number, &wanted->info) &&
                        wanted->info.description >= 1 &&
                        wanted->info.description <= stsd->children().size();
  if (!is_there) return invalidSampleTable;
  wanted->entry = &stsd->children()[wanted->info.description - 1];
  wanted->time = wanted->info.decode_time + wanted->info.composition_offset;
  return noErr;
}

/// Whether a decoder gets to the sample sooner than a new one would.
bool CanGoOn(const VideoDecoding& decoding, const Wanted& wanted, UInt64 number) {
  return decoding.decoder && decoding.decoder->CanGoOn() &&
         decoding.description == wanted.info.description && wanted.time > decoding.time &&
         wanted.table->SyncSampleUpTo(number) <= decoding.next;
}

OSStatus Restart(const VisibleSample& sample, const codecs::DecodableType& type,
                 const Wanted& wanted, UInt64 start, VideoDecoding* decoding) {
  const codecs::VideoFormat format = {sample.format, sample.encoded_width, sample.encoded_height,
                                      DepthOf(*wanted.entry), SetupOf(*wanted.entry, type)};
  decoding->description = wanted.info.description;
  decoding->next = start;
  return codecs::VideoDecoder::Open(format, &decoding->decoder);
}

OSStatus GoOn(const VisibleSample& sample, const Wanted& wanted, VideoDecoding* decoding,
              imaging::DecodedImage* image) {
  SampleFeed feed(*wanted.table, *sample.source, sample.number, decoding);
  const auto next = [&feed](std::vector<UInt8>* bytes, SInt64* at) { return feed.Next(bytes, at); };
  const OSStatus status = decoding->decoder->Decode(next, wanted.time, image);
  decoding->time = wanted.time;
  if (status || feed.status()) decoding->decoder.reset();
  return feed.status() ? feed.status() : status;
}

}  // namespace

OSStatus DecodeVideo(const VisibleSample& sample, imaging::DecodedImage* image) {
  const codecs::DecodableType* const type = codecs::DecodableTypeOf(sample.format);
  if (type == nullptr || sample.media == nullptr) return codecs::kNoDecoder;
  Wanted wanted;
  OSStatus status = Find(sample, &wanted);
  if (status) return status;
  if (!sample.media->decoding) sample.media->decoding = std::make_shared<VideoDecoding>();
  VideoDecoding* const decoding = sample.media->decoding.get();
  if (CanGoOn(*decoding, wanted, sample.number) && GoOn(sample, wanted, decoding, image) == noErr)
    return noErr;
  // Pictures that are shown before the one they are decoded after may need those before that too.
  for (const bool is_further : {false, true}) {
    const UInt64 start = StartOf(*wanted.table, sample.number, is_further);
    status = Restart(sample, *type, wanted, start, decoding);
    if (!status) status = GoOn(sample, wanted, decoding, image);
    if (!status || start == 0) break;
  }
  return status;
}

}  // namespace quillmere::movies
