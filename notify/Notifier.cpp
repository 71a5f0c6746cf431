#include "notify/Notifier.h"

#include <array>
#include <optional>
#include <random>

#include "platform/Platform.h"
#include "platform/UserNotifications.h"
#include "support/Log.h"

namespace hushbox {
namespace {

constexpr Log log{"notify"};

/// Returns a random UUID (version 4) as upper-case hexadecimal digits with hyphens, the form that
/// macOS gives them.
std::string randomUUID() {
  constexpr std::string_view digits = "0123456789ABCDEF";
  std::random_device random;
  std::array<unsigned char, 16> bytes{};
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::string uuid;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) uuid += '-';
    uuid += digits[bytes[i] >> 4];
    uuid += digits[bytes[i] & 0x0F];
  }
  return uuid;
}

}  // namespace

void Notifier::requestAuthorization() {
  platform().notifications.requestAuthorization(
      notificationAlert | notificationSound,
      [](bool granted, const std::optional<std::string>& error) {
        log.info("Notification permission granted=%{bool}d error=%{public}s", granted,
                 error.value_or("none"));
      });
}

void Notifier::post(const std::string& title, const std::string& body) {
  platform().notifications.add({randomUUID(), title, body, /*defaultSound=*/true},
                               [](std::optional<std::string> error) {
                                 if (error) log.error("Notification failed: %{public}s", *error);
                               });
}

}  // namespace hushbox
