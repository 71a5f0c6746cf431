#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include "platform/linux/audio/PulseObserver.h"

namespace hushbox {

/// The thread that a `PulseObserver` runs on. Main thread only.
class PulseThread {
 public:
  /// How long the destructor waits for the thread. A thread that libpulse holds longer, for example
  /// with the files of a home folder on a network, is left behind.
  static constexpr std::chrono::milliseconds stopTimeout{500};

  /// Starts the thread, which reports to `reports`.
  explicit PulseThread(std::shared_ptr<PulseReportQueue> reports);
  ~PulseThread();
  PulseThread(const PulseThread&) = delete;
  PulseThread& operator=(const PulseThread&) = delete;

  /// Has the thread send a request. Never waits.
  void write(const PulseWrite& write);

 private:
  std::shared_ptr<PulseObserver> observer_;
  std::future<void> finished_;
  std::thread thread_;
};

}  // namespace hushbox
