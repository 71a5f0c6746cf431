#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox {

/// Counts the messages that one process sends on a bus, whatever they are and whoever they are for.
class BusTraffic {
 public:
  /// Counts from now on those of the connections that the process has at present. Throws DeskError
  /// when the bus cannot be reached or does not let itself be monitored.
  BusTraffic(const std::string& busAddress, int process);
  ~BusTraffic();
  BusTraffic(const BusTraffic&) = delete;
  BusTraffic& operator=(const BusTraffic&) = delete;

  std::size_t connections() const { return senders_.size(); }
  unsigned long messages() const { return messages_; }

 private:
  static GDBusMessage* overhear(GDBusConnection* connection, GDBusMessage* message,
                                gboolean incoming, gpointer self);

  rehearsal::BusConnection bus_;
  std::vector<std::string> senders_;
  std::atomic<unsigned long> messages_ = 0;
  unsigned filter_ = 0;
};

}  // namespace hushbox
