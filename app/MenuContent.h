#pragma once

#include <string>
#include <vector>

#include "coordinator/MuteCoordinator.h"
#include "platform/MenuBar.h"
#include "support/ChangePublisher.h"
#include "support/Lifetime.h"
#include "support/Published.h"

namespace hushbox {

/// The menu: status lines, a button that grants the Accessibility permission while it is missing,
/// the launch-at-login switch and Quit. Main thread only; `coordinator` must outlive it.
class MenuContent {
 public:
  explicit MenuContent(const MuteCoordinator& coordinator);

  /// Announces a change of the switch before it happens. The coordinator announces everything else.
  ChangePublisher objectWillChange;

  /// Returns the rows to show now; reads every condition again. The rows' actions do nothing once
  /// this object is destroyed.
  std::vector<MenuRow> rows();

  /// Returns the text of the first row, which says what the icon shows.
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
