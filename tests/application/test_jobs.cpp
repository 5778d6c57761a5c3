/// The application's window on no screen: choices, gating, whole jobs and what they print.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "GL_Controls.h"
#include "MF_FileObjects.h"
#include "QM_job.h"
#include "QM_main.h"
#include "automation.h"
#include "cf_bundle.h"
#include "test_files.h"
#include "views.h"
#include "window_manager.h"

namespace {

namespace fs = std::filesystem;
using namespace quillmere::windows;
using quillmere::Owned;
using quillmere::test::ReadFile;
using quillmere::test::RunFfmpeg;
using quillmere::test::TemporaryFolder;
using quillmere::test::WriteFile;

/// Media that every test copies from.
struct Samples {
  Samples() {
    RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48:r=5:d=1", "-c:v", "mjpeg", movie()});
    RunFfmpeg({"-f", "lavfi", "-i", "testsrc=s=64x48", "-frames:v", "1", still()});
    MakeMask(mask(), "20x10");
    MakeMask(wide_mask(), "400x100");
    MakeMask(tall_mask(), "100x400");
  }
  static void MakeMask(const fs::path& path, const std::string& size) {
    RunFfmpeg(
        {"-f", "lavfi", "-i", "color=red@0.5:s=" + size + ",format=rgba", "-frames:v", "1", path});
  }
  fs::path movie() const { return folder / "movie.mov"; }
  fs::path still() const { return folder / "still.jpg"; }
  fs::path mask() const { return folder / "mask.png"; }
  fs::path wide_mask() const { return folder / "wide.png"; }
  fs::path tall_mask() const { return folder / "tall.png"; }

  TemporaryFolder folder;
};

std::set<std::string> NamesIn(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder))
    names.insert(entry.path().filename());
  return names;
}

class JobTest : public ::testing::Test {
 protected:
  struct Job {
    std::vector<SInt32> file_statuses;
    std::vector<SInt32> bar_values;  ///< when each file was done
    std::vector<SInt32> statuses;    ///< of whole jobs
    std::string printed;
  };

  static void SetUpTestSuite() {
    UseNoDisplay();
    quillmere::SetBundleResourceFolder(QUILLMERE_RESOURCES);
    ASSERT_EQ(noErr, QM_Start());
    DisposeWindow(FrontWindow());
    samples = std::make_unique<Samples>();
  }
  static void TearDownTestSuite() { samples.reset(); }

  void SetUp() override {
    ASSERT_EQ(noErr, QM_OpenDialog());
    window = FrontWindow();
    ASSERT_NE(nullptr, window);
    fs::create_directory(source());
    fs::create_directory(target());
    fs::copy_file(samples->mask(), mask());
    const QM_JobObserver observer{NoteFile, NoteJob, this};
    QM_SetJobObserver(&observer);
  }
  void TearDown() override {
    QM_SetJobObserver(nullptr);
    EXPECT_EQ(0U, QueuedPickerAnswers());
    DisposeWindow(window);
  }

  static void NoteFile(const FSRef* /*file*/, SInt32 status, void* user_data) {
    auto* test = static_cast<JobTest*>(user_data);
    test->job.file_statuses.push_back(status);
    SInt32 value = -1;
    GL_GetDialogItemValueByID(test->window, kQM_Signature, kQM_Progress, &value);
    test->job.bar_values.push_back(value);
    if (test->after_file) test->after_file();
  }
  static void NoteJob(SInt32 status, void* user_data) {
    static_cast<JobTest*>(user_data)->job.statuses.push_back(status);
  }

  fs::path source() const { return folder / "source"; }
  fs::path target() const { return folder / "target"; }
  fs::path mask() const { return folder / "mask.png"; }
  void AddMovie(const std::string& name) const { fs::copy_file(samples->movie(), source() / name); }
  void AddStill(const std::string& name) const { fs::copy_file(samples->still(), source() / name); }

  SInt32 Click(SInt32 number) const {
    return GL_HIViewSimulateClickByID(window, kQM_Signature, number, 0, 0);
  }
  void Choose(SInt32 button, const fs::path& path) const {
    QueuePickerAnswer(path);
    EXPECT_EQ(noErr, Click(button));
  }
  void ChooseAll() const {
    Choose(kQM_ChooseMask, mask());
    Choose(kQM_ChooseSource, source());
    Choose(kQM_ChooseTarget, target());
    EXPECT_TRUE(ApplyIsActive());
  }
  /// Presses Apply; `job` tells what came of it.
  void Apply() {
    job = {};
    testing::internal::CaptureStdout();
    const SInt32 status = Click(kQM_Apply);
    job.printed = testing::internal::GetCapturedStdout();
    EXPECT_EQ(noErr, status);
  }

