// What a person writes in C to control a meeting's microphone button: a program on libatspi, with
// its defaults. "look" finds the button. "watch SECONDS" reads it once a second on a main loop, as
// Hushbox does, and answers with the longest time in milliseconds in which nothing else could run.

#include <atspi/atspi.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "benchmarks/baselines/Commands.h"
#include "benchmarks/baselines/LoopGap.h"

namespace hushbox::baselines {
namespace {

bool isButton(AtspiAccessible* element) {
  if (atspi_accessible_get_role(element, nullptr) != ATSPI_ROLE_PUSH_BUTTON) return false;
  char* const name = atspi_accessible_get_name(element, nullptr);
  const bool matches = name && std::strstr(name, "mic (");
  g_free(name);
  return matches;
}

/// The first button at or below the element, depth first; the caller owns the reference.
AtspiAccessible* find(AtspiAccessible* element) {
  if (isButton(element)) return ATSPI_ACCESSIBLE(g_object_ref(element));
  const int count = atspi_accessible_get_child_count(element, nullptr);
  for (int i = 0; i < count; ++i) {
    AtspiAccessible* const child = atspi_accessible_get_child_at_index(element, i, nullptr);
    if (!child) continue;
    AtspiAccessible* const found = find(child);
    g_object_unref(child);
    if (found) return found;
  }
  return nullptr;
}

class Client {
 public:
  double answer(const std::string& command) {
    if (command.starts_with("watch")) return watch(std::atoi(command.c_str() + 5));
    return timed([this] {
      AtspiAccessible* const desktop = atspi_get_desktop(0);
      button_ = find(desktop);
      g_object_unref(desktop);
      return button_ != nullptr;
    });
  }

 private:
  double watch(int seconds) {
    return longestGap(seconds, [this] {
      atspi_accessible_clear_cache(button_);
      g_free(atspi_accessible_get_name(button_, nullptr));
    });
  }

  AtspiAccessible* button_ = nullptr;
};

}  // namespace
}  // namespace hushbox::baselines

int main() {
  atspi_init();
  hushbox::baselines::Client client;
  return hushbox::baselines::answerCommands(
      [&](const std::string& command) { return client.answer(command); });
}
