#include "rehearsal/NotificationDaemon.h"

#include <fstream>

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* busName = "org.freedesktop.Notifications";
constexpr const char* path = "/org/freedesktop/Notifications";
constexpr const char* dunst = "org.dunstproject.cmd0";

/// Has notifications stay until they are closed: by default they expire after ten seconds, which
/// may pass before a busy machine has looked at them. The rest is as the system configures it.
void configure(const Session& session) {
  const std::filesystem::path system = "/etc/xdg/dunst/dunstrc";
  const auto folder = session.home() / ".config" / "dunst";
  std::filesystem::create_directories(folder / "dunstrc.d");
  std::ofstream base(folder / "dunstrc");
  if (std::filesystem::exists(system)) base << std::ifstream(system).rdbuf();
  std::ofstream(folder / "dunstrc.d" / "desk.conf") << "[urgency_normal]\n    timeout = 0\n";
}

}  // namespace

NotificationDaemon::NotificationDaemon(const Session& session) : bus_(session.busAddress()) {
  if (!session.hasDisplay()) throw DeskError("a notification daemon needs a display");
  configure(session);
  process_ = session.start("dunst.log", {"dunst"});
  process_->waitUntilReady([this] { return bus_.hasOwner(busName); }, "a notification daemon");
}

unsigned NotificationDaemon::shownNow() const {
  const Variant reply = bus_.call(busName, path, "org.freedesktop.DBus.Properties", "Get",
                                  g_variant_new("(ss)", dunst, "displayedLength"));
  GVariant* boxed = nullptr;
  g_variant_get(reply.get(), "(v)", &boxed);
  return g_variant_get_uint32(Variant(boxed).get());
}

void NotificationDaemon::closeAll() const {
  bus_.call(busName, path, dunst, "NotificationCloseAll", nullptr);
  waitUntil([this] { return shownNow() == 0; }, serverTimeout, "the notifications to close");
}

}  // namespace hushbox::rehearsal
