#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/accessibility/AtspiBus.h"
#include "platform/linux/accessibility/AtspiPrograms.h"
#include "platform/linux/accessibility/TeamsDocument.h"
#include "platform/linux/bus/CallBatch.h"

namespace hushbox {

/// The documents on the accessibility bus that belong to Teams. Main thread only.
///
/// On Linux, Teams is not a program of its own: its meetings are pages in one or several browsers,
/// or in a client built on one. So documents count, whichever programs present them, and nothing
/// else of a browser does: neither its own controls ("Mute tab") nor its other pages. A document
/// belongs to Teams by its address or by being in a client that has Teams' name. Where a browser
/// reports no address, the title decides.
///
/// Once found, a document is remembered for as long as it lives: a browser removes the page of a
/// background tab from its tree, but continues to answer for it.
class TeamsDocuments {
 public:
  /// Documents beyond this many per program are ignored.
  static constexpr std::size_t maxDocuments = 256;
  /// An embedded page has one child.
  static constexpr std::size_t maxPageChildren = 4;

  /// The calls that tell whether a document is still there and belongs to Teams.
  struct Probe {
    TeamsDocumentRef document;
    CallBatch::Ticket signOfLife;
    std::optional<CallBatch::Ticket> name;
  };

  explicit TeamsDocuments(AtspiBus& bus) : bus_(bus) {}

  /// Those kept last, in that order.
  const std::vector<TeamsDocumentRef>& all() const { return documents_; }
  bool contains(const TeamsDocumentRef& document) const;

  /// The documents that the programs present now (two calls per program or embedded page), whether
  /// or not they belong to Teams, and those that were kept last.
  std::vector<TeamsDocumentRef> findCandidates(const std::vector<const AtspiProgram*>& programs);

  /// Whether, in the last findCandidates(), a program presented no document that had presented some
  /// the time before. Chromium does that after a while without assistive programs; the search wakes
  /// it, and its documents appear a moment later.
  bool hasFallenAsleep() const { return hasFallenAsleep_; }

  /// Adds the calls that probe the document. They include its name only if that is known to decide,
  /// as after a probe without it.
  Probe addProbe(CallBatch& batch, const TeamsDocumentRef& document) const;

  /// Whether the probed document belongs to Teams and is there. A document that was kept stays
  /// while its program does not reply: that is not the same as being closed.
  bool belongsToTeams(const CallBatch& batch, const Probe& probe) const;

  /// Keeps these and forgets all others.
  void keep(std::vector<TeamsDocumentRef> documents) { documents_ = std::move(documents); }

 private:
  /// A program and the object below which to search for its documents.
  using SearchRoot = std::pair<const AtspiProgram*, BusObject>;
  std::vector<SearchRoot> searchRoots(const std::vector<const AtspiProgram*>& programs);

  TeamsDocumentRef findOrMake(const BusObject& object, const AtspiProgram& program,
                              bool isDocument) const;

  AtspiBus& bus_;
  std::vector<TeamsDocumentRef> documents_;
  /// The names of the programs that presented documents in the last search.
  std::set<std::string> awake_;
  bool hasFallenAsleep_ = false;
};

}  // namespace hushbox
