#include "catalogue_search.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>
#include <string_view>

#include "deadline.h"
#include "file_names.h"
#include "subtree_walk.h"

namespace {

using quillmere::Owned;
using quillmere::files::Deadline;
using quillmere::files::SubtreeWalk;

constexpr UInt32 kKnownBits =
    fsSBFullName | fsSBFlFndrInfo | fsSBFlCrDat | fsSBFlMdDat | fsSBNodeID;

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool EqualAscii(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

/// A name to compare others with, upper and lower case alike. Most names are ASCII and need no
/// string made of them.
class SoughtName {
 public:
  SoughtName(const UniChar* name, UInt32 length)
      : string_(CFStringCreateWithCharacters(kCFAllocatorDefault, name, length)),
        text_(quillmere::ToUtf8(string_.get())),
        is_ascii_(IsAscii(text_)) {}

  bool Equals(const std::string& name) const {
    if (is_ascii_ && IsAscii(name)) return EqualAscii(text_, name);
    const Owned<CFStringRef> other(quillmere::CreateFromUtf8(name));
    return CFStringCompare(string_.get(), other.get(), kCFCompareCaseInsensitive) ==
           kCFCompareEqualTo;
  }

 private:
  Owned<CFStringRef> string_;
  std::string text_;
  bool is_ascii_;
};

/// A date as one number.
UInt64 Ticks(const UTCDateTime& date) {
  return (UInt64{date.highSeconds} << 48) | (UInt64{date.lowSeconds} << 16) | date.fraction;
}

template <class Value>
bool IsBetween(Value value, Value lower, Value upper) {
  return lower <= value && value <= upper;
}

bool EqualInMask(const UInt8 (&value)[16], const UInt8 (&sought)[16], const UInt8 (&mask)[16]) {
  for (std::size_t i = 0; i < sizeof(value); ++i) {
    if ((value[i] ^ sought[i]) & mask[i]) return false;
  }
  return true;
}

/// What a search has to read of an object to decide.
FSCatalogInfoBitmap MaskFor(UInt32 bits) {
  return (bits & fsSBFlFndrInfo ? kFSCatInfoFinderInfo : 0) |
         (bits & fsSBFlCrDat ? kFSCatInfoCreateDate : 0) |
         (bits & fsSBFlMdDat ? kFSCatInfoContentMod : 0) |
         (bits & fsSBNodeID ? kFSCatInfoNodeID : 0);
}

/// Whether an object's information fulfils the terms.
bool Fulfils(const FSCatalogInfo& info, const FSSearchParams& terms) {
  const FSCatalogInfo& lower = *terms.searchInfo1;
  const FSCatalogInfo& upper = *terms.searchInfo2;
  const UInt32 bits = terms.searchBits;
  const auto date_fits = [&](UTCDateTime FSCatalogInfo::*date) {
    return IsBetween(Ticks(info.*date), Ticks(lower.*date), Ticks(upper.*date));
  };
  return (!(bits & fsSBNodeID) || IsBetween(info.nodeID, lower.nodeID, upper.nodeID)) &&
         (!(bits & fsSBFlCrDat) || date_fits(&FSCatalogInfo::createDate)) &&
         (!(bits & fsSBFlMdDat) || date_fits(&FSCatalogInfo::contentModDate)) &&
         (!(bits & fsSBFlFndrInfo) ||
          EqualInMask(info.finderInfo, lower.finderInfo, upper.finderInfo));
}

/// The state of one call.
struct Search {
  const FSSearchParams& terms;
  SoughtName name;
  FSCatalogInfoBitmap own_mask;  ///< what the terms ask for

  explicit Search(const FSSearchParams& asked)
      : terms(asked),
        name(asked.searchName, asked.searchBits & fsSBFullName ? asked.searchNameLength : 0),
        own_mask(MaskFor(asked.searchBits)) {}

  /// What the folder's entry alone can tell against an object, without a look at the object.
  bool MayFulfil(const SubtreeWalk::Entry& entry) const {
    if ((terms.searchBits & fsSBFullName) && !name.Equals(entry.name)) return false;
    // A folder on which another volume is mounted has the number that it hides.
    return !(terms.searchBits & fsSBNodeID) || entry.is_folder ||
           IsBetween(entry.inode, terms.searchInfo1->nodeID, terms.searchInfo2->nodeID);
  }

  /// Looks at an object; false if it is not one of those sought, or has gone.
  bool Take(const std::string& path, FSCatalogInfoBitmap mask, FSCatalogInfo* info,
            FSRef* reference) const {
    FSCatalogInfo own{};
    if (quillmere::files::ReferenceOf(path, reference) != noErr ||
        FSGetCatalogInfo(reference, mask | own_mask, &own, nullptr, nullptr, nullptr) != noErr) {
      return false;
    }
    if (own_mask && !Fulfils(own, terms)) return false;
    if (info) *info = own;
    return true;
  }
};

bool AreValid(const FSSearchParams& terms) {
  const bool needs_records = (terms.searchBits & ~fsSBFullName) != 0;
  return (terms.searchBits & ~kKnownBits) == 0 && terms.searchTime >= 0 &&
         (!(terms.searchBits & fsSBFullName) ||
          (terms.searchName && terms.searchNameLength <= 255)) &&
         (!needs_records || (terms.searchInfo1 && terms.searchInfo2));
}

}  // namespace

OSErr FSCatalogSearch(FSIterator iterator, const FSSearchParams* terms, ItemCount maximum,
                      ItemCount* actual, Boolean* container_changed, FSCatalogInfoBitmap mask,
                      FSCatalogInfo* infos, FSRef* references, FSSpec* /*specs*/,
                      HFSUniStr255* names) {
  if (actual) *actual = 0;
  if (container_changed) *container_changed = 0;
  SubtreeWalk* const walk = iterator ? quillmere::files::SubtreeOf(iterator) : nullptr;
  if (!walk || !terms || !actual || (mask != kFSCatInfoNone && !infos) || !AreValid(*terms)) {
    return static_cast<OSErr>(paramErr);
  }
  const Search search(*terms);
  const bool needs_objects = mask != kFSCatInfoNone || search.own_mask != 0 || references;
  Deadline deadline(terms->searchTime);
  while (*actual < maximum && !deadline.IsOver()) {
    const SubtreeWalk::Entry* entry = walk->Next();
    if (!entry) return errFSNoMoreItems;
    if (!search.MayFulfil(*entry)) continue;
    const ItemCount i = *actual;
    FSRef reference{};
    if (needs_objects &&
        !search.Take(walk->Path(), mask, infos ? &infos[i] : nullptr, &reference)) {
      continue;
    }
    if (references) references[i] = reference;
    if (names) quillmere::files::UnitsOfName(entry->name, &names[i]);
    ++*actual;
  }
  return noErr;
}
