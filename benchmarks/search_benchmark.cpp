// The search of the catalogue beside find: a name among 100,000 files in 1,000 folders that none of
// them has, so that all is walked.
//
// Usage: search_benchmark [FOLDER]   Works in a new folder there, /tmp if none is given. Prints
// both times and the ratio of pairs of runs that follow each other (median). The start of find,
// which our search does not have, is measured on an empty folder and told as well.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "catalogue_search.h"

namespace {

constexpr int kFolders = 1000;
constexpr int kFilesInEach = 100;
constexpr int kPairs = 15;
constexpr char16_t kName[] = u"no such file.mov";

[[noreturn]] void Fail(const char* what) {
  std::fprintf(stderr, "search_benchmark: %s failed\n", what);
  std::exit(1);
}

template <class Work>
double Milliseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

void MakeTree(const std::filesystem::path& root) {
  for (int i = 0; i < kFolders; ++i) {
    const std::filesystem::path folder = root / ("folder " + std::to_string(i));
    std::filesystem::create_directory(folder);
    for (int k = 0; k < kFilesInEach; ++k) {
      const std::filesystem::path file = folder / ("IMG_" + std::to_string(i * 1000 + k) + ".jpg");
      const int descriptor = open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
      if (descriptor < 0) Fail("making a file");
      close(descriptor);
    }
  }
}

void Search(const std::filesystem::path& root) {
  FSRef folder{};
  FSIterator iterator = nullptr;
  if (quillmere::files::ReferenceOf(root, &folder) != noErr ||
      FSOpenIterator(&folder, kFSIterateSubtree, &iterator) != noErr) {
    Fail("opening the walk");
  }
  const FSSearchParams terms = {0,
                                fsSBFullName,
                                static_cast<UInt32>(std::size(kName) - 1),
                                reinterpret_cast<const UniChar*>(kName),
                                nullptr,
                                nullptr};
  ItemCount count = 0;
  FSRef found{};
  if (FSCatalogSearch(iterator, &terms, 1, &count, nullptr, kFSCatInfoNone, nullptr, &found,
                      nullptr, nullptr) != errFSNoMoreItems) {
    Fail("the search");
  }
  FSCloseIterator(iterator);
}

void Find(const std::filesystem::path& root) {
  const std::string command =
      "find '" + root.native() + "' -xdev -iname 'no such file.mov' > /dev/null";
  if (std::system(command.c_str()) != 0) Fail("find");
}

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

}  // namespace

int main(int count, char** arguments) {
  std::string name = std::string(count > 1 ? arguments[1] : "/tmp") + "/search-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) Fail("making a folder");
  const std::filesystem::path root = name;
  std::filesystem::create_directory(root / "empty");
  std::filesystem::create_directory(root / "full");
  MakeTree(root / "full");
  std::vector<double> ours;
  std::vector<double> peers;
  std::vector<double> starts;
  std::vector<double> ratios;
  for (int i = 0; i < kPairs; ++i) {
    ours.push_back(Milliseconds([&] { Search(root / "full"); }));
    peers.push_back(Milliseconds([&] { Find(root / "full"); }));
    starts.push_back(Milliseconds([&] { Find(root / "empty"); }));
    ratios.push_back(ours.back() / peers.back());
  }
  std::printf("search of 100,000 files %7.1f ms   find %7.1f ms (its start %.1f ms)   ratio %.2f\n",
              Median(ours), Median(peers), Median(starts), Median(ratios));
  std::filesystem::remove_all(root);
}
