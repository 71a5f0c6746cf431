#pragma once

#include <glib.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/bus/GLibPointers.h"

/// Parses what programs on the accessibility bus send, which may be anything: a value of the wrong
/// type or size counts as missing.
namespace hushbox::atspi_value {

/// A longer text is not a label and not an address.
inline constexpr std::size_t maxTextBytes = 4096;

/// The text under `key` of a dictionary of texts or of variants; empty when it is missing.
std::string text(GVariant* dictionary, const char* key);

/// The text in a "(v)" or "(s)" reply; empty when it is missing.
std::string text(GVariant* reply);

/// The objects in an "(a(so))" reply, at most `maxCount`. Unless `owner` is empty, objects of other
/// programs are left out: a program must not pass another's objects off as its own.
std::vector<BusObject> objects(GVariant* reply, const std::string& owner, std::size_t maxCount);

/// The object in a "((so))" reply; nullopt for AT-SPI's null object.
std::optional<BusObject> plainObject(GVariant* reply);

/// The texts in an "(as)" reply that contain `part`, at most `maxCount`.
std::vector<std::string> textsWith(GVariant* reply, const char* part, std::size_t maxCount);

/// The names of the objects directly below another in the "(s)" reply to an introspection, at most
/// `maxCount`. Names that are not part of a valid path are left out.
std::vector<std::string> nodes(GVariant* reply, std::size_t maxCount);

/// The object in a "(v)" reply. Returns nullopt for a missing value, for a non-object and for
/// AT-SPI's null object, as does the next function.
std::optional<BusObject> object(GVariant* reply);

/// The object under `key` in an "(a{sv})" reply.
std::optional<BusObject> object(GVariant* reply, const char* key);

/// Whether the set of states in an "(au)" reply contains the state of that number.
bool hasState(GVariant* reply, std::uint32_t state);

/// The arguments of Collection.GetMatches that find the objects with one of those roles, at most
/// `maxCount` of them, in document order. Roles must be below 128.
VariantPointer matchRoles(std::initializer_list<std::uint32_t> roles, std::size_t maxCount);

}  // namespace hushbox::atspi_value
