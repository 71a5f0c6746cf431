#include "platform/linux/session/SingleInstance.h"

#include <string>

#include "support/BundleIdentifier.h"

namespace hushbox {
namespace {

// A flag and a reply code of RequestName, from the documentation of org.freedesktop.DBus.
constexpr guint32 doNotQueue = 4;
constexpr guint32 nameExists = 3;

}  // namespace

SingleInstance::SingleInstance(SessionBusConnection& bus) {
  const BusReply reply = bus.callAndWait({
      {"org.freedesktop.DBus", "/org/freedesktop/DBus"},
      "org.freedesktop.DBus",
      "RequestName",
      "(u)",
      timeout,
      takeArguments(g_variant_new("(su)", std::string(bundleIdentifier).c_str(), doNotQueue)),
  });
  if (!reply) return;
  guint32 code = 0;
  g_variant_get(reply.value.get(), "(u)", &code);
  isFirst_ = code != nameExists;
}

}  // namespace hushbox
