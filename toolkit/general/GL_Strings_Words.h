/// Words in classic strings, and strings in a line: substitutions behind a word, widths in pixels,
/// and strings spread over a line. Strings are as in GL_Strings.h.
///
/// Two things are called a word: for the operations that insert, what stands between spaces or the
/// string's ends; for those that measure, a run of at least two printable characters ("!" to "~").
#pragma once

#include "GL_Strings.h"
#include "base_types.h"
#include "carbon_events.h"

/// The longest word that is looked for, and the longest that is inserted.
inline constexpr SInt32 kLongestFoundWord = 15;
inline constexpr SInt32 kLongestInsertedWord = 31;

/// An element of a list of word substitutions.
struct GL_WordSub {
  GL_WordSub* next;
  char word[kLongestFoundWord + 1];
  char substitute[kLongestFoundWord + 1];
};

/// An element of a list of strings.
struct GL_StringElement {
  GL_StringElement* next;
  char text[kLongestCString + 1];
};

/// A text style; `size` in points of one pixel.
struct GL_TextStyle {
  SInt16 font;
  UInt8 face;
  SInt16 size;
};

/// Alignment of strings in a line: gaps as wide as the margins, or strings out to the margins.
inline constexpr SInt16 kAlignEven = 1;
inline constexpr SInt16 kAlignFull = 0;

/// Inserts the word and a space at the start (`index` 0 or below), or a space and the word at
/// `index`, at most at the end. GL_StringWouldGrowTooLongErr (10005) if the lengths plus 1 pass
/// 255, GL_StringLimitErr (10003) for a word above 31.
SInt32 GL_InsertWord(char* string, const char* word, SInt16 index);
/// Finds the first place of a word between spaces or the string's ends. Status 0 tells that it was
/// found; `*position` is then the index of its first character, which is 0 at the string's start,
/// too. An empty word is found at 0. GL_WordNotInStringErr (10001) if it is not there,
/// GL_StringLimitErr (10003) for a word above 15 characters, GL_WordLongerThanStringErr (10006) for
/// one longer than the string; `*position` is 0 then.
SInt32 GL_FindWord(const char* string, const char* word, SInt16* position);
/// Inserts a space and `insertion` behind a word. Statuses of GL_FindWord and GL_InsertWord.
SInt32 GL_InsertWordBehind(char* string, const char* word, const char* insertion);
/// Does that for each record of a list of GL_WordSub, to the first failure.
SInt32 GL_WordInsertions(char* string, const GL_WordSub* list);
/// Adds a record at the list's end; the list is disposed of with LL_DisposeLinkedList.
/// GL_StringLimitErr (10003), and no record, if one of the words is above 15 characters.
SInt32 GL_AddWordSubToList(GL_WordSub** list, const char* word, const char* substitute);
/// Adds a string of at most 255 characters at the end of a list of GL_StringElement.
/// GL_StringLimitErr (10003), and no element, for a longer one.
SInt32 GL_AddStringToList(GL_StringElement** list, const char* string);

/// The width in pixels, in the port's style, of the string's first 255 characters.
SInt16 GL_CStringWidth(const char* string);
/// The same in a style of its own; the port's is restored.
SInt16 GL_GetStringWidth(const char* string, SInt16 font, SInt16 size, UInt8 face);
/// The width of the widest word of a line in the port's style; `out` (256 bytes) takes the word,
/// the first of equals. 0 and the empty string if there is none.
SInt16 GL_GetWidestWordInLine(const char* line, char* out);
/// Cuts every word wider than `width_limit` in its middle, in the line itself: by as many
/// characters as there are pixels too many, down to 80 characters. Nothing happens for a limit
/// below 80. The port's style is restored.
void GL_TruncWordsInLine(char* line, SInt16 width_limit, SInt16 font, SInt16 size, UInt8 face);

/// Joins the strings with spaces so that they fill the width of `box` but for 2 pixels. `style` is
/// made smaller down to size 9 until they fit, and tells the size on return; the port's style is
/// restored. `alignment` kAlignEven spaces the strings from the margins as from each other, any
/// other value spreads them with the rest shared by the margins. `out` has 256 bytes. An empty list
/// gives the empty string. GL_StringLimitErr (10003) if the strings with `least_spaces` between
/// them pass 255 characters, GL_WordWiderThanLineErr (10004) if they are too wide at size 9 (or at
/// a smaller one that was given), -50 for a null argument and for a single string without
/// kAlignEven.
SInt32 GL_FitStringsInLineBox(const GL_StringElement* strings, const Rect* box, SInt16 least_spaces,
                              SInt16 alignment, GL_TextStyle* style, char* out);

/// A name to suggest for a file: the window's title, of at most 63 bytes in the system encoding,
/// and the suffix. The empty string if the title is longer or there is no window. `out` has 256
/// bytes.
void GL_SuggestName(WindowRef window, char* out, const char* suffix);
