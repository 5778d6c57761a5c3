#include <gtest/gtest.h>

#include <cstring>

#include "QT_Planar_Pixmaps.h"
#include "big_endian.h"

namespace {

TEST(PlanarPixmaps, HaveTheirHeader) {
  const struct {
    SInt32 width, height;
    UInt32 fields[6];
    UInt32 size;
  } cases[] = {{720, 576, {32, 736, 423968, 368, 529952, 368}, 635936},
               {1, 1, {32, 32, 160, 16, 192, 16}, 224},
               {1920, 1080, {32, 1920, 2073632, 960, 2592032, 960}, 3110432}};
  for (const auto& c : cases) {
    PlanarPixmapInfoYUV420 header;
    std::memset(&header, 0x5A, sizeof header);
    QT_SetY420_Header(&header, c.height, c.width);
    UInt8 bytes[sizeof header];
    std::memcpy(bytes, &header, sizeof bytes);
    for (int i = 0; i < 6; ++i)
      EXPECT_EQ(quillmere::ReadU32(bytes + 4 * i), c.fields[i]) << i;
    EXPECT_EQ(header.unused[1], 0x5A5A5A5A);
    EXPECT_EQ(QT_GetY420_FrameSize(c.height, c.width), c.size);
    QT_FlipPlanarPixmapInfoYUV420_BtoN(&header);
    EXPECT_EQ(header.rowBytesY, c.fields[1]);
  }
}

}  // namespace
