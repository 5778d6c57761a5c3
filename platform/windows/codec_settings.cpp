#include "codec_settings.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <algorithm>
#include <deque>
#include <span>

#include "automation.h"
#include "widgets_private.h"
#include "windows_private.h"

namespace {

using quillmere::drawing::CodecChoice;

constexpr OSErr kNoComponent = -3000;

std::deque<std::vector<int>>& Answers() {
  static std::deque<std::vector<int>> answers;
  return answers;
}

/// One box for each setting, at its present value.
class SettingsDialog : public QDialog {
 public:
  SettingsDialog(std::string_view codec, std::span<const CodecChoice> choices, Handle settings,
                 QWidget* parent)
      : QDialog(parent) {
    setObjectName(QStringLiteral("CodecSettings"));
    setWindowTitle(QString::fromUtf8(codec.data(), static_cast<qsizetype>(codec.size())));
    setAccessibleName(windowTitle());
    auto* const form = std::make_unique<QFormLayout>(this).release();
    for (std::size_t i = 0; i < choices.size(); ++i) {
      auto* const box = std::make_unique<QComboBox>(this).release();
      for (const char* name : choices[i].names)
        box->addItem(QString::fromUtf8(name));
      box->setCurrentIndex((*settings)[i] != 0 ? 1 : 0);
      form->addRow(QString::fromUtf8(choices[i].title) + u':', box);
      boxes_.push_back(box);
    }
    auto* const buttons =
        std::make_unique<QDialogButtonBox>(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)
            .release();
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    form->addRow(buttons);
  }

  std::vector<int> Chosen() const {
    std::vector<int> chosen;
    for (const QComboBox* box : boxes_)
      chosen.push_back(box->currentIndex());
    return chosen;
  }

 private:
  std::vector<QComboBox*> boxes_;
};

/// What the user chooses, or what has been queued; empty for a cancel.
std::vector<int> Ask(CompressorComponent compressor, std::span<const CodecChoice> choices,
                     Handle settings) {
  if (!Answers().empty()) {
    const std::vector<int> answer = Answers().front();
    Answers().pop_front();
    return answer.size() == choices.size() ? answer : std::vector<int>();
  }
  WindowRef front = quillmere::windows::FrontWindow();
  SettingsDialog dialog(quillmere::drawing::NameOf(compressor), choices, settings,
                        front != nullptr ? front->widget.data() : nullptr);
  return dialog.exec() == QDialog::Accepted ? dialog.Chosen() : std::vector<int>();
}

}  // namespace

OSErr ImageCodecRequestSettings(CompressorComponent compressor) {
  constexpr OSErr kUserCancelled = -128;
  if (compressor == nullptr) return kNoComponent;
  const std::span<const CodecChoice> choices = quillmere::drawing::ChoicesOf(compressor);
  if (choices.empty()) return codecUnimpErr;
  Handle settings = NewHandle(0);
  if (settings == nullptr) return MemError();
  OSErr status = ImageCodecGetSettings(compressor, settings);
  if (!status) {
    const std::vector<int> chosen = Ask(compressor, choices, settings);
    for (std::size_t i = 0; i < chosen.size(); ++i)
      (*settings)[i] = chosen[i] != 0 ? 1 : 0;
    status = chosen.empty() ? kUserCancelled : ImageCodecSetSettings(compressor, settings);
  }
  DisposeHandle(settings);
  return status;
}

namespace quillmere::windows {

void QueueCodecChoices(const std::vector<int>& choices) {
  Answers().push_back(choices);
}

}  // namespace quillmere::windows
