#include <QAccessible>
#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QVariant>
#include <utility>

#include "widgets_private.h"

namespace quillmere::windows {

void ImageView::SetImage(QImage image) {
  image_ = std::move(image);
  scaled_ = QImage();
  update();
}

void ImageView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QSize pixels = size() * devicePixelRatio();
  if (background) {
    const QImage painted = background(pixels);
    if (!painted.isNull()) painter.drawImage(rect(), painted);
  }
  if (image_.isNull()) return;
  if (scaled_.size() != pixels) {
    scaled_ = image_.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  }
  painter.drawImage(rect(), scaled_);
}

void ImageView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->pos()) && on_hit) on_hit();
}

StaticText::StaticText(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
}

void StaticText::SetContent(const QString& text) {
  if (text == content_) return;
  content_ = text;
  // QLabel's own text is what assistive technology reads.
  setText(text);
  updateGeometry();
}

QSize StaticText::sizeHint() const {
  const QMargins margins = contentsMargins();
  const QFontMetrics metrics(font());
  return {metrics.averageCharWidth() * 24 + margins.left() + margins.right() + 2 * margin(),
          metrics.height() + margins.top() + margins.bottom() + 2 * margin()};
}

QSize StaticText::minimumSizeHint() const {
  const QFontMetrics metrics(font());
  const QMargins margins = contentsMargins();
  return {metrics.averageCharWidth() * 6 + margins.left() + margins.right(), sizeHint().height()};
}

void StaticText::paintEvent(QPaintEvent* event) {
  // The frame alone: QLabel would draw its text too.
  QFrame::paintEvent(event);  // NOLINT(bugprone-parent-virtual-call)
  QPainter painter(this);
  const QRect area = contentsRect().adjusted(margin(), margin(), -margin(), -margin());
  QString shown = content_;
  if (shown.isEmpty()) {
    shown = property("placeholder").toString();
    painter.setPen(palette().color(QPalette::PlaceholderText));
  } else {
    painter.setPen(palette().color(foregroundRole()));
  }
  const QString fitted = fontMetrics().elidedText(shown, Qt::ElideMiddle, area.width());
  const QString tip = fitted == content_ ? QString() : content_;
  if (toolTip() != tip) setToolTip(tip);
  painter.drawText(area, static_cast<int>(alignment()) | Qt::TextSingleLine, fitted);
}

void StaticText::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->pos()) && on_hit) on_hit();
}

}  // namespace quillmere::windows
