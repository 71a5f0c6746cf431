#pragma once

#include <string>
#include <vector>

#include "rehearsal/BusConnection.h"

namespace hushbox::rehearsal {

/// The menu of a status item, read over com.canonical.dbusmenu as panels do.
class ItemMenu {
 public:
  struct Row {
    int id = 0;
    std::string text;  ///< Without mnemonic underscores; empty for a separator.
    bool separator = false;
    bool enabled = true;
    bool isSwitch = false;
    bool on = false;
    friend bool operator==(const Row&, const Row&) = default;
  };

  /// `item` is the bus name of the program that shows the item. The connection must outlive this
  /// object.
  ItemMenu(const BusConnection& bus, std::string item) : bus_(bus), item_(std::move(item)) {}

  /// The current rows, top first. Runs the main context meanwhile, so the item may be exported by
  /// this thread. Throws DeskError if no reply arrives.
  std::vector<Row> rows() const;
  /// The first row with that text. Throws DeskError if there is none.
  Row row(const std::string& text) const;

  /// Sends the "clicked" event for the row with that text.
  void choose(const std::string& text) const;

 private:
  Variant call(const char* method, GVariant* arguments) const;

  const BusConnection& bus_;
  std::string item_;
};

}  // namespace hushbox::rehearsal