  bool ApplyIsActive() const {
    Boolean active = 0;
    EXPECT_EQ(noErr, GL_IsDialogItemActiveByID(window, kQM_Signature, kQM_Apply, &active));
    return active != 0;
  }
  std::string Text(SInt32 number) const {
    Owned<CFStringRef> text;
    EXPECT_EQ(noErr, GL_CopyDialogItemTextByID(window, kQM_Signature, number, text.out()));
    return quillmere::ToUtf8(text.get());
  }
  /// What the static texts show: mask, source, target, movies, JPEGs.
  std::vector<std::string> Texts() const {
    return {Text(kQM_MaskName), Text(kQM_SourceName), Text(kQM_TargetName), Text(kQM_MovieCount),
            Text(kQM_JpegCount)};
  }
  bool ShowsMask() const { return HIImageViewHasImage(Control(kQM_MaskPreview)) != 0; }
  HIViewRef Control(SInt32 number) const {
    HIViewRef control = nullptr;
    EXPECT_EQ(noErr, HIViewFindByID(HIViewGetRoot(window), {kQM_Signature, number}, &control));
    return control;
  }
  SInt32 BarValue() const {
    SInt32 value = -1;
    EXPECT_EQ(noErr, GL_GetDialogItemValueByID(window, kQM_Signature, kQM_Progress, &value));
    return value;
  }
  static void Post(EventRef event) {
    EXPECT_EQ(noErr, PostEventToQueue(GetMainEventQueue(), event, kEventPriorityStandard));
    ReleaseEvent(event);
  }
  /// Lets a hit wait in the queue, as a click during a job does.
  void PostHit(SInt32 number) const {
    EventRef event = nullptr;
    ASSERT_EQ(noErr, CreateEvent(nullptr, kEventClassControl, kEventControlHit, 0, 0, &event));
    HIViewRef control = Control(number);
    SetEventParameter(event, kEventParamDirectObject, typeControlRef, kReferenceSize,
                      static_cast<const void*>(&control));
    Post(event);
  }
  static void PostCommand(OSType id) {
    EventRef event = nullptr;
    ASSERT_EQ(noErr, CreateEvent(nullptr, kEventClassCommand, kEventCommandProcess, 0, 0, &event));
    HICommand command{};
    command.commandID = id;
    SetEventParameter(event, kEventParamDirectObject, typeHICommand, sizeof command, &command);
    Post(event);
  }

  static std::unique_ptr<Samples> samples;
  TemporaryFolder folder;
  WindowRef window = nullptr;
  Job job;
  std::function<void()> after_file;
};

std::unique_ptr<Samples> JobTest::samples;

std::string Failed(const std::string& step, SInt32 status) {
  return step + " failed with error " + std::to_string(status) + "\n";
}

/// What is printed when a job ends with a status, from the job outwards.
std::string JobFailed(SInt32 status) {
  return "QM_ApplyMask exiting after error\n" + Failed("QM_ApplyMask", status) +
         "QM_HandleDlgControlHit exiting after error\n" + Failed("QM_HandleDlgContrHit", status);
}

const std::vector<std::string> kNothing = {"", "", "", "", ""};

TEST_F(JobTest, ApplyWaitsForAllThreeChoicesInAnyOrder) {
  const SInt32 buttons[] = {kQM_ChooseMask, kQM_ChooseSource, kQM_ChooseTarget};
  const fs::path choices[] = {mask(), source(), target()};
  for (std::size_t last = 0; last < 3; ++last) {
    ASSERT_EQ(noErr, QM_ClearDialogItems(window));
    ASSERT_EQ(noErr, QM_SetApplyButtonActive(window));
    for (std::size_t i = 1; i <= 3; ++i) {
      EXPECT_FALSE(ApplyIsActive());
      EXPECT_EQ(errControlIsNotActive, Click(kQM_Apply));
      const std::size_t next = (last + i) % 3;
      Choose(buttons[next], choices[next]);
    }
    EXPECT_TRUE(ApplyIsActive());
  }
  EXPECT_TRUE(job.statuses.empty());
}

