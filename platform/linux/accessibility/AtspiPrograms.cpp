#include "platform/linux/accessibility/AtspiPrograms.h"

#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/accessibility/TeamsSigns.h"
#include "platform/linux/bus/BusDaemonCalls.h"
#include "support/Text.h"

namespace hushbox {

namespace {

/// Whether a program of that name embeds pages of other processes: Epiphany, which has the name of
/// its program file or its application identifier.
bool isEmbedderName(std::string_view name) {
  const std::string lowercased = text::lowercased(name);
  return lowercased == "epiphany" || lowercased.starts_with("org.gnome.epiphany");
}

/// The calls that tell what a program is.
struct Introduction {
  BusObject root;
  CallBatch::Ticket process;
  CallBatch::Ticket name;
  CallBatch::Ticket toolkit;
};

Introduction introduce(CallBatch& batch, const BusObject& root, std::chrono::milliseconds timeout) {
  using namespace atspi_calls;
  return {root, batch.add(bus_daemon::processOf(root.busName, timeout)),
          batch.add(property(root, accessible, "Name", timeout)),
          batch.add(property(root, application, "ToolkitName", timeout))};
}

/// Returns nullopt for a program that did not reply.
std::optional<AtspiProgram> read(const CallBatch& batch, const Introduction& introduction) {
  const BusReply& process = batch[introduction.process];
  const BusReply& name = batch[introduction.name];
  const BusReply& toolkit = batch[introduction.toolkit];
  if (!process || !name || toolkit.outcome == BusReply::Outcome::timedOut) return std::nullopt;
  AtspiProgram program{.root = introduction.root};
  guint32 processIdentifier = 0;
  g_variant_get(process.value.get(), "(u)", &processIdentifier);
  program.processIdentifier = static_cast<std::int32_t>(processIdentifier);
  const std::string called = atspi_value::text(name.value.get());
  program.isClient = teams_signs::isClientName(called);
  program.embedsPages = isEmbedderName(called);
  const std::string builtOn = toolkit ? atspi_value::text(toolkit.value.get()) : std::string();
  program.labelsLag = builtOn == "Chromium";
  program.isBrowser = program.labelsLag || builtOn == "Gecko" || builtOn.starts_with("WebKit");
  return program;
}

}  // namespace

bool AtspiPrograms::refresh() {
  const BusObject registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
  const BusReply reply = bus_.ask(atspi_calls::children(registry, bus_.timeout()));
  if (!reply) return false;
  const auto roots = atspi_value::objects(reply.value.get(), {}, maxPrograms);
  std::set<std::string_view> present;
  for (const BusObject& root : roots) present.insert(root.busName);
  for (const auto& [busName, entry] : programs_)
    if (present.count(busName) == 0 && !entry.program.isEmbedded()) exited_->insert(busName);
  forgetExited();
  std::erase_if(lateStrangers_, [&](const auto& name) { return present.count(name) == 0; });
  std::vector<BusObject> strangers;
  for (const BusObject& root : roots)
    if (programs_.count(root.busName) == 0) strangers.push_back(root);
  const bool metBrowser = identify(strangers);
  refreshEmbedded();
  return metBrowser;
}

void AtspiPrograms::refreshEmbedded() {
  std::vector<AtspiProgram> browsers;
  for (const auto& [busName, entry] : programs_)
    if (entry.program.embedsPages) browsers.push_back(entry.program);
  const std::vector<AtspiProgram> found = embedded_.find(browsers);
  std::set<std::string_view> present;
  for (const AtspiProgram& program : found) {
    const std::string& busName = program.root.busName;
    present.insert(busName);
    const auto known = programs_.find(busName);
    if (known == programs_.end())
      add(program);
    else if (known->second.program.isEmbedded())
      known->second.program = program;
  }
  for (const auto& [busName, entry] : programs_)
    if (entry.program.isEmbedded() && present.count(busName) == 0) exited_->insert(busName);
  forgetExited();
}

bool AtspiPrograms::identify(const std::vector<BusObject>& roots) {
  CallBatch batch;
  std::vector<Introduction> introductions;
  for (const BusObject& root : roots) {
    const bool isLate = lateStrangers_.count(root.busName) != 0;
    introductions.push_back(
        introduce(batch, root, isLate ? bus_.timeout() : CallBudget::strangerTimeout));
  }
  bus_.sendToStrangers(batch);
  bool metBrowser = false;
  for (const Introduction& introduction : introductions) {
    const auto program = read(batch, introduction);
    if (!program) {
      lateStrangers_.insert(introduction.root.busName);
      continue;
    }
    metBrowser |= program->isBrowser;
    add(*program);
    lateStrangers_.erase(program->root.busName);
  }
  return metBrowser;
}

void AtspiPrograms::add(const AtspiProgram& program) {
  const std::string& busName = program.root.busName;
  Entry entry{.program = program};
  if (program.isHost())
    entry.watch = bus_.watch(busName, [exited = exited_, busName] { exited->insert(busName); });
  programs_.emplace(busName, entry);
}

bool AtspiPrograms::forgetExited() {
  bool isAnyForgotten = false;
  for (const std::string& busName : std::exchange(*exited_, {})) {
    const auto found = programs_.find(busName);
    if (found == programs_.end()) continue;
    if (found->second.watch != 0) bus_.unwatch(busName, found->second.watch);
    programs_.erase(found);
    isAnyForgotten = true;
  }
  return isAnyForgotten;
}

void AtspiPrograms::clear() {
  programs_.clear();
  exited_->clear();
  embedded_.clear();
  lateStrangers_.clear();
}

std::vector<const AtspiProgram*> AtspiPrograms::hosts() const {
  std::vector<const AtspiProgram*> result;
  for (const auto& [busName, entry] : programs_)
    if (entry.program.isHost()) result.push_back(&entry.program);
  return result;
}

const AtspiProgram* AtspiPrograms::find(const std::string& busName) const {
  const auto found = programs_.find(busName);
  return found == programs_.end() ? nullptr : &found->second.program;
}

void AtspiPrograms::connectDirectly(const std::string& busName) {
  const auto found = programs_.find(busName);
  if (found == programs_.end() || std::exchange(found->second.triedDirectConnection, true)) return;
  const AtspiProgram& program = found->second.program;
  if (program.isEmbedded()) return;
  const BusReply address = bus_.ask({program.root, atspi_calls::application,
                                     "GetApplicationBusAddress", "(s)", bus_.timeout(), nullptr});
  if (!address) return;
  bus_.reach(busName, atspi_value::text(address.value.get()), program.processIdentifier,
             bus_.timeout());
}

}  // namespace hushbox
