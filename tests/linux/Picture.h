#pragma once

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

namespace hushbox {

/// What an area of the display shows, from a PNG file.
class Picture {
 public:
  /// Red, green and blue, from 0 to 255.
  using Pixel = std::array<int, 3>;

  explicit Picture(const std::filesystem::path& file)
      : surface_(cairo_image_surface_create_from_png(file.c_str())) {}
  ~Picture() { cairo_surface_destroy(surface_); }
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;

  /// Where the pictures that tests take stay: the folder that HUSHBOX_SCREENSHOTS names, by default
  /// one in the build folder.
  static std::filesystem::path folder() {
    const char* chosen = std::getenv("HUSHBOX_SCREENSHOTS");
    std::filesystem::path folder = chosen ? chosen : HUSHBOX_SCREENSHOT_FOLDER;
    std::filesystem::create_directories(folder);
    return folder;
  }

  int width() const { return cairo_image_surface_get_width(surface_); }
  int height() const { return cairo_image_surface_get_height(surface_); }

  Pixel at(int x, int y) const {
    const auto* row = cairo_image_surface_get_data(surface_) +
                      std::ptrdiff_t{y} * cairo_image_surface_get_stride(surface_);
    const std::uint32_t pixel = reinterpret_cast<const std::uint32_t*>(row)[x];
    return {static_cast<int>(pixel >> 16 & 0xff), static_cast<int>(pixel >> 8 & 0xff),
            static_cast<int>(pixel & 0xff)};
  }

  template <typename Predicate>
  int count(Predicate predicate) const {
    int hits = 0;
    for (int y = 0; y < height(); ++y)
      for (int x = 0; x < width(); ++x) hits += predicate(at(x, y));
    return hits;
  }

  /// The greatest difference in one colour.
  static int difference(const Pixel& a, const Pixel& b) {
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
  }

  /// How many pixels stand out from the background, which the left edge shows.
  int standingOut() const {
    const Pixel background = at(0, 2);
    return count([&](const Pixel& pixel) { return difference(pixel, background) > 24; });
  }

 private:
  cairo_surface_t* surface_;
};

}  // namespace hushbox
