#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/linux/accessibility/CallBudget.h"
#include "platform/linux/bus/BoundedBusConnection.h"
#include "platform/linux/bus/CallBatch.h"

namespace hushbox {

/// The session's accessibility bus and the switch that turns accessibility on. Main thread only.
///
/// The session bus has the switch (org.a11y.Status, IsEnabled) and the address of the accessibility
/// bus. Both connections are private, opened when first needed, and opened again without a word
/// when a bus has died and come back. Only `enable()` starts a program.
class AtspiBus {
 public:
  /// The bus daemons and the switch reply within a millisecond unless something is badly wrong.
  static constexpr std::chrono::milliseconds busTimeout{1000};

  /// The switch that turns accessibility on. Off also when nothing provides it, or when there is no
  /// session bus to ask.
  enum class Switch {
    off,
    on,
    unknown,  ///< Its owner has not replied in time, and never has before.
  };

  /// Reads the switch. Its change signals keep the answer up to date, so asking again costs no
  /// call. While its owner does not reply, the last answer holds.
  Switch readSwitch();

  /// Turns the switch on, starting the program that provides it, and does not wait for that. A
  /// desktop keeps the setting for later sessions. Chromium reads the switch only when it starts.
  void enable();

  /// Connects to the accessibility bus if necessary. Returns false when there is none or it times
  /// out, and then does not try again for a second.
  bool connect();

  /// Grows with each new connection: unique names from before mean nothing any more.
  std::uint64_t generation() const { return generation_; }

  /// Makes the calls to programs on the accessibility bus and charges the budget with what they
  /// lose; see BoundedBusConnection::ask().
  void send(CallBatch& batch);
  /// The same for programs not called before: what they lose does not shorten the timeout of
  /// others.
  void sendToStrangers(CallBatch& batch);
  BusReply ask(BusCall call);
  /// Makes a call whose reply does not matter; see BoundedBusConnection::post().
  bool post(const BusCall& call) { return accessibility_.post(call); }
  /// Calls a program over a connection of its own from now on, if possible; see
  /// BoundedBusConnection::reach().
  bool reach(const std::string& busName, const std::string& address, std::int32_t process,
             std::chrono::milliseconds timeout);

  /// Calls `exited` when that program leaves the accessibility bus, from within a call to the bus
  /// or connect(). Returns the subscription for unwatch().
  unsigned watch(const std::string& busName, std::function<void()> exited);
  /// Ends the watch and closes the connection that is the program's own. Must not be called by
  /// `exited`.
  void unwatch(const std::string& busName, unsigned subscription);

  /// The budget of calls to programs on the accessibility bus.
  void setTimeout(std::chrono::milliseconds timeout) { budget_.setTimeout(timeout); }
  void beginBudget() { budget_.begin(); }
  std::chrono::milliseconds timeout() const { return budget_.timeout(); }

  /// How many calls have been made on both buses.
  std::uint64_t callCount() const { return session_.callCount() + accessibility_.callCount(); }
  /// How often replies have been waited for on both buses.
  std::uint64_t roundTripCount() const {
    return session_.roundTripCount() + accessibility_.roundTripCount();
  }

 private:
  using Moment = std::chrono::steady_clock::time_point;

  bool connectSession();
  void askSwitch();
  std::optional<std::string> askAddress();

  BoundedBusConnection session_;
  BoundedBusConnection accessibility_;
  CallBudget budget_;
  /// The last answer on this connection to the session bus, and whether it may have changed since.
  Switch switch_ = Switch::unknown;
  bool isSwitchStale_ = true;
  Moment nextSessionAttempt_{};
  Moment nextAttempt_{};
  std::uint64_t generation_ = 0;
};

}  // namespace hushbox
