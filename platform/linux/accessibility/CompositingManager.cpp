#include "platform/linux/accessibility/CompositingManager.h"

#include <poll.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>

namespace hushbox {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds replyTimeout{50};

/// The reply to a request, which the caller frees; null when the request fails or times out. XCB's
/// own wait has no timeout, so a server that hangs would hang us too.
void* replyTo(xcb_connection_t* connection, unsigned sequence) {
  const auto end = steady_clock::now() + replyTimeout;
  xcb_flush(connection);
  for (;;) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    // Polling for events is what reads the socket. We subscribe to none, so it returns null.
    std::free(xcb_poll_for_event(connection));
    if (xcb_poll_for_reply(connection, sequence, &reply, &error) != 0) {
      std::free(error);
      return reply;
    }
    const auto left = std::chrono::ceil<milliseconds>(end - steady_clock::now());
    pollfd readable{xcb_get_file_descriptor(connection), POLLIN, 0};
    if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) == 0) {
      xcb_discard_reply(connection, sequence);
      return nullptr;
    }
  }
}

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value && *value;
}

}  // namespace

CompositingManager::CompositingManager() = default;

CompositingManager::~CompositingManager() = default;

void CompositingManager::Disconnect::operator()(xcb_connection_t* connection) const {
  xcb_disconnect(connection);
}

void CompositingManager::request() {
  if (pending_) xcb_discard_reply(connection_.get(), *pending_);
  pending_.reset();
  if (isSet("WAYLAND_DISPLAY") || !isSet("DISPLAY") || !connect()) return;
  pending_ = xcb_get_selection_owner(connection_.get(), selection_).sequence;
  xcb_flush(connection_.get());
}

bool CompositingManager::isRunning() {
  if (!pending_) request();
  const auto request = std::exchange(pending_, std::nullopt);
  if (!request) return false;
  const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
      static_cast<xcb_get_selection_owner_reply_t*>(replyTo(connection_.get(), *request)),
      std::free);
  return owner && owner->owner != XCB_NONE;
}

bool CompositingManager::connect() {
  if (connection_ && xcb_connection_has_error(connection_.get()) == 0) return true;
  int screen = 0;
  connection_.reset(xcb_connect(nullptr, &screen));
  if (xcb_connection_has_error(connection_.get()) != 0) return false;
  const std::string name = "_NET_WM_CM_S" + std::to_string(screen);
  const auto request =
      xcb_intern_atom(connection_.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str());
  const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
      static_cast<xcb_intern_atom_reply_t*>(replyTo(connection_.get(), request.sequence)),
      std::free);
  if (!atom) connection_.reset();
  selection_ = atom ? atom->atom : 0;
  return atom != nullptr;
}

}  // namespace hushbox
