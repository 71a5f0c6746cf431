#include "rehearsal/NotificationDaemon.h"

#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* busName = "org.freedesktop.Notifications";

}  // namespace

NotificationDaemon::NotificationDaemon(const Session& session) : bus_(session.busAddress()) {
  if (!session.hasDisplay()) throw DeskError("a notification daemon needs a display");
  process_ = session.start("dunst.log", {"dunst"});
  process_->waitUntilReady([this] { return bus_.hasOwner(busName); }, "a notification daemon");
}

unsigned NotificationDaemon::shownNow() const {
  const Variant answer =
      bus_.call(busName, "/org/freedesktop/Notifications", "org.freedesktop.DBus.Properties", "Get",
                g_variant_new("(ss)", "org.dunstproject.cmd0", "displayedLength"));
  GVariant* boxed = nullptr;
  g_variant_get(answer.get(), "(v)", &boxed);
  return g_variant_get_uint32(Variant(boxed).get());
}

}  // namespace hushbox::rehearsal
