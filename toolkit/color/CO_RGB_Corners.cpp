#include "CO_RGB_Corners.h"

#include <cmath>

#include "CO_Color_Conversions.h"
#include "rounding_private.h"

namespace {

using namespace quillmere::color;

constexpr const char* kNames[kCO_Corners] = {"green", "cyan", "blue", "magenta", "red", "yellow"};
constexpr int kLastEdge = kCO_Corners - 1;

int Next(int corner) {
  return (corner + 1) % kCO_Corners;
}

/// Angles and edges of given corners.
void MeasureHexagon(const float* cb, const float* cr, float* angles, float* edge_a, float* edge_b,
                    float* edge_c) {
  for (int k = 0; k < kCO_Corners; ++k) {
    angles[k] = std::atan2(cr[k], cb[k]);
    const float length = std::hypot(cb[Next(k)] - cb[k], cr[Next(k)] - cr[k]);
    const float dx = (cb[Next(k)] - cb[k]) / length;
    const float dy = (cr[Next(k)] - cr[k]) / length;
    edge_a[k] = dy;
    edge_b[k] = -dx;
    edge_c[k] = dy * cb[k] - dx * cr[k];
  }
}

float Degrees(float radians) {
  return radians * 57.29577951F;
}

}  // namespace

void CO_GetRGB_CornersInYC_1(float* angles, float* edgeA, float* edgeB, float* edgeC,
                             SInt32 matrixIndex) {
  float k[3];
  CO_IndexToMatrixF(matrixIndex, k);
  const auto [kr, kg, kb] = k;
  const float sb = 0.5F / (1 - kb);
  const float sr = 0.5F / (1 - kr);
  const float cb[] = {-kg * sb,           (1 - kg - kb) * sb, (1 - kb) * sb,
                      (1 - kr - kb) * sb, -kr * sb,           -(kr + kg) * sb};
  const float cr[] = {-kg * sr,           -(kg + kb) * sr, -kb * sr,
                      (1 - kr - kb) * sr, (1 - kr) * sr,   (1 - kr - kg) * sr};
  MeasureHexagon(cb, cr, angles, edgeA, edgeB, edgeC);
}

void CO_GetRGB_CornersInYC_2(float* angles, float* edgeA, float* edgeB, float* edgeC,
                             float* cornerY, float* cornerCb, float* cornerCr) {
  constexpr float kY[] = {0.587F, 0.701F, 0.114F, 0.413F, 0.299F, 0.886F};
  constexpr float kCb[] = {-0.3312641F, 0.16873588F, 0.5F, 0.3312641F, -0.16873589F, -0.5F};
  constexpr float kToCr = 0.7132668F;
  for (int k = 0; k < kCO_Corners; ++k) {
    cornerY[k] = kY[k];
    cornerCb[k] = kCb[k];
    cornerCr[k] = (k < kCO_Corners / 2 ? -kY[k] : 1 - kY[k]) * kToCr;
  }
  MeasureHexagon(cornerCb, cornerCr, angles, edgeA, edgeB, edgeC);
}

void CO_GetNearestCorners(const float* angles, float angle, SInt32* edge) {
  *edge = kLastEdge;
  if (!(angle >= angles[0])) return;
  for (int k = 0; k < kLastEdge; ++k) {
    if (angle < angles[k + 1]) {
      *edge = k;
      return;
    }
  }
}

void CO_GetNearestCornerColors(float angle, SInt32 matrixIndex, float* lowerAngle,
                               const char** lowerName, float* upperAngle, const char** upperName) {
  CornerTable table;
  CO_GetRGB_CornersInYC_1(table.angles, table.edgeA, table.edgeB, table.edgeC, matrixIndex);
  for (float& corner : table.angles)
    corner = Degrees(corner);
  SInt32 edge = 0;
  CO_GetNearestCorners(table.angles, angle, &edge);
  const int lower = edge == kLastEdge ? 0 : edge;
  const int upper = edge == kLastEdge ? kLastEdge : edge + 1;
  *lowerAngle = table.angles[lower];
  *lowerName = kNames[lower];
  *upperAngle = table.angles[upper];
  *upperName = kNames[upper];
}

float CO_CalcSaturation(float cb, float cr, const float* angles, const float* edgeA,
                        const float* edgeB, const float* edgeC) {
  SInt32 k = 0;
  CO_GetNearestCorners(angles, std::atan2(cr, cb), &k);
  return (cb * cb + cr * cr) / ((cb * edgeA[k] + cr * edgeB[k]) * edgeC[k]);
}

void CO_SaturatedColorToYC(float angle, float luma, const CornerTable* table, SInt8* cb,
                           SInt8* cr) {
  SInt32 k = 0;
  CO_GetNearestCorners(table->angles, angle, &k);
  const int next = Next(k);
  const float slope = std::tan(angle);
  const float from = table->cornerCr[k] - slope * table->cornerCb[k];
  const float to = table->cornerCr[next] - slope * table->cornerCb[next];
  const float w = -to / from;
  // A ray through corner k itself.
  const float f = std::isfinite(w) ? w / (w + 1) : 1;
  const auto between = [=](const float* corner) { return corner[k] * f + corner[next] * (1 - f); };
  const float y = between(table->cornerY);
  const float n = (luma - 16) / 235;
  const float scale = n / y < 1 ? n / y : 1 - (n - y) / (1 - y);
  const auto chroma = [=](const float* corner) {
    return Cut<SInt8>(static_cast<double>(between(corner) * scale * 224));
  };
  *cb = chroma(table->cornerCb);
  *cr = chroma(table->cornerCr);
}
