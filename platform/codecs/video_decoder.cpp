#include "video_decoder.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "libav_private.h"

namespace quillmere::codecs {

namespace {

struct Decoding {
  DecodableType shown;
  AVCodecID codec;
};

constexpr Decoding kDecodings[] = {
    {{"avc1"_4cc, "H.264", "avcC"_4cc}, AV_CODEC_ID_H264},
    {{"avc3"_4cc, "H.264", "avcC"_4cc}, AV_CODEC_ID_H264},
    {{"hvc1"_4cc, "HEVC", "hvcC"_4cc}, AV_CODEC_ID_HEVC},
    {{"hev1"_4cc, "HEVC", "hvcC"_4cc}, AV_CODEC_ID_HEVC},
    {{"av01"_4cc, "AV1", "av1C"_4cc}, AV_CODEC_ID_AV1},
    {{"vp09"_4cc, "VP9", 0}, AV_CODEC_ID_VP9},
    {{"mp4v"_4cc, "MPEG-4 Video", "esds"_4cc}, AV_CODEC_ID_MPEG4},
    {{"m2v1"_4cc, "MPEG-2 Video", 0}, AV_CODEC_ID_MPEG2VIDEO},
    {{"mp1v"_4cc, "MPEG-1 Video", 0}, AV_CODEC_ID_MPEG1VIDEO},
    {{"h263"_4cc, "H.263", 0}, AV_CODEC_ID_H263},
    {{"s263"_4cc, "H.263", 0}, AV_CODEC_ID_H263},
    {{"SVQ1"_4cc, "Sorenson Video", 0}, AV_CODEC_ID_SVQ1},
    {{"cvid"_4cc, "Cinepak", 0}, AV_CODEC_ID_CINEPAK},
    {{"rle "_4cc, "Animation", 0}, AV_CODEC_ID_QTRLE},
    {{"rpza"_4cc, "Video", 0}, AV_CODEC_ID_RPZA},
    {{"mjpa"_4cc, "Motion JPEG A", 0}, AV_CODEC_ID_MJPEG},
    {{"mjpb"_4cc, "Motion JPEG B", 0}, AV_CODEC_ID_MJPEGB},
    {{"mjp2"_4cc, "JPEG 2000", "jp2h"_4cc}, AV_CODEC_ID_JPEG2000},
    {{"apch"_4cc, "ProRes 422 HQ", 0}, AV_CODEC_ID_PRORES},
    {{"apcn"_4cc, "ProRes 422", 0}, AV_CODEC_ID_PRORES},
    {{"apcs"_4cc, "ProRes 422 LT", 0}, AV_CODEC_ID_PRORES},
    {{"apco"_4cc, "ProRes 422 Proxy", 0}, AV_CODEC_ID_PRORES},
    {{"ap4h"_4cc, "ProRes 4444", 0}, AV_CODEC_ID_PRORES},
    {{"AVdn"_4cc, "DNxHD", 0}, AV_CODEC_ID_DNXHD},
    {{"AVdh"_4cc, "DNxHR", 0}, AV_CODEC_ID_DNXHD},
    {{"icod"_4cc, "Intermediate", 0}, AV_CODEC_ID_AIC},
    {{"dvc "_4cc, "DV/DVCPRO - NTSC", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvcp"_4cc, "DV - PAL", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvpp"_4cc, "DVCPRO - PAL", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dv5n"_4cc, "DVCPRO50 - NTSC", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dv5p"_4cc, "DVCPRO50 - PAL", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvh6"_4cc, "DVCPRO HD 1080i60", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvh5"_4cc, "DVCPRO HD 1080i50", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvhp"_4cc, "DVCPRO HD 720p60", 0}, AV_CODEC_ID_DVVIDEO},
    {{"dvhq"_4cc, "DVCPRO HD 720p50", 0}, AV_CODEC_ID_DVVIDEO},
    {{"v210"_4cc, "Uncompressed 10-bit 4:2:2", 0}, AV_CODEC_ID_V210},
    {{"v308"_4cc, "Uncompressed 8-bit 4:4:4", 0}, AV_CODEC_ID_V308},
    {{"v408"_4cc, "Uncompressed 8-bit 4:4:4:4", 0}, AV_CODEC_ID_V408},
    {{"v410"_4cc, "Uncompressed 10-bit 4:4:4", 0}, AV_CODEC_ID_V410},
    {{"2vuy"_4cc, "Uncompressed 8-bit 4:2:2", 0}, AV_CODEC_ID_RAWVIDEO},
    {{"yuvs"_4cc, "Component Y'CbCr", 0}, AV_CODEC_ID_RAWVIDEO},
    {{"raw "_4cc, "None", 0}, AV_CODEC_ID_RAWVIDEO},
};

const Decoding* DecodingOf(OSType type) {
  const auto* const found = std::ranges::find_if(
      kDecodings, [type](const Decoding& each) { return each.shown.type == type; });
  return found != std::end(kDecodings) ? found : nullptr;
}

/// How pixels without compression lie; none for depths that aren't decoded.
AVPixelFormat RawPixelFormatOf(const VideoFormat& format) {
  if (format.type == "2vuy"_4cc) return AV_PIX_FMT_UYVY422;
  if (format.type == "yuvs"_4cc) return AV_PIX_FMT_YUYV422;
  if (format.depth == 32) return AV_PIX_FMT_ARGB;
  if (format.depth == 24) return AV_PIX_FMT_RGB24;
  return format.depth == 16 ? AV_PIX_FMT_RGB555BE : AV_PIX_FMT_NONE;
}

/// Whether pixels are indices into colours that the description would have to give.
bool HasPalette(const VideoFormat& format) {
  constexpr UInt16 kGreys = 32;  // is added to the depth of greys
  const int bits = format.depth % kGreys;
  return (format.type == "raw "_4cc || format.type == "rle "_4cc) && format.depth != kGreys &&
         bits <= 8;
}

bool GiveSetup(const LibAv& av, std::span<const UInt8> setup, AVCodecContext* context) {
  if (setup.empty()) return true;
  if (setup.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 2) return false;
  context->extradata =
      static_cast<uint8_t*>(av.av_mallocz(setup.size() + AV_INPUT_BUFFER_PADDING_SIZE));
  if (context->extradata == nullptr) return false;
  std::memcpy(context->extradata, setup.data(), setup.size());
  context->extradata_size = static_cast<int>(setup.size());
  return true;
}

OwnedContext OpenDecoder(const LibAv& av, const Decoding& decoding, const VideoFormat& format) {
  const AVCodec* const codec = av.avcodec_find_decoder(decoding.codec);
  OwnedContext context(codec != nullptr ? av.avcodec_alloc_context3(codec) : nullptr);
  if (!context || HasPalette(format)) return nullptr;
  context->width = static_cast<int>(format.width);
  context->height = static_cast<int>(format.height);
  context->bits_per_coded_sample = format.depth;
  context->codec_tag = __builtin_bswap32(format.type);
  context->max_pixels = static_cast<int64_t>(imaging::kMaximumImagePixels);
  context->thread_count = 1;
  if (decoding.codec == AV_CODEC_ID_RAWVIDEO) context->pix_fmt = RawPixelFormatOf(format);
  if (!GiveSetup(av, format.setup, context.get())) return nullptr;
  return av.avcodec_open2(context.get(), codec, nullptr) == 0 ? std::move(context) : nullptr;
}

/// The matrix of a frame's colours: its own, or else BT.709 from 720 lines on.
int MatrixOf(const AVFrame& frame) {
  constexpr int kHdLines = 720;
  if (frame.colorspace != AVCOL_SPC_UNSPECIFIED && frame.colorspace != AVCOL_SPC_RGB)
    return frame.colorspace;
  return frame.height >= kHdLines ? SWS_CS_ITU709 : SWS_CS_ITU601;
}

OSStatus ConvertFrame(const LibAv& av, const AVFrame& frame, imaging::DecodedImage* image) {
  constexpr int kFixedOne = 1 << 16;
  const OSStatus status = imaging::AllocateImage(static_cast<UInt32>(frame.width),
                                                 static_cast<UInt32>(frame.height), image);
  if (status) return status;
  const OwnedScaler scaler(av.sws_getContext(
      frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), frame.width,
      frame.height, AV_PIX_FMT_ARGB, SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
      nullptr, nullptr));
  if (!scaler) return kVideoInvalidData;
  const bool is_full = frame.color_range == AVCOL_RANGE_JPEG;
  av.sws_setColorspaceDetails(scaler.get(), av.sws_getCoefficients(MatrixOf(frame)),
                              is_full ? 1 : 0, av.sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                              kFixedOne, kFixedOne);
  UInt8* const lines[] = {image->block.pixels, nullptr, nullptr, nullptr};
  const int strides[] = {static_cast<int>(image->block.row_bytes), 0, 0, 0};
  if (av.sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, lines, strides) !=
      frame.height)
    return kVideoInvalidData;
  for (UInt32 y = 0; y < image->block.height; ++y)
    for (UInt32 x = 0; x < image->block.width; ++x)
      image->block.Row(y)[std::size_t{4} * x] = 255;
  return noErr;
}

class LibAvDecoder final : public VideoDecoder {
 public:
  LibAvDecoder(const LibAv& av, OwnedContext context)
      : av_(av),
        context_(std::move(context)),
        frame_(av.av_frame_alloc()),
        packet_(av.av_packet_alloc()) {}
  bool HasMemory() const { return frame_ && packet_; }
  bool CanGoOn() const override { return !is_at_end_; }

