#include "platform/linux/accessibility/AtspiFacts.h"

#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

void readAttributes(GVariant* attributes, AtspiFacts& facts) {
  if (std::string id = atspi_value::text(attributes, "id"); !id.empty())
    facts.identifier = std::move(id);
}

void readProperties(GVariant* reply, AtspiFacts& facts) {
  const VariantPointer properties(g_variant_get_child_value(reply, 0));
  facts.name = atspi_value::text(properties.get(), "Name");
  facts.description = atspi_value::text(properties.get(), "Description");
  if (facts.description.empty())
    facts.description = atspi_value::text(properties.get(), "HelpText");
  facts.identifier = atspi_value::text(properties.get(), "AccessibleId");
  facts.parent = atspi_value::object(reply, "Parent").value_or(BusObject{});
  const VariantPointer attributes(
      g_variant_lookup_value(properties.get(), "Attributes", G_VARIANT_TYPE("a{ss}")));
  if (attributes) readAttributes(attributes.get(), facts);
  facts.isComplete = attributes != nullptr;
}

/// An object that has been destroyed still answers for a while, with the role "invalid".
void readRole(const BusReply& reply, AtspiFacts& facts) {
  facts.status = statusOf(reply);
  facts.role = atspi_role::invalid;
  if (!reply) return;
  g_variant_get(reply.value.get(), "(u)", &facts.role);
  if (facts.role == atspi_role::invalid) facts.status = accessibility::invalidElement;
}

}  // namespace

AccessibilityError statusOf(const BusReply& reply) {
  switch (reply.outcome) {
    case BusReply::Outcome::replied:
      return accessibility::success;
    case BusReply::Outcome::timedOut:
      return accessibility::cannotComplete;
    default:
      return accessibility::invalidElement;
  }
}

AtspiFactsCalls::AtspiFactsCalls(CallBatch& batch, const BusObject& object,
                                 std::optional<std::uint32_t> knownRole,
                                 std::chrono::milliseconds timeout)
    : knownRole_(knownRole), properties_(batch.add(atspi_calls::allProperties(object, timeout))) {
  if (!knownRole_) role_ = batch.add(atspi_calls::role(object, timeout));
}

AtspiFacts AtspiFactsCalls::read(const CallBatch& batch) const {
  const BusReply& properties = batch[properties_];
  AtspiFacts facts;
  facts.readAt = batch.repliedAt();
  facts.status = statusOf(properties);
  if (role_)
    readRole(batch[*role_], facts);
  else
    facts.role = *knownRole_;
  if (properties) readProperties(properties.value.get(), facts);
  return facts;
}

AtspiRemainingFactsCalls::AtspiRemainingFactsCalls(CallBatch& batch, const BusObject& object,
                                                   std::chrono::milliseconds timeout)
    : name_(batch.add(atspi_calls::property(object, atspi_calls::accessible, "Name", timeout))),
      description_(batch.add(
          atspi_calls::property(object, atspi_calls::accessible, "Description", timeout))),
      attributes_(batch.add(atspi_calls::attributes(object, timeout))) {}

void AtspiRemainingFactsCalls::readInto(AtspiFacts& facts, const CallBatch& batch) const {
  if (const BusReply& name = batch[name_]) facts.name = atspi_value::text(name.value.get());
  if (const BusReply& description = batch[description_])
    facts.description = atspi_value::text(description.value.get());
  if (const BusReply& reply = batch[attributes_]) {
    const VariantPointer attributes(g_variant_get_child_value(reply.value.get(), 0));
    readAttributes(attributes.get(), facts);
  }
  facts.isComplete = true;
}

}  // namespace hushbox
