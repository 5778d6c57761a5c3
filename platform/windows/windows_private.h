/// The records behind windows and controls, and what the sources of this folder share.
#pragma once

#include <QApplication>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <memory>
#include <vector>

#include "automation.h"
#include "carbon_events.h"
#include "cf_strings.h"
#include "graphics_ports.h"
#include "pictures.h"
#include "views.h"

/// A control, or the root view of a window. Records live as long as the process, so that a
/// reference can be checked at any time; `widget` is null once the window has gone.
struct ViewRecord {
  HIViewID id{};
  WindowRef window = nullptr;
  QPointer<QWidget> widget;
  EventTarget target;
  SInt32 minimum = 0;
  SInt32 maximum = 0;
  SInt32 value = 0;
  bool indeterminate = false;
};

struct DisposePort {
  void operator()(CGrafPtr port) const { DisposeGWorld(port); }
};

struct WindowRecord {
  QPointer<QWidget> widget;
  void* reference_constant = nullptr;
  EventTarget target;
  ViewRecord root;
  std::vector<std::unique_ptr<ViewRecord>> controls;
  std::unique_ptr<GraphicsPort, DisposePort> port;  ///< once it has been asked for
  PicHandle picture = nullptr;
};

struct HIShape : CFObject {
  explicit HIShape(const HIRect& rect) : bounds(rect) {}
  HIRect bounds;
};

namespace quillmere::windows {

/// The one application object, made at the first call.
QApplication& Application();
/// Lets the main queue and the event loop timers be served by the application object's loop.
void ConnectEvents(QApplication* application);
/// True when nothing that is shown or played reaches a person.
bool RunsWithoutDisplay();

/// Takes a built window into the register: finds its controls and connects what the user can do to
/// them.
WindowRef RegisterWindow(std::unique_ptr<QWidget> widget);
/// Draws a window's port and picture; while the window paints itself.
void PaintWindowPort(WindowRef window);
/// Ends both.
void DropWindowPort(WindowRef window);
/// Closes every window.
void DisposeAllWindows();

/// Connects a control's widget to hit and draw events.
void ConnectControl(ViewRecord* control);
/// Posts a hit of the control to the main queue.
void PostHit(ViewRecord* control);
/// Posts a command; `window` is where it came from, null for none.
void PostCommand(OSType command, UInt32 attributes, WindowRef window);
/// Calls the draw handlers of a control that is `size` pixels large and gives back what they
/// painted: the pixels' alpha is premultiplied. Null image if the control has no draw handlers.
QImage PaintedBackground(ViewRecord* control, QSize size);

QString ToQString(CFStringRef string);
/// A new string; the caller owns it.
CFStringRef CreateFromQString(const QString& string);
/// A four-character code of a nib's property; 0 if the text does not have four Latin-1 characters.
OSType CodeOfText(const QString& text);

}  // namespace quillmere::windows
