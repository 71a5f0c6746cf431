#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hushbox {

/// The status of an accessibility call: 0 is the only success.
using AccessibilityError = std::int32_t;

namespace accessibility {

// Figures from the accessibility interface's documentation.
inline constexpr AccessibilityError success = 0;
inline constexpr AccessibilityError failure = -25200;
inline constexpr AccessibilityError invalidElement = -25202;
inline constexpr AccessibilityError cannotComplete = -25204;
inline constexpr AccessibilityError attributeUnsupported = -25205;
inline constexpr AccessibilityError actionUnsupported = -25206;
inline constexpr AccessibilityError apiDisabled = -25211;
inline constexpr AccessibilityError noValue = -25212;

}  // namespace accessibility

/// An element of some application's user interface. What it is made of is the platform's business;
/// holding it keeps the platform's reference, not the thing on the screen, which may be gone.
class AccessibilityElement {
 public:
  virtual ~AccessibilityElement() = default;
};

using AccessibilityElementRef = std::shared_ptr<const AccessibilityElement>;

/// A value that is neither text nor a list of elements: present, and of no use to us.
struct OtherAttributeValue {
  friend bool operator==(OtherAttributeValue, OtherAttributeValue) = default;
};

/// The value of an attribute; `std::monostate` when none came.
using AttributeValue = std::variant<std::monostate, std::string,
                                    std::vector<AccessibilityElementRef>, OtherAttributeValue>;

/// The user interfaces of other applications. Main thread only; every call blocks until the other
/// application has answered or the element's messaging time-out has passed.
///
/// An element made by another tree, or by one that is gone, is an `invalidElement`.
class AccessibilityTree {
 public:
  virtual ~AccessibilityTree() = default;

  /// Whether this process may look at and drive other applications.
  virtual bool isProcessTrusted() = 0;

  /// The same; with `prompt`, and where permission is missing, lets the system ask the user for it.
  virtual bool isProcessTrustedWithOptions(bool prompt) = 0;

  /// The element of the application with that process identifier; never absent, whether or not
  /// there is such an application.
  virtual AccessibilityElementRef createApplication(std::int32_t processIdentifier) = 0;

  /// Limits each call to the application's elements to so many seconds.
  virtual AccessibilityError setMessagingTimeout(const AccessibilityElementRef& element,
                                                 float seconds) = 0;

  virtual AccessibilityError setAttributeValue(const AccessibilityElementRef& element,
                                               std::string_view attribute, bool value) = 0;

  /// Reads an attribute. `value` is meaningful only when 0 comes back, and may be empty even then.
  virtual AccessibilityError copyAttributeValue(const AccessibilityElementRef& element,
                                                std::string_view attribute,
                                                AttributeValue& value) = 0;

  virtual AccessibilityError performAction(const AccessibilityElementRef& element,
                                           std::string_view action) = 0;
};

}  // namespace hushbox
