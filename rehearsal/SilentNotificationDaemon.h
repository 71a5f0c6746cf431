#pragma once

#include <mutex>
#include <string>

#include "rehearsal/BusConnection.h"

namespace hushbox::rehearsal {

/// Owns the notification daemon's name and never answers anybody, as a hung daemon does.
///
/// Lives in this process, on GDBus's own thread; the main context is not needed. Callers get a
/// NoReply error when it goes.
class SilentNotificationDaemon {
 public:
  /// Throws DeskError when the name is taken or the bus cannot be reached.
  explicit SilentNotificationDaemon(const std::string& busAddress);
  ~SilentNotificationDaemon();

  /// How many calls it has swallowed.
  int calls() const;

 private:
  static GDBusMessage* swallow(GDBusConnection* connection, GDBusMessage* message,
                               gboolean incoming, gpointer self);

  mutable std::mutex mutex_;
  int calls_ = 0;
  BusConnection bus_;
  unsigned filter_ = 0;
};

}  // namespace hushbox::rehearsal
