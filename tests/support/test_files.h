/// Files and commands for tests: temporary folders, whole-file reads and writes, outside programs.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "base_types.h"

namespace quillmere::test {

using Bytes = std::vector<UInt8>;

/// A folder of its own for one test; it goes away with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "quillmere-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = name;
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

inline Bytes ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return Bytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

inline void WriteFile(const std::filesystem::path& path, std::span<const UInt8> bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

inline void WriteFile(const std::filesystem::path& path, std::string_view text) {
  WriteFile(path, std::span(reinterpret_cast<const UInt8*>(text.data()), text.size()));
}

/// What an outside program did.
struct CommandResult {
  int status = -1;  ///< exit status; 128 plus the signal that ended it; 127 when it did not start
  std::string output;  ///< standard output
  std::string errors;  ///< standard error
};

namespace internal {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using TemporaryStream = std::unique_ptr<std::FILE, FileCloser>;

inline std::string ContentOf(std::FILE* file) {
  std::string text;
  std::rewind(file);
  char block[65536];
  while (const std::size_t count = std::fread(block, 1, sizeof block, file)) {
    text.append(block, count);
  }
  return text;
}

}  // namespace internal

/// Runs a program found in PATH with its arguments, no shell between, and waits for it. Its
/// standard input is empty. `folder` is its working directory, empty for the test's own.
inline CommandResult RunCommand(const std::vector<std::string>& arguments,
                                const std::filesystem::path& folder = {}) {
  const internal::TemporaryStream output(std::tmpfile());
  const internal::TemporaryStream errors(std::tmpfile());
  if (!output || !errors || arguments.empty()) throw std::runtime_error("cannot run a command");
  std::vector<char*> words;
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  CommandResult result;
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(fileno(output.get()), STDOUT_FILENO);
    dup2(fileno(errors.get()), STDERR_FILENO);
    if (folder.empty() || chdir(folder.c_str()) == 0) execvp(words[0], words.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.output = internal::ContentOf(output.get());
  result.errors = internal::ContentOf(errors.get());
  return result;
}

/// Runs a program that has to succeed and gives its standard output; a failure fails the test.
inline std::string RunOrFail(const std::vector<std::string>& arguments) {
  CommandResult result = RunCommand(arguments);
  if (result.status != 0) {
    std::string line;
    for (const std::string& argument : arguments)
      line += argument + ' ';
    ADD_FAILURE() << line << "gave status " << result.status << '\n' << result.errors;
  }
  return result.output;
}

/// Makes media with ffmpeg: the arguments behind the usual quiet, overwriting, reproducible ones.
inline void RunFfmpeg(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {"ffmpeg", "-v", "error", "-nostdin", "-y"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  RunOrFail(all);
}

}  // namespace quillmere::test
