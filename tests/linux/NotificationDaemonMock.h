#pragma once

#include <memory>
#include <string>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox {

/// A notification daemon without a display, with the capabilities that are wanted
/// (python3-dbusmock's template).
class NotificationDaemonMock {
 public:
  /// `capabilities` are separated by spaces. Returns once it owns its name.
  NotificationDaemonMock(const rehearsal::Session& session, const std::string& capabilities)
      : process_(session.start(
            "notification-daemon-mock",
            {"/usr/bin/python3", "-m", "dbusmock", "--session", "--template", "notification_daemon",
             "--parameters", "{\"capabilities\": \"" + capabilities + "\"}"})) {
    const rehearsal::BusConnection bus(session.busAddress());
    process_->waitUntilReady(
        [&] {
          if (!bus.hasOwner("org.freedesktop.Notifications")) return false;
          // The name is there before the methods are.
          try {
            bus.call("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                     "org.freedesktop.Notifications", "GetCapabilities", nullptr);
            return true;
          } catch (const std::exception&) {
            return false;
          }
        },
        "the mock notification daemon");
  }

  rehearsal::ServerProcess& process() { return *process_; }

 private:
  std::unique_ptr<rehearsal::ServerProcess> process_;
};

}  // namespace hushbox
