#include "platform/linux/menubar/IconPixmap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "app/LuchadorArt.h"

namespace hushbox {
namespace {

using Pixel = std::array<int, 4>;

Pixel at(const IconPixmap& pixmap, int x, int y) {
  Pixel pixel{};
  for (std::size_t i = 0; i < 4; ++i)
    pixel[i] = pixmap.bytes[static_cast<std::size_t>(4 * (y * pixmap.size + x)) + i];
  return pixel;
}

/// A square in the upper left quarter of 10 by 10 points.
Image square(Color color, double alpha, bool isTemplate) {
  Image image;
  image.width = 10;
  image.height = 10;
  image.flipped = true;
  image.isTemplate = isTemplate;
  image.draw = [=](Canvas* canvas) {
    Path path;
    path.moveTo({0, 0});
    path.lineTo({5, 0});
    path.lineTo({5, 5});
    path.lineTo({0, 5});
    path.close();
    canvas->setAlpha(alpha);
    canvas->setFillColor(color);
    canvas->fill(path);
    return true;
  };
  return image;
}

double luminance(const Pixel& pixel) {
  const auto linear = [](int byte) {
    const double value = byte / 255.0;
    return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(pixel[1]) + 0.7152 * linear(pixel[2]) + 0.0722 * linear(pixel[3]);
}

double contrast(const Pixel& a, const Pixel& b) {
  const double one = luminance(a), other = luminance(b);
  return (std::max(one, other) + 0.05) / (std::min(one, other) + 0.05);
}

constexpr Pixel whitePanel{255, 255, 255, 255};
constexpr Pixel lightPanel{255, 0xf6, 0xf5, 0xf4};
constexpr Pixel darkPanel{255, 0x36, 0x36, 0x36};
constexpr Pixel blackPanel{255, 0, 0, 0};

TEST(IconPixmap, BytesAreAlphaRedGreenBlue) {
  const auto pixmap =
      IconPixmap::render(square(Color::systemRed, 1, false), 20, PanelTone::unknown);
  EXPECT_EQ(pixmap.bytes.size(), 20U * 20 * 4);
  EXPECT_EQ(at(pixmap, 3, 3), (Pixel{255, 0xed, 0x33, 0x3b}));
  EXPECT_EQ(at(pixmap, 15, 3), (Pixel{0, 0, 0, 0}));
}

TEST(IconPixmap, ColoursAreNotPremultiplied) {
  const auto pixmap =
      IconPixmap::render(square(Color::systemRed, 0.4, false), 20, PanelTone::unknown);
  const Pixel pixel = at(pixmap, 3, 3);
  EXPECT_EQ(pixel[0], 102);
  EXPECT_NEAR(pixel[1], 0xed, 2);
  EXPECT_NEAR(pixel[2], 0x33, 2);
  EXPECT_NEAR(pixel[3], 0x3b, 2);
}

TEST(IconPixmap, ColoursAreRoundedToTheNearest) {
  // Premultiplied, the channels are 95, 20 and 23 of 102; straight, 237.5, 50 and 57.5 of 255.
  const auto pixmap =
      IconPixmap::render(square(Color::systemRed, 0.4, false), 20, PanelTone::unknown);
  EXPECT_EQ(at(pixmap, 3, 3), (Pixel{102, 238, 50, 58}));
}

TEST(IconPixmap, OpacityOfTheEdgeIsRoundedToTheNearest) {
  // 80 % of 102, which is 81.6.
  const auto pixmap = IconPixmap::render(square(Color::black, 0.4, true), 40, PanelTone::dark);
  EXPECT_EQ(at(pixmap, 20, 10), (Pixel{82, 0, 0, 0}));
}

TEST(IconPixmap, ImageThatIsNotFlippedHasItsOriginBelow) {
  Image image = square(Color::black, 1, false);
  image.flipped = false;
  const auto pixmap = IconPixmap::render(image, 20, PanelTone::unknown);
  EXPECT_EQ(at(pixmap, 3, 3)[0], 0);
  EXPECT_EQ(at(pixmap, 3, 16)[0], 255);
}

TEST(IconPixmap, TintedImageKeepsItsColoursOnAnyPanel) {
  const Image image = LuchadorArt::menuBarImage(true, true, Color::systemRed);
  const auto pixmap = IconPixmap::render(image, 64, PanelTone::unknown);
  EXPECT_EQ(pixmap, IconPixmap::render(image, 64, PanelTone::dark));
  EXPECT_EQ(pixmap, IconPixmap::render(image, 64, PanelTone::light));
}

TEST(IconPixmap, TemplateHasEnoughContrastOnAPanelOfUnknownTone) {
  const auto pixmap = IconPixmap::render(LuchadorArt::menuBarImage(false, true, std::nullopt), 64,
                                         PanelTone::unknown);
  const Pixel cheek = at(pixmap, 45, 42);
  ASSERT_EQ(cheek[0], 255);
  EXPECT_GE(contrast(cheek, whitePanel), 3);
  EXPECT_GE(contrast(cheek, blackPanel), 3);
  EXPECT_GE(contrast(cheek, darkPanel), 3);
  EXPECT_GE(contrast(cheek, lightPanel), 2.9);
}

TEST(IconPixmap, TemplateIsWhiteOnADarkPanelAndDarkOnALightOne) {
  const Image image = LuchadorArt::menuBarImage(false, true, std::nullopt);
  EXPECT_GE(contrast(at(IconPixmap::render(image, 64, PanelTone::dark), 45, 42), darkPanel), 12);
  EXPECT_GE(contrast(at(IconPixmap::render(image, 64, PanelTone::light), 45, 42), lightPanel), 11);
}

TEST(IconPixmap, EdgeShowsTheShapeWhereTheGuessIsWrong) {
  const Image image = square(Color::black, 1, true);
  for (const PanelTone tone : {PanelTone::dark, PanelTone::light}) {
    const auto pixmap = IconPixmap::render(image, 40, tone);
    const Pixel edge = at(pixmap, 20, 10);
    EXPECT_GE(edge[0], 200);
    EXPECT_GE(contrast(edge, at(pixmap, 10, 10)), 12);
    EXPECT_EQ(at(pixmap, 25, 10)[0], 0);
  }
}

TEST(IconPixmap, TemplateKeepsItsOpacityAndItsHoles) {
  for (const PanelTone tone : {PanelTone::unknown, PanelTone::dark, PanelTone::light}) {
    const auto pixmap =
        IconPixmap::render(LuchadorArt::menuBarImage(true, false, std::nullopt), 64, tone);
    EXPECT_EQ(at(pixmap, 45, 42)[0], 102);
    EXPECT_EQ(at(pixmap, 44, 28)[0], 0);
  }
}

TEST(IconPixmap, ImageThatDrawsNothingIsTransparent) {
  Image image;
  image.width = 18;
  image.height = 18;
  image.isTemplate = true;
  const auto pixmap = IconPixmap::render(image, 16, PanelTone::dark);
  EXPECT_EQ(pixmap.bytes, std::vector<std::uint8_t>(16 * 16 * 4));
  image.width = 0;
  EXPECT_EQ(IconPixmap::render(image, 16, PanelTone::dark).bytes.size(), 16U * 16 * 4);
}

TEST(PanelTone, FollowsTheColourScheme) {
  EXPECT_EQ(guessPanelTone(ColorScheme::preferDark, "KDE"), PanelTone::dark);
  EXPECT_EQ(guessPanelTone(ColorScheme::preferLight, "KDE"), PanelTone::light);
  EXPECT_EQ(guessPanelTone(ColorScheme::noPreference, "XFCE"), PanelTone::unknown);
  EXPECT_EQ(guessPanelTone(ColorScheme::noPreference, ""), PanelTone::unknown);
}

TEST(PanelTone, ThemeOfThePanelPrecedesTheColourScheme) {
  EXPECT_EQ(guessPanelTone(ColorScheme::preferLight, "MATE", PanelTone::dark), PanelTone::dark);
  EXPECT_EQ(guessPanelTone(ColorScheme::preferDark, "LXQt", PanelTone::light), PanelTone::light);
}

TEST(PanelTone, BarsOfTilingCompositorsAreDarkByDefault) {
  for (const char* desktop : {"sway", "Hyprland", "sway:wlroots", "i3"}) {
    EXPECT_EQ(guessPanelTone(ColorScheme::noPreference, desktop), PanelTone::dark) << desktop;
    EXPECT_EQ(guessPanelTone(ColorScheme::preferLight, desktop), PanelTone::light) << desktop;
  }
}

TEST(PanelTone, SomeDesktopsAreKnownToRecolourIcons) {
  for (const char* desktop : {"GNOME", "ubuntu:GNOME", "KDE", "XFCE"})
    EXPECT_TRUE(recoloursSymbolicIcons(desktop)) << desktop;
  for (const char* desktop : {"", "MATE", "LXQt", "sway", "GNOME-Flashback"})
    EXPECT_FALSE(recoloursSymbolicIcons(desktop)) << desktop;
}

TEST(PanelTone, MatesPanelEnlargesPixels) {
  EXPECT_TRUE(enlargesPixels("MATE"));
  for (const char* desktop : {"", "GNOME", "KDE", "XFCE", "LXQt", "sway"})
    EXPECT_FALSE(enlargesPixels(desktop)) << desktop;
}

TEST(PanelTone, GnomesBarIsDarkInBothSchemes) {
  for (const char* desktop : {"GNOME", "ubuntu:GNOME", "GNOME-Classic:GNOME"})
    EXPECT_EQ(guessPanelTone(ColorScheme::preferLight, desktop), PanelTone::dark) << desktop;
  EXPECT_EQ(guessPanelTone(ColorScheme::preferLight, "GNOME-Flashback"), PanelTone::light);
}

}  // namespace
}  // namespace hushbox
