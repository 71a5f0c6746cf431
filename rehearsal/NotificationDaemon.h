#pragma once

#include <memory>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real notification daemon (dunst) on the session's display; NotificationMonitor tells what it
/// was asked to show.
class NotificationDaemon {
 public:
  /// Returns once it owns its name on the bus. Throws DeskError without a display or without
  /// dunst.
  explicit NotificationDaemon(const Session& session);

  /// How many notifications it says that it shows on the display at present.
  unsigned shownNow() const;
  /// Takes them all off the display, as a person who clicks on each.
  void closeAll() const;

  pid_t pid() const { return process_->pid(); }
  /// Ends it as a crash would.
  void kill() { process_->kill(); }
  /// Stops it in its tracks: it keeps its name and answers nobody until thaw().
  void freeze() { process_->freeze(); }
  void thaw() { process_->thaw(); }

 private:
  BusConnection bus_;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
