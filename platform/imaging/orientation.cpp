#include "orientation.h"

#include <cstddef>
#include <cstring>

namespace quillmere::imaging {

// An upright pixel's place is linear in the encoded one's: a start and a step in bytes for each
// encoded column and row say it all.
void PlaceRows(const PixelBlock& rows, UInt32 first_row, UInt8 orientation,
               const PixelBlock& target) {
  const bool swap = SwapsSides(orientation);
  // Where encoded row 0 and column 0 stand: 2, 3: right; 3, 4: bottom; 6, 7: row 0 at the right; 7,
  // 8: column 0 at the bottom.
  const bool from_right =
      orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7;
  const bool from_bottom =
      orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8;
  const auto stride = static_cast<std::ptrdiff_t>(target.row_bytes);
  const std::ptrdiff_t across = from_right ? -4 : 4;
  const std::ptrdiff_t down = from_bottom ? -stride : stride;
  UInt8* const start = target.pixels + (from_right ? (target.width - 1) * std::size_t{4} : 0) +
                       (from_bottom ? (target.height - 1) * target.row_bytes : 0);
  const std::ptrdiff_t column_step = swap ? down : across;
  const std::ptrdiff_t row_step = swap ? across : down;
  UInt8* const first = start + row_step * static_cast<std::ptrdiff_t>(first_row);
  const auto copy = [&](UInt32 x, UInt32 y) {
    std::memcpy(first + column_step * static_cast<std::ptrdiff_t>(x) +
                    row_step * static_cast<std::ptrdiff_t>(y),
                rows.Row(y) + std::size_t{x} * 4, 4);
  };
  if (swap) {  // the inner loop goes along a row of the target
    for (UInt32 x = 0; x < rows.width; ++x) {
      for (UInt32 y = 0; y < rows.height; ++y)
        copy(x, y);
    }
  } else {
    for (UInt32 y = 0; y < rows.height; ++y) {
      for (UInt32 x = 0; x < rows.width; ++x)
        copy(x, y);
    }
  }
}

}  // namespace quillmere::imaging
