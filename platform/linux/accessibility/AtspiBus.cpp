#include "platform/linux/accessibility/AtspiBus.h"

#include <utility>

#include "platform/linux/accessibility/AtspiQuestions.h"
#include "platform/linux/bus/SessionBusAddress.h"

namespace hushbox {

namespace {

constexpr std::chrono::seconds attemptInterval{1};
constexpr const char* statusInterface = "org.a11y.Status";
using atspi_questions::properties;
constexpr const char* launcherName = "org.a11y.Bus";

const BusObject busDaemon{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
const BusObject launcher{launcherName, "/org/a11y/bus"};

}  // namespace

BusReply AtspiBus::ask(BusCall call) {
  std::vector<BusCall> calls;
  calls.push_back(std::move(call));
  return std::move(ask(std::move(calls)).front());
}

bool AtspiBus::isEnabled() {
  if (!connectSession()) return false;
  if (!enabled_) enabled_ = askEnabled();
  return enabled_.value_or(false);
}

void AtspiBus::enable() {
  if (!connectSession()) return;
  session_.send({launcher, properties, "Set", "()", busWait,
                 takeArguments(g_variant_new("(ssv)", statusInterface, "IsEnabled",
                                             g_variant_new_boolean(TRUE)))});
}

bool AtspiBus::connect() {
  if (accessibility_.isOpen()) {
    accessibility_.dispatch();
    if (accessibility_.isOpen()) return true;
  }
  const Moment now = std::chrono::steady_clock::now();
  if (now < nextAttempt_ || !connectSession()) return false;
  const auto address = askAddress();
  if (address && accessibility_.open(*address, busWait)) {
    ++generation_;
    return true;
  }
  nextAttempt_ = std::chrono::steady_clock::now() + attemptInterval;
  return false;
}

bool AtspiBus::connectSession() {
  if (session_.isOpen()) {
    session_.dispatch();
    if (session_.isOpen()) return true;
  }
  enabled_.reset();
  if (std::chrono::steady_clock::now() < nextSessionAttempt_) return false;
  const std::string address = sessionBusAddress();
  if (address.empty() || !session_.open(address, busWait)) {
    nextSessionAttempt_ = std::chrono::steady_clock::now() + attemptInterval;
    return false;
  }
  // Whatever moves the switch or the one who keeps it, the next question finds out.
  const auto forget = [this](GVariant*) { enabled_.reset(); };
  session_.subscribe(launcherName, properties, "PropertiesChanged", statusInterface, forget);
  session_.subscribe(busDaemon.busName.c_str(), busDaemon.busName.c_str(), "NameOwnerChanged",
                     launcherName, forget);
  return true;
}

std::optional<bool> AtspiBus::askEnabled() {
  std::vector<BusCall> calls;
  calls.push_back(atspi_questions::property(launcher, statusInterface, "IsEnabled", busWait));
  const BusReply reply = std::move(session_.ask(std::move(calls)).front());
  // Without its keeper the switch is off; when he comes, a signal says so.
  if (reply.outcome == BusReply::Outcome::gone) return false;
  if (!reply) return {};
  GVariant* value = nullptr;
  g_variant_get(reply.value.get(), "(v)", &value);
  const VariantPointer owned(value);
  if (!g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN)) return {};
  return g_variant_get_boolean(value) != FALSE;
}

std::optional<std::string> AtspiBus::askAddress() {
  std::vector<BusCall> calls;
  calls.push_back({launcher, "org.a11y.Bus", "GetAddress", "(s)", busWait, nullptr});
  const BusReply reply = std::move(session_.ask(std::move(calls)).front());
  if (!reply) return {};
  const char* address = nullptr;
  g_variant_get(reply.value.get(), "(&s)", &address);
  // GIO treats an address that is none as a failure of the caller.
  if (!g_dbus_is_supported_address(address, nullptr)) return {};
  return address;
}

}  // namespace hushbox
