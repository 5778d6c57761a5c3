#include "nibs.h"

#include <QFile>

#include "cf_bundle.h"
#include "cf_urls.h"
#include "nib_reader_private.h"
#include "windows_private.h"

struct NibRecord {
  QString path;
};

namespace {

using quillmere::Owned;
using namespace quillmere::windows;

/// The name of the menu bar that new windows carry; empty for none.
QString& ApplicationMenuBar() {
  static QString name;
  return name;
}

}  // namespace

OSStatus CreateNibReference(CFStringRef name, IBNibRef* nib) {
  if (nib == nullptr) return paramErr;
  *nib = nullptr;
  Application();
  const Owned<CFURLRef> url(
      CFBundleCopyResourceURL(CFBundleGetMainBundle(), name, CFSTR("ui"), nullptr));
  if (!url) return kIBCarbonRuntimeCantFindNibFile;
  auto record = std::make_unique<NibRecord>();
  record->path = QFile::decodeName(quillmere::PathOf(url.get()).c_str());
  bool well_formed = false;
  ClassOfNibObject(record->path, {}, &well_formed);
  if (!well_formed) return kIBCarbonRuntimeCantFindNibFile;
  *nib = record.release();
  return noErr;
}

void DisposeNibReference(IBNibRef nib) {
  const std::unique_ptr<NibRecord> last(nib);
}

OSStatus SetMenuBarFromNib(IBNibRef nib, CFStringRef name) {
  if (nib == nullptr) return paramErr;
  const QString wanted = ToQString(name);
  const QString kind = ClassOfNibObject(nib->path, wanted, nullptr);
  if (kind.isEmpty()) return kIBCarbonRuntimeCantFindObject;
  if (kind != QLatin1String("QMenuBar")) return kIBCarbonRuntimeObjectNotOfRequestedType;
  ApplicationMenuBar() = wanted;
  return noErr;
}

OSStatus CreateWindowFromNib(IBNibRef nib, CFStringRef name, WindowRef* window) {
  if (nib == nullptr || window == nullptr) return paramErr;
  *window = nullptr;
  const QString wanted = ToQString(name);
  if (ClassOfNibObject(nib->path, wanted, nullptr).isEmpty()) return kIBCarbonRuntimeCantFindObject;
  std::unique_ptr<QWidget> widget = BuildNibWindow(nib->path, ApplicationMenuBar());
  if (widget == nullptr) return kIBCarbonRuntimeCantFindObject;
  if (widget->objectName() != wanted) return kIBCarbonRuntimeObjectNotOfRequestedType;
  *window = RegisterWindow(std::move(widget));
  return noErr;
}
