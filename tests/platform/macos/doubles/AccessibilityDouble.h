#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace hushbox::doubles {

struct AXNode;
using AXNodeRef = std::shared_ptr<AXNode>;

/// A value of another type than the adapters look for. `nothing` is a success without a value.
enum class AXStrange {
  number,
  boolean,
  null,
  nestedList,
  emptyList,
  stringList,
  loneSurrogate,
  nothing
};
using AXValue = std::variant<std::string, AXStrange>;

/// An element of an application's user interface. AXChildren is made of `children`.
struct AXNode {
  std::map<std::string, AXValue> attributes;
  std::vector<AXNodeRef> children;
  /// Beside the children the list has a number, a text, a null and a list.
  bool strangeChildren = false;
  bool gone = false;
  /// What an action does; returns its status. Without it no action is supported.
  std::function<std::int32_t(const std::string& action)> perform;
  /// The attributes that were set. Setting answers "unsupported" although it takes effect.
  std::map<std::string, bool> written;
  /// Waits for AXManualAccessibility to be written true to the application before it has children.
  bool asleep = false;
};

/// The Accessibility permission; granted at first.
extern bool trusted;
/// The prompt option of each question that had one.
extern std::vector<bool> prompts;

/// The application with that process identifier, made when it is first asked for.
AXNodeRef& axApplication(std::int32_t pid);
/// Ends the application: its elements are invalid.
void axQuit(std::int32_t pid);

/// While true every call takes its time-out and then fails, with kAXErrorCannotComplete.
extern bool axFrozen;
/// The time-outs that frozen calls waited, in seconds.
extern std::vector<float> axWaits;

/// Elements that the interface has handed out and that are still held.
long axElements();

/// What AXUIElementSetMessagingTimeout returns instead of doing anything, unless 0.
extern std::int32_t axTimeoutStatus;

/// The applications that NSWorkspace lists.
struct App {
  /// Empty for one without a bundle.
  std::string bundle;
  std::int32_t pid;
};
extern std::vector<App> apps;

void resetAccessibility();

}  // namespace hushbox::doubles
