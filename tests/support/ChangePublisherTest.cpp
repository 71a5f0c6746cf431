#include "support/ChangePublisher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hushbox {
namespace {

using testing::ElementsAre;

TEST(ChangePublisherTest, AnnouncementReachesEverySubscriberInOrder) {
  ChangePublisher publisher;
  std::vector<std::string> heard;
  const Subscription first = publisher.subscribe([&] { heard.push_back("first"); });
  const Subscription second = publisher.subscribe([&] { heard.push_back("second"); });
  publisher.send();
  publisher.send();
  EXPECT_THAT(heard, ElementsAre("first", "second", "first", "second"));
}

TEST(ChangePublisherTest, SubscribingCallsNothing) {
  ChangePublisher publisher;
  int heard = 0;
  const Subscription subscription = publisher.subscribe([&] { ++heard; });
  EXPECT_EQ(heard, 0);
}

TEST(ChangePublisherTest, DestroyingTheSubscriptionEndsItAtOnce) {
  ChangePublisher publisher;
  int heard = 0;
  {
    const Subscription subscription = publisher.subscribe([&] { ++heard; });
  }
  publisher.send();
  EXPECT_EQ(heard, 0);
}

TEST(ChangePublisherTest, ReplacedSubscriptionEnds) {
  ChangePublisher publisher;
  int replaced = 0;
  int replacing = 0;
  Subscription subscription = publisher.subscribe([&] { ++replaced; });
  subscription = publisher.subscribe([&] { ++replacing; });
  publisher.send();
  EXPECT_EQ(replaced, 0);
  EXPECT_EQ(replacing, 1);
}

TEST(ChangePublisherTest, SubscriptionCanBeMoved) {
  ChangePublisher publisher;
  int heard = 0;
  Subscription subscription = publisher.subscribe([&] { ++heard; });
  std::vector<Subscription> kept;
  kept.push_back(std::move(subscription));
  EXPECT_FALSE(subscription);  // NOLINT(bugprone-use-after-move): that it is empty is the point.
  EXPECT_TRUE(kept.front());
  publisher.send();
  EXPECT_EQ(heard, 1);
  kept.clear();
  publisher.send();
  EXPECT_EQ(heard, 1);
}

TEST(ChangePublisherTest, EmptySubscriptionIsFalse) {
  EXPECT_FALSE(Subscription());
}

TEST(ChangePublisherTest, SubscriberMayEndItsOwnSubscription) {
  ChangePublisher publisher;
  int heard = 0;
  Subscription subscription;
  // Held by the function only, so it must not be destroyed while the function runs.
  const auto note = std::make_shared<int>(7);
  std::weak_ptr<int> held = note;
  subscription = publisher.subscribe([&, note = std::make_shared<int>(*note)] {
    subscription = {};
    heard += *note;
  });
  publisher.send();
  publisher.send();
  EXPECT_EQ(heard, 7);
}

TEST(ChangePublisherTest, SubscriptionEndedDuringAnAnnouncementIsNotCalled) {
  ChangePublisher publisher;
  int heard = 0;
  Subscription later;
  const Subscription earlier = publisher.subscribe([&] { later = {}; });
  later = publisher.subscribe([&] { ++heard; });
  publisher.send();
  EXPECT_EQ(heard, 0);
}

TEST(ChangePublisherTest, SubscriberAddedDuringAnAnnouncementIsCalledFromTheNextOne) {
  ChangePublisher publisher;
  int heard = 0;
  std::optional<Subscription> added;
  const Subscription adding = publisher.subscribe([&] {
    if (!added) added = publisher.subscribe([&] { ++heard; });
  });
  publisher.send();
  EXPECT_EQ(heard, 0);
  publisher.send();
  EXPECT_EQ(heard, 1);
}

TEST(ChangePublisherTest, AnnouncementsMayBeNested) {
  ChangePublisher outer;
  ChangePublisher inner;
  int heard = 0;
  const Subscription forwarding = outer.subscribe([&] { inner.send(); });
  const Subscription subscription = inner.subscribe([&] { ++heard; });
  outer.send();
  EXPECT_EQ(heard, 1);
}

TEST(ChangePublisherTest, SubscriptionMayOutliveThePublisher) {
  auto publisher = std::make_unique<ChangePublisher>();
  Subscription subscription = publisher->subscribe([] {});
  publisher.reset();
  EXPECT_TRUE(subscription);
  subscription = {};
  EXPECT_FALSE(subscription);
}

TEST(ChangePublisherTest, PublisherMayBeDestroyedDuringItsAnnouncement) {
  auto publisher = std::make_unique<ChangePublisher>();
  int heard = 0;
  const Subscription first = publisher->subscribe([&] { publisher.reset(); });
  const Subscription second = publisher->subscribe([&] { ++heard; });
  publisher->send();
  EXPECT_EQ(heard, 1);
}

TEST(ChangePublisherTest, SubscriberIsDestroyedWithTheSubscription) {
  ChangePublisher publisher;
  const auto held = std::make_shared<int>();
  {
    const Subscription subscription = publisher.subscribe([held] {});
    EXPECT_GT(held.use_count(), 1);
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST(ChangePublisherTest, CountsAnnouncementsAndSubscribersOfTheWholeProcess) {
  const auto announcements = ChangePublisher::announcementCount();
  const auto subscribers = ChangePublisher::subscriberCount();
  ChangePublisher one;
  auto other = std::make_unique<ChangePublisher>();
  one.send();
  other->send();
  other->send();
  EXPECT_EQ(ChangePublisher::announcementCount(), announcements + 3);

  Subscription first = one.subscribe([] {});
  Subscription second = other->subscribe([] {});
  EXPECT_EQ(ChangePublisher::subscriberCount(), subscribers + 2);
  other.reset();
  second = {};
  EXPECT_EQ(ChangePublisher::subscriberCount(), subscribers + 1);
  Subscription moved = std::move(first);
  EXPECT_EQ(ChangePublisher::subscriberCount(), subscribers + 1);
  moved = {};
  EXPECT_EQ(ChangePublisher::subscriberCount(), subscribers);
}

}  // namespace
}  // namespace hushbox