TEST_F(JobTest, AFileThatGoesAwayIsNoticedAtTheNextHit) {
  for (const fs::path& lost : {mask(), source(), target()}) {
    ChooseAll();
    const fs::path kept = folder / "kept";
    fs::copy(lost, kept, fs::copy_options::recursive);
    fs::remove_all(lost);
    EXPECT_TRUE(ApplyIsActive());
    EXPECT_EQ(noErr, Click(kQM_MaskName));
    EXPECT_FALSE(ApplyIsActive()) << lost;
    fs::rename(kept, lost);
  }
}

TEST_F(JobTest, CountsAreThoseOfTheNamesInTheFolder) {
  for (const char* name : {"a.mov", "b.mov"})
    AddMovie(name);
  for (const char* name : {"c.jpg", "photojpg", "PHOTO.JPG"})
    AddStill(name);
  ChooseAll();
  EXPECT_EQ((std::vector<std::string>{"mask.png", "source", "target", "2", "2"}), Texts());
  AddMovie("d.mov");
  Choose(kQM_ChooseTarget, folder.path());
  EXPECT_EQ("2", Text(kQM_MovieCount)) << "a new target recounts nothing";
  Choose(kQM_ChooseSource, source());
  EXPECT_EQ("3", Text(kQM_MovieCount));
}

TEST_F(JobTest, ACancelledPickerChangesNothing) {
  AddMovie("a.mov");
  ChooseAll();
  const std::vector<std::string> texts = Texts();
  AddMovie("b.mov");
  const char* messages[] = {"Please select a png file", "Please select the source folder",
                            "Please select the target folder"};
  const SInt32 buttons[] = {kQM_ChooseMask, kQM_ChooseSource, kQM_ChooseTarget};
  for (std::size_t i = 0; i < 3; ++i) {
    QueuePickerCancel();
    testing::internal::CaptureStdout();
    EXPECT_EQ(noErr, Click(buttons[i]));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(messages[i], LastPickerMessage());
    EXPECT_EQ(texts, Texts());
    EXPECT_TRUE(ApplyIsActive());
  }
  fs::remove(mask());
  QueuePickerCancel();
  EXPECT_EQ(noErr, Click(kQM_ChooseSource));
  EXPECT_FALSE(ApplyIsActive());
}

TEST_F(JobTest, EachMaskIsFittedIntoTheNibsFrame) {
  const HIRect box = QM_GetMaskData(window)->maskViewFrame;
  const struct {
    fs::path mask;
    float width, height;
  } cases[] = {{samples->wide_mask(), box.size.width, box.size.width / 4},
               {samples->tall_mask(), box.size.height / 4, box.size.height},
               {samples->wide_mask(), box.size.width, box.size.width / 4}};
  for (const auto& test : cases) {
    Choose(kQM_ChooseMask, test.mask);
    HIRect frame{};
    ASSERT_EQ(noErr, GL_HIViewGetFrameByID(window, kQM_Signature, kQM_MaskPreview, &frame));
    EXPECT_NEAR(test.width, frame.size.width, 1);
    EXPECT_NEAR(test.height, frame.size.height, 1);
    EXPECT_NEAR(box.origin.x + box.size.width / 2, frame.origin.x + frame.size.width / 2, 2);
    EXPECT_NEAR(box.origin.y + box.size.height / 2, frame.origin.y + frame.size.height / 2, 2);
  }
}

TEST_F(JobTest, AWholeJobWritesEverythingAndClears) {
  AddMovie("a.b.mov");
  AddMovie("z.mov");
  AddStill("s.jpg");
  ChooseAll();
  EXPECT_TRUE(ShowsMask());
  Apply();
  EXPECT_EQ("", job.printed);
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_EQ((std::vector<SInt32>{0, 0, 0}), job.file_statuses);
  EXPECT_EQ((std::set<std::string>{"a.b-clean.mov", "s-clean.jpg", "z-clean.mov"}),
            NamesIn(target()));
  EXPECT_EQ(kNothing, Texts());
  EXPECT_FALSE(ShowsMask());
  EXPECT_FALSE(ApplyIsActive());
  EXPECT_EQ(ReadFile(samples->movie()), ReadFile(source() / "z.mov"));
}

