#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <mutex>
#include <string>
#include <thread>

#include "platform/linux/bus/PeerConnection.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;
using namespace std::chrono_literals;

/// A program that sends the same bytes on every connection, after the authentication or in its
/// place. It closes the connection afterwards.
class Peer {
 public:
  Peer() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    // In the abstract namespace: no file is left.
    const std::string name = "hushbox-fuzz-" + std::to_string(getpid());
    name.copy(address.sun_path + 1, sizeof address.sun_path - 1);
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    HUSHBOX_REQUIRE(::bind(socket_, reinterpret_cast<sockaddr*>(&address), length) == 0);
    HUSHBOX_REQUIRE(::listen(socket_, 8) == 0);
    address_ = "unix:abstract=" + name;
    std::thread([this] { serve(); }).detach();
  }

  const std::string& address() const { return address_; }

  void set(bool welcomes, std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    welcomes_ = welcomes;
    bytes_ = bytes;
  }

 private:
  static void send(int to, const std::string& bytes) {
    // The other end may be closed already.
    (void)!::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  }

  static void readUntil(int from, const std::string& end) {
    std::string text;
    for (char byte = 0; !text.ends_with(end) && ::read(from, &byte, 1) == 1;) text += byte;
  }

  void serve() {
    for (;;) {
      const int accepted = ::accept(socket_, nullptr, nullptr);
      if (accepted < 0) continue;
      std::unique_lock lock(mutex_);
      const bool welcomes = welcomes_;
      const std::string bytes = bytes_;
      lock.unlock();
      readUntil(accepted, "\r\n");
      if (welcomes) {
        send(accepted, "OK 0123456789abcdef0123456789abcdef\r\n");
        readUntil(accepted, "BEGIN\r\n");
      }
      send(accepted, bytes);
      ::shutdown(accepted, SHUT_WR);
      readUntil(accepted, "never sent");
      ::close(accepted);
    }
  }

  int socket_;
  std::string address_;
  std::mutex mutex_;
  bool welcomes_ = true;
  std::string bytes_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static auto& peer = *new Peer;
  FuzzInput input(data, size);
  const bool welcomes = input.takeByte() % 8 > 0;
  peer.set(welcomes, input.rest());

  GMainContext* const context = g_main_context_default();
  auto connection = PeerConnection::open(peer.address(), getpid(), 5s, context);
  HUSHBOX_REQUIRE(connection || !welcomes);
  if (!connection) return 0;

  constexpr std::size_t callCount = 3;
  const char* const types[callCount] = {"(s)", "(a(so))", "(a{sv})"};
  std::size_t answers = 0;
  for (const char* type : types) {
    connection->call(
        {{"", "/object"}, "org.example.Interface", "Method", type, 1s, nullptr},
        [&answers, type](VariantPointer value, const GError* error) {
          ++answers;
          HUSHBOX_REQUIRE((value != nullptr) != (error != nullptr));
          HUSHBOX_REQUIRE(!value || g_variant_is_of_type(value.get(), G_VARIANT_TYPE(type)));
        });
  }
  connection->flush(5s);
  while (connection->isOpen()) g_main_context_iteration(context, TRUE);
  // Every call has been answered exactly once.
  HUSHBOX_REQUIRE(answers == callCount);
  return 0;
}
