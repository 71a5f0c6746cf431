#pragma once

#include <gio/gio.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/linux/bus/BusReply.h"
#include "platform/linux/bus/GLibPointers.h"
#include "platform/linux/bus/SessionBusConnection.h"
#include "support/Lifetime.h"

namespace hushbox {

/// Whether status items are shown by the service of Ayatana's indicators
/// (`org.ayatana.indicator.application`), which MATE's indicator applet and its like show. They
/// ignore an item's pixels, and find its icon by name. They recolour symbolic icons. Main thread
/// only.
///
/// The service owns that name on one connection and the watcher's name on another. Both may have
/// owners while the watcher is a panel, so the two must belong to one process.
class IndicatorService {
 public:
  /// Looks for the service on `bus`, which must be connected and outlive this, now and whenever
  /// either name changes its owner. Calls `changed` from the main context with each answer.
  IndicatorService(SessionBusConnection& bus, GDBusConnection* connection,
                   std::function<void(bool isWatcher)> changed);
  ~IndicatorService();
  IndicatorService(const IndicatorService&) = delete;
  IndicatorService& operator=(const IndicatorService&) = delete;

 private:
  struct Name {
    IndicatorService& service;
    guint watch = 0;
    /// The owner's unique name; empty for none.
    std::string owner = {};
    std::optional<guint32> process = {};
  };

  void watch(GDBusConnection* connection, Name& name, const char* text);
  void setOwner(Name& name, const char* owner);
  void noteProcess(Name& name, const std::string& owner, const BusReply& reply);
  void compare();

  SessionBusConnection& bus_;
  const std::function<void(bool)> changed_;
  bool isWatcher_ = false;
  Name indicators_{*this};
  Name watcher_{*this};
  Lifetime lifetime_;
};

}  // namespace hushbox
