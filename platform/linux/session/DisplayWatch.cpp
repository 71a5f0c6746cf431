#include "platform/linux/session/DisplayWatch.h"

#include <glib-unix.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {
namespace {

/// The compositor's socket, by the rules of the Wayland client library; empty for none.
std::string waylandSocket() {
  const char* const name = std::getenv("WAYLAND_DISPLAY");
  const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
  if (!name || !*name) return {};
  if (*name == '/') return name;
  if (!runtime || !*runtime) return {};
  return std::filesystem::path(runtime) / name;
}

bool isOpen(xcb_connection_t* connection) {
  return connection && !xcb_connection_has_error(connection);
}

}  // namespace

DisplayWatch::DisplayWatch(std::function<void()> closed) : closed_(std::move(closed)) {
  if (!connectToWayland()) connectToX();
}

DisplayWatch::~DisplayWatch() {
  if (source_) g_source_remove(source_);
}

bool DisplayWatch::connectToWayland() {
  const std::string path = waylandSocket();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return false;
  std::memcpy(address.sun_path, path.data(), path.size());
  // Not blocking: where the compositor has no room for another connection, this fails at once.
  wayland_.reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (connect(wayland_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    wayland_.reset();
    return false;
  }
  watch(wayland_.get());
  return true;
}

void DisplayWatch::connectToX() {
  const char* const name = std::getenv("DISPLAY");
  if (!name || !*name) return;
  // On another thread: xcb_connect() waits for the server without a timeout.
  const auto connect = [](GTask* task, gpointer, gpointer, GCancellable*) {
    g_task_return_pointer(task, xcb_connect(nullptr, nullptr), [](gpointer connection) {
      xcb_disconnect(static_cast<xcb_connection_t*>(connection));
    });
  };
  const auto connected = lifetime_.weakly([this](GAsyncResult* result) {
    x_.reset(static_cast<xcb_connection_t*>(g_task_propagate_pointer(G_TASK(result), nullptr)));
    if (!isOpen(x_.get())) return;
    watch(xcb_get_file_descriptor(x_.get()));
    // The connection may hold events that have been read already.
    drain();
  });
  const ObjectPointer<GTask> task(g_task_new(
      nullptr, nullptr, AsyncCallback::invoke,
      AsyncCallback::data([connected](GObject*, GAsyncResult* result) { connected(result); })));
  g_task_run_in_thread(task.get(), connect);
}

void DisplayWatch::watch(int descriptor) {
  source_ = g_unix_fd_add(descriptor, G_IO_IN, readable, this);
}

gboolean DisplayWatch::readable(gint, GIOCondition, gpointer self) {
  auto& display = *static_cast<DisplayWatch*>(self);
  if (display.drain()) return G_SOURCE_CONTINUE;
  display.source_ = 0;
  // Don't touch `display` below; the callback may have destroyed it.
  const auto closed = display.closed_;
  closed();
  return G_SOURCE_REMOVE;
}

bool DisplayWatch::drain() {
  if (x_) {
    while (void* const event = xcb_poll_for_event(x_.get())) std::free(event);
    return isOpen(x_.get());
  }
  std::array<char, 256> bytes;
  const ssize_t count = read(wayland_.get(), bytes.data(), bytes.size());
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

}  // namespace hushbox
