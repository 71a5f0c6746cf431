#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusReply.h"
#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/bus/PeerConnection.h"

namespace hushbox {

/// A D-Bus connection of our own whose calls are bounded in time and never run the main loop.
///
/// It lives on a main context of its own, which is iterated only inside these operations: nobody
/// else's callback runs while an answer is waited for. One thread. The bus's end closes the
/// connection and never ends the process.
///
/// A peer that has not answered in time is *silent* until it answers after all, or until
/// `answerLimit` has passed: until then it is not asked again and costs no time. So a frozen
/// program is waited for once, and taken up again as soon as it has thawed.
class BoundedBusConnection {
 public:
  /// After this long an unanswered question is given up, and the peer may be asked anew.
  static constexpr std::chrono::milliseconds answerLimit{30'000};

  BoundedBusConnection();
  /// Gives up all unanswered questions.
  ~BoundedBusConnection();
  BoundedBusConnection(const BoundedBusConnection&) = delete;
  BoundedBusConnection& operator=(const BoundedBusConnection&) = delete;

  /// Connects to the message bus at `address` in place of an earlier connection. False when that
  /// fails or takes longer than `wait`.
  bool open(const std::string& address, std::chrono::milliseconds wait);
  bool isOpen() const;
  void close();

  /// Connects straight to a peer on the bus, who listens at `address`: as long as that connection
  /// and the bus's last, calls to him go there, sparing them the bus daemon's part. False when that
  /// does not come about, see PeerConnection::open(); his calls go over the bus then.
  bool reach(const std::string& busName, const std::string& address, std::int32_t process,
             std::chrono::milliseconds wait);

  /// Makes the calls all at once and waits until each has been answered or has outlasted its own
  /// wait. Nothing is started to answer them. The replies come in the order of the calls.
  std::vector<BusReply> ask(std::vector<BusCall> calls);

  /// Makes a call whose answer nobody needs and, alone among these, lets the bus start the program
  /// that answers to the name.
  void send(const BusCall& call);

  bool isSilent(const std::string& busName) const;

  /// Calls `handler` with a signal's arguments, from inside `ask()` or `dispatch()`, until the
  /// connection is closed.
  void subscribe(const char* sender, const char* interface, const char* member,
                 const char* argument0, std::function<void(GVariant*)> handler);

  /// Handles the signals and late answers that have arrived; does not wait.
  void dispatch();

  /// How long has been waited in vain since the beginning: in calls of `ask()` that left something
  /// unanswered.
  std::chrono::microseconds lostTime() const { return lostTime_; }

  /// How many calls have been made since the beginning.
  std::uint64_t callCount() const { return callCount_; }

 private:
  struct Batch;
  struct Unanswered;

  /// The connection straight to a peer; null when there is none any more.
  PeerConnection* directTo(const std::string& busName);
  void start(const BusCall& call, const std::shared_ptr<Batch>& batch, std::size_t index);
  GMainContext* const context_;
  ConnectionPointer connection_;
  /// Straight to peers, by their names on the bus.
  std::map<std::string, std::unique_ptr<PeerConnection>> direct_;
  CancellablePointer cancellable_;
  std::vector<guint> subscriptions_;
  std::shared_ptr<Unanswered> unanswered_;
  std::uint64_t callCount_ = 0;
  std::chrono::microseconds lostTime_{};
};

}  // namespace hushbox
