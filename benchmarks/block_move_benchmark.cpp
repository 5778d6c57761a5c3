// A move of bytes within a file beside a plain copy of as many bytes to another file, read and
// write through a buffer of the same size.
//
// Usage: block_move_benchmark [FOLDER]   Works in a new folder there, /tmp if none is given. Prints
// the throughput of both, and the ratio of pairs of runs that follow each other (median), for moves
// up and down by distances that are and are not multiples of a block.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "GL_BlockMove.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;

constexpr SInt64 kSize = SInt64{256} << 20;
constexpr SInt64 kRoom = SInt64{1} << 20;
constexpr UInt32 kBuffer = 1 << 20;
constexpr int kPairs = 7;

/// Copies the bytes from the start of one file over those of another.
void Copy(int from, int to, std::vector<char>* buffer) {
  for (off_t place = 0; place < kSize;) {
    const auto left = static_cast<std::size_t>(kSize - place);
    const ssize_t count = pread(from, buffer->data(), std::min(left, buffer->size()), place);
    if (count <= 0 || pwrite(to, buffer->data(), static_cast<std::size_t>(count), place) != count) {
      Fail("the copy");
    }
    place += count;
  }
}

int NewFile(const std::filesystem::path& path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const std::vector<char> bytes(kBuffer, 'x');
  for (SInt64 written = 0; written < kSize + kRoom; written += kBuffer) {
    if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
      Fail("making a file");
    }
  }
  return file;
}

void Measure(const std::filesystem::path& folder, SInt64 source, SInt64 destination) {
  const int from = NewFile(folder / "from");
  const int to = NewFile(folder / "to");
  std::vector<char> buffer(kBuffer);
  FSRef file{};
  FSIORefNum fork = 0;
  if (quillmere::files::ReferenceOf(folder / "from", &file) != noErr ||
      FSOpenFork(&file, 0, nullptr, fsRdWrPerm, &fork) != noErr) {
    Fail("opening the fork");
  }
  std::vector<double> ours;
  std::vector<double> plain;
  std::vector<double> ratios;
  for (int i = 0; i < kPairs; ++i) {
    plain.push_back(Seconds([&] { Copy(from, to, &buffer); }));
    ours.push_back(Seconds([&] {
      if (GL_BlockMoveDataWithinFile(fork, source, destination, kSize, kBuffer, 0, nullptr,
                                     nullptr) != noErr) {
        Fail("the move");
      }
    }));
    ratios.push_back(plain.back() / ours.back());
  }
  FSCloseFork(fork);
  close(from);
  close(to);
  const double megabytes = static_cast<double>(kSize) / 1e6;
  std::printf("%7lld to %7lld   %6.0f MB/s   plain copy %6.0f MB/s   throughput ratio %.2f\n",
              static_cast<long long>(source), static_cast<long long>(destination),
              megabytes / Median(ours), megabytes / Median(plain), Median(ratios));
}

}  // namespace

int main(int count, char** arguments) {
  std::string name = std::string(count > 1 ? arguments[1] : "/tmp") + "/block-move-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) Fail("making a folder");
  const std::filesystem::path folder = name;
  Measure(folder, 0, 65536);
  Measure(folder, 65536, 0);
  Measure(folder, 300, 70001);
  Measure(folder, 70001, 300);
  std::filesystem::remove_all(folder);
}
