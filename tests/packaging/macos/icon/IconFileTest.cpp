// Reads the icon file that the build has written and compares it with the geometry of the mask.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace hushbox {
namespace {

using Pixel = std::array<int, 4>;

std::uint32_t bigEndian(const std::string& bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes.at(at + i));
  }
  return value;
}

/// A decoded PNG file of eight bits per channel with opacity and unfiltered rows.
struct Picture {
  std::size_t width = 0;
  std::size_t height = 0;
  std::string rows;

  explicit Picture(const std::string& file) {
    EXPECT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1A\n");
    std::string packed;
    for (std::size_t at = 8; at < file.size();) {
      const std::size_t size = bigEndian(file, at);
      const std::string type = file.substr(at + 4, 4);
      const std::string data = file.substr(at + 8, size);
      const std::string checked = type + data;
      EXPECT_EQ(bigEndian(file, at + 8 + size),
                crc32(0, reinterpret_cast<const Bytef*>(checked.data()),
                      static_cast<uInt>(checked.size())));
      if (type == "IHDR") {
        width = bigEndian(data, 0);
        height = bigEndian(data, 4);
        EXPECT_EQ(data.substr(8), std::string("\x08\x06\0\0\0", 5));
      }
      if (type == "IDAT") packed += data;
      at += 12 + size;
    }
    rows.resize(height * (width * 4 + 1));
    uLongf size = rows.size();
    EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(rows.data()), &size,
                         reinterpret_cast<const Bytef*>(packed.data()), packed.size()),
              Z_OK);
    EXPECT_EQ(size, rows.size());
  }

  /// The pixel at a place on the grid of 1024.
  Pixel at(double x, double y) const {
    const auto column = static_cast<std::size_t>(x / 1024 * static_cast<double>(width));
    const auto row = static_cast<std::size_t>(y / 1024 * static_cast<double>(height));
    Pixel pixel{};
    for (std::size_t i = 0; i < 4; ++i) {
      pixel[i] = static_cast<unsigned char>(rows.at(row * (width * 4 + 1) + 1 + column * 4 + i));
    }
    return pixel;
  }
  /// The pixel at a place on the mask, whose grid of 100 covers 620 units in the middle.
  Pixel onMask(double x, double y) const { return at(202 + 6.2 * x, 202 + 6.2 * y); }
};

class IconFileTest : public testing::Test {
 protected:
  IconFileTest() {
    std::ifstream stream(ICON_FILE, std::ios::binary);
    const std::string file{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(file.substr(0, 4), "icns");
    EXPECT_EQ(bigEndian(file, 4), file.size());
    for (std::size_t at = 8; at < file.size(); at += bigEndian(file, at + 4)) {
      entries.emplace(file.substr(at, 4),
                      Picture(file.substr(at + 8, bigEndian(file, at + 4) - 8)));
    }
  }

  std::map<std::string, Picture> entries;
};

bool isNear(const Pixel& a, const Pixel& b, int tolerance) {
  for (std::size_t i = 0; i < 4; ++i) {
    if (std::abs(a[i] - b[i]) > tolerance) return false;
  }
  return true;
}

// macOS draws icp4 and icp5 garbled for applications if they are PNG files. It scales ic11 instead.
TEST_F(IconFileTest, HasTheSizesThatMacOSReadsAsPng) {
  std::map<std::string, std::size_t> sizes;
  for (const auto& [type, picture] : entries) {
    EXPECT_EQ(picture.width, picture.height) << type;
    sizes[type] = picture.width;
  }
  EXPECT_THAT(sizes, testing::ElementsAre(testing::Pair("ic07", 128), testing::Pair("ic08", 256),
                                          testing::Pair("ic09", 512), testing::Pair("ic10", 1024),
                                          testing::Pair("ic11", 32), testing::Pair("ic12", 64),
                                          testing::Pair("ic13", 256), testing::Pair("ic14", 512)));
}

TEST_F(IconFileTest, EveryPictureShowsTheMaskOnItsTile) {
  constexpr Pixel tile{0x2B, 0x2D, 0x42, 255};
  constexpr Pixel mask{0xF4, 0xF4, 0xF6, 255};
  for (const auto& [type, picture] : entries) {
    // In small pictures a pixel is as wide as a hole's edge.
    const int tolerance = picture.width < 128 ? 80 : 0;
    EXPECT_EQ(picture.at(0, 0)[3], 0) << type;
    EXPECT_EQ(picture.at(512, 40)[3], 0) << type;
    EXPECT_EQ(picture.at(1023, 1023)[3], 0) << type;
    for (const auto& [x, y] : {std::pair{2, 2}, {98, 2}, {2, 96}, {98, 96}}) {
      EXPECT_TRUE(isNear(picture.onMask(x, y), tile, tolerance))
          << type << " corner " << x << ' ' << y;
    }
    for (const auto& [x, y] : {std::pair{50, 22}, {33, 46}, {67, 46}, {50, 75}}) {
      EXPECT_TRUE(isNear(picture.onMask(x, y), tile, tolerance))
          << type << " hole " << x << ' ' << y;
    }
    for (const auto& [x, y] :
         {std::pair{50, 60}, {18, 64}, {82, 64}, {50, 41}, {50, 89}, {25, 22}}) {
      EXPECT_TRUE(isNear(picture.onMask(x, y), mask, tolerance))
          << type << " face " << x << ' ' << y;
    }
  }
}

}  // namespace
}  // namespace hushbox
