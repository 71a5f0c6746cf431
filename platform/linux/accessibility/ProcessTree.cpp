#include "platform/linux/accessibility/ProcessTree.h"

#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

namespace hushbox::process_tree {

namespace {

std::optional<std::int32_t> parentOf(std::int32_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  // "pid (name) state parent ...", where the name may contain anything.
  const auto nameEnd = text.rfind(')');
  if (nameEnd == text.npos) return std::nullopt;
  std::istringstream fields(text.substr(nameEnd + 1));
  char state = 0;
  std::int32_t parent = 0;
  if (!(fields >> state >> parent)) return std::nullopt;
  return parent;
}

}  // namespace

bool isWithin(std::int32_t process, std::int32_t ancestor) {
  // Processes may be replaced while this climbs, so it need not end by itself.
  constexpr int maxGenerations = 64;
  std::optional<std::int32_t> current = process;
  for (int i = 0; i < maxGenerations && current && *current > 0; ++i) {
    if (*current == ancestor) return parentOf(ancestor).has_value();
    current = parentOf(*current);
  }
  return false;
}

}  // namespace hushbox::process_tree
