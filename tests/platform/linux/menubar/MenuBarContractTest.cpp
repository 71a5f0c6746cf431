#include "tests/contract/MenuBarContract.h"

#include <memory>

#include "platform/linux/menubar/StatusNotifierMenuBar.h"
#include "rehearsal/ItemMenu.h"
#include "tests/platform/linux/fixtures/PanelFixture.h"

namespace hushbox {
namespace {

/// A menu bar on a session bus, and a client that reads its item as a panel does.
class StatusNotifierMenuBarDriver final : public MenuBarDriver {
 public:
  StatusNotifierMenuBarDriver() {
    session_.applyToThisProcess();
    watcher_ = std::make_unique<Watcher>(session_.busAddress());
    client_ = std::make_unique<BusClient>(session_.busAddress());
    bus_ = std::make_unique<rehearsal::BusConnection>(session_.busAddress());
    menuBar_ = std::make_unique<StatusNotifierMenuBar>(sessionBus_, log_);
  }

  MenuBar& menuBar() override { return *menuBar_; }
  bool isMainThread() override { return g_main_context_is_owner(nullptr); }

  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    if (!isThere()) return shown;
    for (const rehearsal::ItemMenu::Row& row : menu().rows())
      shown.push_back(
          {row.text, row.separator, row.enabled && !row.separator, row.isSwitch, row.on});
    return shown;
  }
  std::string description() override {
    if (!isThere()) return "";
    return client_
        ->property(watcher_->items().front(), StatusNotifierItem::path,
                   "org.kde.StatusNotifierItem", "ToolTip")
        .text();
  }
  void choose(const std::string& text) override { menu().choose(text); }

  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return rehearsal::holdsWithin(condition,
                                  std::chrono::duration_cast<rehearsal::Milliseconds>(limit));
  }

 private:
  bool isThere() const { return !watcher_->items().empty(); }
  rehearsal::ItemMenu menu() const { return {*bus_, watcher_->items().front()}; }

  rehearsal::Session session_;
  KeptLog log_;
  std::unique_ptr<Watcher> watcher_;
  std::unique_ptr<BusClient> client_;
  std::unique_ptr<rehearsal::BusConnection> bus_;
  SessionBusConnection sessionBus_;
  std::unique_ptr<StatusNotifierMenuBar> menuBar_;
};

INSTANTIATE_TEST_SUITE_P(StatusNotifier, MenuBarContract, driverFactory<MenuBarDriver>([] {
                           return std::make_unique<StatusNotifierMenuBarDriver>();
                         }));

}  // namespace
}  // namespace hushbox
