#pragma once

#include <string>
#include <vector>

#include "platform/MenuBar.h"
#include "tests/contract/ContractDriver.h"

namespace hushbox {

/// Drives a menu bar and the desktop that shows it.
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

  /// The rows as the desktop has them now; empty while there is no menu yet.
  virtual std::vector<Shown> shown() = 0;
  /// The state in words that goes with the icon on the desktop.
  virtual std::string description() = 0;
  /// The user chooses the row with that text; what this leads to happens while the loop runs.
  virtual void choose(const std::string& text) = 0;
};

}  // namespace hushbox
