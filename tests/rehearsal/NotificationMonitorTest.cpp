#include "rehearsal/NotificationMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "rehearsal/BusConnection.h"
#include "rehearsal/DeskError.h"
#include "rehearsal/Session.h"
#include "rehearsal/SilentNotificationDaemon.h"

namespace hushbox::rehearsal {
namespace {

using testing::SizeIs;

void notify(const BusConnection& bus, const char* title, Milliseconds deadline) {
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string("bell"));
  bus.call(
      "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
      "org.freedesktop.Notifications", "Notify",
      g_variant_new("(susssasa{sv}i)", "Hushbox", 0, "mask", title, "body", nullptr, &hints, -1),
      deadline);
}

TEST(NotificationMonitorTest, RecordsACallToADaemonThatNeverReplies) {
  const Session session;
  const NotificationMonitor monitor(session.busAddress());
  const SilentNotificationDaemon silent(session.busAddress());
  const BusConnection bus(session.busAddress());
  const auto before = std::chrono::steady_clock::now();
  EXPECT_THROW(notify(bus, "Low battery", Milliseconds{100}), DeskError);
  EXPECT_GE(std::chrono::steady_clock::now() - before, Milliseconds{100});
  EXPECT_EQ(silent.calls(), 1);
  ASSERT_THAT(monitor.notifications(), SizeIs(1));
  EXPECT_EQ(monitor.notifications()[0].error, "");
  EXPECT_EQ(monitor.notifications()[0].title, "Low battery");
  EXPECT_EQ(monitor.notifications()[0].body, "body");
  EXPECT_EQ(monitor.notifications()[0].application, "Hushbox");
  EXPECT_EQ(monitor.notifications()[0].soundName, "bell");
  EXPECT_THAT(monitor.shown(), SizeIs(0));
  EXPECT_THROW(SilentNotificationDaemon(session.busAddress()), DeskError);
}

TEST(NotificationMonitorTest, RecordsTheErrorReplyIfThereIsNoDaemon) {
  const Session session;
  const NotificationMonitor monitor(session.busAddress());
  const BusConnection bus(session.busAddress());
  EXPECT_THROW(notify(bus, "Low battery", Milliseconds{5000}), DeskError);
  waitUntil(
      [&] { return !monitor.notifications().empty() && !monitor.notifications()[0].error.empty(); },
      serverTimeout, "the error reply");
  EXPECT_EQ(monitor.notifications()[0].error, "org.freedesktop.DBus.Error.ServiceUnknown");
}

}  // namespace
}  // namespace hushbox::rehearsal
