#include "platform/simulated/SimulatedMenuBar.h"
#include "tests/contract/MenuBarContract.h"

namespace hushbox {
namespace {

class SimulatedMenuBarDriver final : public MenuBarDriver {
 public:
  MenuBar& menuBar() override { return menuBar_; }
  bool isMainThread() override { return loop_.isMainThread(); }
  std::vector<Shown> shown() override {
    std::vector<Shown> shown;
    for (const MenuRow& row : menuBar_.rows()) {
      const bool isToggle = row.kind == MenuRow::Kind::toggle;
      shown.push_back({.text = row.text,
                       .separator = row.kind == MenuRow::Kind::separator,
                       .enabled = row.enabled,
                       .checkable = isToggle,
                       .checked = isToggle && row.on});
    }
    return shown;
  }
  std::string description() override { return menuBar_.description(); }
  void choose(const std::string& text) override { menuBar_.choose(text); }
  bool waitFor(const std::function<bool()>& condition, TimeInterval limit) override {
    return loop_.advanceUntil(condition, limit);
  }

 private:
  Journal journal_;
  SimulatedMainLoop loop_{journal_};
  SimulatedMenuBar menuBar_{journal_, loop_};
};

INSTANTIATE_TEST_SUITE_P(Simulated, MenuBarContract, driverFactory<MenuBarDriver>([] {
                           return std::make_unique<SimulatedMenuBarDriver>();
                         }));

}  // namespace
}  // namespace hushbox
