#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox {

/// Counts all messages that a process sends on a bus, to any destination.
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
  unsigned long messages() const { return messages_; }

 private:
  static GDBusMessage* onMessage(GDBusConnection* connection, GDBusMessage* message,
                                 gboolean incoming, gpointer self);

  rehearsal::BusConnection bus_;
  std::vector<std::string> senders_;
  std::atomic<unsigned long> messages_ = 0;
  unsigned filter_ = 0;
};

}  // namespace hushbox
