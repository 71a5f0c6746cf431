#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "platform/linux/Descriptor.h"
#include "platform/linux/processes/SpawnedChildProcessFactory.h"
#include "rehearsal/BusConnection.h"
#include "rehearsal/PowerDaemon.h"
#include "rehearsal/Session.h"
#include "rehearsal/Waiting.h"
#include "tests/platform/linux/fixtures/ScopedEnvironment.h"

namespace hushbox {
namespace {

using namespace std::chrono_literals;

constexpr const char* upower = "org.freedesktop.UPower";
constexpr const char* upowerPath = "/org/freedesktop/UPower";

/// Returns what the battery reading reads from the power report. Does not kill it, so that only its
/// own timeout counts.
std::string report() {
  ChildProcessRules rules;
  rules.timeout = 60s;
  rules.standIns["/usr/bin/pmset"] = HUSHBOX_POWER_REPORT;
  const auto tool = SpawnedChildProcessFactory{std::move(rules)}.make();
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

  rehearsal::Session session_{{.systemBus = true}};
  rehearsal::BusConnection bus_{session_.systemBusAddress()};
};

/// The real UPower with an emulated speakerphone.
class PowerReportUPowerTest : public PowerReportTest {
 protected:
  void SetUp() override {
    if (!rehearsal::PowerDaemon::isInstalled())
      GTEST_SKIP() << "UPower or umockdev is not installed.";
  }
};

TEST_F(PowerReportUPowerTest, RealUPowerIsReportedThroughChangesAndUnplugging) {
  rehearsal::PowerDaemon daemon(session_, {.percent = 62});
  EXPECT_EQ(report(), " -Jabra Speak2 75\t62%; discharging; present: true\n");
  daemon.change(63, "Charging");
  EXPECT_EQ(report(), " -Jabra Speak2 75\t63%; charging; present: true\n");
  daemon.change(100, "Full");
  EXPECT_EQ(report(), " -Jabra Speak2 75\t100%; charged; present: true\n");
  daemon.unplug();
  EXPECT_EQ(report(), "");
}

TEST_F(PowerReportUPowerTest, BatteryOfTheComputerIsNotReported) {
  const rehearsal::PowerDaemon daemon(session_, {.model = "Jabra Laptop", .scope = "System"});
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

TEST_F(PowerReportMockTest, ReportIsEmptyWithoutDevices) {
  EXPECT_EQ(report(), "");
}

TEST_F(PowerReportMockTest, EachAccessoryHasALineAndTheLaptopHasNone) {
  add("laptop", "DELL 5JDX9", 80, "{'PowerSupply': <true>}");
  add("mouse", "MX Master", 45, "{'PowerSupply': <false>, 'State': <uint32 5>}");
  add("jabra", "Jabra Speak2 75\nJabra", 29, "{'PowerSupply': <false>}");
  EXPECT_EQ(report(),
            " -MX Master\t45%; AC attached; present: true\n"
            " -Jabra Speak2 75\\nJabra\t29%; discharging; present: true\n");
}

TEST_F(PowerReportMockTest, TimesOutWithoutOutputWhenUPowerHangs) {
  add("jabra", "Jabra Speak2 75", 29, "{'PowerSupply': <false>}");
  process_->freeze();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(report(), "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
  process_->thaw();
}

TEST_F(PowerReportMockTest, WaitsForAUPowerThatIsSlow) {
  add("jabra", "Jabra Speak2 75", 29, "{'PowerSupply': <false>}");
  // On a busy machine a report may take even longer than UPower.
  std::string output;
  for (int attempt = 0; attempt < 3 && output.empty(); ++attempt) {
    process_->freeze();
    const auto thawed = std::async(std::launch::async, [this] {
      std::this_thread::sleep_for(2500ms);
      process_->thaw();
    });
    output = report();
  }
  EXPECT_EQ(output, " -Jabra Speak2 75\t29%; discharging; present: true\n");
}

TEST_F(PowerReportTest, ReportIsEmptyWithoutUPower) {
  EXPECT_EQ(report(), "");
}

TEST(PowerReportBusTest, ReportIsEmptyWithoutASystemBus) {
  ScopedEnvironment environment;
  environment.set("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus");
  EXPECT_EQ(report(), "");
}

TEST(PowerReportBusTest, TimesOutWithoutOutputWhenTheBusHangs) {
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
  EXPECT_LT(std::chrono::steady_clock::now() - start, 30s);
}

}  // namespace
}  // namespace hushbox
