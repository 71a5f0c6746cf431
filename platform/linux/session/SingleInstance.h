#pragma once

#include "platform/linux/bus/SessionBusConnection.h"

namespace hushbox {

/// Tells whether this is the only Hushbox in the session: two would press Teams' button twice.
///
/// It owns the bundle identifier as a name on the session bus for as long as `bus` stays connected.
/// Main thread only. Where the bus does not answer, this one counts as the first.
class SingleInstance {
 public:
  /// How long the bus may take to connect and to answer.
  static constexpr std::chrono::milliseconds timeout{1000};

  /// Requests the name; blocks for `timeout` at most. For the time before the main loop runs.
  explicit SingleInstance(SessionBusConnection& bus);

  /// False when another Hushbox runs in this session.
  bool isFirst() const { return isFirst_; }

 private:
  bool isFirst_ = true;
};

}  // namespace hushbox
