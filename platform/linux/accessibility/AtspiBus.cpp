#include "platform/linux/accessibility/AtspiBus.h"

#include <utility>

#include "platform/linux/accessibility/AtspiCalls.h"
#include "platform/linux/bus/BusDaemonCalls.h"
#include "platform/linux/bus/SessionBusAddress.h"

namespace hushbox {

namespace {

constexpr std::chrono::seconds attemptInterval{1};
constexpr const char* statusInterface = "org.a11y.Status";
using atspi_calls::properties;
constexpr const char* launcherName = "org.a11y.Bus";

const BusObject launcher{launcherName, "/org/a11y/bus"};

}  // namespace

void AtspiBus::send(CallBatch& batch) {
  const auto lostBefore = accessibility_.lostTime();
  batch.send(accessibility_);
  budget_.charge(batch.duration(), accessibility_.lostTime() - lostBefore);
}

void AtspiBus::sendToStrangers(CallBatch& batch) {
  batch.send(accessibility_);
  budget_.charge(batch.duration(), {});
}

BusReply AtspiBus::ask(BusCall call) {
  CallBatch batch;
  const auto ticket = batch.add(std::move(call));
  send(batch);
  return batch.take(ticket);
}

bool AtspiBus::reach(const std::string& busName, const std::string& address, std::int32_t process,
                     std::chrono::milliseconds timeout) {
  const auto lostBefore = accessibility_.lostTime();
  const bool isReached = accessibility_.reach(busName, address, process, timeout);
  const auto lost = accessibility_.lostTime() - lostBefore;
  budget_.charge(lost, lost);
  return isReached;
}

unsigned AtspiBus::watch(const std::string& busName, std::function<void()> exited) {
  // The owner of a unique name changes once: when the program has exited.
  return accessibility_.subscribe(
      bus_daemon::object.busName.c_str(), bus_daemon::object.busName.c_str(), "NameOwnerChanged",
      busName.c_str(), [exited = std::move(exited)](GVariant*) { exited(); });
}

void AtspiBus::unwatch(const std::string& busName, unsigned subscription) {
  accessibility_.unsubscribe(subscription);
  accessibility_.leave(busName);
}

AtspiBus::Switch AtspiBus::readSwitch() {
  if (!connectSession()) return Switch::off;
  // A change signal that arrives while it is asked makes it stale again.
  if (std::exchange(isSwitchStale_, false)) askSwitch();
  return switch_;
}

void AtspiBus::enable() {
  if (!connectSession()) return;
  session_.send({launcher, properties, "Set", "()", busTimeout,
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
  if (address && accessibility_.open(*address, busTimeout)) {
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
  switch_ = Switch::unknown;
  isSwitchStale_ = true;
  if (std::chrono::steady_clock::now() < nextSessionAttempt_) return false;
  const std::string address = sessionBusAddress();
  if (address.empty() || !session_.open(address, busTimeout)) {
    nextSessionAttempt_ = std::chrono::steady_clock::now() + attemptInterval;
    return false;
  }
  // When the switch or its owner changes, the next readSwitch() asks again.
  const auto forget = [this](GVariant*) { isSwitchStale_ = true; };
  session_.subscribe(launcherName, properties, "PropertiesChanged", statusInterface, forget);
  session_.subscribe(bus_daemon::object.busName.c_str(), bus_daemon::object.busName.c_str(),
                     "NameOwnerChanged", launcherName, forget);
  return true;
}

void AtspiBus::askSwitch() {
  CallBatch batch;
  const auto isEnabled =
      batch.add(atspi_calls::property(launcher, statusInterface, "IsEnabled", busTimeout));
  batch.send(session_);
  const BusReply& reply = batch[isEnabled];
  if (reply.outcome == BusReply::Outcome::timedOut) {
    isSwitchStale_ = true;
    return;
  }
  switch_ = Switch::off;
  // If nothing owns org.a11y.Bus, accessibility is off; NameOwnerChanged reports when that changes.
  if (reply.outcome == BusReply::Outcome::unreachable) return;
  GVariant* value = nullptr;
  if (reply) g_variant_get(reply.value.get(), "(v)", &value);
  const VariantPointer owned(value);
  // A launcher that is starting up may refuse.
  if (!value || !g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN))
    isSwitchStale_ = true;
  else if (g_variant_get_boolean(value))
    switch_ = Switch::on;
}

std::optional<std::string> AtspiBus::askAddress() {
  CallBatch batch;
  const auto addressTicket =
      batch.add({launcher, "org.a11y.Bus", "GetAddress", "(s)", busTimeout, nullptr});
  batch.send(session_);
  const BusReply& reply = batch[addressTicket];
  if (!reply) return {};
  const char* address = nullptr;
  g_variant_get(reply.value.get(), "(&s)", &address);
  // GIO asserts on a malformed address.
  if (!g_dbus_is_supported_address(address, nullptr)) return {};
  return address;
}

}  // namespace hushbox
