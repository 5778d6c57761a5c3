#include "gui_application.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <memory>
#include <mutex>

namespace quillmere::drawing {
namespace {

std::mutex& Guard() {
  static auto* const guard = new std::mutex;
  return *guard;
}

/// The object that this module made. It is not destroyed at the process's end, when fonts may
/// still be asked for.
std::unique_ptr<QGuiApplication>& Offscreen() {
  static auto* const application = new std::unique_ptr<QGuiApplication>;
  return *application;
}

}  // namespace

void NeedGuiApplication() {
  const std::lock_guard lock(Guard());
  if (QCoreApplication::instance() != nullptr) return;
  static int argument_count = 0;
  static char name[] = "quillmere";
  static char option[] = "-platform";
  static char platform[] = "offscreen";
  static char* arguments[] = {name, option, platform, nullptr};
  argument_count = 3;
  arguments[1] = option;
  arguments[2] = platform;
  Offscreen() = std::make_unique<QGuiApplication>(argument_count, arguments);
}

void EndOffscreenApplication() {
  const std::lock_guard lock(Guard());
  Offscreen().reset();
}

}  // namespace quillmere::drawing
