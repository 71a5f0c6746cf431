#pragma once

#include <optional>
#include <vector>

#include "app/MenuContent.h"
#include "coordinator/MuteCoordinator.h"
#include "platform/MenuBar.h"
#include "support/Lifetime.h"
#include "support/Subscription.h"

namespace hushbox {

/// The application: owns the one coordinator and shows its icon and menu. Main thread only.
///
/// However many changes are announced in one turn of the loop, they cost one redraw, after the
/// values have changed; an icon or a menu that comes out the same is not shown again.
class HushboxApp {
 public:
  HushboxApp() = default;
  HushboxApp(const HushboxApp&) = delete;
  HushboxApp& operator=(const HushboxApp&) = delete;

  /// Runs the application on the platform in scope until it is asked to end; returns the exit
  /// status, 0.
  static int main();

  /// Shows the item with its menu; makes the coordinator, which starts all monitoring.
  void buildScene();

 private:
  /// All that the icon depends on.
  struct Look {
    bool muted, connected, inCall;
    friend bool operator==(const Look&, const Look&) = default;
  };

  MuteCoordinator& coordinator();
  void changeAnnounced();
  void redraw();

  std::optional<MuteCoordinator> coordinator_;
  std::optional<MenuContent> menu_;
  std::vector<Subscription> subscriptions_;
  bool redrawPending_ = false;
  std::optional<Look> shownLook_;
  std::vector<MenuRow> shownRows_;
  Lifetime lifetime_;
};

}  // namespace hushbox
