#include "platform/linux/accessibility/TeamsDocuments.h"

#include <algorithm>
#include <string>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/accessibility/TeamsSigns.h"

namespace hushbox {

namespace {

using Evidence = TeamsDocument::Evidence;

std::string addressIn(GVariant* attributes) {
  // The first key is that of Chromium and WebKit, the second that of Gecko.
  const std::string address = atspi_value::text(attributes, "URI");
  return address.empty() ? atspi_value::text(attributes, "DocURL") : address;
}

/// Why the document belongs to Teams; nullopt if it does not.
std::optional<Evidence> evidenceFor(const TeamsDocument& document, const std::string& address,
                                    const std::string& title) {
  if (teams_signs::isAddress(address)) return Evidence::address;
  if (document.inClient) return Evidence::client;
  // Any page can have a title of Teams, so where there is an address, that decides.
  if (address.empty() && teams_signs::isTitle(title)) return Evidence::title;
  return std::nullopt;
}

}  // namespace

bool TeamsDocuments::contains(const TeamsDocumentRef& document) const {
  return std::find(documents_.begin(), documents_.end(), document) != documents_.end();
}

std::vector<TeamsDocumentRef> TeamsDocuments::findCandidates(
    const std::vector<const AtspiProgram*>& programs) {
  CallBatch batch;
  std::vector<std::pair<const AtspiProgram*, CallBatch::Ticket>> searches;
  for (const auto& [program, root] : searchRoots(programs)) {
    searches.emplace_back(program, batch.add(atspi_calls::matches(root, {atspi_role::documentWeb},
                                                                  maxDocuments, bus_.timeout())));
    if (program->isEmbedded()) continue;
    // Chromium presents its pages only once an assistive program has read an object's attributes,
    // and hides them again after a while without such calls. The reply does not matter.
    batch.add(atspi_calls::attributes(program->root, bus_.timeout()));
  }
  bus_.send(batch);
  std::vector<TeamsDocumentRef> found;
  const std::set<std::string> wereAwake = std::exchange(awake_, {});
  hasFallenAsleep_ = false;
  for (const auto& [program, ticket] : searches) {
    const BusReply& reply = batch[ticket];
    std::vector<BusObject> objects;
    if (reply)
      objects = atspi_value::objects(reply.value.get(), program->root.busName, maxDocuments);
    if (!objects.empty())
      awake_.insert(program->root.busName);
    else if (reply && !program->isEmbedded() && wereAwake.count(program->root.busName) != 0)
      hasFallenAsleep_ = true;
    for (const BusObject& object : objects) found.push_back(findOrMake(object, *program, true));
    if (program->isClient && objects.empty() && reply.outcome != BusReply::Outcome::timedOut)
      found.push_back(findOrMake(program->root, *program, false));
  }
  for (const TeamsDocumentRef& known : documents_)
    if (std::find(found.begin(), found.end(), known) == found.end()) found.push_back(known);
  return found;
}

std::vector<TeamsDocuments::SearchRoot> TeamsDocuments::searchRoots(
    const std::vector<const AtspiProgram*>& programs) {
  std::vector<SearchRoot> result;
  CallBatch batch;
  std::vector<std::pair<const AtspiProgram*, CallBatch::Ticket>> pages;
  for (const AtspiProgram* program : programs) {
    if (!program->isEmbedded()) result.emplace_back(program, program->root);
    // The root of an embedded page cannot be searched, unlike what is directly below it.
    for (const BusObject& page : program->pages)
      pages.emplace_back(program, batch.add(atspi_calls::children(page, bus_.timeout())));
  }
  bus_.send(batch);
  for (const auto& [program, ticket] : pages) {
    const BusReply& reply = batch[ticket];
    if (!reply) continue;
    for (BusObject& child :
         atspi_value::objects(reply.value.get(), program->root.busName, maxPageChildren))
      result.emplace_back(program, std::move(child));
  }
  return result;
}

TeamsDocuments::Probe TeamsDocuments::addProbe(CallBatch& batch,
                                               const TeamsDocumentRef& document) const {
  const BusObject& object = document->object;
  if (!document->isDocument)
    return {document, batch.add(atspi_calls::role(object, bus_.timeout())), std::nullopt};
  Probe probe{document, batch.add(atspi_calls::documentAttributes(object, bus_.timeout())),
              std::nullopt};
  if (document->nameDecides)
    probe.name =
        batch.add(atspi_calls::property(object, atspi_calls::accessible, "Name", bus_.timeout()));
  return probe;
}

bool TeamsDocuments::belongsToTeams(const CallBatch& batch, const Probe& probe) const {
  const BusReply& reply = batch[probe.signOfLife];
  if (reply.outcome == BusReply::Outcome::timedOut) return contains(probe.document);
  if (!reply) return false;
  const VariantPointer value(g_variant_get_child_value(reply.value.get(), 0));
  // An object that has been destroyed still answers: with an invalid role, or without attributes.
  if (!probe.document->isDocument) return g_variant_get_uint32(value.get()) != atspi_role::invalid;
  if (g_variant_n_children(value.get()) == 0) return false;
  const std::string address = addressIn(value.get());
  const VariantPointer titleThere(
      g_variant_lookup_value(value.get(), "Title", G_VARIANT_TYPE_STRING));
  probe.document->nameDecides = address.empty() && !titleThere && !probe.document->inClient;
  std::string title = atspi_value::text(value.get(), "Title");
  if (probe.name && batch[*probe.name]) title = atspi_value::text(batch[*probe.name].value.get());
  const auto evidence = evidenceFor(*probe.document, address, title);
  if (evidence) probe.document->evidence = *evidence;
  return evidence.has_value();
}

TeamsDocumentRef TeamsDocuments::findOrMake(const BusObject& object, const AtspiProgram& program,
                                            bool isDocument) const {
  const auto known = std::find_if(documents_.begin(), documents_.end(),
                                  [&](const auto& one) { return one->object == object; });
  if (known != documents_.end() && (*known)->isDocument == isDocument) return *known;
  return std::make_shared<TeamsDocument>(
      TeamsDocument{.object = object,
                    .processIdentifier = program.processIdentifier,
                    .isDocument = isDocument,
                    .inClient = program.isClient,
                    .labelsLag = program.labelsLag});
}

}  // namespace hushbox
