#include <arpa/inet.h>
#include <glib-unix.h>
#include <gmock/gmock.h>
#include <pulse/pulseaudio.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <deque>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/FakeServerSocket.h"
#include "tests/platform/linux/fixtures/PulseObserverFixture.h"

namespace hushbox {
namespace {

std::atomic<pa_usec_t> skippedTime = 0;

}  // namespace
}  // namespace hushbox

// libpulse's elapsed time in this program, which a test can move forward: its requests time out
// after 30 s.
pa_usec_t pa_rtclock_now() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  const auto elapsed = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
  return static_cast<pa_usec_t>(elapsed) + hushbox::skippedTime;
}

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::serverTimeout;

/// Requests of PulseAudio's native protocol (src/pulsecore/native-common.h there).
enum class Request : std::uint32_t {
  none = 0,
  authenticate = 8,
  sourceInfo = 23,
  sourceInfoList = 24,
  sourceOutputInfo = 31,
  sourceOutputInfoList = 32,
};

/// A sound server without devices that does not reply to one kind of request. After its lists it
/// announces a source and a recording stream, has neither when asked for it, and announces the
/// stream's removal last. A real server cannot be stopped between two replies.
class FakeSoundServer final : public FakeServerSocket {
 public:
  explicit FakeSoundServer(Request unanswered)
      : FakeServerSocket(NeverReplies), unanswered_(unanswered) {
    open();
  }
  ~FakeSoundServer() override {
    for (const Connection& connection : connections_) {
      if (connection.watch != 0) g_source_remove(connection.watch);
    }
  }

  /// Replies to every kind of request from now on.
  void replyToEverything() { unanswered_ = Request::none; }

 private:
  // An old version of the protocol, whose replies need only the numbers sent below.
  static constexpr std::uint32_t version = 12;
  enum class Message : std::uint32_t { error = 0, reply = 2, event = 66 };
  /// A message's length, channel, offset (two numbers) and flags come before its body.
  static constexpr std::size_t headerSize = 5 * sizeof(std::uint32_t);

  struct Connection {
    FakeSoundServer* server;
    guint watch;
    std::string received;
  };

  void accepted(int descriptor) override {
    Connection& connection = connections_.emplace_back(Connection{this, 0, {}});
    connection.watch = g_unix_fd_add(descriptor, G_IO_IN, &FakeSoundServer::read, &connection);
  }

  static gboolean read(gint descriptor, GIOCondition, gpointer connection) {
    auto& [server, watch, received] = *static_cast<Connection*>(connection);
    std::array<char, 4096> bytes{};
    const ssize_t count = recv(descriptor, bytes.data(), bytes.size(), 0);
    received.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    while (received.size() >= headerSize) {
      const std::size_t size = headerSize + numberAt(received, 0);
      if (received.size() < size) break;
      // Each number in a message follows a byte that tells its type.
      server->answer(descriptor, static_cast<Request>(numberAt(received, headerSize + 1)),
                     numberAt(received, headerSize + 6));
      received.erase(0, size);
    }
    if (count > 0) return G_SOURCE_CONTINUE;
    watch = 0;
    return G_SOURCE_REMOVE;
  }

  void answer(int descriptor, Request request, std::uint32_t tag) {
    if (request == unanswered_) {
      // Only the announcements below.
    } else if (request == Request::sourceInfo || request == Request::sourceOutputInfo) {
      send(descriptor, Message::error, {tag, PA_ERR_NOENTITY});
    } else if (request == Request::authenticate) {
      send(descriptor, Message::reply, {tag, version});
    } else {
      send(descriptor, Message::reply, {tag});
    }
    if (request == Request::sourceInfoList) {
      announce(descriptor, PA_SUBSCRIPTION_EVENT_SOURCE | PA_SUBSCRIPTION_EVENT_NEW);
      announce(descriptor, PA_SUBSCRIPTION_EVENT_SOURCE_OUTPUT | PA_SUBSCRIPTION_EVENT_NEW);
    } else if (request == Request::sourceOutputInfo) {
      announce(descriptor, PA_SUBSCRIPTION_EVENT_SOURCE_OUTPUT | PA_SUBSCRIPTION_EVENT_REMOVE);
    }
  }

