#include "platform/linux/audio/PulseConnection.h"

#include <glib-unix.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "rehearsal/ScratchFolder.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::holdsWithin;
using rehearsal::letPass;
using rehearsal::patience;
using testing::SizeIs;

using Clock = std::chrono::steady_clock;

/// An address where no sound server is: whoever calls at the open socket is hung up on, or kept
/// waiting.
class Doorkeeper {
 public:
  enum class Manner { HangsUp, KeepsWaiting };

  explicit Doorkeeper(Manner manner) : manner_(manner) {
    setenv("PULSE_SERVER", ("unix:" + path_).c_str(), 1);
  }
  ~Doorkeeper() {
    unsetenv("PULSE_SERVER");
    if (watch_ != 0) g_source_remove(watch_);
    for (const int guest : guests_) close(guest);
    if (socket_ >= 0) close(socket_);
  }
  Doorkeeper(const Doorkeeper&) = delete;
  Doorkeeper& operator=(const Doorkeeper&) = delete;

  void open() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        listen(socket_, 8) != 0) {
      throw std::runtime_error("no socket can be made at " + path_);
    }
    watch_ = g_unix_fd_add(socket_, G_IO_IN, &Doorkeeper::answer, this);
  }

  /// When each caller came.
  const std::vector<Clock::time_point>& calls() const { return calls_; }
  bool waitForCalls(std::size_t count) const {
    return holdsWithin([&] { return calls_.size() == count; }, patience);
  }

 private:
  static gboolean answer(gint descriptor, GIOCondition, gpointer self) {
    auto& doorkeeper = *static_cast<Doorkeeper*>(self);
    const int guest = accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    if (guest < 0) return G_SOURCE_CONTINUE;
    doorkeeper.calls_.push_back(Clock::now());
    if (doorkeeper.manner_ == Manner::HangsUp) {
      close(guest);
    } else {
      doorkeeper.guests_.push_back(guest);
    }
    return G_SOURCE_CONTINUE;
  }

  rehearsal::ScratchFolder scratch_;
  const std::string path_ = scratch_.path() / "native";
  Manner manner_;
  int socket_ = -1;
  guint watch_ = 0;
  std::vector<Clock::time_point> calls_;
  std::vector<int> guests_;
};

class Client final : public PulseConnection::Client {
 public:
  void connected(pa_context&) override { ++connected_; }
  void disconnected() override { ++disconnected_; }

  int connected_ = 0;
  int disconnected_ = 0;
};

TEST(PulseConnectionTest, CallsAgainAfterLongerAndLongerPausesAndNeverTwiceAtATime) {
  Doorkeeper doorkeeper(Doorkeeper::Manner::HangsUp);
  doorkeeper.open();
  Client client;
  const PulseConnection connection(client);
  EXPECT_TRUE(doorkeeper.waitForCalls(5));
  auto delay = PulseConnection::firstDelay;
  for (std::size_t i = 1; i < doorkeeper.calls().size(); ++i) {
    // Timers count whole milliseconds.
    EXPECT_GE(doorkeeper.calls()[i] - doorkeeper.calls()[i - 1], delay - 2ms) << i;
    delay *= 2;
  }
  EXPECT_EQ(connection.context(), nullptr);
  EXPECT_EQ(client.connected_, 0);
  EXPECT_EQ(client.disconnected_, 0);
}

TEST(PulseConnectionTest, SocketThatIsNotThereYetIsFoundOnceItIs) {
  Doorkeeper doorkeeper(Doorkeeper::Manner::KeepsWaiting);
  Client client;
  const PulseConnection connection(client);
  EXPECT_TRUE(holdsWithin([&] { return !connection.isOpen(); }, patience));
  letPass(2 * PulseConnection::firstDelay);
  doorkeeper.open();
  EXPECT_TRUE(doorkeeper.waitForCalls(1));
  EXPECT_TRUE(connection.isOpen());
}

TEST(PulseConnectionTest, WaitsForAServerThatTakesTheCallAndSaysNothing) {
  Doorkeeper doorkeeper(Doorkeeper::Manner::KeepsWaiting);
  doorkeeper.open();
  Client client;
  const PulseConnection connection(client);
  EXPECT_TRUE(doorkeeper.waitForCalls(1));
  letPass(3 * PulseConnection::firstDelay);
  EXPECT_THAT(doorkeeper.calls(), SizeIs(1));
  EXPECT_TRUE(connection.isOpen());
  EXPECT_EQ(connection.context(), nullptr);
}

TEST(PulseConnectionTest, EndsInTheMiddleOfACall) {
  Doorkeeper doorkeeper(Doorkeeper::Manner::KeepsWaiting);
  doorkeeper.open();
  Client client;
  {
    const PulseConnection connection(client);
    EXPECT_TRUE(doorkeeper.waitForCalls(1));
  }
  letPass(2 * PulseConnection::firstDelay);
  EXPECT_THAT(doorkeeper.calls(), SizeIs(1));
}

}  // namespace
}  // namespace hushbox
