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

/// Takes apart what programs on the accessibility bus send, which may be anything: what has not the
/// expected type or size counts as not sent.
namespace hushbox::atspi_value {

/// A longer text is no label and no address.
inline constexpr std::size_t longestText = 4096;

/// The text under `key` of a dictionary of texts or of variants; empty when there is none.
std::string text(GVariant* dictionary, const char* key);

/// The text in a "(v)" or "(s)" answer; empty when it is none.
std::string text(GVariant* answer);

/// The objects of an "(a(so))" answer, at most `most`. Unless `owner` is empty, what belongs to
/// another program than that is left out: nobody lends his name to other programs' objects.
std::vector<BusObject> objects(GVariant* answer, const std::string& owner, std::size_t most);

/// The object in a "(v)" answer.
std::optional<BusObject> object(GVariant* answer);

/// The object under `key` in an "(a{sv})" answer.
std::optional<BusObject> object(GVariant* answer, const char* key);

/// Whether a set of states, an "(au)" answer, has the state of that number.
bool hasState(GVariant* answer, std::uint32_t state);

/// The arguments of Collection.GetMatches that find the objects of those roles, at most `most` of
/// them, in document order. The roles must be below 128.
VariantPointer matchRoles(std::initializer_list<std::uint32_t> roles, std::size_t most);

}  // namespace hushbox::atspi_value
