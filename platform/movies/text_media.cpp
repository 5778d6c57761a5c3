#include "text_media.h"

#include <cstring>
#include <vector>

#include "big_endian.h"
#include "toolbox_records.h"

namespace {

using namespace quillmere;

constexpr RGBColor kWhite = {65535, 65535, 65535};
constexpr RGBColor kBlack = {0, 0, 0};

void Append16(UInt32 value, std::vector<UInt8>* bytes) {
  bytes->push_back(static_cast<UInt8>(value >> 8));
  bytes->push_back(static_cast<UInt8>(value));
}

void AppendColor(const RGBColor& color, std::vector<UInt8>* bytes) {
  for (const UInt16 component : {color.red, color.green, color.blue})
    Append16(component, bytes);
}

/// The sample description of text: its native head of 16 bytes, the rest as in the file.
std::vector<UInt8> MakeDescription(const Rect& box, const RGBColor& text,
                                   const RGBColor& background) {
  std::vector<UInt8> bytes(16);
  AppendU32(&bytes, 0);  // display flags
  AppendU32(&bytes, 1);  // centred
  AppendColor(background, &bytes);
  for (const SInt16 edge : {box.top, box.left, box.bottom, box.right})
    Append16(static_cast<UInt16>(edge), &bytes);
  bytes.resize(bytes.size() + 8);  // reserved
  Append16(0, &bytes);             // the system's font
  Append16(0, &bytes);             // plain
  bytes.resize(bytes.size() + 3);  // reserved
  AppendColor(text, &bytes);
  bytes.push_back(0);  // no font name
  const auto size = static_cast<SInt32>(bytes.size());
  const OSType format = "text"_4cc;
  std::memcpy(bytes.data(), &size, sizeof size);
  std::memcpy(bytes.data() + 4, &format, sizeof format);
  return bytes;
}

/// A text as a sample: its length, the bytes, and an atom that tells of UTF-8.
std::vector<UInt8> MakeSample(const char* text, UInt32 size) {
  constexpr UInt32 kUtf8 = 0x08000100;
  std::vector<UInt8> bytes;
  Append16(size, &bytes);
  bytes.insert(bytes.end(), text, text + size);
  AppendU32(&bytes, 12);
  AppendU32(&bytes, "encd"_4cc);
  AppendU32(&bytes, kUtf8);
  return bytes;
}

}  // namespace

OSErr TextMediaAddTextSample(MediaHandler handler, const char* text, UInt32 size, const Rect* box,
                             const RGBColor* text_color, const RGBColor* background,
                             TimeValue duration, TimeValue* sample_time) {
  constexpr UInt32 kMostText = 65535;
  if (handler == nullptr) return movies::Note(invalidHandler);
  if (box == nullptr || (text == nullptr && size > 0) || size > kMostText)
    return movies::Note(paramErr);
  const std::vector<UInt8> record =
      MakeDescription(*box, text_color != nullptr ? *text_color : kWhite,
                      background != nullptr ? *background : kBlack);
  Handle description = nullptr;
  if (PtrToHand(record.data(), &description, static_cast<Size>(record.size())) != noErr)
    return MemError();
  const std::vector<UInt8> sample = MakeSample(text, size);
  TimeValue64 time = 0;
  const OSErr status =
      AddMediaSample2(handler, sample.data(), sample.size(), duration, 0, description, 1, 0, &time);
  DisposeHandle(description);
  if (status == noErr && sample_time != nullptr) *sample_time = static_cast<TimeValue>(time);
  return status;
}
