#include "gamma_functions.h"

#include <cmath>
#include <new>

struct ImageGammaFunction {
  float exponent;
};

ImageGammaFunction* vImageCreateGammaFunction(float exponent) {
  return exponent > 0 ? new (std::nothrow) ImageGammaFunction{exponent} : nullptr;
}

void vImageDestroyGammaFunction(ImageGammaFunction* function) {
  delete function;
}

void vImageGamma_PlanarF(const float* source, float* destination, std::size_t count,
                         const ImageGammaFunction* function) {
  for (std::size_t i = 0; i < count; ++i)
    destination[i] = std::copysign(std::pow(std::abs(source[i]), function->exponent), source[i]);
}
