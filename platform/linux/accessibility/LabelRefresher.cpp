#include "platform/linux/accessibility/LabelRefresher.h"

#include <algorithm>
#include <set>
#include <thread>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiState.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

bool isOnScreen(const BusReply& states) {
  return states && atspi_value::hasState(states.value.get(), atspi_state::showing) &&
         !atspi_value::hasState(states.value.get(), atspi_state::iconified);
}

/// Whether the window has the focus.
bool isActive(const BusReply& states) {
  return states && atspi_value::hasState(states.value.get(), atspi_state::active);
}

/// Whether `matches`, the documents in a window, begin with this one.
bool isFirst(const BusObject& document, const BusReply& matches) {
  return matches && atspi_value::objects(matches.value.get(), document.busName, 1) ==
                        std::vector<BusObject>{document};
}

}  // namespace

LabelRefresher::~LabelRefresher() {
  if (timer_ != 0) g_source_remove(timer_);
}

std::vector<LabelRefresher::Probe> LabelRefresher::addProbes(
    CallBatch& batch, const std::vector<TeamsDocumentRef>& documents) {
  std::vector<Probe> probes;
  for (const TeamsDocumentRef& document : documents)
    if (document->labelsLag || !pages_[document->object].window.busName.empty())
      probes.push_back(addProbe(batch, *document));
  // Its answer arrives while the batch is under way.
  if (!probes.empty()) compositingManager_.request();
  return probes;
}

LabelRefresher::Probe LabelRefresher::addProbe(CallBatch& batch, const TeamsDocument& document) {
  const Page& page = pages_[document.object];
  Probe probe{.document = document.object};
  if (!page.window.busName.empty())
    probe.windowStates = batch.add(atspi_calls::states(page.window, bus_.timeout()));
  if (!document.labelsLag) return probe;
  const auto age = Clock::now() - page.refreshRequestedAt;
  const auto aheadAge = Clock::now() - page.refreshedAheadAt;
  probe.wasRefreshed = age <= maxRefreshAge;
  probe.isCurrent = !page.isDrawn && aheadAge >= settlingTime() && aheadAge <= maxLabelAge;
  // Of a page being drawn the labels are current without it, so the replies do not wait for it.
  probe.refreshAfterwards = page.isDrawn && age >= minRefreshInterval;
  if (!page.isDrawn && !probe.isCurrent)
    probe.refresh = batch.add(atspi_calls::refreshLabels(document.object, bus_.timeout()));
  probe.properties = batch.add(atspi_calls::allProperties(document.object, bus_.timeout()));
  return probe;
}

void LabelRefresher::readProbes(const CallBatch& batch, const std::vector<Probe>& probes) {
  if (probes.empty()) return;
  replyTime_ = batch.duration();
  const bool isComposited = compositingManager_.isRunning();
  for (const Probe& probe : probes) {
    Page& page = pages_[probe.document];
    page.probedAt = batch.repliedAt();
    page.wasCurrent = probe.isCurrent;
    if (probe.refresh && batch[*probe.refresh].outcome != BusReply::Outcome::timedOut)
      page.refreshRequestedAt = batch.repliedAt();
    if (probe.refreshAfterwards) postRefresh(probe.document, page);
    if (probe.properties) readParent(batch[*probe.properties], page);
    const bool isInPlace = page.parent == page.parentOfWindow;
    page.isDrawn = isComposited && probe.wasRefreshed && isInPlace && probe.windowStates &&
                   isOnScreen(batch[*probe.windowStates]);
    page.isInFront = isInPlace && probe.windowStates && isActive(batch[*probe.windowStates]);
  }
}

void LabelRefresher::readParent(const BusReply& properties, Page& page) {
  page.parent = {};
  if (!properties) return;
  page.parent = atspi_value::object(properties.value.get(), "Parent").value_or(BusObject{});
  if (page.parent != page.parentOfWindow) page.windowSought = false;
}

void LabelRefresher::findFronts(const std::vector<TeamsDocumentRef>& documents) {
  CallBatch parents;
  std::vector<std::pair<TeamsDocumentRef, CallBatch::Ticket>> calls;
  for (const TeamsDocumentRef& document : documents) {
    calls.emplace_back(document,
                       parents.add(atspi_calls::allProperties(document->object, bus_.timeout())));
  }
  bus_.send(parents);
  for (const auto& [document, ticket] : calls) {
    Page& page = pages_[document->object];
    readParent(parents[ticket], page);
    page.windowSought = false;
    seekWindow(*document, page);
  }
  CallBatch states;
  std::vector<std::pair<Page*, CallBatch::Ticket>> windows;
  for (const TeamsDocumentRef& document : documents) {
    Page& page = pages_[document->object];
    page.isInFront = false;
    if (!page.window.busName.empty())
      windows.emplace_back(&page, states.add(atspi_calls::states(page.window, bus_.timeout())));
  }
  bus_.send(states);
  for (const auto& [page, ticket] : windows) page->isInFront = isActive(states[ticket]);
}

