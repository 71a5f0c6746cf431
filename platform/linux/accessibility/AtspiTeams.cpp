#include "platform/linux/accessibility/AtspiTeams.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/linux/accessibility/AtspiQuestions.h"
#include "platform/linux/accessibility/AtspiRole.h"
#include "platform/linux/accessibility/AtspiState.h"
#include "platform/linux/accessibility/AtspiTeamsSigns.h"
#include "platform/linux/accessibility/AtspiValue.h"

namespace hushbox {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using atspi_questions::accessible;
using atspi_questions::property;

BusCall updateLabels(const BusObject& document, milliseconds wait) {
  constexpr guint32 relativeToWindow = 1;
  return {document,
          "org.a11y.atspi.Component",
          "GetAccessibleAtPoint",
          "((so))",
          wait,
          takeArguments(g_variant_new("(iiu)", 0, 0, relativeToWindow))};
}

bool isOnScreen(const BusReply& state) {
  return state && atspi_value::hasState(state.value.get(), atspi_state::showing) &&
         !atspi_value::hasState(state.value.get(), atspi_state::iconified);
}

/// What the page is directly in; pages in the background are in nothing.
BusObject parentOf(const BusReply& properties) {
  if (!properties) return {};
  return atspi_value::object(properties.value.get(), "Parent").value_or(BusObject{});
}

/// Whether the page is the first in the window whose matches those are.
bool isFirst(const BusObject& document, const BusReply& matches) {
  return matches && atspi_value::objects(matches.value.get(), document.busName, 1) ==
                        std::vector<BusObject>{document};
}

BusCall lifeSign(const AtspiSurface& surface, milliseconds wait) {
  if (surface.isDocument)
    return {surface.object, "org.a11y.atspi.Document", "GetAttributes", "(a{ss})", wait, nullptr};
  return atspi_questions::role(surface.object, wait);
}

/// Whether the surface is there and of Teams, by its life sign and its name; also sets by what.
bool isOfTeams(AtspiSurface& surface, GVariant* answer, const std::string& name) {
  using Evidence = AtspiSurface::Evidence;
  const VariantPointer value(g_variant_get_child_value(answer, 0));
  if (!surface.isDocument) return g_variant_get_uint32(value.get()) != atspi_role::invalid;
  // A document that has been taken down still answers, with nothing.
  if (g_variant_n_children(value.get()) == 0) return false;
  // The one key is Chromium's and WebKit's, the other Gecko's.
  if (teams_signs::isAddress(atspi_value::text(value.get(), "URI")) ||
      teams_signs::isAddress(atspi_value::text(value.get(), "DocURL"))) {
    surface.evidence = Evidence::address;
    return true;
  }
  surface.evidence = surface.inClient ? Evidence::client : Evidence::title;
  return surface.inClient || teams_signs::isTitle(name);
}

/// Whether the control's and the document's own answers tell that the surface is there and still of
/// Teams.
bool isSeenByControl(const AtspiSurface& surface) {
  guint32 role = atspi_role::invalid;
  if (surface.controlRole) g_variant_get(surface.controlRole.value.get(), "(u)", &role);
  if (role == atspi_role::invalid) return false;
  if (surface.evidence != AtspiSurface::Evidence::title) return true;
  if (!surface.properties) return false;
  const VariantPointer all(g_variant_get_child_value(surface.properties.value.get(), 0));
  return teams_signs::isTitle(atspi_value::text(all.get(), "Name"));
}

}  // namespace

void AtspiTeams::beginReading() {
  searched_ = false;
  readingBegan_ = steady_clock::now();
  lostBefore_ = bus_.lostTime();
}

bool AtspiTeams::isRunning() {
  if (!bus_.connect()) return false;
  forgetAfterReconnection();
  if (!surfaces_.empty()) surfaces_ = confirmed(surfaces_);
  if (surfaces_.empty()) search();
  return !surfaces_.empty();
}

void AtspiTeams::search() {
  if (std::exchange(searched_, true) || !bus_.connect()) return;
  forgetAfterReconnection();
  const bool metBrowser = meetPrograms();
  const auto end = steady_clock::now() + wakingWait;
  surfaces_ = confirmed(findSurfaces());
  while (metBrowser && surfaces_.empty() && steady_clock::now() < end) {
    std::this_thread::sleep_for(milliseconds{20});
    surfaces_ = confirmed(findSurfaces());
  }
  reachPrograms();
  for (const AtspiSurfaceRef& surface : surfaces_) surface->windowSought = false;
  std::stable_sort(surfaces_.begin(), surfaces_.end(), [](const auto& one, const auto& other) {
    return one->evidence < other->evidence;
  });
}

