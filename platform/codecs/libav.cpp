#include <dlfcn.h>

#include <string>

#include "libav_private.h"

namespace quillmere::codecs {

namespace {

void* Load(const char* name, int version) {
  const std::string file = std::string(name) + ".so." + std::to_string(version);
  return dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
}

/// Finds a call; false where the library hasn't it.
template <class Call>
bool Find(void* library, const char* name, Call* call) {
  *call = library != nullptr ? reinterpret_cast<Call>(dlsym(library, name)) : nullptr;
  return *call != nullptr;
}

bool Fill(LibAv* av) {
  void* const codec = Load("libavcodec", LIBAVCODEC_VERSION_MAJOR);
  void* const util = Load("libavutil", LIBAVUTIL_VERSION_MAJOR);
  void* const scale = Load("libswscale", LIBSWSCALE_VERSION_MAJOR);
  return Find(codec, "avcodec_find_encoder", &av->avcodec_find_encoder) &&
         Find(codec, "avcodec_find_decoder", &av->avcodec_find_decoder) &&
         Find(codec, "avcodec_alloc_context3", &av->avcodec_alloc_context3) &&
         Find(codec, "avcodec_free_context", &av->avcodec_free_context) &&
         Find(codec, "avcodec_open2", &av->avcodec_open2) &&
         Find(codec, "avcodec_send_frame", &av->avcodec_send_frame) &&
         Find(codec, "avcodec_receive_packet", &av->avcodec_receive_packet) &&
         Find(codec, "avcodec_send_packet", &av->avcodec_send_packet) &&
         Find(codec, "avcodec_receive_frame", &av->avcodec_receive_frame) &&
         Find(codec, "av_packet_alloc", &av->av_packet_alloc) &&
         Find(codec, "av_packet_free", &av->av_packet_free) &&
         Find(util, "av_frame_alloc", &av->av_frame_alloc) &&
         Find(util, "av_frame_free", &av->av_frame_free) &&
         Find(util, "av_frame_get_buffer", &av->av_frame_get_buffer) &&
         Find(util, "av_mallocz", &av->av_mallocz) &&
         Find(util, "av_log_set_level", &av->av_log_set_level) &&
         Find(scale, "sws_getCoefficients", &av->sws_getCoefficients) &&
         Find(scale, "sws_setColorspaceDetails", &av->sws_setColorspaceDetails) &&
         Find(scale, "sws_getContext", &av->sws_getContext) &&
         Find(scale, "sws_scale", &av->sws_scale) &&
         Find(scale, "sws_freeContext", &av->sws_freeContext);
}

}  // namespace

const LibAv* LoadLibAv() {
  static LibAv av{};
  static const bool is_loaded = [] {
    if (!Fill(&av)) return false;
    av.av_log_set_level(AV_LOG_QUIET);
    return true;
  }();
  return is_loaded ? &av : nullptr;
}

}  // namespace quillmere::codecs