TEST_F(JobTest, TheBarRunsOnceAcrossTheMoviesAndStartsAgainAtZero) {
  SInt32 maximum = 0;
  GL_GetDialogItemMaxByID(window, kQM_Signature, kQM_Progress, &maximum);
  AddMovie("a.mov");
  AddMovie("b.mov");
  AddStill("s.jpg");
  ChooseAll();
  Apply();
  EXPECT_EQ((std::vector<SInt32>{maximum / 2, maximum, maximum}), job.bar_values);
  fs::remove(source() / "a.mov");
  fs::remove(source() / "b.mov");
  ChooseAll();
  Apply();
  EXPECT_EQ((std::vector<SInt32>{0}), job.bar_values);
  EXPECT_EQ(0, BarValue());
}

TEST_F(JobTest, AnEmptyFolderIsAJobWithoutOutput) {
  ChooseAll();
  Apply();
  EXPECT_EQ("", job.printed);
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_TRUE(NamesIn(target()).empty());
  EXPECT_EQ(kNothing, Texts());
}

TEST_F(JobTest, AMaskThatIsNoPictureEndsTheJobAndKeepsTheChoices) {
  AddMovie("a.mov");
  ChooseAll();
  const fs::path text = folder / "text.png";
  WriteFile(text, std::string_view("no picture"));
  testing::internal::CaptureStdout();
  Choose(kQM_ChooseMask, text);
  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  const std::vector<std::string> texts = Texts();
  EXPECT_EQ("text.png", texts[0]);
  Apply();
  ASSERT_EQ(1U, job.statuses.size());
  EXPECT_NE(noErr, job.statuses[0]);
  EXPECT_EQ(Failed("QT_PrepareReadingImageFromFile", job.statuses[0]) + JobFailed(job.statuses[0]),
            job.printed);
  EXPECT_TRUE(job.file_statuses.empty());
  EXPECT_TRUE(NamesIn(target()).empty());
  EXPECT_EQ(texts, Texts());
  EXPECT_FALSE(ApplyIsActive());
  EXPECT_EQ(noErr, Click(kQM_Icon));
  EXPECT_TRUE(ApplyIsActive()) << "the next hit looks again";
}

TEST_F(JobTest, ABrokenMovieIsReportedAndPassedOver) {
  AddMovie("a.mov");
  AddMovie("c.mov");
  // A movie file whose movie atom is none.
  quillmere::test::Bytes broken = ReadFile(samples->movie());
  const std::string_view text(reinterpret_cast<const char*>(broken.data()), broken.size());
  broken.resize(text.rfind("moov") + 40);
  WriteFile(source() / "b.mov", broken);
  ChooseAll();
  EXPECT_EQ("3", Text(kQM_MovieCount));
  Apply();
  ASSERT_EQ(3U, job.file_statuses.size());
  EXPECT_NE(noErr, job.file_statuses[1]);
  EXPECT_EQ(Failed("QT_OpenMovieFileFP", job.file_statuses[1]), job.printed);
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_EQ((std::set<std::string>{"a-clean.mov", "c-clean.mov"}), NamesIn(target()));
  EXPECT_EQ(kNothing, Texts());
}

TEST_F(JobTest, OnlyTheLastStillsFailureIsTheJobs) {
  for (const bool last : {false, true}) {
    fs::remove_all(source());
    fs::create_directory(source());
    AddStill("m.jpg");
    WriteFile(source() / (last ? "z.jpg" : "a.jpg"), std::string_view("no picture"));
    ChooseAll();
    const std::vector<std::string> texts = Texts();
    const UInt64 alerts = AlertCount();
    Apply();
    ASSERT_EQ(2U, job.file_statuses.size());
    const SInt32 status = job.file_statuses[last ? 1 : 0];
    EXPECT_NE(noErr, status);
    EXPECT_EQ(noErr, job.file_statuses[last ? 0 : 1]);
    EXPECT_EQ((std::vector<SInt32>{last ? status : 0}), job.statuses);
    EXPECT_EQ(Failed("QT_OpenMovieFileFP", status) + (last ? JobFailed(status) : ""), job.printed);
    EXPECT_EQ(last ? 3U : 1U, AlertCount() - alerts) << "one for each line that names an error";
    EXPECT_EQ(last ? texts : kNothing, Texts());
    EXPECT_EQ((std::set<std::string>{"m-clean.jpg"}), NamesIn(target()));
  }
}

