#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>

#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"

namespace hushbox::rehearsal {

/// A real UPower on the session's system bus with emulated hardware (umockdev): one USB device with
/// a battery.
class PowerDaemon {
 public:
  struct Battery {
    int percent = 62;
    /// The kernel's word: Charging, Discharging, Full, Not charging or Unknown.
    std::string state = "Discharging";
    std::string model = "Jabra Speak2 75";
    /// What the battery powers, in the kernel's words: "Device" (an accessory) or "System".
    std::string scope = "Device";
  };

  /// Whether UPower and umockdev are installed.
  static bool isInstalled();

  /// Starts UPower and waits until it reports the battery. Throws DeskError if the session has no
  /// system bus, or if UPower or umockdev is not installed.
  PowerDaemon(const Session& session, const Battery& battery);
  explicit PowerDaemon(const Session& session) : PowerDaemon(session, Battery{}) {}

  /// Changes the battery and waits until UPower reports the change.
  void change(int percent, const std::string& state);
  /// Removes the device and waits until UPower no longer reports it.
  void unplug();

  /// The level in percent that UPower reports; nullopt if it reports no battery.
  std::optional<double> level() const;

 private:
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  void sendToHardware(const std::string& line);

  BusConnection bus_;
  /// Standard input of the hardware emulation.
  File hardware_;
  std::unique_ptr<ServerProcess> process_;
};

}  // namespace hushbox::rehearsal
