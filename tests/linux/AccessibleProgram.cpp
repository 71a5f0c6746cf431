#include "tests/linux/AccessibleProgram.h"

#include <gio/gunixsocketaddress.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace hushbox {

namespace {

GVariant* dictionary(const std::map<std::string, std::string>& entries) {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a{ss}"));
  for (const auto& [key, value] : entries)
    g_variant_builder_add(&builder, "{ss}", key.c_str(), value.c_str());
  return g_variant_builder_end(&builder);
}

}  // namespace

AccessibleProgram::AccessibleProgram(const std::string& busAddress, const std::string& name,
                                     const std::string& toolkit)
    : name_(name), toolkit_(toolkit), bus_(busAddress) {
  objects_[root] = {.role = 75, .name = name};
  filter_ = g_dbus_connection_add_filter(bus_.get(), &AccessibleProgram::filter, this, nullptr);
  bus_.call("org.a11y.atspi.Registry", root, "org.a11y.atspi.Socket", "Embed",
            g_variant_new("((so))", busName().c_str(), root));
}

AccessibleProgram::~AccessibleProgram() {
  hangUp();
  g_dbus_connection_remove_filter(bus_.get(), filter_);
  g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
  for (const auto& [connection, message] : waiting_) g_object_unref(message);
}

void AccessibleProgram::offer(const std::string& socketPath) {
  const ObjectPointer<GSocketAddress> address(g_unix_socket_address_new(socketPath.c_str()));
  listener_.reset(g_socket_listener_new());
  g_socket_listener_add_address(listener_.get(), address.get(), G_SOCKET_TYPE_STREAM,
                                G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, nullptr);
  stopped_.reset(g_cancellable_new());
  acceptor_ = std::thread([this] { acceptAll(); });
  const std::lock_guard lock(mutex_);
  offered_ = "unix:path=" + socketPath;
}

void AccessibleProgram::hangUp() {
  if (!acceptor_.joinable()) return;
  g_cancellable_cancel(stopped_.get());
  acceptor_.join();
  g_socket_listener_close(listener_.get());
  for (const auto& connection : std::exchange(straight_, {}))
    g_dbus_connection_close_sync(connection.get(), nullptr, nullptr);
}

void AccessibleProgram::acceptAll() {
  // Without a context of its own, accepting would need the main one to be iterated.
  GMainContext* const context = g_main_context_new();
  g_main_context_push_thread_default(context);
  const std::unique_ptr<char, decltype(&g_free)> guid(g_dbus_generate_guid(), g_free);
  constexpr auto flags =
      static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_SERVER |
                                        G_DBUS_CONNECTION_FLAGS_DELAY_MESSAGE_PROCESSING);
  for (;;) {
    const ObjectPointer<GSocketConnection> stream(
        g_socket_listener_accept(listener_.get(), nullptr, stopped_.get(), nullptr));
    if (!stream) break;
    ObjectPointer<GDBusConnection> connection(g_dbus_connection_new_sync(
        G_IO_STREAM(stream.get()), guid.get(), flags, nullptr, stopped_.get(), nullptr));
    if (!connection) continue;
    g_dbus_connection_add_filter(connection.get(), &AccessibleProgram::filter, this, nullptr);
    g_dbus_connection_start_message_processing(connection.get());
    straight_.push_back(std::move(connection));
  }
  g_main_context_pop_thread_default(context);
  g_main_context_unref(context);
}

void AccessibleProgram::put(const std::string& path, Object object) {
  // The application object is always called as the program is.
  if (path == root) object.name = name_;
  const std::lock_guard lock(mutex_);
  objects_[path] = std::move(object);
}

void AccessibleProgram::remove(const std::string& path) {
  const std::lock_guard lock(mutex_);
  objects_.erase(path);
}

void AccessibleProgram::answerWith(Answer answer) {
  const std::lock_guard lock(mutex_);
  answer_ = std::move(answer);
}

void AccessibleProgram::freeze() {
  const std::lock_guard lock(mutex_);
  frozen_ = true;
}

void AccessibleProgram::thaw() {
  std::vector<std::pair<GDBusConnection*, GDBusMessage*>> waiting;
  {
    const std::lock_guard lock(mutex_);
    frozen_ = false;
    waiting.swap(waiting_);
  }
  for (const auto& [connection, message] : waiting) {
    answer(connection, message);
    g_object_unref(message);
  }
}

std::string AccessibleProgram::busName() const {
  return g_dbus_connection_get_unique_name(bus_.get());
}

std::vector<std::string> AccessibleProgram::performed() const {
  const std::lock_guard lock(mutex_);
  return performed_;
}

GDBusMessage* AccessibleProgram::filter(GDBusConnection* connection, GDBusMessage* message,
                                        gboolean incoming, gpointer self) {
  auto& program = *static_cast<AccessibleProgram*>(self);
  if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
    return message;
  ++(connection == program.bus_.get() ? program.calls_ : program.straightCalls_);
  {
    const std::lock_guard lock(program.mutex_);
    if (program.frozen_) {
      program.waiting_.emplace_back(connection, message);
      return nullptr;
    }
  }
  program.answer(connection, message);
  g_object_unref(message);
  return nullptr;
}

