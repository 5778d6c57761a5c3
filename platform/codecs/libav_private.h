/// FFmpeg's libraries, loaded when they are first asked for: loading them takes longer than a start
/// of the program.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
#include <libswscale/swscale.h>
}

#include <memory>

namespace quillmere::codecs {

/// The calls that are used, by their own names.
struct LibAv {
  decltype(&::avcodec_find_encoder) avcodec_find_encoder;
  decltype(&::avcodec_find_decoder) avcodec_find_decoder;
  decltype(&::avcodec_alloc_context3) avcodec_alloc_context3;
  decltype(&::avcodec_free_context) avcodec_free_context;
  decltype(&::avcodec_open2) avcodec_open2;
  decltype(&::avcodec_send_frame) avcodec_send_frame;
  decltype(&::avcodec_receive_packet) avcodec_receive_packet;
  decltype(&::avcodec_send_packet) avcodec_send_packet;
  decltype(&::avcodec_receive_frame) avcodec_receive_frame;
  decltype(&::av_packet_alloc) av_packet_alloc;
  decltype(&::av_packet_free) av_packet_free;
  decltype(&::av_frame_alloc) av_frame_alloc;
  decltype(&::av_frame_free) av_frame_free;
  decltype(&::av_frame_get_buffer) av_frame_get_buffer;
  decltype(&::av_mallocz) av_mallocz;
  decltype(&::av_log_set_level) av_log_set_level;
  decltype(&::sws_getContext) sws_getContext;
  decltype(&::sws_getCoefficients) sws_getCoefficients;
  decltype(&::sws_setColorspaceDetails) sws_setColorspaceDetails;
  decltype(&::sws_scale) sws_scale;
  decltype(&::sws_freeContext) sws_freeContext;
};

/// The libraries of the versions that the program was made with, which print nothing; null where
/// they aren't installed.
const LibAv* LoadLibAv();

/// Owners of what the libraries allocate; they must have been loaded.
struct FreeContext {
  void operator()(AVCodecContext* context) const { LoadLibAv()->avcodec_free_context(&context); }
};
struct FreePacket {
  void operator()(AVPacket* packet) const { LoadLibAv()->av_packet_free(&packet); }
};
struct FreeFrame {
  void operator()(AVFrame* frame) const { LoadLibAv()->av_frame_free(&frame); }
};
struct FreeScaler {
  void operator()(SwsContext* scaler) const { LoadLibAv()->sws_freeContext(scaler); }
};
using OwnedContext = std::unique_ptr<AVCodecContext, FreeContext>;
using OwnedPacket = std::unique_ptr<AVPacket, FreePacket>;
using OwnedFrame = std::unique_ptr<AVFrame, FreeFrame>;
using OwnedScaler = std::unique_ptr<SwsContext, FreeScaler>;

}  // namespace quillmere::codecs
