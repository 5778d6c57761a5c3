#include "window_manager.h"

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QImage>
#include <QPixmap>
#include <QVariant>
#include <algorithm>

#include "windows_private.h"

namespace {

using namespace quillmere::windows;

/// Windows ever made. They are kept to the end of the process, so that any reference can be
/// checked.
std::vector<std::unique_ptr<WindowRecord>>& Windows() {
  static std::vector<std::unique_ptr<WindowRecord>> windows;
  return windows;
}

/// Turns the title bar's close button into the command `clos`, and draws the port under what the
/// window's widget draws itself.
class WindowFilter : public QObject {
 public:
  WindowFilter(WindowRef window, QObject* parent) : QObject(parent), window_(window) {}

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) PaintWindowPort(window_);
    if (event->type() != QEvent::Close) return QObject::eventFilter(watched, event);
    event->ignore();
    PostCommand(kHICommandClose, 0, window_);
    return true;
  }

 private:
  WindowRef window_;
};

void ConnectMenu(WindowRef window, QWidget* widget) {
  for (QAction* action : widget->findChildren<QAction*>()) {
    const OSType command = CodeOfText(action->property("command").toString());
    if (command == 0) continue;
    QObject::connect(action, &QAction::triggered, action,
                     [window, command] { PostCommand(command, kHICommandFromMenu, window); });
  }
}

void InitView(ViewRecord* view, WindowRef window, QWidget* widget) {
  view->window = window;
  view->widget = widget;
  view->target.parent = &window->target;
  view->target.owner = window;
}

}  // namespace

Boolean IsValidWindowPtr(WindowRef window) {
  return std::any_of(Windows().begin(), Windows().end(), [window](const auto& known) {
    return known.get() == window && known->widget != nullptr;
  });
}

void SetWRefCon(WindowRef window, void* reference_constant) {
  if (IsValidWindowPtr(window)) window->reference_constant = reference_constant;
}

void* GetWRefCon(WindowRef window) {
  return IsValidWindowPtr(window) ? window->reference_constant : nullptr;
}

void SelectWindow(WindowRef window) {
  if (!IsValidWindowPtr(window)) return;
  window->widget->raise();
  window->widget->activateWindow();
}

void ShowWindow(WindowRef window) {
  if (IsValidWindowPtr(window)) window->widget->show();
}

void DisposeWindow(WindowRef window) {
  if (!IsValidWindowPtr(window)) return;
  QWidget* widget = window->widget;
  window->widget = nullptr;
  DropWindowPort(window);
  window->root.widget = nullptr;
  for (const auto& control : window->controls)
    control->widget = nullptr;
  widget->hide();
  // One of the window's own widgets may be on the stack, under the handler that closes it.
  widget->deleteLater();
}

OSStatus CopyWindowTitleAsCFString(WindowRef window, CFStringRef* title) {
  if (title == nullptr) return paramErr;
  *title = nullptr;
  if (!IsValidWindowPtr(window)) return errInvalidWindowRef;
  *title = quillmere::CreateFromUtf8(window->widget->windowTitle().toStdString());
  return noErr;
}

OSStatus HIWindowFlush(WindowRef window) {
  if (!IsValidWindowPtr(window)) return errInvalidWindowRef;
  QCoreApplication::sendPostedEvents(window->widget, QEvent::UpdateRequest);
  return noErr;
}

EventTargetRef GetWindowEventTarget(WindowRef window) {
  return IsValidWindowPtr(window) ? &window->target : nullptr;
}

namespace quillmere::windows {

WindowRef RegisterWindow(std::unique_ptr<QWidget> widget) {
  auto record = std::make_unique<WindowRecord>();
  WindowRef window = record.get();
  // The record's users end it by DisposeWindow, Qt frees the widget after that.
  QWidget* shown = widget.release();
  window->widget = shown;
  window->target.parent = GetApplicationEventTarget();
  window->target.owner = window;
  InitView(&window->root, window, shown);
  for (QWidget* child : shown->findChildren<QWidget*>()) {
    const OSType signature = CodeOfText(child->property("signature").toString());
    if (signature == 0) continue;
    auto control = std::make_unique<ViewRecord>();
    control->id = {signature, child->property("number").toInt()};
    InitView(control.get(), window, child);
    ConnectControl(control.get());
    window->controls.push_back(std::move(control));
  }
  shown->installEventFilter(std::make_unique<WindowFilter>(window, shown).release());
  ConnectMenu(window, shown);
  Windows().push_back(std::move(record));
  return window;
}

WindowRef FrontWindow() {
  WindowRef shown = nullptr;
  for (const auto& window : Windows()) {
    if (window->widget == nullptr || !window->widget->isVisible()) continue;
    if (window->widget->isActiveWindow()) return window.get();
    shown = window.get();
  }
  return shown;
}

std::vector<UInt8> SnapshotOf(WindowRef window) {
  constexpr int kBytes = 3;
  std::vector<UInt8> pixels;
  if (!IsValidWindowPtr(window)) return pixels;
  const QImage image = window->widget->grab().toImage().convertToFormat(QImage::Format_RGB888);
  for (int y = 0; y < image.height(); ++y)
    pixels.insert(pixels.end(), image.constScanLine(y),
                  image.constScanLine(y) + std::ptrdiff_t{image.width()} * kBytes);
  return pixels;
}

void DisposeAllWindows() {
  for (const auto& window : Windows())
    DisposeWindow(window.get());
}

}  // namespace quillmere::windows
