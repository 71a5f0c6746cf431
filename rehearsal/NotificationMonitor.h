#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/ShownNotification.h"

namespace hushbox::rehearsal {

/// Records every notification call on a session bus and its reply, whichever daemon replies.
///
/// Without a daemon it records the bus's error reply. All members are callable on any thread.
class NotificationMonitor {
 public:
  /// Throws DeskError if the bus cannot be reached or refuses to be monitored.
  explicit NotificationMonitor(const std::string& busAddress);
  ~NotificationMonitor();

  /// All Notify calls so far, oldest first.
  std::vector<ShownNotification> notifications() const;
  /// The Notify calls that a daemon has accepted, oldest first.
  std::vector<ShownNotification> shown() const;
  /// Waits until at least `count` notifications have been accepted, and returns them. Throws
  /// DeskError at the deadline.
  std::vector<ShownNotification> waitForShown(std::size_t count,
                                              Milliseconds deadline = serverTimeout) const;
  /// Forgets all calls so far.
  void clear();

 private:
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer self);
  void recordCall(GDBusMessage* message);
  void recordReply(GDBusMessage* message);

  mutable std::mutex mutex_;
  std::vector<ShownNotification> notifications_;
  /// Indexes into notifications_, by caller and serial number.
  std::map<std::string, std::size_t> pendingCalls_;
  BusConnection bus_;
  unsigned filter_ = 0;
};

}  // namespace hushbox::rehearsal
