#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/AccessibilityTree.h"
#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiReading.h"
#include "platform/linux/accessibility/AtspiTeams.h"
#include "platform/linux/accessibility/AtspiWorkspace.h"

namespace hushbox {

/// The accessibility tree on the accessibility bus of the Linux desktop (AT-SPI), spoken to
/// directly over D-Bus. Main thread only.
///
/// It presents Teams and nothing else: the application element's children are Teams' surfaces (see
/// AtspiTeams), and a surface's children are its buttons and check boxes, a flat list in document
/// order, because a program finds those by itself in milliseconds where a walk through its tree
/// takes seconds. A program that cannot is walked. Of an object,
///  - "AXRole" is the nearest role of the interface; a toggle button is an "AXButton";
///  - "AXDescription" is the name, which is where a browser puts an aria-label: the first label to
///    be looked at;
///  - "AXHelp" is the description (a browser's tooltip) or else the help text; "AXTitle" has no
///    counterpart on controls, and is the name of the application;
///  - "AXDOMIdentifier" is the identifier in the document.
/// Absent and empty texts are `noValue`.
///
/// Nothing read is older than a tenth of a second, nor than the reading it belongs to, which begins
/// when the running applications are listed or an application element is made, and ends with a
/// press.
///
/// The time-out belongs to the application, on whichever of its elements it is set. When a program
/// lets it pass, later calls to it fail at once until it has answered: a frozen one holds up the
/// caller once, not once a call. A press that was under way then reaches the program when it thaws.
class AtspiAccessibilityTree final : public AccessibilityTree {
 public:
  /// A press is taken up by the page some 10 ms after the program has confirmed it, and only then
  /// does the label change. Until it has, but no longer than this, the press is waited for: a label
  /// read in between would tell the state before it.
  static constexpr std::chrono::milliseconds pressWait{250};

  AtspiAccessibilityTree();
  ~AtspiAccessibilityTree() override;

  /// Whether accessibility is switched on for the session and the accessibility bus is there.
  bool isProcessTrusted() override;
  /// With `prompt`, switches accessibility on; that takes effect after the call. Programs on
  /// Chromium then have to be started anew.
  bool isProcessTrustedWithOptions(bool prompt) override;

  AccessibilityElementRef createApplication(std::int32_t processIdentifier) override;
  AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                         float seconds) override;
  /// There is nothing to set: `attributeUnsupported`.
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                       std::string_view attribute, bool value) override;
  AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                        std::string_view attribute, AttributeValue& value) override;
  /// "AXPress" is the action that is called press, click, toggle or the like.
  AccessibilityError performAction(const AccessibilityElementRef& element,
                                   std::string_view action) override;

  /// The workspace whose running applications this tree presents.
  Workspace& workspace() { return workspace_; }

  /// How many D-Bus calls have been made since the beginning.
  std::uint64_t callCount() const { return bus_.callCount(); }

 private:
  const AtspiElement* own(const AccessibilityElementRef& element) const;
  AccessibilityError copyFromApplication(const AtspiElement& element, std::string_view attribute,
                                         AttributeValue& value);
  AccessibilityError copyFromSurface(const AtspiSurfaceRef& surface, std::string_view attribute,
                                     AttributeValue& value);
  AccessibilityError copyFromObject(const AtspiElement& element, std::string_view attribute,
                                    AttributeValue& value);
  AccessibilityError press(const AtspiElement& element);
  /// Finds out which of the control's actions is a press.
  AccessibilityError seekPress(AtspiSurface& surface);
  AttributeValue elements(const std::shared_ptr<const AtspiSiblings>& siblings) const;

  AtspiBus bus_;
  AtspiTeams teams_{bus_};
  AtspiReading reading_{teams_};
  AtspiWorkspace workspace_{teams_, reading_};
  const std::shared_ptr<const char> identity_;
};

}  // namespace hushbox
