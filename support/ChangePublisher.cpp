#include "support/ChangePublisher.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hushbox {
namespace {

std::size_t announcements = 0;
std::size_t subscriberTotal = 0;

struct Subscriber {
  std::function<void()> call;
  bool isSubscribed = true;
};
using SubscriberRef = std::shared_ptr<Subscriber>;
using List = std::vector<SubscriberRef>;

}  // namespace

struct ChangePublisher::Subscribers {
  /// Replaced by another list, never changed: send() goes through it while subscribers come and go.
  std::shared_ptr<const List> list = std::make_shared<List>();
};

namespace {

/// What a subscription owns; its destruction removes the subscriber from the list.
template <typename Subscribers>
struct Token {
  std::weak_ptr<Subscribers> from;
  SubscriberRef subscriber;

  ~Token() {
    subscriber->isSubscribed = false;
    --subscriberTotal;
    const auto subscribers = from.lock();
    if (!subscribers) return;
    auto others = std::make_shared<List>(*subscribers->list);
    std::erase(*others, subscriber);
    subscribers->list = std::move(others);
  }
};

}  // namespace

ChangePublisher::ChangePublisher() : subscribers_(std::make_shared<Subscribers>()) {}
ChangePublisher::~ChangePublisher() = default;

Subscription ChangePublisher::subscribe(std::function<void()> subscriber) {
  auto added = std::make_shared<Subscriber>(Subscriber{std::move(subscriber)});
  auto all = std::make_shared<List>(*subscribers_->list);
  all->push_back(added);
  subscribers_->list = std::move(all);
  ++subscriberTotal;
  using ThisToken = Token<Subscribers>;
  return Subscription({new ThisToken{subscribers_, std::move(added)},
                       [](void* token) { delete static_cast<ThisToken*>(token); }});
}

void ChangePublisher::send() const {
  ++announcements;
  // A subscriber may end any subscription, even its own, or destroy the publisher.
  const auto subscribers = subscribers_->list;
  for (const SubscriberRef& subscriber : *subscribers)
    if (subscriber->isSubscribed) subscriber->call();
}

std::size_t ChangePublisher::announcementCount() {
  return announcements;
}
std::size_t ChangePublisher::subscriberCount() {
  return subscriberTotal;
}

}  // namespace hushbox
