#pragma once

#include <string>

namespace hushbox {

/// Shows user notifications. Any thread; both operations return at once, and what becomes of them
/// is told by the log only.
class Notifier {
 public:
  Notifier() = delete;

  /// Asks the user once for permission to show alerts with sound. A refusal is not remembered:
  /// later notifications are tried all the same.
  static void requestAuthorization();

  /// Shows a notification of its own, with the default sound, at once. Nothing is retried.
  static void post(const std::string& title, const std::string& body);
};

}  // namespace hushbox
