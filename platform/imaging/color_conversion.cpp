#include "color_conversion.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>
#include <vector>

namespace quillmere::imaging {
namespace {

constexpr std::size_t kKeptConversions = 4;

struct CloseProfile {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
struct DeleteContext {
  void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
struct FreeCurve {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext>;
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

/// Nothing is printed and nothing ends the program over a bad profile: lcms2's default handler says
/// nothing. The cache of one pixel would make a transform unfit for two threads.
constexpr cmsUInt32Number kFlags = cmsFLAGS_NOCACHE;

Transform MakeTransform(cmsContext context, cmsHPROFILE from, cmsUInt32Number from_format,
                        cmsHPROFILE to, cmsUInt32Number to_format) {
  return Transform(
      cmsCreateTransformTHR(context, from, from_format, to, to_format, INTENT_PERCEPTUAL, kFlags));
}

/// A grey of 8 or 16 bits has few values, so all of them are converted beforehand.
class GreyConversion : public ColorConversion {
 public:
  static std::shared_ptr<const ColorConversion> Make(cmsContext context, cmsHPROFILE from,
                                                     cmsHPROFILE srgb) {
    const Transform transform = MakeTransform(context, from, TYPE_GRAY_16, srgb, TYPE_RGB_8);
    if (!transform) return nullptr;
    auto made = std::make_shared<GreyConversion>();
    std::vector<UInt16> codes(65536);
    for (std::size_t i = 0; i < codes.size(); ++i)
      codes[i] = static_cast<UInt16>(i);
    std::vector<UInt8> rgb(codes.size() * 3);
    cmsDoTransform(transform.get(), codes.data(), rgb.data(), 65536);
    made->table16_.resize(codes.size());
    // The colours are neutral up to rounding; green is taken for all three.
    for (std::size_t i = 0; i < codes.size(); ++i)
      made->table16_[i] = rgb[i * 3 + 1];
    bool same = true;
    for (std::size_t i = 0; i < 256; ++i) {
      made->table8_[i] = made->table16_[i * 257];
      same = same && std::abs(made->table8_[i] - static_cast<int>(i)) <= 1;
    }
    return same ? nullptr : made;
  }

  void ConvertArgb(UInt8* pixels, std::size_t count) const override {
    for (std::size_t i = 0; i < count; ++i) {
      UInt8* pixel = pixels + i * 4;
      pixel[1] = pixel[2] = pixel[3] = table8_[pixel[2]];
    }
  }
  void ConvertCmyk(const UInt8*, UInt8*, std::size_t) const override {}
  void ConvertRgba16(const UInt16* pixels, UInt8* argb, std::size_t count) const override {
    for (std::size_t i = 0; i < count; ++i) {
      argb[i * 4] = static_cast<UInt8>((pixels[i * 4 + 3] * 255U + 32767U) / 65535U);
      argb[i * 4 + 1] = argb[i * 4 + 2] = argb[i * 4 + 3] = table16_[pixels[i * 4 + 1]];
    }
  }

 private:
  std::array<UInt8, 256> table8_;
  std::vector<UInt8> table16_;
};

/// RGB and CMYK by lcms2's own 8-bit and 16-bit transforms.
class TransformConversion : public ColorConversion {
 public:
  static std::shared_ptr<const ColorConversion> Make(Context context, cmsHPROFILE from,
                                                     cmsHPROFILE srgb, ColorModel model) {
    auto made = std::make_shared<TransformConversion>();
    if (model == ColorModel::kCmyk) {
      made->transform8_ = MakeTransform(context.get(), from, TYPE_CMYK_8, srgb, TYPE_ARGB_8);
      if (!made->transform8_) return nullptr;
    } else {
      made->transform8_ = MakeTransform(context.get(), from, TYPE_ARGB_8, srgb, TYPE_ARGB_8);
      made->transform16_ = MakeTransform(context.get(), from, TYPE_RGBA_16, srgb, TYPE_ARGB_8);
      if (!made->transform8_ || !made->transform16_ || made->MovesNothing()) return nullptr;
    }
    made->context_ = std::move(context);
    return made;
  }

  void ConvertArgb(UInt8* pixels, std::size_t count) const override {
    Do(transform8_, pixels, 4, pixels, count);
  }
  void ConvertCmyk(const UInt8* inks, UInt8* argb, std::size_t count) const override {
    Do(transform8_, inks, 4, argb, count);
    for (std::size_t i = 0; i < count; ++i)
      argb[i * 4] = 255;
  }
  void ConvertRgba16(const UInt16* pixels, UInt8* argb, std::size_t count) const override {
    Do(transform16_, pixels, 4, argb, count);
    for (std::size_t i = 0; i < count; ++i) {
      argb[i * 4] = static_cast<UInt8>((pixels[i * 4 + 3] * 255U + 32767U) / 65535U);
    }
  }

