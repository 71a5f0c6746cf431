#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/AccessibilityTree.h"

namespace hushbox {

/// The result of reading an attribute: a text, a value of another type, no value, or an error.
using SimulatedAttribute =
    std::variant<std::string, OtherAttributeValue, std::monostate, AccessibilityError>;

/// An element of a simulated application's user interface.
///
/// Reading "AXChildren" returns `children`, unless `attributes` has an entry of that name. An
/// attribute that is not listed is unsupported.
class SimulatedElement final : public AccessibilityElement {
 public:
  using Attributes = std::map<std::string, SimulatedAttribute, std::less<>>;

  /// `name` identifies the element in the journal.
  explicit SimulatedElement(std::string name, Attributes attributes = {})
      : name(std::move(name)), attributes(std::move(attributes)) {}
  ~SimulatedElement() override;

  /// Appends a child, with everything below it, and returns it.
  std::shared_ptr<SimulatedElement> append(std::shared_ptr<SimulatedElement> child);
  std::shared_ptr<SimulatedElement> append(std::string childName, Attributes childAttributes = {});

  /// Removes all children. References to them and to anything below become invalid.
  void removeChildren();
  void removeChild(const std::shared_ptr<SimulatedElement>& child);

  std::string name;
  Attributes attributes;
  std::vector<std::shared_ptr<SimulatedElement>> children;
  /// Performs an action; if empty, every action is unsupported.
  std::function<AccessibilityError(std::string_view action)> perform;
  /// Whether it was removed from the screen.
  bool gone = false;
  /// The tree and the process that it belongs to; set by the tree and passed on to children.
  struct Origin {
    std::shared_ptr<const void> tree;
    std::int32_t processIdentifier = 0;
  } origin;
};

using SimulatedElementRef = std::shared_ptr<SimulatedElement>;

}  // namespace hushbox
