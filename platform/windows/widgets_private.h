/// The two widgets that nibs may name beside Qt's own.
#pragma once

#include <QImage>
#include <QLabel>
#include <QWidget>
#include <functional>

namespace quillmere::windows {

/// Shows an image scaled to its own size, on a background that a caller paints.
class ImageView : public QWidget {
 public:
  explicit ImageView(QWidget* parent) : QWidget(parent) {}

  void SetImage(QImage image);
  bool HasImage() const { return !image_.isNull(); }
  QSize sizeHint() const override { return minimumSize(); }

  std::function<void()> on_hit;
  /// Gives the background for a view of this many device pixels; a null image leaves it clear.
  std::function<QImage(QSize)> background;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QImage image_;
  QImage scaled_;  ///< at the size last painted
};

/// A line of plain text that is shortened in its middle when it does not fit, and then shown whole
/// in its tool tip. When it is empty it shows the dynamic property `placeholder`, dimmed.
class StaticText : public QLabel {
 public:
  explicit StaticText(QWidget* parent);

  void SetContent(const QString& text);
  QString Content() const { return content_; }
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

  std::function<void()> on_hit;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  QString content_;
};

}  // namespace quillmere::windows
