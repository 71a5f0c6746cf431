#include "platform/linux/accessibility/AtspiSnapshot.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/accessibility/DocumentControls.h"
#include "platform/linux/accessibility/TeamsSigns.h"

namespace hushbox {

namespace {

/// The facts of an object whose page was closed, left Teams, or was not chosen again.
const AtspiFacts notPresented{.status = accessibility::invalidElement};

}  // namespace

void AtspiSnapshot::begin() {
  ++number_;
  began_ = std::chrono::steady_clock::now();
  untouched_ = true;
  facts_.clear();
  children_.clear();
  teams_.beginSnapshot();
}

void AtspiSnapshot::search() {
  untouched_ = false;
  teams_.search();
}

const AtspiFacts& AtspiSnapshot::facts(const AtspiElement& element) {
  untouched_ = false;
  const AtspiSiblings& siblings = *element.siblings();
  const BusObject& object = element.object();
  if (const AtspiFacts* facts = known(object); facts && isFresh(*facts)) return *facts;
  if (!teams_.hasDocument(siblings.document) || siblings.choice != teams_.choice())
    return notPresented;
  labels_.awaitLabels(*siblings.document);
  if (siblings.snapshot == number_) {
    readFacts(siblings, unread(facts_, siblings, element.index()));
    return facts_[object];
  }
  // Of an earlier snapshot's siblings only this one was kept. It is the one to follow.
  if (control_.is(object) && labels_.wereLabelsCurrent(*siblings.document)) {
    if (const auto facts = control_.factsSince(began_)) return facts_[object] = *facts;
  }
  control_.follow(siblings.document, object);
  readFacts(siblings, {element.index()});
  return facts_[object];
}

bool AtspiSnapshot::isFresh(const AtspiFacts& facts) const {
  return std::chrono::steady_clock::now() - facts.readAt <= freshness_;
}

const AtspiFacts* AtspiSnapshot::known(const BusObject& object) const {
  const auto found = facts_.find(object);
  return found == facts_.end() ? nullptr : &found->second;
}

std::vector<std::size_t> AtspiSnapshot::unread(const std::map<BusObject, AtspiFacts>& facts,
                                               const AtspiSiblings& siblings, std::size_t first) {
  const std::size_t end = std::min(siblings.objects.size(), first + batchSize);
  std::vector<std::size_t> places{first};
  for (std::size_t i = first + 1; i < end; ++i)
    if (facts.count(siblings.objects[i]) == 0) places.push_back(i);
  return places;
}

void AtspiSnapshot::readFacts(const AtspiSiblings& siblings,
                              const std::vector<std::size_t>& places) {
  // Since an earlier snapshot the object may have been destroyed, which only its role shows.
  const auto knownRole = [&](std::size_t place) {
    const std::uint32_t role = siblings.roles[place];
    const bool isKnown = siblings.snapshot == number_ && role != atspi_role::invalid;
    return isKnown ? std::optional(role) : std::nullopt;
  };
  CallBatch batch;
  std::vector<std::pair<BusObject, AtspiFactsCalls>> calls;
  for (const std::size_t place : places) {
    const BusObject& object = siblings.objects[place];
    calls.emplace_back(object, AtspiFactsCalls(batch, object, knownRole(place), bus_.timeout()));
  }
  bus_.send(batch);
  Objects incomplete;
  for (const auto& [object, objectCalls] : calls) {
    const AtspiFacts& facts = facts_[object] = objectCalls.read(batch);
    if (!facts.isComplete && facts.status == accessibility::success) incomplete.push_back(object);
  }
  readRemainingFacts(incomplete);
}

void AtspiSnapshot::readRemainingFacts(const Objects& objects) {
  CallBatch batch;
  std::vector<std::pair<BusObject, AtspiRemainingFactsCalls>> calls;
  for (const BusObject& object : objects)
    calls.emplace_back(object, AtspiRemainingFactsCalls(batch, object, bus_.timeout()));
  bus_.send(batch);
  for (const auto& [object, objectCalls] : calls) objectCalls.readInto(facts_[object], batch);
}

AtspiSnapshot::Siblings AtspiSnapshot::controls(const TeamsDocumentRef& document) {
  untouched_ = false;
  const DocumentControls finder(bus_);
  const auto found = finder.find(document->object);
  if (!found) return childrenOf(*siblings(document, {document->object}), 0);
  Objects objects;
  for (const auto& control : *found) objects.push_back(control.object);
  const auto result = siblings(document, std::move(objects));
  for (std::size_t i = 0; i < found->size(); ++i) result->roles[i] = (*found)[i].role;
  result->flat = true;
  sortMuteControls(*result);
  return result;
}

void AtspiSnapshot::sortMuteControls(AtspiSiblings& siblings) {
  labels_.awaitLabels(*siblings.document);
  std::vector<DocumentControls::Control> controls;
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < siblings.objects.size(); ++i) {
    const BusObject& object = siblings.objects[i];
    if (!known(object)) readFacts(siblings, unread(facts_, siblings, i));
    const AtspiFacts& facts = facts_[object];
    const auto isMute = [](const std::string& text) { return teams_signs::isMuteLabel(text); };
    if (!isMute(facts.name) && !isMute(facts.description) && !isMute(facts.identifier)) continue;
    controls.push_back({object, siblings.roles[i], facts.parent});
    places.push_back(i);
  }
  if (controls.size() < 2 || controls.size() > maxSorted) return;
  DocumentControls(bus_).sortBreadthFirst(siblings.document->object, controls);
  for (std::size_t i = 0; i < places.size(); ++i) {
    siblings.objects[places[i]] = controls[i].object;
    siblings.roles[places[i]] = controls[i].role;
  }
}

