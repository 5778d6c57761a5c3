/// Editing a frame line by line in floats: from one range, gamma and colour parameter record to
/// another.
///
/// A frame's lines are read into the edit's float lines (CO_Float_Lines.h), changed here, and
/// written. In each pixel come range, matrix to R'G'B', transfer function to linear light,
/// primaries, transfer function from it, matrix to Y'CbCr, range. A record starts cleared; the
/// caller fills in matrices (CO_Color_Conversions.h, narrowed), gammas, ranges and records.
#pragma once

#include "CO_Edit_Data.h"
#include "base_types.h"

// Memory.

/// Allocates the lines of the record for a width, each with 32 bytes in front and 96 behind, and
/// gives the width rounded up to a multiple of 8. A line that there is no memory for is null.
UInt32 CO_AllocateEditBuffers(SInt32 width, EditData* edit);
/// The same for the planes of two frames, each with 32 bytes in front and behind.
void CO_AllocateScaleBuffers(SInt32 sourceWidth, SInt32 sourceHeight, SInt32 destinationWidth,
                             SInt32 destinationHeight, ScaleBuffers* scale);
/// Frees what there is and clears the pointers. `extraBlock` and `scaleBlock` come from malloc.
void CO_FreeEditBuffers(EditData* edit);
void CO_FreeScaleBuffers(ScaleBuffers* scale);
/// Frees both and the record's gamma functions and polynomials; a second call does nothing.
void CO_FreeEditData(EditData* edit);

// What there is to do between source and destination.

Boolean CO_DoRange(const EditData* edit);
Boolean CO_DoTransferFunction(const EditData* edit);
/// False also where either side's primaries are not specified.
Boolean CO_DoPrimaries(const EditData* edit);
/// Between ITU-R BT.601 and one of the other two, whose matrices count as one.
Boolean CO_DoMatrix(const EditData* edit);
/// Any of the three above.
Boolean CO_DoNclc(const EditData* edit);
/// True if one side alone has a standard transfer function, or both have different ones; without
/// any, if the powers differ by CO_EqualGamma.
Boolean CO_DoGamma(const EditData* edit);

// Lines, the first `count` pixels. A transfer function without a curve changes nothing.

/// Y'CbCr in lineY, lineCb and lineCr. Nothing changes where neither CO_DoNclc is true nor both
/// transfer functions are unspecified and the powers differ; else each pixel is sanitised first.
/// The result is exact to 4e-6; of chroma that is no number it is any.
void CO_YUVF_LinesEditGammaNclc(SInt32 count, EditData* edit);
/// R'G'B' in the same lines. A pixel is sanitised where the source's matrix is standard, and stays
/// as it was where neither primaries nor gamma change.
void CO_RGBF_LinesEditGammaNclc(SInt32 count, EditData* edit);

/// Colour settings that nothing here reads: 1.0, 0.0, 1.0, 1.0.
void CO_MakeDefaultColorSett(float* settings);
