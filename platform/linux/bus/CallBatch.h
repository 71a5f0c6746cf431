#pragma once

#include <chrono>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/linux/bus/BoundedBusConnection.h"

namespace hushbox {

/// Calls that are made together, so that they cost one round trip. Each is added for a ticket, and
/// its reply is read by that ticket once the batch has been sent.
class CallBatch {
 public:
  /// Names one call of the batch that issued it.
  class Ticket {
   private:
    friend class CallBatch;
    explicit Ticket(std::size_t index) : index_(index) {}
    std::size_t index_;
  };

  Ticket add(BusCall call) {
    calls_.push_back(std::move(call));
    return Ticket(calls_.size() - 1);
  }

  bool isEmpty() const { return calls_.empty(); }

  /// Makes the calls and waits for the replies: see BoundedBusConnection::ask(). Once only.
  void send(BoundedBusConnection& connection) {
    const auto sentAt = std::chrono::steady_clock::now();
    replies_ = connection.ask(std::move(calls_));
    repliedAt_ = std::chrono::steady_clock::now();
    duration_ = repliedAt_ - sentAt;
  }

  /// The reply to a call, once the batch has been sent.
  const BusReply& operator[](Ticket ticket) const { return replies_.at(ticket.index_); }

  /// The same for a reply that is to outlive the batch. Once only.
  BusReply take(Ticket ticket) { return std::move(replies_.at(ticket.index_)); }

  /// When the last reply arrived or the wait for it ended.
  std::chrono::steady_clock::time_point repliedAt() const { return repliedAt_; }
  /// How long the replies took.
  std::chrono::steady_clock::duration duration() const { return duration_; }

 private:
  std::vector<BusCall> calls_;
  std::vector<BusReply> replies_;
  std::chrono::steady_clock::time_point repliedAt_{};
  std::chrono::steady_clock::duration duration_{};
};

}  // namespace hushbox
