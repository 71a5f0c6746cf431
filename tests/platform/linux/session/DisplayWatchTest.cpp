#include "platform/linux/session/DisplayWatch.h"

#include <gio/gunixsocketaddress.h>
#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/GLibPointers.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;
using rehearsal::letPass;
using rehearsal::serverTimeout;
using rehearsal::Session;
using rehearsal::waitUntil;

class DisplayWatchTest : public testing::Test {
 protected:
  void watch() {
    watch_ = std::make_unique<DisplayWatch>([this] { ++closed_; });
  }
  void waitUntilClosed() {
    waitUntil([this] { return closed_ > 0; }, serverTimeout, "the display's end to be noticed");
  }

  int closed_ = 0;
  std::unique_ptr<DisplayWatch> watch_;
};

TEST_F(DisplayWatchTest, ReportsTheEndOfAnXServerOnce) {
  Session session({.display = true});
  session.applyToThisProcess();
  watch();
  letPass(300ms);
  EXPECT_EQ(closed_, 0);
  session.display().close();
  waitUntilClosed();
  letPass(100ms);
  EXPECT_EQ(closed_, 1);
}

TEST_F(DisplayWatchTest, ReportsTheEndOfAWaylandCompositor) {
  Session session;
  session.applyToThisProcess();
  if (!std::filesystem::exists("/usr/bin/weston")) GTEST_SKIP() << "weston is not installed.";
  const auto compositor = session.start(
      "weston.log", {"weston", "--backend=headless-backend.so", "--socket=wayland-test"});
  const std::string socket = session.runtimeFolder() / "wayland-test";
  // The file exists a moment before connections are accepted.
  const auto isListening = [&] {
    const ObjectPointer<GSocketClient> client(g_socket_client_new());
    const ObjectPointer<GSocketAddress> address(g_unix_socket_address_new(socket.c_str()));
    const ObjectPointer<GSocketConnection> connection(g_socket_client_connect(
        client.get(), G_SOCKET_CONNECTABLE(address.get()), nullptr, nullptr));
    return connection != nullptr;
  };
  compositor->waitUntilReady(isListening, "a compositor");
  setenv("WAYLAND_DISPLAY", "wayland-test", 1);
  watch();
  letPass(300ms);
  EXPECT_EQ(closed_, 0);
  compositor->stop();
  waitUntilClosed();
}

TEST_F(DisplayWatchTest, PrefersTheCompositorToAnXServer) {
  Session session({.display = true});
  session.applyToThisProcess();
  const auto path = session.runtimeFolder() / "compositor";
  const ObjectPointer<GSocketAddress> address(g_unix_socket_address_new(path.c_str()));
  const ObjectPointer<GSocketListener> listener(g_socket_listener_new());
  g_socket_listener_add_address(listener.get(), address.get(), G_SOCKET_TYPE_STREAM,
                                G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr);
  setenv("WAYLAND_DISPLAY", path.c_str(), 1);
  watch();
  letPass(100ms);
  session.display().close();
  letPass(300ms);
  EXPECT_EQ(closed_, 0);
  g_socket_listener_close(listener.get());
  waitUntilClosed();
}

TEST_F(DisplayWatchTest, ReportsNothingWithoutADisplay) {
  Session session;
  session.applyToThisProcess();
  watch();
  letPass(100ms);
  setenv("WAYLAND_DISPLAY", "wayland-none", 1);
  setenv("DISPLAY", ":4711", 1);
  watch();
  letPass(300ms);
  EXPECT_EQ(closed_, 0);
  // Longer than the path of a socket can be.
  setenv("WAYLAND_DISPLAY", ("/" + std::string(4'000, 'x')).c_str(), 1);
  watch();
  EXPECT_EQ(closed_, 0);
}

TEST_F(DisplayWatchTest, CanBeDestroyedAtAnyTime) {
  Session session({.display = true});
  session.applyToThisProcess();
  watch();
  watch_.reset();
  letPass(100ms);
  watch();
  letPass(300ms);
  watch_.reset();
  session.display().close();
  letPass(100ms);
  EXPECT_EQ(closed_, 0);
}

}  // namespace
}  // namespace hushbox
