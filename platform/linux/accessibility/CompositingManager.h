#pragma once

#include <memory>
#include <optional>

struct xcb_connection_t;

namespace hushbox {

/// The compositing manager of an X11 desktop, if one is running. It owns the selection
/// _NET_WM_CM_Sn (Extended Window Manager Hints).
///
/// With it, every window is drawn into a buffer of its own, so a browser continues to draw a page
/// that other windows cover. Without it, the X server reports to the browser that its window is
/// covered, and the browser stops drawing. A Wayland desktop may report the same (the suspended
/// state of xdg-shell), which other programs cannot see: there this counts as absent.
///
/// Main thread only.
class CompositingManager {
 public:
  CompositingManager();
  ~CompositingManager();
  CompositingManager(const CompositingManager&) = delete;
  CompositingManager& operator=(const CompositingManager&) = delete;

  /// Requests the state, so that the next isRunning() finds the reply ready.
  void request();

  /// Returns false when that cannot be read: without an X11 desktop, or when the X server has not
  /// replied within 50 ms.
  bool isRunning();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
  };

  bool connect();

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  unsigned selection_ = 0;
  /// The request whose reply has not been read yet.
  std::optional<unsigned> pending_;
};

}  // namespace hushbox
