// A frame of 2vuy edited from one colour space to another beside zimg's graph for the same change.
//
// Usage: edit_benchmark   1920 by 1080, one thread, ITU-R BT.709 to SMPTE C primaries and BT.601's
// matrix by way of linear light; zimg works on planes of 8 bits and takes its quick gamma tables.

#include <zimg.h>

#include <cstdio>
#include <random>
#include <vector>

#include "CO_Color_Conversions.h"
#include "CO_Edit.h"
#include "CO_Float_Lines.h"
#include "CO_Ranges.h"
#include "ORW_blas.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;

constexpr unsigned kWidth = 1920;
constexpr unsigned kHeight = 1080;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;
constexpr int kPasses = 15;

double Ours(const std::vector<UInt8>& source) {
  EditData edit = {};
  edit.sourceNclc = {kQT_NclcType, 1, 1, 1};
  edit.destNclc = {kQT_NclcType, 6, 1, 6};
  edit.sourceGamma = edit.destGamma = 1;
  edit.sourceRange = edit.destRange = kCO_VideoRange;
  double matrix[9];
  CO_GetYUVtoRGB_MatrixD(1, matrix);
  CB_MatrixDtoF(3, 3, matrix, edit.yuvToRgb);
  CO_GetRGBtoYUV_MatrixD(6, matrix);
  CB_MatrixDtoF(3, 3, matrix, edit.rgbToYuv);
  CO_GetRGBConversionMatrixD_Indexed(1, kCO_WhiteD65, 6, kCO_WhiteD65, kCO_ConesBradford, matrix);
  CB_MatrixDtoF(3, 3, matrix, edit.rgbToRgb);
  CO_AllocateEditBuffers(kWidth, &edit);
  std::vector<UInt8> out(source.size());
  const double seconds = MedianSeconds(kPasses, [&] {
    for (std::size_t row = 0; row < kHeight; ++row) {
      CO_2vuyLineToYUV(kWidth, source.data() + row * kWidth * 2, &edit, 1);
      CO_YUVF_LinesEditGammaNclc(kWidth, &edit);
      CO_YUVF_LinesTo2vuy(kWidth, &edit, out.data() + row * kWidth * 2, 0);
    }
  });
  CO_FreeEditData(&edit);
  return seconds;
}

zimg_image_format FormatOf(zimg_color_primaries_e primaries, zimg_matrix_coefficients_e matrix) {
  zimg_image_format format;
  zimg_image_format_default(&format, ZIMG_API_VERSION);
  format.width = kWidth;
  format.height = kHeight;
  format.pixel_type = ZIMG_PIXEL_BYTE;
  format.subsample_w = 1;
  format.color_family = ZIMG_COLOR_YUV;
  format.matrix_coefficients = matrix;
  format.transfer_characteristics = ZIMG_TRANSFER_BT709;
  format.color_primaries = primaries;
  format.depth = 8;
  format.pixel_range = ZIMG_RANGE_LIMITED;
  return format;
}

/// The planes of a frame of 4:2:2.
struct Planes {
  Planes() : y(kPixels), cb(kPixels / 2), cr(kPixels / 2) {}
  std::vector<UInt8> y, cb, cr;
};

double Peers(const std::vector<UInt8>& source) {
  Planes in, out;
  for (std::size_t i = 0; i < kPixels; ++i) {
    in.y[i] = source[2 * i + 1];
    (i % 2 == 0 ? in.cb : in.cr)[i / 2] = source[2 * i];
  }
  const zimg_image_format from = FormatOf(ZIMG_PRIMARIES_BT709, ZIMG_MATRIX_BT709);
  const zimg_image_format to = FormatOf(ZIMG_PRIMARIES_ST170_M, ZIMG_MATRIX_ST170_M);
  zimg_graph_builder_params parameters;
  zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
  parameters.resample_filter_uv = ZIMG_RESIZE_BILINEAR;
  parameters.cpu_type = ZIMG_CPU_X86_AVX2;
  parameters.allow_approximate_gamma = 1;
  zimg_filter_graph* const graph = zimg_filter_graph_build(&from, &to, &parameters);
  if (graph == nullptr) Fail("building zimg's graph");
  std::size_t size = 0;
  zimg_filter_graph_get_tmp_size(graph, &size);
  void* const scratch = std::aligned_alloc(64, (size + 63) / 64 * 64);
  zimg_image_buffer_const read = {ZIMG_API_VERSION, {}};
  zimg_image_buffer written = {ZIMG_API_VERSION, {}};
  const UInt8* const sources[] = {in.y.data(), in.cb.data(), in.cr.data()};
  UInt8* const targets[] = {out.y.data(), out.cb.data(), out.cr.data()};
  for (int i = 0; i < 3; ++i) {
    const std::ptrdiff_t stride = i == 0 ? kWidth : kWidth / 2;
    read.plane[i] = {sources[i], stride, ZIMG_BUFFER_MAX};
    written.plane[i] = {targets[i], stride, ZIMG_BUFFER_MAX};
  }
  const double seconds = MedianSeconds(kPasses, [&] {
    if (zimg_filter_graph_process(graph, &read, &written, scratch, nullptr, nullptr, nullptr,
                                  nullptr) != ZIMG_ERROR_SUCCESS)
      Fail("zimg");
  });
  std::free(scratch);
  zimg_filter_graph_free(graph);
  return seconds;
}

}  // namespace

int main() {
  std::vector<UInt8> source(kPixels * 2);
  std::mt19937 random(1);
  for (std::size_t i = 0; i < source.size(); ++i)
    source[i] = static_cast<UInt8>(i % 2 == 0 ? 64 + random() % 129 : 16 + random() % 220);
  const double ours = Ours(source);
  const double peers = Peers(source);
  std::printf("edit of a frame: %.0f Mpixel/s   zimg %.0f Mpixel/s   ratio of rates %.2f\n",
              kPixels / ours / 1e6, kPixels / peers / 1e6, peers / ours);
}
