#include "decoded_video.h"

#include <optional>

#include "decoded_images.h"
#include "field_reader.h"
#include "sample_descriptions.h"
#include "toolbox_records.h"
#include "video_decoder.h"

namespace quillmere::movies {

namespace {

/// The length of a descriptor: seven bits a byte, the last one without its uppermost (ISO/IEC
/// 14496-1, 8.3.3).
std::size_t ReadLength(FieldReader* reader) {
  std::size_t length = 0;
  for (int i = 0; i < 4; ++i) {
    const std::span<const UInt8> byte = reader->Bytes(1);
    if (byte.empty()) return 0;
    length = length << 7 | (byte[0] & 0x7F);
    if ((byte[0] & 0x80) == 0) break;
  }
  return length;
}

/// The content of the next descriptor if it has a tag; empty else.
std::span<const UInt8> ReadDescriptor(FieldReader* reader, UInt8 tag) {
  const std::span<const UInt8> found = reader->Bytes(1);
  if (found.empty() || found[0] != tag) return {};
  return reader->Bytes(std::min(ReadLength(reader), reader->left()));
}

/// The decoder's own part of an `esds`; empty if there is none.
std::span<const UInt8> DecoderSetupOf(std::span<const UInt8> esds) {
  constexpr UInt8 kStream = 3, kDecoder = 4, kSetup = 5;
  FieldReader full(esds);
  full.Bytes(4);  // version and flags
  FieldReader stream(ReadDescriptor(&full, kStream));
  const std::span<const UInt8> head = stream.Bytes(3);
  if (head.empty()) return {};
  if ((head[2] & 0x80) != 0) stream.Bytes(2);  // the stream it depends on
  if ((head[2] & 0x40) != 0) {
    const std::span<const UInt8> url_length = stream.Bytes(1);
    if (!url_length.empty()) stream.Bytes(url_length[0]);
  }
  if ((head[2] & 0x20) != 0) stream.Bytes(2);  // its clock
  FieldReader decoder(ReadDescriptor(&stream, kDecoder));
  decoder.Bytes(13);  // type, buffer size, rates
  return ReadDescriptor(&decoder, kSetup);
}

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
  if (type == nullptr) return codecs::kNoDecoder;
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