AtspiSnapshot::Siblings AtspiSnapshot::children(const AtspiElement& element) {
  untouched_ = false;
  const AtspiSiblings& own = *element.siblings();
  const AtspiFacts* const facts = known(element.object());
  const bool isForeign = facts && atspi_role::isForeignContainer(facts->role);
  if (own.flat || isForeign) return siblings(own.document, {});
  return childrenOf(own, element.index());
}

AtspiSnapshot::Siblings AtspiSnapshot::childrenOf(const AtspiSiblings& siblings,
                                                  std::size_t place) {
  const BusObject& object = siblings.objects[place];
  if (children_.count(object) == 0) readChildren(siblings, place);
  const auto known = children_.find(object);
  return known != children_.end() ? this->siblings(siblings.document, known->second) : nullptr;
}

void AtspiSnapshot::readChildren(const AtspiSiblings& siblings, std::size_t first) {
  if (std::chrono::steady_clock::now() - began_ > maxDescent) return;
  const std::size_t end = std::min(siblings.objects.size(), first + batchSize);
  CallBatch batch;
  std::vector<std::pair<BusObject, CallBatch::Ticket>> calls;
  for (std::size_t i = first; i < end; ++i) {
    const BusObject& parent = siblings.objects[i];
    calls.emplace_back(parent, batch.add(atspi_calls::children(parent, bus_.timeout())));
  }
  bus_.send(batch);
  for (const auto& [parent, ticket] : calls) {
    if (const BusReply& reply = batch[ticket])
      children_[parent] = atspi_value::objects(reply.value.get(), parent.busName, maxChildren);
  }
}

std::shared_ptr<AtspiSiblings> AtspiSnapshot::siblings(const TeamsDocumentRef& document,
                                                       Objects objects) const {
  std::vector<std::uint32_t> roles(objects.size());
  return std::make_shared<AtspiSiblings>(AtspiSiblings{.document = document,
                                                       .objects = std::move(objects),
                                                       .roles = std::move(roles),
                                                       .snapshot = number_,
                                                       .choice = teams_.choice()});
}

}  // namespace hushbox