TEST_F(JobTest, AStillThatCantBePlacedIsReportedAndNotTheJobsFailure) {
  constexpr SInt32 kNoUrl = 10023;
  AddStill("a.jpg");
  AddStill("b.jpg");
  ChooseAll();
  after_file = [this] { fs::remove_all(target()); };
  Apply();
  EXPECT_EQ((std::vector<SInt32>{0, kNoUrl}), job.file_statuses);
  EXPECT_EQ(
      "QM_ImageAvailableCallbackDL exiting after error\n" + Failed("QT_DrawFirstFrame", kNoUrl),
      job.printed);
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_EQ(kNothing, Texts());
}

TEST_F(JobTest, ASourceIsNeverReplacedByAnOutput) {
  AddStill("a.jpg");
  AddStill("a-clean.jpg");
  AddMovie("m.mov");
  AddMovie("m-clean.mov");
  Choose(kQM_ChooseMask, mask());
  Choose(kQM_ChooseSource, source());
  Choose(kQM_ChooseTarget, source());
  Apply();
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_EQ(ReadFile(samples->still()), ReadFile(source() / "a-clean.jpg"));
  EXPECT_EQ(ReadFile(samples->movie()), ReadFile(source() / "m-clean.mov"));
  EXPECT_EQ((std::set<std::string>{"a.jpg", "a-clean.jpg", "a-clean-clean.jpg", "m.mov",
                                   "m-clean.mov", "m-clean-clean.mov"}),
            NamesIn(source()));
}

TEST_F(JobTest, StillsThatCameOrWentSinceTheCountAreNotOfTheJob) {
  AddStill("a.jpg");
  AddStill("b.jpg");
  ChooseAll();
  AddStill("c.jpg");
  Apply();
  EXPECT_EQ((std::set<std::string>{"a-clean.jpg", "b-clean.jpg"}), NamesIn(target()));
  ChooseAll();
  fs::remove(source() / "a.jpg");
  fs::remove(source() / "b.jpg");
  Apply();
  EXPECT_EQ((std::vector<SInt32>{0}), job.file_statuses);
  EXPECT_EQ("", job.printed);
  EXPECT_TRUE(fs::exists(target() / "c-clean.jpg"));
}

TEST_F(JobTest, AnApplyHitDuringAJobStartsNoOther) {
  AddMovie("a.mov");
  AddMovie("b.mov");
  ChooseAll();
  PostHit(kQM_Apply);  // met by the first movie's progress
  after_file = [this] {
    EXPECT_FALSE(ApplyIsActive());
    OSStatus event_status = 1;
    EXPECT_EQ(noErr, QM_HandleDlgControlHit(window, kQM_Signature, kQM_Apply, &event_status));
    EXPECT_EQ(noErr, event_status);
  };
  Apply();
  EXPECT_EQ((std::vector<SInt32>{0}), job.statuses);
  EXPECT_EQ((std::vector<SInt32>{0, 0}), job.file_statuses);
  EXPECT_EQ("", job.printed);
}

TEST_F(JobTest, ChoosingDuringAJobWorksAndApplyStaysOff) {
  AddMovie("a.mov");
  AddMovie("b.mov");
  ChooseAll();
  const fs::path other = folder / "other";
  fs::create_directory(other);
  QueuePickerAnswer(other);
  PostHit(kQM_ChooseTarget);
  after_file = [this] {
    EXPECT_EQ("other", Text(kQM_TargetName));
    EXPECT_FALSE(ApplyIsActive());
  };
  Apply();
  EXPECT_EQ((std::set<std::string>{"a-clean.mov"}), NamesIn(target()));
  EXPECT_EQ((std::set<std::string>{"b-clean.mov"}), NamesIn(other));
}

TEST_F(JobTest, ClosingOrQuittingDuringAJobEndsItWithoutAPartialFile) {
  AddMovie("a.mov");
  AddMovie("b.mov");
  AddStill("s.jpg");
  for (const OSType command : {kHICommandClose, kHICommandQuit}) {
    ChooseAll();
    PostCommand(command);
    Apply();
    EXPECT_FALSE(IsValidWindowPtr(window));
    ASSERT_EQ(1U, job.file_statuses.size()) << "the files behind the first are left alone";
    EXPECT_NE(noErr, job.file_statuses[0]);
    EXPECT_EQ(1U, job.statuses.size());
    EXPECT_TRUE(NamesIn(target()).empty());
    EXPECT_EQ("", job.printed);
    ASSERT_EQ(noErr, QM_OpenDialog());
    window = FrontWindow();
  }
}

}  // namespace
