#include "platform/linux/menubar/IndicatorService.h"

#include <utility>

#include "platform/linux/bus/BusDaemonCalls.h"

namespace hushbox {
namespace {

constexpr std::chrono::milliseconds timeout{5000};

}  // namespace

IndicatorService::IndicatorService(SessionBusConnection& bus, GDBusConnection* connection,
                                   std::function<void(bool)> changed)
    : bus_(bus), changed_(std::move(changed)) {
  watch(connection, indicators_, "org.ayatana.indicator.application");
  watch(connection, watcher_, "org.kde.StatusNotifierWatcher");
}

IndicatorService::~IndicatorService() {
  g_bus_unwatch_name(indicators_.watch);
  g_bus_unwatch_name(watcher_.watch);
}

void IndicatorService::watch(GDBusConnection* connection, Name& name, const char* text) {
  const auto appeared = [](GDBusConnection*, const char*, const char* owner, gpointer data) {
    auto& changed = *static_cast<Name*>(data);
    changed.service.setOwner(changed, owner);
  };
  const auto vanished = [](GDBusConnection*, const char*, gpointer data) {
    auto& changed = *static_cast<Name*>(data);
    changed.service.setOwner(changed, "");
  };
  name.watch = g_bus_watch_name_on_connection(connection, text, G_BUS_NAME_WATCHER_FLAGS_NONE,
                                              appeared, vanished, &name, nullptr);
}

void IndicatorService::setOwner(Name& name, const char* owner) {
  name.owner = owner;
  name.process.reset();
  compare();
  // Most desktops have no such service.
  if (indicators_.owner.empty()) return;
  for (Name* const each : {&indicators_, &watcher_}) {
    if (each->owner.empty() || each->process) continue;
    bus_.call(bus_daemon::processOf(each->owner, timeout),
              lifetime_.weakly([this, each, asked = each->owner](const BusReply& reply) {
                noteProcess(*each, asked, reply);
              }));
  }
}

void IndicatorService::noteProcess(Name& name, const std::string& owner, const BusReply& reply) {
  // The reply about an owner that has exited since says nothing about the present one.
  if (owner != name.owner || !reply) return;
  guint32 process = 0;
  g_variant_get(reply.value.get(), "(u)", &process);
  name.process = process;
  compare();
}

void IndicatorService::compare() {
  const bool isWatcher = indicators_.process && indicators_.process == watcher_.process;
  if (std::exchange(isWatcher_, isWatcher) != isWatcher) changed_(isWatcher);
}

}  // namespace hushbox
