/// An open file or folder of the system, closed at the end of its scope.
#pragma once

#include <unistd.h>

#include <utility>

namespace quillmere::files {

class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  /// -1 for none.
  int get() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }
  /// Hands the number over to the caller, who closes it.
  int release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

}  // namespace quillmere::files
