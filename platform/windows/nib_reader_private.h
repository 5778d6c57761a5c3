/// Builds widgets from a file in Qt Designer's format. It knows the widgets, layouts and property
/// kinds that dialogs use, and fails on what it does not know rather than showing half a window.
#pragma once

#include <QString>
#include <QWidget>
#include <memory>

namespace quillmere::windows {

/// Finds the class of the object called `name` in the file; empty if there is none. `well_formed`
/// (may be null) tells if the whole file could be read.
QString ClassOfNibObject(const QString& path, const QString& name, bool* well_formed);

/// Builds the top-level widget of the file; null if the file can't be read or holds something
/// unknown. A menu bar is built only if it is called `menu_bar`.
std::unique_ptr<QWidget> BuildNibWindow(const QString& path, const QString& menu_bar);

}  // namespace quillmere::windows
