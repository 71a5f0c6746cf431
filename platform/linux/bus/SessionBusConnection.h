#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/BusReply.h"
#include "platform/linux/bus/GLibPointers.h"
#include "support/Lifetime.h"
#include "support/Subscription.h"

namespace hushbox {

/// The program's connection to the session bus, shared by all who export objects there or call
/// other programs without waiting for them. Main thread and default main context only.
///
/// It is the connection that GLib shares in the process, so that settings storage uses it too. The
/// end of the bus closes it without ending the program. GLib keeps returning that closed connection
/// as long as anything in the process holds it; the next one is then private.
///
/// Once connect() has been called, it connects again by itself after a loss or a failure.
///
/// The bus is the one that sessionBusAddress() names; none is ever started.
class SessionBusConnection {
 public:
  using Connected = std::function<void(GDBusConnection* connection)>;
  using Lost = std::function<void(const std::string& reason)>;
  using Replied = std::function<void(BusReply reply)>;

  /// The time between two attempts to connect.
  static constexpr std::chrono::seconds retryInterval{1};
  /// How long the destructor waits at most for the bus to read what has been sent.
  static constexpr std::chrono::milliseconds closeTimeout{1000};

  SessionBusConnection();
  /// Sends what is waiting to be sent and closes the connection; calls nothing back.
  ~SessionBusConnection();
  SessionBusConnection(const SessionBusConnection&) = delete;
  SessionBusConnection& operator=(const SessionBusConnection&) = delete;

  /// Calls `connected` with each connection, also with one that is open already, before this
  /// returns; and `lost` with the reason when it is closed or when connecting failed.
  [[nodiscard]] Subscription observe(Connected connected, Lost lost);

  /// Starts to connect in the background. Does nothing when connected or connecting, or when the
  /// last attempt failed less than `retryInterval` ago.
  /// Returns false when there is no connection and none is being made.
  bool connect();

  bool isConnected() const { return connection_ != nullptr; }

  /// Makes a call, connecting first if need be, and passes on its reply. Without a bus the outcome
  /// is `unreachable`, possibly before this returns.
  void call(BusCall call, Replied replied);

  /// Makes a call and waits for its reply, at most for the call's timeout, connecting included.
  /// Iterates the default main context meanwhile, so it is for the time before the main loop runs.
  BusReply callAndWait(BusCall call);

 private:
  struct Observer {
    Connected connected;
    Lost lost;
  };
  struct WaitingCall {
    BusCall call;
    Replied replied;
  };

  static void closedSignal(GDBusConnection* connection, gboolean peer, GError* error,
                           gpointer self);

  static gboolean retry(gpointer self);

  void connectPrivately(const std::string& address);
  void finishConnecting(ConnectionPointer connection, const GError* error);
  void disconnect(const std::string& reason);
  void start(const BusCall& call, Replied replied) const;
  std::vector<std::shared_ptr<const Observer>> observers();

  const CancellablePointer cancellable_;
  ConnectionPointer connection_;
  bool connecting_ = false;
  /// The timer of the next attempt, 0 for none.
  guint retryTimer_ = 0;
  std::string lastReason_;
  std::vector<std::weak_ptr<const Observer>> observers_;
  std::vector<WaitingCall> waitingCalls_;
  Lifetime lifetime_;
};

}  // namespace hushbox
