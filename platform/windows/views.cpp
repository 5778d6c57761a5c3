#include "views.h"

#include <QAbstractButton>
#include <QImage>
#include <QPalette>
#include <QProgressBar>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <cstring>

#include "widgets_private.h"
#include "window_manager.h"
#include "windows_private.h"

namespace {

using quillmere::Owned;
using namespace quillmere::windows;

/// A status for a view that is null or has gone, else 0.
OSStatus CheckView(const ViewRecord* view) {
  if (view == nullptr) return errUnknownControl;
  return view->widget != nullptr ? noErr : errInvalidWindowRef;
}

HIRect ToHIRect(const QRect& rect) {
  return {{static_cast<float>(rect.x()), static_cast<float>(rect.y())},
          {static_cast<float>(rect.width()), static_cast<float>(rect.height())}};
}

QProgressBar* BarOf(const ViewRecord* control) {
  if (CheckView(control) != noErr) return nullptr;
  return qobject_cast<QProgressBar*>(control->widget.data());
}

/// An indeterminate bar is one whose job is not running: it shows as empty. (Qt's endless animation
/// would tell the user that something is going on.)
void ShowBar(const ViewRecord* control) {
  QProgressBar* bar = BarOf(control);
  if (bar == nullptr) return;
  bar->setRange(control->minimum, control->maximum);
  bar->setTextVisible(!control->indeterminate);
  if (control->indeterminate) {
    bar->reset();
  } else {
    bar->setValue(control->value);
  }
}

bool is_drawing = false;  ///< one draw event at a time: drawing is not re-entered

}  // namespace

HIViewRef HIViewGetRoot(WindowRef window) {
  return IsValidWindowPtr(window) ? &window->root : nullptr;
}

OSStatus HIViewFindByID(HIViewRef start, HIViewID id, HIViewRef* control) {
  if (control == nullptr) return paramErr;
  *control = nullptr;
  if (start == nullptr) return errInvalidWindowRef;
  if (const OSStatus status = CheckView(start)) return status;
  for (const auto& candidate : start->window->controls) {
    if (candidate->id.signature == id.signature && candidate->id.id == id.id &&
        (start == &start->window->root || start->widget->isAncestorOf(candidate->widget))) {
      *control = candidate.get();
      return noErr;
    }
  }
  return errUnknownControl;
}

OSStatus GetControlID(ControlRef control, ControlID* id) {
  if (id == nullptr) return paramErr;
  if (const OSStatus status = CheckView(control)) return status;
  *id = control->id;
  return noErr;
}

EventTargetRef GetControlEventTarget(ControlRef control) {
  return CheckView(control) == noErr ? &control->target : nullptr;
}

OSStatus HIViewSetActivated(HIViewRef view, Boolean active) {
  if (const OSStatus status = CheckView(view)) return status;
  view->widget->setEnabled(active != 0);
  return noErr;
}

Boolean HIViewIsActive(HIViewRef view, Boolean* latent) {
  if (CheckView(view) != noErr) {
    if (latent != nullptr) *latent = 0;
    return 0;
  }
  if (latent != nullptr) *latent = !view->widget->testAttribute(Qt::WA_ForceDisabled);
  return view->widget->isEnabled();
}

OSStatus HIViewRender(HIViewRef view) {
  if (const OSStatus status = CheckView(view)) return status;
  view->widget->repaint();
  return noErr;
}

OSStatus HIViewSetNeedsDisplay(HIViewRef view, Boolean needs_display) {
  if (const OSStatus status = CheckView(view)) return status;
  if (needs_display != 0) view->widget->update();
  return noErr;
}

OSStatus HIViewGetFrame(HIViewRef view, HIRect* frame) {
  if (frame == nullptr) return paramErr;
  if (const OSStatus status = CheckView(view)) return status;
  *frame = ToHIRect(view->widget->geometry());
  return noErr;
}

OSStatus HIViewSetFrame(HIViewRef view, const HIRect* frame) {
  if (frame == nullptr) return paramErr;
  if (const OSStatus status = CheckView(view)) return status;
  constexpr float kLimit = 32767;
  const float edges[] = {frame->origin.x, frame->origin.y, frame->origin.x + frame->size.width,
                         frame->origin.y + frame->size.height};
  int rounded[4];
  for (int i = 0; i < 4; ++i) {
    if (!std::isfinite(edges[i])) return paramErr;
    rounded[i] = static_cast<int>(std::lround(std::clamp(edges[i], -kLimit, kLimit)));
  }
  view->widget->setGeometry(rounded[0], rounded[1], rounded[2] - rounded[0],
                            rounded[3] - rounded[1]);
  return noErr;
}

