#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <map>
#include <string>

#include "cf_url_resources.h"
#include "file_references.h"
#include "preferences.h"
#include "test_files.h"
#include "whole_files.h"

namespace {

namespace fs = std::filesystem;
using quillmere::Owned;
using quillmere::test::ReadFile;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

constexpr std::string_view kDamaged = "<plist><dict><key>mine</key>";

/// Runs a function in a process of its own; gives its result, or 128 plus the signal that ended it.
int InChild(const std::function<int()>& action) {
  const pid_t child = fork();
  if (child == 0) _exit(action());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

Owned<CFStringRef> Text(const std::string& utf8) {
  return Owned<CFStringRef>(quillmere::CreateFromUtf8(utf8));
}

void Set(const std::string& key, CFPropertyListRef value) {
  CFPreferencesSetAppValue(Text(key).get(), value, kCFPreferencesCurrentApplication);
}

std::string Get(const std::string& key) {
  const Owned<CFPropertyListRef> value(
      CFPreferencesCopyAppValue(Text(key).get(), kCFPreferencesCurrentApplication));
  return value ? quillmere::ToUtf8(quillmere::AsString(value.get())) : "none";
}

bool Synchronize() {
  return CFPreferencesAppSynchronize(kCFPreferencesCurrentApplication) != 0;
}

std::string ContentOf(const fs::path& path) {
  const quillmere::test::Bytes bytes = ReadFile(path);
  return {bytes.begin(), bytes.end()};
}

std::size_t CountIn(const fs::path& folder) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

/// Preferences in a folder of their own, where the test starts with none.
class PreferencesTest : public testing::Test {
 protected:
  PreferencesTest() {
    setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1);
    EXPECT_TRUE(Synchronize());
  }
  ~PreferencesTest() override {
    for (const char* key : {"mine", "other", "a", "b"})
      Set(key, nullptr);
    fs::remove_all(folder_ / "quillmere");
    Synchronize();
  }

  void WriteByHand(const std::string& body) {
    fs::create_directories(file_.parent_path());
    WriteFile(file_, "<plist>" + body + "</plist>");
  }

  TemporaryFolder folder_;
  fs::path file_ = folder_ / "quillmere/preferences.plist";
};

TEST_F(PreferencesTest, ReachTheDiskOnlyWhenSynchronized) {
  EXPECT_FALSE(fs::exists(folder_ / "quillmere"));
  Set("mine", CFSTR("1"));
  EXPECT_EQ(Get("mine"), "1");
  EXPECT_FALSE(fs::exists(folder_ / "quillmere"));
  ASSERT_TRUE(Synchronize());
  EXPECT_EQ(
      quillmere::test::RunOrFail(
          {"python3", "-c", "import plistlib, sys; print(plistlib.load(open(sys.argv[1], 'rb')))",
           file_.string()}),
      "{'mine': '1'}\n");
  struct stat information {};
  ASSERT_EQ(stat(file_.c_str(), &information), 0);
  EXPECT_EQ(information.st_mode & 0777, 0600U);
  Set("mine", nullptr);
  EXPECT_EQ(Get("mine"), "none");
  ASSERT_TRUE(Synchronize());
  EXPECT_EQ(Get("mine"), "none");
  CFPreferencesSetAppValue(CFSTR("a"), CFSTR("x"), CFSTR("another"));
  EXPECT_EQ(Get("a"), "none");
}

TEST_F(PreferencesTest, KeepWhatOthersHaveWritten) {
  WriteByHand("<dict><key>other</key><string>o</string><key>mine</key><string>0</string></dict>");
  EXPECT_EQ(Get("mine"), "none");  // as it was when last read
  Set("mine", CFSTR("1"));
  ASSERT_TRUE(Synchronize());
  EXPECT_EQ(Get("other"), "o");
  EXPECT_NE(ContentOf(file_).find("<string>o</string>"), std::string::npos);
  WriteByHand("<dict><key>mine</key><string>2</string></dict>");
  ASSERT_TRUE(Synchronize());  // nothing is held, so that theirs is the newer one
  EXPECT_EQ(Get("mine"), "2");
  EXPECT_EQ(Get("other"), "none");
}

TEST_F(PreferencesTest, HoldCopies) {
  const Owned<CFMutableStringRef> text(CFStringCreateMutable(nullptr, 0));
  CFStringAppend(text.get(), CFSTR("a"));
  Set("mine", text.get());
  CFStringAppend(text.get(), CFSTR("b"));
  EXPECT_EQ(Get("mine"), "a");
}

TEST_F(PreferencesTest, LeaveADamagedFileAsItIs) {
  for (const std::string& content :
       {std::string(kDamaged), std::string("<plist><array/></plist>"),
        std::string(static_cast<std::size_t>(quillmere::kLargestPropertyList) + 1, ' ')}) {
    fs::create_directories(file_.parent_path());
    WriteFile(file_, content);
    EXPECT_FALSE(Synchronize());
    Set("mine", CFSTR("1"));
    EXPECT_FALSE(Synchronize());
    EXPECT_TRUE(ContentOf(file_) == content);
    EXPECT_EQ(Get("mine"), "1");  // still held, and stored once the file can be read
    WriteFile(file_, "");
    EXPECT_TRUE(Synchronize());
    EXPECT_NE(ContentOf(file_).find("mine"), std::string::npos);
  }
}

TEST_F(PreferencesTest, AValueWithoutAFormKeepsNoOtherFromBeingStored) {
  const Owned<CFURLRef> url(quillmere::CreateUrlOfPath("/"));
  Set("a", url.get());
  Set("b", CFSTR("1"));
  EXPECT_FALSE(Synchronize());
  EXPECT_NE(ContentOf(file_).find("<key>b</key>"), std::string::npos);
  Set("a", nullptr);
  EXPECT_TRUE(Synchronize());
}

TEST_F(PreferencesTest, ProcessesAtOnceLoseNothing) {
  constexpr int kProcesses = 4;
  constexpr int kRounds = 25;
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    const pid_t child = fork();
    if (child == 0) {
      bool good = true;
      for (int round = 0; round < kRounds; ++round) {
        Set("p" + std::to_string(process) + "." + std::to_string(round), CFSTR("x"));
        bool is_stored = false;  // a busy machine can let the lock wait too long
        for (int tries = 0; tries < 20 && !is_stored; ++tries)
          is_stored = Synchronize();
        good = is_stored && good;
      }
      _exit(good ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  ASSERT_TRUE(Synchronize());
  for (int process = 0; process < kProcesses; ++process) {
    for (int round = 0; round < kRounds; ++round)
      EXPECT_EQ(Get("p" + std::to_string(process) + "." + std::to_string(round)), "x");
  }
  EXPECT_EQ(CountIn(file_.parent_path()), 2U);  // the file and the lock
}

TEST_F(PreferencesTest, NeitherAFullDiskNorACrashDamagesTheFile) {
  Set("mine", CFSTR("old"));
  ASSERT_TRUE(Synchronize());
  const std::string before = ContentOf(file_);
  const auto write_too_much = [](bool survives) {
    if (survives) std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    Set("mine", Text(std::string(100000, 'x')).get());
    if (Synchronize()) return 1;
    return Get("mine").size() == 100000 ? 0 : 2;
  };
  EXPECT_EQ(InChild([&] { return write_too_much(true); }), 0);
  EXPECT_EQ(ContentOf(file_), before);
  EXPECT_EQ(CountIn(file_.parent_path()), 2U);
  EXPECT_EQ(InChild([&] { return write_too_much(false); }), 128 + SIGXFSZ);
  EXPECT_EQ(ContentOf(file_), before);
}

TEST_F(PreferencesTest, ConfigurationFolderFallsBackToTheHome) {
  setenv("XDG_CONFIG_HOME", "not/absolute", 1);
  const std::string home = getenv("HOME") ? getenv("HOME") : "";
  setenv("HOME", folder_.path().c_str(), 1);
  Set("mine", CFSTR("1"));
  EXPECT_TRUE(Synchronize());
  EXPECT_TRUE(fs::exists(folder_ / ".config/quillmere/preferences.plist"));
  setenv("HOME", home.c_str(), 1);
  setenv("XDG_CONFIG_HOME", folder_.path().c_str(), 1);
}

TEST(WholeFiles, ReplaceThroughLinksAndKeepProperties) {
  const TemporaryFolder folder;
  const fs::path real = folder / "real";
  WriteFile(real, "old");
  ASSERT_EQ(chmod(real.c_str(), 0640), 0);
  const bool has_attributes = setxattr(real.c_str(), "user.tag", "red", 3, 0) == 0;
  fs::create_symlink("real", folder / "link");
  const std::vector<UInt8> bytes = {'n', 'e', 'w'};
  EXPECT_EQ(quillmere::ReplaceWholeFile(folder / "link", bytes, false), noErr);
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(ContentOf(real), "new");
  struct stat information {};
  ASSERT_EQ(stat(real.c_str(), &information), 0);
  EXPECT_EQ(information.st_mode & 07777, 0640U);
  if (has_attributes) {
    char value[8] = {};
    EXPECT_EQ(getxattr(real.c_str(), "user.tag", value, sizeof value), 3);
    EXPECT_STREQ(value, "red");
  }
  fs::create_symlink("fresh", folder / "dangling");
  EXPECT_EQ(quillmere::ReplaceWholeFile(folder / "dangling", bytes, false), noErr);
  EXPECT_EQ(ContentOf(folder / "fresh"), "new");
  EXPECT_EQ(CountIn(folder.path()), 4U);
}

TEST(WholeFiles, TellWhatIsWrong) {
  const TemporaryFolder folder;
  WriteFile(folder / "file", "12345");
  fs::create_symlink("loop", folder / "loop");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  std::vector<UInt8> bytes;
  const struct {
    const char* name;
    OSStatus read;
    OSStatus written;
  } cases[] = {{"missing/file", fnfErr, fnfErr},
               {"", paramErr, paramErr},
               {"pipe", paramErr, paramErr},
               {"loop", fnfErr, fnfErr},
               {"file/x", fnfErr, fnfErr}};
  for (const auto& test : cases) {
    EXPECT_EQ(quillmere::ReadWholeFile(folder / test.name, 5, &bytes), test.read) << test.name;
    EXPECT_EQ(quillmere::ReplaceWholeFile(folder / test.name, bytes, false), test.written)
        << test.name;
  }
  EXPECT_EQ(quillmere::ReadWholeFile(folder / "file", 5, &bytes), noErr);
  EXPECT_EQ(bytes.size(), 5U);
  EXPECT_EQ(quillmere::ReadWholeFile(folder / "file", 4, &bytes), memFullErr);
  SInt32 status = noErr;
  EXPECT_FALSE(CFURLWriteDataAndPropertiesToResource(nullptr, nullptr, nullptr, &status));
  EXPECT_EQ(status, paramErr);
  EXPECT_EQ(CountIn(folder.path()), 3U);
}

}  // namespace