  static void announce(int descriptor, std::uint32_t event) {
    constexpr std::uint32_t noTag = 0xFFFFFFFF;
    constexpr std::uint32_t index = 0;
    send(descriptor, Message::event, {noTag, event, index});
  }

  static void send(int descriptor, Message message, std::initializer_list<std::uint32_t> numbers) {
    std::string body;
    const auto append = [&body](std::uint32_t number) { (body += 'L') += encoded(number); };
    append(static_cast<std::uint32_t>(message));
    std::for_each(numbers.begin(), numbers.end(), append);
    constexpr std::uint32_t commandChannel = 0xFFFFFFFF;
    const std::string zeros(headerSize - 2 * sizeof(std::uint32_t), '\0');
    const std::string bytes =
        encoded(static_cast<std::uint32_t>(body.size())) + encoded(commandChannel) + zeros + body;
    ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

  static std::string encoded(std::uint32_t number) {
    const std::uint32_t bytes = htonl(number);
    return {reinterpret_cast<const char*>(&bytes), sizeof bytes};
  }

  static std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.substr(at).data(), sizeof number);
    return ntohl(number);
  }

  Request unanswered_;
  std::deque<Connection> connections_;
};

class PulseObserverTimeoutTest : public PulseObserverFixture {
 protected:
  ~PulseObserverTimeoutTest() override { skippedTime = 0; }

  /// Waits until the observer has received every reply that the server sends.
  void waitForReplies() {
    ASSERT_TRUE(
        holdsWithin([&] { return countOfReports<PulseStreamRemoval>() > 0; }, serverTimeout));
  }

  /// Moves libpulse's time beyond its timeout and wakes the observer.
  void skipTimeout() {
    skippedTime += 31 * PA_USEC_PER_SEC;
    observer_.write({});
  }

  template <typename Report>
  int countOfReports() const {
    int count = 0;
    while (const auto report = reports_->takeUntil(Instant::max()))
      count += std::holds_alternative<Report>(report->content) ? 1 : 0;
    return count;
  }
};

class PulseObserverUnansweredTest : public PulseObserverTimeoutTest,
                                    public testing::WithParamInterface<Request> {};

TEST_P(PulseObserverUnansweredTest, ConnectsAgain) {
  FakeSoundServer server(GetParam());
  start();
  waitForReplies();
  skipTimeout();
  EXPECT_TRUE(server.waitForAttempts(2));
  EXPECT_EQ(countOfReports<PulseServerLoss>(), 1);
}

INSTANTIATE_TEST_SUITE_P(, PulseObserverUnansweredTest,
                         testing::Values(Request::sourceInfo, Request::sourceInfoList,
                                         Request::sourceOutputInfo, Request::sourceOutputInfoList),
                         [](const auto& tested) {
                           switch (tested.param) {
                             case Request::sourceInfo:
                               return "Source";
                             case Request::sourceInfoList:
                               return "ListOfSources";
                             case Request::sourceOutputInfo:
                               return "Stream";
                             default:
                               return "ListOfStreams";
                           }
                         });

TEST_F(PulseObserverTimeoutTest, ListIsReadOverTheNextConnection) {
  FakeSoundServer server(Request::sourceInfoList);
  start();
  waitForReplies();
  server.replyToEverything();
  skipTimeout();
  EXPECT_TRUE(server.waitForAttempts(2));
  EXPECT_EQ(countOfReports<PulseServerReport>(), 0) << "a timeout is not an empty list";
  EXPECT_TRUE(holdsWithin([&] { return countOfReports<PulseServerReport>() > 0; }, serverTimeout));
  letPass(2 * PulseConnection::minRetryDelay);
  EXPECT_EQ(server.attempts().size(), 2U);
}

TEST_F(PulseObserverTimeoutTest, RefusedRequestsKeepTheConnection) {
  FakeSoundServer server(Request::none);
  start();
  waitForReplies();
  skipTimeout();
  letPass(2 * PulseConnection::minRetryDelay);
  EXPECT_EQ(server.attempts().size(), 1U);
}

}  // namespace
}  // namespace hushbox
