#pragma once

#include <memory>

#include "platform/AccessibilityTree.h"

namespace hushbox {

class AXElement;

/// The user interfaces of other applications through the accessibility interface. Main thread only.
///
/// The system keeps a messaging time-out by element, not by application: one that is set on an
/// application leaves the windows and buttons below it with the default of some seconds. So the
/// time-out is remembered for the application, and set on each of its elements before the first
/// call to it; where it cannot be set, the element is not called. The process-wide default would
/// spare that, a local call an element, but would bind whatever else of this process uses the
/// interface.
///
/// Of an array only the elements in it count; one with members and no element among them is of no
/// use to us.
class AXAccessibilityTree final : public AccessibilityTree {
 public:
  bool isProcessTrusted() override;
  bool isProcessTrustedWithOptions(bool prompt) override;
  AccessibilityElementRef createApplication(std::int32_t processIdentifier) override;
  AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                         float seconds) override;
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                       std::string_view attribute, bool value) override;
  AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                        std::string_view attribute, AttributeValue& value) override;
  AccessibilityError performAction(const AccessibilityElementRef& element,
                                   std::string_view action) override;

 private:
  /// The element as one of this tree, or null.
  const AXElement* own(const AccessibilityElementRef& element) const;
  /// Finds the element and sees that its application's time-out is in force for it.
  AccessibilityError prepare(const AccessibilityElementRef& element, const AXElement*& own) const;

  const std::shared_ptr<const void> token_ = std::make_shared<char>();
};

}  // namespace hushbox
