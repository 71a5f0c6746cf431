#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/Descriptor.h"
#include "platform/linux/SpawnedChildProcesses.h"
#include "rehearsal/BusConnection.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/linux/ScopedEnvironment.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;

constexpr const char* upower = "org.freedesktop.UPower";
constexpr const char* upowerPath = "/org/freedesktop/UPower";

/// What the program reads when it asks for the power report.
std::string report() {
  ChildProcessRules rules;
  rules.standIns["/usr/bin/pmset"] = HUSHBOX_POWER_REPORT;
  const auto tool = SpawnedChildProcesses{std::move(rules)}.make();
  tool->setExecutablePath("/usr/bin/pmset");
  tool->setArguments({"-g", "accps"});
  EXPECT_TRUE(tool->launch());
  std::string output = tool->readDataToEndOfFile();
  tool->waitUntilExit();
  return output;
}

class PowerReportTest : public testing::Test {
 protected:
  PowerReportTest() { session_.applyToThisProcess(); }

  bool hasDevices() const {
    try {
      const auto answer = bus_.call(upower, upowerPath, upower, "EnumerateDevices", nullptr);
      GVariant* const paths = g_variant_get_child_value(answer.get(), 0);
      const bool some = g_variant_n_children(paths) > 0;
      g_variant_unref(paths);
      return some;
    } catch (const std::exception&) {
      return false;
    }
  }

  rehearsal::Session session_{{.systemBus = true}};
  rehearsal::BusConnection bus_{session_.systemBusAddress()};
};

/// The real UPower with an emulated speakerphone.
class PowerReportUPowerTest : public PowerReportTest {
 protected:
  void SetUp() override {
    if (access("/usr/libexec/upowerd", X_OK) != 0 || access("/usr/bin/umockdev-wrapper", X_OK) != 0)
      GTEST_SKIP() << "UPower or umockdev is not installed.";
  }

  void start(std::vector<std::string> battery) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const Descriptor reading(ends[0]);
    commands_.reset(ends[1]);
    std::vector<std::string> command = {"/usr/bin/umockdev-wrapper",
                                        HUSHBOX_FIXTURES "/upower-device"};
    command.insert(command.end(), battery.begin(), battery.end());
    process_ = std::make_unique<rehearsal::ServerProcess>(
        rehearsal::ServerProcess::Launch{command,
                                         session_.environment(),
                                         session_.folder() / "upower.log",
                                         {{reading.get(), STDIN_FILENO}}});
    process_->waitUntilReady([this] { return hasDevices(); }, "UPower with the battery");
  }

  void command(const std::string& line) const {
    const std::string text = line + '\n';
    ASSERT_EQ(write(commands_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }

  static void waitForReport(const std::string& expected) {
    std::string last;
    rehearsal::holdsWithin([&] { return (last = report()) == expected; }, rehearsal::patience);
    EXPECT_EQ(last, expected);
  }

  Descriptor commands_;
  std::unique_ptr<rehearsal::ServerProcess> process_;
};

TEST_F(PowerReportUPowerTest, RealUPowerIsReportedThroughChangesAndUnplugging) {
  start({"Jabra Speak2 75", "62", "Discharging"});
  waitForReport(" -Jabra Speak2 75\t62%; discharging; present: true\n");
  command("63 Charging");
  waitForReport(" -Jabra Speak2 75\t63%; charging; present: true\n");
  command("100 Full");
  waitForReport(" -Jabra Speak2 75\t100%; charged; present: true\n");
  command("unplug");
  waitForReport("");
}

TEST_F(PowerReportUPowerTest, BatteryOfTheComputerIsNotReported) {
  start({"Jabra Laptop", "62", "Discharging", "System"});
  EXPECT_EQ(report(), "");
}

/// A UPower without hardware (python3-dbusmock's template).
class PowerReportMockTest : public PowerReportTest {
 protected:
  PowerReportMockTest()
      : process_(session_.start("upower-mock", {"/usr/bin/python3", "-m", "dbusmock", "--system",
                                                "--template", "upower"})) {
    process_->waitUntilReady(
        [this] {
          try {
            bus_.call(upower, upowerPath, upower, "EnumerateDevices", nullptr);
            return true;
          } catch (const std::exception&) {
            return false;
          }
        },
        "the mock UPower");
  }

  /// Adds a battery with further properties, in GVariant text.
  void add(const std::string& id, const std::string& model, double level,
           const std::string& properties) const {
    bus_.call(upower, upowerPath, "org.freedesktop.DBus.Mock", "AddDischargingBattery",
              g_variant_new("(ssdx)", id.c_str(), model.c_str(), level, gint64{0}));
    GVariant* const parsed =
        g_variant_parse(G_VARIANT_TYPE_VARDICT, properties.c_str(), nullptr, nullptr, nullptr);
    ASSERT_TRUE(parsed) << properties;
    bus_.call(
        upower, upowerPath, "org.freedesktop.DBus.Mock", "SetDeviceProperties",
        g_variant_new("(o@a{sv})", (std::string(upowerPath) + "/devices/" + id).c_str(), parsed));
    g_variant_unref(parsed);
  }

  std::unique_ptr<rehearsal::ServerProcess> process_;
};

TEST_F(PowerReportMockTest, NoDeviceIsAnEmptyReport) {
  EXPECT_EQ(report(), "");
}

TEST_F(PowerReportMockTest, EveryAccessoryHasItsLineAndTheLaptopNone) {
  add("laptop", "DELL 5JDX9", 80, "{'PowerSupply': <true>}");
  add("mouse", "MX Master", 45, "{'PowerSupply': <false>, 'State': <uint32 5>}");
  add("jabra", "Jabra Speak2 75\nJabra", 29, "{'PowerSupply': <false>}");
  EXPECT_EQ(report(),
            " -MX Master\t45%; AC attached; present: true\n"
            " -Jabra Speak2 75\\nJabra\t29%; discharging; present: true\n");
}

TEST_F(PowerReportMockTest, UPowerThatHangsIsGivenUpQuicklyWithoutOutput) {
  add("jabra", "Jabra Speak2 75", 29, "{'PowerSupply': <false>}");
  process_->freeze();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(report(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
  process_->thaw();
}

TEST_F(PowerReportTest, WithoutUPowerTheReportIsEmpty) {
  EXPECT_EQ(report(), "");
}

TEST(PowerReportBusTest, WithoutASystemBusTheReportIsEmpty) {
  ScopedEnvironment environment;
  environment.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
  EXPECT_EQ(report(), "");
}

TEST(PowerReportBusTest, BusThatHangsIsGivenUpQuicklyWithoutOutput) {
  const rehearsal::ScratchFolder scratch;
  const std::string path = scratch.path() / "bus";
  const Descriptor listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(listen(listener.get(), 1), 0);
  ScopedEnvironment environment;
  environment.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(report(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 8s);
}

}  // namespace
}  // namespace hushbox
