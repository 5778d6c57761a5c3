/// The edit of lines against the same steps in double precision.
#include "CO_Edit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "CO_Color_Conversions.h"
#include "CO_Float_Lines.h"
#include "CO_Gamma.h"
#include "CO_Ranges.h"
#include "CO_Sanitize.h"
#include "ORW_blas.h"
#include "bt709_curve.h"
#include "edit_lines_private.h"
#include "gamma_functions.h"

namespace {

/// An edit between two records, with its matrices.
struct Edit {
  Edit(QT_Nclc from, QT_Nclc to, SInt32 width) {
    data.sourceNclc = from;
    data.destNclc = to;
    data.sourceGamma = data.destGamma = 1;
    data.sourceRange = data.destRange = kCO_VideoRange;
    CO_GetYUVtoRGB_MatrixD(from.matrix, to_rgb);
    CO_GetRGBtoYUV_MatrixD(to.matrix, to_yuv);
    CO_GetRGBConversionMatrixD_Indexed(from.primaries, 2, to.primaries, 2, 3, primaries);
    CB_MatrixDtoF(3, 3, to_rgb, data.yuvToRgb);
    CB_MatrixDtoF(3, 3, to_yuv, data.rgbToYuv);
    CB_MatrixDtoF(3, 3, primaries, data.rgbToRgb);
    CO_AllocateEditBuffers(width, &data);
  }
  Edit(const Edit&) = delete;
  Edit& operator=(const Edit&) = delete;
  ~Edit() { CO_FreeEditData(&data); }
  EditData data = {};
  double to_rgb[9], to_yuv[9], primaries[9];
};

void Sanitize(double* yuv, const double* k) {
  if (yuv[0] < 0.00001) {
    yuv[0] = yuv[1] = yuv[2] = 0;
    return;
  }
  if (yuv[0] > 0.9999) {
    yuv[0] = 0.9999;
    yuv[1] = yuv[2] = 0;
    return;
  }
  const double red = 2 * (1 - k[0]) * yuv[2];
  const double blue = 2 * (1 - k[2]) * yuv[1];
  const double green = -(k[0] * red + k[2] * blue) / k[1];
  double factor = 1;
  for (const double distance : {red, green, blue}) {
    const double room = distance > 0 ? 1 - yuv[0] : yuv[0];
    factor = std::min(factor, room / std::max(room, std::abs(distance)));
  }
  if (factor > 0.00001) factor -= 0.00001;
  yuv[1] *= factor;
  yuv[2] *= factor;
}

/// The codes of an edited pixel by the steps in double precision.
void Reference(const Edit& edit, const int* codes, int* out) {
  double k[3];
  CO_IndexToMatrixD(edit.data.sourceNclc.matrix, k);
  double yuv[] = {(codes[0] - 16) / 219.0, (codes[1] - 128) / 224.0, (codes[2] - 128) / 224.0};
  Sanitize(yuv, k);
  double rgb[3], linear[3];
  CB_MatrixTrVectorD(3, 3, edit.to_rgb, yuv, rgb);
  for (double& component : rgb)
    component = Decode709(component);
  CB_MatrixTrVectorD(3, 3, edit.primaries, rgb, linear);
  for (double& component : linear)
    component = Encode709(component);
  CB_MatrixTrVectorD(3, 3, edit.to_yuv, linear, yuv);
  const double exact[] = {219 * yuv[0] + 16.5, 224 * yuv[1] + 128.5, 224 * yuv[2] + 128.5};
  for (int i = 0; i < 3; ++i)
    out[i] = static_cast<int>(std::clamp(exact[i], 0.0, 255.0));
}

TEST(Editing, AgreesWithDoublePrecisionOnALatticeOfAllTriples) {
  constexpr int kStep = 3;
  constexpr int kWidth = 86;
  const QT_Nclc hd = {kQT_NclcType, 1, 1, 1};
  const QT_Nclc ntsc = {kQT_NclcType, 6, 1, 6};
  Edit edit(hd, ntsc, kWidth);
  int codes = 0;
  int different = 0;
  std::vector<UInt8> line(kWidth * 2);
  for (int cb = 0; cb < 256; cb += kStep) {
    for (int cr = 0; cr < 256; cr += kStep) {
      for (std::size_t i = 0; i < kWidth; ++i) {
        line[2 * i] = static_cast<UInt8>(i % 2 == 0 ? cb : cr);
        line[2 * i + 1] = static_cast<UInt8>(i * kStep);
      }
      CO_2vuyLineToYUV(kWidth, line.data(), &edit.data, 1);
      CO_YUVF_LinesEditGammaNclc(kWidth, &edit.data);
      CO_YUVF_LinesTo2vuy(kWidth, &edit.data, line.data(), 0);
      for (std::size_t i = 0; i < kWidth; i += 2) {
        const int in[] = {static_cast<int>(i) * kStep, cb, cr};
        int out[3];
        Reference(edit, in, out);
        const int ours[] = {line[2 * i + 1], line[2 * i], line[2 * i + 2]};
        for (int k = 0; k < 3; ++k) {
          ASSERT_LE(std::abs(ours[k] - out[k]), 1) << in[0] << ' ' << cb << ' ' << cr;
          different += ours[k] != out[k];
          ++codes;
        }
      }
    }
  }
  EXPECT_LE(different, codes / 1000) << "of " << codes;
}

TEST(Editing, LinesEqualTheStepsOfEachPixel) {
  std::mt19937 random(6);
  std::uniform_real_distribution<float> luma(-0.2F, 1.3F), chroma(-0.7F, 0.7F);
  for (const int from_index : {1, 3, 7, 9}) {
    for (const int to_index : {1, 3, 7, 5}) {
      const auto from = static_cast<UInt16>(from_index);
      const auto to = static_cast<UInt16>(to_index);
      constexpr SInt32 kWidth = 611;
      const QT_Nclc source = {kQT_NclcType, 1, from, 1};
      Edit edit(source, {kQT_NclcType, 5, to, 6}, kWidth);
      edit.data.sourceGamma = edit.data.destGamma = 2.2F;
      std::vector<float> pixels;
      for (SInt32 i = 0; i < kWidth; ++i)
        pixels.insert(pixels.end(), {luma(random), chroma(random), chroma(random)});
      for (std::size_t i = 0; i < kWidth; ++i) {
        edit.data.lineY[i] = pixels[3 * i];
        edit.data.lineCb[i] = pixels[3 * i + 1];
        edit.data.lineCr[i] = pixels[3 * i + 2];
      }
      CO_YUVF_LinesEditGammaNclc(kWidth, &edit.data);
      float k[3];
      CO_IndexToMatrixF(1, k);
      for (std::size_t i = 0; i < kWidth; ++i) {
        float* const pixel = &pixels[3 * i];
        float rgb[3], light[3];
        CO_SanitizeNormYCbCrF32(pixel, k);
        CB_MatrixTrVectorF(3, 3, edit.data.yuvToRgb, pixel, rgb);
        CO_ConvertGammaNormRGB_F32_indexed(rgb, from, rgb, kCO_TransferLinear);
        CB_MatrixTrVectorF(3, 3, edit.data.rgbToRgb, rgb, light);
        CO_ConvertGammaNormRGB_F32_indexed(light, kCO_TransferLinear, light, to);
        CB_MatrixTrVectorF(3, 3, edit.data.rgbToYuv, light, pixel);
        ASSERT_NEAR(edit.data.lineY[i], pixel[0], 4e-6F) << from << ' ' << to << ' ' << i;
        ASSERT_NEAR(edit.data.lineCb[i], pixel[1], 4e-6F) << from << ' ' << to << ' ' << i;
        ASSERT_NEAR(edit.data.lineCr[i], pixel[2], 4e-6F) << from << ' ' << to << ' ' << i;
      }
    }
  }
}

TEST(Editing, EachPathEditsBlocksAlike) {
  using namespace quillmere::color;
  constexpr std::ptrdiff_t kBlocks = 33;  // more than one pass, and not whole ones
  constexpr SInt32 kWidth = kBlocks * kBlockPixels;
  Edit plain({kQT_NclcType, 1, 1, 1}, {kQT_NclcType, 6, 1, 6}, kWidth);
  const float luma[] = {0.2126F, 0.7152F, 0.0722F};
  const VectorCurve* const curve = VectorCurveOf(kCO_TransferBT709);
  const auto edited = [&](const EditPath& path) {
    std::mt19937 random(3);
    std::uniform_real_distribution<float> values(-0.5F, 1);
    for (float* line : {plain.data.lineY, plain.data.lineCb, plain.data.lineCr})
      std::generate_n(line, kWidth, [&] { return values(random); });
    path.edit(kBlocks, *curve, *curve, luma, &plain.data);
    std::vector<float> all;
    for (const float* line : {plain.data.lineY, plain.data.lineCb, plain.data.lineCr})
      all.insert(all.end(), line, line + kWidth);
    return all;
  };
  const std::vector<float> expected = edited(EditPlain());
  for (const EditPath& path : {EditAvx2(), EditAvx512()}) {
    if (!path.is_available) continue;
    EXPECT_EQ(edited(path), expected);
  }
}

TEST(Editing, EqualRecordsChangeNothing) {
  const QT_Nclc hd = {kQT_NclcType, 1, 1, 1};
  Edit edit(hd, hd, 8);
  const float wild[] = {2, -1, 0.5F, 7, 0, 1, 0.3F, -3};
  for (float* line : {edit.data.lineY, edit.data.lineCb, edit.data.lineCr})
    std::copy_n(wild, 8, line);
  CO_YUVF_LinesEditGammaNclc(8, &edit.data);
  CO_RGBF_LinesEditGammaNclc(8, &edit.data);
  for (const float* line : {edit.data.lineY, edit.data.lineCb, edit.data.lineCr})
    EXPECT_TRUE(std::equal(wild, wild + 8, line));
}

TEST(Editing, PowersChangeUnspecifiedGamma) {
  const QT_Nclc open = {kQT_NclcType, 2, 2, 1};
  Edit edit(open, open, 8);
  const auto set = [&edit](float value) {
    for (float* line : {edit.data.lineY, edit.data.lineCb, edit.data.lineCr})
      line[0] = value;
  };
  edit.data.sourceGamma = 2.2F;
  edit.data.destGamma = 2.21F;
  set(0.5F);
  CO_RGBF_LinesEditGammaNclc(1, &edit.data);
  EXPECT_EQ(edit.data.lineY[0], 0.5F);
  edit.data.destGamma = 1.8F;
  CO_RGBF_LinesEditGammaNclc(1, &edit.data);
  EXPECT_NEAR(edit.data.lineY[0], std::pow(0.5F, 2.2F / 1.8F), 2e-5F);
  set(0.5F);
  edit.data.lineCb[0] = edit.data.lineCr[0] = 0;
  CO_YUVF_LinesEditGammaNclc(1, &edit.data);
  EXPECT_NEAR(edit.data.lineY[0], std::pow(0.5F, 2.2F / 1.8F), 2e-5F);
  EXPECT_NEAR(edit.data.lineCb[0], 0, 1e-6F);
  // One side standard: decoded by its curve, then the other's power.
  edit.data.sourceNclc.transferFunction = 1;
  set(0.5F);
  CO_RGBF_LinesEditGammaNclc(1, &edit.data);
  EXPECT_NEAR(edit.data.lineCr[0], std::pow(Decode709(0.5), 1 / 1.8), 1e-4);
}

TEST(Editing, DecidesAsTold) {
  EditData edit = {};
  const auto set = [&edit](QT_Nclc from, QT_Nclc to) {
    edit.sourceNclc = from;
    edit.destNclc = to;
  };
  const struct {
    UInt16 from[3], to[3];  // primaries, transfer function, matrix
    bool primaries, matrix, gamma;
  } rows[] = {{{1, 1, 1}, {2, 1, 7}, false, false, false},
              {{1, 1, 6}, {6, 7, 7}, true, true, true},
              {{5, 1, 6}, {1, 2, 2}, true, false, true},
              {{5, 2, 6}, {5, 2, 1}, false, true, false}};
  for (const auto& row : rows) {
    set({kQT_NclcType, row.from[0], row.from[1], row.from[2]},
        {kQT_NclcType, row.to[0], row.to[1], row.to[2]});
    EXPECT_EQ(CO_DoPrimaries(&edit) != 0, row.primaries);
    EXPECT_EQ(CO_DoMatrix(&edit) != 0, row.matrix);
    EXPECT_EQ(CO_DoGamma(&edit) != 0, row.gamma);
  }
  edit.sourceRange = 1;
  EXPECT_TRUE(CO_DoRange(&edit));
}

TEST(Editing, MemoryIsAlignedAndFreedOnce) {
  EditData edit = {};
  EXPECT_EQ(CO_AllocateEditBuffers(720, &edit), 720U);
  CO_FreeEditData(&edit);
  EXPECT_EQ(CO_AllocateEditBuffers(721, &edit), 728U);
  CO_AllocateScaleBuffers(9, 4, 16, 2, &edit.scale);
  EXPECT_EQ(edit.scale.sourceAlignedWidth, 16U);
  std::fill_n(edit.lineY - 8, 8 + 728 + 24, 1.0F);
  std::fill_n(edit.scale.sourceCr - 8, 8 + 4 * 8 + 8, 1.0F);
  edit.gammaFunction1 = vImageCreateGammaFunction(0.5F);
  const float plane[] = {0.25F, -0.25F};
  float out[2];
  vImageGamma_PlanarF(plane, out, 2, edit.gammaFunction1);
  EXPECT_EQ(out[0], 0.5F);
  EXPECT_EQ(out[1], -0.5F);
  edit.polyData1 = static_cast<PolyData*>(std::calloc(1, sizeof(PolyData)));
  VI_FillPolyData(edit.polyData1, 7, 0);
  CO_FreeEditData(&edit);
  CO_FreeEditData(&edit);
  EXPECT_EQ(edit.lineY, nullptr);
  EXPECT_EQ(edit.polyData1, nullptr);
}

}  // namespace
