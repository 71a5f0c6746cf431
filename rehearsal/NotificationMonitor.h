#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"
#include "rehearsal/ShownNotification.h"

namespace hushbox::rehearsal {

/// Overhears every notification on a session bus and what became of it, whichever daemon answers.
///
/// Works without a daemon too: the refusal is then part of the record. All members are callable
/// on any thread.
class NotificationMonitor {
 public:
  /// Throws DeskError when the bus cannot be reached or does not let itself be monitored.
  explicit NotificationMonitor(const std::string& busAddress);
  ~NotificationMonitor();

  /// Every Notify call so far, oldest first.
  std::vector<ShownNotification> notifications() const;
  /// Those that a daemon has accepted.
  std::vector<ShownNotification> shown() const;
  /// Waits until so many have been accepted, and returns those. Throws DeskError at the deadline.
  std::vector<ShownNotification> waitForShown(std::size_t count,
                                              Milliseconds deadline = patience) const;
  void clear();

 private:
  static GDBusMessage* overhear(GDBusConnection* connection, GDBusMessage* message,
                                gboolean incoming, gpointer self);
  void noteCall(GDBusMessage* message);
  void noteAnswer(GDBusMessage* message);

  mutable std::mutex mutex_;
  std::vector<ShownNotification> notifications_;
  std::map<std::string, std::size_t> unanswered_;
  BusConnection bus_;
  unsigned filter_ = 0;
};

}  // namespace hushbox::rehearsal
