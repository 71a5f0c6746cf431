#include "platform/linux/accessibility/EmbeddedPages.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/bus/BusDaemonCalls.h"

namespace hushbox {

namespace {

/// What follows the application's identifier in the name of a page's process.
constexpr const char* namePart = ".Sandboxed.WebProcess-";
/// Below this are the roots of a process's pages.
constexpr const char* pagesPath = "/org/a11y/webkit/accessible";

/// Null if no browser has that name.
const AtspiProgram* browserOf(const std::string& busName,
                              const std::vector<AtspiProgram>& browsers) {
  const auto found = std::ranges::find_if(
      browsers, [&](const AtspiProgram& one) { return one.root.busName == busName; });
  return found == browsers.end() ? nullptr : &*found;
}

}  // namespace

std::vector<AtspiProgram> EmbeddedPages::find(const std::vector<AtspiProgram>& browsers) {
  if (browsers.empty()) processes_.clear();
  if (!browsers.empty() && listProcesses()) {
    std::vector<Candidate> candidates = listPages();
    findSockets(candidates, browsers);
    embed(candidates);
  }
  std::vector<AtspiProgram> result;
  for (const auto& [name, process] : processes_) {
    AtspiProgram program;
    program.isBrowser = true;
    for (const auto& [page, browserName] : process.pages) {
      const AtspiProgram* const browser = browserOf(browserName, browsers);
      if (!browser) continue;
      program.pages.push_back(page);
      program.processIdentifier = browser->processIdentifier;
    }
    if (!program.isEmbedded()) continue;
    program.root = program.pages.front();
    result.push_back(std::move(program));
  }
  return result;
}

bool EmbeddedPages::listProcesses() {
  const BusReply reply = bus_.ask(bus_daemon::names(bus_.timeout()));
  if (!reply) return false;
  const auto list = atspi_value::textsWith(reply.value.get(), namePart, maxProcesses);
  const std::set<std::string> names(list.begin(), list.end());
  std::erase_if(processes_, [&](const auto& entry) { return !names.contains(entry.first); });
  CallBatch batch;
  std::vector<std::pair<std::string, CallBatch::Ticket>> strangers;
  for (const std::string& name : names) {
    if (!processes_.contains(name))
      strangers.emplace_back(name, batch.add(bus_daemon::ownerOf(name, bus_.timeout())));
  }
  bus_.send(batch);
  for (const auto& [name, ticket] : strangers) {
    if (batch[ticket]) processes_[name] = {.busName = atspi_value::text(batch[ticket].value.get())};
  }
  return true;
}

std::vector<EmbeddedPages::Candidate> EmbeddedPages::listPages() {
  CallBatch batch;
  std::vector<std::pair<Process*, CallBatch::Ticket>> calls;
  for (auto& [name, process] : processes_) {
    // A process that has just been started is busy with its page.
    const auto timeout = process.pages.empty()
                             ? std::min(bus_.timeout(), CallBudget::strangerTimeout)
                             : bus_.timeout();
    calls.emplace_back(&process,
                       batch.add(atspi_calls::introspect({process.busName, pagesPath}, timeout)));
  }
  bus_.send(batch);
  std::vector<Candidate> candidates;
  std::size_t count = 0;
  for (const auto& [process, ticket] : calls) {
    const BusReply& reply = batch[ticket];
    if (reply.outcome == BusReply::Outcome::timedOut) continue;
    std::set<BusObject> pages;
    if (reply) {
      for (const std::string& node : atspi_value::nodes(reply.value.get(), maxPages - count))
        pages.insert({process->busName, std::string(pagesPath) + '/' + node});
    }
    count += pages.size();
    std::erase_if(process->pages, [&](const auto& known) { return !pages.contains(known.first); });
    for (const BusObject& page : pages)
      if (!process->pages.contains(page)) candidates.push_back({.process = process, .page = page});
  }
  return candidates;
}

void EmbeddedPages::findSockets(std::vector<Candidate>& candidates,
                                const std::vector<AtspiProgram>& browsers) {
  CallBatch batch;
  std::vector<CallBatch::Ticket> calls;
  for (const Candidate& candidate : candidates)
    calls.push_back(batch.add(
        atspi_calls::property(candidate.page, atspi_calls::accessible, "Parent", bus_.timeout())));
  bus_.send(batch);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const BusReply& reply = batch[calls[i]];
    if (reply) candidates[i].socket = atspi_value::object(reply.value.get()).value_or(BusObject{});
  }
  // No other program is asked about a page that names it.
  std::erase_if(candidates,
                [&](const Candidate& one) { return !browserOf(one.socket.busName, browsers); });
}

void EmbeddedPages::embed(const std::vector<Candidate>& candidates) {
  CallBatch batch;
  std::vector<CallBatch::Ticket> calls;
  for (const Candidate& candidate : candidates)
    calls.push_back(batch.add(atspi_calls::childAt(candidate.socket, 0, bus_.timeout())));
  bus_.send(batch);
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const auto& [process, page, socket] = candidates[i];
    const BusReply& reply = batch[calls[i]];
    const auto child = reply ? atspi_value::plainObject(reply.value.get()) : std::nullopt;
    if (!child || child->path != page.path) continue;
    // A browser calls the page's process by the name that the sandbox gave it, or by its own.
    const auto named = processes_.find(child->busName);
    const bool isProcess = child->busName == process->busName ||
                           (named != processes_.end() && &named->second == process);
    if (isProcess) process->pages.emplace(page, socket.busName);
  }
}

}  // namespace hushbox
