#pragma once

#include <functional>

#include "platform/linux/bus/SessionBusConnection.h"
#include "support/Lifetime.h"
#include "support/Subscription.h"

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

  /// From now on, requests the name again whenever the bus connects without it: after the bus has
  /// crashed and is back, or was not there at first. Calls `displaced` from the main context if
  /// another Hushbox owns the name by then.
  void keep(std::function<void()> displaced);

 private:
  static BusCall requestName();
  void noteReply(const BusReply& reply);

  SessionBusConnection& bus_;
  bool isFirst_ = true;
  bool ownsName_ = false;
  std::function<void()> displaced_;
  Subscription busSubscription_;
  Lifetime lifetime_;
};

}  // namespace hushbox
