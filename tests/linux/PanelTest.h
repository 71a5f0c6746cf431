#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/LuchadorArt.h"
#include "platform/linux/StatusNotifierMenuBar.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/linux/BusClient.h"
#include "tests/linux/KeptLog.h"

namespace hushbox {

/// A watcher as panels run it, that keeps who registers. In this process, with a connection of its
/// own; it leaves the bus at its end, as one that dies does.
class Watcher {
 public:
  explicit Watcher(const std::string& busAddress, bool refusing = false);
  ~Watcher();
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  /// The unique names under which items have registered.
  const std::vector<std::string>& items() const { return items_; }
  void waitForItem() const;

 private:
  rehearsal::BusConnection bus_;
  bool refusing_;
  guint object_ = 0;
  std::vector<std::string> items_;
};

/// A menu bar on a session bus of its own, with a watcher, and somebody who asks.
class PanelTest : public testing::Test {
 protected:
  static constexpr const char* item = "org.kde.StatusNotifierItem";
  static constexpr const char* menu = "com.canonical.dbusmenu";

  PanelTest();
  ~PanelTest() override;

  /// Puts up a menu bar with an icon and waits until it has registered with a watcher.
  void start();

  BusClient::Answer ofItem(const std::string& property);
  BusClient::Answer ofMenu(const std::string& method, GVariant* arguments);
  /// Asks for the whole layout; the numbers of the rows in their order.
  std::vector<int> rowIds();
  BusClient::Answer click(int id);

  static Image icon(std::optional<Color> tint = {}, bool muted = false) {
    return LuchadorArt::menuBarImage(muted, true, tint);
  }

  rehearsal::Session session_;
  KeptLog log_;
  std::unique_ptr<BusClient> client_;
  std::unique_ptr<Watcher> watcher_;
  std::unique_ptr<StatusNotifierMenuBar> menuBar_;
  /// The item's unique name on the bus.
  std::string name_;
};

}  // namespace hushbox