void AtspiTeams::reachPrograms() {
  for (const AtspiSurfaceRef& surface : surfaces_) {
    const auto known = programs_.find(surface->object.busName);
    if (known == programs_.end() || std::exchange(known->second.reached, true)) continue;
    const Program& program = known->second;
    const BusReply address = bus_.ask({program.root, "org.a11y.atspi.Application",
                                       "GetApplicationBusAddress", "(s)", timeout(), nullptr});
    if (!address) continue;
    bus_.reach(program.root.busName, atspi_value::text(address.value.get()),
               program.processIdentifier, timeout());
  }
}

void AtspiTeams::bringLabelsUpToDate(AtspiSurface& surface) {
  if (!surface.labelsLag) return;
  if (surface.askedAt < readingBegan_ || steady_clock::now() - surface.askedAt > freshness)
    askAlong({&surface}, {});
  seekWindow(surface);
  if (surface.isDrawn) return;
  if (surface.toldAt < readingBegan_) askAlong({&surface}, {});
  if (surface.toldAt < readingBegan_) return;
  const auto slow = std::min<steady_clock::duration>(4 * answerTime_, longestLabelWait);
  std::this_thread::sleep_until(surface.toldAt + std::max<steady_clock::duration>(slow, labelWait));
}

std::vector<BusReply> AtspiTeams::askAlong(const std::vector<AtspiSurface*>& surfaces,
                                           std::vector<BusCall> calls) {
  std::vector<Along> alongs;
  for (AtspiSurface* surface : surfaces) alongs.push_back(along(*surface, calls));
  if (!alongs.empty()) compositingManager_.ask();
  const auto before = steady_clock::now();
  auto replies = bus_.ask(std::move(calls));
  const auto now = steady_clock::now();
  answerTime_ = now - before;
  const bool composited = !alongs.empty() && compositingManager_.isRunning();
  for (const Along& along : alongs) {
    AtspiSurface& surface = along.surface;
    if (along.tells && replies[along.first].outcome != BusReply::Outcome::silent)
      surface.toldAt = now;
    std::size_t next = along.first + along.tells;
    surface.askedAt = now;
    surface.properties = std::move(replies[next++]);
    const bool isInPlace = parentOf(surface.properties) == surface.parent;
    if (surface.properties && !isInPlace) surface.windowSought = false;
    surface.isDrawn =
        composited && along.toldBefore && along.hasWindow && isInPlace && isOnScreen(replies[next]);
    if (along.hasWindow) ++next;
    if (!along.hasControl) continue;
    surface.controlProperties = std::move(replies[next]);
    surface.controlRole = std::move(replies[next + 1]);
  }
  return replies;
}

void AtspiTeams::seekWindow(AtspiSurface& surface) {
  constexpr int deepest = 64;
  if (std::exchange(surface.windowSought, true)) return;
  surface.window = {};
  surface.parent = parentOf(surface.properties);
  const auto program = programs_.find(surface.object.busName);
  if (program == programs_.end()) return;
  BusObject child = surface.parent;
  for (int depth = 0; child.busName == surface.object.busName && depth < deepest; ++depth) {
    const BusReply reply = bus_.ask(property(child, accessible, "Parent", timeout()));
    const auto parent = reply ? atspi_value::object(reply.value.get()) : std::nullopt;
    if (!parent) return;
    if (*parent != program->second.root) {
      child = *parent;
      continue;
    }
    // A page within a page stays where it is when the outer one goes to the background.
    const BusReply first =
        bus_.ask(atspi_questions::matches(child, {atspi_role::documentWeb}, 1, timeout()));
    if (isFirst(surface.object, first)) surface.window = child;
    return;
  }
}

