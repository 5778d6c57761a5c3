/// The names of the objects in a folder, in order.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "base_types.h"

namespace quillmere::files {

/// Holds the names of a folder as it was when it was read, by code points.
class FolderNames {
 public:
  enum Kind { kObjects, kAll };  ///< sidecars are no objects
  /// Reads an open folder, whose descriptor stays the caller's; a status of the files family.
  OSStatus Read(int folder, Kind kind = kObjects);
  std::size_t size() const { return names_.size(); }
  /// A name; a zero byte follows it.
  std::string_view operator[](std::size_t index) const { return names_[index].name; }

 private:
  /// The first bytes of a name as a number decide most comparisons.
  struct Name {
    UInt64 start;
    std::string_view name;
    friend bool operator<(const Name& a, const Name& b) {
      return a.start != b.start ? a.start < b.start : a.name < b.name;
    }
  };
  char* Store(std::string_view name);

  std::vector<std::unique_ptr<char[]>> blocks_;
  std::size_t room_ = 0;
  char* next_ = nullptr;
  std::vector<Name> names_;
};

}  // namespace quillmere::files
