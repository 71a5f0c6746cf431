#pragma once

#include <glib.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

#include "platform/linux/audio/PulseReport.h"

namespace hushbox {

/// Hands the sound server's reports from its thread to the main thread, in order.
///
/// Made and closed on the main thread. Both threads share it, because the sound server's thread may
/// outlive the adapter.
class PulseReportQueue {
 public:
  /// Calls `arrived` on the default main context after reports were pushed, until `close()`.
  explicit PulseReportQueue(std::function<void()> arrived);
  ~PulseReportQueue();
  PulseReportQueue(const PulseReportQueue&) = delete;
  PulseReportQueue& operator=(const PulseReportQueue&) = delete;

  /// The time by CLOCK_BOOTTIME, the main loop's clock. Any thread.
  static Instant now();

  /// Adds a report in the order of the times, behind those of the same time. Does nothing after
  /// `close()`. Any thread.
  void push(PulseReport report);

  /// Removes and returns the first report if it happened no later than `latest`, otherwise nullopt.
  /// Main thread.
  std::optional<PulseReport> takeUntil(Instant latest);

  /// Blocks until there is a report, but no longer than `timeout`. Main thread.
  void waitForReport(std::chrono::milliseconds timeout);

  /// Drops the reports and stops calling `arrived`. Main thread.
  void close();

 private:
  struct Source;
  static gboolean dispatch(GSource* source, GSourceFunc, gpointer);

  const std::function<void()> arrived_;
  std::mutex mutex_;
  std::condition_variable pushed_;
  std::deque<PulseReport> reports_;
  bool isClosed_ = false;
  GSource* const source_;
};

}  // namespace hushbox
