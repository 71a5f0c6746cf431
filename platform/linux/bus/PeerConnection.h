#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/bus/BusCall.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {

/// A D-Bus connection directly to one program, without a bus and without a thread of its own. GIO
/// encodes and decodes the messages; this class sends and receives them. GIO's own connection
/// passes each message to a second thread and back, which took longer than the program took to
/// reply (0.4 of 1.1 ms for the four calls before a press).
///
/// Used on one thread, the one that iterates the main context. The destructor fails the calls that
/// have no reply.
class PeerConnection {
 public:
  /// Called once per call, with a value of the call's reply type or with an error. Must not destroy
  /// the connection.
  using Replied = std::function<void(VariantPointer value, const GError* error)>;

  /// Connects to the UNIX socket in a D-Bus address. Returns null when the address names anything
  /// else, when another process than `process` listens there (the path that a sandboxed program
  /// names may be another program's outside), and when authentication takes longer than `timeout`.
  static std::unique_ptr<PeerConnection> open(const std::string& address, std::int32_t process,
                                              std::chrono::milliseconds timeout,
                                              GMainContext* context);

  /// The same over a connected socket. Returns null when authentication is not finished at `end`, a
  /// moment on GLib's monotonic clock.
  static std::unique_ptr<PeerConnection> openOn(ObjectPointer<GIOStream> stream,
                                                std::int32_t process, gint64 end,
                                                GMainContext* context);

  ~PeerConnection();
  PeerConnection(const PeerConnection&) = delete;
  PeerConnection& operator=(const PeerConnection&) = delete;

  /// False once the program has closed the connection or has sent anything but a message; all calls
  /// have then failed.
  bool isOpen() const { return socket_ != nullptr; }

  /// Queues a call for the next flush(). The connection must be open.
  void call(const BusCall& call, Replied replied);

  /// Sends the queued calls. The socket's buffer takes them unless the program has not read for
  /// long; the connection is closed when there is no room within `timeout`.
  void flush(std::chrono::milliseconds timeout);

  /// Fails the calls that have been without a reply for longer than `timeout`.
  void abandon(std::chrono::milliseconds timeout);

 private:
  struct Pending {
    Replied replied;
    std::string replyType;
    gint64 since;
  };

  PeerConnection(ObjectPointer<GIOStream> stream, GMainContext* context);

  static gboolean onReadable(GSocket* socket, GIOCondition condition, gpointer self);
  void receive();
  /// Handles the messages that have arrived completely; returns false for anything but a message.
  bool takeMessages();
  void take(GDBusMessage* message);
  void end();

  ObjectPointer<GIOStream> stream_;
  /// Belongs to the stream; null once the connection is closed.
  GSocket* socket_;
  /// Null once the connection is closed.
  GSource* source_;
  std::uint32_t lastSerial_ = 0;
  std::string outgoing_;
  std::string incoming_;
  std::map<std::uint32_t, Pending> pending_;
};

}  // namespace hushbox
