#include "platform/linux/AtspiTeams.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <set>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/linux/AtspiRole.h"
#include "platform/linux/AtspiState.h"
#include "platform/linux/AtspiTeamsSigns.h"
#include "platform/linux/AtspiValue.h"

namespace hushbox {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* collection = "org.a11y.atspi.Collection";
constexpr const char* properties = "org.freedesktop.DBus.Properties";

AtspiCall property(const AtspiObject& object, const char* interface, const char* name,
                   milliseconds wait) {
  return {object, properties, "Get",
          "(v)",  wait,       takeArguments(g_variant_new("(ss)", interface, name))};
}

AtspiCall updateLabels(const AtspiObject& document, milliseconds wait) {
  constexpr guint32 relativeToWindow = 1;
  return {document,
          "org.a11y.atspi.Component",
          "GetAccessibleAtPoint",
          "((so))",
          wait,
          takeArguments(g_variant_new("(iiu)", 0, 0, relativeToWindow))};
}

bool isOnScreen(const AtspiReply& state) {
  return state && atspi_value::hasState(state.value.get(), atspi_state::showing) &&
         !atspi_value::hasState(state.value.get(), atspi_state::iconified);
}

/// Pages in the background are in no window's tree.
bool isFirst(const AtspiObject& document, const AtspiReply& matches) {
  return matches && atspi_value::objects(matches.value.get(), document.busName, 1) ==
                        std::vector<AtspiObject>{document};
}

AtspiCall lifeSign(const AtspiSurface& surface, milliseconds wait) {
  if (surface.isDocument)
    return {surface.object, "org.a11y.atspi.Document", "GetAttributes", "(a{ss})", wait, nullptr};
  return {surface.object, accessible, "GetRole", "(u)", wait, nullptr};
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
  for (const AtspiSurfaceRef& surface : surfaces_) surface->windowSought = false;
  std::stable_sort(surfaces_.begin(), surfaces_.end(), [](const auto& one, const auto& other) {
    return one->evidence < other->evidence;
  });
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

std::vector<AtspiReply> AtspiTeams::askAlong(const std::vector<AtspiSurface*>& surfaces,
                                             std::vector<AtspiCall> calls) {
  std::vector<Along> alongs;
  for (AtspiSurface* surface : surfaces) alongs.push_back(along(*surface, calls));
  const auto before = steady_clock::now();
  auto replies = bus_.ask(std::move(calls));
  const auto now = steady_clock::now();
  answerTime_ = now - before;
  const bool composited = !alongs.empty() && compositingManager_.isRunning();
  for (const Along& along : alongs) {
    AtspiSurface& surface = along.surface;
    if (along.tells && replies[along.first].outcome != AtspiReply::Outcome::silent)
      surface.toldAt = now;
    std::size_t next = along.first + along.tells;
    surface.isDrawn = composited && along.toldBefore && along.hasWindow &&
                      isOnScreen(replies[next]) && isFirst(surface.object, replies[next + 1]);
    if (along.hasWindow) next += 2;
    surface.askedAt = now;
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
  const auto program = programs_.find(surface.object.busName);
  if (program == programs_.end()) return;
  AtspiObject child = surface.object;
  for (int depth = 0; depth < deepest; ++depth) {
    const AtspiReply reply = bus_.ask(property(child, accessible, "Parent", timeout()));
    const auto parent = reply ? atspi_value::object(reply.value.get()) : std::nullopt;
    if (!parent || parent->busName != child.busName) return;
    if (*parent == program->second.root) {
      surface.window = child;
      return;
    }
    child = *parent;
  }
}

AtspiTeams::Along AtspiTeams::along(AtspiSurface& surface, std::vector<AtspiCall>& calls) const {
  const auto sinceTold = steady_clock::now() - surface.toldAt;
  const AtspiObject& window = surface.window;
  const AtspiObject& control = surface.control;
  Along along{.surface = surface,
              .first = calls.size(),
              .tells = !surface.isDrawn || sinceTold >= tellAgain,
              .toldBefore = sinceTold <= tellInterval,
              .hasWindow = !window.busName.empty(),
              .hasControl = !control.busName.empty()};
  if (along.tells) calls.push_back(updateLabels(surface.object, timeout()));
  if (along.hasWindow) {
    calls.push_back({window, accessible, "GetState", "(au)", timeout(), nullptr});
    calls.push_back({window, collection, "GetMatches", "(a(so))", timeout(),
                     atspi_value::matchRoles({atspi_role::documentWeb}, 1)});
  }
  if (along.hasControl) {
    calls.push_back({control, properties, "GetAll", "(a{sv})", timeout(),
                     takeArguments(g_variant_new("(s)", accessible))});
    calls.push_back({control, accessible, "GetRole", "(u)", timeout(), nullptr});
  }
  return along;
}

milliseconds AtspiTeams::timeout() const {
  constexpr milliseconds least{20};
  const auto lost = std::chrono::ceil<milliseconds>(bus_.lostTime() - lostBefore_);
  return std::max(timeout_ - lost, least);
}

AtspiReply AtspiTeams::askForName(const AtspiObject& object, const AtspiSurface& surface) {
  std::vector<AtspiCall> calls;
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
  const AtspiObject registry{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
  const AtspiReply reply =
      bus_.ask({registry, accessible, "GetChildren", "(a(so))", timeout(), nullptr});
  if (!reply) return false;
  const auto roots = atspi_value::objects(reply.value.get(), {}, mostPrograms);
  std::set<std::string_view> present;
  for (const AtspiObject& root : roots) present.insert(root.busName);
  std::erase_if(programs_, [&](const auto& entry) { return present.count(entry.first) == 0; });
  std::vector<AtspiObject> strangers;
  for (const AtspiObject& root : roots)
    if (programs_.count(root.busName) == 0) strangers.push_back(root);
  return identify(strangers);
}

bool AtspiTeams::identify(const std::vector<AtspiObject>& roots) {
  const AtspiObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
  std::vector<AtspiCall> calls;
  for (const AtspiObject& root : roots) {
    calls.push_back({busDaemon, "org.freedesktop.DBus", "GetConnectionUnixProcessID", "(u)",
                     timeout(), takeArguments(g_variant_new("(s)", root.busName.c_str()))});
    calls.push_back(property(root, accessible, "Name", timeout()));
    calls.push_back(property(root, "org.a11y.atspi.Application", "ToolkitName", timeout()));
  }
  const auto replies = bus_.ask(std::move(calls));
  bool metBrowser = false;
  for (std::size_t i = 0; i < roots.size(); ++i) {
    const AtspiReply& process = replies[3 * i];
    const AtspiReply& name = replies[3 * i + 1];
    const AtspiReply& toolkit = replies[3 * i + 2];
    // Whoever has not answered is met again at the next search.
    if (!process || !name || toolkit.outcome == AtspiReply::Outcome::silent) continue;
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
  std::vector<AtspiCall> calls;
  for (const auto& [busName, program] : programs_) {
    if (!program.isBrowser && !program.isClient) continue;
    asked.push_back(&program);
    calls.push_back({program.root, collection, "GetMatches", "(a(so))", timeout(),
                     atspi_value::matchRoles({atspi_role::documentWeb}, mostDocuments)});
  }
  for (const Program* program : asked)
    calls.push_back({program->root, accessible, "GetAttributes", "(a{ss})", timeout(), nullptr});
  const auto replies = bus_.ask(std::move(calls));
  std::vector<AtspiSurfaceRef> found;
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const Program& program = *asked[i];
    std::vector<AtspiObject> documents;
    if (replies[i]) {
      documents = atspi_value::objects(replies[i].value.get(), program.root.busName, mostDocuments);
    }
    for (const AtspiObject& document : documents) found.push_back(surface(document, program));
    const auto outcome = replies[i].outcome;
    if (program.isClient && documents.empty() && outcome != AtspiReply::Outcome::silent) {
      found.push_back(surface(program.root, program));
      found.back()->isDocument = false;
    }
  }
  // What was known stays a candidate: pages in the background are in no tree.
  for (const AtspiSurfaceRef& known : surfaces_)
    if (std::find(found.begin(), found.end(), known) == found.end()) found.push_back(known);
  return found;
}

AtspiSurfaceRef AtspiTeams::surface(const AtspiObject& object, const Program& program) {
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
  std::vector<AtspiCall> calls;
  for (const AtspiSurfaceRef& surface : surfaces) calls.push_back(lifeSign(*surface, timeout()));
  // An address that was of Teams needs no name to tell, unless it changes.
  std::vector<AtspiSurface*> named;
  for (const AtspiSurfaceRef& surface : surfaces) {
    if (surface->evidence == AtspiSurface::Evidence::address) continue;
    calls.push_back(property(surface->object, accessible, "Name", timeout()));
    named.push_back(surface.get());
  }
  // Told along with them, pages have the time of the other calls for it.
  std::vector<AtspiSurface*> asked;
  for (const AtspiSurfaceRef& surface : surfaces_)
    if (surface->labelsLag && surface->askedAt < readingBegan_) asked.push_back(surface.get());
  const auto replies = askAlong(asked, std::move(calls));

  std::vector<AtspiSurfaceRef> result;
  for (std::size_t i = 0; i < surfaces.size(); ++i) {
    AtspiSurface& surface = *surfaces[i];
    const AtspiReply& sign = replies[i];
    const auto place = std::find(named.begin(), named.end(), &surface) - named.begin();
    const auto name = replies.begin() + static_cast<std::ptrdiff_t>(surfaces.size()) + place;
    const std::string title =
        place < std::ssize(named) && *name ? atspi_value::text(name->value.get()) : std::string();
    const bool keep = sign.outcome == AtspiReply::Outcome::silent
                          ? isKnown(surface.object.busName)
                          : sign && isOfTeams(surface, sign.value.get(), title);
    if (keep) result.push_back(surfaces[i]);
  }
  return result;
}

bool AtspiTeams::isKnown(const std::string& busName) const {
  return std::any_of(surfaces_.begin(), surfaces_.end(),
                     [&](const auto& one) { return one->object.busName == busName; });
}

}  // namespace hushbox
