#include "navigation_services.h"

#include <QFileDialog>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>
#include <deque>
#include <optional>

#include "automation.h"
#include "file_references.h"
#include "window_manager.h"
#include "windows_private.h"

struct NavDialog {
  bool folders = false;
  QString message;
  QString client;
  NavEventProcPtr event_procedure = nullptr;
  NavObjectFilterProcPtr filter = nullptr;
  void* user_data = nullptr;
  QString location;
  UInt32 user_action = kNavUserActionNone;
  FSRef chosen{};
};

namespace {

using quillmere::AtExit;
using namespace quillmere::windows;

/// An answer given in advance; none stands for a cancel.
using Answer = std::optional<std::filesystem::path>;

struct PickerState {
  std::deque<Answer> answers;
  std::string last_message;
  std::filesystem::path last_location;  ///< where a dialog was told to open last
  QString last_folder;                  ///< where the user chose something last
  bool running = false;
};

PickerState& State() {
  static PickerState state;
  return state;
}

void Report(NavDialog* dialog, SInt32 selector) {
  NavCBRec record{1, dialog, dialog->user_action};
  dialog->event_procedure(selector, &record, dialog->user_data);
}

/// Asks the dialog's filter about an item; without a filter everything is shown.
bool Shows(const NavDialog& dialog, const std::filesystem::path& path, bool is_folder) {
  if (dialog.filter == nullptr) return true;
  FSRef reference{};
  AEDesc item{};
  if (quillmere::files::ReferenceOf(path, &reference) != noErr ||
      AECreateDesc(typeFSRef, &reference, sizeof reference, &item) != noErr) {
    return false;
  }
  NavFileOrFolderInfo info{1, is_folder, 1};
  const bool shown = dialog.filter(&item, &info, dialog.user_data, 0) != 0;
  AEDisposeDesc(&item);
  return shown;
}

std::filesystem::path ToPath(const QString& path) {
  return QFile::encodeName(path).toStdString();
}

/// Hides what the dialog's filter does not show.
class FilterModel : public QSortFilterProxyModel {
 public:
  FilterModel(const NavDialog* dialog, QObject* parent)
      : QSortFilterProxyModel(parent), dialog_(dialog) {}

 protected:
  bool filterAcceptsRow(int row, const QModelIndex& parent) const override {
    const auto* files = qobject_cast<QFileSystemModel*>(sourceModel());
    if (files == nullptr) return true;
    const QModelIndex item = files->index(row, 0, parent);
    // Folders always lead on to what may be shown.
    return files->isDir(item) || Shows(*dialog_, ToPath(files->filePath(item)), false);
  }

 private:
  const NavDialog* dialog_;
};

/// A file dialog that does not take a typed name which the filter hides.
class Picker : public QFileDialog {
 public:
  Picker(const NavDialog* dialog, QWidget* parent) : QFileDialog(parent), dialog_(dialog) {}

  void accept() override {
    const QStringList files = selectedFiles();
    if (!dialog_->folders && files.size() == 1) {
      const QFileInfo chosen(files.front());
      if (chosen.isFile() && !Shows(*dialog_, ToPath(chosen.filePath()), false)) return;
    }
    QFileDialog::accept();
  }

 private:
  const NavDialog* dialog_;
};

void TakeChoice(NavDialog* dialog, const std::filesystem::path& path) {
  std::error_code error;
  const bool is_folder = std::filesystem::is_directory(path, error);
  if (is_folder == dialog->folders && Shows(*dialog, path, is_folder) &&
      quillmere::files::ReferenceOf(path, &dialog->chosen) == noErr) {
    dialog->user_action = kNavUserActionChoose;
  }
}

void ShowPicker(NavDialog* dialog) {
  WindowRef front = FrontWindow();
  Picker picker(dialog, front != nullptr ? front->widget.data() : nullptr);
  picker.setObjectName(QStringLiteral("Picker"));
  picker.setWindowTitle(dialog->message.isEmpty() ? dialog->client : dialog->message);
  picker.setAccessibleName(picker.windowTitle());
  picker.setFileMode(dialog->folders ? QFileDialog::Directory : QFileDialog::ExistingFile);
  picker.setOption(QFileDialog::ShowDirsOnly, dialog->folders);
  picker.setLabelText(QFileDialog::Accept,
                      dialog->folders ? QStringLiteral("&Choose") : QStringLiteral("&Open"));
  if (dialog->filter != nullptr) {
    // The desktop's own dialogs can't ask a filter about each item.
    picker.setOption(QFileDialog::DontUseNativeDialog);
    picker.setProxyModel(std::make_unique<FilterModel>(dialog, &picker).release());
  }
  const QString folder = dialog->location.isEmpty() ? State().last_folder : dialog->location;
  picker.setDirectory(folder.isEmpty() ? QDir::homePath() : folder);
  if (picker.exec() != QDialog::Accepted || picker.selectedFiles().size() != 1) return;
  const QString chosen = picker.selectedFiles().front();
  TakeChoice(dialog, ToPath(chosen));
  State().last_folder = dialog->folders ? chosen : QFileInfo(chosen).absolutePath();
}

OSStatus CreateDialog(const NavDialogCreationOptions* options, NavEventProcPtr event_procedure,
                      NavObjectFilterProcPtr filter, void* user_data, bool folders,
                      NavDialogRef* dialog) {
  if (dialog == nullptr) return paramErr;
  *dialog = nullptr;
  if (options == nullptr || event_procedure == nullptr) return paramErr;
  auto made = std::make_unique<NavDialog>();
  made->folders = folders;
  made->message = ToQString(options->message);
  made->client = ToQString(options->clientName);
  made->event_procedure = event_procedure;
  made->filter = filter;
  made->user_data = user_data;
  *dialog = made.release();
  return noErr;
}

}  // namespace

