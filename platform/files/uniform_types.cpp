#include "uniform_types.h"

#include <iterator>

#include "text_encodings.h"

const CFStringRef kUTTagClassFilenameExtension = CFSTR("public.filename-extension");
const CFStringRef kUTTagClassOSType = CFSTR("com.apple.ostype");
const CFStringRef kUTTypeData = CFSTR("public.data");

namespace {

/// A tag and its type. Several tags may lead to one type.
struct TypeRow {
  const char* tag;
  const char* type;
};

constexpr TypeRow kExtensions[] = {
    {"mov", "com.apple.quicktime-movie"},
    {"qt", "com.apple.quicktime-movie"},
    {"mp4", "public.mpeg-4"},
    {"m4v", "com.apple.m4v-video"},
    {"m4a", "com.apple.m4a-audio"},
    {"3gp", "public.3gpp"},
    {"3g2", "public.3gpp2"},
    {"avi", "public.avi"},
    {"mpg", "public.mpeg"},
    {"mpeg", "public.mpeg"},
    {"dv", "public.dv-movie"},
    {"aif", "public.aiff-audio"},
    {"aiff", "public.aiff-audio"},
    {"aifc", "public.aifc-audio"},
    {"wav", "com.microsoft.waveform-audio"},
    {"mp3", "public.mp3"},
    {"jpg", "public.jpeg"},
    {"jpeg", "public.jpeg"},
    {"jp2", "public.jpeg-2000"},
    {"png", "public.png"},
    {"tif", "public.tiff"},
    {"tiff", "public.tiff"},
    {"gif", "com.compuserve.gif"},
    {"bmp", "com.microsoft.bmp"},
    {"psd", "com.adobe.photoshop-image"},
    {"pdf", "com.adobe.pdf"},
    {"txt", "public.plain-text"},
    {"text", "public.plain-text"},
    {"rtf", "public.rtf"},
    {"htm", "public.html"},
    {"html", "public.html"},
    {"xml", "public.xml"},
    {"plist", "com.apple.property-list"},
};

constexpr TypeRow kFileTypes[] = {
    {"MooV", "com.apple.quicktime-movie"},
    {"mpg4", "public.mpeg-4"},
    {"M4V ", "com.apple.m4v-video"},
    {"M4A ", "com.apple.m4a-audio"},
    {"VfW ", "public.avi"},
    {"MPEG", "public.mpeg"},
    {"dvc!", "public.dv-movie"},
    {"AIFF", "public.aiff-audio"},
    {"AIFC", "public.aifc-audio"},
    {"WAVE", "com.microsoft.waveform-audio"},
    {"MP3 ", "public.mp3"},
    {"JPEG", "public.jpeg"},
    {"jp2 ", "public.jpeg-2000"},
    {"PNGf", "public.png"},
    {"TIFF", "public.tiff"},
    {"GIFf", "com.compuserve.gif"},
    {"BMPf", "com.microsoft.bmp"},
    {"8BPS", "com.adobe.photoshop-image"},
    {"PDF ", "com.adobe.pdf"},
    {"TEXT", "public.plain-text"},
    {"RTF ", "public.rtf"},
    {"HTML", "public.html"},
};

template <std::size_t kCount>
CFStringRef Find(const TypeRow (&rows)[kCount], CFStringRef tag, CFOptionFlags options) {
  for (const TypeRow& row : rows) {
    const quillmere::Owned<CFStringRef> known(quillmere::CreateFromUtf8(row.tag));
    if (CFStringCompare(known.get(), tag, options) == kCFCompareEqualTo) {
      return quillmere::CreateFromUtf8(row.type);
    }
  }
  return nullptr;
}

bool IsSame(CFStringRef a, CFStringRef b) {
  return a == b || CFStringCompare(a, b, 0) == kCFCompareEqualTo;
}

}  // namespace

CFStringRef UTTypeCreatePreferredIdentifierForTag(CFStringRef tag_class, CFStringRef tag,
                                                  CFStringRef conforming_to) {
  if (!tag_class || !tag || (conforming_to && !IsSame(conforming_to, kUTTypeData))) return nullptr;
  if (IsSame(tag_class, kUTTagClassFilenameExtension)) {
    return Find(kExtensions, tag, kCFCompareCaseInsensitive);
  }
  return IsSame(tag_class, kUTTagClassOSType) ? Find(kFileTypes, tag, 0) : nullptr;
}

CFStringRef UTCreateStringForOSType(OSType type) {
  const char text[] = {static_cast<char>(type >> 24), static_cast<char>(type >> 16),
                       static_cast<char>(type >> 8), static_cast<char>(type), 0};
  return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingMacRoman);
}
