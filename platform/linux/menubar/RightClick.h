#pragma once

#include <functional>

namespace hushbox {

/// Clicks the right mouse button where the pointer is, on the X server that DISPLAY names.
///
/// Does it on another thread, since connecting waits for the server; then calls `done` from the
/// default main context. `clicked` is false without an X server, on one that takes no synthetic
/// input, and in a Wayland session, where the X server does not have the pointer.
void clickRightButton(std::function<void(bool clicked)> done);

}  // namespace hushbox
