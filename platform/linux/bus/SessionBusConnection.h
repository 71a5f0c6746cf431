#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

#include "platform/linux/bus/GLibPointers.h"
#include "support/Lifetime.h"

namespace hushbox {

/// A connection of its own to the session bus, made in the background: nothing waits for the bus,
/// and the bus's end does not end the program. Main thread only.
///
/// The bus is the one in DBUS_SESSION_BUS_ADDRESS, else the one that lies in XDG_RUNTIME_DIR; none
/// is ever started.
class SessionBusConnection {
 public:
  /// A bus that was not there is not asked for again sooner than this after the last attempt.
  static constexpr gint64 restMicroseconds = gint64{5} * G_USEC_PER_SEC;

  /// `connected` is called with the connection once it is up; `lost` with the reason when there is
  /// none to be had or when it has ended. Both from the main context, never inside `connect()`.
  SessionBusConnection(std::function<void(GDBusConnection*)> connected,
                       std::function<void(const std::string& reason)> lost);
  /// Closes it, having written what was to be sent; calls back no more.
  ~SessionBusConnection();
  SessionBusConnection(const SessionBusConnection&) = delete;
  SessionBusConnection& operator=(const SessionBusConnection&) = delete;

  /// Begins to connect. Does nothing when there is a connection, when one is being made, or when
  /// the last attempt was a moment ago: call it as often as one is wanted. False when neither is
  /// there a connection nor is one being made, so that nothing will be called back.
  bool connect();

  bool isConnected() const { return connection_ != nullptr; }

 private:
  static void closedSignal(GDBusConnection* connection, gboolean peer, GError* error,
                           gpointer self);

  void finish(GAsyncResult* result);
  void end(const std::string& reason);

  const std::function<void(GDBusConnection*)> connected_;
  const std::function<void(const std::string&)> lost_;
  const CancellablePointer cancellable_;
  ConnectionPointer connection_;
  bool connecting_ = false;
  gint64 restUntil_ = 0;
  Lifetime lifetime_;
};

}  // namespace hushbox
