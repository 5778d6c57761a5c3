// Property lists from bytes that nobody vouches for. What is read must write, and read back equal.
#include <cstddef>
#include <cstdlib>

#include "property_lists.h"

using quillmere::Owned;

namespace {

Owned<CFPropertyListRef> Read(CFDataRef data) {
  return Owned<CFPropertyListRef>(
      CFPropertyListCreateFromXMLData(nullptr, data, kCFPropertyListImmutable, nullptr));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const UInt8* data, std::size_t size) {
  const Owned<CFDataRef> bytes(CFDataCreate(nullptr, data, static_cast<CFIndex>(size)));
  const Owned<CFPropertyListRef> list = Read(bytes.get());
  if (!list) return 0;
  const Owned<CFDataRef> written(CFPropertyListCreateXMLData(nullptr, list.get()));
  if (!written) std::abort();
  const Owned<CFPropertyListRef> again = Read(written.get());
  if (!again || !CFEqual(list.get(), again.get())) std::abort();
  return 0;
}
