#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <utility>

#include "platform/AccessibilityTree.h"
#include "platform/macos/CFReference.h"

namespace hushbox {

/// What the elements of one application have in common.
struct AXApplication {
  /// Stands for the tree that made the elements.
  std::weak_ptr<const void> tree;
  /// In seconds; 0 while none was asked for.
  float messagingTimeout = 0;
};

/// An element of an application as the accessibility interface hands it out, kept alive by a
/// reference of its own. Main thread only.
class AXElement final : public AccessibilityElement {
 public:
  AXElement(std::shared_ptr<AXApplication> application, CFReference<AXUIElementRef> element)
      : application_(std::move(application)), element_(std::move(element)) {}

  const std::shared_ptr<AXApplication>& application() const { return application_; }
  AXUIElementRef get() const { return element_.get(); }

  /// The messaging time-out that this element has been given, in seconds.
  float messagingTimeout() const { return messagingTimeout_; }
  void setMessagingTimeout(float seconds) const { messagingTimeout_ = seconds; }

 private:
  std::shared_ptr<AXApplication> application_;
  CFReference<AXUIElementRef> element_;
  mutable float messagingTimeout_ = 0;
};

}  // namespace hushbox
