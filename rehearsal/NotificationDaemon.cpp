#include "rehearsal/NotificationDaemon.h"

#include "rehearsal/BusConnection.h"
#include "rehearsal/DeskError.h"

namespace hushbox::rehearsal {

NotificationDaemon::NotificationDaemon(const Session& session) {
  if (!session.hasDisplay()) throw DeskError("a notification daemon needs a display");
  process_ = session.start("dunst.log", {"dunst"});
  const BusConnection bus(session.busAddress());
  process_->waitUntilReady([&] { return bus.hasOwner("org.freedesktop.Notifications"); },
                           "a notification daemon");
}

}  // namespace hushbox::rehearsal