AtspiTeams::Along AtspiTeams::along(AtspiSurface& surface, std::vector<BusCall>& calls) const {
  const auto sinceTold = steady_clock::now() - surface.toldAt;
  const BusObject& window = surface.window;
  const BusObject& control = surface.control;
  Along along{.surface = surface,
              .first = calls.size(),
              .tells = !surface.isDrawn || sinceTold >= tellAgain,
              .toldBefore = sinceTold <= tellInterval,
              .hasWindow = !window.busName.empty(),
              .hasControl = surface.hasControl()};
  if (along.tells) calls.push_back(updateLabels(surface.object, timeout()));
  calls.push_back(atspi_questions::allProperties(surface.object, timeout()));
  if (along.hasWindow)
    calls.push_back({window, accessible, "GetState", "(au)", timeout(), nullptr});
  if (along.hasControl) {
    calls.push_back(atspi_questions::allProperties(control, timeout()));
    calls.push_back(atspi_questions::role(control, timeout()));
  }
  return along;
}

milliseconds AtspiTeams::timeout() const {
  constexpr milliseconds least{20};
  const auto lost = std::chrono::ceil<milliseconds>(bus_.lostTime() - lostBefore_);
  return std::max(timeout_ - lost, least);
}

BusReply AtspiTeams::askForName(const BusObject& object, const AtspiSurface& surface) {
  std::vector<BusCall> calls;
  calls.push_back(property(object, accessible, "Name", timeout()));
  if (surface.labelsLag) calls.push_back(updateLabels(surface.object, timeout()));
  return std::move(bus_.ask(std::move(calls)).front());
}

void AtspiTeams::forgetAfterReconnection() {
  if (std::exchange(generation_, bus_.generation()) == bus_.generation()) return;
  programs_.clear();
  surfaces_.clear();
}

bool AtspiTeams::meetPrograms() {
  const BusObject registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
  const BusReply reply =
      bus_.ask({registry, accessible, "GetChildren", "(a(so))", timeout(), nullptr});
  if (!reply) return false;
  const auto roots = atspi_value::objects(reply.value.get(), {}, mostPrograms);
  std::set<std::string_view> present;
  for (const BusObject& root : roots) present.insert(root.busName);
  std::erase_if(programs_, [&](const auto& entry) { return present.count(entry.first) == 0; });
  std::vector<BusObject> strangers;
  for (const BusObject& root : roots)
    if (programs_.count(root.busName) == 0) strangers.push_back(root);
  return identify(strangers);
}

bool AtspiTeams::identify(const std::vector<BusObject>& roots) {
  const BusObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
  std::vector<BusCall> calls;
  for (const BusObject& root : roots) {
    calls.push_back({busDaemon, "org.freedesktop.DBus", "GetConnectionUnixProcessID", "(u)",
                     timeout(), takeArguments(g_variant_new("(s)", root.busName.c_str()))});
    calls.push_back(property(root, accessible, "Name", timeout()));
    calls.push_back(property(root, "org.a11y.atspi.Application", "ToolkitName", timeout()));
  }
  const auto replies = bus_.ask(std::move(calls));
  bool metBrowser = false;
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const BusReply& process = replies[3 * i];
    const BusReply& name = replies[3 * i + 1];
    const BusReply& toolkit = replies[3 * i + 2];
    // Whoever has not answered is met again at the next search.
    if (!process || !name || toolkit.outcome == BusReply::Outcome::silent) continue;
    Program program{.root = roots[i]};
    guint32 processIdentifier = 0;
    g_variant_get(process.value.get(), "(u)", &processIdentifier);
    program.processIdentifier = static_cast<std::int32_t>(processIdentifier);
    program.isClient = teams_signs::isClientName(atspi_value::text(name.value.get()));
    const std::string builtOn = toolkit ? atspi_value::text(toolkit.value.get()) : std::string();
    program.labelsLag = builtOn == "Chromium";
    program.isBrowser = program.labelsLag || builtOn == "Gecko" || builtOn.starts_with("WebKit");
    metBrowser |= program.isBrowser;
    programs_.emplace(roots[i].busName, std::move(program));
  }
  return metBrowser;
}

