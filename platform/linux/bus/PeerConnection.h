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

/// A D-Bus connection straight to one program, with no bus in between and no thread: GIO makes and
/// reads the messages, they are sent and received here. GIO's own connection hands each to a second
/// thread and back, which took longer than the program took to answer (0.4 of 1.1 ms for the four
/// questions before a press).
///
/// One thread: that which iterates the main context. What is unanswered in the end, the destructor
/// answers with an error.
class PeerConnection {
 public:
  /// Told once how a call ended: by a value of the call's reply type, or by an error. Must not
  /// destroy the connection.
  using Answer = std::function<void(VariantPointer value, const GError* error)>;

  /// Connects to the UNIX socket that a D-Bus address names. Null when it names something else,
  /// when not `process` listens there (who lives in a sandbox names a path that may be somebody
  /// else's outside), and when the two have not come to terms within `wait`.
  static std::unique_ptr<PeerConnection> open(const std::string& address, std::int32_t process,
                                              std::chrono::milliseconds wait,
                                              GMainContext* context);

  ~PeerConnection();
  PeerConnection(const PeerConnection&) = delete;
  PeerConnection& operator=(const PeerConnection&) = delete;

  /// False once the program has closed the connection or has sent what is no message; all calls are
  /// answered with an error then.
  bool isOpen() const { return socket_ != nullptr; }

  /// Makes a call; it leaves with the next flush(). The connection must be open.
  void call(const BusCall& call, Answer answer);

  /// Sends all calls made. The socket has room for them unless the program has not read for long;
  /// when it does not make room within `wait`, the connection ends.
  void flush(std::chrono::milliseconds wait);

  /// Answers the calls that have been unanswered for longer than that with an error.
  void giveUp(std::chrono::milliseconds after);

 private:
  struct Pending {
    Answer answer;
    std::string replyType;
    gint64 since;
  };

  PeerConnection(ObjectPointer<GIOStream> stream, GMainContext* context);

  static gboolean onReadable(GSocket* socket, GIOCondition condition, gpointer self);
  void receive();
  /// Takes the messages that have arrived whole; false when it is none.
  bool takeMessages();
  void take(GDBusMessage* message);
  void end();

  ObjectPointer<GIOStream> stream_;
  /// Belongs to the stream; null once the connection has ended.
  GSocket* socket_;
  GSource* const source_;
  std::uint32_t lastSerial_ = 0;
  std::string outgoing_;
  std::string incoming_;
  std::map<std::uint32_t, Pending> pending_;
};

}  // namespace hushbox
