#include "platform/linux/bus/PeerConnection.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace hushbox {

namespace {

using std::chrono::milliseconds;

constexpr std::size_t chunkBytes = 16384;

/// Whether the listening process can be identified, as only with these addresses; for "autolaunch:"
/// GIO would even start a program.
bool isSocketOfProcess(const std::string& address) {
  return (address.starts_with("unix:path=") || address.starts_with("unix:abstract=")) &&
         address.find(';') == address.npos && g_dbus_is_supported_address(address.c_str(), nullptr);
}

/// The process that listens at the other end of the socket; -1 if unknown.
pid_t listenerAt(GSocket* socket) {
  const ObjectPointer<GCredentials> credentials(g_socket_get_credentials(socket, nullptr));
  return credentials ? g_credentials_get_unix_pid(credentials.get(), nullptr) : -1;
}

bool awaitSocket(GSocket* socket, GIOCondition condition, gint64 end) {
  const gint64 left = end - g_get_monotonic_time();
  return left > 0 && g_socket_condition_timed_wait(socket, condition, left, nullptr, nullptr);
}

/// Returns whether all bytes could be sent before the end.
bool sendAll(GSocket* socket, const std::string& bytes, gint64 end) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    GError* failure = nullptr;
    const gssize count =
        g_socket_send(socket, bytes.data() + sent, bytes.size() - sent, nullptr, &failure);
    const ErrorPointer error(failure);
    if (count > 0) sent += static_cast<std::size_t>(count);
    if (count > 0) continue;
    if (!error || !g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) return false;
    if (!awaitSocket(socket, G_IO_OUT, end)) return false;
  }
  return true;
}

/// Authenticates by our user ID, which the peer checks, as D-Bus requires before the first message.
bool authenticate(GSocket* socket, gint64 end) {
  constexpr std::size_t maxLineBytes = 512;
  std::string user;
  for (const char digit : std::to_string(geteuid())) {
    char hexadecimal[3];
    std::snprintf(hexadecimal, sizeof hexadecimal, "%02x", static_cast<unsigned>(digit));
    user += hexadecimal;
  }
  using namespace std::string_literals;
  if (!sendAll(socket, "\0AUTH EXTERNAL "s + user + "\r\n", end)) return false;
  std::string line;
  while (!line.ends_with("\r\n")) {
    if (line.size() > maxLineBytes || !awaitSocket(socket, G_IO_IN, end)) return false;
    char bytes[maxLineBytes];
    const gssize count = g_socket_receive(socket, bytes, sizeof bytes, nullptr, nullptr);
    if (count <= 0) return false;
    line.append(bytes, static_cast<std::size_t>(count));
  }
  return line.starts_with("OK ") && sendAll(socket, "BEGIN\r\n", end);
}

ErrorPointer makeError(GIOErrorEnum code, const char* text) {
  return ErrorPointer(g_error_new_literal(G_IO_ERROR, code, text));
}

}  // namespace

std::unique_ptr<PeerConnection> PeerConnection::open(const std::string& address,
                                                     std::int32_t process, milliseconds timeout,
                                                     GMainContext* context) {
  if (!isSocketOfProcess(address)) return nullptr;
  const gint64 end = g_get_monotonic_time() + std::chrono::microseconds(timeout).count();
  ObjectPointer<GIOStream> stream(
      g_dbus_address_get_stream_sync(address.c_str(), nullptr, nullptr, nullptr));
  return stream ? openOn(std::move(stream), process, end, context) : nullptr;
}

std::unique_ptr<PeerConnection> PeerConnection::openOn(ObjectPointer<GIOStream> stream,
                                                       std::int32_t process, gint64 end,
                                                       GMainContext* context) {
  if (!G_IS_SOCKET_CONNECTION(stream.get())) return nullptr;
  GSocket* const socket = g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream.get()));
  g_socket_set_blocking(socket, FALSE);
  if (listenerAt(socket) != process || !authenticate(socket, end)) return nullptr;
  return std::unique_ptr<PeerConnection>(new PeerConnection(std::move(stream), context));
}

PeerConnection::PeerConnection(ObjectPointer<GIOStream> stream, GMainContext* context)
    : stream_(std::move(stream)),
      socket_(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream_.get()))),
      source_(g_socket_create_source(socket_, G_IO_IN, nullptr)) {
  g_source_set_callback(source_, G_SOURCE_FUNC(&onReadable), this, nullptr);
  g_source_attach(source_, context);
}

PeerConnection::~PeerConnection() {
  end();
}

