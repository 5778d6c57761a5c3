#include <gtest/gtest.h>

#include <cstring>

#include "GL_Strings_Words.h"
#include "automation.h"
#include "cf_bundle.h"
#include "cf_strings.h"
#include "nibs.h"
#include "window_manager.h"

namespace {

TEST(SuggestedNames, AreTheWindowsTitleAndTheSuffix) {
  quillmere::windows::UseNoDisplay();
  quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
  IBNibRef nib = nullptr;
  ASSERT_EQ(noErr, CreateNibReference(CFSTR("main"), &nib));
  WindowRef window = nullptr;
  ASSERT_EQ(noErr, CreateWindowFromNib(nib, CFSTR("MainWindow"), &window));
  DisposeNibReference(nib);

  char name[256];
  GL_SuggestName(window, name, ".txt");
  EXPECT_STREQ(name, "Quillmere.txt");
  GL_SuggestName(window, name, "");
  EXPECT_STREQ(name, "Quillmere");
  GL_SuggestName(nullptr, name, ".txt");
  EXPECT_STREQ(name, "");
  DisposeWindow(window);
}

}  // namespace
