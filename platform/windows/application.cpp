#include <QByteArray>
#include <QCoreApplication>
#include <QGuiApplication>

#include <cstdio>

#include "automation.h"
#include "gui_application.h"
#include "windows_private.h"

namespace quillmere::windows {

namespace {

// Qt keeps references to these for as long as the application object lives.
int argument_count = 1;
char program_name[] = "quillmere";
char* arguments[] = {program_name, nullptr};

/// Qt's remarks on what an offscreen desktop lacks are of no use to who runs a command.
void DropRemarks(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) {
    std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
  }
}

}  // namespace

QApplication& Application() {
  // Never destroyed: Qt's own statics may go before ours, and windows may live until the process
  // ends.
  static QApplication* application = [] {
    QGuiApplication::setApplicationDisplayName(QStringLiteral("Quillmere"));
    QGuiApplication::setDesktopFileName(QStringLiteral("quillmere"));
    if (qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("offscreen")) {
      qInstallMessageHandler(DropRemarks);
    }
    drawing::EndOffscreenApplication();  // there is one application object at a time
    auto made = std::make_unique<QApplication>(argument_count, arguments);
    made->setQuitOnLastWindowClosed(false);
    ConnectEvents(made.get());
    return made.release();
  }();
  return *application;
}

bool RunsWithoutDisplay() {
  return QGuiApplication::platformName() == QLatin1String("offscreen") ||
         QGuiApplication::platformName() == QLatin1String("minimal");
}

void UseNoDisplay() {
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
}

QString ToQString(CFStringRef string) {
  const std::u16string_view units = UnitsOf(string);
  return QString::fromUtf16(units.data(), static_cast<qsizetype>(units.size()));
}

CFStringRef CreateFromQString(const QString& string) {
  return CFStringCreateWithCharacters(kCFAllocatorDefault,
                                      reinterpret_cast<const UniChar*>(string.utf16()),
                                      static_cast<CFIndex>(string.size()));
}

OSType CodeOfText(const QString& text) {
  const QByteArray bytes = text.toLatin1();
  if (bytes.size() != 4) return 0;
  OSType code = 0;
  for (const char c : bytes)
    code = (code << 8) | static_cast<UInt8>(c);
  return code;
}

}  // namespace quillmere::windows
