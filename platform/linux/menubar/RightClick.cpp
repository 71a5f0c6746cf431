#include "platform/linux/menubar/RightClick.h"

#include <gio/gio.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "platform/linux/bus/GLibPointers.h"

namespace hushbox {
namespace {

/// The request FakeInput of the XTEST extension, as its protocol lays it out. Written here because
/// this one request is not worth another library.
struct FakeInput {
  std::uint8_t majorOpcode = 0;
  std::uint8_t minorOpcode = 0;
  std::uint16_t length = 0;
  std::uint8_t type;
  std::uint8_t detail;
  std::uint16_t padding1 = 0;
  std::uint32_t delayMilliseconds = 0;
  std::uint32_t root = XCB_NONE;
  std::array<std::uint8_t, 8> padding2{};
  std::int16_t rootX = 0;
  std::int16_t rootY = 0;
  std::array<std::uint8_t, 7> padding3{};
  std::uint8_t device = 0;
};
static_assert(sizeof(FakeInput) == 36);

constexpr std::uint8_t fakeInputOpcode = 2;
constexpr std::uint8_t rightButton = 3;

xcb_extension_t* testExtension() {
  static xcb_extension_t extension{"XTEST", 0};
  return &extension;
}

void send(xcb_connection_t* connection, FakeInput input) {
  const xcb_protocol_request_t request{1, testExtension(), fakeInputOpcode, /*isvoid=*/1};
  // The library writes to the two elements before the first.
  std::array<iovec, 3> parts{};
  parts[2] = {&input, sizeof input};
  xcb_send_request(connection, 0, &parts[2], &request);
}

bool clickNow() {
  const char* const wayland = std::getenv("WAYLAND_DISPLAY");
  const char* const display = std::getenv("DISPLAY");
  if ((wayland && *wayland) || !display || !*display) return false;
  const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
      xcb_connect(nullptr, nullptr), xcb_disconnect);
  if (xcb_connection_has_error(connection.get())) return false;
  const auto* const extension = xcb_get_extension_data(connection.get(), testExtension());
  if (!extension || !extension->present) return false;
  send(connection.get(), {.type = XCB_BUTTON_PRESS, .detail = rightButton});
  send(connection.get(), {.type = XCB_BUTTON_RELEASE, .detail = rightButton});
  // A reply to a later request proves that the server has handled these.
  std::free(
      xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
  return !xcb_connection_has_error(connection.get());
}

}  // namespace

void clickRightButton(std::function<void(bool clicked)> done) {
  const ObjectPointer<GTask> task(
      g_task_new(nullptr, nullptr, AsyncCallback::invoke,
                 AsyncCallback::data([done = std::move(done)](GObject*, GAsyncResult* result) {
                   done(g_task_propagate_boolean(G_TASK(result), nullptr) != FALSE);
                 })));
  g_task_run_in_thread(task.get(), [](GTask* running, gpointer, gpointer, GCancellable*) {
    g_task_return_boolean(running, clickNow());
  });
}

}  // namespace hushbox
