#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "support/Subscription.h"

namespace hushbox {

/// Tells the subscribers of an observable object that one of its published members is about to
/// change. The announcement carries no value; whoever needs the new one reads it afterwards.
///
/// Owned by the object whose changes it announces. Main thread only, but for its destruction.
class ChangePublisher {
 public:
  ChangePublisher();
  ~ChangePublisher();
  ChangePublisher(const ChangePublisher&) = delete;
  ChangePublisher& operator=(const ChangePublisher&) = delete;

  /// Calls `subscriber` on every announcement until the subscription is let go of. A subscriber may
  /// subscribe and unsubscribe from inside its call; a new one hears the next announcement.
  [[nodiscard]] Subscription subscribe(std::function<void()> subscriber);

  /// Announces a change.
  void send() const;

  /// How many announcements the process has made, and how many subscribers it has, in all.
  static std::size_t announcementCount();
  static std::size_t subscriberCount();

 private:
  struct Subscribers;
  std::shared_ptr<Subscribers> subscribers_;
};

}  // namespace hushbox
