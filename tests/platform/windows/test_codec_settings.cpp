/// The settings dialog of compressors, driven as a user would.
#include "codec_settings.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QTimer>

#include "automation.h"
#include "carbon_events.h"
#include "cf_bundle.h"
#include "nibs.h"

namespace {

/// Chooses in the dialog that will be shown: the value of each box, then OK or Cancel.
void ChooseSoon(const std::vector<int>& shown, const std::vector<int>& chosen, bool is_accepted) {
  QTimer::singleShot(0, [=] {
    auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(nullptr, dialog);
    EXPECT_EQ(QStringLiteral("DV - PAL"), dialog->windowTitle());
    const QList<QComboBox*> boxes = dialog->findChildren<QComboBox*>();
    ASSERT_EQ(static_cast<qsizetype>(shown.size()), boxes.size());
    for (qsizetype i = 0; i < boxes.size(); ++i) {
      EXPECT_EQ(shown[static_cast<std::size_t>(i)], boxes[i]->currentIndex());
      boxes[i]->setCurrentIndex(chosen[static_cast<std::size_t>(i)]);
    }
    is_accepted ? dialog->accept() : dialog->reject();
  });
}

TEST(CodecSettingsDialog, GivesTheCompressorWhatIsChosen) {
  quillmere::windows::UseNoDisplay();
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  IBNibRef nib = nullptr;
  ASSERT_EQ(noErr, CreateNibReference(CFSTR("main"), &nib));  // brings up the application
  DisposeNibReference(nib);
  CompressorComponent compressor = nullptr;
  ASSERT_EQ(noErr, OpenADefaultComponent("imco"_4cc, "dvcp"_4cc, &compressor));
  const auto is_wide = [compressor] {
    Boolean wide = 9;
    EXPECT_EQ(noErr, QTGetComponentProperty(compressor, "dvco"_4cc, "16x9"_4cc, sizeof wide, &wide,
                                            nullptr));
    return wide != 0;
  };
  ChooseSoon({0, 0}, {0, 1}, true);
  EXPECT_EQ(noErr, ImageCodecRequestSettings(compressor));
  EXPECT_TRUE(is_wide());
  ChooseSoon({0, 1}, {1, 0}, false);
  EXPECT_EQ(-128, ImageCodecRequestSettings(compressor));
  EXPECT_TRUE(is_wide()) << "cancelled";
  CloseComponent(compressor);
}

}  // namespace
