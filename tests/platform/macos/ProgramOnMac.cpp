#include "tests/platform/macos/ProgramOnMac.h"

namespace hushbox {

void setBattery(int level, const std::string& state) {
  doubles::scriptTask("/usr/bin/pmset", {"-g", "accps"},
                      {.output = " -Jabra Speak2 75 (id=1)\t" + std::to_string(level) + "%; " +
                                 state + "; present: true\n"});
}

std::vector<std::string> rowTitles() {
  std::vector<std::string> titles;
  for (const doubles::MenuItem& item : doubles::menuItems())
    titles.push_back(item.separator ? "---" : item.title);
  return titles;
}

}  // namespace hushbox