 private:
  template <class Number>
  static void Do(const Transform& transform, const Number* from, std::size_t numbers, UInt8* to,
                 std::size_t count) {
    constexpr std::size_t kMost = 1U << 24;  // lcms2 counts in 32 bits
    while (count > 0) {
      const std::size_t part = std::min(count, kMost);
      cmsDoTransform(transform.get(), from, to, static_cast<cmsUInt32Number>(part));
      from += part * numbers;
      to += part * 4;
      count -= part;
    }
  }

  /// True if colours spread over the cube and along its greys stay where they are, up to one code.
  bool MovesNothing() const {
    std::vector<UInt8> colors;
    for (int i = 0; i < 256; ++i) {
      const auto grey = static_cast<UInt8>(i);
      colors.insert(colors.end(), {255, grey, grey, grey});
    }
    constexpr int kSteps = 17;
    constexpr auto kCode = [](int step) { return static_cast<UInt8>(step * 255 / (kSteps - 1)); };
    for (int i = 0; i < kSteps * kSteps * kSteps; ++i) {
      colors.insert(colors.end(), {255, kCode(i % kSteps), kCode(i / kSteps % kSteps),
                                   kCode(i / (kSteps * kSteps))});
    }
    std::vector<UInt8> moved = colors;
    ConvertArgb(moved.data(), moved.size() / 4);
    for (std::size_t i = 0; i < colors.size(); ++i) {
      if (std::abs(moved[i] - colors[i]) > 1) return false;
    }
    return true;
  }

  Context context_;  // outlives the transforms made in it
  Transform transform8_;
  Transform transform16_;
};

std::shared_ptr<const ColorConversion> MakeConversion(Context context, const Profile& from,
                                                      ColorModel model) {
  const Profile srgb(cmsCreate_sRGBProfileTHR(context.get()));
  if (!from || !srgb) return nullptr;
  if (model == ColorModel::kGrey) {
    return GreyConversion::Make(context.get(), from.get(), srgb.get());
  }
  return TransformConversion::Make(std::move(context), from.get(), srgb.get(), model);
}

/// True for a profile whose device side has the channels of the model.
bool IsFor(const Profile& profile, ColorModel model) {
  switch (cmsGetColorSpace(profile.get())) {
    case cmsSigGrayData:
      return model == ColorModel::kGrey;
    case cmsSigRgbData:
      return model == ColorModel::kRgb;
    case cmsSigCmykData:
      return model == ColorModel::kCmyk;
    default:
      return false;
  }
}

std::shared_ptr<const ColorConversion> MakeProfileConversion(std::span<const UInt8> bytes,
                                                             ColorModel model) {
  Context context(cmsCreateContext(nullptr, nullptr));
  if (!context) return nullptr;
  const Profile profile(cmsOpenProfileFromMemTHR(context.get(), bytes.data(),
                                                 static_cast<cmsUInt32Number>(bytes.size())));
  if (!profile || !IsFor(profile, model)) return nullptr;
  return MakeConversion(std::move(context), profile, model);
}

struct KeptConversion {
  std::vector<UInt8> profile;
  ColorModel model;
  std::shared_ptr<const ColorConversion> conversion;  // null: nothing to convert
};

}  // namespace

std::shared_ptr<const ColorConversion> ConversionOfProfile(std::span<const UInt8> profile,
                                                           ColorModel model) {
  constexpr std::size_t kLargestProfile = 64U << 20;
  if (profile.size() < 128 || profile.size() > kLargestProfile) return nullptr;
  static std::mutex mutex;
  static std::vector<KeptConversion> kept;  // the latest used at the end
  const std::lock_guard lock(mutex);
  const auto found = std::find_if(kept.begin(), kept.end(), [&](const KeptConversion& one) {
    return one.model == model && std::ranges::equal(one.profile, profile);
  });
  if (found != kept.end()) {
    std::rotate(found, found + 1, kept.end());
    return kept.back().conversion;
  }
  std::shared_ptr<const ColorConversion> made = MakeProfileConversion(profile, model);
  if (kept.size() == kKeptConversions) kept.erase(kept.begin());
  kept.push_back({{profile.begin(), profile.end()}, model, made});
  return made;
}

std::shared_ptr<const ColorConversion> ConversionOfGamma(const GammaAndPrimaries& space,
                                                         ColorModel model) {
  Context context(cmsCreateContext(nullptr, nullptr));
  const Curve curve(context ? cmsBuildGamma(context.get(), space.exponent) : nullptr);
  if (!curve) return nullptr;
  const cmsCIExyY white = {space.white[0], space.white[1], 1};
  Profile profile;
  if (model == ColorModel::kGrey) {
    profile.reset(cmsCreateGrayProfileTHR(context.get(), cmsD50_xyY(), curve.get()));
  } else {
    const cmsCIExyYTRIPLE primaries = {{space.red[0], space.red[1], 1},
                                       {space.green[0], space.green[1], 1},
                                       {space.blue[0], space.blue[1], 1}};
    cmsToneCurve* const curves[3] = {curve.get(), curve.get(), curve.get()};
    profile.reset(cmsCreateRGBProfileTHR(context.get(), &white, &primaries, curves));
  }
  return MakeConversion(std::move(context), profile, model);
}

}  // namespace quillmere::imaging
