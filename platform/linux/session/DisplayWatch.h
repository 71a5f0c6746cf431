#pragma once

#include <gio/gio.h>
#include <xcb/xcb.h>

#include <functional>
#include <memory>

#include "platform/linux/Descriptor.h"
#include "support/Lifetime.h"

namespace hushbox {

/// Reports that the session's display server has exited: how a login session ends on every desktop,
/// whether or not its session manager sends a signal, and how it ends when the desktop crashes.
/// Main thread and default main context only.
///
/// It keeps a connection to the display server and sends it nothing: to the Wayland compositor that
/// WAYLAND_DISPLAY names, else to the X server that DISPLAY names. In a Wayland session the X
/// server says nothing, since it comes and goes with the X programs.
class DisplayWatch {
 public:
  /// Connects in the background, so that a display server that hangs holds nothing up. Calls
  /// `closed` once, from the main context, when the display server closes the connection; never
  /// when there is no display to connect to.
  explicit DisplayWatch(std::function<void()> closed);
  ~DisplayWatch();
  DisplayWatch(const DisplayWatch&) = delete;
  DisplayWatch& operator=(const DisplayWatch&) = delete;

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  static gboolean readable(gint descriptor, GIOCondition condition, gpointer self);

  bool connectToWayland();
  void connectToX();
  void watch(int descriptor);
  /// Drops what the server has sent; returns false when it has closed the connection.
  bool drain();

  const std::function<void()> closed_;
  Descriptor wayland_;
  std::unique_ptr<xcb_connection_t, Disconnect> x_;
  guint source_ = 0;
  Lifetime lifetime_;
};

}  // namespace hushbox
