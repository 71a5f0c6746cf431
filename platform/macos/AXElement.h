#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <memory>
#include <utility>

#include "platform/AccessibilityTree.h"
#include "platform/macos/CFReference.h"

namespace hushbox {

/// Shared by the elements of one application.
struct AXApplication {
  /// Identifies the tree that created the elements.
  std::weak_ptr<const void> tree;
  /// In seconds; 0 while none is set.
  float messagingTimeout = 0;
};

/// An element of another application's user interface. Holds one reference to it. Main thread only.
class AXElement final : public AccessibilityElement {
 public:
  AXElement(std::shared_ptr<AXApplication> application, CFReference<AXUIElementRef> element)
      : application_(std::move(application)), element_(std::move(element)) {}

  const std::shared_ptr<AXApplication>& application() const { return application_; }
  AXUIElementRef get() const { return element_.get(); }

  /// The messaging timeout that was set on this element, in seconds; 0 if none was.
  float messagingTimeout() const { return messagingTimeout_; }
  void setMessagingTimeout(float seconds) const { messagingTimeout_ = seconds; }

 private:
  std::shared_ptr<AXApplication> application_;
  CFReference<AXUIElementRef> element_;
  mutable float messagingTimeout_ = 0;
};

}  // namespace hushbox
