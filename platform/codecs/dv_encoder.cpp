#include "dv_encoder.h"

#include <algorithm>
#include <iterator>

#include "libav_private.h"

namespace quillmere::codecs {

namespace {

constexpr Ratio kNtscRate = {30000, 1001};
constexpr Ratio kPalRate = {25, 1};
constexpr Ratio kHdPixel = {4, 3};

// ITU-R BT.601 sampling: 710.85 by 486 and 702.9 by 576 samples are pictures of 4:3 or 16:9.
constexpr DvPicture kNtsc = {720,      480,      kNtscRate, {10, 11}, {40, 33},
                             {704, 1}, {480, 1}, false,     false};
constexpr DvPicture kPal = {720,         576,      kPalRate, {59, 54}, {118, 81},
                            {41472, 59}, {576, 1}, false,    false};
constexpr DvPicture k1080i60 = {1280,      1080,      kNtscRate, {3, 2}, {3, 2},
                                {3776, 3}, {1062, 1}, false,     true};
constexpr DvPicture k1080i50 = {1440,      1080,      kPalRate, kHdPixel, kHdPixel,
                                {1416, 1}, {1062, 1}, false,    true};
constexpr DvPicture k720p60 = {960,      720,      {60000, 1001}, kHdPixel, kHdPixel,
                               {936, 1}, {702, 1}, true,          false};
constexpr DvPicture k720p50 = {960,      720,      {50, 1}, kHdPixel, kHdPixel,
                               {936, 1}, {702, 1}, true,    false};

constexpr DvFormat kFormats[] = {
    {"DV/DVCPRO - NTSC", "dvc "_4cc, 120000, &kNtsc},
    {"DV - PAL", "dvcp"_4cc, 144000, &kPal},
    {"DVCPRO - PAL", "dvpp"_4cc, 144000, &kPal},
    {"DVCPRO50 - NTSC", "dv5n"_4cc, 240000, &kNtsc},
    {"DVCPRO50 - PAL", "dv5p"_4cc, 288000, &kPal},
    {"DVCPRO HD 1080i60", "dvh6"_4cc, 480000, &k1080i60},
    {"DVCPRO HD 1080i50", "dvh5"_4cc, 576000, &k1080i50},
    {"DVCPRO HD 720p60", "dvhp"_4cc, 240000, &k720p60},
    {"DVCPRO HD 720p50", "dvhq"_4cc, 288000, &k720p50},
};

/// Chroma as the format samples it.
AVPixelFormat PixelFormatOf(const DvFormat& format) {
  if (format.type == "dvc "_4cc || format.type == "dvpp"_4cc) return AV_PIX_FMT_YUV411P;
  return format.type == "dvcp"_4cc ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_YUV422P;
}

AVRational RationalOf(const Ratio& ratio) {
  return {static_cast<int>(ratio.numerator), static_cast<int>(ratio.denominator)};
}

OwnedContext OpenEncoder(const LibAv& av, const DvFormat& format, bool is_wide) {
  const AVCodec* const codec = av.avcodec_find_encoder(AV_CODEC_ID_DVVIDEO);
  OwnedContext context(codec != nullptr ? av.avcodec_alloc_context3(codec) : nullptr);
  if (!context) return nullptr;
  context->width = format.picture->width;
  context->height = format.picture->height;
  context->pix_fmt = PixelFormatOf(format);
  context->framerate = RationalOf(format.picture->rate);
  context->time_base = {context->framerate.den, context->framerate.num};
  context->sample_aspect_ratio =
      RationalOf(is_wide ? format.picture->wide_pixel : format.picture->pixel);
  context->thread_count = 1;
  if (av.avcodec_open2(context.get(), codec, nullptr) != 0) return nullptr;
  return context;
}

/// The picture as a frame that the encoder takes; null without memory.
OwnedFrame FrameOf(const LibAv& av, const DvFormat& format, const imaging::PixelBlock& picture) {
  OwnedFrame frame(av.av_frame_alloc());
  if (!frame) return nullptr;
  frame->width = format.picture->width;
  frame->height = format.picture->height;
  frame->format = PixelFormatOf(format);
  frame->top_field_first = format.picture->is_top_first ? 1 : 0;
  frame->interlaced_frame = format.picture->is_progressive ? 0 : 1;
  if (av.av_frame_get_buffer(frame.get(), 0) != 0) return nullptr;
  const OwnedScaler scaler(
      av.sws_getContext(static_cast<int>(picture.width), static_cast<int>(picture.height),
                        AV_PIX_FMT_ARGB, format.picture->width, format.picture->height,
                        PixelFormatOf(format), SWS_BICUBIC, nullptr, nullptr, nullptr));
  if (!scaler) return nullptr;
  const UInt8* const lines[] = {picture.Row(0), nullptr, nullptr, nullptr};
  const int strides[] = {static_cast<int>(picture.row_bytes), 0, 0, 0};
  const int done = av.sws_scale(scaler.get(), lines, strides, 0, static_cast<int>(picture.height),
                                frame->data, frame->linesize);
  return done == format.picture->height ? std::move(frame) : nullptr;
}

}  // namespace

std::span<const DvFormat> DvFormats() {
  return kFormats;
}

const DvFormat* DvFormatOf(OSType type) {
  const auto* found = std::ranges::find(kFormats, type, &DvFormat::type);
  return found != std::end(kFormats) ? found : nullptr;
}

OSStatus EncodeDv(const DvFormat& format, bool is_wide, const imaging::PixelBlock& picture,
                  std::vector<UInt8>* bytes) {
  const LibAv* const av = LoadLibAv();
  if (av == nullptr) return kEncoderMissing;
  const OwnedContext context = OpenEncoder(*av, format, is_wide);
  if (!context) return kEncoderMissing;
  const OwnedFrame frame = FrameOf(*av, format, picture);
  const OwnedPacket packet(av->av_packet_alloc());
  if (!frame || !packet) return memFullErr;
  if (av->avcodec_send_frame(context.get(), frame.get()) != 0 ||
      av->avcodec_receive_packet(context.get(), packet.get()) != 0)
    return kEncodingFailed;
  if (packet->size != static_cast<int>(format.frame_bytes)) return kEncodingFailed;
  bytes->assign(packet->data, packet->data + packet->size);
  return noErr;
}

}  // namespace quillmere::codecs