OSStatus HIViewGetBounds(HIViewRef view, HIRect* bounds) {
  const OSStatus status = HIViewGetFrame(view, bounds);
  if (status == noErr) bounds->origin = {0, 0};
  return status;
}

OSStatus HIViewSimulateClick(HIViewRef view, ControlPartCode part, UInt32 modifiers,
                             ControlPartCode* part_hit) {
  if (const OSStatus status = CheckView(view)) return status;
  if (!view->widget->isEnabled()) return errControlIsNotActive;
  EventRef event = nullptr;
  const OSStatus created =
      CreateEvent(nullptr, kEventClassControl, kEventControlHit, 0, modifiers, &event);
  if (created != noErr) return created;
  SetEventParameter(event, kEventParamDirectObject, typeControlRef, kReferenceSize,
                    static_cast<const void*>(&view));
  const OSStatus sent = SendEventToEventTarget(event, &view->target);
  ReleaseEvent(event);
  if (part_hit != nullptr) *part_hit = part;
  return sent == eventNotHandledErr ? noErr : sent;
}

void SetControl32BitValue(ControlRef control, SInt32 value) {
  if (BarOf(control) == nullptr) return;
  control->value = std::min(std::max(value, control->minimum), control->maximum);
  ShowBar(control);
}

SInt32 GetControl32BitValue(ControlRef control) {
  return CheckView(control) == noErr ? control->value : 0;
}

void SetControl32BitMaximum(ControlRef control, SInt32 maximum) {
  if (BarOf(control) == nullptr) return;
  control->maximum = std::max(maximum, control->minimum);
  SetControl32BitValue(control, control->value);
}

SInt32 GetControl32BitMaximum(ControlRef control) {
  return CheckView(control) == noErr ? control->maximum : 0;
}

void SetControl32BitMinimum(ControlRef control, SInt32 minimum) {
  if (BarOf(control) == nullptr) return;
  control->minimum = std::min(minimum, control->maximum);
  SetControl32BitValue(control, control->value);
}

SInt32 GetControl32BitMinimum(ControlRef control) {
  return CheckView(control) == noErr ? control->minimum : 0;
}

OSStatus SetControlData(ControlRef control, ControlPartCode /*part*/, OSType tag, Size size,
                        const void* data) {
  if (data == nullptr) return paramErr;
  if (const OSStatus status = CheckView(control)) return status;
  if (auto* text = dynamic_cast<StaticText*>(control->widget.data());
      text != nullptr && tag == kControlStaticTextCFStringTag) {
    CFStringRef string = nullptr;
    if (size != kReferenceSize) return errDataSizeMismatch;
    std::memcpy(static_cast<void*>(&string), data, kReferenceSize);
    text->SetContent(ToQString(string));
    return noErr;
  }
  if (BarOf(control) != nullptr && tag == kControlProgressBarIndeterminateTag) {
    if (size != sizeof(Boolean)) return errDataSizeMismatch;
    control->indeterminate = *static_cast<const Boolean*>(data) != 0;
    ShowBar(control);
    return noErr;
  }
  return errDataNotSupported;
}

OSStatus GetControlData(ControlRef control, ControlPartCode /*part*/, OSType tag, Size capacity,
                        void* data, Size* actual_size) {
  if (data == nullptr) return paramErr;
  if (const OSStatus status = CheckView(control)) return status;
  if (const auto* text = dynamic_cast<StaticText*>(control->widget.data());
      text != nullptr && tag == kControlStaticTextCFStringTag) {
    if (capacity < kReferenceSize) return errDataSizeMismatch;
    const CFStringRef string = CreateFromQString(text->Content());
    std::memcpy(data, static_cast<const void*>(&string), kReferenceSize);
    if (actual_size != nullptr) *actual_size = kReferenceSize;
    return noErr;
  }
  if (BarOf(control) != nullptr && tag == kControlProgressBarIndeterminateTag) {
    if (capacity < 1) return errDataSizeMismatch;
    *static_cast<Boolean*>(data) = control->indeterminate;
    if (actual_size != nullptr) *actual_size = sizeof(Boolean);
    return noErr;
  }
  return errDataNotSupported;
}

