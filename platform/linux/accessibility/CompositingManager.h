#pragma once

#include <memory>
#include <optional>

struct xcb_connection_t;

namespace hushbox {

/// The program that puts the windows of an X11 desktop together on the screen, where there is one.
/// It owns the selection _NET_WM_CM_Sn (Extended Window Manager Hints).
///
/// With it, every window is drawn whole and apart from the others, so a browser goes on drawing a
/// page whatever lies over it. Without it, the X server tells a browser that its window is covered,
/// and the browser lets the page rest. A Wayland desktop may tell a browser so as well (the
/// suspended state of xdg-shell), and nobody else: there it counts as none.
///
/// Main thread only.
class CompositingManager {
 public:
  CompositingManager();
  ~CompositingManager();
  CompositingManager(const CompositingManager&) = delete;
  CompositingManager& operator=(const CompositingManager&) = delete;

  /// Puts the question, so that the next isRunning() finds the answer ready.
  void ask();

  /// False when it cannot be told: no X11 desktop, or the X server has not answered in 50 ms.
  bool isRunning();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const;
  };

  bool connect();

  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  unsigned selection_ = 0;
  /// The request whose reply has not been taken yet.
  std::optional<unsigned> asked_;
};

}  // namespace hushbox
