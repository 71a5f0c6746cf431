#include "platform/linux/bus/PeerConnection.h"

#include <glib-unix.h>
#include <gmock/gmock.h>
#include <malloc.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using rehearsal::holdsWithin;
using rehearsal::serverTimeout;
using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;

/// What a loaded machine may add to a timeout.
constexpr milliseconds slack{1500};

/// Listens at a socket and serves the first connection as the test says.
class Listener {
 public:
  using Service = std::function<void(int socket)>;

  Listener(const std::string& path, Service service)
      : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), service_(std::move(service)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(socket_, 8), 0);
    if (service_) thread_ = std::thread([this] { serve(); });
  }
  ~Listener() {
    ::shutdown(socket_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    ::close(socket_);
  }

  /// Reads up to and including the text; returns false if the other end is closed first.
  static bool readUntil(int socket, const std::string& end) {
    std::string text;
    char byte = 0;
    while (!text.ends_with(end)) {
      if (::read(socket, &byte, 1) != 1) return false;
      text += byte;
    }
    return true;
  }
  static void write(int socket, const std::string& text) {
    // The other end may be closed already.
    (void)!::send(socket, text.data(), text.size(), MSG_NOSIGNAL);
  }
  /// Performs the part of the protocol before the first message.
  static void welcome(int socket) {
    // The user ID, each digit in hexadecimal.
    std::string user;
    for (const char digit : std::to_string(geteuid())) (user += '3') += digit;
    std::string line(std::strlen("?AUTH EXTERNAL ") + user.size() + 2, '\0');
    const ssize_t size = ::recv(socket, line.data(), line.size(), MSG_WAITALL);
    // Another process than expected gets nothing.
    if (size == 0) return;
    EXPECT_EQ(line.substr(1), "AUTH EXTERNAL " + user + "\r\n");
    write(socket, "OK 0123456789abcdef0123456789abcdef\r\n");
    readUntil(socket, "BEGIN\r\n");
  }

 private:
  void serve() {
    const int accepted = ::accept(socket_, nullptr, nullptr);
    if (accepted < 0) return;
    service_(accepted);
    ::close(accepted);
  }

  const int socket_;
  const Service service_;
  std::thread thread_;
};

/// The connection by itself, to listeners that behave well or badly.
class PeerConnectionTest : public testing::Test {
 protected:
  ~PeerConnectionTest() override {
    peer_.reset();
    g_main_context_unref(context_);
  }

  std::unique_ptr<PeerConnection> open(const std::string& address,
                                       milliseconds timeout = serverTimeout) const {
    return PeerConnection::open(address, getpid(), timeout, context_);
  }
  /// Lets the listener serve a connection.
  void connect(Listener::Service service) {
    listener_.emplace(path_, std::move(service));
    peer_ = open(address_);
    ASSERT_NE(peer_, nullptr);
  }
  /// Makes a call whose outcome is recorded in `errors_`.
  void call() {
    const BusCall call{{":1.1", "/object"}, "an.Interface", "Method", "(u)",
                       serverTimeout,       nullptr};
    peer_->call(call, [this](const VariantPointer&, const GError* error) {
      errors_.push_back(error ? error->code : -1);
    });
  }
  bool endsWithin(milliseconds deadline) {
    return holdsWithin(
        [&] {
          g_main_context_iteration(context_, FALSE);
          return !peer_->isOpen();
        },
        deadline);
  }

  rehearsal::Session session_;
  const std::string path_ = (session_.folder() / "peer").string();
  const std::string address_ = "unix:path=" + path_;
  GMainContext* const context_ = g_main_context_new();
  std::optional<Listener> listener_;
  std::unique_ptr<PeerConnection> peer_;
  std::vector<int> errors_;
};

