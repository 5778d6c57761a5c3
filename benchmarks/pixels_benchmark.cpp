// Lines and frames of video at 1920 by 1080 beside libavcodec, libyuv, memcpy and plain loops.
//
// Usage: pixels_benchmark   Single thread; each row is the median of 31 passes over a frame that is
// warm. Prints million pixels a second, the peer's, and the ratio of ours to it.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
}
#include <libyuv.h>

#include "CO_Float_Lines.h"
#include "CO_Frames.h"
#include "CO_Lines_v210.h"
#include "CO_Ranges.h"
#include "CO_Y420_Frames.h"
#include "CO_filter.h"
#include "ORW_NR_double.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;

constexpr SInt32 kWidth = 1920;
constexpr SInt32 kHeight = 1080;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr int kPasses = 31;

double RateOf(double seconds) {
  return static_cast<double>(kPixels) / seconds / 1e6;
}

/// Million pixels a second.
double Rate(const std::function<void()>& work, int passes = kPasses) {
  return RateOf(MedianSeconds(passes, work));
}

/// Rates of two kinds of work that take turns, so that the machine's moods meet both; each timed
/// pass comes behind one that warms the caches.
struct Rates {
  double ours;
  double theirs;
};
Rates RatesInTurns(const std::function<void()>& ours, const std::function<void()>& theirs) {
  std::vector<double> our_times, their_times;
  for (int i = 0; i < kPasses; ++i) {
    ours();
    our_times.push_back(Seconds(ours));
    theirs();
    their_times.push_back(Seconds(theirs));
  }
  return {RateOf(Median(our_times)), RateOf(Median(their_times))};
}

void Print(const char* what, double ours, const char* peer, double theirs) {
  std::printf("%-34s %8.0f Mpixel/s   %-34s %8.0f   ratio %.2f\n", what, ours, peer, theirs,
              ours / theirs);
}

void Print(const char* what, const Rates& rates, const char* peer) {
  Print(what, rates.ours, peer, rates.theirs);
}

std::vector<UInt8> RandomBytes(std::size_t size) {
  std::mt19937 random(1);
  std::vector<UInt8> bytes(size);
  std::generate(bytes.begin(), bytes.end(), [&random] { return static_cast<UInt8>(random()); });
  return bytes;
}

AVCodecContext* OpenCodec(const AVCodec* codec) {
  AVCodecContext* context = codec ? avcodec_alloc_context3(codec) : nullptr;
  if (!context) Fail("libavcodec");
  context->width = kWidth;
  context->height = kHeight;
  context->pix_fmt = AV_PIX_FMT_YUV422P10;
  context->time_base = {1, 25};
  context->thread_count = 1;
  if (avcodec_open2(context, codec, nullptr) != 0) Fail("opening a codec");
  return context;
}

void CompareV210() {
  const auto row = static_cast<std::size_t>(CO_GetRowBytes_v210(kWidth));
  std::vector<UInt16> words(kPixels * 2);
  std::mt19937 random(2);
  for (UInt16& word : words)
    word = static_cast<UInt16>((64 + random() % 877) << 6);
  std::vector<UInt8> packed(row * kHeight);
  for (std::size_t i = 0; i < kHeight; ++i)
    CO_PackLine_v210(kWidth, words.data() + i * kWidth * 2, packed.data() + i * row);
  AVCodecContext* decoder = OpenCodec(avcodec_find_decoder(AV_CODEC_ID_V210));
  AVCodecContext* encoder = OpenCodec(avcodec_find_encoder(AV_CODEC_ID_V210));
  AVPacket* packet = av_packet_alloc();
  AVFrame* frame = av_frame_alloc();
  if (av_new_packet(packet, static_cast<int>(packed.size())) != 0) Fail("a packet");
  std::memcpy(packet->data, packed.data(), packed.size());
  const Rates unpack = RatesInTurns(
      [&] {
        for (std::size_t i = 0; i < kHeight; ++i)
          CO_UnpackLine_v210(kWidth, packed.data() + i * row, words.data() + i * kWidth * 2);
      },
      [&] {
        if (avcodec_send_packet(decoder, packet) != 0 || avcodec_receive_frame(decoder, frame) != 0)
          Fail("decoding");
      });
  AVPacket* out = av_packet_alloc();
  const Rates pack = RatesInTurns(
      [&] {
        for (std::size_t i = 0; i < kHeight; ++i)
          CO_PackLine_v210(kWidth, words.data() + i * kWidth * 2, packed.data() + i * row);
      },
      [&] {
        if (avcodec_send_frame(encoder, frame) != 0 || avcodec_receive_packet(encoder, out) != 0)
          Fail("encoding");
        av_packet_unref(out);
      });
  Print("v210 to words", unpack, "libavcodec's decoder");
  Print("words to v210", pack, "libavcodec's encoder");
  av_packet_free(&out);
  av_packet_free(&packet);
  av_frame_free(&frame);
  avcodec_free_context(&decoder);
  avcodec_free_context(&encoder);
}

