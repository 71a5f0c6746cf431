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

/// A private D-Bus connection with synchronous calls that time out and never run the main loop.
///
/// It has a main context of its own, which only these operations iterate, so no other callback runs
/// while a call waits. One thread. When the bus exits, the connection closes; the process goes on.
///
/// A peer that has let a call time out is not called again until it has replied to that call, or
/// until `abandonTimeout` has passed. So a frozen program costs one timeout, and is called again as
/// soon as it has thawed.
class BoundedBusConnection {
 public:
  /// After this long a call without a reply is abandoned, and its peer may be called again.
  static constexpr std::chrono::milliseconds abandonTimeout{30'000};

  BoundedBusConnection();
  /// Drops all calls without a reply.
  ~BoundedBusConnection();
  BoundedBusConnection(const BoundedBusConnection&) = delete;
  BoundedBusConnection& operator=(const BoundedBusConnection&) = delete;

  /// Connects to the message bus at `address`, closing any earlier connection. Returns false when
  /// that fails or takes longer than `timeout`.
  bool open(const std::string& address, std::chrono::milliseconds timeout);
  bool isOpen() const;
  void close();

  /// Connects directly to a peer that also listens at `address`. While that connection and the one
  /// to the bus are open, calls to the peer bypass the bus daemon. Returns false when it cannot
  /// connect, see PeerConnection::open(); calls then go over the bus.
  bool reach(const std::string& busName, const std::string& address, std::int32_t process,
             std::chrono::milliseconds timeout);

  /// Closes the direct connection to that peer, if there is one.
  void leave(const std::string& busName) { direct_.erase(busName); }

  /// Makes all calls at once and waits until each has its reply or has timed out. Never starts a
  /// program. Returns the replies in the order of the calls.
  std::vector<BusReply> ask(std::vector<BusCall> calls);

  /// Makes a call without waiting for its reply. Unlike ask(), lets the bus start the program that
  /// owns the name.
  void send(const BusCall& call);

  /// Makes a call whose reply does not matter, without waiting for it. Never starts a program.
  /// Returns false when it did not make the call: the connection is closed, or the peer has let an
  /// earlier call time out.
  bool post(const BusCall& call);

  /// Whether the peer has let a call time out and has not replied to it yet.
  bool hasTimedOut(const std::string& busName) const;

  /// Calls `handler` with the arguments of each such signal, from within ask() or dispatch(), until
  /// the connection is closed or the subscription is cancelled. Returns the subscription.
  guint subscribe(const char* sender, const char* interface, const char* member,
                  const char* argument0, std::function<void(GVariant*)> handler);
  /// Cancels a subscription; does nothing if the connection has been closed since. Must not be
  /// called by a handler.
  void unsubscribe(guint subscription);

  /// Handles the signals and late replies that have arrived; does not wait.
  void dispatch();

  /// The total time spent in calls of ask() in which a call timed out, and in failed reach().
  std::chrono::microseconds lostTime() const { return lostTime_; }

  /// The total number of calls made.
  std::uint64_t callCount() const { return callCount_; }
  /// The total number of waits for replies: one per ask() that had calls.
  std::uint64_t roundTripCount() const { return roundTripCount_; }

 private:
  struct Batch;
  struct PendingCalls;

  /// The open connection directly to a peer; null for none.
  PeerConnection* directTo(const std::string& busName);
  void start(const BusCall& call, const std::shared_ptr<Batch>& batch, std::size_t index);

  GMainContext* const context_;
  ConnectionPointer connection_;
  /// Connections directly to peers, by their names on the bus.
  std::map<std::string, std::unique_ptr<PeerConnection>> direct_;
  CancellablePointer cancellable_;
  std::vector<guint> subscriptions_;
  std::shared_ptr<PendingCalls> pending_;
  std::uint64_t callCount_ = 0;
  std::uint64_t roundTripCount_ = 0;
  std::chrono::microseconds lostTime_{};
};

}  // namespace hushbox
