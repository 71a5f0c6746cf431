#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "support/Subscription.h"

namespace hushbox {

/// Calls the subscribers of an observable object before one of its published members changes. The
/// call carries no value; a subscriber that needs the new value reads it in a later turn of the
/// loop.
///
/// Owned by the object whose changes it announces. Main thread only, except that it may be
/// destroyed on any thread.
class ChangePublisher {
 public:
  ChangePublisher();
  ~ChangePublisher();
  ChangePublisher(const ChangePublisher&) = delete;
  ChangePublisher& operator=(const ChangePublisher&) = delete;

  /// Calls `subscriber` for every announcement until the subscription is destroyed. A subscriber
  /// may subscribe and unsubscribe during its call; a new subscriber is called from the next
  /// announcement on.
  [[nodiscard]] Subscription subscribe(std::function<void()> subscriber);

  /// Announces a change to all subscribers, in the order of their subscription.
  void send() const;

  /// How many announcements this process has made so far, and how many subscribers it has now, over
  /// all publishers.
  static std::size_t announcementCount();
  static std::size_t subscriberCount();

 private:
  struct Subscribers;
  std::shared_ptr<Subscribers> subscribers_;
};

}  // namespace hushbox
