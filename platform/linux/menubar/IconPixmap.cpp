#include "platform/linux/menubar/IconPixmap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>

#include "platform/linux/menubar/CairoCanvas.h"
#include "platform/linux/menubar/Rgb.h"
#include "platform/linux/menubar/TonedIcon.h"

namespace hushbox {
namespace {

struct Colouring {
  Rgb fill;
  Rgb edge;
  double edgeOpacity;
};

Colouring colouringFor(PanelTone panel) {
  constexpr Rgb middleGrey{0x90, 0x90, 0x90};
  const auto toned = TonedIcon::on(panel);
  if (!toned) return {middleGrey, middleGrey, 0};
  return {toned->fill, toned->edge, TonedIcon::edgeOpacity};
}

/// In pixels; thinner than one would be invisible.
double edgeWidth(int size) {
  return std::max(1.0, size * TonedIcon::edgeWidth);
}

struct SurfaceDestroy {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDestroy>;

Surface draw(const Image& image, int size) {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, size, size));
  cairo_t* context = cairo_create(surface.get());
  cairo_scale(context, size / image.width, size / image.height);
  if (!image.flipped) {
    cairo_translate(context, 0, image.height);
    cairo_scale(context, 1, -1);
  }
  CairoCanvas canvas(context);
  if (image.draw) image.draw(&canvas);
  cairo_destroy(context);
  cairo_surface_flush(surface.get());
  return surface;
}

/// The pixels of the surface in the format of IconPixmap.
std::vector<std::uint8_t> straightArgb(cairo_surface_t* surface, int size) {
  std::vector<std::uint8_t> bytes;
  const auto pixels = static_cast<std::size_t>(size) * static_cast<std::size_t>(size);
  bytes.reserve(pixels * 4);
  const unsigned char* data = cairo_image_surface_get_data(surface);
  if (!data) return std::vector<std::uint8_t>(pixels * 4);
  const int stride = cairo_image_surface_get_stride(surface);
  for (int y = 0; y < size; ++y) {
    const auto* row = reinterpret_cast<const std::uint32_t*>(data + std::ptrdiff_t{y} * stride);
    for (int x = 0; x < size; ++x) {
      const std::uint32_t alpha = row[x] >> 24;
      bytes.push_back(static_cast<std::uint8_t>(alpha));
      for (const int shift : {16, 8, 0}) {
        const std::uint32_t channel = row[x] >> shift & 0xff;
        bytes.push_back(static_cast<std::uint8_t>(alpha ? (channel * 255 + alpha / 2) / alpha : 0));
      }
    }
  }
  return bytes;
}

/// How much a disc around a pixel covers of each pixel near it. The same for all pixels, so it is
/// calculated once per picture.
class Disc {
 public:
  struct Cover {
    int dx, dy;
    /// From 0 to 1.
    double part;
  };

  explicit Disc(double radius) : reach_(static_cast<int>(std::ceil(radius))) {
    for (int dy = -reach_; dy <= reach_; ++dy) {
      for (int dx = -reach_; dx <= reach_; ++dx) {
        const double part = std::clamp(radius + 0.5 - std::hypot(dx, dy), 0.0, 1.0);
        if (part > 0) covers_.push_back({dx, dy, part});
      }
    }
  }

  const std::vector<Cover>& covers() const { return covers_; }
  /// No pixel that it covers is further away, in either direction.
  int reach() const { return reach_; }

 private:
  int reach_;
  std::vector<Cover> covers_;
};

/// Opacities from 0 to 1, with a transparent margin on each side.
class AlphaMap {
 public:
  AlphaMap(const std::vector<std::uint8_t>& argb, int size, int margin)
      : margin_(margin), stride_(size + 2 * margin) {
    values_.resize(static_cast<std::size_t>(stride_) * static_cast<std::size_t>(stride_));
    auto alpha = argb.begin();
    for (int y = 0; y < size; ++y)
      for (int x = 0; x < size; ++x, alpha += 4) values_[index(x, y)] = *alpha / 255.0;
  }

  double at(int x, int y) const { return values_[index(x, y)]; }

  /// The greatest opacity under a disc around (x, y), which reaches no further than the margin.
  double grown(int x, int y, const Disc& disc) const {
    double max = 0;
    for (const Disc::Cover& cover : disc.covers())
      max = std::max(max, cover.part * at(x + cover.dx, y + cover.dy));
    return max;
  }

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y + margin_) * static_cast<std::size_t>(stride_) +
           static_cast<std::size_t>(x + margin_);
  }

  int margin_;
  int stride_;
  std::vector<double> values_;
};

std::uint8_t toByte(double value) {
  return static_cast<std::uint8_t>(std::lround(value));
}

/// Fills the shape and draws an edge around it.
void recolour(std::vector<std::uint8_t>& argb, int size, const Colouring& colouring) {
  const Disc edge(edgeWidth(size));
  const AlphaMap shape(argb, size, edge.reach());
  auto byte = argb.begin();
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const double inner = shape.at(x, y);
      // An opaque pixel shows nothing of the edge.
      const double outer =
          inner < 1 ? std::max(shape.grown(x, y, edge) - inner, 0.0) * colouring.edgeOpacity : 0;
      const double alpha = inner + outer;
      const auto mix = [&](std::uint8_t fill, std::uint8_t border) {
        return alpha > 0 ? toByte((fill * inner + border * outer) / alpha) : std::uint8_t{0};
      };
      *byte++ = toByte(alpha * 255);
      *byte++ = mix(colouring.fill.red, colouring.edge.red);
      *byte++ = mix(colouring.fill.green, colouring.edge.green);
      *byte++ = mix(colouring.fill.blue, colouring.edge.blue);
    }
  }
}

}  // namespace

IconPixmap IconPixmap::render(const Image& image, int size, PanelTone panel) {
  IconPixmap pixmap{size, straightArgb(draw(image, size).get(), size)};
  if (image.isTemplate) recolour(pixmap.bytes, size, colouringFor(panel));
  return pixmap;
}

}  // namespace hushbox
