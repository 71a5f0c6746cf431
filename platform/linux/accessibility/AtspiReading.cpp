#include "platform/linux/accessibility/AtspiReading.h"

#include <algorithm>
#include <set>
#include <thread>
#include <utility>

#include "platform/linux/accessibility/AtspiQuestions.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

/// A page shows a change after one or two frames.
constexpr std::chrono::milliseconds changeInterval{8};

using atspi_questions::accessible;

bool isFresh(const AtspiFacts& facts) {
  return std::chrono::steady_clock::now() - facts.readAt <= AtspiTeams::freshness;
}

AccessibilityError statusOf(const BusReply& reply) {
  switch (reply.outcome) {
    case BusReply::Outcome::answered:
      return accessibility::success;
    case BusReply::Outcome::silent:
      return accessibility::cannotComplete;
    default:
      return accessibility::invalidElement;
  }
}

/// Also takes the status from it: objects that have been taken down still answer, with no role.
void takeRole(const BusReply& role, AtspiFacts& facts) {
  facts.status = statusOf(role);
  facts.role = atspi_role::invalid;
  if (role) g_variant_get(role.value.get(), "(u)", &facts.role);
  if (role && facts.role == atspi_role::invalid) facts.status = accessibility::invalidElement;
}

void takeProperties(GVariant* all, AtspiFacts& facts) {
  const VariantPointer dictionary(g_variant_get_child_value(all, 0));
  facts.name = atspi_value::text(dictionary.get(), "Name");
  facts.description = atspi_value::text(dictionary.get(), "Description");
  if (facts.description.empty())
    facts.description = atspi_value::text(dictionary.get(), "HelpText");
  facts.identifier = atspi_value::text(dictionary.get(), "AccessibleId");
}

void takeAttributes(GVariant* attributes, AtspiFacts& facts) {
  if (std::string id = atspi_value::text(attributes, "id"); !id.empty())
    facts.identifier = std::move(id);
}

/// Takes the attributes that come among the properties; false when they do not.
bool takeAttributesOf(GVariant* all, AtspiFacts& facts) {
  const VariantPointer dictionary(g_variant_get_child_value(all, 0));
  const VariantPointer attributes(
      g_variant_lookup_value(dictionary.get(), "Attributes", G_VARIANT_TYPE("a{ss}")));
  if (attributes) takeAttributes(attributes.get(), facts);
  return attributes != nullptr;
}

}  // namespace

void AtspiReading::begin() {
  ++number_;
  began_ = std::chrono::steady_clock::now();
  untouched_ = true;
  facts_.clear();
  children_.clear();
  teams_.beginReading();
}

void AtspiReading::search() {
  untouched_ = false;
  teams_.search();
}

const AtspiFacts& AtspiReading::facts(const AtspiElement& element) {
  untouched_ = false;
  const AtspiSiblings& siblings = *element.siblings();
  const BusObject& object = siblings.objects[element.index()];
  if (const auto known = facts_.find(object); known != facts_.end() && isFresh(known->second))
    return known->second;
  AtspiSurface& surface = *siblings.surface;
  teams_.bringLabelsUpToDate(surface);
  // Of an earlier reading's siblings only the one that was kept is of interest, and its role may
  // have become that of an object taken down.
  const bool walking = siblings.reading == number_;
  if (!walking) {
    if (surface.control == object && takeFactsThatCameAlong(surface)) return facts_[object];
    surface.keepControl(object);
  }
  const std::size_t end = walking
                              ? std::min(siblings.objects.size(), element.index() + objectsAtOnce)
                              : element.index() + 1;
  std::vector<std::size_t> places;
  for (std::size_t i = element.index(); i < end; ++i)
    if (i == element.index() || facts_.count(siblings.objects[i]) == 0) places.push_back(i);
  readFacts(siblings, places);
  return facts_[object];
}

bool AtspiReading::takeFactsThatCameAlong(const AtspiSurface& surface) {
  const BusReply& all = surface.controlProperties;
  if (!surface.isDrawn || surface.askedAt < began_ || !all || !surface.controlRole) return false;
  AtspiFacts facts;
  facts.readAt = surface.askedAt;
  takeRole(surface.controlRole, facts);
  takeProperties(all.value.get(), facts);
  if (!takeAttributesOf(all.value.get(), facts)) return false;
  facts_[surface.control] = std::move(facts);
  return true;
}

void AtspiReading::readFacts(const AtspiSiblings& siblings,
                             const std::vector<std::size_t>& places) {
  const auto wait = teams_.timeout();
  const auto isRoleKnown = [&](std::size_t place) {
    return siblings.reading == number_ && siblings.roles[place] != atspi_role::invalid;
  };
  std::vector<BusCall> calls;
  for (const std::size_t place : places) {
    const BusObject& object = siblings.objects[place];
    calls.push_back(atspi_questions::allProperties(object, wait));
    if (!isRoleKnown(place)) calls.push_back(atspi_questions::role(object, wait));
  }
  const auto replies = teams_.bus().ask(std::move(calls));
  Objects remaining;
  std::size_t next = 0;
  for (const std::size_t place : places) {
    const BusObject& object = siblings.objects[place];
    AtspiFacts& facts = facts_[object] = {};
    facts.readAt = std::chrono::steady_clock::now();
    const BusReply& all = replies[next++];
    facts.status = statusOf(all);
    facts.role = siblings.roles[place];
    if (!isRoleKnown(place)) {
      takeRole(replies[next++], facts);
    }
    if (all) takeProperties(all.value.get(), facts);
    const bool complete = all && takeAttributesOf(all.value.get(), facts);
    if (!complete && facts.status == accessibility::success) remaining.push_back(object);
  }
  readRemainingFacts(remaining, wait);
}

