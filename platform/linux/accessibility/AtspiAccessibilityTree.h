#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/AccessibilityTree.h"
#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiPrograms.h"
#include "platform/linux/accessibility/AtspiSnapshot.h"
#include "platform/linux/accessibility/AtspiWorkspace.h"
#include "platform/linux/accessibility/FollowedControl.h"
#include "platform/linux/accessibility/LabelRefresher.h"
#include "platform/linux/accessibility/TeamsApplication.h"
#include "platform/linux/accessibility/TeamsDocuments.h"
#include "platform/linux/accessibility/TeamsRanking.h"

namespace hushbox {

/// The accessibility tree on the accessibility bus of the Linux desktop (AT-SPI), by direct D-Bus
/// calls. Main thread only.
///
/// It presents Teams and nothing else: the children of the application element are the documents of
/// Teams (see TeamsDocuments), and the children of a document are its buttons and check boxes as a
/// flat list in document order, because a program finds those by itself in milliseconds where a
/// walk through its tree takes seconds. A program that cannot is walked. Of an object,
///  - "AXRole" is the nearest role of the interface; a toggle button is an "AXButton";
///  - "AXDescription" is the name, which is where a browser puts an aria-label: the first label
///    that the core looks at;
///  - "AXHelp" is the description (a browser's tooltip) or else the help text; "AXTitle" has no
///    counterpart on controls, and is the name of the application;
///  - "AXDOMIdentifier" is the identifier in the document.
/// Missing and empty texts are `noValue`.
///
/// A value is never older than a tenth of a second, nor than its snapshot. A snapshot begins when
/// the running applications are listed or an application element is made, and ends with a press.
///
/// The messaging timeout belongs to the application, on whichever of its elements it is set. Once a
/// program has let it pass, later calls to it fail at once until it has replied: a frozen program
/// holds up the caller once, not once per call. A press that was under way then still reaches the
/// program when it thaws.
class AtspiAccessibilityTree final : public AccessibilityTree {
 public:
  /// Calls `switchedOn` whenever it has switched accessibility on. With several documents of Teams,
  /// one whose browser is among `recordingProcesses` comes first: see TeamsRanking. No value is
  /// older than `freshness`.
  explicit AtspiAccessibilityTree(std::function<void()> switchedOn = {},
                                  TeamsRanking::RecordingProcesses recordingProcesses = {},
                                  std::chrono::milliseconds freshness = LabelRefresher::freshness);
  ~AtspiAccessibilityTree() override;

  /// Whether accessibility is switched on for the session. While the switch does not reply, the
  /// last answer holds, and true before the first: what is not known to be missing is not asked of
  /// the user.
  bool isProcessTrusted() override;
  /// With `prompt`, switches accessibility on; that takes effect after the call. Browsers on
  /// Chromium then have to be started again.
  bool isProcessTrustedWithOptions(bool prompt) override;

  AccessibilityElementRef createApplication(std::int32_t processIdentifier) override;
  AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                         float seconds) override;
  /// Nothing can be set: `attributeUnsupported`.
  AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                       std::string_view attribute, bool value) override;
  AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                        std::string_view attribute, AttributeValue& value) override;
  /// "AXPress" is the action that is called press, click, toggle or the like. The page handles a
  /// press some 10 ms after the program has confirmed it, and only then changes the label. A press
  /// lasts until the label has changed, but no longer than the messaging timeout: a label read in
  /// between would show the state before the press.
  AccessibilityError performAction(const AccessibilityElementRef& element,
                                   std::string_view action) override;

  /// The workspace whose running applications this tree presents.
  Workspace& workspace() { return workspace_; }

  /// How many D-Bus calls this tree has made.
  std::uint64_t callCount() const { return bus_.callCount(); }
  /// How often it has waited for replies. Calls that are made together wait once.
  std::uint64_t roundTripCount() const { return bus_.roundTripCount(); }

 private:
  const AtspiElement* own(const AccessibilityElementRef& element) const;
  AccessibilityError copyFromApplication(const AtspiElement& element, std::string_view attribute,
                                         AttributeValue& value);
  AccessibilityError copyFromDocument(const TeamsDocumentRef& document, std::string_view attribute,
                                      AttributeValue& value);
  AccessibilityError copyFromObject(const AtspiElement& element, std::string_view attribute,
                                    AttributeValue& value);
  AccessibilityError press(const AtspiElement& element);
  AttributeValue elements(const std::shared_ptr<const AtspiSiblings>& siblings) const;

  const std::function<void()> switchedOn_;
  AtspiBus bus_;
  AtspiPrograms programs_{bus_};
  TeamsDocuments documents_{bus_};
  LabelRefresher labels_{bus_, programs_};
  FollowedControl control_{bus_};
  TeamsRanking ranking_;
  TeamsApplication teams_{bus_, programs_, documents_, labels_, control_, ranking_};
  AtspiSnapshot snapshot_;
  AtspiWorkspace workspace_{teams_, snapshot_};
  const std::shared_ptr<const char> identity_;
};

}  // namespace hushbox
