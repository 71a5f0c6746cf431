#include "platform/linux/accessibility/TeamsApplication.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace hushbox {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

void TeamsApplication::beginSnapshot() {
  hasSearched_ = false;
  isProbed_ = false;
  snapshotBegan_ = steady_clock::now();
  labels_.beginSnapshot();
  bus_.beginBudget();
}

bool TeamsApplication::isRunning() {
  if (!bus_.connect()) return false;
  forgetAfterReconnection();
  forgetExited();
  if (const TeamsDocumentRef followed = control_.document()) {
    // The others are not asked, so that a poll costs the same however many there are.
    confirm({followed});
    if (documents_.contains(followed)) {
      if (ranking_.hasLostGround(followed)) chooseAgain();
      return !documents_.all().empty();
    }
  }
  if (!documents_.all().empty()) confirm(documents_.all());
  if (documents_.all().empty()) search();
  return !documents_.all().empty();
}

void TeamsApplication::chooseAgain() {
  const TeamsDocumentRef before = control_.document();
  search();
  if (documents_.all().empty() || documents_.all().front() == before) return;
  ++choice_;
  control_.forget();
}

void TeamsApplication::search() {
  if (std::exchange(hasSearched_, true) || !bus_.connect()) return;
  forgetAfterReconnection();
  const bool metBrowser = programs_.refresh();
  const auto end = steady_clock::now() + wakeTimeout;
  confirm(documents_.findCandidates(programs_.hosts()));
  const bool isWaking = metBrowser || documents_.hasFallenAsleep();
  while (isWaking && lacksMeeting() && steady_clock::now() < end) {
    std::this_thread::sleep_for(milliseconds{20});
    confirm(documents_.findCandidates(programs_.hosts()));
  }
  for (const TeamsDocumentRef& document : documents_.all())
    programs_.connectDirectly(document->object.busName);
  labels_.forgetWindows();
  rank();
}

bool TeamsApplication::lacksMeeting() const {
  const auto& documents = documents_.all();
  const auto hasDocument = [&](std::int32_t process) {
    return std::ranges::any_of(documents,
                               [&](const auto& one) { return one->processIdentifier == process; });
  };
  return documents.empty() ||
         std::ranges::any_of(programs_.hosts(), [&](const AtspiProgram* program) {
           return !hasDocument(program->processIdentifier) &&
                  ranking_.isRecording(program->processIdentifier);
         });
}

void TeamsApplication::rank() {
  Documents documents = documents_.all();
  // Where labels lag, the window of a single document is found along with its labels.
  if (documents.size() > 1 || (!documents.empty() && !documents.front()->labelsLag))
    labels_.findFronts(documents);
  ranking_.sort(documents);
  documents_.keep(std::move(documents));
}

void TeamsApplication::confirm(const std::vector<TeamsDocumentRef>& candidates) {
  // A control that is there shows that its document is there too. Where labels do not lag, and
  // where a title may change, the document is probed itself.
  const auto mayBeShown = [this](const TeamsDocumentRef& document) {
    return control_.isOn(document) && document->labelsLag &&
           document->evidence != TeamsDocument::Evidence::title;
  };
  CallBatch batch;
  // A refresh takes effect while the other calls of the batch are under way.
  const bool isFirst = !std::exchange(isProbed_, true);
  const bool isFollowed = isFirst && control_.document();
  const auto labelProbes =
      labels_.addProbes(batch, isFollowed ? Documents{control_.document()} : Documents());
  const auto controlCalls = isFirst ? control_.addCalls(batch) : std::nullopt;
  Probes probes;
  for (const TeamsDocumentRef& document : candidates)
    if (!mayBeShown(document)) probes.push_back(documents_.addProbe(batch, document));
  bus_.send(batch);
  labels_.readProbes(batch, labelProbes);
  if (controlCalls) control_.read(batch, *controlCalls);
  std::set<TeamsDocumentRef> present = belonging(batch, probes);

  CallBatch doubtful;
  Probes again;
  for (const TeamsDocuments::Probe& probe : probes)
    if (probe.document->nameDecides && !probe.name)
      again.push_back(documents_.addProbe(doubtful, probe.document));
  for (const TeamsDocumentRef& document : candidates) {
    if (!mayBeShown(document)) continue;
    if (control_.wasThere(snapshotBegan_))
      present.insert(document);
    else
      again.push_back(documents_.addProbe(doubtful, document));
  }
  bus_.send(doubtful);
  present.merge(belonging(doubtful, again));
  keep(candidates, present);
}

std::set<TeamsDocumentRef> TeamsApplication::belonging(const CallBatch& batch,
                                                       const Probes& probes) const {
  std::set<TeamsDocumentRef> result;
  for (const TeamsDocuments::Probe& probe : probes)
    if (documents_.belongsToTeams(batch, probe)) result.insert(probe.document);
  return result;
}

void TeamsApplication::keep(const Documents& candidates,
                            const std::set<TeamsDocumentRef>& present) {
  const auto isAmong = [](const Documents& documents, const TeamsDocumentRef& document) {
    return std::find(documents.begin(), documents.end(), document) != documents.end();
  };
  Documents kept;
  // What was not a candidate stays as it was.
  for (const TeamsDocumentRef& document : documents_.all())
    if (!isAmong(candidates, document) || present.count(document) != 0) kept.push_back(document);
  for (const TeamsDocumentRef& document : candidates)
    if (present.count(document) != 0 && !isAmong(kept, document)) kept.push_back(document);
  documents_.keep(std::move(kept));
  labels_.keepOnly(documents_.all());
  if (!documents_.contains(control_.document())) control_.forget();
}

void TeamsApplication::forgetExited() {
  if (!programs_.forgetExited()) return;
  Documents gone = documents_.all();
  std::erase_if(gone,
                [this](const auto& one) { return programs_.find(one->object.busName) != nullptr; });
  keep(gone, {});
}

void TeamsApplication::forgetAfterReconnection() {
  if (std::exchange(busGeneration_, bus_.generation()) == bus_.generation()) return;
  programs_.clear();
  keep(documents_.all(), {});
}

}  // namespace hushbox