void CompareFloats(const std::vector<UInt8>& source) {
  alignas(64) static float lines[3][kWidth];
  EditData edit = {};
  edit.lineY = lines[0];
  edit.lineCb = lines[1];
  edit.lineCr = lines[2];
  edit.sourceRange = edit.destRange = kCO_VideoRange;
  std::vector<UInt8> out(source.size());
  const auto rows = [&](auto work) {
    return [&, work] {
      for (std::size_t i = 0; i < kHeight; ++i)
        work(i * kWidth * 2);
    };
  };
  const double copy = Rate(
      rows([&](std::size_t at) { std::memcpy(out.data() + at, source.data() + at, kWidth * 2); }));
  const double read =
      Rate(rows([&](std::size_t at) { CO_2vuyLineToYUV(kWidth, source.data() + at, &edit, 1); }));
  std::vector<float> half(kWidth);
  const double planar = Rate(rows([&](std::size_t at) {
    CO_2vuyLineToPlanarYCbCr422F(kWidth, source.data() + at, &edit, edit.lineY, half.data(),
                                 half.data() + kWidth / 2);
  }));
  const double write =
      Rate(rows([&](std::size_t at) { CO_YUVF_LinesTo2vuy(kWidth, &edit, out.data() + at, 0); }));
  UInt32 seeds[] = {1, 2};
  const double dither = Rate(rows([&](std::size_t at) {
    CO_YUVF_LinesToUInt8withDitherLCG(kWidth, &edit, &seeds[0], &seeds[1], out.data() + at);
  }));
  Print("2vuy to float lines", read, "memcpy of the lines", copy);
  Print("2vuy to planar float lines", planar, "memcpy of the lines", copy);
  Print("float lines to 2vuy", write, "memcpy of the lines", copy);
  Print("float lines to 2vuy, dithered", dither, "memcpy of the lines", copy);
}

void CompareY420(const std::vector<UInt8>& source) {
  std::vector<UInt8> frame(QT_GetY420_FrameSize(kHeight, kWidth));
  auto* const header = reinterpret_cast<PlanarPixmapInfoYUV420*>(frame.data());
  QT_SetY420_Header(header, kHeight, kWidth);
  std::vector<UInt8> y(kPixels), u(kPixels / 4), v(kPixels / 4);
  const auto peer = [&] {
    libyuv::UYVYToI420(source.data(), kWidth * 2, y.data(), kWidth, u.data(), kWidth / 2, v.data(),
                       kWidth / 2, kWidth, kHeight);
  };
  const Rates simple = RatesInTurns(
      [&] { CO_2vuyFrameToY420(kHeight, kWidth, kWidth * 2, source.data(), header, 0); }, peer);
  const Rates tent = RatesInTurns(
      [&] { CO_2vuyFrameToY420_Tent(kHeight, kWidth, kWidth * 2, source.data(), header, 0); },
      peer);
  std::vector<UInt8> back(source.size());
  const Rates from =
      RatesInTurns([&] { CO_Y420_FrameTo2vuy(kHeight, kWidth, header, back.data(), 0); },
                   [&] {
                     libyuv::I420ToUYVY(y.data(), kWidth, u.data(), kWidth / 2, v.data(),
                                        kWidth / 2, back.data(), kWidth * 2, kWidth, kHeight);
                   });
  Print("2vuy to Y420", simple, "libyuv UYVYToI420");
  Print("2vuy to Y420, tent", tent, "libyuv UYVYToI420");
  Print("Y420 to 2vuy", from, "libyuv I420ToUYVY");
}

void CompareFilters(const std::vector<UInt8>& source) {
  constexpr int kFewPasses = 5;
  double taps7[7], taps9[9];
  if (NR_MakeLowPassFilter7_d(taps7) || NR_MakeLowPassFilter9_d(taps9)) Fail("making taps");
  std::vector<UInt8> frame = source;
  std::vector<UInt8> plain = source;
  const auto columns = [&](auto filter) {
    return [&, filter] {
      for (SInt32 i = 0; i < kWidth * 2; ++i)
        filter(plain.data() + i);
    };
  };
  const double fast7 =
      Rate([&] { CO_VertLowPassFilterFrame7(kWidth, kHeight, frame.data()); }, kFewPasses);
  const double plain7 = Rate(columns([&](UInt8* column) {
                               CO_LowPassFilterVertLine7(kHeight, taps7, column, kWidth * 2);
                             }),
                             kFewPasses);
  if (frame != plain) Fail("the filter of 7 taps");
  const double fast9 =
      Rate([&] { CO_VertLowPassFilterFrame9(kWidth, kHeight, frame.data()); }, kFewPasses);
  const double plain9 = Rate(columns([&](UInt8* column) {
                               CO_LowPassFilterVertLine9(kHeight, taps9, column, kWidth * 2);
                             }),
                             kFewPasses);
  if (frame != plain) Fail("the filter of 9 taps");
  Print("vertical filter of 7 taps", fast7, "column by column", plain7);
  Print("vertical filter of 9 taps", fast9, "column by column", plain9);
}

}  // namespace

int main() {
  const std::vector<UInt8> source = RandomBytes(kPixels * 2);
  CompareV210();
  CompareFloats(source);
  CompareY420(source);
  CompareFilters(source);
}
