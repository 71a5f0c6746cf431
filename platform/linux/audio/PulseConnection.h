#pragma once

#include <glib.h>
#include <pulse/pulseaudio.h>

#include <chrono>

namespace hushbox {

/// A connection to the user's sound server, made anew whenever it is lost.
///
/// It lives on the default main context and calls back from there. The server is the one that
/// libpulse finds in the environment (PULSE_SERVER and its defaults), PulseAudio or PipeWire's
/// stand-in for it; none is ever started. Nothing here waits for the server: one that hangs is
/// given up by libpulse after 30 s, as soon as there is a question that it owes an answer to.
class PulseConnection {
 public:
  using Delay = std::chrono::milliseconds;

  /// After a loss the first attempt comes after this time, and each further one after twice the
  /// time of the one before, up to the longest: a server that is being restarted is back within
  /// half a second, and a desk without one costs a wake-up every 8 s.
  static constexpr Delay firstDelay{250};
  static constexpr Delay longestDelay{8000};

  /// Whom the connection tells. Each call may end the connection.
  class Client {
   public:
    /// The server answers: `context` is to be used until `disconnected()`.
    virtual void connected(pa_context& context) = 0;
    /// The server is gone, after `connected()`. Every operation on the context is cancelled.
    virtual void disconnected() = 0;

   protected:
    ~Client() = default;
  };

  /// Begins to connect; calls `client` only from the main context, later.
  explicit PulseConnection(Client& client);
  ~PulseConnection();
  PulseConnection(const PulseConnection&) = delete;
  PulseConnection& operator=(const PulseConnection&) = delete;

  /// Whether an attempt is under way or has succeeded; false between attempts.
  bool isOpen() const { return context_ != nullptr; }

  /// The context while the server answers, else null.
  pa_context* context() const { return ready_ ? context_ : nullptr; }

 private:
  void open();
  void close();
  void stateChanged();
  void openAfterDelay();

  Client& client_;
  pa_context* context_ = nullptr;
  bool ready_ = false;
  guint retry_ = 0;
  Delay delay_ = firstDelay;
};

}  // namespace hushbox
