// redraw_instructions SIZE N: draws the icon N times for a panel, SIZE pixels wide. script/bench
// runs it under callgrind, which counts the instructions of hushboxMeasured() only.

#include <cstdio>
#include <cstdlib>

#include "app/LuchadorArt.h"
#include "platform/linux/menubar/IconPixmap.h"

/// The function between whose entry and exit callgrind counts.
extern "C" [[gnu::noinline]] void hushboxMeasured(int size, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    const hushbox::Image image = hushbox::LuchadorArt::menuBarImage(true, true, std::nullopt);
    const auto icon = hushbox::IconPixmap::render(image, size, hushbox::PanelTone::dark);
    if (icon.bytes.empty()) std::abort();
  }
}

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: redraw_instructions SIZE N\n");
    return 2;
  }
  hushboxMeasured(std::atoi(argv[1]), std::atoi(argv[2]));
  return 0;
}
