#include "platform/linux/accessibility/AtspiSnapshot.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

bool isFresh(const AtspiFacts& facts) {
  return std::chrono::steady_clock::now() - facts.readAt <= LabelRefresher::freshness;
}

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
  const BusObject& root = document->object;
  CallBatch batch;
  const auto allTicket = batch.add(atspi_calls::matches(
      root, {atspi_role::pushButton, atspi_role::toggleButton, atspi_role::checkBox}, maxChildren,
      bus_.timeout()));
  // Which of them are check boxes: that spares asking each for its role.
  const auto boxesTicket =
      batch.add(atspi_calls::matches(root, {atspi_role::checkBox}, maxChildren, bus_.timeout()));
  bus_.send(batch);
  const BusReply& all = batch[allTicket];
  const BusReply& boxes = batch[boxesTicket];
  if (!all || !boxes) return childrenOf(*siblings(document, {root}), 0);
  const auto result =
      siblings(document, atspi_value::objects(all.value.get(), root.busName, maxChildren));
  const auto boxList = atspi_value::objects(boxes.value.get(), root.busName, maxChildren);
  const std::set<BusObject> checkBoxes(boxList.begin(), boxList.end());
  for (std::size_t i = 0; i < result->objects.size(); ++i) {
    result->roles[i] =
        checkBoxes.count(result->objects[i]) != 0 ? atspi_role::checkBox : atspi_role::pushButton;
  }
  result->flat = true;
  return result;
}

AtspiSnapshot::Siblings AtspiSnapshot::children(const AtspiElement& element) {
  untouched_ = false;
  const AtspiSiblings& own = *element.siblings();
  return own.flat ? siblings(own.document, {}) : childrenOf(own, element.index());
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
                                                       .snapshot = number_});
}

}  // namespace hushbox
