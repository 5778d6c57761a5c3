#include <QAction>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QMainWindow>
#include <QMap>
#include <QMenu>
#include <QMenuBar>
#include <QMetaProperty>
#include <QProgressBar>
#include <QPushButton>
#include <QSpacerItem>
#include <QVBoxLayout>
#include <QXmlStreamReader>

#include "nib_reader_private.h"
#include "widgets_private.h"

namespace quillmere::windows {

namespace {

constexpr int kDepthLimit = 64;

QString Attribute(const QXmlStreamReader& xml, const char* name) {
  return xml.attributes().value(QLatin1String(name)).toString();
}

int IntAttribute(const QXmlStreamReader& xml, const char* name, int otherwise) {
  bool valid = false;
  const int value = xml.attributes().value(QLatin1String(name)).toInt(&valid);
  return valid ? value : otherwise;
}

/// The set of keys "A::B|A::C" as the number that the enumeration gives it.
int EnumValue(const QMetaEnum& kind, const QString& text, bool* valid) {
  QStringList keys;
  for (const QString& key : text.split(QLatin1Char('|')))
    keys << key.section(QLatin1String("::"), -1);
  return kind.keysToValue(keys.join(QLatin1Char('|')).toLatin1().constData(), valid);
}

/// Builds what one file describes. The reader stands on the start element of what a function is
/// about when it is called, and on its end element afterwards.
class NibBuilder {
 public:
  NibBuilder(QXmlStreamReader& xml, QString folder, QString menu_bar)
      : xml_(xml), folder_(std::move(folder)), menu_bar_(std::move(menu_bar)) {}

  std::unique_ptr<QWidget> BuildWindow() {
    std::unique_ptr<QWidget> window;
    while (!xml_.atEnd() && !xml_.hasError()) {
      if (xml_.readNext() != QXmlStreamReader::StartElement) continue;
      if (xml_.name() == QLatin1String("widget") && window == nullptr) {
        window.reset(Widget(nullptr, 0));
      } else if (xml_.name() != QLatin1String("ui")) {
        xml_.skipCurrentElement();
      }
    }
    if (xml_.hasError() || window == nullptr) return nullptr;
    ConnectBuddies(window.get());
    AddActions(window.get());
    return window;
  }

 private:
  struct Placement {
    int row = 0, column = 0, rows = 1, columns = 1;
    Qt::Alignment alignment;
  };

  void Fail(const QString& what) { xml_.raiseError(what); }

  // Qt's parents own what is made here; the window owns them all.
  template <class Kind>
  static QWidget* Make(QWidget* parent) {
    return std::make_unique<Kind>(parent).release();
  }

  static QWidget* MakeLine(QWidget* parent) {
    auto line = std::make_unique<QFrame>(parent);
    line->setFrameStyle(static_cast<int>(QFrame::HLine) | static_cast<int>(QFrame::Sunken));
    return line.release();
  }

  QWidget* MakeWidget(const QString& kind, QWidget* parent) {
    static const QMap<QString, QWidget* (*)(QWidget*)> makers = {
        {QStringLiteral("QMainWindow"), &Make<QMainWindow>},
        {QStringLiteral("QWidget"), &Make<QWidget>},
        {QStringLiteral("QFrame"), &Make<QFrame>},
        {QStringLiteral("QLabel"), &Make<QLabel>},
        {QStringLiteral("Line"), &MakeLine},
        {QStringLiteral("QGroupBox"), &Make<QGroupBox>},
        {QStringLiteral("QPushButton"), &Make<QPushButton>},
        {QStringLiteral("QProgressBar"), &Make<QProgressBar>},
        {QStringLiteral("QMenuBar"), &Make<QMenuBar>},
        {QStringLiteral("QMenu"), &Make<QMenu>},
        {QStringLiteral("ImageView"), &Make<ImageView>},
        {QStringLiteral("StaticText"), &Make<StaticText>}};
    const auto maker = makers.constFind(kind);
    return maker != makers.constEnd() ? (*maker)(parent) : nullptr;
  }

