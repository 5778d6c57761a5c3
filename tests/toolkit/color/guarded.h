/// Buffers for tests with guard bytes around them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "base_types.h"

namespace quillmere::test {

/// `size` values of a type that start as random bytes; its end checks that nothing was written
/// around them.
template <class T>
class Guarded {
 public:
  explicit Guarded(std::size_t size, UInt32 seed = 1)
      : size_(size), bytes_(size * sizeof(T) + 2 * kGuard, kMark) {
    std::mt19937 random(seed);
    std::generate(Bytes(), Bytes() + size * sizeof(T),
                  [&random] { return static_cast<UInt8>(random()); });
  }
  Guarded(const Guarded&) = default;
  ~Guarded() {
    for (std::size_t i = 0; i < kGuard; ++i) {
      EXPECT_EQ(bytes_[i], kMark) << "in front";
      EXPECT_EQ(bytes_[bytes_.size() - 1 - i], kMark) << "behind";
    }
  }
  T* data() { return reinterpret_cast<T*>(Bytes()); }
  const T* data() const { return reinterpret_cast<const T*>(bytes_.data() + kGuard); }
  std::size_t size() const { return size_; }
  T& operator[](std::size_t i) { return data()[i]; }
  const T& operator[](std::size_t i) const { return data()[i]; }
  friend bool operator==(const Guarded& a, const Guarded& b) { return a.bytes_ == b.bytes_; }

 private:
  static constexpr std::size_t kGuard = 64;
  static constexpr UInt8 kMark = 0xA7;
  UInt8* Bytes() { return bytes_.data() + kGuard; }

  std::size_t size_;
  std::vector<UInt8> bytes_;
};

}  // namespace quillmere::test