  OSStatus Decode(const NextSample& next, SInt64 time, imaging::DecodedImage* image) override {
    Outcome outcome = Receive(time);
    while (outcome == Outcome::kNotYet && !is_at_end_) {
      Send(next);
      outcome = Receive(time);
    }
    if (outcome == Outcome::kFound) return ConvertFrame(av_, *frame_, image);
    return is_damaged_ ? kVideoInvalidData : kNoSuchPicture;
  }

 private:
  enum class Outcome { kNotYet, kFound, kPassed };

  /// Gives the decoder the next sample, or the end.
  void Send(const NextSample& next) {
    SInt64 time = 0;
    is_at_end_ = !next(&bytes_, &time);
    const std::size_t size = is_at_end_ ? 0 : bytes_.size();
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max()) / 2) {
      is_damaged_ = true;
      return;
    }
    bytes_.resize(size + AV_INPUT_BUFFER_PADDING_SIZE);
    packet_->data = bytes_.data();
    packet_->size = static_cast<int>(size);
    packet_->pts = packet_->dts = time;
    const int sent = av_.avcodec_send_packet(context_.get(), is_at_end_ ? nullptr : packet_.get());
    if (sent < 0) is_damaged_ = true;
  }

  /// Takes pictures, which come out by rising time, up to the one of a time.
  Outcome Receive(SInt64 time) {
    while (av_.avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
      if (frame_->pts == time) return Outcome::kFound;
      if (frame_->pts > time) return Outcome::kPassed;
    }
    return Outcome::kNotYet;
  }

