#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>

namespace hushbox {

/// A connection to the user's sound server. Reconnects whenever the connection is lost.
///
/// Runs on a main loop of libpulse's, on the thread of that loop. The server is the one that
/// libpulse finds through the environment (PULSE_SERVER and its defaults): PulseAudio or PipeWire's
/// PulseAudio server. It never starts one. Nothing here waits for the server. While it connects,
/// libpulse gives up after 30 s without a reply; later, only the request without a reply fails,
/// with PA_ERR_TIMEOUT, and the connection stays open unless the client reconnects.
class PulseConnection {
 public:
  using Delay = std::chrono::milliseconds;

  /// The delay before the first attempt to reconnect. It doubles with each further attempt, up to
  /// `maxRetryDelay`: a server that restarts is back within half a second, and a machine without a
  /// server costs one wake-up every 8 s.
  static constexpr Delay minRetryDelay{250};
  static constexpr Delay maxRetryDelay{8000};

  /// Receives changes of the connection. Each call may destroy the connection.
  class Client {
   public:
    /// The connection is ready. `context` is valid until `disconnected()`.
    virtual void connected(pa_context& context) = 0;
    /// The connection was lost after `connected()`. Every operation on the context is cancelled.
    virtual void disconnected() = 0;

   protected:
    ~Client() = default;
  };

  /// Starts to connect. Calls `client` later, from the loop only. `loop` must outlive this.
  PulseConnection(pa_mainloop_api& loop, Client& client);
  ~PulseConnection();
  PulseConnection(const PulseConnection&) = delete;
  PulseConnection& operator=(const PulseConnection&) = delete;

  /// Whether an attempt is in progress or has succeeded; false between attempts.
  bool isOpen() const { return context_ != nullptr; }

  /// The context while the connection is ready, otherwise null.
  pa_context* context() const { return ready_ ? context_ : nullptr; }

  /// Treats a connection that is ready as lost: closes it, calls `disconnected()` and reconnects
  /// after a delay. Does nothing otherwise. Must not be called from one of the context's callbacks.
  void reconnect();

 private:
  void open();
  void close();
  void stateChanged();
  void lost();
  /// Call it before `close()`: the delay is the context's to count.
  void openAfterDelay();

  pa_mainloop_api& loop_;
  Client& client_;
  pa_context* context_ = nullptr;
  bool ready_ = false;
  pa_time_event* retry_ = nullptr;
  Delay delay_ = minRetryDelay;
};

}  // namespace hushbox
