/// Does one job without a display: quillmere-batch MASK.png SOURCE_FOLDER TARGET_FOLDER
///
/// It opens the application's own window on no screen, answers its pickers and presses its buttons.
/// It prints what the application prints, and on a terminal one line for each file. The exit status
/// is 0 when the job's status is 0, 2 for wrong arguments, 3 when the job could not start, else the
/// low 8 bits of the job's status (1 where these are 0).
#include <unistd.h>

#include <strings.h>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "GL_Controls.h"
#include "QM_job.h"
#include "QM_main.h"
#include "automation.h"
#include "window_manager.h"

namespace {

namespace fs = std::filesystem;

constexpr int kUsageExit = 2;
constexpr int kNotStartedExit = 3;

struct Progress {
  bool show_files = false;
  SInt32 files = 0;
  std::optional<SInt32> job_status;
};

void ShowFile(const FSRef* file, SInt32 status, void* user_data) {
  auto* progress = static_cast<Progress*>(user_data);
  ++progress->files;
  if (!progress->show_files) return;
  fs::path path;
  if (quillmere::files::PathOf(*file, &path) != noErr) path = "(a file that has gone)";
  if (status == noErr) {
    std::printf("%" PRId32 "  %s\n", progress->files, path.filename().c_str());
  } else {
    std::printf("%" PRId32 "  %s  not done: %" PRId32 "\n", progress->files,
                path.filename().c_str(), status);
  }
  std::fflush(stdout);
}

void NoteJobDone(SInt32 status, void* user_data) {
  static_cast<Progress*>(user_data)->job_status = status;
}

/// True if the arguments can be a job; says what is wrong with them if not.
bool CheckArguments(const fs::path& mask, const fs::path& source, const fs::path& target) {
  const auto complain = [](const fs::path& path, const char* what) {
    std::fprintf(stderr, "quillmere-batch: %s: %s\n", path.c_str(), what);
    return false;
  };
  std::error_code error;
  if (!fs::exists(mask, error)) return complain(mask, "there is no such file");
  if (!fs::is_regular_file(mask, error)) return complain(mask, "is not a file");
  if (strcasecmp(mask.extension().c_str(), ".png") != 0) {
    return complain(mask, "the mask's name has to end in .png");
  }
  for (const fs::path& folder : {source, target}) {
    if (!fs::exists(folder, error)) return complain(folder, "there is no such folder");
    if (!fs::is_directory(folder, error)) return complain(folder, "is not a folder");
  }
  return true;
}

int ExitStatus(SInt32 status) {
  if (status == noErr) return 0;
  const int low = static_cast<int>(static_cast<UInt32>(status) & 0xFFU);
  return low != 0 ? low : 1;
}

int RunJob(const fs::path& mask, const fs::path& source, const fs::path& target) {
  using namespace quillmere::windows;
  UseNoDisplay();
  const SInt32 started = QM_Start();
  if (started != noErr) return kNotStartedExit;

  Progress progress;
  progress.show_files = isatty(STDOUT_FILENO) != 0;
  const QM_JobObserver observer{ShowFile, NoteJobDone, &progress};
  QM_SetJobObserver(&observer);
  QueuePickerAnswer(mask);
  QueuePickerAnswer(source);
  QueuePickerAnswer(target);
  WindowRef window = FrontWindow();
  for (const SInt32 number : {kQM_ChooseMask, kQM_ChooseSource, kQM_ChooseTarget, kQM_Apply}) {
    const SInt32 status = GL_HIViewSimulateClickByID(window, kQM_Signature, number, 0, 0);
    if (status != noErr) {
      std::fprintf(stderr, "quillmere-batch: the job could not be started (%" PRId32 ")\n", status);
      return kNotStartedExit;
    }
  }
  QM_SetJobObserver(nullptr);
  return progress.job_status ? ExitStatus(*progress.job_status) : kNotStartedExit;
}

}  // namespace

int main(int argument_count, char** arguments) {
  if (argument_count != 4) {
    std::fprintf(stderr, "usage: quillmere-batch MASK.png SOURCE_FOLDER TARGET_FOLDER\n");
    return kUsageExit;
  }
  const fs::path mask(arguments[1]);
  const fs::path source(arguments[2]);
  const fs::path target(arguments[3]);
  if (!CheckArguments(mask, source, target)) return kUsageExit;
  return RunJob(mask, source, target);
}