  QWidget* Widget(QWidget* parent, int depth) {
    const QString kind = Attribute(xml_, "class");
    const QString name = Attribute(xml_, "name");
    if (kind == QLatin1String("QMenuBar") && name != menu_bar_) {
      xml_.skipCurrentElement();
      return nullptr;
    }
    QWidget* widget = depth < kDepthLimit ? MakeWidget(kind, parent) : nullptr;
    if (widget == nullptr) {
      Fail(QStringLiteral("widget class ") + kind);
      return nullptr;
    }
    widget->setObjectName(name);
    while (xml_.readNextStartElement())
      WidgetPart(widget, depth);
    Attach(parent, widget);
    return widget;
  }

  void WidgetPart(QWidget* widget, int depth) {
    const auto part = xml_.name();
    if (part == QLatin1String("property")) {
      Property(widget);
    } else if (part == QLatin1String("widget")) {
      Widget(widget, depth + 1);
    } else if (part == QLatin1String("layout")) {
      if (QLayout* layout = Layout(widget, depth + 1)) widget->setLayout(layout);
    } else if (part == QLatin1String("action")) {
      QAction* action = std::make_unique<QAction>(widget).release();
      action->setObjectName(Attribute(xml_, "name"));
      actions_.insert(action->objectName(), action);
      while (xml_.readNextStartElement())
        Property(action);
    } else if (part == QLatin1String("addaction")) {
      added_.append({widget, Attribute(xml_, "name")});
      xml_.skipCurrentElement();
    } else {
      xml_.skipCurrentElement();  // attributes, for designers
    }
  }

  static void Attach(QWidget* parent, QWidget* widget) {
    auto* window = qobject_cast<QMainWindow*>(parent);
    if (window == nullptr) return;
    if (auto* bar = qobject_cast<QMenuBar*>(widget)) {
      window->setMenuBar(bar);
    } else if (window->centralWidget() == nullptr) {
      window->setCentralWidget(widget);
    }
  }

  QLayout* MakeLayout(const QString& kind) {
    if (kind == QLatin1String("QGridLayout")) return std::make_unique<QGridLayout>().release();
    if (kind == QLatin1String("QHBoxLayout")) return std::make_unique<QHBoxLayout>().release();
    if (kind == QLatin1String("QVBoxLayout")) return std::make_unique<QVBoxLayout>().release();
    return nullptr;
  }

  QLayout* Layout(QWidget* owner, int depth) {
    const QString kind = Attribute(xml_, "class");
    QLayout* layout = depth < kDepthLimit ? MakeLayout(kind) : nullptr;
    if (layout == nullptr) {
      Fail(QStringLiteral("layout class ") + kind);
      return nullptr;
    }
    layout->setObjectName(Attribute(xml_, "name"));
    const QStringList stretch =
        Attribute(xml_, "stretch").split(QLatin1Char(','), Qt::SkipEmptyParts);
    const QStringList columns =
        Attribute(xml_, "columnstretch").split(QLatin1Char(','), Qt::SkipEmptyParts);
    const QStringList rows =
        Attribute(xml_, "rowstretch").split(QLatin1Char(','), Qt::SkipEmptyParts);
    while (xml_.readNextStartElement()) {
      if (xml_.name() == QLatin1String("property")) {
        LayoutProperty(layout);
      } else if (xml_.name() == QLatin1String("item")) {
        Item(owner, layout, depth);
      } else {
        xml_.skipCurrentElement();
      }
    }
    if (auto* box = qobject_cast<QBoxLayout*>(layout)) {
      for (int i = 0; i < stretch.size(); ++i)
        box->setStretch(i, stretch[i].toInt());
    } else if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
      for (int i = 0; i < columns.size(); ++i)
        grid->setColumnStretch(i, columns[i].toInt());
      for (int i = 0; i < rows.size(); ++i)
        grid->setRowStretch(i, rows[i].toInt());
    }
    return layout;
  }

  void LayoutProperty(QLayout* layout) {
    const QString name = Attribute(xml_, "name");
    if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
      // These two of a grid are no properties of its object.
      if (name == QLatin1String("horizontalSpacing")) {
        grid->setHorizontalSpacing(Value(QMetaEnum()).toInt());
        return;
      }
      if (name == QLatin1String("verticalSpacing")) {
        grid->setVerticalSpacing(Value(QMetaEnum()).toInt());
        return;
      }
    }
    if (!name.endsWith(QLatin1String("Margin"))) {
      Property(layout);
      return;
    }
    const int value = Value(QMetaEnum()).toInt();
    QMargins margins = layout->contentsMargins();
    if (name.startsWith(QLatin1String("left"))) margins.setLeft(value);
    if (name.startsWith(QLatin1String("top"))) margins.setTop(value);
    if (name.startsWith(QLatin1String("right"))) margins.setRight(value);
    if (name.startsWith(QLatin1String("bottom"))) margins.setBottom(value);
    layout->setContentsMargins(margins);
  }

