#pragma once

#include "platform/linux/bus/BoundedBusConnection.h"

namespace hushbox {

/// Sees to it that a session has one Hushbox: two would press Teams' button twice.
///
/// It holds the bundle identifier as a name on the session bus for as long as it lives. Main thread
/// only. Where the bus cannot be asked, nobody can tell, and this one counts as the first.
class SingleInstance {
 public:
  /// Asks the bus; blocks for two seconds at most, when the bus does not answer.
  SingleInstance();

  /// False when another Hushbox runs in this session.
  bool isFirst() const { return first_; }

 private:
  BoundedBusConnection connection_;
  bool first_ = true;
};

}  // namespace hushbox
