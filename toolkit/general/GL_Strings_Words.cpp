#include "GL_Strings_Words.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "GL_Errors.h"
#include "GL_Strings_Unicode.h"
#include "GL_deprecated.h"
#include "LL_Linked_Lists.h"
#include "classic_strings_private.h"
#include "text_style.h"
#include "window_manager.h"

namespace {

using quillmere::StoreText;
using quillmere::ViewOf;

/// Gives the port's style back at the end of a scope.
class StyleKeeper {
 public:
  StyleKeeper() { GetThemeDrawingState(&state_); }
  ~StyleKeeper() { SetThemeDrawingState(state_, 1); }
  StyleKeeper(const StyleKeeper&) = delete;
  StyleKeeper& operator=(const StyleKeeper&) = delete;

 private:
  ThemeDrawingState state_ = nullptr;
};

void SetStyle(SInt16 font, SInt16 size, UInt8 face) {
  GLD_TextFont(font);
  GLD_TextSize(size);
  GLD_TextFace(face);
}

SInt16 Width(std::string_view text) {
  return GL_CStringWidth(std::string(text).c_str());
}

/// The next run of at least two printable characters from `*at` on, which moves behind it; empty at
/// the end of the line.
std::string_view NextWord(std::string_view line, std::size_t* at) {
  while (*at < line.size()) {
    std::size_t end = *at;
    while (end < line.size() && !GL_IsInvisibleAsciiCharacter(line[end]))
      ++end;
    const std::string_view word = line.substr(*at, end - *at);
    *at = std::max(end, *at + 1);
    if (word.size() >= 2) return word;
  }
  return {};
}

/// Strings joined with `spaces` between them, behind `lead` spaces.
std::string Join(const GL_StringElement* strings, SInt64 lead, SInt64 spaces) {
  std::string line(static_cast<std::size_t>(lead), ' ');
  for (const auto* element = strings; element != nullptr; element = element->next) {
    line += element->text;
    if (element->next != nullptr) line.append(static_cast<std::size_t>(spaces), ' ');
  }
  return line;
}

/// Makes the style smaller until the line fits `width`; it is the port's style then.
SInt32 ShrinkToFit(const std::string& line, SInt64 width, GL_TextStyle* style) {
  constexpr SInt16 kLeastSize = 9;
  SetStyle(style->font, style->size, style->face);
  while (GL_CStringWidth(line.c_str()) > width) {
    if (style->size <= kLeastSize) return GL_WordWiderThanLineErr;
    GLD_TextSize(--style->size);
  }
  return noErr;
}

}  // namespace

SInt32 GL_InsertWord(char* string, const char* word, SInt16 index) {
  if (string == nullptr) return paramErr;
  const std::string text = string;
  const std::string_view inserted = ViewOf(word);
  if (text.size() + inserted.size() + 1 > kLongestCString) return GL_StringWouldGrowTooLongErr;
  if (std::ssize(inserted) > kLongestInsertedWord) return GL_StringLimitErr;
  std::string result = text;
  if (index <= 0) {
    result.insert(0, std::string(inserted) + " ");
  } else {
    result.insert(std::min(static_cast<std::size_t>(index), text.size()),
                  " " + std::string(inserted));
  }
  StoreText(result, string);
  return noErr;
}

SInt32 GL_FindWord(const char* string, const char* word, SInt16* position) {
  if (position == nullptr) return paramErr;
  *position = 0;
  const std::string_view text = ViewOf(string);
  const std::string_view wanted = ViewOf(word);
  if (wanted.empty()) return noErr;
  if (std::ssize(wanted) > kLongestFoundWord) return GL_StringLimitErr;
  if (wanted.size() > text.size()) return GL_WordLongerThanStringErr;
  constexpr std::size_t kFarthest = 0x7FFF;
  for (std::size_t at = text.find(wanted); at <= kFarthest; at = text.find(wanted, at + 1)) {
    const std::size_t end = at + wanted.size();
    const bool begins = at == 0 || text[at - 1] == ' ';
    if (begins && (end == text.size() || text[end] == ' ')) {
      *position = static_cast<SInt16>(at);
      return noErr;
    }
  }
  return GL_WordNotInStringErr;
}

SInt32 GL_InsertWordBehind(char* string, const char* word, const char* insertion) {
  SInt16 position = 0;
  const SInt32 status = GL_FindWord(string, word, &position);
  if (status) return status;
  const SInt64 index = position + std::ssize(ViewOf(word));
  return GL_InsertWord(string, insertion, static_cast<SInt16>(std::min<SInt64>(index, 0x7FFF)));
}

SInt32 GL_WordInsertions(char* string, const GL_WordSub* list) {
  SInt32 status = noErr;
  for (const auto* record = list; record != nullptr && !status; record = record->next) {
    status = GL_InsertWordBehind(string, record->word, record->substitute);
  }
  return status;
}

