#pragma once

#include <algorithm>
#include <chrono>

namespace hushbox {

/// How long the calls of one snapshot may wait for replies. A value; any thread.
///
/// A frozen program costs a snapshot one messaging timeout, however many are frozen. Programs that
/// reply late to every call cost it two, however many calls there are.
class CallBudget {
 public:
  using Duration = std::chrono::steady_clock::duration;

  /// The least that a call waits, so that a program that replies at once is still heard.
  static constexpr std::chrono::milliseconds minTimeout{20};
  /// How long a program that was never called before is waited for. Those that run reply within
  /// milliseconds; a stopped one must not use up the browser's time.
  static constexpr std::chrono::milliseconds strangerTimeout{200};

  /// Sets the messaging timeout.
  void setTimeout(std::chrono::milliseconds timeout) { timeout_ = timeout; }

  /// A new snapshot begins, with the whole budget.
  void begin() { spent_ = lost_ = {}; }

  /// Takes off the time that calls took, and the part of it that was waited for replies that did
  /// not come.
  void charge(Duration spent, Duration lost) {
    spent_ += spent;
    lost_ += lost;
  }

  /// How long a call may wait now.
  std::chrono::milliseconds timeout() const {
    const Duration left = std::min<Duration>(timeout_ - lost_, 2 * timeout_ - spent_);
    return std::max(std::chrono::floor<std::chrono::milliseconds>(left), minTimeout);
  }

 private:
  std::chrono::milliseconds timeout_{1000};
  Duration spent_{};
  Duration lost_{};
};

}  // namespace hushbox
