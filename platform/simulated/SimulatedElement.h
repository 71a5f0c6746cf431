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

/// What reading an attribute gives: a text, a value of another type, no value at all, or an error.
using SimulatedAttribute =
    std::variant<std::string, OtherAttributeValue, std::monostate, AccessibilityError>;

/// One element on the screen of a simulated application, as data.
///
/// Reading "AXChildren" gives `children`, unless an attribute of that name says otherwise. An
/// attribute that is not listed is unsupported.
class SimulatedElement final : public AccessibilityElement {
 public:
  using Attributes = std::map<std::string, SimulatedAttribute, std::less<>>;

  /// `name` is what the journal calls it.
  explicit SimulatedElement(std::string name, Attributes attributes = {})
      : name(std::move(name)), attributes(std::move(attributes)) {}
  ~SimulatedElement() override;

  /// Adds a child at the end and returns it.
  std::shared_ptr<SimulatedElement> append(std::shared_ptr<SimulatedElement> child);
  std::shared_ptr<SimulatedElement> append(std::string childName, Attributes childAttributes = {});

  /// Takes the children away; whoever still refers to one of them, or to anything below, finds an
  /// invalid element.
  void removeChildren();
  void removeChild(const std::shared_ptr<SimulatedElement>& child);

  std::string name;
  Attributes attributes;
  std::vector<std::shared_ptr<SimulatedElement>> children;
  /// What performing an action does; without it every action is unsupported.
  std::function<AccessibilityError(std::string_view action)> perform;
  /// Whether it has left the screen.
  bool gone = false;
  /// The tree and the process that show it; set by the tree and handed on to children.
  struct Origin {
    std::shared_ptr<const void> tree;
    std::int32_t processIdentifier = 0;
  } origin;
};

using SimulatedElementRef = std::shared_ptr<SimulatedElement>;

}  // namespace hushbox
