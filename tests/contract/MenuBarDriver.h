#pragma once

#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a menu bar and the desktop that shows its item.
class MenuBarDriver : public ContractDriver {
 public:
  /// A row as the desktop shows it.
  struct Shown {
    /// Empty for a separator.
    std::string text;
    bool separator = false;
    bool enabled = false;
    bool checkable = false;
    bool checked = false;
    friend bool operator==(const Shown&, const Shown&) = default;
  };

  virtual MenuBar& menuBar() = 0;
  virtual bool isMainThread() = 0;

  /// Returns the rows that the desktop shows now; empty before there is a menu.
  virtual std::vector<Shown> shown() = 0;
  /// Returns the icon's description on the desktop.
  virtual std::string description() = 0;
  /// The user chooses the row with that text. Its action may run later, while the loop runs.
  virtual void choose(const std::string& text) = 0;
};

}  // namespace hushbox
