#include "window_ports.h"

#include <QPaintEvent>
#include <QPainter>
#include <QtEndian>

#include "window_manager.h"
#include "windows_private.h"

namespace {

/// A port's pixels as Qt has them.
QImage ImageOf(CGrafPtr port) {
  const PixMap& pixels = **GetGWorldPixMap(port);
  QImage image(pixels.bounds.right - pixels.bounds.left, pixels.bounds.bottom - pixels.bounds.top,
               QImage::Format_ARGB32);
  for (int v = 0; v < image.height(); ++v)
    qFromBigEndian<quint32>(pixels.baseAddr + std::ptrdiff_t{v} * pixels.rowBytes, image.width(),
                            image.scanLine(v));
  return image;
}

}  // namespace

CGrafPtr GetWindowPort(WindowRef window) {
  if (!IsValidWindowPtr(window)) return nullptr;
  const QWidget& widget = *window->widget;
  const QPoint corner = widget.mapToGlobal(QPoint(0, 0));
  const Point on_screen = {static_cast<SInt16>(corner.y()), static_cast<SInt16>(corner.x())};
  if (!window->port)
    window->port.reset(
        quillmere::drawing::NewScreenPort(widget.width(), widget.height(), on_screen));
  else
    quillmere::drawing::PlaceScreenPort(window->port.get(), widget.width(), widget.height(),
                                        on_screen);
  return window->port.get();
}

void SetPortWindowPort(WindowRef window) {
  if (CGrafPtr port = GetWindowPort(window)) SetPort(port);
}

void SetWindowPic(WindowRef window, PicHandle picture) {
  if (!IsValidWindowPtr(window)) return;
  window->picture = picture;
  window->widget->update();
}

PicHandle GetWindowPic(WindowRef window) {
  return IsValidWindowPtr(window) ? window->picture : nullptr;
}

namespace quillmere::windows {

void PaintWindowPort(WindowRef window) {
  QWidget* const widget = window->widget;
  if (!window->port && window->picture == nullptr) return;
  QPainter painter(widget);
  if (window->port) painter.drawImage(0, 0, ImageOf(window->port.get()));
  if (window->picture == nullptr) return;
  const std::unique_ptr<GraphicsPort, DisposePort> shown(
      drawing::NewScreenPort(widget->width(), widget->height(), {}));
  if (!shown) return;
  GrafPtr saved = nullptr;
  GetPort(&saved);
  SetPort(shown.get());
  Rect bounds;
  DrawPicture(window->picture, GetPortBounds(shown.get(), &bounds));
  SetPort(saved);
  painter.drawImage(0, 0, ImageOf(shown.get()));
}

void DropWindowPort(WindowRef window) {
  KillPicture(window->picture);
  window->picture = nullptr;
  window->port.reset();
}

}  // namespace quillmere::windows
