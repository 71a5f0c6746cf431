#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiFacts.h"
#include "platform/linux/accessibility/AtspiTeams.h"

namespace hushbox {

/// What was read of Teams' objects in the present reading. Main thread only.
///
/// All that is asked of an object is asked at once, and of its next siblings with it, since a walk
/// will want those too; for a moment, later questions of the same reading are answered from here. A
/// reading lasts from one look for the application to the next, or to the next press.
class AtspiReading {
 public:
  using Siblings = std::shared_ptr<const AtspiSiblings>;

  /// How many objects are asked about at a time: enough to hide the round trips.
  static constexpr std::size_t objectsAtOnce = 64;
  /// No meeting has more controls on one surface, nor more children in one object.
  static constexpr std::size_t mostChildren = 10'000;
  /// How long a reading may go down the tree of a program that cannot search it by itself; what
  /// lies deeper is not found then.
  static constexpr std::chrono::milliseconds longestDescent{2000};

  explicit AtspiReading(AtspiTeams& teams) : teams_(teams) {}

  /// Forgets everything: what is asked from now on is asked anew.
  void begin();
  /// Whether nothing has been read since it began.
  bool isUntouched() const { return untouched_; }

  /// Looks for everything that belongs to Teams.
  void search();

  const AtspiFacts& facts(const AtspiElement& element);

  /// Waits until the object's name is another than was read, or it is gone, at most `limit`. At
  /// once when it has not been read.
  void awaitChange(const AtspiElement& element, std::chrono::milliseconds limit);

  /// The controls of a surface, in document order, found by the program itself in two calls; where
  /// it cannot, the surface's own children. Null when neither can be told.
  Siblings controls(const AtspiSurfaceRef& surface);

  /// The children of an object on a surface; null when they cannot be told.
  Siblings children(const AtspiElement& element);

 private:
  using Objects = std::vector<BusObject>;

  /// Takes the facts that came along with the surface's; false when they are not true for sure, or
  /// not all.
  bool takeFactsThatCameAlong(const AtspiSurface& surface);
  void readFacts(const AtspiSiblings& siblings, const std::vector<std::size_t>& places);
  /// Asks one by one for what some toolkits leave out of an object's properties taken together.
  void readRemainingFacts(const Objects& objects, std::chrono::milliseconds wait);
  Siblings childrenOf(const AtspiSiblings& siblings, std::size_t place);
  void readChildren(const AtspiSiblings& siblings, std::size_t first);
  std::shared_ptr<AtspiSiblings> siblings(const AtspiSurfaceRef& surface, Objects objects) const;

  AtspiTeams& teams_;
  std::uint64_t number_ = 0;
  bool untouched_ = true;
  std::chrono::steady_clock::time_point began_{};
  std::map<BusObject, AtspiFacts> facts_;
  std::map<BusObject, Objects> children_;
};

}  // namespace hushbox
