#include "platform/linux/bus/BusReply.h"

#include <utility>

namespace hushbox {
namespace {

using Outcome = BusReply::Outcome;

Outcome outcomeOf(const GError& error) {
  if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) return Outcome::timedOut;
  if (error.domain == G_DBUS_ERROR) {
    switch (error.code) {
      case G_DBUS_ERROR_SERVICE_UNKNOWN:
      case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
      case G_DBUS_ERROR_NO_REPLY:
      case G_DBUS_ERROR_DISCONNECTED:
        return Outcome::unreachable;
      default:
        return Outcome::refused;
    }
  }
  // GIO reports a reply of the wrong type as an invalid argument. Its other errors are about the
  // connection.
  if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_INVALID_ARGUMENT)) return Outcome::refused;
  return Outcome::unreachable;
}

std::string textOf(const GError& error) {
  const ErrorPointer copy(g_error_copy(&error));
  char* const name = g_dbus_error_get_remote_error(copy.get());
  std::string text = name ? name : "unknown error";
  g_free(name);
  g_dbus_error_strip_remote_error(copy.get());
  if (*copy->message) text = copy->message;
  return text;
}

}  // namespace

BusReply BusReply::of(VariantPointer value, const GError* error) {
  if (value) return {Outcome::replied, std::move(value), {}};
  return {outcomeOf(*error), nullptr, textOf(*error)};
}

}  // namespace hushbox
