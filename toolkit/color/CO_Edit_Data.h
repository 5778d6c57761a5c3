/// The record of one edit of a frame: its line buffers and what its colours are and shall be.
#pragma once

#include "QT_Nclc.h"
#include "VI_PolyData.h"
#include "base_types.h"
#include "gamma_functions.h"

/// Two planar frames of 4:2:2 in floats. Rows have the aligned width, which is a multiple of 8, of
/// floats, those of chroma half as many.
struct ScaleBuffers {
  float* sourceY;
  float* sourceCb;
  float* sourceCr;
  UInt32 sourceAlignedWidth;
  void* scaleBlock;  ///< goes with the record
  float* destY;
  float* destCb;
  float* destCr;
  UInt32 destAlignedWidth;
};

/// Lines hold one line in floats, 4:4:4: luma 0.0 to 1.0, chroma -0.5 to +0.5, or red, green and
/// blue. Matrices are in the row-vector form of CO_Color_Conversions.h.
struct EditData {
  void* workBlock;
  float* lineY;
  float* lineCb;
  float* lineCr;
  float* auxLineY;
  float* auxLineCb;
  float* auxLineCr;
  void* workLine;
  void* extraLine;
  UInt32 alignedWidth;  ///< the width rounded up to a multiple of 8
  void* extraBlock;     ///< goes with the record
  float yuvToRgb[9];    ///< of the source
  float rgbToYuv[9];    ///< of the destination
  float rgbToRgb[9];    ///< from the source's primaries to the destination's
  ScaleBuffers scale;
  float sourceGamma;   ///< a power
  SInt32 sourceRange;  ///< CO_Ranges.h
  QT_Nclc sourceNclc;
  float destGamma;
  SInt32 destRange;
  QT_Nclc destNclc;
  PolyData* polyData1;
  ImageGammaFunction* gammaFunction1;
  ImageGammaFunction* gammaFunction2;
  PolyData* polyData2;
  ImageGammaFunction* gammaFunction3;
};