TEST_F(PeerConnectionTest, StartsNoProgramAndIgnoresOtherKindsOfAddress) {
  const std::filesystem::path sign = session_.folder() / "started";
  const std::filesystem::path launcher = session_.folder() / "dbus-launch";
  std::ofstream(launcher) << "#!/bin/sh\n: > '" << sign.string() << "'\n";
  std::filesystem::permissions(launcher, std::filesystem::perms::owner_all);
  ScopedEnvironment environment;
  environment.set("PATH", session_.folder().string() + ":" + std::getenv("PATH"));
  environment.set("DISPLAY", ":9");
  const Listener listener(path_, [](int socket) { Listener::welcome(socket); });
  const std::string addresses[] = {"unixexec:path=" + launcher.string(),
                                   "unix:path=" + path_ + "-not;unix:path=" + path_,
                                   "tcp:host=localhost,port=1",
                                   "autolaunch:",
                                   "unix:dir=" + session_.folder().string(),
                                   "unix:path=",
                                   "no address",
                                   ""};
  for (const std::string& address : addresses) EXPECT_EQ(open(address), nullptr) << address;
  // Starting a program would take a moment.
  EXPECT_FALSE(holdsWithin([&] { return std::filesystem::exists(sign); }, milliseconds{500}));
}

TEST_F(PeerConnectionTest, ReturnsNullWhenNothingListens) {
  EXPECT_EQ(open(address_), nullptr);
}

TEST_F(PeerConnectionTest, ReturnsNullForAnotherProcess) {
  const Listener listener(path_, [](int socket) { Listener::welcome(socket); });
  EXPECT_EQ(PeerConnection::open(address_, getppid(), serverTimeout, context_), nullptr);
}

TEST_F(PeerConnectionTest, ReturnsNullWhenAuthenticationTimesOut) {
  const Listener listener(path_, nullptr);
  const auto before = steady_clock::now();
  EXPECT_EQ(open(address_, milliseconds{100}), nullptr);
  // The kernel rounds timeouts.
  EXPECT_GE(steady_clock::now() - before, milliseconds{90});
  EXPECT_LT(steady_clock::now() - before, milliseconds{100} + slack);
}

TEST_F(PeerConnectionTest, ReturnsNullWhenAuthenticationIsRefused) {
  const Listener listener(path_, [](int socket) {
    Listener::readUntil(socket, "\r\n");
    Listener::write(socket, "REJECTED EXTERNAL\r\n");
    Listener::readUntil(socket, "never");
  });
  EXPECT_EQ(open(address_), nullptr);
}

TEST_F(PeerConnectionTest, ReturnsNullForAnEndlessLine) {
  const Listener listener(path_, [](int socket) {
    Listener::readUntil(socket, "\r\n");
    Listener::write(socket, std::string(4000, 'x'));
    Listener::readUntil(socket, "never");
  });
  const auto before = steady_clock::now();
  EXPECT_EQ(open(address_), nullptr);
  EXPECT_LT(steady_clock::now() - before, serverTimeout);
}

TEST_F(PeerConnectionTest, WelcomeMayArriveByteByByte) {
  connect([](int socket) {
    Listener::readUntil(socket, "\r\n");
    for (const char byte : std::string("OK 0123456789abcdef\r\n")) {
      Listener::write(socket, std::string(1, byte));
      std::this_thread::sleep_for(milliseconds{1});
    }
    Listener::readUntil(socket, "BEGIN\r\n");
  });
  EXPECT_TRUE(endsWithin(serverTimeout));
}

TEST_F(PeerConnectionTest, CallsArriveCompleteAtAPeerThatReadsSlowly) {
  // Far more than the socket holds, so that it takes them in pieces.
  constexpr std::size_t calls = 10'000;
  std::string received;
  connect([&](int socket) {
    Listener::welcome(socket);
    std::this_thread::sleep_for(milliseconds{20});
    char bytes[50'000];
    for (ssize_t count = 0; (count = ::read(socket, bytes, sizeof bytes)) > 0;)
      received.append(bytes, static_cast<std::size_t>(count));
  });
  for (std::size_t i = 0; i < calls; ++i) call();
  peer_->flush(serverTimeout);
  EXPECT_TRUE(peer_->isOpen());
  peer_.reset();
  listener_.reset();
  // Each message has its place, so a piece that was sent twice or left out shows.
  ASSERT_EQ(received.size() % calls, 0U);
  const std::size_t size = received.size() / calls;
  for (std::size_t i = 0; i < calls; ++i) {
    guint32 serial = 0;
    std::memcpy(&serial, received.data() + i * size + 8, sizeof serial);
    ASSERT_EQ(serial, i + 1);
  }
}

TEST_F(PeerConnectionTest, IsClosedWithTheOtherEnd) {
  connect([](int socket) {
    Listener::welcome(socket);
    Listener::readUntil(socket, "Method");
  });
  call();
  call();
  peer_->flush(serverTimeout);
  EXPECT_TRUE(endsWithin(serverTimeout));
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_CLOSED, G_IO_ERROR_CLOSED));
}

