#include "platform/linux/session/DesktopNotifications.h"

#include <string_view>
#include <utility>

#include "support/BundleIdentifier.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr const char* daemonName = "org.freedesktop.Notifications";
constexpr const char* daemonPath = "/org/freedesktop/Notifications";

// From the desktop notifications protocol: urgency "normal", and the daemon chooses how long to
// show it.
constexpr guchar normalUrgency = 1;
constexpr gint32 defaultExpiry = -1;

/// What a completion gets: nothing for success, else the reason.
std::optional<std::string> errorOf(const BusReply& reply) {
  return reply ? std::nullopt : std::optional(reply.error);
}

/// The text with every control character escaped except line feeds.
std::string cleanLines(std::string_view text) {
  std::string clean;
  for (;;) {
    const std::size_t end = text.find('\n');
    clean += text::escapedForTerminal(text.substr(0, end));
    if (end == text.npos) return clean;
    clean += '\n';
    text.remove_prefix(end + 1);
  }
}

std::string markupEscaped(const std::string& text) {
  char* const escaped = g_markup_escape_text(text.data(), static_cast<gssize>(text.size()));
  std::string result = escaped;
  g_free(escaped);
  return result;
}

bool hasCapability(const BusReply& reply, std::string_view wanted) {
  const VariantPointer list(g_variant_get_child_value(reply.value.get(), 0));
  GVariantIter each;
  g_variant_iter_init(&each, list.get());
  for (const char* capability = nullptr; g_variant_iter_next(&each, "&s", &capability);)
    if (capability == wanted) return true;
  return false;
}

GVariant* hints(const NotificationRequest& request) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
  const auto add = [&](const char* name, GVariant* value) {
    g_variant_builder_add(&builder, "{sv}", name, value);
  };
  add("urgency", g_variant_new_byte(normalUrgency));
  add("desktop-entry", g_variant_new_string(std::string(bundleIdentifier).c_str()));
  if (request.defaultSound)
    add("sound-name", g_variant_new_string("message-new-instant"));
  else
    add("suppress-sound", g_variant_new_boolean(TRUE));
  return g_variant_builder_end(&builder);
}

}  // namespace

void DesktopNotifications::requestAuthorization(
    unsigned, std::function<void(bool granted, std::optional<std::string> error)> completion) {
  loop_.mainAsync(lifetime_.weakly([this, completion = std::move(completion)] {
    getCapabilities([completion](const BusReply& reply) {
      if (completion) completion(static_cast<bool>(reply), errorOf(reply));
    });
  }));
}

void DesktopNotifications::add(NotificationRequest request,
                               std::function<void(std::optional<std::string> error)> completion) {
  loop_.mainAsync(
      lifetime_.weakly([this, request = std::move(request), completion = std::move(completion)] {
        // Asked each time: another daemon may have started since.
        getCapabilities([this, request, completion](const BusReply& reply) {
          if (reply)
            notify(request, hasCapability(reply, "body-markup"), completion);
          else if (completion)
            completion(errorOf(reply));
        });
      }));
}

void DesktopNotifications::getCapabilities(Replied replied) {
  call("GetCapabilities", nullptr, "(as)", std::move(replied));
}

void DesktopNotifications::notify(
    const NotificationRequest& request, bool markup,
    std::function<void(std::optional<std::string> error)> completion) {
  const std::string title = text::escapedForTerminal(request.title);
  const std::string plain = cleanLines(request.body);
  const std::string body = markup ? markupEscaped(plain) : plain;
  const std::string icon(bundleIdentifier);
  GVariant* const arguments =
      g_variant_new("(susssas@a{sv}i)", "Hushbox", 0U, icon.c_str(), title.c_str(), body.c_str(),
                    nullptr, hints(request), defaultExpiry);
  call("Notify", takeArguments(arguments), "(u)",
       [completion = std::move(completion)](const BusReply& reply) {
         if (completion) completion(errorOf(reply));
       });
}

void DesktopNotifications::call(const char* method, VariantPointer arguments, const char* replyType,
                                Replied replied) {
  bus_.call({{daemonName, daemonPath},
             daemonName,
             method,
             replyType,
             callTimeout,
             std::move(arguments),
             /*startsOwner=*/true},
            lifetime_.weakly(std::move(replied)));
}

}  // namespace hushbox