  void Item(QWidget* owner, QLayout* layout, int depth) {
    Placement place{IntAttribute(xml_, "row", 0),
                    IntAttribute(xml_, "column", 0),
                    IntAttribute(xml_, "rowspan", 1),
                    IntAttribute(xml_, "colspan", 1),
                    {}};
    if (const QString text = Attribute(xml_, "alignment"); !text.isEmpty()) {
      bool valid = false;
      place.alignment =
          Qt::Alignment(EnumValue(QMetaEnum::fromType<Qt::Alignment>(), text, &valid));
    }
    auto* grid = qobject_cast<QGridLayout*>(layout);
    auto* box = qobject_cast<QBoxLayout*>(layout);
    while (xml_.readNextStartElement()) {
      if (xml_.name() == QLatin1String("widget")) {
        QWidget* widget = Widget(owner, depth + 1);
        if (widget == nullptr) return;
        if (grid != nullptr) {
          grid->addWidget(widget, place.row, place.column, place.rows, place.columns,
                          place.alignment);
        } else {
          box->addWidget(widget, 0, place.alignment);
        }
      } else if (xml_.name() == QLatin1String("layout")) {
        QLayout* inner = Layout(owner, depth + 1);
        if (inner == nullptr) return;
        if (grid != nullptr) {
          grid->addLayout(inner, place.row, place.column, place.rows, place.columns,
                          place.alignment);
        } else {
          box->addLayout(inner);
        }
      } else if (xml_.name() == QLatin1String("spacer")) {
        QSpacerItem* spacer = Spacer();
        if (grid != nullptr) {
          grid->addItem(spacer, place.row, place.column, place.rows, place.columns);
        } else {
          box->addItem(spacer);
        }
      } else {
        xml_.skipCurrentElement();
      }
    }
  }

  QSpacerItem* Spacer() {
    QSize hint(0, 0);
    bool vertical = false;
    while (xml_.readNextStartElement()) {
      const QString name = Attribute(xml_, "name");
      const QVariant value = Value(QMetaEnum());
      if (name == QLatin1String("sizeHint")) hint = value.toSize();
      if (name == QLatin1String("orientation")) {
        vertical = value.toString().endsWith(QLatin1String("Vertical"));
      }
    }
    return std::make_unique<QSpacerItem>(hint.width(), hint.height(),
                                         vertical ? QSizePolicy::Minimum : QSizePolicy::Expanding,
                                         vertical ? QSizePolicy::Expanding : QSizePolicy::Minimum)
        .release();
  }

  void Property(QObject* object) {
    const QString name = Attribute(xml_, "name");
    const QByteArray key = name.toLatin1();
    const QMetaObject* kind = object->metaObject();
    const int index = kind->indexOfProperty(key.constData());
    const QMetaEnum values = index >= 0 && kind->property(index).isEnumType()
                                 ? kind->property(index).enumerator()
                                 : QMetaEnum();
    const QVariant value = Value(values);
    if (name == QLatin1String("buddy")) {
      buddies_.append({qobject_cast<QLabel*>(object), value.toString()});
      return;
    }
    if (name == QLatin1String("orientation") && index < 0) return;  // of a Line
    if (name == QLatin1String("geometry") && object->parent() == nullptr) {
      static_cast<QWidget*>(object)->resize(value.toRect().size());
      return;
    }
    object->setProperty(key.constData(), value);
  }

  /// The value inside a property element.
  QVariant Value(const QMetaEnum& values) {
    QVariant value;
    while (xml_.readNextStartElement())
      value = TypedValue(values);
    return value;
  }