  const LibAv& av_;
  OwnedContext context_;
  OwnedFrame frame_;
  OwnedPacket packet_;
  std::vector<UInt8> bytes_;
  bool is_at_end_ = false;
  bool is_damaged_ = false;
};

}  // namespace

std::span<const DecodableType> DecodableTypes() {
  static const std::vector<DecodableType> types = [] {
    std::vector<DecodableType> shown;
    for (const Decoding& decoding : kDecodings)
      shown.push_back(decoding.shown);
    return shown;
  }();
  return types;
}

const DecodableType* DecodableTypeOf(OSType type) {
  const Decoding* const found = DecodingOf(type);
  return found != nullptr ? &found->shown : nullptr;
}

OSStatus VideoDecoder::Open(const VideoFormat& format, std::unique_ptr<VideoDecoder>* decoder) {
  decoder->reset();
  const Decoding* const decoding = DecodingOf(format.type);
  const LibAv* const av = decoding != nullptr ? LoadLibAv() : nullptr;
  if (av == nullptr) return kNoDecoder;
  OwnedContext context = OpenDecoder(*av, *decoding, format);
  if (!context) return kNoDecoder;
  auto opened = std::make_unique<LibAvDecoder>(*av, std::move(context));
  if (!opened->HasMemory()) return memFullErr;
  *decoder = std::move(opened);
  return noErr;
}

}  // namespace quillmere::codecs
