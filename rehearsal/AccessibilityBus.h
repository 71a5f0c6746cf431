#pragma once

#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// The session's accessibility bus. The session bus activates it at the first call.
///
/// A browser reads IsEnabled once, when it starts: enable accessibility before that, or the browser
/// exposes nothing.
class AccessibilityBus {
 public:
  /// Connects to the session bus only; does not start the accessibility bus.
  explicit AccessibilityBus(const Session& session);

  /// Sets org.a11y.Status.IsEnabled. Throws DeskError if at-spi2-core is not installed.
  void setEnabled(bool enabled);
  bool isEnabled() const;

  std::string address() const;

  /// The names of the registered applications, such as "Chromium". Returns an empty list if the bus
  /// is not running.
  std::vector<std::string> applications() const;
  /// Waits until an application of that name is registered. Throws DeskError at the deadline.
  void waitForApplication(const std::string& name, Milliseconds deadline = serverTimeout) const;

  /// Kills the accessibility bus, its launcher and its registry with SIGKILL. The next call starts
  /// a new bus, on which programs that are already running never appear.
  void kill();

 private:
  BusConnection bus_;
};

}  // namespace hushbox::rehearsal