void AtspiReading::readRemainingFacts(const Objects& objects, std::chrono::milliseconds wait) {
  std::vector<BusCall> calls;
  for (const BusObject& object : objects) {
    for (const char* name : {"Name", "Description"})
      calls.push_back(atspi_questions::property(object, accessible, name, wait));
    calls.push_back({object, accessible, "GetAttributes", "(a{ss})", wait, nullptr});
  }
  const auto replies = teams_.bus().ask(std::move(calls));
  for (std::size_t i = 0; i < objects.size(); ++i) {
    AtspiFacts& facts = facts_[objects[i]];
    if (const auto& name = replies[3 * i]) facts.name = atspi_value::text(name.value.get());
    if (const auto& description = replies[3 * i + 1])
      facts.description = atspi_value::text(description.value.get());
    if (const auto& answer = replies[3 * i + 2]) {
      const VariantPointer attributes(g_variant_get_child_value(answer.value.get(), 0));
      takeAttributes(attributes.get(), facts);
    }
  }
}

void AtspiReading::awaitChange(const AtspiElement& element, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  const BusObject& object = element.siblings()->objects[element.index()];
  const auto before = facts_.find(object);
  if (before == facts_.end() || before->second.status != accessibility::success) return;
  // The first question comes no earlier either: it would only hold up the page at taking the press.
  do {
    std::this_thread::sleep_for(changeInterval);
    const BusReply name = teams_.askForName(object, *element.siblings()->surface);
    if (!name || atspi_value::text(name.value.get()) != before->second.name) return;
  } while (std::chrono::steady_clock::now() < end);
}

AtspiReading::Siblings AtspiReading::controls(const AtspiSurfaceRef& surface) {
  untouched_ = false;
  const BusObject& root = surface->object;
  const auto wait = teams_.timeout();
  std::vector<BusCall> calls;
  calls.push_back(atspi_questions::matches(
      root, {atspi_role::pushButton, atspi_role::toggleButton, atspi_role::checkBox}, mostChildren,
      wait));
  calls.push_back(atspi_questions::matches(root, {atspi_role::checkBox}, mostChildren, wait));
  const auto replies = teams_.bus().ask(std::move(calls));
  if (!replies[0] || !replies[1]) {
    return childrenOf(*siblings(surface, {root}), 0);
  }
  const auto result =
      siblings(surface, atspi_value::objects(replies[0].value.get(), root.busName, mostChildren));
  const auto boxes = atspi_value::objects(replies[1].value.get(), root.busName, mostChildren);
  const std::set<BusObject> checkBoxes(boxes.begin(), boxes.end());
  for (std::size_t i = 0; i < result->objects.size(); ++i) {
    result->roles[i] =
        checkBoxes.count(result->objects[i]) != 0 ? atspi_role::checkBox : atspi_role::pushButton;
  }
  result->flat = true;
  return result;
}

AtspiReading::Siblings AtspiReading::children(const AtspiElement& element) {
  untouched_ = false;
  const AtspiSiblings& own = *element.siblings();
  return own.flat ? siblings(own.surface, {}) : childrenOf(own, element.index());
}

AtspiReading::Siblings AtspiReading::childrenOf(const AtspiSiblings& siblings, std::size_t place) {
  const BusObject& object = siblings.objects[place];
  if (children_.count(object) == 0) readChildren(siblings, place);
  const auto known = children_.find(object);
  return known != children_.end() ? this->siblings(siblings.surface, known->second) : nullptr;
}

void AtspiReading::readChildren(const AtspiSiblings& siblings, std::size_t first) {
  if (std::chrono::steady_clock::now() - began_ > longestDescent) return;
  const std::size_t end = std::min(siblings.objects.size(), first + objectsAtOnce);
  std::vector<BusCall> calls;
  for (std::size_t i = first; i < end; ++i) {
    calls.push_back(
        {siblings.objects[i], accessible, "GetChildren", "(a(so))", teams_.timeout(), nullptr});
  }
  const auto replies = teams_.bus().ask(std::move(calls));
  for (std::size_t i = first; i < end; ++i) {
    const BusObject& parent = siblings.objects[i];
    if (const BusReply& reply = replies[i - first])
      children_[parent] = atspi_value::objects(reply.value.get(), parent.busName, mostChildren);
  }
}

std::shared_ptr<AtspiSiblings> AtspiReading::siblings(const AtspiSurfaceRef& surface,
                                                      Objects objects) const {
  std::vector<std::uint32_t> roles(objects.size());
  return std::make_shared<AtspiSiblings>(AtspiSiblings{.surface = surface,
                                                       .objects = std::move(objects),
                                                       .roles = std::move(roles),
                                                       .reading = number_});
}

}  // namespace hushbox
