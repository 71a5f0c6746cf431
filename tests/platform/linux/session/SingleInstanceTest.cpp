#include "platform/linux/session/SingleInstance.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <memory>

#include "rehearsal/Session.h"
#include "tests/platform/linux/fixtures/BusClient.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class SingleInstanceTest : public testing::Test {
 protected:
  SingleInstanceTest() { session_.applyToThisProcess(); }

  rehearsal::Session session_;
  std::unique_ptr<SessionBusConnection> bus_ = std::make_unique<SessionBusConnection>();
};

/// Another program that owns Hushbox's name.
class OtherInstance {
 public:
  explicit OtherInstance(const std::string& busAddress, guint32 flags = 0) : client_(busAddress) {
    client_.call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
                 g_variant_new("(su)", "org.hushbox.Hushbox", flags));
  }

 private:
  BusClient client_;
};

TEST_F(SingleInstanceTest, IsFirstWhenNothingOwnsTheName) {
  EXPECT_TRUE(SingleInstance(*bus_).isFirst());
}

TEST_F(SingleInstanceTest, IsNotFirstWhileAnotherOwnsTheNameAndDoesNotInheritIt) {
  auto other = std::make_unique<OtherInstance>(session_.busAddress());
  EXPECT_FALSE(SingleInstance(*bus_).isFirst());
  other.reset();
  bus_ = std::make_unique<SessionBusConnection>();
  const rehearsal::BusConnection observer(session_.busAddress());
  EXPECT_TRUE(
      rehearsal::holdsWithin([&] { return !observer.hasOwner("org.hushbox.Hushbox"); }, 5s));
  EXPECT_TRUE(SingleInstance(*bus_).isFirst());
}

TEST_F(SingleInstanceTest, OwnsTheNameAsLongAsTheConnection) {
  const SingleInstance instance(*bus_);
  const rehearsal::BusConnection observer(session_.busAddress());
  EXPECT_TRUE(observer.hasOwner("org.hushbox.Hushbox"));
  bus_.reset();
  EXPECT_TRUE(
      rehearsal::holdsWithin([&] { return !observer.hasOwner("org.hushbox.Hushbox"); }, 5s));
}

TEST_F(SingleInstanceTest, CannotBeReplaced) {
  const SingleInstance instance(*bus_);
  constexpr guint32 replaceExisting = 2;
  constexpr guint32 doNotQueue = 4;
  { const OtherInstance other(session_.busAddress(), replaceExisting | doNotQueue); }
  const rehearsal::BusConnection observer(session_.busAddress());
  EXPECT_TRUE(observer.hasOwner("org.hushbox.Hushbox"));
}

TEST_F(SingleInstanceTest, TakesTheNameAgainAfterTheBusHasCrashed) {
  SingleInstance instance(*bus_);
  int displaced = 0;
  instance.keep([&] { ++displaced; });
  session_.restartBus();
  const rehearsal::BusConnection observer(session_.busAddress());
  EXPECT_TRUE(rehearsal::holdsWithin([&] { return observer.hasOwner("org.hushbox.Hushbox"); }, 5s));
  EXPECT_TRUE(instance.isFirst());
  EXPECT_EQ(displaced, 0);
}

TEST_F(SingleInstanceTest, IsDisplacedByAnInstanceThatTookTheNameMeanwhile) {
  SingleInstance instance(*bus_);
  int displaced = 0;
  instance.keep([&] { ++displaced; });
  EXPECT_TRUE(instance.isFirst());
  session_.restartBus();
  const OtherInstance other(session_.busAddress());
  EXPECT_TRUE(rehearsal::holdsWithin([&] { return displaced == 1; }, 5s));
  EXPECT_FALSE(instance.isFirst());
}

TEST_F(SingleInstanceTest, TakesTheNameOnceTheBusIsThere) {
  session_.bus().freeze();
  SingleInstance instance(*bus_);
  instance.keep([] {});
  session_.bus().thaw();
  const rehearsal::BusConnection observer(session_.busAddress());
  EXPECT_TRUE(rehearsal::holdsWithin([&] { return observer.hasOwner("org.hushbox.Hushbox"); }, 5s));
}

TEST_F(SingleInstanceTest, IsFirstWithoutABus) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_TRUE(SingleInstance(*bus_).isFirst());
}

TEST_F(SingleInstanceTest, WaitsForAStoppedBusForOneTimeoutOnly) {
  session_.bus().freeze();
  const auto begin = Clock::now();
  EXPECT_TRUE(SingleInstance(*bus_).isFirst());
  EXPECT_GE(Clock::now() - begin, SingleInstance::timeout - 10ms);
  EXPECT_LT(Clock::now() - begin, SingleInstance::timeout + 500ms);
  session_.bus().thaw();
}

TEST_F(SingleInstanceTest, WaitsForABusThatStopsAfterConnectingForOneTimeoutOnly) {
  bus_->connect();
  ASSERT_TRUE(rehearsal::holdsWithin([this] { return bus_->isConnected(); }, 5s));
  session_.bus().freeze();
  const auto begin = Clock::now();
  EXPECT_TRUE(SingleInstance(*bus_).isFirst());
  EXPECT_LT(Clock::now() - begin, SingleInstance::timeout + 500ms);
  session_.bus().thaw();
}

}  // namespace
}  // namespace hushbox
