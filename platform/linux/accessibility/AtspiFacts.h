#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "platform/AccessibilityTree.h"

namespace hushbox {

/// What was read of one object at one moment; texts are empty where there is none.
struct AtspiFacts {
  std::chrono::steady_clock::time_point readAt{};
  /// 0 when the object answered.
  AccessibilityError status = accessibility::cannotComplete;
  std::uint32_t role = 0;
  std::string name;
  /// The description, where a browser puts the tooltip, or else the help text.
  std::string description;
  /// The identifier in the document, or else the one that the toolkit gives.
  std::string identifier;
};

}  // namespace hushbox
