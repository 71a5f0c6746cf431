#include <gio/gio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>

#include "platform/linux/bus/PeerConnection.h"
#include "tests/fuzz/Fuzzing.h"

namespace {

using namespace hushbox;
using namespace std::chrono_literals;

/// The two ends of a connection: a program's, and the one that the connection uses.
class Sockets {
 public:
  Sockets() { HUSHBOX_REQUIRE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends_) == 0); }
  ~Sockets() { ::close(ends_[0]); }
  Sockets(const Sockets&) = delete;
  Sockets& operator=(const Sockets&) = delete;

  /// To be called once.
  ObjectPointer<GIOStream> stream() const {
    const ObjectPointer<GSocket> socket(g_socket_new_from_fd(ends_[1], nullptr));
    return ObjectPointer<GIOStream>(
        G_IO_STREAM(g_socket_connection_factory_create_connection(socket.get())));
  }

  /// What the program sends; the socket has room for all of it.
  void send(std::string_view bytes) const {
    HUSHBOX_REQUIRE(bytes.empty() || ::send(ends_[0], bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
                                         static_cast<ssize_t>(bytes.size()));
  }
  void sendNoMore() const { ::shutdown(ends_[0], SHUT_WR); }

 private:
  int ends_[2];
};

}  // namespace

// The input is what the program sends after the authentication, or in its place. One thread plays
// both programs, since the sockets hold what each of them sends.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const bool welcomes = input.takeByte() % 8 > 0;
  GMainContext* const context = g_main_context_default();
  const Sockets sockets;
  sockets.send(welcomes ? "OK 0123456789abcdef0123456789abcdef\r\n" : input.rest());
  if (!welcomes) sockets.sendNoMore();
  // All bytes are sent by now, so nothing waits this long; but a busy machine may hold up this
  // process for seconds.
  const auto deadline = g_get_monotonic_time() + 60 * G_USEC_PER_SEC;
  const auto connection = PeerConnection::openOn(sockets.stream(), getpid(), deadline, context);
  HUSHBOX_REQUIRE(connection || !welcomes);
  if (!connection) return 0;
  if (welcomes) sockets.send(input.rest());
  sockets.sendNoMore();

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