std::vector<AtspiSurfaceRef> AtspiTeams::findSurfaces() {
  std::vector<const Program*> asked;
  std::vector<BusCall> calls;
  for (const auto& [busName, program] : programs_) {
    if (!program.isBrowser && !program.isClient) continue;
    asked.push_back(&program);
    calls.push_back(atspi_questions::matches(program.root, {atspi_role::documentWeb}, mostDocuments,
                                             timeout()));
  }
  for (const Program* program : asked)
    calls.push_back({program->root, accessible, "GetAttributes", "(a{ss})", timeout(), nullptr});
  const auto replies = bus_.ask(std::move(calls));
  std::vector<AtspiSurfaceRef> found;
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const Program& program = *asked[i];
    std::vector<BusObject> documents;
    if (replies[i]) {
      documents = atspi_value::objects(replies[i].value.get(), program.root.busName, mostDocuments);
    }
    for (const BusObject& document : documents) found.push_back(surface(document, program));
    const auto outcome = replies[i].outcome;
    if (program.isClient && documents.empty() && outcome != BusReply::Outcome::silent) {
      found.push_back(surface(program.root, program));
      found.back()->isDocument = false;
    }
  }
  // What was known stays a candidate: pages in the background are in no tree.
  for (const AtspiSurfaceRef& known : surfaces_)
    if (std::find(found.begin(), found.end(), known) == found.end()) found.push_back(known);
  return found;
}

AtspiSurfaceRef AtspiTeams::surface(const BusObject& object, const Program& program) {
  const auto known = std::find_if(surfaces_.begin(), surfaces_.end(),
                                  [&](const auto& one) { return one->object == object; });
  if (known != surfaces_.end()) return *known;
  auto found = std::make_shared<AtspiSurface>();
  found->object = object;
  found->processIdentifier = program.processIdentifier;
  found->inClient = program.isClient;
  found->labelsLag = program.labelsLag;
  return found;
}

std::vector<AtspiSurfaceRef> AtspiTeams::confirmed(const std::vector<AtspiSurfaceRef>& surfaces) {
  // Told along with signs of life, pages have the time of the other calls for it.
  std::vector<AtspiSurface*> told;
  for (const AtspiSurfaceRef& surface : surfaces_)
    if (surface->labelsLag && surface->askedAt < readingBegan_) told.push_back(surface.get());
  const auto shows = [](const AtspiSurfaceRef& one) { return one->labelsLag && one->hasControl(); };
  std::vector<AtspiSurface*> doubtful;
  for (const AtspiSurfaceRef& surface : surfaces)
    if (!shows(surface)) doubtful.push_back(surface.get());
  auto present = withSignOfLife(doubtful, told);
  doubtful.clear();
  for (const AtspiSurfaceRef& surface : surfaces) {
    if (!shows(surface)) continue;
    if (surface->askedAt >= readingBegan_ && isSeenByControl(*surface))
      present.insert(surface.get());
    else
      doubtful.push_back(surface.get());
  }
  present.merge(withSignOfLife(doubtful, {}));
  std::vector<AtspiSurfaceRef> result;
  std::copy_if(surfaces.begin(), surfaces.end(), std::back_inserter(result),
               [&](const AtspiSurfaceRef& one) { return present.count(one.get()) != 0; });
  return result;
}

std::set<const AtspiSurface*> AtspiTeams::withSignOfLife(const std::vector<AtspiSurface*>& surfaces,
                                                         const std::vector<AtspiSurface*>& told) {
  if (surfaces.empty() && told.empty()) return {};
  std::vector<BusCall> calls;
  for (const AtspiSurface* surface : surfaces) calls.push_back(lifeSign(*surface, timeout()));
  // An address that was of Teams needs no name to tell, unless it changes.
  std::vector<const AtspiSurface*> named;
  for (const AtspiSurface* surface : surfaces) {
    if (surface->evidence == AtspiSurface::Evidence::address) continue;
    calls.push_back(property(surface->object, accessible, "Name", timeout()));
    named.push_back(surface);
  }
  const auto replies = askAlong(told, std::move(calls));

  std::set<const AtspiSurface*> result;
  for (std::size_t i = 0; i < surfaces.size(); ++i) {
    AtspiSurface& surface = *surfaces[i];
    const BusReply& sign = replies[i];
    const auto place = std::find(named.begin(), named.end(), &surface) - named.begin();
    const auto name = replies.begin() + static_cast<std::ptrdiff_t>(surfaces.size()) + place;
    const std::string title =
        place < std::ssize(named) && *name ? atspi_value::text(name->value.get()) : std::string();
    const bool keep = sign.outcome == BusReply::Outcome::silent
                          ? isKnown(surface.object.busName)
                          : sign && isOfTeams(surface, sign.value.get(), title);
    if (keep) result.insert(&surface);
  }
  return result;
}

bool AtspiTeams::isKnown(const std::string& busName) const {
  return std::any_of(surfaces_.begin(), surfaces_.end(),
                     [&](const auto& one) { return one->object.busName == busName; });
}

}  // namespace hushbox
