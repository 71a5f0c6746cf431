#include "platform/linux/bus/SessionBusConnection.h"

#include <glib-unix.h>
#include <gmock/gmock.h>
#include <malloc.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/BusClient.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using rehearsal::waitUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Clock = std::chrono::steady_clock;
using Outcome = BusReply::Outcome;

class SessionBusConnectionTest : public testing::Test {
 protected:
  SessionBusConnectionTest() {
    session_.applyToThisProcess();
    // Until the shared connection of the test before is destroyed, GLib returns that one.
    ConnectionPointer shared;
    waitUntil(
        [&] {
          shared.reset();
          shared.reset(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
          return shared && !g_dbus_connection_is_closed(shared.get());
        },
        serverTimeout, "a shared connection");
    waitUntilDestroyed(std::move(shared));
  }

  /// GLib's thread may hold the connection for a moment longer. Until it is destroyed, GLib returns
  /// it to the next caller, even under another address.
  static void waitUntilDestroyed(ConnectionPointer connection) {
    GWeakRef weak{};
    g_weak_ref_init(&weak, connection.get());
    connection.reset();
    waitUntil(
        [&] {
          const ConnectionPointer held(static_cast<GDBusConnection*>(g_weak_ref_get(&weak)));
          return held == nullptr;
        },
        serverTimeout, "the end of the shared connection");
    g_weak_ref_clear(&weak);
  }

  Subscription observe() {
    return bus_->observe(
        [this](GDBusConnection* connection) { connections_.push_back(connection); },
        [this](const std::string& reason) { reasons_.push_back(reason); });
  }
  void connect() {
    bus_->connect();
    waitUntil([this] { return bus_->isConnected(); }, serverTimeout, "the connection");
  }

  static BusCall getId(std::chrono::milliseconds timeout = serverTimeout) {
    return {{"org.freedesktop.DBus", "/org/freedesktop/DBus"},
            "org.freedesktop.DBus",
            "GetId",
            "(s)",
            timeout,
            nullptr};
  }
  BusReply call(BusCall call) {
    std::optional<BusReply> reply;
    bus_->call(std::move(call), [&](BusReply given) { reply = std::move(given); });
    waitUntil([&] { return reply.has_value(); }, serverTimeout, "the reply");
    return std::move(*reply);
  }

  rehearsal::Session session_;
  std::unique_ptr<SessionBusConnection> bus_ = std::make_unique<SessionBusConnection>();
  std::vector<GDBusConnection*> connections_;
  std::vector<std::string> reasons_;
};

TEST_F(SessionBusConnectionTest, SharesTheConnectionOfTheProcess) {
  connect();
  const auto observed = observe();
  SessionBusConnection second;
  GDBusConnection* other = nullptr;
  const auto observedToo = second.observe([&](GDBusConnection* connection) { other = connection; },
                                          [](const std::string&) {});
  second.connect();
  waitUntil([&] { return other != nullptr; }, serverTimeout, "the second connection");
  const ConnectionPointer shared(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  EXPECT_THAT(connections_, ElementsAre(shared.get()));
  EXPECT_EQ(other, shared.get());
}

TEST_F(SessionBusConnectionTest, ObserversLearnOfTheConnectionAndOfItsEnd) {
  const auto early = observe();
  EXPECT_THAT(connections_, IsEmpty());
  connect();
  EXPECT_THAT(connections_, SizeIs(1));
  const auto late = observe();
  EXPECT_THAT(connections_, SizeIs(2));
  session_.bus().kill();
  waitUntil([this] { return reasons_.size() == 2; }, serverTimeout, "the end");
  EXPECT_FALSE(bus_->isConnected());
}

TEST_F(SessionBusConnectionTest, ConnectsOnceHoweverOftenItIsAsked) {
  const auto observed = observe();
  bus_->connect();
  bus_->connect();
  EXPECT_TRUE(call(getId()));
  bus_->connect();
  letPass(20ms);
  EXPECT_THAT(connections_, SizeIs(1));
}

TEST_F(SessionBusConnectionTest, EndedSubscriptionIsNotCalled) {
  std::optional<Subscription> subscription = observe();
  subscription.reset();
  connect();
  letPass(20ms);
  EXPECT_THAT(connections_, IsEmpty());
}

TEST_F(SessionBusConnectionTest, ConnectsAgainWhileGLibStillHoldsTheClosedConnection) {
  connect();
  const ConnectionPointer held(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  session_.bus().kill();
  waitUntil([this] { return !bus_->isConnected(); }, serverTimeout, "the end");
  const rehearsal::Session next;
  setenv("DBUS_SESSION_BUS_ADDRESS", next.busAddress().c_str(), 1);
  // One that has not failed to connect a moment ago.
  bus_ = std::make_unique<SessionBusConnection>();
  connect();
  EXPECT_TRUE(call(getId()));
}

TEST_F(SessionBusConnectionTest, ConnectsAgainByItself) {
  const auto observed = observe();
  connect();
  session_.restartBus();
  waitUntil([this] { return connections_.size() == 2; }, serverTimeout, "the next connection");
  EXPECT_THAT(reasons_, SizeIs(1));
  EXPECT_TRUE(call(getId()));
}

TEST_F(SessionBusConnectionTest, EndOfTheBusDoesNotEndTheProcess) {
  int signals = 0;
  const auto onSignal = [](gpointer count) -> gboolean {
    ++*static_cast<int*>(count);
    return G_SOURCE_CONTINUE;
  };
  const guint source = g_unix_signal_add(SIGTERM, onSignal, &signals);
  connect();
  {
    // As settings storage does.
    const ConnectionPointer held(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    session_.bus().kill();
    waitUntil([this] { return !bus_->isConnected(); }, serverTimeout, "the end");
    letPass(20ms);
  }
  g_source_remove(source);
  EXPECT_EQ(signals, 0);
}

TEST_F(SessionBusConnectionTest, DestroyedWhileConnectingItLeavesNoConnectionThatEndsTheProcess) {
  session_.bus().freeze();
  bus_->connect();
  bus_.reset();
  session_.bus().thaw();
  const ConnectionPointer held(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  EXPECT_TRUE(rehearsal::holdsWithin(
      [&] { return !g_dbus_connection_get_exit_on_close(held.get()); }, serverTimeout));
}

TEST_F(SessionBusConnectionTest, CallConnectsFirst) {
  const BusReply reply = call(getId());
  EXPECT_TRUE(reply);
  EXPECT_EQ(reply.error, "");
}

TEST_F(SessionBusConnectionTest, FailedCallsSayWhy) {
  BusCall unknown = getId();
  unknown.method = "NoSuchMethod";
  const BusReply refused = call(std::move(unknown));
  EXPECT_EQ(refused.outcome, Outcome::refused);
  EXPECT_THAT(refused.error, Not(testing::HasSubstr("GDBus")));
  BusCall unowned = getId();
  unowned.object.busName = "org.hushbox.Unowned";
  EXPECT_EQ(call(std::move(unowned)).outcome, Outcome::unreachable);
}

TEST_F(SessionBusConnectionTest, ErrorsLeakNothing) {
  const ErrorPointer error(
      g_dbus_error_new_for_dbus_error(("test.Error" + std::string(1'000, 'x')).c_str(), "text"));
  EXPECT_EQ(BusReply::of(nullptr, error.get()).error, "text");
  const auto before = mallinfo2().uordblks;
  for (int i = 0; i < 1'000; ++i) BusReply::of(nullptr, error.get());
  EXPECT_LT(mallinfo2().uordblks, before + 100'000);
}

TEST_F(SessionBusConnectionTest, CallsFailWithoutABusAndDoNotConnectAgainAtOnce) {
  setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  for (int i = 0; i < 3; ++i) {
    const BusReply reply = call(getId());
    EXPECT_EQ(reply.outcome, Outcome::unreachable);
    EXPECT_NE(reply.error, "");
  }
  EXPECT_FALSE(bus_->connect());
}

TEST_F(SessionBusConnectionTest, CallsFailWithoutAnAddress) {
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
  const BusReply reply = call(getId());
  EXPECT_EQ(reply.outcome, Outcome::unreachable);
  EXPECT_NE(reply.error, "");
}

TEST_F(SessionBusConnectionTest, WaitsForAReply) {
  const BusReply reply = bus_->callAndWait(getId());
  ASSERT_TRUE(reply);
  EXPECT_TRUE(g_variant_is_of_type(reply.value.get(), G_VARIANT_TYPE("(s)")));
}

TEST_F(SessionBusConnectionTest, WaitingForAReplyTimesOut) {
  session_.bus().freeze();
  const auto begin = Clock::now();
  EXPECT_FALSE(bus_->callAndWait(getId(200ms)));
  EXPECT_GE(Clock::now() - begin, 190ms);
  EXPECT_LT(Clock::now() - begin, 1s);
  session_.bus().thaw();
}

TEST_F(SessionBusConnectionTest, DestructorSendsWhatIsQueued) {
  BusClient client(session_.busAddress());
  connect();
  const auto observed = observe();
  client.listenTo(g_dbus_connection_get_unique_name(connections_.at(0)));
  for (int i = 0; i < 100; ++i)
    g_dbus_connection_emit_signal(connections_.at(0), nullptr, "/", "test.Interface", "Signal",
                                  nullptr, nullptr);
  bus_.reset();
  EXPECT_THAT(client.takeSignals(), SizeIs(100));
}

TEST_F(SessionBusConnectionTest, DestructorClosesTheConnectionThatOthersHold) {
  connect();
  const auto observed = observe();
  const ConnectionPointer held(G_DBUS_CONNECTION(g_object_ref(connections_.at(0))));
  bus_.reset();
  EXPECT_TRUE(g_dbus_connection_is_closed(held.get()));
}

}  // namespace
}  // namespace hushbox
