/// Colours of a picture's own space into sRGB.
#pragma once

#include <array>
#include <memory>
#include <span>

#include "base_types.h"

namespace quillmere::imaging {

/// Kinds of pixels that profiles describe.
enum class ColorModel { kGrey, kRgb, kCmyk };

/// Gamma and primaries as a PNG tells them, CIE 1931 x and y.
struct GammaAndPrimaries {
  double exponent;  ///< of decoding: linear light = code ^ exponent
  std::array<double, 2> white;
  std::array<double, 2> red;
  std::array<double, 2> green;
  std::array<double, 2> blue;
};

/// The primaries and white of sRGB (IEC 61966-2-1), its curve taken as the power 2.2.
inline constexpr GammaAndPrimaries kSrgbPrimaries = {
    2.2, {0.3127, 0.3290}, {0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};

/// Turns rows of pixels into sRGB by the perceptual intent. Objects don't change and may be shared
/// by threads.
class ColorConversion {
 public:
  virtual ~ColorConversion() = default;
  /// Grey and RGB: pixels of 4 bytes (alpha, red, green, blue), in place; grey ones have their
  /// three colours alike. Alpha stays.
  virtual void ConvertArgb(UInt8* pixels, std::size_t count) const = 0;
  /// CMYK: 4 bytes a pixel, 0 for no ink and 255 for full, into opaque ARGB. The two may be the
  /// same memory.
  virtual void ConvertCmyk(const UInt8* inks, UInt8* argb, std::size_t count) const = 0;
  /// Grey and RGB: 4 native 16-bit numbers a pixel (red, green, blue, alpha) into ARGB of 8 bits.
  virtual void ConvertRgba16(const UInt16* pixels, UInt8* argb, std::size_t count) const = 0;
};

/// A conversion by an ICC profile. Null when there is nothing to convert: the profile is damaged,
/// is not for this colour model, or moves no colour by more than one code, as sRGB's own profiles
/// do. The last few are kept, for the pictures of a folder mostly have the same profile.
std::shared_ptr<const ColorConversion> ConversionOfProfile(std::span<const UInt8> profile,
                                                           ColorModel model);

/// A conversion by gamma and primaries; null when there is nothing to convert, as above.
std::shared_ptr<const ColorConversion> ConversionOfGamma(const GammaAndPrimaries& space,
                                                         ColorModel model);

}  // namespace quillmere::imaging
