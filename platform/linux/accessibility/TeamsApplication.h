#pragma once

#include <chrono>
#include <cstdint>
#include <set>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiPrograms.h"
#include "platform/linux/accessibility/FollowedControl.h"
#include "platform/linux/accessibility/LabelRefresher.h"
#include "platform/linux/accessibility/TeamsDocuments.h"
#include "platform/linux/accessibility/TeamsRanking.h"

namespace hushbox {

/// Everything on the accessibility bus that belongs to Teams, taken as one application. Main thread
/// only.
///
/// It asks in batches: one batch probes the known documents, has their labels refreshed and reads
/// the followed control.
class TeamsApplication {
 public:
  /// How long a browser may take to present its pages when it is met for the first time or was
  /// asleep: it takes 50 to 300 ms.
  static constexpr std::chrono::milliseconds wakeTimeout{500};

  TeamsApplication(AtspiBus& bus, AtspiPrograms& programs, TeamsDocuments& documents,
                   LabelRefresher& labels, FollowedControl& control, TeamsRanking& ranking)
      : bus_(bus),
        programs_(programs),
        documents_(documents),
        labels_(labels),
        control_(control),
        ranking_(ranking) {}

  /// Starts the time budget again; whatever was probed before no longer counts.
  void beginSnapshot();

  /// Whether anything of Teams is there. While a control is followed and its document is still
  /// there, this asks about that one only: seven calls at most, in one round trip or two, however
  /// many documents there are. Once something that spoke for that document has ended, it searches
  /// and chooses again.
  bool isRunning();

  /// Looks for everything that belongs to Teams: one call to the registry, two per browser, two per
  /// document, and once per program that has one, one for a direct connection. With Epiphany, those
  /// of EmbeddedPages::find() and two per page are added. It searches once per snapshot; later
  /// calls do nothing.
  void search();

  /// Grows whenever another document was chosen: what was found before it no longer counts.
  std::uint64_t choice() const { return choice_; }

  /// What was found last, in the order in which to look at it; see TeamsRanking.
  const std::vector<TeamsDocumentRef>& documents() const { return documents_.all(); }
  bool hasDocument(const TeamsDocumentRef& document) const { return documents_.contains(document); }

 private:
  using Documents = std::vector<TeamsDocumentRef>;
  using Probes = std::vector<TeamsDocuments::Probe>;

  void forgetAfterReconnection();
  /// Forgets the documents of programs that have exited.
  void forgetExited();
  void chooseAgain();
  /// Whether no document was found, or a program records from the speakerphone without one.
  bool lacksMeeting() const;
  void rank();
  /// Keeps those of the candidates that are there and belong to Teams.
  void confirm(const Documents& candidates);
  /// The probed documents that are there and belong to Teams.
  std::set<TeamsDocumentRef> belonging(const CallBatch& batch, const Probes& probes) const;
  void keep(const Documents& candidates, const std::set<TeamsDocumentRef>& present);

  AtspiBus& bus_;
  AtspiPrograms& programs_;
  TeamsDocuments& documents_;
  LabelRefresher& labels_;
  FollowedControl& control_;
  TeamsRanking& ranking_;
  std::uint64_t choice_ = 0;
  std::uint64_t busGeneration_ = 0;
  std::chrono::steady_clock::time_point snapshotBegan_{};
  bool isProbed_ = false;
  bool hasSearched_ = false;
};

}  // namespace hushbox