void AccessibleProgram::answer(GDBusConnection* connection, GDBusMessage* call) {
  GVariant* const result = resultOf(call);
  GDBusMessage* const reply =
      result ? g_dbus_message_new_method_reply(call)
             : g_dbus_message_new_method_error_literal(
                   call, "org.freedesktop.DBus.Error.UnknownMethod", "There is no such method");
  if (result) g_dbus_message_set_body(reply, result);
  g_dbus_connection_send_message(connection, reply, G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                 nullptr);
  g_object_unref(reply);
}

GVariant* AccessibleProgram::resultOf(GDBusMessage* call) {
  const std::lock_guard lock(mutex_);
  const std::string path = g_dbus_message_get_path(call);
  const std::string method = g_dbus_message_get_member(call);
  const std::string interface = g_dbus_message_get_interface(call);
  GVariant* const arguments = g_dbus_message_get_body(call);
  if (answer_) {
    if (GVariant* const given = answer_(path, method)) return given;
  }
  const auto found = objects_.find(path);
  if (found == objects_.end()) return nullptr;
  const Object& object = found->second;
  if (method == "GetRole") return g_variant_new("(u)", object.role);
  if (method == "GetChildren") return g_variant_new("(@a(so))", references(object.children));
  if (method == "GetAll") return g_variant_new("(@a{sv})", properties(object));
  if (method == "GetAttributes") {
    const bool ofDocument = interface.ends_with("Document");
    return g_variant_new("(@a{ss})",
                         dictionary(ofDocument ? object.documentAttributes : object.attributes));
  }
  if (method == "Get") {
    const char* name = nullptr;
    g_variant_get(arguments, "(s&s)", nullptr, &name);
    const std::string wanted = name;
    if (wanted == "Parent") {
      if (object.parent.empty()) return nullptr;
      return g_variant_new("(v)", reference(object.parent));
    }
    const std::string& value = wanted == "ToolkitName"   ? toolkit_
                               : wanted == "Description" ? object.description
                                                         : object.name;
    return g_variant_new("(v)", g_variant_new_string(value.c_str()));
  }
  if (method == "GetMatches" && collection_) {
    std::vector<std::string> matches;
    gint32 most = 0;
    g_variant_get_child(arguments, 2, "i", &most);
    GVariant* const rule = g_variant_get_child_value(arguments, 0);
    GVariant* const roles = g_variant_get_child_value(rule, 4);
    collect(path, roles, matches);
    g_variant_unref(roles);
    g_variant_unref(rule);
    if (most > 0 && matches.size() > static_cast<std::size_t>(most))
      matches.resize(static_cast<std::size_t>(most));
    return g_variant_new("(@a(so))", references(matches));
  }
  if (method == "GetState") {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("au"));
    g_variant_builder_add(&builder, "u", object.states);
    g_variant_builder_add(&builder, "u", 0U);
    return g_variant_new("(au)", &builder);
  }
  if (method == "GetApplicationBusAddress" && !offered_.empty())
    return g_variant_new("(s)", offered_.c_str());
  if (method == "GetAccessibleAtPoint") return g_variant_new("(@(so))", reference(path));
  gint32 index = 0;
  if (method == "GetName" || method == "DoAction") g_variant_get(arguments, "(i)", &index);
  const auto actions = static_cast<gint32>(object.actions.size());
  if (method == "GetName")
    return g_variant_new("(s)", index < actions ? object.actions[index].c_str() : "");
  if (method == "DoAction") {
    performed_.push_back(path + " " + std::to_string(index));
    return g_variant_new("(b)", object.takesActions);
  }
  return nullptr;
}

GVariant* AccessibleProgram::properties(const Object& object) const {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&builder, "{sv}", "Name", g_variant_new_string(object.name.c_str()));
  g_variant_builder_add(&builder, "{sv}", "Description",
                        g_variant_new_string(object.description.c_str()));
  if (!object.parent.empty())
    g_variant_builder_add(&builder, "{sv}", "Parent", reference(object.parent));
  if (attributesInProperties_)
    g_variant_builder_add(&builder, "{sv}", "Attributes", dictionary(object.attributes));
  return g_variant_builder_end(&builder);
}

GVariant* AccessibleProgram::reference(const std::string& path) const {
  return g_variant_new("(so)", busName().c_str(), path.c_str());
}

GVariant* AccessibleProgram::references(const std::vector<std::string>& paths) const {
  GVariantBuilder builder;
  g_variant_builder_init(&builder, G_VARIANT_TYPE("a(so)"));
  for (const std::string& path : paths) g_variant_builder_add_value(&builder, reference(path));
  return g_variant_builder_end(&builder);
}

void AccessibleProgram::collect(const std::string& path, GVariant* roles,
                                std::vector<std::string>& found) const {
  const auto object = objects_.find(path);
  if (object == objects_.end()) return;
  for (const std::string& child : object->second.children) {
    const auto known = objects_.find(child);
    if (known == objects_.end()) continue;
    gint32 bits = 0;
    g_variant_get_child(roles, known->second.role / 32, "i", &bits);
    if (static_cast<guint32>(bits) >> known->second.role % 32 & 1U) found.push_back(child);
    collect(child, roles, found);
  }
}

}  // namespace hushbox
