#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// Finds a document's controls, which programs do by themselves far faster than a walk would. Main
/// thread only.
class DocumentControls {
 public:
  struct Control {
    BusObject object;
    std::uint32_t role = 0;
    /// The object that it is directly in, if that is known; else without a name.
    BusObject parent{};
  };

  /// Controls, and containers, beyond this many per document are ignored.
  static constexpr std::size_t maxControls = 10'000;
  static constexpr std::size_t maxContainers = 256;

  explicit DocumentControls(AtspiBus& bus) : bus_(bus) {}

  /// The buttons and check boxes in the document, in document order: two calls, and one per nested
  /// document and media player, whose controls are left out. Returns nullopt for a program that
  /// cannot search.
  std::optional<std::vector<Control>> find(const BusObject& document) const;

  /// Puts the controls in the order in which a breadth-first walk from the document comes to them.
  /// That takes one batch of calls per level, and none if all have the same parent.
  void sortBreadthFirst(const BusObject& document, std::vector<Control>& controls) const;

 private:
  AtspiBus& bus_;
};

}  // namespace hushbox
