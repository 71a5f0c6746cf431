#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "platform/AccessibilityTree.h"
#include "platform/linux/accessibility/TeamsDocument.h"
#include "platform/linux/bus/BusObject.h"

namespace hushbox {

/// Objects that were found together and so are read together.
struct AtspiSiblings {
  TeamsDocumentRef document;
  std::vector<BusObject> objects;
  /// The role of each object as far as it is known, else 0.
  std::vector<std::uint32_t> roles;
  /// Whether they are a flat list of controls, without children.
  bool flat = false;
  /// The number of the snapshot in which they were found.
  std::uint64_t snapshot = 0;
  /// The choice among several documents under which they were found: see TeamsApplication.
  std::uint64_t choice = 0;
};

/// An application, a document of Teams, or an object in a document.
class AtspiElement final : public AccessibilityElement {
 public:
  /// `tree` identifies the tree that made the element.
  AtspiElement(std::weak_ptr<const void> tree, std::int32_t processIdentifier)
      : tree_(std::move(tree)), processIdentifier_(processIdentifier) {}
  AtspiElement(std::weak_ptr<const void> tree, TeamsDocumentRef document)
      : tree_(std::move(tree)), document_(std::move(document)) {}
  AtspiElement(std::weak_ptr<const void> tree, std::shared_ptr<const AtspiSiblings> siblings,
               std::size_t index)
      : tree_(std::move(tree)), siblings_(std::move(siblings)), index_(index) {}

  bool isOf(const std::shared_ptr<const void>& tree) const { return tree_.lock() == tree; }

  bool isApplication() const { return !document_ && !siblings_; }
  std::int32_t processIdentifier() const { return processIdentifier_; }
  /// Set for a document as a whole only.
  const TeamsDocumentRef& document() const { return document_; }
  /// Set for an object in a document only; `index` is its place among its siblings.
  const std::shared_ptr<const AtspiSiblings>& siblings() const { return siblings_; }
  std::size_t index() const { return index_; }
  const BusObject& object() const { return siblings_->objects[index_]; }

 private:
  std::weak_ptr<const void> tree_;
  std::int32_t processIdentifier_ = 0;
  TeamsDocumentRef document_;
  std::shared_ptr<const AtspiSiblings> siblings_;
  std::size_t index_ = 0;
};

}  // namespace hushbox
