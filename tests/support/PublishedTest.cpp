#include "support/Published.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace hushbox {
namespace {

using testing::ElementsAre;

TEST(PublishedTest, InitialValueIsNotAnnounced) {
  ChangePublisher publisher;
  int heard = 0;
  const Subscription subscription = publisher.subscribe([&] { ++heard; });
  const Published<std::string> member{publisher, "initial"};
  EXPECT_EQ(member.get(), "initial");
  EXPECT_EQ(heard, 0);
}

TEST(PublishedTest, AnnouncesBeforeItChanges) {
  ChangePublisher publisher;
  Published<int> member{publisher, 1};
  std::vector<int> seen;
  const Subscription subscription = publisher.subscribe([&] { seen.push_back(member.get()); });
  member = 2;
  EXPECT_EQ(member.get(), 2);
  member = 3;
  EXPECT_EQ(member.get(), 3);
  EXPECT_THAT(seen, ElementsAre(1, 2));
}

TEST(PublishedTest, AnnouncesEvenIfTheValueStaysEqual) {
  ChangePublisher publisher;
  Published<std::optional<bool>> member{publisher, std::nullopt};
  int heard = 0;
  const Subscription subscription = publisher.subscribe([&] { ++heard; });
  member = std::nullopt;
  member = true;
  member = true;
  EXPECT_EQ(heard, 3);
  EXPECT_EQ(member.get(), true);
}

TEST(PublishedTest, MembersShareTheirOwnersPublisher) {
  ChangePublisher publisher;
  Published<int> level{publisher, 0};
  Published<bool> charging{publisher, false};
  std::vector<std::pair<int, bool>> seen;
  const Subscription subscription =
      publisher.subscribe([&] { seen.emplace_back(level.get(), charging.get()); });
  level = 5;
  charging = true;
  EXPECT_THAT(seen, ElementsAre(std::pair(0, false), std::pair(5, false)));
}

TEST(PublishedTest, AssignmentsMayBeChained) {
  ChangePublisher publisher;
  Published<int> member{publisher, 0};
  int heard = 0;
  const Subscription subscription = publisher.subscribe([&] { ++heard; });
  (member = 1) = 2;
  EXPECT_EQ(member.get(), 2);
  EXPECT_EQ(heard, 2);
}

}  // namespace
}  // namespace hushbox
