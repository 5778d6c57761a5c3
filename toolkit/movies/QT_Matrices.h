/// Matrices (matrices.h) of tracks and movies: made from rectangles, combined, told.
#pragma once

#include "QT_Ide.h"
#include "base_types.h"

/// From one rectangle to another, corner by corner; and for two sizes at the origin, in pixels.
void QT_FixedRectMatrix(MatrixRecord* matrix, const FixedRect* source,
                        const FixedRect* destination);
void QT_RectMatrix(SInt16 sourceWidth, SInt16 sourceHeight, SInt16 destinationWidth,
                   SInt16 destinationHeight, MatrixRecord* matrix);
/// The aspect that square pixels have behind a matrix, reduced.
void QT_GetMatrixPasp(const MatrixRecord* matrix, QT_Pasp* pasp);
Boolean QT_IsIdentityMatrix(const MatrixRecord* matrix);
/// b becomes a b, so that points go through a first; or a becomes a b.
void QT_MatrixLeftMultiply(const MatrixRecord* a, MatrixRecord* b);
void QT_MatrixRightMultiply(MatrixRecord* a, const MatrixRecord* b);

/// The name of a matrix type, 0 to 6, into 64 bytes.
void QT_MatrixTypeGetDescrStr(SInt16 type, char* text);
/// "LABEL: row 1 1.0000,0.0000,0.0000, row 2 ...", of all nine elements as 16.16; the first form
/// has the label "Matrix". The last one has no newline, and wants 200 bytes and the label.
void QT_PrintMatrix(const MatrixRecord* matrix);
void QT_PrintMatrixWithName(const MatrixRecord* matrix, const char* label);
void QT_SPrintMatrixWithName(char* buffer, const MatrixRecord* matrix, const char* label);