TEST_F(PeerConnectionTest, IsClosedByAnythingButAMessage) {
  connect([](int socket) {
    Listener::welcome(socket);
    Listener::write(socket, "HTTP/1.1 200 OK\r\n\r\n");
    Listener::readUntil(socket, "never");
  });
  call();
  peer_->flush(serverTimeout);
  EXPECT_TRUE(endsWithin(serverTimeout));
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_CLOSED));
}

TEST_F(PeerConnectionTest, HangsUpOnAPeerThatSendsAnythingButAMessage) {
  std::atomic<bool> hungUp = false;
  connect([&](int socket) {
    Listener::welcome(socket);
    Listener::write(socket, "HTTP/1.1 200 OK\r\n\r\n");
    Listener::readUntil(socket, "never");
    hungUp = true;
  });
  EXPECT_TRUE(endsWithin(serverTimeout));
  EXPECT_TRUE(holdsWithin([&] { return hungUp.load(); }, milliseconds{5'000}));
}

TEST_F(PeerConnectionTest, IsClosedWhenThePeerDoesNotRead) {
  connect([](int socket) {
    Listener::welcome(socket);
    pollfd closed{socket, POLLRDHUP, 0};
    ::poll(&closed, 1, -1);
  });
  const auto before = steady_clock::now();
  for (int i = 0; i < 10'000; ++i) call();
  peer_->flush(milliseconds{100});
  EXPECT_FALSE(peer_->isOpen());
  EXPECT_GE(steady_clock::now() - before, milliseconds{90});
  EXPECT_EQ(errors_.size(), 10'000U);
}

TEST_F(PeerConnectionTest, IgnoresRepliesToUnknownCalls) {
  connect([](int socket) {
    Listener::welcome(socket);
    const ObjectPointer<GDBusMessage> message(g_dbus_message_new());
    g_dbus_message_set_message_type(message.get(), G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
    g_dbus_message_set_serial(message.get(), 1);
    for (const guint32 serial : {77U, 1U, 1U}) {
      g_dbus_message_set_reply_serial(message.get(), serial);
      g_dbus_message_set_body(message.get(), g_variant_new("(u)", 5U));
      gsize size = 0;
      guchar* const bytes =
          g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
      Listener::write(socket, std::string(reinterpret_cast<char*>(bytes), size));
      g_free(bytes);
    }
    Listener::readUntil(socket, "Method");
  });
  call();
  EXPECT_TRUE(holdsWithin(
      [&] {
        g_main_context_iteration(context_, FALSE);
        return !errors_.empty();
      },
      serverTimeout));
  peer_->flush(serverTimeout);
  EXPECT_TRUE(endsWithin(serverTimeout));
  EXPECT_THAT(errors_, ElementsAre(-1));
}

TEST_F(PeerConnectionTest, IgnoresMessagesOfAnUnknownType) {
  connect([](int socket) {
    Listener::welcome(socket);
    // Little-endian, type 107, version 1; no body, serial 7, one header field: in reply to call 1.
    const char header[] =
        "l\x6b\x00\x01\x00\x00\x00\x00\x07\x00\x00\x00\x08\x00\x00\x00"
        "\x05\x01u\x00\x01\x00\x00";
    Listener::write(socket, std::string(header, sizeof header));
    Listener::readUntil(socket, "Method");
  });
  call();
  peer_->flush(serverTimeout);
  EXPECT_TRUE(endsWithin(serverTimeout));
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_CLOSED));
}

TEST_F(PeerConnectionTest, AbandonsCallsWithoutAReply) {
  connect([](int socket) {
    Listener::welcome(socket);
    Listener::readUntil(socket, "never");
  });
  call();
  peer_->flush(serverTimeout);
  peer_->abandon(milliseconds{60'000});
  EXPECT_THAT(errors_, ElementsAre());
  std::this_thread::sleep_for(milliseconds{2});
  peer_->abandon(milliseconds{1});
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_TIMED_OUT));
  call();
  peer_.reset();
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_TIMED_OUT, G_IO_ERROR_CLOSED));
}

/// The connection on one end of a pair of sockets; the test holds the other.
class PeerConnectionPairTest : public testing::Test {
 protected:
  PeerConnectionPairTest() {
    int ends[2];
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    own_ = ends[0];
    other_.reset(ends[1]);
    const ObjectPointer<GSocket> socket(g_socket_new_from_fd(own_, nullptr));
    stream_.reset(G_IO_STREAM(g_socket_connection_factory_create_connection(socket.get())));
  }
  ~PeerConnectionPairTest() override {
    peer_.reset();
    g_main_context_unref(context_);
  }

  void open() {
    peer_ = PeerConnection::openOn(std::move(stream_), getpid(),
                                   g_get_monotonic_time() + 5 * G_USEC_PER_SEC, context_);
  }
  void openAndRead() {
    send("OK 0123456789abcdef0123456789abcdef\r\n");
    open();
    ASSERT_NE(peer_, nullptr);
    EXPECT_THAT(received(), testing::EndsWith("BEGIN\r\n"));
  }
  void send(std::string_view bytes) const {
    EXPECT_EQ(::send(other_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  /// What has arrived at the other end.
  std::string received() const {
    std::string bytes(1 << 16, '\0');
    const ssize_t count = ::recv(other_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    bytes.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return bytes;
  }
  /// Makes a call with a text of that length.
  void call(std::size_t length) {
    const BusCall call{{":1.1", "/object"},
                       "an.Interface",
                       "Method",
                       "()",
                       serverTimeout,
                       takeArguments(g_variant_new("(s)", std::string(length, 'x').c_str()))};
    peer_->call(call, [this](const VariantPointer&, const GError* error) {
      errors_.push_back(error ? error->code : -1);
    });
  }
  void iterate() const {
    while (g_main_context_iteration(context_, FALSE)) continue;
  }
  static std::string replyTo(guint32 serial, std::size_t length = 0) {
    const ObjectPointer<GDBusMessage> message(g_dbus_message_new());
    g_dbus_message_set_message_type(message.get(), G_DBUS_MESSAGE_TYPE_METHOD_RETURN);
    g_dbus_message_set_serial(message.get(), 1);
    g_dbus_message_set_reply_serial(message.get(), serial);
    if (length > 0)
      g_dbus_message_set_body(message.get(),
                              g_variant_new("(s)", std::string(length, 'x').c_str()));
    gsize size = 0;
    guchar* const bytes =
        g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr);
    std::string text(reinterpret_cast<char*>(bytes), size);
    g_free(bytes);
    return text;
  }

  GMainContext* const context_ = g_main_context_new();
  /// Belongs to the stream.
  int own_ = -1;
  Descriptor other_;
  ObjectPointer<GIOStream> stream_;
  std::unique_ptr<PeerConnection> peer_;
  std::vector<int> errors_;
};

TEST_F(PeerConnectionPairTest, ReturnsNullWhenTheOtherEndIsClosed) {
  ::shutdown(other_.get(), SHUT_RDWR);
  open();
  EXPECT_EQ(peer_, nullptr);
}

TEST_F(PeerConnectionPairTest, ReturnsNullAtOnceWhenTheOtherEndIsClosedBeforeItsWelcome) {
  ::shutdown(other_.get(), SHUT_WR);
  const auto before = steady_clock::now();
  open();
  EXPECT_EQ(peer_, nullptr);
  EXPECT_LT(steady_clock::now() - before, milliseconds{4'000});
}

TEST_F(PeerConnectionPairTest, ReturnsNullWhenTheOtherEndIsClosedUnread) {
  std::thread closer([this] {
    pollfd readable{other_.get(), POLLIN, 0};
    EXPECT_EQ(::poll(&readable, 1, 5'000), 1);
    // With bytes unread, the connection is reset.
    other_.reset();
  });
  open();
  closer.join();
  EXPECT_EQ(peer_, nullptr);
}

TEST_F(PeerConnectionPairTest, IsClosedAtOnceWhenACallCannotBeSent) {
  openAndRead();
  ::shutdown(other_.get(), SHUT_RDWR);
  call(1);
  peer_->flush(serverTimeout);
  EXPECT_FALSE(peer_->isOpen());
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_CLOSED));
}

TEST_F(PeerConnectionPairTest, SendsNothingOnceItIsClosed) {
  openAndRead();
  call(1);
  ::shutdown(other_.get(), SHUT_RDWR);
  iterate();
  EXPECT_THAT(errors_, ElementsAre(G_IO_ERROR_CLOSED));
  peer_->flush(serverTimeout);
  EXPECT_FALSE(peer_->isOpen());
}

TEST_F(PeerConnectionPairTest, LastByteMayBeSentByItself) {
  // As many bytes as the socket takes at once, and one more.
  constexpr int bufferBytes = 8'192;
  int probe[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, probe), 0);
  for (const int socket : {own_, probe[0]}) {
    ASSERT_EQ(::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &bufferBytes, sizeof bufferBytes), 0);
  }
  const std::string large(1 << 20, 'x');
  const ssize_t room = ::send(probe[0], large.data(), large.size(), MSG_DONTWAIT);
  ::close(probe[0]);
  ::close(probe[1]);
  ASSERT_GT(room, 1'000);

  openAndRead();
  call(0);
  peer_->flush(serverTimeout);
  const std::size_t empty = received().size();
  const std::size_t size = static_cast<std::size_t>(room) + 1;
  call(size - empty);
  std::string bytes(size, '\0');
  std::thread reader([&] {
    std::this_thread::sleep_for(milliseconds{20});
    EXPECT_EQ(::recv(other_.get(), bytes.data(), size, MSG_WAITALL), static_cast<ssize_t>(size));
  });
  peer_->flush(serverTimeout);
  EXPECT_TRUE(peer_->isOpen());
  if (!peer_->isOpen()) ::shutdown(other_.get(), SHUT_RDWR);
  reader.join();
}

TEST_F(PeerConnectionPairTest, ReplyMayArriveByteByByte) {
  openAndRead();
  call(1);
  for (const char byte : replyTo(1)) {
    EXPECT_THAT(errors_, ElementsAre());
    send({&byte, 1});
    iterate();
  }
  EXPECT_THAT(errors_, ElementsAre(-1));
}

TEST_F(PeerConnectionPairTest, StaysOpenWhenThereIsNothingToReadAfterAll) {
  // Runs first and takes what has arrived.
  GSource* const thief = g_unix_fd_source_new(own_, G_IO_IN);
  int thefts = 0;
  const GUnixFDSourceFunc steal = [](gint descriptor, GIOCondition, gpointer count) -> gboolean {
    char bytes[16];
    EXPECT_GT(::recv(descriptor, bytes, sizeof bytes, MSG_DONTWAIT), 0);
    ++*static_cast<int*>(count);
    return G_SOURCE_CONTINUE;
  };
  g_source_set_callback(thief, G_SOURCE_FUNC(steal), &thefts, nullptr);
  g_source_attach(thief, context_);
  openAndRead();
  call(1);
  send("x");
  iterate();
  g_source_destroy(thief);
  g_source_unref(thief);
  EXPECT_EQ(thefts, 1);
  EXPECT_TRUE(peer_->isOpen());
  send(replyTo(1));
  iterate();
  EXPECT_THAT(errors_, ElementsAre(-1));
}

TEST_F(PeerConnectionPairTest, KeepsNoMessageThatItHasHandled) {
  openAndRead();
  const std::string message = replyTo(7, 16'000);
  send(message);
  iterate();
  // Large blocks are counted apart.
  const auto heap = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
  const auto before = heap();
  for (int i = 0; i < 100; ++i) {
    send(message);
    iterate();
  }
  EXPECT_LT(heap(), before + 10 * message.size());
}

}  // namespace
}  // namespace hushbox