void PeerConnection::call(const BusCall& call, Replied replied) {
  const ObjectPointer<GDBusMessage> message(g_dbus_message_new_method_call(
      nullptr, call.object.path.c_str(), call.interface, call.method));
  g_dbus_message_set_flags(message.get(), G_DBUS_MESSAGE_FLAGS_NO_AUTO_START);
  g_dbus_message_set_serial(message.get(), ++lastSerial_);
  if (call.arguments) g_dbus_message_set_body(message.get(), call.arguments.get());
  gsize size = 0;
  const std::unique_ptr<guchar, decltype(&g_free)> bytes(
      g_dbus_message_to_blob(message.get(), &size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr), g_free);
  if (!bytes) {
    replied({}, makeError(G_IO_ERROR_INVALID_ARGUMENT, "The call cannot be encoded").get());
    return;
  }
  outgoing_.append(reinterpret_cast<const char*>(bytes.get()), size);
  pending_.emplace(lastSerial_,
                   Pending{std::move(replied), call.replyType, g_get_monotonic_time()});
}

void PeerConnection::flush(milliseconds timeout) {
  if (!isOpen() || outgoing_.empty()) return;
  const gint64 until = g_get_monotonic_time() + std::chrono::microseconds(timeout).count();
  if (!sendAll(socket_, std::exchange(outgoing_, {}), until)) end();
}

void PeerConnection::abandon(milliseconds timeout) {
  const gint64 since = g_get_monotonic_time() - std::chrono::microseconds(timeout).count();
  const ErrorPointer error = makeError(G_IO_ERROR_TIMED_OUT, "No reply in time");
  while (!pending_.empty() && pending_.begin()->second.since < since)
    pending_.extract(pending_.begin()).mapped().replied({}, error.get());
}

gboolean PeerConnection::onReadable(GSocket*, GIOCondition, gpointer self) {
  auto& connection = *static_cast<PeerConnection*>(self);
  connection.receive();
  return connection.isOpen() ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void PeerConnection::receive() {
  char bytes[chunkBytes];
  GError* failure = nullptr;
  const gssize count = g_socket_receive(socket_, bytes, sizeof bytes, nullptr, &failure);
  const ErrorPointer error(failure);
  if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) return;
  if (count > 0) incoming_.append(bytes, static_cast<std::size_t>(count));
  if (count <= 0 || !takeMessages()) end();
}

bool PeerConnection::takeMessages() {
  constexpr std::size_t minHeaderBytes = 16;
  std::size_t taken = 0;
  while (incoming_.size() - taken >= minHeaderBytes) {
    auto* const start = reinterpret_cast<guchar*>(incoming_.data() + taken);
    const std::size_t left = incoming_.size() - taken;
    const gssize needed = g_dbus_message_bytes_needed(start, left, nullptr);
    if (needed < 0) return false;
    const auto size = static_cast<std::size_t>(needed);
    if (size > left) break;
    const ObjectPointer<GDBusMessage> message(
        g_dbus_message_new_from_blob(start, size, G_DBUS_CAPABILITY_FLAGS_NONE, nullptr));
    if (!message) return false;
    taken += size;
    take(message.get());
  }
  incoming_.erase(0, taken);
  return true;
}

void PeerConnection::take(GDBusMessage* message) {
  // Not a GDBusMessageType, which has no value for most bytes that a peer can send here.
  const int type = g_dbus_message_get_message_type(message);
  if (type != G_DBUS_MESSAGE_TYPE_METHOD_RETURN && type != G_DBUS_MESSAGE_TYPE_ERROR) return;
  auto found = pending_.extract(g_dbus_message_get_reply_serial(message));
  if (found.empty()) return;
  const Pending& pending = found.mapped();
  GError* failure = nullptr;
  if (g_dbus_message_to_gerror(message, &failure)) {
    const ErrorPointer error(failure);
    pending.replied({}, error.get());
    return;
  }
  GVariant* const body = g_dbus_message_get_body(message);
  VariantPointer value(body ? g_variant_ref(body) : g_variant_ref_sink(g_variant_new("()")));
  if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE(pending.replyType.c_str()))) {
    pending.replied(std::move(value), nullptr);
  } else {
    pending.replied({}, makeError(G_IO_ERROR_INVALID_ARGUMENT, "A reply of another type").get());
  }
}

void PeerConnection::end() {
  if (!isOpen()) return;
  g_source_destroy(source_);
  // It holds the socket open.
  g_source_unref(std::exchange(source_, nullptr));
  socket_ = nullptr;
  stream_.reset();
  const ErrorPointer error = makeError(G_IO_ERROR_CLOSED, "The connection is closed");
  for (auto& [serial, pending] : std::exchange(pending_, {})) pending.replied({}, error.get());
}

}  // namespace hushbox
