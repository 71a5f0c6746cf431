#pragma once

#include <pulse/pulseaudio.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/linux/audio/PulseConnection.h"
#include "platform/linux/audio/PulseReport.h"
#include "platform/linux/audio/PulseReportQueue.h"
#include "platform/linux/audio/PulseWrite.h"
#include "platform/linux/audio/StateRequests.h"

namespace hushbox {

/// Watches the sound server's sources and recording streams, and reports every state in order.
///
/// The server's events carry no values, so each one is answered with a request for the state.
/// `run()` is a thread's body: requests go out within a fraction of a millisecond, whatever the
/// main loop is doing. Where a program restores a volume even faster, `StateRequests` detects it.
///
/// A source that appears is reported once it has been set up: session managers let it appear at
/// full volume and restore its stored volume a moment later. The sources of the first connection
/// are reported at once if the server was there from the start.
///
/// A server that does not reply to a request within libpulse's 30 s is treated as lost. Its late
/// reply is dropped by libpulse, and without it a state would stay wrong until the next event.
class PulseObserver final : private PulseConnection::Client {
 public:
  using Milliseconds = std::chrono::milliseconds;

  /// A source counts as set up when nothing about it has changed for `settleTime`, or after
  /// `maxSettleTime`. WirePlumber 0.4 restores a volume within 3 ms on an idle machine.
  static constexpr Milliseconds settleTime{200};
  static constexpr Milliseconds maxSettleTime{1000};

  explicit PulseObserver(std::shared_ptr<PulseReportQueue> reports);
  ~PulseObserver();
  PulseObserver(const PulseObserver&) = delete;
  PulseObserver& operator=(const PulseObserver&) = delete;

  /// Connects and reports until `stop()`. Each loss of the server, and the first failure to
  /// connect, is reported as `PulseServerLoss`.
  void run();

  /// Sends a request soon and does not wait for it. Any thread.
  void write(const PulseWrite& write);
  /// Makes `run()` return. Any thread.
  void stop();

 private:
  struct Request {
    PulseObserver* observer;
    std::uint32_t source;
    Instant time;
    /// Whether the source's `StateRequests` counts it.
    bool isCounted;
  };
  struct KnownSource {
    PulseSourceReport report;
    StateRequests requests;
    /// When the source is to be reported if nothing changes; nullopt once it has been.
    std::optional<Instant> settled;
    Instant latestSettled;
  };

  void connected(pa_context& context) override;
  void disconnected() override;

  /// Makes `run()` reconnect if a request ended without a reply, and returns whether it did.
  bool noteTimeout(pa_context* context, int last);
  static void onEvent(pa_context* context, pa_subscription_event_type_t type, std::uint32_t index,
                      void* self);
  static void onListedStream(pa_context* context, const pa_source_output_info* info, int last,
                             void* self);
  static void onListedSource(pa_context* context, const pa_source_info* info, int last, void* self);
  static void onStream(pa_context* context, const pa_source_output_info* info, int last,
                       void* request);
  static void onSource(pa_context* context, const pa_source_info* info, int last, void* request);

  void sourceEvent(std::uint32_t index, Instant time);
  void requestSource(std::uint32_t index, Instant time, bool isCounted);
  Request* addRequest(const Request& request);
  void remove(const Request* request);
  void listComplete();
  void sourceReplied(const Request& request, const PulseSourceReport& report);
  void addSource(const PulseSourceReport& report, std::optional<Instant> settled);
  void removeSource(std::uint32_t index, Instant time);
  void reportSettledSources();
  int microsecondsToWait() const;
  void sendWrites();
  void send(const PulseWrite& write);

  const std::shared_ptr<PulseReportQueue> reports_;
  pa_mainloop* const loop_;
  std::atomic<bool> isStopped_ = false;
  std::mutex mutex_;
  std::vector<PulseWrite> writes_;

  // Below: the thread of `run()` only.
  std::uint32_t connectionCount_ = 0;
  bool hasFailed_ = false;
  bool needsToReconnect_ = false;
  PulseServerReport list_{};
  Instant listTime_;
  std::map<std::uint32_t, KnownSource> sources_;
  std::list<Request> requests_;
  Instant lastStreamEvent_ = distantPast;
  std::optional<PulseConnection> connection_;
};

}  // namespace hushbox