  QVariant TypedValue(const QMetaEnum& values) {
    const QString type = xml_.name().toString();
    if (type == QLatin1String("rect") || type == QLatin1String("size") ||
        type == QLatin1String("font") || type == QLatin1String("iconset") ||
        type == QLatin1String("sizepolicy")) {
      return RecordValue(type);
    }
    const QString text = xml_.readElementText();
    if (type == QLatin1String("bool")) return text == QLatin1String("true");
    if (type == QLatin1String("number")) return text.toInt();
    if (type == QLatin1String("double")) return text.toDouble();
    if ((type == QLatin1String("enum") || type == QLatin1String("set")) && values.isValid()) {
      bool valid = false;
      const int value = EnumValue(values, text, &valid);
      if (!valid) Fail(QStringLiteral("value ") + text);
      return value;
    }
    return text;
  }

  QVariant RecordValue(const QString& type) {
    QMap<QString, QString> fields;
    const QString horizontal = Attribute(xml_, "hsizetype");
    const QString vertical = Attribute(xml_, "vsizetype");
    while (xml_.readNextStartElement()) {
      const QString field = xml_.name().toString();
      fields.insert(field, xml_.readElementText());
    }
    const auto number = [&fields](const char* name) {
      return fields.value(QLatin1String(name)).toInt();
    };
    if (type == QLatin1String("rect")) {
      return QRect(number("x"), number("y"), number("width"), number("height"));
    }
    if (type == QLatin1String("size")) return QSize(number("width"), number("height"));
    if (type == QLatin1String("iconset")) {
      QIcon icon;
      for (const QString& file : std::as_const(fields)) {
        icon.addFile(folder_ + QLatin1Char('/') + file.trimmed());
      }
      return icon;
    }
    if (type == QLatin1String("sizepolicy")) return Policy(horizontal, vertical, fields);
    QFont font;
    if (fields.contains(QLatin1String("bold"))) {
      font.setBold(fields.value(QLatin1String("bold")) == QLatin1String("true"));
    }
    if (fields.contains(QLatin1String("pointsize")) && font.pointSizeF() > 0) {
      font.setPointSizeF(number("pointsize"));
    }
    return font;
  }

  QVariant Policy(const QString& horizontal, const QString& vertical,
                  const QMap<QString, QString>& fields) {
    const QMetaEnum kinds = QMetaEnum::fromType<QSizePolicy::Policy>();
    bool valid_h = false;
    bool valid_v = false;
    QSizePolicy policy(static_cast<QSizePolicy::Policy>(EnumValue(kinds, horizontal, &valid_h)),
                       static_cast<QSizePolicy::Policy>(EnumValue(kinds, vertical, &valid_v)));
    if (!valid_h || !valid_v) Fail(QStringLiteral("size policy"));
    policy.setHorizontalStretch(fields.value(QStringLiteral("horstretch")).toInt());
    policy.setVerticalStretch(fields.value(QStringLiteral("verstretch")).toInt());
    return policy;
  }

  void ConnectBuddies(QWidget* window) {
    for (const auto& [label, name] : std::as_const(buddies_)) {
      if (label != nullptr) label->setBuddy(window->findChild<QWidget*>(name));
    }
  }

  void AddActions(QWidget* window) {
    for (const auto& [widget, name] : std::as_const(added_)) {
      if (name == QLatin1String("separator")) {
        if (auto* menu = qobject_cast<QMenu*>(widget)) menu->addSeparator();
      } else if (QAction* action = actions_.value(name)) {
        widget->addAction(action);
      } else if (auto* menu = window->findChild<QMenu*>(name)) {
        widget->addAction(menu->menuAction());
      }
    }
  }

  QXmlStreamReader& xml_;
  QString folder_;
  QString menu_bar_;
  QMap<QString, QAction*> actions_;
  QList<std::pair<QWidget*, QString>> added_;
  QList<std::pair<QLabel*, QString>> buddies_;
};

}  // namespace

QString ClassOfNibObject(const QString& path, const QString& name, bool* well_formed) {
  QFile file(path);
  QString found;
  const bool open = file.open(QIODevice::ReadOnly);
  QXmlStreamReader xml(&file);
  while (open && !xml.atEnd()) {
    if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("widget") &&
        Attribute(xml, "name") == name) {
      found = Attribute(xml, "class");
    }
  }
  if (well_formed != nullptr) *well_formed = open && !xml.hasError();
  return found;
}

std::unique_ptr<QWidget> BuildNibWindow(const QString& path, const QString& menu_bar) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return nullptr;
  QXmlStreamReader xml(&file);
  return NibBuilder(xml, QFileInfo(path).absolutePath(), menu_bar).BuildWindow();
}

}  // namespace quillmere::windows
