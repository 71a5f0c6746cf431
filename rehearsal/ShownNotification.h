#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace hushbox::rehearsal {

/// One notification that a program asked for on the session bus.
struct ShownNotification {
  std::string application;
  std::string icon;
  std::string title;
  std::string body;
  std::vector<std::string> actions;
  std::string soundName;       ///< Hint "sound-name"; empty when absent.
  std::uint32_t replaces = 0;  ///< The id that it is to replace; 0 for a new one.
  std::uint32_t id = 0;        ///< What the daemon answered; 0 while it has not answered.
  std::string error;           ///< The error's name when the daemon, or the bus for it, refused.
  std::chrono::steady_clock::time_point when;
};

}  // namespace hushbox::rehearsal
