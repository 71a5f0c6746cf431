#pragma once

#include <memory>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real notification daemon (dunst) on the session's display. NotificationMonitor records what it
/// was asked to show.
class NotificationDaemon {
 public:
  /// Starts dunst and waits until it owns its bus name. Throws DeskError if the session has no
  /// display or dunst is not installed.
  explicit NotificationDaemon(const Session& session);

  /// How many notifications are on the display now, according to dunst.
  unsigned shownNow() const;
  /// Closes all notifications, as if a person had clicked each.
  void closeAll() const;

  pid_t pid() const { return process_->pid(); }
  /// Kills dunst with SIGKILL, as in a crash.
  void kill() { process_->kill(); }
  /// Stops dunst: until thaw() it keeps its bus name but replies to nothing.
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }

 private:
  BusConnection bus_;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
