#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "app/MenuContent.h"
#include "coordinator/MuteCoordinator.h"
#include "platform/MenuBar.h"
#include "support/Lifetime.h"
#include "support/Subscription.h"

namespace hushbox {

/// The application: owns the coordinator and shows its icon and menu. Main thread only.
///
/// All changes announced in one turn of the loop cause one redraw, in a later turn, after the
/// values have changed. An icon or menu that has not changed is not shown again.
class HushboxApp {
 public:
  HushboxApp() = default;
  HushboxApp(const HushboxApp&) = delete;
  HushboxApp& operator=(const HushboxApp&) = delete;

  /// Runs the application on the platform in scope until it is asked to quit. Returns the exit
  /// status, 0.
  static int main();

  /// Creates the coordinator, which starts all monitoring, and shows the icon and the menu. Call it
  /// once.
  void buildScene();

 private:
  /// Everything that the icon depends on.
  struct Look {
    bool muted, connected, inCall;
    friend bool operator==(const Look&, const Look&) = default;
  };

  MuteCoordinator& coordinator();
  void changeAnnounced();
  void redraw();
  /// Holds an activity while the speakerphone is in use: a press must be recognised within 0.3 s.
  /// Without a call the system may throttle the program, which saves power.
  void updateActivity();

  std::optional<MuteCoordinator> coordinator_;
  std::optional<MenuContent> menu_;
  std::vector<Subscription> subscriptions_;
  bool redrawPending_ = false;
  std::shared_ptr<void> activity_;
  std::optional<Look> shownLook_;
  std::vector<MenuRow> shownRows_;
  Lifetime lifetime_;
};

}  // namespace hushbox
