#include "fonts.h"

#include <QFontDatabase>
#include <QStringList>
#include <algorithm>
#include <limits>

#include "fonts_private.h"
#include "gui_application.h"
#include "text_style.h"

namespace {

using quillmere::drawing::kFirstFreeFont;

struct FontFamily {
  const char* name;
  QFont::StyleHint hint;
  SInt16 number;
};
constexpr FontFamily kFamilies[] = {{"Geneva", QFont::SansSerif, kFontIDGeneva},
                                    {"Monaco", QFont::Monospace, kFontIDMonaco},
                                    {"Times", QFont::Serif, kFontIDTimes},
                                    {"Helvetica", QFont::SansSerif, kFontIDHelvetica},
                                    {"Courier", QFont::Monospace, kFontIDCourier}};

const FontFamily* FamilyOf(const QString& name) {
  const auto* found = std::ranges::find_if(kFamilies, [&](const FontFamily& family) {
    return name.compare(QLatin1String(family.name), Qt::CaseInsensitive) == 0;
  });
  return found != std::end(kFamilies) ? found : nullptr;
}

/// The families of the system as they were when one was first asked for.
const QStringList& SystemFamilies() {
  static const QStringList families = [] {
    quillmere::drawing::NeedGuiApplication();
    QStringList all = QFontDatabase::families();
    all.sort(Qt::CaseInsensitive);
    constexpr auto kMost = std::numeric_limits<SInt16>::max() - kFirstFreeFont;
    return all.size() > kMost ? all.first(kMost) : all;
  }();
  return families;
}

QString NameOf(SInt16 number) {
  const auto* family = std::ranges::find(kFamilies, number, &FontFamily::number);
  if (family != std::end(kFamilies)) return QLatin1String(family->name);
  if (number < kFirstFreeFont) return {};
  return SystemFamilies().value(number - kFirstFreeFont);
}

}  // namespace

void GetFNum(const UInt8* name, SInt16* number) {
  if (number == nullptr) return;
  *number = 0;
  if (name == nullptr) return;
  const QString wanted = QString::fromUtf8(reinterpret_cast<const char*>(name + 1), name[0]);
  if (const FontFamily* family = FamilyOf(wanted)) {
    *number = family->number;
    return;
  }
  const QStringList& families = SystemFamilies();
  for (qsizetype i = 0; i < families.size(); ++i) {
    if (families[i].compare(wanted, Qt::CaseInsensitive) != 0) continue;
    *number = static_cast<SInt16>(kFirstFreeFont + i);
    return;
  }
}

void GetFontName(SInt16 number, UInt8* name) {
  constexpr qsizetype kMost = 255;
  if (name == nullptr) return;
  const QByteArray text = NameOf(number).toUtf8();
  name[0] = static_cast<UInt8>(std::min(text.size(), kMost));
  std::copy_n(text.data(), name[0], name + 1);
}

namespace quillmere::drawing {

QFont FontOfNumber(SInt16 number) {
  NeedGuiApplication();
  const QString name = NameOf(number);
  return name.isEmpty() ? QFont() : FontOfFamily(name);
}

QFont FontOfFamily(const QString& name) {
  NeedGuiApplication();
  QFont font(name);
  if (const FontFamily* family = FamilyOf(name)) font.setStyleHint(family->hint);
  return font;
}

}  // namespace quillmere::drawing
