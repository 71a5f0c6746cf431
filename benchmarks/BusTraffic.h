#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox {

/// Counts all messages that a process sends on a bus, by destination.
class BusTraffic {
 public:
  /// Starts counting, for the connections that the process has now. Throws DeskError if the bus
  /// cannot be reached or refuses to be monitored.
  BusTraffic(const std::string& busAddress, int process);
  ~BusTraffic();
  BusTraffic(const BusTraffic&) = delete;
  BusTraffic& operator=(const BusTraffic&) = delete;

  /// How many connections of the process are counted.
  std::size_t connections() const { return senders_.size(); }
  /// The number of messages by destination: a name on the bus, or "all" for signals.
  std::map<std::string, unsigned long> messages() const;

 private:
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer self);

  rehearsal::BusConnection bus_;
  std::vector<std::string> senders_;
  /// GIO calls the filter on a thread of its own.
  mutable std::mutex mutex_;
  std::map<std::string, unsigned long> messages_;
  unsigned filter_ = 0;
};

}  // namespace hushbox
