#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real UPower on the session's system bus, on emulated hardware (umockdev): one USB device with
/// a battery.
class PowerDaemon {
 public:
  struct Battery {
    int percent = 62;
    /// As the kernel has it: Charging, Discharging, Full, Not charging, Unknown.
    std::string state = "Discharging";
    std::string model = "Jabra Speak2 75";
    /// What the kernel says that it powers: "Device" for an accessory, else "System".
    std::string scope = "Device";
  };

  static bool isInstalled();

  /// Returns once UPower knows the battery. Throws DeskError in a session without a system bus,
  /// and when UPower or umockdev is not installed.
  PowerDaemon(const Session& session, const Battery& battery);
  explicit PowerDaemon(const Session& session) : PowerDaemon(session, Battery{}) {}

  /// Changes the battery and waits until UPower has noticed.
  void change(int percent, const std::string& state);
  /// Takes the device away and waits until UPower has noticed.
  void unplug();

  /// What UPower answers; empty when it knows no battery.
  std::optional<double> level() const;

 private:
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  void tellHardware(const std::string& line);

  BusConnection bus_;
  /// Standard input of the emulation.
  File hardware_;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
