// The top-level atoms of any bytes: their list, and the repair of the first mdat.
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "QT_Movie_Atoms.h"
#include "file_references.h"
#include "forks.h"

namespace {

namespace fs = std::filesystem;

void Require(bool condition) {
  if (!condition) std::abort();
}

/// A file of its own for the process.
const fs::path& File() {
  static const fs::path file = [] {
    std::string name = (fs::temp_directory_path() / "fuzz-atoms-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    Require(descriptor >= 0);
    close(descriptor);
    std::atexit([] {
      std::error_code ignored;
      fs::remove(File(), ignored);
    });
    return fs::path(name);
  }();
  return file;
}

/// What is listed lies in the file, one atom behind the other.
void CheckList(const FSRef& reference, SInt64 size) {
  HFSUniStr255 name;
  FSIORefNum fork = 0;
  Require(FSGetDataForkName(&name) == noErr);
  Require(FSOpenFork(&reference, name.length, name.unicode, fsRdPerm, &fork) == noErr);
  UInt32 count = 0;
  SInt64* sizes = nullptr;
  OSType* types = nullptr;
  QT_GetMainAtoms(fork, &count, &sizes, &types);
  SInt64 place = 0;
  for (UInt32 i = 0; i < count; ++i) {
    Require(place < size);
    Require(sizes[i] >= 8 || i + 1 == count);
    place += sizes[i];
  }
  std::free(sizes);
  std::free(types);
  Require(FSCloseFork(fork) == noErr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* bytes, std::size_t size) {
  {
    std::ofstream file(File(), std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  }
  FSRef reference;
  Require(quillmere::files::ReferenceOf(File(), &reference) == noErr);
  CheckList(reference, static_cast<SInt64>(size));
  QT_FixMpg4Mdat(&reference);
  // The repair keeps the file's size, and has nothing more to do.
  Require(fs::file_size(File()) == size);
  Require(QT_FixMpg4Mdat(&reference) == noErr);
  return 0;
}
