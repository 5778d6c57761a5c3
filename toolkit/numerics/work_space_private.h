/// Vectors of NR_Util.h that release themselves.
#pragma once

#include <type_traits>

#include "NR_Util.h"

namespace quillmere::numerics {

/// A vector with the indices low to high. Without memory the process ends, as the makers of such
/// vectors tell.
template <class T = float>
class WorkVector {
 public:
  WorkVector(SInt32 low, SInt32 high) : low_(low), high_(high) {
    if constexpr (std::is_same_v<T, float>)
      vector_ = NR_vector(low, high);
    else if constexpr (std::is_same_v<T, double>)
      vector_ = NR_dvector(low, high);
    else
      vector_ = NR_ivector(low, high);
  }
  ~WorkVector() {
    if constexpr (std::is_same_v<T, float>)
      NR_free_vector(vector_, low_, high_);
    else if constexpr (std::is_same_v<T, double>)
      NR_free_dvector(vector_, low_, high_);
    else
      NR_free_ivector(vector_, low_, high_);
  }
  WorkVector(const WorkVector&) = delete;
  WorkVector& operator=(const WorkVector&) = delete;

  T& operator[](SInt32 i) const { return vector_[i]; }
  T* get() const { return vector_; }

 private:
  SInt32 low_;
  SInt32 high_;
  T* vector_;
};

WorkVector(SInt32, SInt32)->WorkVector<float>;

}  // namespace quillmere::numerics
