#include "platform/linux/accessibility/DocumentControls.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

using Objects = std::vector<BusObject>;

BusCall findControls(const BusObject& container, std::chrono::milliseconds timeout) {
  return atspi_calls::matches(
      container, {atspi_role::pushButton, atspi_role::toggleButton, atspi_role::checkBox},
      DocumentControls::maxControls, timeout);
}

Objects objectsIn(const BusReply& reply, const BusObject& owner) {
  if (!reply) return {};
  return atspi_value::objects(reply.value.get(), owner.busName, DocumentControls::maxControls);
}

std::set<BusObject> controlsIn(AtspiBus& bus, const Objects& containers) {
  CallBatch batch;
  std::vector<std::pair<BusObject, CallBatch::Ticket>> searches;
  for (const BusObject& container : containers)
    searches.emplace_back(container, batch.add(findControls(container, bus.timeout())));
  bus.send(batch);
  std::set<BusObject> result;
  for (const auto& [container, ticket] : searches)
    for (BusObject& control : objectsIn(batch[ticket], container))
      result.insert(std::move(control));
  return result;
}

}  // namespace

std::optional<std::vector<DocumentControls::Control>> DocumentControls::find(
    const BusObject& document) const {
  CallBatch batch;
  const auto allTicket = batch.add(findControls(document, bus_.timeout()));
  // The check boxes among them, which spares asking each control for its role, and the containers.
  const auto someTicket = batch.add(
      atspi_calls::matches(document,
                           {atspi_role::checkBox, atspi_role::documentFrame,
                            atspi_role::documentWeb, atspi_role::audio, atspi_role::video},
                           maxControls, bus_.timeout()));
  bus_.send(batch);
  if (!batch[allTicket] || !batch[someTicket]) return std::nullopt;
  const Objects all = objectsIn(batch[allTicket], document);
  const std::set<BusObject> allControls(all.begin(), all.end());
  std::set<BusObject> checkBoxes;
  Objects containers;
  for (const BusObject& object : objectsIn(batch[someTicket], document)) {
    if (allControls.count(object) != 0)
      checkBoxes.insert(object);
    else if (containers.size() < maxContainers)
      containers.push_back(object);
  }
  const std::set<BusObject> foreign = controlsIn(bus_, containers);
  std::vector<Control> result;
  for (const BusObject& object : all) {
    if (foreign.count(object) != 0) continue;
    const bool isCheckBox = checkBoxes.count(object) != 0;
    result.push_back({object, isCheckBox ? atspi_role::checkBox : atspi_role::pushButton});
  }
  return result;
}

void DocumentControls::sortBreadthFirst(const BusObject& document,
                                        std::vector<Control>& controls) const {
  constexpr std::size_t maxDepth = 256;
  const bool isOneLevel = std::all_of(
      controls.begin(), controls.end(),
      [&](const Control& control) { return control.parent == controls.front().parent; });
  if (isOneLevel) return;
  // All climb by one level at a time, in one batch. The depth is the level of arrival.
  std::map<BusObject, std::size_t> depths;
  std::map<BusObject, BusObject> ancestors;
  for (const Control& control : controls) ancestors[control.object] = control.parent;
  for (std::size_t depth = 0; depth < maxDepth && !ancestors.empty(); ++depth) {
    CallBatch batch;
    std::map<BusObject, CallBatch::Ticket> asked;
    for (auto entry = ancestors.begin(); entry != ancestors.end();) {
      const BusObject& ancestor = entry->second;
      const bool isTop = ancestor == document || ancestor.busName != document.busName;
      if (isTop) depths[entry->first] = ancestor == document ? depth : maxDepth;
      if (!isTop && asked.count(ancestor) == 0) {
        asked.emplace(ancestor, batch.add(atspi_calls::property(ancestor, atspi_calls::accessible,
                                                                "Parent", bus_.timeout())));
      }
      entry = isTop ? ancestors.erase(entry) : std::next(entry);
    }
    bus_.send(batch);
    for (auto& [object, ancestor] : ancestors) {
      const BusReply& reply = batch[asked.at(ancestor)];
      ancestor = reply ? atspi_value::object(reply.value.get()).value_or(BusObject{}) : BusObject{};
    }
  }
  const auto depthOf = [&](const Control& control) {
    const auto found = depths.find(control.object);
    return found == depths.end() ? maxDepth : found->second;
  };
  std::stable_sort(controls.begin(), controls.end(), [&](const Control& one, const Control& other) {
    return depthOf(one) < depthOf(other);
  });
}

}  // namespace hushbox
