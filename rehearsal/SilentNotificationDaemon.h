#pragma once

#include <mutex>
#include <string>

#include "rehearsal/BusConnection.h"

namespace hushbox::rehearsal {

/// A hung notification daemon: it owns the notification daemon's bus name and never replies.
///
/// It runs in this process, on GDBus's own thread, and does not need the main context. When it is
/// destroyed, pending callers get a NoReply error.
class SilentNotificationDaemon {
 public:
  /// Throws DeskError if the name is taken or the bus cannot be reached.
  explicit SilentNotificationDaemon(const std::string& busAddress);
  ~SilentNotificationDaemon();

  /// How many calls have arrived.
  int calls() const;

 private:
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer self);

  mutable std::mutex mutex_;
  int calls_ = 0;
  BusConnection bus_;
  unsigned filter_ = 0;
};

}  // namespace hushbox::rehearsal