OSStatus HIImageViewSetImage(HIViewRef view, CGImageRef image) {
  if (const OSStatus status = CheckView(view)) return status;
  auto* shown = dynamic_cast<ImageView*>(view->widget.data());
  if (shown == nullptr) return errDataNotSupported;
  if (image == nullptr) {
    shown->SetImage({});
    return noErr;
  }
  const quillmere::imaging::PixelView pixels = quillmere::imaging::StraightRgbaOf(image);
  if (pixels.rgba == nullptr) return paramErr;
  const QImage lent(pixels.rgba, static_cast<int>(pixels.width), static_cast<int>(pixels.height),
                    static_cast<qsizetype>(pixels.row_bytes), QImage::Format_RGBA8888);
  shown->SetImage(lent.convertToFormat(QImage::Format_ARGB32_Premultiplied));
  return noErr;
}

Boolean HIImageViewHasImage(HIViewRef view) {
  if (CheckView(view) != noErr) return 0;
  const auto* shown = dynamic_cast<ImageView*>(view->widget.data());
  return shown != nullptr && shown->HasImage();
}

HIRect* HIShapeGetBounds(HIShapeRef shape, HIRect* bounds) {
  if (shape != nullptr && bounds != nullptr) *bounds = shape->bounds;
  return bounds;
}

OSStatus HIThemeSetFill(SInt16 brush, const void* /*info*/, CGContextRef context,
                        UInt32 /*orientation*/) {
  if (context == nullptr || brush != kThemeBrushDialogBackgroundActive) return paramErr;
  const QColor color = QApplication::palette().color(QPalette::Active, QPalette::Window);
  CGContextSetRGBFillColor(context, color.redF(), color.greenF(), color.blueF(), color.alphaF());
  return noErr;
}

namespace quillmere::windows {

void ConnectControl(ViewRecord* control) {
  QWidget* widget = control->widget;
  if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
    QObject::connect(button, &QAbstractButton::clicked, button, [control] { PostHit(control); });
  } else if (auto* image = dynamic_cast<ImageView*>(widget)) {
    image->on_hit = [control] { PostHit(control); };
    image->background = [control](QSize size) { return PaintedBackground(control, size); };
  } else if (auto* text = dynamic_cast<StaticText*>(widget)) {
    text->on_hit = [control] { PostHit(control); };
  } else if (const auto* bar = qobject_cast<QProgressBar*>(widget)) {
    control->minimum = bar->minimum();
    control->maximum = bar->maximum();
    control->value = std::max(bar->value(), bar->minimum());
    control->indeterminate = bar->value() < bar->minimum();
    ShowBar(control);
  }
}

QImage PaintedBackground(ViewRecord* control, QSize size) {
  if (control->target.handlers.empty() || size.isEmpty() || is_drawing) return {};
  HIRect bounds{};
  if (HIViewGetBounds(control, &bounds) != noErr) return {};
  QImage pixels(size, QImage::Format_ARGB32_Premultiplied);
  if (pixels.isNull()) return {};
  pixels.fill(0);
  const CGColorSpaceRef space = CGColorSpaceCreateWithName(kCGColorSpaceGenericRGB);
  const Owned<CGContextRef> context(CGBitmapContextCreate(
      pixels.bits(), static_cast<std::size_t>(size.width()),
      static_cast<std::size_t>(size.height()), 8, static_cast<std::size_t>(pixels.bytesPerLine()),
      space, kCGImageAlphaPremultipliedFirst));
  CGColorSpaceRelease(space);
  EventRef event = nullptr;
  if (!context ||
      CreateEvent(nullptr, kEventClassControl, kEventControlDraw, 0, 0, &event) != noErr) {
    return {};
  }
  const auto shape = std::make_unique<HIShape>(bounds);
  HIShapeRef shape_reference = shape.get();
  CGContextRef context_reference = context.get();
  SetEventParameter(event, kEventParamDirectObject, typeControlRef, kReferenceSize,
                    static_cast<const void*>(&control));
  SetEventParameter(event, kEventParamShape, typeHIShapeRef, kReferenceSize,
                    static_cast<const void*>(&shape_reference));
  SetEventParameter(event, kEventParamCGContextRef, typeCGContextRef, kReferenceSize,
                    static_cast<const void*>(&context_reference));
  // The view's y axis points down.
  CGContextTranslateCTM(context_reference, 0, static_cast<CGFloat>(size.height()));
  CGContextScaleCTM(context_reference, static_cast<CGFloat>(size.width()) / bounds.size.width,
                    -static_cast<CGFloat>(size.height()) / bounds.size.height);
  is_drawing = true;
  SendEventToEventTarget(event, &control->target);
  is_drawing = false;
  ReleaseEvent(event);
  for (int y = 0; y < size.height(); ++y) {
    auto* line = reinterpret_cast<quint32*>(pixels.scanLine(y));
    qFromBigEndian<quint32>(line, size.width(), line);
  }
  return pixels;
}

}  // namespace quillmere::windows
