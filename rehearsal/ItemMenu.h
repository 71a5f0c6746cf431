#pragma once

#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox::rehearsal {

/// The menu of a status item, read the way panels do, over com.canonical.dbusmenu.
class ItemMenu {
 public:
  struct Row {
    int id = 0;
    std::string text;  ///< Without the underscores of mnemonics; empty for a separator.
    bool separator = false;
    bool enabled = true;
    bool isSwitch = false;
    bool on = false;
    friend bool operator==(const Row&, const Row&) = default;
  };

  /// `item` is the bus name of who shows it. The connection must outlive this.
  ItemMenu(const BusConnection& bus, std::string item) : bus_(bus), item_(std::move(item)) {}

  /// The rows at present, top first. The item may live on this thread: the main context goes on
  /// meanwhile. Throws DeskError when nobody answers.
  std::vector<Row> rows() const;
  /// The row of that text. Throws DeskError when there is none.
  Row row(const std::string& text) const;

  /// Chooses a row, as a panel tells it.
  void choose(const std::string& text) const;

 private:
  Variant ask(const char* method, GVariant* arguments) const;

  const BusConnection& bus_;
  std::string item_;
};

}  // namespace hushbox::rehearsal
