#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/BoundedBusConnection.h"

namespace hushbox {

/// The session's accessibility bus and the switch that turns accessibility on. Main thread only.
///
/// The session bus knows the switch (org.a11y.Status, IsEnabled) and where the accessibility bus
/// is. Both connections are our own and private, made when first needed and made anew, quietly,
/// when a bus has died and come back. Looking starts no program; only `enable()` does.
class AtspiBus {
 public:
  /// The bus daemons and the switch answer within a millisecond unless something is badly wrong.
  static constexpr std::chrono::milliseconds busWait{1000};

  /// Whether accessibility is switched on. Told by the switch's own change signals, so that asking
  /// again costs no call; false when it cannot be told.
  bool isEnabled();

  /// Turns the switch on, starting what provides it, and does not wait for it. A desktop keeps the
  /// setting for later sessions. Programs on Chromium look at the switch once, when they start.
  void enable();

  /// Connects to the accessibility bus if necessary. False when there is none, or not in time;
  /// then for a second nothing more is tried.
  bool connect();

  /// Grows with each new connection: unique names learnt before it have lost their meaning.
  std::uint64_t generation() const { return generation_; }

  /// Asks programs on the accessibility bus; see BoundedBusConnection::ask().
  std::vector<BusReply> ask(std::vector<BusCall> calls) {
    return accessibility_.ask(std::move(calls));
  }
  BusReply ask(BusCall call);
  /// Asks a program straight from now on, if it can be; see BoundedBusConnection::reach().
  bool reach(const std::string& busName, const std::string& address, std::int32_t process,
             std::chrono::milliseconds wait) {
    return accessibility_.reach(busName, address, process, wait);
  }
  bool isSilent(const std::string& busName) const { return accessibility_.isSilent(busName); }

  /// How long programs on the accessibility bus have been waited for in vain since the beginning.
  std::chrono::microseconds lostTime() const { return accessibility_.lostTime(); }

  /// How many calls have been made on both buses since the beginning.
  std::uint64_t callCount() const { return session_.callCount() + accessibility_.callCount(); }

 private:
  using Moment = std::chrono::steady_clock::time_point;

  bool connectSession();
  std::optional<bool> askEnabled();
  std::optional<std::string> askAddress();

  BoundedBusConnection session_;
  BoundedBusConnection accessibility_;
  std::optional<bool> enabled_;
  Moment nextSessionAttempt_{};
  Moment nextAttempt_{};
  std::uint64_t generation_ = 0;
};

}  // namespace hushbox