SInt32 GL_AddWordSubToList(GL_WordSub** list, const char* word, const char* substitute) {
  if (list == nullptr) return paramErr;
  const std::string_view found = ViewOf(word);
  const std::string_view put = ViewOf(substitute);
  if (std::ssize(found) > kLongestFoundWord || std::ssize(put) > kLongestFoundWord) {
    return GL_StringLimitErr;
  }
  void* added = nullptr;
  const SInt32 status =
      LL_AddNewPtr(sizeof(GL_WordSub), nullptr, quillmere::ListHead(list), &added);
  if (status) return status;
  auto* const record = static_cast<GL_WordSub*>(added);
  StoreText(found, record->word);
  StoreText(put, record->substitute);
  return noErr;
}

SInt32 GL_AddStringToList(GL_StringElement** list, const char* string) {
  if (list == nullptr) return paramErr;
  if (std::ssize(ViewOf(string)) > kLongestCString) return GL_StringLimitErr;
  void* added = nullptr;
  const SInt32 status =
      LL_AddNewPtr(sizeof(GL_StringElement), nullptr, quillmere::ListHead(list), &added);
  if (status) return status;
  StoreText(ViewOf(string), static_cast<GL_StringElement*>(added)->text);
  return noErr;
}

SInt16 GL_CStringWidth(const char* string) {
  const std::string_view text = ViewOf(string).substr(0, kLongestCString);
  UInt8 pascal_string[kLongestCString + 1];
  pascal_string[0] = static_cast<UInt8>(text.size());
  std::copy(text.begin(), text.end(), pascal_string + 1);
  return GLD_StringWidth(pascal_string);
}

SInt16 GL_GetStringWidth(const char* string, SInt16 font, SInt16 size, UInt8 face) {
  const StyleKeeper keeper;
  SetStyle(font, size, face);
  return GL_CStringWidth(string);
}

SInt16 GL_GetWidestWordInLine(const char* line, char* out) {
  const std::string_view text = ViewOf(line);
  std::string_view widest;
  SInt16 width = 0;
  std::size_t at = 0;
  for (std::string_view word; !(word = NextWord(text, &at)).empty();) {
    const SInt16 word_width = Width(word);
    if (word_width > width) {
      width = word_width;
      widest = word;
    }
  }
  if (out != nullptr) StoreText(widest.substr(0, kLongestCString), out);
  return width;
}

void GL_TruncWordsInLine(char* line, SInt16 width_limit, SInt16 font, SInt16 size, UInt8 face) {
  constexpr SInt16 kLeast = 80;
  if (line == nullptr || width_limit < kLeast) return;
  const StyleKeeper keeper;
  SetStyle(font, size, face);
  const std::string text = line;
  std::string shortened;
  std::size_t copied = 0;
  std::size_t at = 0;
  for (std::string_view word; !(word = NextWord(text, &at)).empty();) {
    const SInt16 width = Width(word);
    if (width <= width_limit) continue;
    const auto start = static_cast<std::size_t>(word.data() - text.data());
    std::string cut(word);
    GL_TruncStringMiddle(cut.data(), kLeast, static_cast<SInt16>(width - width_limit));
    shortened += text.substr(copied, start - copied) + cut.c_str();
    copied = start + word.size();
  }
  StoreText(shortened + text.substr(copied), line);
}

SInt32 GL_FitStringsInLineBox(const GL_StringElement* strings, const Rect* box, SInt16 least_spaces,
                              SInt16 alignment, GL_TextStyle* style, char* out) {
  if (box == nullptr || style == nullptr || out == nullptr) return paramErr;
  StoreText({}, out);
  if (strings == nullptr) return noErr;
  const SInt64 least = std::max<SInt16>(least_spaces, 0);
  const SInt64 count = LL_PtrListCount(strings);
  const SInt64 gaps = count - 1;
  const SInt64 characters = std::ssize(Join(strings, 0, 0));
  if (characters + gaps * least > kLongestCString) return GL_StringLimitErr;
  if (gaps == 0 && alignment != kAlignEven) return paramErr;
  const SInt64 width = box->right - box->left - 2;
  const StyleKeeper keeper;
  const std::string joined = Join(strings, 0, least);
  const SInt32 status = ShrinkToFit(joined, width, style);
  if (status) return status;
  const SInt64 space = std::max<SInt64>(Width(" "), 1);
  const SInt64 room = kLongestCString - characters;
  const SInt64 total =
      std::min(gaps * least + (width - GL_CStringWidth(joined.c_str())) / space, room);
  const SInt64 extra = total - gaps * least;
  SInt64 per = 0;
  SInt64 lead = 0;
  if (alignment == kAlignEven) {
    per = total / count;
    lead = per / 2 + (extra - (per - least) * gaps - per / 2 * 2) / 2;
  } else {
    per = total / gaps;
    lead = total % gaps / 2;
  }
  lead = std::clamp<SInt64>(lead, 0, room - gaps * per);
  StoreText(Join(strings, lead, per), out);
  return noErr;
}

void GL_SuggestName(WindowRef window, char* out, const char* suffix) {
  constexpr SInt32 kTitleRoom = 64;
  if (out == nullptr) return;
  StoreText({}, out);
  quillmere::Owned<CFStringRef> title;
  if (CopyWindowTitleAsCFString(window, title.out())) return;
  if (GL_CFStrToCStr(title.get(), out, kTitleRoom)) {
    StoreText(
        std::string(out) + std::string(ViewOf(suffix).substr(0, kLongestCString - kTitleRoom + 1)),
        out);
  }
}
