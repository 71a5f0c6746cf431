// Draws the icons of a Linux installation from the mask of the menu bar: the application's icon and
// its symbolic version, an icon for each state that has no colour of its own, symbolic and in the
// tones for dark and light panels, and a coloured icon for each of the others.
//
//   hushbox-icons FOLDER     FOLDER is a folder of themes, such as share/icons

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "app/LuchadorArt.h"
#include "packaging/linux/icons/SvgCanvas.h"
#include "platform/linux/menubar/Rgb.h"
#include "platform/linux/menubar/TonedIcon.h"

namespace hushbox {
namespace {

std::string header(const std::string& size, const std::string& view) {
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + size + "\" height=\"" + size +
         "\" viewBox=\"0 0 " + view + ' ' + view + "\">\n";
}

/// The outlines of a square image, drawn at that size.
std::string paths(const Image& image, double size, const std::string& attributes) {
  SvgCanvas canvas;
  canvas.scale(size / image.width, size / image.height);
  image.draw(&canvas);
  return canvas.paths(attributes);
}

/// A GTK desktop replaces the fills of a symbolic icon, KDE and LXQt replace the style element with
/// this name. The colour that is written here shows on panels that do neither: a grey with a
/// contrast of 3:1 to white and to black.
std::string symbolic(const Image& image) {
  return header("16", "100") +
         "  <style type=\"text/css\" id=\"current-color-scheme\">"
         ".ColorScheme-Text{color:#909090;}</style>\n" +
         paths(image, 100, "class=\"ColorScheme-Text\" style=\"fill:currentColor\"") + "</svg>\n";
}

std::string attribute(const char* name, Rgb color) {
  char text[32];
  std::snprintf(text, sizeof text, "%s=\"#%02x%02x%02x\" ", name, color.red, color.green,
                color.blue);
  return text;
}

std::string coloured(const Image& image, Color color) {
  return header("16", "100") + paths(image, 100, attribute("fill", rgbOf(color))) + "</svg>\n";
}

/// Of the stroke, the half outside the fill shows. So the edge is half as wide as that of pixels,
/// which is softer.
std::string toned(const Image& image, const TonedIcon& icon) {
  char stroke[96];
  std::snprintf(stroke, sizeof stroke,
                "stroke-opacity=\"%g\" stroke-width=\"%g\" paint-order=\"stroke\"",
                TonedIcon::edgeOpacity, TonedIcon::edgeWidth * 100);
  return header("16", "100") +
         paths(image, 100, attribute("fill", icon.fill) + attribute("stroke", icon.edge) + stroke) +
         "</svg>\n";
}

/// The mask on a dark tile.
std::string application(const Image& image) {
  return header("128", "128") +
         "  <rect x=\"8\" y=\"8\" width=\"112\" height=\"112\" rx=\"25\" fill=\"#2b2d42\"/>\n"
         "  <g transform=\"translate(22 22)\">\n" +
         paths(image, 84, "fill=\"#f4f4f6\"") + "  </g>\n</svg>\n";
}

bool write(const std::filesystem::path& file, const std::string& text) {
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  std::ofstream stream(file, std::ios::binary);
  stream << text << std::flush;
  if (!stream) std::fprintf(stderr, "hushbox-icons: can't write %s.\n", file.c_str());
  return static_cast<bool>(stream);
}

int writeAll(const std::filesystem::path& themes) {
  const auto theme = themes / "hicolor";
  const Image mask = LuchadorArt::menuBarImage(false, true, std::nullopt);
  bool written = write(theme / "scalable/apps/org.hushbox.Hushbox.svg", application(mask));
  written &= write(theme / "symbolic/apps/org.hushbox.Hushbox-symbolic.svg", symbolic(mask));
  for (const bool muted : {false, true}) {
    for (const bool connected : {false, true}) {
      const Image image = LuchadorArt::menuBarImage(muted, connected, std::nullopt);
      const std::string name = image.name + "-symbolic.svg";
      written &= write(theme / "symbolic/apps" / name, symbolic(image));
      for (const PanelTone panel : {PanelTone::dark, PanelTone::light}) {
        const TonedIcon icon = *TonedIcon::on(panel);
        const std::string file = image.name + std::string(icon.suffix) + ".svg";
        written &= write(theme / "scalable/apps" / file, toned(image, icon));
      }
    }
  }
  // A call that is live, and one that is muted.
  for (const auto& [muted, color] :
       {std::pair(false, Color::systemGreen), {true, Color::systemRed}}) {
    const Image image = LuchadorArt::menuBarImage(muted, true, color);
    written &= write(theme / "scalable/apps" / (image.name + ".svg"), coloured(image, color));
  }
  return written ? 0 : 1;
}

}  // namespace
}  // namespace hushbox

int main(int count, char** arguments) {
  if (count == 2) return hushbox::writeAll(arguments[1]);
  std::fprintf(stderr, "hushbox-icons FOLDER\n");
  return 2;
}
