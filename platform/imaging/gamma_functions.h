/// Functions that change the gamma of planes of floats.
#pragma once

#include <cstddef>

#include "base_types.h"

struct ImageGammaFunction;

/// A function that raises the magnitude of samples to a power and keeps their sign. The caller
/// gives it back with vImageDestroyGammaFunction; null for an exponent that is not above 0.
ImageGammaFunction* vImageCreateGammaFunction(float exponent);
/// Null is allowed.
void vImageDestroyGammaFunction(ImageGammaFunction* function);
/// Applies a function to `count` samples; both places may be the same.
void vImageGamma_PlanarF(const float* source, float* destination, std::size_t count,
                         const ImageGammaFunction* function);
