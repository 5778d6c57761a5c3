// Columns of 2vuy frames, of CO_filter.h.

#include <algorithm>
#include <cstdlib>

#include "CO_filter.h"
#include "column_private.h"

namespace {

using namespace quillmere::color;

/// The chroma or, with `offset` 1, the luma of a pixel column.
Column<UInt8> ColumnOf(UInt8* frame, SInt32 width, SInt32 pixel_column, SInt32 offset) {
  return {frame + std::ptrdiff_t{pixel_column} * 2 + offset, width * 2};
}

/// Copies a column to `scratch` from position 2 on.
void CopyColumn(const Column<UInt8>& column, SInt32 lines, UInt8* scratch) {
  for (SInt32 line = 0; line < lines; ++line)
    scratch[line + 2] = column[line];
}

bool IsPeak(SInt32 before, SInt32 at, SInt32 after) {
  return at > before && at > after;
}

bool IsDip(SInt32 before, SInt32 at, SInt32 after) {
  return at < before && at < after;
}

/// Tells if s[1] and s[2] zigzag between s[0] and s[3].
bool IsZigzag(const UInt8* s) {
  return s[1] > s[0] ? s[1] > s[2] && s[2] < s[3] : s[1] < s[2] && s[2] > s[3];
}

}  // namespace

void CO_FilterVertChromaLine(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                             UInt8* scratch) {
  if (lineCount < 1) return;
  const Column<UInt8> column = ColumnOf(frame, width, pixelColumn, 0);
  CopyColumn(column, lineCount, scratch);
  std::fill_n(scratch, 2, scratch[2]);
  std::fill_n(scratch + lineCount + 2, 2, scratch[lineCount + 1]);
  for (SInt32 line = 0; line < lineCount; ++line) {
    const UInt8* s = scratch + line;
    column[line] = static_cast<UInt8>((s[0] + 2 * (s[1] + s[2] + s[3]) + s[4] + 3) >> 3);
  }
}

void CO_FilterVertChromaLine2(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                              UInt8* scratch) {
  const Column<UInt8> column = ColumnOf(frame, width, pixelColumn, 0);
  CopyColumn(column, lineCount, scratch);
  const UInt8* s = scratch + 2;
  for (SInt32 k = 1; k + 2 < lineCount; ++k) {
    if (!IsZigzag(s + k - 1)) continue;
    const int delta = (s[k + 1] - s[k]) / 4;
    column[k] = static_cast<UInt8>(column[k] + delta);
    column[k + 1] = static_cast<UInt8>(column[k + 1] - delta);
  }
  CopyColumn(column, lineCount, scratch);
  for (SInt32 k = 1; k + 1 < lineCount; ++k) {
    if (IsDip(s[k - 1], s[k], s[k + 1])) column[k] = std::min(s[k - 1], s[k + 1]);
    if (IsPeak(s[k - 1], s[k], s[k + 1])) column[k] = std::max(s[k - 1], s[k + 1]);
  }
}

void CO_FilterVertBrLine(SInt32 width, SInt32 lineCount, UInt8* frame, SInt32 pixelColumn,
                         UInt8* scratch) {
  if (lineCount < 2) return;
  const Column<UInt8> column = ColumnOf(frame, width, pixelColumn, 1);
  CopyColumn(column, lineCount, scratch);
  std::copy_n(scratch + 2, 2, scratch);
  std::copy_n(scratch + lineCount, 2, scratch + lineCount + 2);
  for (SInt32 line = 0; line < lineCount; ++line) {
    const UInt8* w = scratch + line;
    if (!IsPeak(w[1], w[2], w[3]) && !IsDip(w[1], w[2], w[3])) continue;
    const int stands_out = std::min(std::abs(w[2] - w[1]), std::abs(w[2] - w[3]));
    const int pull = ((w[0] + 2 * w[2] + w[4] + 1) >> 2) - w[2];
    const int amount = std::min(stands_out / 4, std::abs(pull));
    column[line] = static_cast<UInt8>(w[2] + (pull < 0 ? -amount : amount));
  }
}
