#include "support/ChangePublisher.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hushbox {
namespace {

std::size_t announcements = 0;
std::size_t subscriberTotal = 0;

using Subscriber = std::shared_ptr<std::function<void()>>;

}  // namespace

struct ChangePublisher::Subscribers {
  std::vector<Subscriber> list;
};

namespace {

/// What a subscription owns; its destruction removes the subscriber from the list.
template <typename List>
struct Token {
  std::weak_ptr<List> from;
  Subscriber subscriber;

  ~Token() {
    *subscriber = nullptr;
    --subscriberTotal;
    if (const auto subscribers = from.lock()) std::erase(subscribers->list, subscriber);
  }
};

}  // namespace

ChangePublisher::ChangePublisher() : subscribers_(std::make_shared<Subscribers>()) {}
ChangePublisher::~ChangePublisher() = default;

Subscription ChangePublisher::subscribe(std::function<void()> subscriber) {
  auto shared = std::make_shared<std::function<void()>>(std::move(subscriber));
  subscribers_->list.push_back(shared);
  ++subscriberTotal;
  using ThisToken = Token<Subscribers>;
  return Subscription({new ThisToken{subscribers_, std::move(shared)},
                       [](void* token) { delete static_cast<ThisToken*>(token); }});
}

void ChangePublisher::send() const {
  ++announcements;
  // Copies of the list and of each function: a subscriber may end any subscription, even its own.
  const auto subscribers = subscribers_->list;
  for (const Subscriber& subscriber : subscribers) {
    if (const auto call = *subscriber) call();
  }
}

std::size_t ChangePublisher::announcementCount() {
  return announcements;
}
std::size_t ChangePublisher::subscriberCount() {
  return subscriberTotal;
}

}  // namespace hushbox
