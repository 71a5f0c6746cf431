#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/bus/BusCall.h"

/// The calls to objects on the accessibility bus. Each waits for its reply for at most `timeout`.
namespace hushbox::atspi_calls {

using Timeout = std::chrono::milliseconds;

inline constexpr const char* accessible = "org.a11y.atspi.Accessible";
inline constexpr const char* application = "org.a11y.atspi.Application";
inline constexpr const char* action = "org.a11y.atspi.Action";
inline constexpr const char* properties = "org.freedesktop.DBus.Properties";

/// One property of an interface of the object. The reply is "(v)".
inline BusCall property(const BusObject& object, const char* interface, const char* name,
                        Timeout timeout) {
  return {object, properties, "Get",
          "(v)",  timeout,    takeArguments(g_variant_new("(ss)", interface, name))};
}

/// All properties that every object has. The reply is "(a{sv})".
inline BusCall allProperties(const BusObject& object, Timeout timeout) {
  return {object,    properties, "GetAll",
          "(a{sv})", timeout,    takeArguments(g_variant_new("(s)", accessible))};
}

/// The number of the object's role. The reply is "(u)".
inline BusCall role(const BusObject& object, Timeout timeout) {
  return {object, accessible, "GetRole", "(u)", timeout, nullptr};
}

/// The object's states as a set of bits. The reply is "(au)".
inline BusCall states(const BusObject& object, Timeout timeout) {
  return {object, accessible, "GetState", "(au)", timeout, nullptr};
}

/// The object's attributes, such as its identifier in a document. The reply is "(a{ss})".
inline BusCall attributes(const BusObject& object, Timeout timeout) {
  return {object, accessible, "GetAttributes", "(a{ss})", timeout, nullptr};
}

/// A document's attributes, such as its address. The reply is "(a{ss})".
inline BusCall documentAttributes(const BusObject& document, Timeout timeout) {
  return {document, "org.a11y.atspi.Document", "GetAttributes", "(a{ss})", timeout, nullptr};
}

/// The objects directly below this one. The reply is "(a(so))".
inline BusCall children(const BusObject& object, Timeout timeout) {
  return {object, accessible, "GetChildren", "(a(so))", timeout, nullptr};
}

/// The child of that index. The reply is "((so))".
inline BusCall childAt(const BusObject& object, std::int32_t index, Timeout timeout) {
  return {object,   accessible, "GetChildAtIndex",
          "((so))", timeout,    takeArguments(g_variant_new("(i)", index))};
}

/// The objects of a program at and directly below a path, as XML. The reply is "(s)".
inline BusCall introspect(const BusObject& object, Timeout timeout) {
  return {object, "org.freedesktop.DBus.Introspectable", "Introspect", "(s)", timeout, nullptr};
}

/// The first `maxCount` objects below this one that have one of the roles. The reply is "(a(so))".
inline BusCall matches(const BusObject& object, std::initializer_list<std::uint32_t> roles,
                       std::size_t maxCount, Timeout timeout) {
  return {object,       "org.a11y.atspi.Collection",
          "GetMatches", "(a(so))",
          timeout,      atspi_value::matchRoles(roles, maxCount)};
}

/// The name of one of the object's actions, such as "press". The reply is "(s)".
inline BusCall actionName(const BusObject& object, std::int32_t index, Timeout timeout) {
  return {object, action, "GetName", "(s)", timeout, takeArguments(g_variant_new("(i)", index))};
}

/// Performs one of the object's actions. The reply is "(b)".
inline BusCall doAction(const BusObject& object, std::int32_t index, Timeout timeout) {
  return {object, action, "DoAction", "(b)", timeout, takeArguments(g_variant_new("(i)", index))};
}

/// Looks for the object at a corner of the document. Chromium then has the page bring its
/// accessibility tree up to date, but replies before the page has done so.
inline BusCall refreshLabels(const BusObject& document, Timeout timeout) {
  constexpr guint32 relativeToWindow = 1;
  return {document,
          "org.a11y.atspi.Component",
          "GetAccessibleAtPoint",
          "((so))",
          timeout,
          takeArguments(g_variant_new("(iiu)", 0, 0, relativeToWindow))};
}

}  // namespace hushbox::atspi_calls
