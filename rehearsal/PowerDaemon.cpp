#include "rehearsal/PowerDaemon.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <vector>

#include "rehearsal/DeskError.h"
#include "rehearsal/Programs.h"

namespace hushbox::rehearsal {

namespace {

constexpr const char* upower = "org.freedesktop.UPower";
constexpr const char* upowerPath = "/org/freedesktop/UPower";
constexpr const char* emulation = "umockdev-wrapper";
constexpr const char* hardware = HUSHBOX_REHEARSAL_DEVICES "/speakerphone-battery";
/// Debian's path, then the path of other distributions.
const std::vector<std::string> daemons{"/usr/lib/upower/upowerd", "/usr/libexec/upowerd"};

std::string systemBusOf(const Session& session) {
  if (!std::filesystem::exists(session.folder() / "bus" / "system")) {
    throw DeskError("UPower needs a session with a system bus");
  }
  return session.systemBusAddress();
}

}  // namespace

bool PowerDaemon::isInstalled() {
  return rehearsal::isInstalled(emulation) &&
         (rehearsal::isInstalled(daemons.front()) || rehearsal::isInstalled(daemons.back()));
}

PowerDaemon::PowerDaemon(const Session& session, const Battery& battery)
    : bus_(systemBusOf(session)), hardware_(nullptr, &std::fclose) {
  const std::string daemon = findProgram(daemons);
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw DeskError("cannot create a pipe");
  const File commands(fdopen(ends[0], "r"), &std::fclose);
  hardware_.reset(fdopen(ends[1], "w"));
  process_ = session.start("upower.log",
                           {emulation, hardware, daemon, battery.model,
                            std::to_string(battery.percent), battery.state, battery.scope},
                           {{ends[0], STDIN_FILENO}});
  process_->waitUntilReady([this] { return level().has_value(); }, "UPower with a battery");
}

void PowerDaemon::change(int percent, const std::string& state) {
  sendToHardware(std::to_string(percent) + ' ' + state);
  process_->waitUntilReady([&] { return level() == percent; }, "UPower to report the change");
}

void PowerDaemon::unplug() {
  sendToHardware("unplug");
  process_->waitUntilReady([this] { return !level(); }, "UPower to drop the battery");
}

std::optional<double> PowerDaemon::level() const {
  if (!bus_.hasOwner(upower)) return std::nullopt;
  try {
    const Variant paths = bus_.call(upower, upowerPath, upower, "EnumerateDevices", nullptr);
    const Variant array(g_variant_get_child_value(paths.get(), 0));
    if (g_variant_n_children(array.get()) == 0) return std::nullopt;
    const char* device = nullptr;
    g_variant_get_child(array.get(), 0, "&o", &device);
    const Variant reply =
        bus_.call(upower, device, "org.freedesktop.DBus.Properties", "Get",
                  g_variant_new("(ss)", "org.freedesktop.UPower.Device", "Percentage"));
    GVariant* boxed = nullptr;
    g_variant_get(reply.get(), "(v)", &boxed);
    return g_variant_get_double(Variant(boxed).get());
  } catch (const DeskError&) {
    // The device may disappear between the two calls.
    return std::nullopt;
  }
}

void PowerDaemon::sendToHardware(const std::string& line) {
  if (!process_->isRunning()) throw DeskError("the hardware emulation has exited");
  std::fprintf(hardware_.get(), "%s\n", line.c_str());
  std::fflush(hardware_.get());
}

}  // namespace hushbox::rehearsal
