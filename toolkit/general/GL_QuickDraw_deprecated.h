/// Older drawing calls of the platform under one name each: they forward their arguments unchanged,
/// so that what still uses such a call is found by this prefix.
#pragma once

#include "base_types.h"
#include "graphics_ports.h"
#include "pictures.h"
#include "regions.h"

void QDD_SetRect(Rect* rect, SInt16 left, SInt16 top, SInt16 right, SInt16 bottom);
Boolean QDD_EqualRect(const Rect* a, const Rect* b);
Boolean QDD_PtInRect(Point point, const Rect* rect);
void QDD_OffsetRect(Rect* rect, SInt16 dh, SInt16 dv);
Boolean QDD_SectRect(const Rect* a, const Rect* b, Rect* out);
void QDD_SectRgn(RgnHandle a, RgnHandle b, RgnHandle out);
Boolean QDD_IsRegionRectangular(RgnHandle region);
Boolean QDD_TransformRect(const MatrixRecord* matrix, Rect* rect);
Boolean QDD_TransformFixedRect(const MatrixRecord* matrix, FixedRect* rect);

void QDD_ForeColor(SInt32 code);
void QDD_RGBForeColor(const RGBColor* color);
void QDD_PenNormal();
void QDD_PenSize(SInt16 width, SInt16 height);
void QDD_MoveTo(SInt16 h, SInt16 v);
void QDD_FrameRect(const Rect* rect);
void QDD_PaintRect(const Rect* rect);
void QDD_ClipRect(const Rect* rect);
OSErr QDD_NewGWorld(GWorldPtr* world, SInt16 depth, const Rect* bounds, CTabHandle colors,
                    GDHandle device, GWorldFlags flags);
PicHandle QDD_OpenCPicture(const OpenCPicParams* header);
void QDD_DrawPicture(PicHandle picture, const Rect* destination);
OSErr QDD_GetPictInfo(PicHandle picture, PictInfo* info);
