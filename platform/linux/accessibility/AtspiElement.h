#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/AccessibilityTree.h"
#include "platform/linux/accessibility/AtspiSurface.h"
#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// Objects that were handed out together, and so are asked about together.
struct AtspiSiblings {
  AtspiSurfaceRef surface;
  std::vector<BusObject> objects;
  /// What is known of each one's role; 0 where nothing is.
  std::vector<std::uint32_t> roles;
  /// Whether they are a flat list of controls, without children.
  bool flat = false;
  /// The reading in which they were found.
  std::uint64_t reading = 0;
};

/// An application, a surface of Teams, or an object on a surface.
class AtspiElement final : public AccessibilityElement {
 public:
  /// `tree` stands for the tree that made the element.
  AtspiElement(std::weak_ptr<const void> tree, std::int32_t processIdentifier)
      : tree_(std::move(tree)), processIdentifier_(processIdentifier) {}
  AtspiElement(std::weak_ptr<const void> tree, AtspiSurfaceRef surface)
      : tree_(std::move(tree)), surface_(std::move(surface)) {}
  AtspiElement(std::weak_ptr<const void> tree, std::shared_ptr<const AtspiSiblings> siblings,
               std::size_t index)
      : tree_(std::move(tree)), siblings_(std::move(siblings)), index_(index) {}

  bool isOf(const std::shared_ptr<const void>& tree) const { return tree_.lock() == tree; }

  bool isApplication() const { return !surface_ && !siblings_; }
  std::int32_t processIdentifier() const { return processIdentifier_; }
  /// Set for a surface as a whole, and only then.
  const AtspiSurfaceRef& surface() const { return surface_; }
  /// Set for an object on a surface, and only then; `index` is its place among them.
  const std::shared_ptr<const AtspiSiblings>& siblings() const { return siblings_; }
  std::size_t index() const { return index_; }

 private:
  std::weak_ptr<const void> tree_;
  std::int32_t processIdentifier_ = 0;
  AtspiSurfaceRef surface_;
  std::shared_ptr<const AtspiSiblings> siblings_;
  std::size_t index_ = 0;
};

}  // namespace hushbox
