#include "platform/linux/bus/BoundedBusConnection.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "rehearsal/AccessibilityBus.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/AccessibleProgram.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using Outcome = BusReply::Outcome;

class BoundedBusConnectionTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(connection_.open(address_, milliseconds{10'000})); }

  static BusCall role(const AccessibleProgram& program, milliseconds wait) {
    return {{program.busName(), AccessibleProgram::root},
            "org.a11y.atspi.Accessible",
            "GetRole",
            "(u)",
            wait,
            nullptr};
  }
  Outcome ask(BusCall call) {
    std::vector<BusCall> calls;
    calls.push_back(std::move(call));
    return connection_.ask(std::move(calls)).front().outcome;
  }

  /// Holds for calls over the bus and over a direct connection.
  void expectRepliesInTheOrderOfTheCalls() {
    other_.put(AccessibleProgram::root, {.role = 7});
    std::vector<BusCall> calls;
    for (int i = 0; i < 50; ++i) calls.push_back(role(i % 2 ? other_ : program_, serverTimeout));
    const auto replies = connection_.ask(std::move(calls));
    ASSERT_EQ(replies.size(), 50U);
    for (std::size_t i = 0; i < replies.size(); ++i) {
      ASSERT_TRUE(replies[i]);
      guint32 found = 0;
      g_variant_get(replies[i].value.get(), "(u)", &found);
      EXPECT_EQ(found, i % 2 ? 7U : 75U);
    }
    EXPECT_EQ(connection_.callCount(), 50U);
  }
  void expectErrorsAndWrongTypesToBeRefusals() {
    BusCall unknown = role(program_, serverTimeout);
    unknown.method = "NoSuchMethod";
    EXPECT_EQ(ask(std::move(unknown)), Outcome::refused);
    program_.answerWith(
        [](const std::string&, const std::string&) { return g_variant_new("(s)", "text"); });
    EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::refused);
  }
  void expectPeerThatTimesOutToBeCalledAgainOnceItHasReplied() {
    program_.freeze();
    const auto before = steady_clock::now();
    EXPECT_EQ(ask(role(program_, milliseconds{200})), Outcome::timedOut);
    EXPECT_GE(steady_clock::now() - before, milliseconds{200});
    EXPECT_TRUE(connection_.hasTimedOut(program_.busName()));

    const int callsBefore = callsTo(program_);
    const auto again = steady_clock::now();
    for (int i = 0; i < 20; ++i)
      EXPECT_EQ(ask(role(program_, milliseconds{10'000})), Outcome::timedOut);
    EXPECT_LT(steady_clock::now() - again, milliseconds{5'000});
    EXPECT_EQ(callsTo(program_), callsBefore);
    EXPECT_EQ(ask(role(other_, serverTimeout)), Outcome::replied);

    program_.thaw();
    EXPECT_TRUE(holdsWithin(
        [&] {
          connection_.dispatch();
          return !connection_.hasTimedOut(program_.busName());
        },
        serverTimeout));
    EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
  }
  static int callsTo(const AccessibleProgram& program) {
    return program.calls() + program.directCalls();
  }

  rehearsal::Session session_;
  rehearsal::AccessibilityBus accessibility_{session_};
  const std::string address_ = accessibility_.address();
  AccessibleProgram program_{address_, "One", "Toolkit"};
  AccessibleProgram other_{address_, "Other", "Toolkit"};
  BoundedBusConnection connection_;
};

TEST_F(BoundedBusConnectionTest, RepliesComeInTheOrderOfTheCalls) {
  expectRepliesInTheOrderOfTheCalls();
}

TEST_F(BoundedBusConnectionTest, PeerThatTimesOutIsCalledAgainOnceItHasReplied) {
  expectPeerThatTimesOutToBeCalledAgainOnceItHasReplied();
}

TEST_F(BoundedBusConnectionTest, CallsWithAShortTimeoutDoNotAddToThoseWithALongOne) {
  // Neither replies; ask() returns after the longer timeout, not after the sum.
  program_.freeze();
  other_.freeze();
  std::vector<BusCall> calls;
  calls.push_back(role(program_, milliseconds{300}));
  calls.push_back(role(other_, milliseconds{100}));
  const auto before = steady_clock::now();
  connection_.ask(std::move(calls));
  EXPECT_GE(steady_clock::now() - before, milliseconds{300});
  EXPECT_LT(steady_clock::now() - before, milliseconds{5'000});
}

TEST_F(BoundedBusConnectionTest, ReturnsWithTheLastReply) {
  other_.freeze();
  std::vector<BusCall> calls;
  calls.push_back(role(program_, milliseconds{60'000}));
  calls.push_back(role(other_, milliseconds{100}));
  const auto before = steady_clock::now();
  const auto replies = connection_.ask(std::move(calls));
  EXPECT_LT(steady_clock::now() - before, milliseconds{30'000});
  EXPECT_EQ(replies[0].outcome, Outcome::replied);
  EXPECT_EQ(replies[1].outcome, Outcome::timedOut);
}

TEST_F(BoundedBusConnectionTest, ErrorsAndWrongTypesAreRefusals) {
  expectErrorsAndWrongTypesToBeRefusals();
}

TEST_F(BoundedBusConnectionTest, NamesWithoutAnOwnerAreUnreachable) {
  BusCall unowned = role(program_, serverTimeout);
  unowned.object.busName = ":1.99999";
  EXPECT_EQ(ask(std::move(unowned)), Outcome::unreachable);
  BusCall noName = role(program_, serverTimeout);
  noName.object.busName = "not a name";
  EXPECT_EQ(ask(std::move(noName)), Outcome::unreachable);
  BusCall noPath = role(program_, serverTimeout);
  noPath.object.path = "no path";
  EXPECT_EQ(ask(std::move(noPath)), Outcome::unreachable);
}

TEST_F(BoundedBusConnectionTest, DoesNotIterateTheMainContextMeanwhile) {
  bool ran = false;
  GSource* const idle = g_idle_source_new();
  g_source_set_callback(
      idle,
      [](gpointer data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return G_SOURCE_REMOVE;
      },
      &ran, nullptr);
  g_source_attach(idle, nullptr);
  program_.freeze();
  ask(role(program_, milliseconds{50}));
  ask(role(other_, serverTimeout));
  connection_.dispatch();
  EXPECT_FALSE(ran);
  g_source_destroy(idle);
  g_source_unref(idle);
}

TEST_F(BoundedBusConnectionTest, EndOfTheBusClosesItAndItCanBeOpenedAgain) {
  accessibility_.kill();
  EXPECT_TRUE(holdsWithin([&] { return !connection_.isOpen(); }, serverTimeout));
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::unreachable);
  EXPECT_TRUE(connection_.open(accessibility_.address(), milliseconds{10'000}));
  EXPECT_TRUE(connection_.isOpen());
}

TEST_F(BoundedBusConnectionTest, OpeningItAgainForgetsWhatTimedOut) {
  program_.freeze();
  EXPECT_EQ(ask(role(program_, milliseconds{50})), Outcome::timedOut);
  ASSERT_TRUE(connection_.open(address_, serverTimeout));
  EXPECT_FALSE(connection_.hasTimedOut(program_.busName()));
  program_.thaw();
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
}

TEST_F(BoundedBusConnectionTest, PostedCallsArriveAndHaveNoReply) {
  EXPECT_TRUE(connection_.post(role(program_, serverTimeout)));
  EXPECT_TRUE(holdsWithin([&] { return callsTo(program_) == 1; }, serverTimeout));
  EXPECT_EQ(connection_.callCount(), 1U);
}

TEST_F(BoundedBusConnectionTest, PostsNothingToAPeerThatHasTimedOutAndNothingWhenClosed) {
  program_.freeze();
  EXPECT_EQ(ask(role(program_, milliseconds{50})), Outcome::timedOut);
  EXPECT_FALSE(connection_.post(role(program_, serverTimeout)));
  connection_.close();
  EXPECT_FALSE(connection_.post(role(other_, serverTimeout)));
}

TEST_F(BoundedBusConnectionTest, SignalsArriveInDispatchUntilTheConnectionIsClosed) {
  int signals = 0;
  connection_.subscribe("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", nullptr,
                        [&](GVariant*) { ++signals; });
  ask(role(program_, serverTimeout));
  const int before = signals;
  AccessibleProgram newcomer(address_, "Newcomer", "Toolkit");
  EXPECT_EQ(signals, before);
  EXPECT_TRUE(holdsWithin(
      [&] {
        connection_.dispatch();
        return signals > before;
      },
      serverTimeout));
  connection_.close();
  EXPECT_FALSE(connection_.isOpen());
}

TEST_F(BoundedBusConnectionTest, LeavesTheBusWhenClosedEvenWithACallUnderWay) {
  const rehearsal::BusConnection observer(address_);
  const auto names = [&] {
    const rehearsal::Variant reply = observer.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                   "org.freedesktop.DBus", "ListNames", nullptr);
    const rehearsal::Variant list(g_variant_get_child_value(reply.get(), 0));
    return g_variant_n_children(list.get());
  };
  program_.freeze();
  connection_.send(role(program_, serverTimeout));
  ASSERT_EQ(ask(role(other_, serverTimeout)), Outcome::replied);
  const gsize before = names();
  connection_.close();
  EXPECT_TRUE(holdsWithin([&] { return names() == before - 1; }, milliseconds{5'000}));
}

TEST_F(BoundedBusConnectionTest, CancelledSubscriptionsAreNotCalled) {
  int cancelled = 0;
  int signals = 0;
  const auto subscribe = [&](int& count) {
    return connection_.subscribe("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                                 nullptr, [&](GVariant*) { ++count; });
  };
  const auto subscription = subscribe(cancelled);
  const auto cancelledTwice = subscribe(cancelled);
  subscribe(signals);
  ask(role(program_, serverTimeout));
  const int before = cancelled;
  connection_.unsubscribe(subscription);
  connection_.unsubscribe(cancelledTwice);
  connection_.unsubscribe(cancelledTwice);
  signals = 0;
  AccessibleProgram newcomer(address_, "Newcomer", "Toolkit");
  EXPECT_TRUE(holdsWithin(
      [&] {
        connection_.dispatch();
        return signals > 0;
      },
      serverTimeout));
  EXPECT_EQ(cancelled, before);
  connection_.close();
  connection_.unsubscribe(subscription);
}

TEST(BoundedBusConnectionOpenTest, OpeningTimesOutOnAFrozenBus) {
  rehearsal::Session session;
  session.bus().freeze();
  BoundedBusConnection connection;
  const auto before = steady_clock::now();
  EXPECT_FALSE(connection.open(session.busAddress(), milliseconds{200}));
  EXPECT_LT(steady_clock::now() - before, milliseconds{10'000});
  EXPECT_FALSE(connection.isOpen());
  session.bus().thaw();
  EXPECT_TRUE(connection.open(session.busAddress(), milliseconds{10'000}));
}

TEST(BoundedBusConnectionOpenTest, OpeningFailsWithoutABusAtTheAddress) {
  BoundedBusConnection connection;
  EXPECT_FALSE(connection.open("unix:path=/nowhere/at/all", milliseconds{10'000}));
  EXPECT_FALSE(connection.open("nonsense", milliseconds{10'000}));
  EXPECT_FALSE(connection.isOpen());
}

/// With a direct connection to the one program as well.
class BoundedBusConnectionPeerTest : public BoundedBusConnectionTest {
 protected:
  void SetUp() override {
    BoundedBusConnectionTest::SetUp();
    program_.offer(path_);
    ASSERT_TRUE(
        connection_.reach(program_.busName(), "unix:path=" + path_, getpid(), serverTimeout));
  }

  const std::string path_ = (session_.folder() / "peer").string();
};

TEST_F(BoundedBusConnectionPeerTest, RepliesComeInTheOrderOfTheCallsOnBothConnections) {
  expectRepliesInTheOrderOfTheCalls();
  EXPECT_EQ(program_.directCalls(), 25);
}

TEST_F(BoundedBusConnectionPeerTest, ErrorsAndWrongTypesAreRefusals) {
  expectErrorsAndWrongTypesToBeRefusals();
}

TEST_F(BoundedBusConnectionPeerTest, PeerThatTimesOutIsCalledAgainOnceItHasReplied) {
  expectPeerThatTimesOutToBeCalledAgainOnceItHasReplied();
  EXPECT_EQ(program_.directCalls(), 2);
}

TEST_F(BoundedBusConnectionPeerTest, LongRepliesArriveComplete) {
  const std::string text(500'000, 'x');
  program_.answerWith(
      [&](const std::string&, const std::string&) { return g_variant_new("(s)", text.c_str()); });
  BusCall call = role(program_, serverTimeout);
  call.replyType = "(s)";
  std::vector<BusCall> calls;
  for (int i = 0; i < 3; ++i)
    calls.push_back({call.object, call.interface, call.method, "(s)", serverTimeout, nullptr});
  for (const BusReply& reply : connection_.ask(std::move(calls))) {
    ASSERT_TRUE(reply);
    const char* taken = nullptr;
    g_variant_get(reply.value.get(), "(&s)", &taken);
    EXPECT_EQ(taken, text);
  }
}

TEST_F(BoundedBusConnectionPeerTest, CallsGoOverTheBusOnceTheDirectConnectionIsClosed) {
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
  const int straight = program_.directCalls();
  EXPECT_EQ(straight, 1);
  program_.hangUp();
  // Perhaps only a call without a reply notices that it is closed.
  EXPECT_TRUE(holdsWithin([&] { return ask(role(program_, serverTimeout)) == Outcome::replied; },
                          serverTimeout));
  EXPECT_EQ(program_.directCalls(), straight);
}

TEST_F(BoundedBusConnectionPeerTest, CallsGoOverTheBusAfterLeaving) {
  connection_.leave(program_.busName());
  const int overTheSocket = program_.directCalls();
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
  EXPECT_EQ(program_.directCalls(), overTheSocket);
}

TEST_F(BoundedBusConnectionPeerTest, PostedCallsArrive) {
  EXPECT_TRUE(connection_.post(role(program_, serverTimeout)));
  EXPECT_TRUE(holdsWithin([&] { return program_.directCalls() == 1; }, serverTimeout));
}

TEST_F(BoundedBusConnectionPeerTest, NothingIsReachedBeforeTheBusIsOpen) {
  BoundedBusConnection closed;
  EXPECT_FALSE(closed.reach(program_.busName(), "unix:path=" + path_, getpid(), serverTimeout));
  EXPECT_EQ(closed.lostTime(), milliseconds{0});
}

TEST_F(BoundedBusConnectionPeerTest, DirectConnectionIsClosedWhenTheBusIsOpenedAgain) {
  ASSERT_TRUE(connection_.open(address_, serverTimeout));
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
  EXPECT_EQ(program_.directCalls(), 0);
}

TEST_F(BoundedBusConnectionPeerTest, DirectConnectionIsClosedWithTheBus) {
  connection_.close();
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::unreachable);
  ASSERT_TRUE(connection_.open(address_, serverTimeout));
  EXPECT_EQ(ask(role(program_, serverTimeout)), Outcome::replied);
  EXPECT_EQ(program_.directCalls(), 0);
}

}  // namespace
}  // namespace hushbox
