#include "platform/linux/session/DesktopNotifications.h"

#include <string_view>
#include <utility>

#include "platform/linux/bus/AsyncCallback.h"
#include "support/BundleIdentifier.h"
#include "support/Text.h"

namespace hushbox {
namespace {

constexpr const char* daemonName = "org.freedesktop.Notifications";
constexpr const char* daemonPath = "/org/freedesktop/Notifications";

// As the desktop notifications protocol writes it: an urgency of "normal", and the daemon's own
// choice of how long to show.
constexpr guchar normalUrgency = 1;
constexpr gint32 defaultExpiry = -1;

/// The error as a person would put it, without the bus's own prefix.
std::string description(ErrorPointer error) {
  char* const name = g_dbus_error_get_remote_error(error.get());
  std::string text = name ? name : "unknown error";
  g_free(name);
  g_dbus_error_strip_remote_error(error.get());
  if (*error->message) text = error->message;
  return text;
}

/// The text with its line feeds and without any other control character.
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

bool hasCapability(GVariant* answer, std::string_view wanted) {
  const VariantPointer list(g_variant_get_child_value(answer, 0));
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

DesktopNotifications::DesktopNotifications(MainLoop& loop)
    : loop_(loop),
      bus_([this](GDBusConnection* connection) { finishConnecting(connection, std::nullopt); },
           [this](const std::string& reason) { finishConnecting(nullptr, reason); }) {}

void DesktopNotifications::requestAuthorization(
    unsigned, std::function<void(bool granted, std::optional<std::string> error)> completion) {
  loop_.mainAsync(lifetime_.weakly([this, completion = std::move(completion)] {
    askForCapabilities([completion](GVariant* answer, Error error) {
      if (completion) completion(answer != nullptr, std::move(error));
    });
  }));
}

void DesktopNotifications::add(NotificationRequest request,
                               std::function<void(std::optional<std::string> error)> completion) {
  loop_.mainAsync(
      lifetime_.weakly([this, request = std::move(request), completion = std::move(completion)] {
        // Asked for each time: it may be another daemon than the last one.
        askForCapabilities([this, request, completion](GVariant* answer, Error error) {
          if (answer)
            notify(request, hasCapability(answer, "body-markup"), completion);
          else if (completion)
            completion(std::move(error));
        });
      }));
}

void DesktopNotifications::connected(std::function<void(Error error)> step) {
  if (connection_)
    step(std::nullopt);
  else if (bus_.connect())
    waiting_.push_back(std::move(step));
  else
    step(lastReason_);
}

void DesktopNotifications::finishConnecting(GDBusConnection* connection, const Error& error) {
  connection_ = connection;
  if (error) lastReason_ = error;
  for (const auto& step : std::exchange(waiting_, {})) step(error);
}

void DesktopNotifications::askForCapabilities(Answer answer) {
  connected([this, answer = std::move(answer)](Error error) {
    if (error) return answer(nullptr, std::move(error));
    call("GetCapabilities", nullptr, "(as)", answer);
  });
}

void DesktopNotifications::notify(const NotificationRequest& request, bool markup,
                                  std::function<void(Error error)> completion) {
  const std::string title = text::escapedForTerminal(request.title);
  const std::string plain = cleanLines(request.body);
  const std::string body = markup ? markupEscaped(plain) : plain;
  const std::string icon(bundleIdentifier);
  GVariant* const arguments =
      g_variant_new("(susssas@a{sv}i)", "Hushbox", 0U, icon.c_str(), title.c_str(), body.c_str(),
                    nullptr, hints(request), defaultExpiry);
  call("Notify", arguments, "(u)", [completion = std::move(completion)](GVariant*, Error error) {
    if (completion) completion(std::move(error));
  });
}

void DesktopNotifications::call(const char* method, GVariant* arguments, const char* answerType,
                                Answer answer) {
  g_dbus_connection_call(
      connection_, daemonName, daemonPath, daemonName, method, arguments,
      G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE, timeoutMilliseconds, nullptr,
      AsyncCallback::invoke,
      AsyncCallback::data(
          [answer = lifetime_.weakly(std::move(answer))](GObject* source, GAsyncResult* result) {
            GError* error = nullptr;
            const VariantPointer values(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
            answer(values.get(), error ? Error(description(ErrorPointer(error))) : std::nullopt);
          }));
}

}  // namespace hushbox
