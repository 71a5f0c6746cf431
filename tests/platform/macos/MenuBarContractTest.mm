#import <AppKit/AppKit.h>

#include "platform/macos/StatusItemMenuBar.h"
#include "tests/contract/MenuBarContract.h"
#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/MacScope.h"

namespace hushbox {
namespace {

class StatusItemMenuBarDriver final : public MenuBarDriver {
 public:
  MenuBar& menuBar() override { return menuBar_; }
  bool isMainThread() override { return NSThread.isMainThread; }

  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    for (const doubles::MenuItem& item : doubles::menuItems()) {
      shown.push_back({.text = item.title,
                       .separator = item.separator,
                       .enabled = item.enabled && item.actionable,
                       .checkable = isSwitch(item),
                       .checked = item.on});
    }
    return shown;
  }
  std::string description() override { return doubles::accessibilityLabel(); }
  void choose(const std::string& text) override {
    for (const doubles::MenuItem& item : doubles::menuItems())
      if (item.title == text && item.enabled) doubles::chooseMenuItem(text);
  }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return doubles::runUntil(condition, limit);
  }

 private:
  /// A native menu shows no difference between a button and a switch that is off, so the contract's
  /// switches are listed here.
  static bool isSwitch(const doubles::MenuItem& item) {
    return item.on || item.title == "Off" || item.title == "Launch at login";
  }

  MacScope mac_;
  StatusItemMenuBar menuBar_;
};

INSTANTIATE_TEST_SUITE_P(Macos, MenuBarContract, driverFactory<MenuBarDriver>([] {
                           return std::make_unique<StatusItemMenuBarDriver>();
                         }));

}  // namespace
}  // namespace hushbox
