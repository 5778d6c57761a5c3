#include <cstdio>

#include "CO_Measure.h"
#include "measuring_private.h"

namespace {

using namespace quillmere::color;

/// Numbers stand below each other.
void PrintNumber(unsigned value, const char* behind) {
  std::printf("%s%u%s", value < 10 ? "  " : value < 100 ? " " : "", value, behind);
}

void PrintHead(const char* what, const char* name, SInt32 frame_number, const Measured& rect) {
  std::printf("Printing %s in rect %s (frameNum=%ld, top=%d, left=%d, width=%d, height=%d)\n", what,
              name, static_cast<long>(frame_number), rect.top, rect.left, rect.width, rect.height);
}

/// Calls `print(row, column)` for each pixel, a line for each row.
template <class Print>
void PrintRows(const Measured& rect, Print print) {
  for (SInt32 row = rect.top; !rect.IsEmpty() && row < rect.top + rect.height; ++row) {
    for (SInt32 column = rect.left; column < rect.left + rect.width; ++column)
      print(row, column);
    std::printf("\n");
  }
}

/// One byte of each pixel.
void PrintBytes(const char* what, const char* name, SInt32 frame_number, SInt32 width,
                const UInt8* frame, const Rect& rect, SInt32 size, int place) {
  const Measured measured(rect);
  PrintHead(what, name, frame_number, measured);
  PrintRows(measured, [&](SInt32 row, SInt32 column) {
    PrintNumber(PixelAt(frame, width, size, row, column)[place], ",");
  });
}

/// Calls `print(i, end)` for each element; the end is a newline for the last.
template <class Print>
void PrintElements(SInt32 count, Print print) {
  for (SInt32 i = 0; i < count; ++i)
    print(i, i + 1 < count ? "," : "\n");
}

}  // namespace

void DBG_PrintRectY(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect) {
  PrintBytes("Y", name, frameNumber, width, frame, *rect, 2, 1);
}

void DBG_PrintRectY_sf(const char* name, SInt32 frameNumber, Boolean topFieldFirst,
                       Boolean topFieldFrom1, SInt32 width, const UInt8* frame1,
                       const UInt8* frame2, const Rect* rect) {
  const Measured measured(*rect);
  std::printf(
      "Printing Y in rect %s (frameNum=%ld, topFieldFirst=%u, usingTopfieldFrom1=%u, top=%d, "
      "left=%d, width=%d, height=%d)\n",
      name, static_cast<long>(frameNumber), topFieldFirst, topFieldFrom1, measured.top,
      measured.left, measured.width, measured.height);
  PrintRows(measured, [&](SInt32 row, SInt32 column) {
    const bool is_top = row % 2 == 0;
    const UInt8* const frame = is_top == (topFieldFrom1 != 0) ? frame1 : frame2;
    PrintNumber(PixelAt(frame, width, 2, row, column)[1], ",");
  });
}

void DBG_PrintRectC(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect) {
  PrintBytes("C", name, frameNumber, width, frame, *rect, 2, 0);
}

void DBG_PrintRectARGB(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                       const Rect* rect) {
  const Measured measured(*rect);
  PrintHead("ARGB", name, frameNumber, measured);
  PrintRows(measured, [&](SInt32 row, SInt32 column) {
    const UInt8* const pixel = PixelAt(frame, width, 4, row, column);
    std::printf("(");
    for (int i = 0; i < 4; ++i)
      PrintNumber(pixel[i], i < 3 ? "," : ")");
  });
}

void DBG_PrintRectR(const char* name, SInt32 frameNumber, SInt32 width, const UInt8* frame,
                    const Rect* rect) {
  PrintBytes("ARGB red", name, frameNumber, width, frame, *rect, 4, 1);
}

void DGB_PrintArrayS32(const char* name, SInt32 count, const SInt32* values) {
  std::printf("array %s: ", name);
  PrintElements(count, [=](SInt32 i, const char* end) {
    std::printf("%ld%s", static_cast<long>(values[i]), end);
  });
}

void DGB_PrintArrayS32_WithIndex(const char* name, SInt32 count, const SInt32* values) {
  std::printf("array %s: ", name);
  PrintElements(count, [=](SInt32 i, const char* end) {
    std::printf("(%ld,%ld)%s", static_cast<long>(i), static_cast<long>(values[i]), end);
  });
}

void DGB_PrintArrayF64(const char* name, SInt32 count, const double* values) {
  std::printf("array %s: ", name);
  PrintElements(count, [=](SInt32 i, const char* end) { std::printf("%.2f%s", values[i], end); });
}

void DGB_PrintMatrixS32(const char* name, SInt32 rows, SInt32 columns, const SInt32* values) {
  std::printf("matrix %s: \n", name);
  for (SInt32 row = 0; row < rows; ++row, values += columns)
    PrintElements(columns, [=](SInt32 i, const char* end) {
      std::printf("%ld%s", static_cast<long>(values[i]), end);
    });
}
