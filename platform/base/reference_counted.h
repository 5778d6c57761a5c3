/// The common part of all reference-counted objects: strings, numbers, dictionaries, images, colour
/// spaces. A function with Create or Copy in its name hands out a reference that the caller gives
/// up with CFRelease; others lend theirs. Counting is atomic; the objects themselves are not
/// locked.
#pragma once

#include <atomic>
#include <utility>

#include "base_types.h"

/// A reference to an object of any kind. Opaque kinds convert to it by themselves.
using CFTypeRef = const void*;

/// Base of every reference-counted object, its first and only one, so that a pointer to the object
/// is a pointer to this. New objects start with one reference.
struct CFObject {
  CFObject() = default;
  CFObject(const CFObject&) = delete;
  CFObject& operator=(const CFObject&) = delete;
  virtual ~CFObject() = default;

 private:
  friend CFTypeRef CFRetain(CFTypeRef object);
  friend void CFRelease(CFTypeRef object);
  friend SInt64 CFGetRetainCount(CFTypeRef object);
  mutable std::atomic<SInt64> references_{1};
};

/// Adds a reference; gives the object back. Null is allowed.
CFTypeRef CFRetain(CFTypeRef object);
/// Gives up a reference; the last one destroys the object. Null is allowed and does nothing.
void CFRelease(CFTypeRef object);
/// The number of references, for tests; 0 for null.
SInt64 CFGetRetainCount(CFTypeRef object);

namespace quillmere {

/// The common part of an object; null for null.
inline const CFObject* ObjectOf(CFTypeRef object) {
  return static_cast<const CFObject*>(object);
}

/// Owns one reference of a CFObject-derived type and gives it up at the end of the scope.
template <class Ref>
class Owned {
 public:
  Owned() = default;
  explicit Owned(Ref reference) : reference_(reference) {}
  Owned(Owned&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  Owned& operator=(Owned&& other) noexcept {
    if (this != &other) reset(std::exchange(other.reference_, nullptr));
    return *this;
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;
  ~Owned() { CFRelease(reference_); }

  Ref get() const { return reference_; }
  explicit operator bool() const { return reference_ != nullptr; }
  /// Hands the reference to the caller.
  [[nodiscard]] Ref release() { return std::exchange(reference_, nullptr); }
  void reset(Ref reference = nullptr) {
    CFRelease(reference_);
    reference_ = reference;
  }
  /// For out parameters: gives up the present reference and lends the variable's address.
  Ref* out() {
    reset();
    return &reference_;
  }

 private:
  Ref reference_ = nullptr;
};

/// Runs a callable at the end of the scope.
template <class Action>
class AtExit {
 public:
  explicit AtExit(Action action) : action_(std::move(action)) {}
  AtExit(const AtExit&) = delete;
  AtExit& operator=(const AtExit&) = delete;
  ~AtExit() { action_(); }

 private:
  Action action_;
};

}  // namespace quillmere
