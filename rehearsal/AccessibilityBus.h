#pragma once

#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The session's accessibility bus, started by the first question to it.
///
/// A browser looks at the switch once, when it starts: enable before that, or it exposes nothing.
class AccessibilityBus {
 public:
  /// Connects to the session bus only; the accessibility bus is not started yet.
  explicit AccessibilityBus(const Session& session);

  /// Sets org.a11y.Status.IsEnabled. Throws DeskError when at-spi2-core is not installed.
  void setEnabled(bool enabled);
  bool isEnabled() const;

  std::string address() const;

  /// The names of the registered applications, such as "Chromium"; empty when the bus is gone.
  std::vector<std::string> applications() const;
  /// Throws DeskError when the application does not appear in time.
  void waitForApplication(const std::string& name, Milliseconds deadline = patience) const;

  /// Ends the accessibility bus, its launcher and its registry at once, as a crash would. The next
  /// question starts a new one, on which programs that are already running never appear.
  void kill();

 private:
  BusConnection bus_;
};

}  // namespace hushbox::rehearsal
