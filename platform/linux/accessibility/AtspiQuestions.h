#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "platform/linux/accessibility/AtspiValue.h"
#include "platform/linux/bus/BusCall.h"

/// The calls that are made to objects on the accessibility bus in more than one place.
namespace hushbox::atspi_questions {

inline constexpr const char* accessible = "org.a11y.atspi.Accessible";
inline constexpr const char* properties = "org.freedesktop.DBus.Properties";

/// One property of an interface of the object; answered with "(v)".
inline BusCall property(const BusObject& object, const char* interface, const char* name,
                        std::chrono::milliseconds wait) {
  return {object, properties, "Get",
          "(v)",  wait,       takeArguments(g_variant_new("(ss)", interface, name))};
}

/// All properties that every object has, taken together; answered with "(a{sv})".
inline BusCall allProperties(const BusObject& object, std::chrono::milliseconds wait) {
  return {object,    properties, "GetAll",
          "(a{sv})", wait,       takeArguments(g_variant_new("(s)", accessible))};
}

/// The figure of the object's role; answered with "(u)".
inline BusCall role(const BusObject& object, std::chrono::milliseconds wait) {
  return {object, accessible, "GetRole", "(u)", wait, nullptr};
}

/// The first `most` objects below this one that have one of the roles; answered with "(a(so))".
inline BusCall matches(const BusObject& object, std::initializer_list<std::uint32_t> roles,
                       std::size_t most, std::chrono::milliseconds wait) {
  return {object, "org.a11y.atspi.Collection",         "GetMatches", "(a(so))",
          wait,   atspi_value::matchRoles(roles, most)};
}

}  // namespace hushbox::atspi_questions
