#pragma once

#include <algorithm>
#include <chrono>

namespace hushbox {

/// How long the calls of one snapshot may wait for replies.
class CallBudget {
 public:
  using Duration = std::chrono::steady_clock::duration;

  /// The least that a call waits, so that a program that replies at once is still heard.
  static constexpr std::chrono::milliseconds minTimeout{20};

  void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

  /// A new snapshot begins, with the whole budget.
  void begin() { lost_ = {}; }

  /// Takes off the time that was waited for replies that did not come.
  void lose(Duration time) { lost_ += time; }

  /// How long a call may wait now: the messaging timeout, less what this snapshot has lost. So a
  /// snapshot loses one timeout, however many programs are frozen.
  std::chrono::milliseconds timeout() const {
    return std::max(timeout_ - std::chrono::ceil<std::chrono::milliseconds>(lost_), minTimeout);
  }

 private:
  std::chrono::milliseconds timeout_{1000};
  Duration lost_{};
};

}  // namespace hushbox
