/// The search of a whole volume, or of all that a folder holds.
///
/// It goes from the folder of an iterator that was opened with kFSIterateSubtree in the order of
/// SubtreeWalk (subtree_walk.h), follows no link and stays on the volume.
#pragma once

#include "base_types.h"
#include "catalogue.h"

/// What an object has to fulfil, all of it.
inline constexpr UInt32 fsSBFullName = 0x0002;    ///< has the name, upper and lower case alike
inline constexpr UInt32 fsSBFlFndrInfo = 0x0008;  ///< equals it in the bits that searchInfo2 has
inline constexpr UInt32 fsSBFlCrDat = 0x0200;     ///< created from searchInfo1 to searchInfo2
inline constexpr UInt32 fsSBFlMdDat = 0x0400;     ///< its content changed in that stretch
inline constexpr UInt32 fsSBNodeID = 0x8000;      ///< its number lies in that stretch

/// The terms of a search. Stretches have both their ends.
struct FSSearchParams {
  SInt32 searchTime;  ///< milliseconds that one call may take; 0 for any time
  UInt32 searchBits;
  UInt32 searchNameLength;  ///< UTF-16 units
  const UniChar* searchName;
  const FSCatalogInfo* searchInfo1;  ///< lower values, and the Finder information sought
  const FSCatalogInfo* searchInfo2;  ///< upper values, and the mask of the Finder information
};

/// Gives up to `maximum` further objects that fulfil the terms. noErr when they are found or the
/// time has run out, then with fewer of them; the next call goes on behind. errFSNoMoreItems at the
/// end, then with the last ones. `infos`, `references` and `names` are arrays of `maximum` entries
/// or null, `specs` is null, `container_changed` may be null; where only names are asked for, by
/// name or all of them, the objects are not looked at. paramErr for an iterator over one level,
/// bits that are not named here, or a record that a bit needs and that is null.
OSErr FSCatalogSearch(FSIterator iterator, const FSSearchParams* terms, ItemCount maximum,
                      ItemCount* actual, Boolean* container_changed, FSCatalogInfoBitmap mask,
                      FSCatalogInfo* infos, FSRef* references, FSSpec* specs, HFSUniStr255* names);
