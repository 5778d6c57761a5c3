#include "text_encodings.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "text_codecs.h"

struct TextConverter {
  TextConverter(TextEncoding from, TextEncoding to) : input(from), output(to) {}
  quillmere::text::Codec input;
  quillmere::text::Codec output;
};

namespace {

/// A region: the locale it stands for, its script and language, and the encoding of its text.
struct RegionRow {
  RegionCode region;
  const char* locale;
  ScriptCode script;
  LangCode language;
  TextEncoding encoding;
};

// Region and language codes by the platform's numbering. A locale stands at its first row.
constexpr RegionRow kRegions[] = {
    {0, "en_US", 0, 0, 0},     {1, "fr_FR", 0, 1, 0},     {2, "en_GB", 0, 0, 0},
    {3, "de_DE", 0, 2, 0},     {4, "it_IT", 0, 3, 0},     {5, "nl_NL", 0, 4, 0},
    {6, "nl_BE", 0, 34, 0},    {7, "sv_SE", 0, 5, 0},     {8, "es_ES", 0, 6, 0},
    {9, "da_DK", 0, 7, 0},     {10, "pt_PT", 0, 8, 0},    {11, "fr_CA", 0, 1, 0},
    {12, "nb_NO", 0, 9, 0},    {13, "he_IL", 5, 10, 5},   {14, "ja_JP", 1, 11, 1},
    {15, "en_AU", 0, 0, 0},    {16, "ar", 4, 12, 4},      {17, "fi_FI", 0, 13, 0},
    {18, "fr_CH", 0, 1, 0},    {19, "de_CH", 0, 2, 0},    {20, "el_GR", 6, 14, 6},
    {21, "is_IS", 0, 15, 37},  {22, "mt_MT", 0, 16, 0},   {23, "el_CY", 6, 14, 6},
    {24, "tr_TR", 0, 17, 35},  {25, "hr", 0, 18, 36},     {26, "nl_NL", 0, 4, 0},
    {27, "nl_BE", 0, 34, 0},   {28, "fr_CA", 0, 1, 0},    {29, "fr_CA", 0, 1, 0},
    {30, "pt_PT", 0, 8, 0},    {31, "nb_NO", 0, 9, 0},    {32, "da_DK", 0, 7, 0},
    {33, "hi_IN", 9, 21, 9},   {34, "ur_PK", 4, 20, 140}, {35, "tr_TR", 0, 17, 35},
    {36, "it_CH", 0, 3, 0},    {37, "en", 0, 0, 0},       {39, "ro_RO", 0, 37, 38},
    {40, "el_GR", 6, 14, 6},   {41, "lt_LT", 29, 24, 29}, {42, "pl_PL", 29, 25, 29},
    {43, "hu_HU", 29, 26, 29}, {44, "et_EE", 29, 27, 29}, {45, "lv_LV", 29, 28, 29},
    {46, "se", 0, 29, 0},      {47, "fo_FO", 0, 30, 37},  {48, "fa_IR", 4, 31, 140},
    {49, "ru_RU", 7, 32, 7},   {50, "ga_IE", 0, 35, 0},   {51, "ko_KR", 3, 23, 3},
    {52, "zh_CN", 25, 33, 25}, {53, "zh_TW", 2, 19, 2},   {54, "th_TH", 21, 22, 21},
    {56, "cs_CZ", 29, 38, 29}, {57, "sk_SK", 29, 39, 29}, {59, "hu_HU", 29, 26, 29},
    {61, "be_BY", 7, 46, 7},   {62, "uk_UA", 7, 45, 152}, {64, "el_GR", 6, 14, 6},
    {65, "sr_RS", 7, 42, 7},   {66, "sl_SI", 0, 40, 36},  {67, "mk_MK", 7, 43, 7},
    {68, "hr_HR", 0, 18, 36},  {70, "de_DE", 0, 2, 0},    {71, "pt_BR", 0, 8, 0},
    {72, "bg_BG", 7, 44, 7},   {73, "ca_ES", 0, 130, 0},  {74, "mul", 0, 0, 0},
    {82, "en_CA", 0, 0, 0},    {86, "es_419", 0, 6, 0},   {91, "fr", 0, 1, 0},
    {92, "de_AT", 0, 2, 0},    {94, "gu_IN", 11, 69, 11}, {95, "pa_IN", 10, 70, 10},
    {96, "ur_IN", 4, 20, 140}, {98, "fr_BE", 0, 1, 0},    {100, "zh_SG", 25, 33, 25},
    {101, "nn_NO", 0, 151, 0}, {102, "af_ZA", 0, 141, 0}, {103, "eo", 0, 94, 0},
    {104, "mr_IN", 9, 66, 9},  {106, "ne_NP", 9, 64, 9},  {108, "en_IE", 0, 0, 0}};

/// Scripts that have an encoding, which has the script's own number.
constexpr ScriptCode kScripts[] = {0, 1, 2, 3, 4, 5, 6, 7, 9, 10, 11, 21, 25, 29};

const RegionRow* FindRegion(RegionCode region) {
  const auto* const row = std::ranges::find(kRegions, region, &RegionRow::region);
  return row == std::end(kRegions) ? nullptr : row;
}

/// The first row of a language, optionally only in one script.
const RegionRow* FindLanguage(LangCode language, ScriptCode script) {
  const auto* const row = std::ranges::find_if(kRegions, [&](const RegionRow& candidate) {
    return candidate.language == language &&
           (script == kTextScriptDontCare || candidate.script == script);
  });
  return row == std::end(kRegions) ? nullptr : row;
}

/// The row of the user's locale: language and country, else the language, else the first.
const RegionRow& SystemRegion() {
  char language[ULOC_LANG_CAPACITY] = "";
  char country[ULOC_COUNTRY_CAPACITY] = "";
  UErrorCode error = U_ZERO_ERROR;
  uloc_getLanguage(nullptr, language, sizeof language, &error);
  uloc_getCountry(nullptr, country, sizeof country, &error);
  if (U_FAILURE(error)) return kRegions[0];
  const std::string_view spoken = std::strcmp(language, "no") == 0 ? "nb" : language;
  const std::string locale = std::string(spoken) + "_" + country;
  const auto* const exact = std::ranges::find_if(
      kRegions, [&](const RegionRow& row) { return std::string_view(row.locale) == locale; });
  if (exact != std::end(kRegions)) return *exact;
  const auto* const related = std::ranges::find_if(kRegions, [&](const RegionRow& row) {
    const std::string_view known(row.locale);
    return known.substr(0, known.find('_')) == spoken;
  });
  return related == std::end(kRegions) ? kRegions[0] : *related;
}

}  // namespace

