#include "platform/linux/audio/PropertyListeners.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace hushbox {
namespace {

using testing::ElementsAre;

constexpr AudioProperty list{audio::systemObject, audio::deviceList};
constexpr AudioProperty volume{2, audio::inputVolume};
constexpr AudioProperty running{2, audio::runningSomewhere};

class PropertyListenersTest : public testing::Test {
 protected:
  std::function<void()> noting(std::string word) {
    return [this, word = std::move(word)] { notes_.push_back(word); };
  }

  std::optional<PropertyListeners> listeners_{std::in_place};
  std::vector<std::string> notes_;
};

TEST_F(PropertyListenersTest, CallsEachListenerOfAChangedPropertyOnceInTheOrderOfTheChanges) {
  const auto first = listeners_->add(volume, noting("volume"));
  const auto second = listeners_->add(list, noting("list"));
  const auto third = listeners_->add(running, noting("running"));
  const auto fourth = listeners_->add(volume, noting("volume too"));
  listeners_->call({list, volume, list});
  EXPECT_THAT(notes_, ElementsAre("list", "volume", "volume too"));
}

TEST_F(PropertyListenersTest, RemovesOnlyAListenerOfThatProperty) {
  const auto registration = listeners_->add(volume, noting("volume"));
  EXPECT_FALSE(listeners_->remove(running, registration));
  EXPECT_FALSE(listeners_->remove(volume, RegistrationToken()));
  listeners_->call({volume});
  EXPECT_TRUE(listeners_->remove(volume, registration));
  EXPECT_FALSE(listeners_->remove(volume, registration));
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre("volume"));
}

TEST_F(PropertyListenersTest, HasAListenerUntilItIsRemoved) {
  EXPECT_FALSE(listeners_->has(running));
  const auto registration = listeners_->add(running, noting("running"));
  EXPECT_TRUE(listeners_->has(running));
  EXPECT_FALSE(listeners_->has(volume));
  listeners_->remove(running, registration);
  EXPECT_FALSE(listeners_->has(running));
}

TEST_F(PropertyListenersTest, KeepsAListenerAfterItsTokenIsDestroyed) {
  listeners_->add(volume, noting("volume"));
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre("volume"));
}

TEST_F(PropertyListenersTest, ListenerMayRemoveItselfAndTheNext) {
  RegistrationToken self;
  RegistrationToken next;
  self = listeners_->add(volume, [&] {
    notes_.push_back("self");
    listeners_->remove(volume, self);
    listeners_->remove(volume, next);
    notes_.push_back("still here");
  });
  next = listeners_->add(volume, noting("next"));
  listeners_->call({volume});
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre("self", "still here"));
}

TEST_F(PropertyListenersTest, ListenerAddedDuringACallWaitsForTheNextChange) {
  listeners_->add(volume, [&] { listeners_->add(volume, noting("added")); });
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre());
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre("added"));
}

TEST_F(PropertyListenersTest, ListenerMayDestroyTheListeners) {
  listeners_->add(volume, [&] {
    notes_.push_back("end");
    listeners_.reset();
  });
  listeners_->add(volume, noting("after destruction"));
  listeners_->call({volume});
  EXPECT_THAT(notes_, ElementsAre("end"));
}

TEST_F(PropertyListenersTest, ReleasesTheListenersOfRemovedObjects) {
  const auto held = std::make_shared<int>();
  listeners_->add(volume, [held] {});
  const auto registration = listeners_->add(volume, noting("volume"));
  listeners_->add(list, noting("list"));
  listeners_->removeUnless([](AudioObjectID object) { return object == audio::systemObject; });
  EXPECT_EQ(held.use_count(), 1);
  listeners_->call({volume, list});
  EXPECT_THAT(notes_, ElementsAre("list"));
  EXPECT_FALSE(listeners_->remove(volume, registration));
}

TEST_F(PropertyListenersTest, ReleasesARemovedListener) {
  const auto held = std::make_shared<int>();
  {
    const auto registration = listeners_->add(volume, [held] {});
    EXPECT_EQ(held.use_count(), 2);
    listeners_->remove(volume, registration);
  }
  EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
}  // namespace hushbox