bool LabelRefresher::isInFront(const TeamsDocument& document) const {
  const auto page = pages_.find(document.object);
  return page != pages_.end() && page->second.isInFront;
}

void LabelRefresher::awaitLabels(const TeamsDocument& document) {
  if (!document.labelsLag) return;
  Page& page = pages_[document.object];
  if (page.probedAt < snapshotBegan_ || Clock::now() - page.probedAt > freshness) probe(document);
  seekWindow(document, page);
  if (page.isDrawn) return;
  scheduleRefresh(document.object);
  if (page.wasCurrent && Clock::now() - page.refreshedAheadAt <= maxLabelAge) return;
  // A page that was drawn until now may have been probed without a refresh.
  if (page.refreshRequestedAt < snapshotBegan_) probe(document);
  if (page.refreshRequestedAt < snapshotBegan_) return;
  std::this_thread::sleep_until(page.refreshRequestedAt + settlingTime());
}

LabelRefresher::Clock::duration LabelRefresher::settlingTime() const {
  // A page is slow where its program is.
  return std::clamp<Clock::duration>(4 * replyTime_, refreshTime, maxRefreshTime);
}

void LabelRefresher::scheduleRefresh(const BusObject& document) {
  // A press between two polls leaves the timer where it is.
  if (timer_ != 0) return;
  nextRefreshed_ = document;
  const auto callback = [](gpointer self) -> gboolean {
    static_cast<LabelRefresher*>(self)->refreshAhead();
    return G_SOURCE_REMOVE;
  };
  timer_ = g_timeout_add(static_cast<guint>((pollInterval - refreshLead).count()), callback, this);
}

void LabelRefresher::refreshAhead() {
  timer_ = 0;
  const auto found = pages_.find(nextRefreshed_);
  if (found == pages_.end()) return;
  if (postRefresh(nextRefreshed_, found->second))
    found->second.refreshedAheadAt = found->second.refreshRequestedAt;
}

bool LabelRefresher::postRefresh(const BusObject& document, Page& page) {
  if (!bus_.post(atspi_calls::refreshLabels(document, CallBudget::minTimeout))) return false;
  page.refreshRequestedAt = Clock::now();
  return true;
}

void LabelRefresher::probe(const TeamsDocument& document) {
  CallBatch batch;
  compositingManager_.request();
  const std::vector<Probe> probes{addProbe(batch, document)};
  bus_.send(batch);
  readProbes(batch, probes);
}

bool LabelRefresher::wereLabelsCurrent(const TeamsDocument& document) const {
  if (!document.labelsLag) return true;
  const auto page = pages_.find(document.object);
  return page != pages_.end() && (page->second.isDrawn || page->second.wasCurrent);
}

void LabelRefresher::seekWindow(const TeamsDocument& document, Page& page) {
  constexpr int maxDepth = 64;
  if (std::exchange(page.windowSought, true)) return;
  page.window = {};
  page.parentOfWindow = page.parent;
  const AtspiProgram* const program = programs_.find(document.object.busName);
  if (!program) return;
  BusObject child = page.parent;
  for (int depth = 0; child.busName == document.object.busName && depth < maxDepth; ++depth) {
    const BusReply reply =
        bus_.ask(atspi_calls::property(child, atspi_calls::accessible, "Parent", bus_.timeout()));
    const auto parent = reply ? atspi_value::object(reply.value.get()) : std::nullopt;
    if (!parent) return;
    if (*parent != program->root) {
      child = *parent;
      continue;
    }
    // A page nested in another keeps its parents when the outer page goes to the background, so
    // only the window's first page can be seen to do so.
    const BusReply first =
        bus_.ask(atspi_calls::matches(child, {atspi_role::documentWeb}, 1, bus_.timeout()));
    if (isFirst(document.object, first)) page.window = child;
    return;
  }
}

void LabelRefresher::forgetWindows() {
  for (auto& [object, page] : pages_) page.windowSought = false;
}

void LabelRefresher::keepOnly(const std::vector<TeamsDocumentRef>& documents) {
  std::set<BusObject> kept;
  for (const TeamsDocumentRef& document : documents) kept.insert(document->object);
  std::erase_if(pages_, [&](const auto& entry) { return kept.count(entry.first) == 0; });
}

}  // namespace hushbox
