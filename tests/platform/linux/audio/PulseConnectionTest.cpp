#include "platform/linux/audio/PulseConnection.h"

#include <glib-unix.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <pulse/glib-mainloop.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "platform/linux/audio/PulseObserver.h"
#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using testing::SizeIs;

using Clock = std::chrono::steady_clock;

/// A socket at the server's address with no sound server behind it. It closes each connection at
/// once or accepts it and never replies.
class FakeServerSocket {
 public:
  enum class Behaviour { Closes, NeverReplies };

  explicit FakeServerSocket(Behaviour behaviour) : behaviour_(behaviour) {
    setenv("PULSE_SERVER", ("unix:" + path_).c_str(), 1);
  }
  ~FakeServerSocket() {
    unsetenv("PULSE_SERVER");
    if (watch_ != 0) g_source_remove(watch_);
    for (const int connection : connections_) close(connection);
    if (socket_ >= 0) close(socket_);
  }
  FakeServerSocket(const FakeServerSocket&) = delete;
  FakeServerSocket& operator=(const FakeServerSocket&) = delete;

  void open() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket_, 8) != 0) {
      throw std::runtime_error("no socket can be made at " + path_);
    }
    watch_ = g_unix_fd_add(socket_, G_IO_IN, &FakeServerSocket::answer, this);
  }

  /// When each connection was made.
  const std::vector<Clock::time_point>& attempts() const { return attempts_; }
  bool waitForAttempts(std::size_t count) const {
    return holdsWithin([&] { return attempts_.size() == count; }, serverTimeout);
  }

 private:
  static gboolean answer(gint descriptor, GIOCondition, gpointer self) {
    auto& server = *static_cast<FakeServerSocket*>(self);
    const int connection = accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) return G_SOURCE_CONTINUE;
    server.attempts_.push_back(Clock::now());
    if (server.behaviour_ == Behaviour::Closes) {
      close(connection);
    } else {
      server.connections_.push_back(connection);
    }
    return G_SOURCE_CONTINUE;
  }

  rehearsal::ScratchFolder scratch_;
  const std::string path_ = scratch_.path() / "native";
  Behaviour behaviour_;
  int socket_ = -1;
  guint watch_ = 0;
  std::vector<Clock::time_point> attempts_;
  std::vector<int> connections_;
};

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
  FakeServerSocket server(FakeServerSocket::Behaviour::Closes);
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
  FakeServerSocket server(FakeServerSocket::Behaviour::NeverReplies);
  Client client;
  const PulseConnection connection(mainLoop(), client);
  EXPECT_TRUE(holdsWithin([&] { return !connection.isOpen(); }, serverTimeout));
  letPass(2 * PulseConnection::minRetryDelay);
  server.open();
  EXPECT_TRUE(server.waitForAttempts(1));
  EXPECT_TRUE(connection.isOpen());
}

TEST(PulseConnectionTest, WaitsForAServerThatAcceptsAndDoesNotReply) {
  FakeServerSocket server(FakeServerSocket::Behaviour::NeverReplies);
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
  FakeServerSocket server(FakeServerSocket::Behaviour::NeverReplies);
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

/// An observer on a thread of its own.
class PulseObserverTest : public testing::Test {
 protected:
  void start() {
    thread_ = std::thread([this] { observer_.run(); });
  }
  ~PulseObserverTest() override {
    observer_.stop();
    if (thread_.joinable()) thread_.join();
    reports_->close();
  }

  std::shared_ptr<PulseReportQueue> reports_ = std::make_shared<PulseReportQueue>([] {});
  PulseObserver observer_{reports_};
  std::thread thread_;
};

TEST_F(PulseObserverTest, ReportsNothingWhileAServerHasNotReplied) {
  FakeServerSocket server(FakeServerSocket::Behaviour::NeverReplies);
  server.open();
  start();
  EXPECT_TRUE(server.waitForAttempts(1));
  reports_->waitForReport(100ms);
  EXPECT_FALSE(reports_->takeUntil(Instant::max()).has_value());
}

TEST_F(PulseObserverTest, ReportsTheFirstFailureToConnectOnce) {
  FakeServerSocket server(FakeServerSocket::Behaviour::Closes);
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
