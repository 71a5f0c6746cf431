#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/AtspiFacts.h"
#include "platform/linux/accessibility/FollowedControl.h"
#include "platform/linux/accessibility/LabelRefresher.h"
#include "platform/linux/accessibility/TeamsApplication.h"

namespace hushbox {

/// What was read of Teams' objects since a moment. Main thread only.
///
/// All facts of an object are read at once, together with those of its next siblings, since a walk
/// needs those too; for a moment, later reads of the same snapshot are answered from here.
class AtspiSnapshot {
 public:
  using Siblings = std::shared_ptr<const AtspiSiblings>;

  /// How many objects are read at a time: enough to hide the round trips.
  static constexpr std::size_t batchSize = 64;
  /// No meeting has more controls in a document, nor more children in an object.
  static constexpr std::size_t maxChildren = 10'000;
  /// With more controls that are labelled so, document order is good enough.
  static constexpr std::size_t maxSorted = 64;
  /// How long a snapshot may descend into the tree of a program that cannot search it by itself.
  /// What lies deeper is not found then.
  static constexpr std::chrono::milliseconds maxDescent{2000};

  /// Facts are read again once they are older than `freshness`.
  AtspiSnapshot(AtspiBus& bus, TeamsApplication& teams, LabelRefresher& labels,
                FollowedControl& control, std::chrono::milliseconds freshness)
      : bus_(bus), teams_(teams), labels_(labels), control_(control), freshness_(freshness) {}

  /// Forgets everything that was read: a new snapshot begins.
  void begin();
  /// Whether nothing has been read since it began.
  bool isUntouched() const { return untouched_; }

  /// Looks for everything that belongs to Teams; see TeamsApplication.
  void search();

  const AtspiFacts& facts(const AtspiElement& element);

  /// What has been read of the object; null if nothing has.
  const AtspiFacts* known(const BusObject& object) const;

  /// The controls in a document: see DocumentControls. They are in document order, except that
  /// those labelled as the microphone button may be come in breadth-first order: only there does
  /// the order matter, and levels take calls to find out. Where the program cannot search, these
  /// are the document's own children. Null when neither can be read.
  Siblings controls(const TeamsDocumentRef& document);

  /// The children of an object in a document; null when they cannot be read.
  Siblings children(const AtspiElement& element);

 private:
  using Objects = std::vector<BusObject>;

  /// Of the sibling at `first` and the next ones, those whose facts are not known.
  static std::vector<std::size_t> unread(const std::map<BusObject, AtspiFacts>& facts,
                                         const AtspiSiblings& siblings, std::size_t first);
  void readFacts(const AtspiSiblings& siblings, const std::vector<std::size_t>& places);
  /// Reads one by one the texts that some toolkits leave out of GetAll.
  void readRemainingFacts(const Objects& objects);
  void sortMuteControls(AtspiSiblings& siblings);
  bool isFresh(const AtspiFacts& facts) const;
  Siblings childrenOf(const AtspiSiblings& siblings, std::size_t place);
  void readChildren(const AtspiSiblings& siblings, std::size_t first);
  std::shared_ptr<AtspiSiblings> siblings(const TeamsDocumentRef& document, Objects objects) const;

  AtspiBus& bus_;
  TeamsApplication& teams_;
  LabelRefresher& labels_;
  FollowedControl& control_;
  const std::chrono::milliseconds freshness_;
  std::uint64_t number_ = 0;
  bool untouched_ = true;
  std::chrono::steady_clock::time_point began_{};
  std::map<BusObject, AtspiFacts> facts_;
  std::map<BusObject, Objects> children_;
};

}  // namespace hushbox
