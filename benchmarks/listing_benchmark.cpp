// Walks over 100,000 files beside find: the search of the catalogue for a name that none has and
// the recursive walk, both through 1,000 folders, and the count of names with a suffix in one.
//
// Usage: listing_benchmark [FOLDER]   Works in a new folder there, /tmp if none is given. Prints
// both times and the ratio of pairs of runs that follow each other (median). The start of find,
// which our walks do not have, is part of its time.

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "GL_File.h"
#include "MF_FileObjects.h"
#include "catalogue_search.h"
#include "cf_strings.h"
#include "timing.h"

namespace {

using namespace quillmere::benchmarks;

constexpr int kFolders = 1000;
constexpr int kFilesInEach = 100;
constexpr int kPairs = 15;
constexpr char16_t kName[] = u"no such file.mov";

void MakeFile(const std::filesystem::path& file) {
  const int descriptor = open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
  if (descriptor < 0) Fail("making a file");
  close(descriptor);
}

void MakeTree(const std::filesystem::path& root) {
  for (int i = 0; i < kFolders; ++i) {
    const std::filesystem::path folder = root / ("folder " + std::to_string(i));
    std::filesystem::create_directories(folder);
    for (int k = 0; k < kFilesInEach; ++k)
      MakeFile(folder / ("IMG_" + std::to_string(i * 1000 + k) + ".jpg"));
  }
}

/// Every second name ends in "jpg".
void MakeFlatFolder(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  for (int i = 0; i < kFolders * kFilesInEach; ++i)
    MakeFile(folder / ("IMG_" + std::to_string(i) + (i % 2 == 0 ? ".jpg" : ".mov")));
}

FSRef ReferenceTo(const std::filesystem::path& path) {
  FSRef reference{};
  if (quillmere::files::ReferenceOf(path, &reference) != noErr) Fail("finding a folder");
  return reference;
}

void Search(const std::filesystem::path& root) {
  const FSRef folder = ReferenceTo(root);
  FSIterator iterator = nullptr;
  if (FSOpenIterator(&folder, kFSIterateSubtree, &iterator) != noErr) Fail("opening the walk");
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

Boolean CountObject(Boolean, ItemCount, const FSCatalogInfo*, const FSRef*, const HFSUniStr255*,
                    void* count) {
  ++*static_cast<int*>(count);
  return 0;
}

void Walk(const std::filesystem::path& root) {
  const FSRef folder = ReferenceTo(root);
  int count = 0;
  if (MF_FSIterateContainer(&folder, 0, kFSCatInfoNone, 0, 1, CountObject, &count) != noErr ||
      count != kFolders * (kFilesInEach + 1)) {
    Fail("the walk");
  }
}

void WalkNames(const std::filesystem::path& root) {
  const FSRef folder = ReferenceTo(root);
  FSIterator iterator = nullptr;
  if (FSOpenIterator(&folder, kFSIterateSubtree, &iterator) != noErr) Fail("opening the walk");
  const FSSearchParams all = {0, 0, 0, nullptr, nullptr, nullptr};
  ItemCount count = 0;
  std::vector<HFSUniStr255> names(100);
  for (OSErr status = noErr; status == noErr;) {
    ItemCount actual = 0;
    status = FSCatalogSearch(iterator, &all, names.size(), &actual, nullptr, kFSCatInfoNone,
                             nullptr, nullptr, nullptr, names.data());
    count += actual;
  }
  FSCloseIterator(iterator);
  if (count != kFolders * (kFilesInEach + 1)) Fail("the walk over names");
}

void Count(const std::filesystem::path& root) {
  const FSRef folder = ReferenceTo(root);
  SInt32 count = 0;
  if (GL_CountFilesWithExtension(&folder, CFSTR("jpg"), &count) != noErr ||
      count != kFolders * kFilesInEach / 2) {
    Fail("the count");
  }
}

void Compare(const char* what, void (*ours)(const std::filesystem::path&),
             const std::filesystem::path& root, const std::string& peer) {
  std::vector<double> our_times;
  std::vector<double> peer_times;
  std::vector<double> ratios;
  for (int i = 0; i < kPairs; ++i) {
    our_times.push_back(Milliseconds([&] { ours(root); }));
    peer_times.push_back(Milliseconds([&] {
      if (std::system(peer.c_str()) != 0) Fail("find");
    }));
    ratios.push_back(our_times.back() / peer_times.back());
  }
  std::printf("%-24s %7.1f ms   find %7.1f ms   ratio %.2f\n", what, Median(our_times),
              Median(peer_times), Median(ratios));
}

}  // namespace

int main(int count, char** arguments) {
  std::string name = std::string(count > 1 ? arguments[1] : "/tmp") + "/listing-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) Fail("making a folder");
  const std::filesystem::path root = name;
  MakeTree(root / "tree");
  MakeFlatFolder(root / "flat");
  const std::string tree = "find '" + (root / "tree").native() + "' ";
  const std::string flat = "find '" + (root / "flat").native() + "' ";
  Compare("search by name", Search, root / "tree",
          tree + "-xdev -iname 'no such file.mov' >/dev/null");
  // The walk tells each object's number and lock, which find has to be asked for.
  Compare("recursive walk", Walk, root / "tree", tree + "-printf '%i %m %p\\n' >/dev/null");
  Compare("the same, names alone", WalkNames, root / "tree", tree + ">/dev/null");
  Compare("count with a suffix", Count, root / "flat",
          flat + "-maxdepth 1 -name '*jpg' | wc -l >/dev/null");
  std::filesystem::remove_all(root);
}
