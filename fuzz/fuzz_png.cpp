// The PNG reader: headers from a file, and decoding from memory.
#include "picture_fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return quillmere::fuzzing::ReadPicture("\x89PNG\r\n\x1A\n", {data, size});
}
