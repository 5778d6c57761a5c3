#include "GL_Quartz.h"

#include "GL_Controls.h"
#include "GL_QuickDraw_Fit.h"

void GL_HIRectToRect(const HIRect* from, Rect* to) {
  to->top = static_cast<SInt16>(from->origin.y);
  to->left = static_cast<SInt16>(from->origin.x);
  to->bottom = static_cast<SInt16>(static_cast<float>(to->top) + from->size.height);
  to->right = static_cast<SInt16>(static_cast<float>(to->left) + from->size.width);
}

void GL_RectToHIRect(const Rect* from, HIRect* to) {
  to->origin = {static_cast<CGFloat>(from->left), static_cast<CGFloat>(from->top)};
  to->size = {static_cast<CGFloat>(from->right - from->left),
              static_cast<CGFloat>(from->bottom - from->top)};
}

SInt32 GL_ScaleImageView(WindowRef window, CGImageRef image, const HIRect* box, OSType signature,
                         SInt32 number) {
  Rect box_rect{};
  GL_HIRectToRect(box, &box_rect);
  const Rect image_rect{0, 0, static_cast<SInt16>(CGImageGetHeight(image)),
                        static_cast<SInt16>(CGImageGetWidth(image))};
  Rect fitted{};
  GL_FitRectInBox(&image_rect, &box_rect, &fitted, nullptr, nullptr);

  HIRect frame{};
  const SInt32 status = GL_HIViewGetFrameByID(window, signature, number, &frame);
  if (status != noErr) return status;
  Rect rect{};
  GL_HIRectToRect(&frame, &rect);
  const int dv = ((fitted.bottom - fitted.top) - (rect.bottom - rect.top)) / 2;
  const int dh = ((fitted.right - fitted.left) - (rect.right - rect.left)) / 2;
  rect.top = static_cast<SInt16>(rect.top - dv);
  rect.bottom = static_cast<SInt16>(rect.bottom + dv);
  rect.left = static_cast<SInt16>(rect.left - dh);
  rect.right = static_cast<SInt16>(rect.right + dh);
  GL_RectToHIRect(&rect, &frame);
  return GL_HIViewSetFrameByID(window, signature, number, &frame);
}