OSStatus UpgradeScriptInfoToTextEncoding(ScriptCode script, LangCode language, RegionCode region,
                                         const UInt8*, TextEncoding* encoding) {
  if (encoding == nullptr) return paramErr;
  const RegionRow* of_region = nullptr;
  if (region != kTextRegionDontCare) {
    of_region = FindRegion(region);
    if (of_region == nullptr) return paramErr;
    if (script == kTextScriptDontCare) script = of_region->script;
    if (script != of_region->script) return paramErr;
  }
  const RegionRow* of_language =
      language == kTextLanguageDontCare ? nullptr : FindLanguage(language, script);
  if (script == kTextScriptDontCare) {
    if (of_language == nullptr) return paramErr;
    script = of_language->script;
  }
  if (std::ranges::find(kScripts, script) == std::end(kScripts)) return paramErr;
  *encoding = static_cast<TextEncoding>(script);
  if (of_language != nullptr) *encoding = of_language->encoding;
  if (of_region != nullptr && of_region->encoding != static_cast<TextEncoding>(script)) {
    *encoding = of_region->encoding;
  }
  return noErr;
}

SInt32 GetScriptManagerVariable(SInt16 selector) {
  if (selector == smSysScript) return SystemRegion().script;
  if (selector == smRegionCode) return SystemRegion().region;
  return 0;
}

Boolean FillParseTable(UInt8* table, ScriptCode script) {
  if (table == nullptr) return 0;
  std::fill_n(table, 256, UInt8{0});
  if (std::ranges::find(kScripts, script) == std::end(kScripts)) return 0;
  quillmere::text::Codec codec(static_cast<TextEncoding>(script));
  for (unsigned byte = 0; byte < 256; ++byte) {
    table[byte] = codec.IsLeadByte(static_cast<UInt8>(byte)) ? 1 : 0;
  }
  return 1;
}

OSStatus TECCreateConverter(TECObjectRef* converter, TextEncoding input, TextEncoding output) {
  if (converter == nullptr) return paramErr;
  *converter = nullptr;
  auto made = std::make_unique<TextConverter>(input, output);
  if (!made->input.IsKnown() || !made->output.IsKnown()) return kTECNoConversionPathErr;
  *converter = made.release();
  return noErr;
}

OSStatus TECConvertText(TECObjectRef converter, const UInt8* input, ByteCount input_length,
                        ByteCount* used, UInt8* output, ByteCount output_capacity,
                        ByteCount* written) {
  if (converter == nullptr || used == nullptr || written == nullptr) return paramErr;
  *used = 0;
  *written = 0;
  if ((input == nullptr && input_length > 0) || (output == nullptr && output_capacity > 0)) {
    return paramErr;
  }
  while (*used < input_length) {
    constexpr ByteCount kLongestCharacter = 8;
    const std::span<const UInt8> rest(input + *used, input_length - *used);
    char32_t character = 0;
    const std::size_t taken = converter->input.DecodeOne(rest, &character);
    if (taken == 0) {
      return rest.size() < kLongestCharacter && converter->input.IsCutOff(rest)
                 ? kTECPartialCharErr
                 : kTextMalformedInputErr;
    }
    const quillmere::text::Encoded encoded = converter->output.Encode(character);
    if (encoded.count == 0) return kTECUnmappableElementErr;
    if (encoded.count > output_capacity - *written) return kTECOutputBufferFullStatus;
    std::copy_n(encoded.bytes, encoded.count, output + *written);
    *written += encoded.count;
    *used += taken;
  }
  return noErr;
}

OSStatus TECDisposeConverter(TECObjectRef converter) {
  const std::unique_ptr<TextConverter> last(converter);
  return converter == nullptr ? paramErr : noErr;
}

namespace quillmere::text {

LangCode SystemLanguage() {
  return SystemRegion().language;
}

}  // namespace quillmere::text
