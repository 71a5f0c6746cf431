#pragma once

#include <string>

namespace hushbox {

/// Shows user notifications. Any thread; both operations return at once and report their outcome
/// only in the log.
class Notifier {
 public:
  Notifier() = delete;

  /// Requests permission to show alerts with sound. The answer is not stored: `post` tries even
  /// after a refusal.
  static void requestAuthorization();

  /// Shows a new notification at once, with the default sound. A failure is not retried.
  static void post(const std::string& title, const std::string& body);
};

}  // namespace hushbox