OSStatus NavGetDefaultDialogCreationOptions(NavDialogCreationOptions* options) {
  if (options == nullptr) return paramErr;
  *options = {1, kNavDefaultNavDlogOptions, nullptr, nullptr, nullptr};
  return noErr;
}

OSStatus NavCreateChooseFileDialog(const NavDialogCreationOptions* options, const void* /*types*/,
                                   NavEventProcPtr event_procedure, const void* /*preview*/,
                                   NavObjectFilterProcPtr filter, void* user_data,
                                   NavDialogRef* dialog) {
  return CreateDialog(options, event_procedure, filter, user_data, false, dialog);
}

OSStatus NavCreateChooseFolderDialog(const NavDialogCreationOptions* options,
                                     NavEventProcPtr event_procedure, NavObjectFilterProcPtr filter,
                                     void* user_data, NavDialogRef* dialog) {
  return CreateDialog(options, event_procedure, filter, user_data, true, dialog);
}

OSStatus NavDialogRun(NavDialogRef dialog) {
  if (dialog == nullptr) return paramErr;
  PickerState& state = State();
  if (state.running) return kNavWrongDialogStateErr;
  state.running = true;
  const AtExit stopped([&state] { state.running = false; });
  state.last_message = dialog->message.toStdString();
  Report(dialog, kNavCBStart);
  state.last_location = ToPath(dialog->location);
  dialog->user_action = kNavUserActionCancel;
  dialog->chosen = {};
  if (state.answers.empty()) {
    Application();
    ShowPicker(dialog);
  } else {
    const Answer answer = state.answers.front();
    state.answers.pop_front();
    if (answer) TakeChoice(dialog, *answer);
  }
  Report(dialog, kNavCBUserAction);
  Report(dialog, kNavCBTerminate);
  return noErr;
}

void NavDialogDispose(NavDialogRef dialog) {
  const std::unique_ptr<NavDialog> last(dialog);
}

UInt32 NavDialogGetUserAction(NavDialogRef dialog) {
  return dialog != nullptr ? dialog->user_action : static_cast<UInt32>(kNavUserActionNone);
}

OSStatus NavDialogGetReply(NavDialogRef dialog, NavReplyRecord* reply) {
  if (dialog == nullptr || reply == nullptr) return paramErr;
  if (dialog->user_action != kNavUserActionChoose) return userCanceledErr;
  *reply = {};
  const OSErr listed = AECreateList(&reply->selection);
  if (listed != noErr) return listed;
  reply->version = 2;
  reply->validRecord = 1;
  return AEPutPtr(&reply->selection, 1, typeFSRef, &dialog->chosen, sizeof dialog->chosen);
}

OSStatus NavDisposeReply(NavReplyRecord* reply) {
  if (reply == nullptr) return paramErr;
  AEDisposeDesc(&reply->selection);
  if (reply->fileTranslation != nullptr) DisposeHandle(reply->fileTranslation);
  CFRelease(reply->saveFileName);
  *reply = {};
  return noErr;
}

OSStatus NavCustomControl(NavDialogRef dialog, SInt32 selector, void* parameters) {
  if (dialog == nullptr || parameters == nullptr) return paramErr;
  if (selector != kNavCtlSetLocation) return kNavInvalidCustomControlMessageErr;
  const auto* descriptor = static_cast<const AEDesc*>(parameters);
  FSRef reference{};
  if (descriptor->descriptorType != typeFSRef ||
      AEGetDescDataSize(descriptor) != sizeof reference) {
    return errAEWrongDataType;
  }
  AEGetDescData(descriptor, &reference, sizeof reference);
  std::filesystem::path path;
  if (const OSStatus status = quillmere::files::PathOf(reference, &path)) return status;
  std::error_code error;
  if (!std::filesystem::is_directory(path, error)) path = path.parent_path();
  dialog->location = QFile::decodeName(path.c_str());
  return noErr;
}

namespace quillmere::windows {

void QueuePickerAnswer(const std::filesystem::path& path) {
  State().answers.emplace_back(path);
}

void QueuePickerCancel() {
  State().answers.emplace_back(std::nullopt);
}

std::size_t QueuedPickerAnswers() {
  return State().answers.size();
}

std::string LastPickerMessage() {
  return State().last_message;
}

std::filesystem::path LastPickerFolder() {
  return State().last_location;
}

}  // namespace quillmere::windows
