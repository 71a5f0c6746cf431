#include "platform/linux/audio/PulseConnection.h"

#include <gmock/gmock.h>
#include <malloc.h>
#include <pulse/glib-mainloop.h>

#include <chrono>
#include <cstdlib>
#include <variant>

#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/FakeServerSocket.h"
#include "tests/platform/linux/fixtures/PulseObserverFixture.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using testing::SizeIs;

/// libpulse's view of the default main context. Never freed, like the context itself.
pa_mainloop_api& mainLoop() {
  static pa_glib_mainloop* const loop = pa_glib_mainloop_new(nullptr);
  return *pa_glib_mainloop_get_api(loop);
}

class Client final : public PulseConnection::Client {
 public:
  void connected(pa_context&) override { ++connected_; }
  void disconnected() override { ++disconnected_; }

  int connected_ = 0;
  int disconnected_ = 0;
};

TEST(PulseConnectionTest, RetriesWithDoublingDelaysAndOneAttemptAtATime) {
  FakeServerSocket server(FakeServerSocket::Closes);
  server.open();
  Client client;
  const PulseConnection connection(mainLoop(), client);
  EXPECT_TRUE(server.waitForAttempts(5));
  auto delay = PulseConnection::minRetryDelay;
  for (std::size_t i = 1; i < server.attempts().size(); ++i) {
    // Timers count whole milliseconds.
    EXPECT_GE(server.attempts()[i] - server.attempts()[i - 1], delay - 2ms) << i;
    delay *= 2;
  }
  EXPECT_EQ(connection.context(), nullptr);
  EXPECT_EQ(client.connected_, 0);
  EXPECT_EQ(client.disconnected_, 0);
}

TEST(PulseConnectionTest, FindsASocketThatAppearsLater) {
  FakeServerSocket server(FakeServerSocket::NeverReplies);
  Client client;
  const PulseConnection connection(mainLoop(), client);
  EXPECT_TRUE(holdsWithin([&] { return !connection.isOpen(); }, serverTimeout));
  letPass(2 * PulseConnection::minRetryDelay);
  server.open();
  EXPECT_TRUE(server.waitForAttempts(1));
  EXPECT_TRUE(connection.isOpen());
}

TEST(PulseConnectionTest, WaitsForAServerThatAcceptsAndDoesNotReply) {
  FakeServerSocket server(FakeServerSocket::NeverReplies);
  server.open();
  Client client;
  const PulseConnection connection(mainLoop(), client);
  EXPECT_TRUE(server.waitForAttempts(1));
  letPass(3 * PulseConnection::minRetryDelay);
  EXPECT_THAT(server.attempts(), SizeIs(1));
  EXPECT_TRUE(connection.isOpen());
  EXPECT_EQ(connection.context(), nullptr);
}

TEST(PulseConnectionTest, CanBeDestroyedWhileConnecting) {
  FakeServerSocket server(FakeServerSocket::NeverReplies);
  server.open();
  Client client;
  {
    const PulseConnection connection(mainLoop(), client);
    EXPECT_TRUE(server.waitForAttempts(1));
  }
  letPass(2 * PulseConnection::minRetryDelay);
  EXPECT_THAT(server.attempts(), SizeIs(1));
}

TEST(PulseConnectionTest, LeavesNoMemoryBehind) {
  setenv("PULSE_SERVER", "unix:/dev/null/native", 1);
  Client client;
  const auto connectOften = [&] {
    for (int i = 0; i < 200; ++i) const PulseConnection connection(mainLoop(), client);
    return mallinfo2().uordblks;
  };
  connectOften();
  const auto before = connectOften();
  // Less than a hundred bytes for each.
  EXPECT_LT(connectOften(), before + 20'000);
  unsetenv("PULSE_SERVER");
}

using PulseObserverTest = PulseObserverFixture;

TEST_F(PulseObserverTest, ReportsNothingWhileAServerHasNotReplied) {
  FakeServerSocket server(FakeServerSocket::NeverReplies);
  server.open();
  start();
  EXPECT_TRUE(server.waitForAttempts(1));
  reports_->waitForReport(100ms);
  EXPECT_FALSE(reports_->takeUntil(Instant::max()).has_value());
}

TEST_F(PulseObserverTest, ReportsTheFirstFailureToConnectOnce) {
  FakeServerSocket server(FakeServerSocket::Closes);
  server.open();
  start();
  EXPECT_TRUE(server.waitForAttempts(2));
  const auto loss = reports_->takeUntil(Instant::max());
  ASSERT_TRUE(loss.has_value());
  EXPECT_TRUE(std::holds_alternative<PulseServerLoss>(loss->content));
  EXPECT_FALSE(reports_->takeUntil(Instant::max()).has_value());
}

}  // namespace
}  // namespace hushbox
