#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "platform/AccessibilityTree.h"

namespace hushbox {

class AXElement;

/// The user interfaces of other applications through the accessibility interface. Main thread only.
///
/// The system keeps a messaging timeout per element: setting it on an application leaves the
/// windows and buttons below with the default of several seconds. So the timeout is stored per
/// application and set on each of its elements before the first call to that element. If setting it
/// fails, the element is not called. Setting the process-wide default instead would save one local
/// call per element, but would also limit every other user of the interface in this process.
///
/// Reading an array returns only its elements. An array with members but no elements reads as
/// OtherAttributeValue.
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

  /// After an action that succeeded, reads the element's labels and value until one of them
  /// changes, for at most 0.5 s. The main thread sleeps between the reads, for 10 ms at first and
  /// then twice as long each time, so that the application has time to work.
  AccessibilityError performAction(const AccessibilityElementRef& element,
                                   std::string_view action) override;

 private:
  /// Returns the element, or null if this tree did not create it.
  const AXElement* own(const AccessibilityElementRef& element) const;
  /// Finds the element and sets its application's timeout on it if it differs.
  AccessibilityError prepare(const AccessibilityElementRef& element, const AXElement*& own) const;

  /// The attributes that show what a control does. Returns nullopt if a read timed out.
  std::optional<std::vector<AttributeValue>> appearance(const AccessibilityElementRef& element);
  void waitForChange(const AccessibilityElementRef& element,
                     const std::vector<AttributeValue>& before);

  const std::shared_ptr<const void> token_ = std::make_shared<char>();
};

}  // namespace hushbox
