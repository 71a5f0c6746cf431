#pragma once

#include <string>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/MenuBar.h"
#include "support/ChangePublisher.h"
#include "support/Lifetime.h"
#include "support/Published.h"

namespace hushbox {

/// The menu beneath the mask: status lines, the Accessibility prompt while it is needed, the
/// launch-at-login switch and quit. Main thread only; `coordinator` must outlive it.
class MenuContent {
 public:
  explicit MenuContent(const MuteCoordinator& coordinator);

  /// Announces a change of the switch before it happens. The coordinator announces the rest.
  ChangePublisher objectWillChange;

  /// The rows as they are to be shown now; every condition is looked at afresh. Their actions do
  /// nothing once this is gone.
  std::vector<MenuRow> rows();

  /// The first row: in words, what the icon shows.
  std::string callLine() const;

  /// Whether the launch-at-login switch is on.
  bool launchAtLogin() const { return launchAtLogin_.get(); }

 private:
  std::string batteryLine() const;
  void grantAccessibility();
  void setLaunchAtLogin(bool value);

  const MuteCoordinator& coordinator_;
  Published<bool> launchAtLogin_;
  Lifetime lifetime_;
};

}  // namespace hushbox
