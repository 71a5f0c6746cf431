#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace hushbox::rehearsal {

/// One Notify call on the session bus and its reply.
struct ShownNotification {
  std::string application;
  std::string icon;
  std::string title;
  std::string body;
  std::vector<std::string> actions;
  std::string soundName;       ///< Hint "sound-name"; empty when absent.
  std::uint32_t replaces = 0;  ///< The id of the notification to replace; 0 for a new one.
  std::uint32_t id = 0;        ///< The id that the daemon replied; 0 until the reply arrives.
  std::string error;           ///< The D-Bus error name of the reply; empty without an error.
  std::chrono::steady_clock::time_point when;
};

}  // namespace hushbox::rehearsal
